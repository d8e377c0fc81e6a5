// _vstdSSStreamQuantiles, _vstsSSStreamQuantiles: quantiles of a stream fed
// block by block, within eps*N ranks of the exact ones, from summaries of
// bounded size kept in the task (the multi-level summaries of Zhang and
// Wang: the stream is cut into chunks of doubling length; each chunk sorts
// blocks of b values, halves them into summaries with rank bounds and merges
// equal levels upwards like a binary counter).
#include "stats/frame.h"
#include "stats/qsort.h"
#include "stats/stream_state.h"

#include <atomic>
#include <cmath>
#include <limits>

namespace {

using namespace orv::ss;

// floor((2^k - 1) / eps) by a multiplication with 1/eps; 2^k in 64 bits.
inline int64_t span(int k, double inv_eps) {
    if (k < 0) return 0;
    const double two_k = static_cast<double>(uint64_t(1) << std::min(k, 62));
    return static_cast<int64_t>(std::floor((two_k - 1.0) * inv_eps));
}

// A summary: count entries of values with rank bounds.
template <typename T>
struct Summary {
    T* v;
    int64_t* lo;
    int64_t* hi;
    int64_t count;
};

// Merge of two sorted summaries (Zhang-Wang rule): an entry of one takes the
// bounds of its neighbours in the other; on a tie the second goes first.
template <typename T>
int64_t merge(const Summary<T>& a, const Summary<T>& b, Summary<T> out) {
    int64_t i = 0, j = 0, k = 0;
    while (i < a.count && j < b.count) {
        if (b.v[j] <= a.v[i]) {
            out.v[k] = b.v[j];
            out.lo[k] = b.lo[j] + (i > 0 ? a.lo[i - 1] : 0);
            out.hi[k] = b.hi[j] + a.hi[i] - 1;
            ++j;
        } else {
            out.v[k] = a.v[i];
            out.lo[k] = a.lo[i] + (j > 0 ? b.lo[j - 1] : 0);
            out.hi[k] = a.hi[i] + b.hi[j] - 1;
            ++i;
        }
        ++k;
    }
    const int64_t alo = a.count ? a.lo[a.count - 1] : 0, ahi = a.count ? a.hi[a.count - 1] : 0;
    const int64_t blo = b.count ? b.lo[b.count - 1] : 0, bhi = b.count ? b.hi[b.count - 1] : 0;
    for (; i < a.count; ++i, ++k) out.v[k] = a.v[i], out.lo[k] = a.lo[i] + blo, out.hi[k] = a.hi[i] + bhi;
    for (; j < b.count; ++j, ++k) out.v[k] = b.v[j], out.lo[k] = b.lo[j] + alo, out.hi[k] = b.hi[j] + ahi;
    return k;
}

// Every second entry, from the first: half the entries.
template <typename T>
void compress(const Summary<T>& in, int64_t keep, Summary<T> out) {
    for (int64_t e = 0; e < keep; ++e) {
        out.v[e] = in.v[2 * e];
        out.lo[e] = in.lo[2 * e];
        out.hi[e] = in.hi[2 * e];
    }
}

template <typename T>
Summary<T> row(const StreamChunk<T>& c, int64_t level, int64_t count) {
    const int64_t off = level * (c.block_size + 1);
    return {c.values + off, c.rmin + off, c.rmax + off, count};
}

// Level 0 takes `count` values from x (stride `step`) after `fill` ones, and
// is sorted; its ranks are the positions.
template <typename T>
void fill_level0(StreamChunk<T>& c, int64_t fill, const T* x, int64_t step, int64_t count) {
    Summary<T> r = row(c, 0, fill + count);
    for (int64_t i = 0; i < count; ++i) r.v[fill + i] = x[i * step];
    quicksort(r.v, fill + count);
    for (int64_t i = 0; i < fill + count; ++i) r.lo[i] = r.hi[i] = i + 1;
}

// Takes m values into a chunk.
template <typename T>
int32_t chunk_update(StreamChunk<T>& c, const T* x, int64_t step, int64_t m) {
    const int64_t b = c.block_size, half = b / 2, top = c.level_count;
    const int64_t f = c.fill, k = std::min(m, b - f);
    fill_level0(c, f, x, step, k);
    if (f + k < b) {
        c.fill = f + k;
        c.seen += m;
        return SS_OK;
    }
    Buffer<T> wv;
    Buffer<int64_t> wr;
    if (!wv.allocate(static_cast<std::size_t>(b + 1), false) ||
        !wr.allocate(static_cast<std::size_t>(2 * (b + 1)), false))
        return SS_ERR_NO_MEMORY;
    const Summary<T> work{wv.get(), wr.get(), wr.get() + b + 1, half};
    int64_t used = k, fill = b;
    while (fill == b) {
        compress(row(c, 0, b), half, work);
        int64_t level = 1;
        for (; c.occupied[level]; ++level) {
            const int64_t merged = merge(work, row(c, level, half), row(c, 0, 0));
            compress(row(c, 0, merged), half, work);
            // The top level absorbs what has no level above (a chunk fed
            // past the length its levels were sized for).
            if (level == top) break;
            c.occupied[level] = 0;
        }
        const Summary<T> dest = row(c, level, half);
        for (int64_t e = 0; e < half; ++e) dest.v[e] = work.v[e], dest.lo[e] = work.lo[e], dest.hi[e] = work.hi[e];
        c.occupied[level] = 1;
        if (c.top_level < level) c.top_level = level;
        fill = std::min(b, m - used);
        fill_level0(c, 0, x + used * step, step, fill);
        used += fill;
    }
    c.fill = fill;
    c.seen += m;
    return SS_OK;
}

template <typename T>
struct Context {
    StreamVariable* vars;
    const T* x;
    int64_t p, n, offset, step_count;
    bool by_var;
    std::atomic<int32_t> status;
};

template <typename T>
void feed_item(int v, int, int, void* vctx) {
    auto& c = *static_cast<Context<T>*>(vctx);
    StreamVariable& s = c.vars[v];
    if (!s.active) return;
    auto* chunk = static_cast<StreamChunk<T>*>(s.chunks) + s.current_chunk;
    const T* x = c.by_var ? c.x + v * c.n + c.offset : c.x + c.offset * c.p + v;
    const int32_t rc = chunk_update(*chunk, x, c.by_var ? 1 : c.p, c.step_count);
    if (rc != SS_OK) c.status.store(rc);
}

// A new chunk for every active variable, all allocated before any is
// installed, so that a failure leaves the state as it was.
template <typename T>
int32_t open_chunks(StreamVariable* vars, int64_t p, double eps, int64_t* room) {
    const double inv = 1.0 / eps;
    int64_t c = -1;
    for (int64_t v = 0; v < p; ++v)
        if (vars[v].active) c = vars[v].current_chunk;
    const int64_t length = span(static_cast<int>(c + 3), inv) - span(static_cast<int>(c + 2), inv);
    const double l2 = std::log(static_cast<double>(length) * eps) * 1.4426950408889634;
    // At least two values in a block, so that every summary keeps an entry.
    const int64_t b = std::max<int64_t>(2, static_cast<int64_t>(l2 / eps));
    const int64_t levels = std::max<int64_t>(1, static_cast<int64_t>(l2 + 2));
    const int64_t bytes = chunk_bytes<T>(b, levels);
    Buffer<void*> made;
    if (!made.allocate(static_cast<std::size_t>(2 * p), true)) return SS_ERR_NO_MEMORY;
    void** const m = made.get();
    bool ok = true;
    for (int64_t v = 0; v < p && ok; ++v) {
        if (!vars[v].active) continue;
        m[2 * v] = orv_serv_allocate(static_cast<std::size_t>(vars[v].chunk_count + 1) *
                                         sizeof(StreamChunk<T>), orv::kAlignment);
        m[2 * v + 1] = orv_serv_allocate(static_cast<std::size_t>(bytes), orv::kAlignment);
        ok = m[2 * v] && m[2 * v + 1];
    }
    if (!ok) {
        for (int64_t e = 0; e < 2 * p; ++e)
            if (m[e]) orv_serv_deallocate(m[e]);
        return SS_ERR_NO_MEMORY;
    }
    for (int64_t v = 0; v < p; ++v) {
        StreamVariable& s = vars[v];
        if (!s.active) continue;
        auto* chunks = static_cast<StreamChunk<T>*>(m[2 * v]);
        if (s.chunk_count) {
            std::memcpy(static_cast<void*>(chunks), s.chunks, s.chunk_count * sizeof(StreamChunk<T>));
            orv_serv_deallocate(s.chunks);
        }
        StreamChunk<T>& ch = chunks[s.chunk_count];
        auto* block = static_cast<int64_t*>(m[2 * v + 1]);
        const int64_t cells = (levels + 1) * (b + 1);
        ch = StreamChunk<T>{0, b, levels, 0, 0, block, reinterpret_cast<T*>(block + levels + 1 + 2 * cells),
                            block + levels + 1, block + levels + 1 + cells};
        std::memset(ch.occupied, 0, (levels + 1) * sizeof(int64_t));
        s.chunks = chunks;
        ++s.chunk_count;
        ++s.current_chunk;
    }
    *room = length;
    return SS_OK;
}

// All chunks' summaries of one variable merged into one; the entry whose
// middle rank lies nearest each target answers.
template <typename T>
int32_t query(const StreamVariable& s, const T* orders, int64_t count, T* out) {
    const auto* chunks = static_cast<const StreamChunk<T>*>(s.chunks);
    int64_t bound = 0, total = 0;
    for (int64_t c = 0; c < s.chunk_count; ++c) {
        bound += chunks[c].fill;
        for (int64_t l = 1; l <= chunks[c].level_count; ++l)
            if (chunks[c].occupied[l]) bound += chunks[c].block_size / 2;
        total += chunks[c].seen;
    }
    Buffer<T> vb;
    Buffer<int64_t> rb;
    if (!vb.allocate(static_cast<std::size_t>(2 * bound), false) ||
        !rb.allocate(static_cast<std::size_t>(4 * bound), false))
        return SS_ERR_NO_MEMORY;
    Summary<T> acc{vb.get(), rb.get(), rb.get() + bound, 0};
    Summary<T> next{vb.get() + bound, rb.get() + 2 * bound, rb.get() + 3 * bound, 0};
    auto take = [&](Summary<T> part) {
        next.count = merge(acc, part, next);
        std::swap(acc, next);
    };
    for (int64_t c = 0; c < s.chunk_count; ++c) {
        const StreamChunk<T>& ch = chunks[c];
        take(row(ch, 0, ch.fill));
        for (int64_t l = 1; l <= ch.level_count; ++l)
            if (ch.occupied[l]) take(row(ch, l, ch.block_size / 2));
    }
    for (int64_t r = 0; r < count; ++r) {
        const double target = static_cast<double>(orders[r]) * static_cast<double>(total);
        double best = 2.0 * static_cast<double>(total);
        T answer = std::numeric_limits<T>::quiet_NaN();  // nothing fed yet
        for (int64_t e = 0; e < acc.count; ++e) {
            const double d = std::trunc(std::fabs((acc.lo[e] + acc.hi[e]) * 0.5 - target));
            if (d < best) best = d, answer = acc.v[e];
        }
        out[r] = answer;
    }
    return SS_OK;
}

template <typename T>
int32_t stream_quantiles(SsTask* task, uint64_t, uint64_t method,
                         const SsThreadingTable* threading) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    if (!task->observations) return SS_ERR_OBSERVATIONS;
    const int64_t n = view.integer(Field::observations);
    if (n < 0) return SS_ERR_OBSERVATIONS;
    const T* const x = view.real(Field::data);
    int64_t word = 0;
    if (n > 0) {
        if (!x) return view.missing(Field::data);
        if (!task->data_storage) return SS_ERR_STORAGE_WORD;
        word = view.integer(Field::data_storage);
        if (!(word & (SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION)))
            return SS_ERR_STORAGE_VALUE;
    }
    T* const out = view.real(Field::stream_quantiles);
    if (!out) return view.missing(Field::stream_quantiles);
    const T* const orders = view.real(Field::stream_orders);
    if (!orders) return view.missing(Field::stream_orders);
    if (!task->stream_order_count) return SS_ERR_STREAM_ORDER_VALUES;
    const int64_t count = view.integer(Field::stream_order_count);
    if (count < 0) return SS_ERR_STREAM_ORDER_VALUES;
    if (!task->stream_param_count) return view.missing(Field::stream_param_count);
    if (view.integer(Field::stream_param_count) != 1) return SS_ERR_STREAM_PARAM_COUNT;
    for (int64_t r = 0; r < count; ++r)
        if (!(orders[r] >= T(0) && orders[r] <= T(1))) return SS_ERR_STREAM_ORDER_VALUES;
    const T* const params = view.real(Field::stream_params);
    if (!params) return view.missing(Field::stream_params);
    if (!(method & (SS_METHOD_STREAM_QUERY | SS_METHOD_STREAM_ONLY))) return SS_ERR_METHOD;
    const double eps = static_cast<double>(params[0]);
    if (!(eps > 0 && eps <= 1)) return SS_ERR_STREAM_EPSILON;
    const int64_t p = task->dimension ? view.integer(Field::dimension) : 0;
    if (p < 1) return SS_ERR_DIMENSION;
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements) || p > INT32_MAX) return SS_ERR_NO_MEMORY;
    const Mask mask = view.mask();

    int64_t room = 0;
    if (!task->stream_state) {
        bool registered = false;
        for (int32_t i = 0; i < task->release_count; ++i)
            registered = registered || task->release_ops[i] == &__vstSQuantilesFreeBuffers;
        if (!registered && task->release_count >= 1) return SS_ERR_NO_MEMORY;  // no free slot
        const std::size_t bytes = sizeof(StreamHeader) + static_cast<std::size_t>(p) * sizeof(StreamVariable);
        auto* block = static_cast<char*>(orv_serv_allocate(bytes, orv::kAlignment));
        if (!block) return SS_ERR_NO_MEMORY;
        reinterpret_cast<StreamHeader*>(block)->p = p;
        auto* vars = reinterpret_cast<StreamVariable*>(block + sizeof(StreamHeader));
        for (int64_t v = 0; v < p; ++v) vars[v] = {0, -1, mask.admits(v) ? 1 : 0, nullptr};
        task->stream_state = vars;
        if (!registered) task->release_ops[task->release_count++] = &__vstSQuantilesFreeBuffers;
    } else {
        if (stream_header(task->stream_state)->p != p) return SS_ERR_DIMENSION;
        auto* vars = static_cast<StreamVariable*>(task->stream_state);
        int64_t last = -1;
        for (int64_t v = 0; v < p; ++v) {
            if (task->indices && !vars[v].active && mask.admits(v)) return SS_ERR_INDICES;
            if (vars[v].active) last = v;
        }
        if (last < 0) return SS_ERR_INDICES;
        const StreamVariable& s = vars[last];
        if (s.current_chunk >= 0) {
            const int c = static_cast<int8_t>(s.current_chunk);
            const double inv = 1.0 / eps;
            const auto& chunk = static_cast<const StreamChunk<T>*>(s.chunks)[s.current_chunk];
            room = std::max<int64_t>(0, span(c + 2, inv) - (span(c + 1, inv) + chunk.seen));
        }
    }
    auto* vars = static_cast<StreamVariable*>(task->stream_state);

    Context<T> ctx{vars, x, p, n, 0, 0, (word & SS_STORAGE_BY_VARIABLE) || p == 1, {SS_OK}};
    for (int64_t remaining = n; remaining > 0;) {
        if (room == 0) {
            const int32_t rc = open_chunks<T>(vars, p, eps, &room);
            if (rc != SS_OK) return rc;
        }
        const int64_t step = std::min(room, remaining);
        ctx.offset = n - remaining;
        ctx.step_count = step;
        // As many threads as the table offers, at most one per variable.
        run_items(threading, static_cast<int>(p),
                  static_cast<int>(std::min<int64_t>(max_threads(threading), p)), &ctx, &feed_item<T>);
        if (ctx.status.load() != SS_OK) return ctx.status.load();
        room -= step;
        remaining -= step;
    }
    if (!(method & SS_METHOD_STREAM_QUERY)) return SS_OK;
    int64_t r = 0;
    for (int64_t v = 0; v < p; ++v) {
        if (!vars[v].active) continue;
        const int32_t rc = query(vars[v], orders, count, out + r * count);
        if (rc != SS_OK) return rc;
        ++r;
    }
    return SS_OK;
}

}  // namespace

ORV_EXPORT void __vstSQuantilesFreeBuffers(SsTask* task) {
    if (!task || !task->stream_state) return;
    auto* vars = static_cast<StreamVariable*>(task->stream_state);
    StreamHeader* header = stream_header(task->stream_state);
    for (int64_t v = 0; v < header->p; ++v) {
        // Both precisions' chunk records have the same layout.
        auto* chunks = static_cast<StreamChunk<double>*>(vars[v].chunks);
        for (int64_t c = 0; c < vars[v].chunk_count; ++c)
            if (chunks[c].occupied) orv_serv_deallocate(chunks[c].occupied);
        if (chunks) orv_serv_deallocate(chunks);
    }
    orv_serv_deallocate(header);
    task->stream_state = nullptr;
}

ORV_EXPORT int32_t _vstdSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                             const SsThreadingTable* threading) {
    return stream_quantiles<double>(task, estimates, method, threading);
}
ORV_EXPORT int32_t _vstsSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                             const SsThreadingTable* threading) {
    return stream_quantiles<float>(task, estimates, method, threading);
}
