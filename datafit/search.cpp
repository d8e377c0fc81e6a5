// Cell search: the seven search kernels in their output forms, and
// orv_df_kernel_[sd]DFSearch1D, which picks a kernel and runs it over teams.
#include "datafit/df_search.h"

#include <algorithm>
#include <cstring>

namespace orv::df {
namespace {

// First r in [j, end) with x[r] > s, two breakpoints a round; end if none.
template <typename T, typename I>
inline I walk_right(const T* x, I j, I end, T s) {
    for (; j + 1 < end; j += 2) {
        if (x[j] > s) return j;
        if (x[j + 1] > s) return j + 1;
    }
    if (j < end && x[j] > s) return j;
    return end;
}

// From c downwards, the first c with x[c-1] <= s; 0 if none.
template <typename T, typename I>
inline I walk_left(const T* x, I c, T s) {
    for (; c >= 2; c -= 2) {
        if (x[c - 1] <= s) return c;
        if (x[c - 2] <= s) return c - 1;
    }
    if (c == 1 && x[0] <= s) return 1;
    return 0;
}

// Bisection keeping x[low] <= s < x[high] until high - low <= gap.
template <typename T, typename I>
inline void bisect(const T* x, I& low, I& high, T s, I gap) {
    while (low < high - gap) {
        const I mid = static_cast<I>((low + high) / 2);
        if (s < x[mid]) high = mid;
        else low = mid;
    }
}

// Uniform rule, given t = (s - x0) / h already formed. The comparison before
// the conversion sends NaN and sites past the grid to cell nx.
template <typename T, typename I>
inline I uniform_cell(const T* x, I nx, T s, T t) {
    if (s < x[0]) return 0;
    if (s == x[1]) return nx - 1;
    if (!(t < T(nx - 1))) return nx;
    return static_cast<I>(t) + 1;
}

template <typename T, typename I, typename O>
void uniform(I nx, const T* x, int64_t n, const T* site, T h, O* cell) {
    // Groups of four multiply by the reciprocal, the tail divides.
    const T rh = T(1) / h;
    int64_t i = 0;
    for (; i + 4 <= n; i += 4)
        for (int k = 0; k < 4; ++k) {
            const T s = site[i + k];
            cell[i + k] = static_cast<O>(uniform_cell<T, I>(x, nx, s, (s - x[0]) * rh));
        }
    for (; i < n; ++i) cell[i] = static_cast<O>(uniform_cell<T, I>(x, nx, site[i], (site[i] - x[0]) / h));
}

template <typename T, typename I>
inline I quasi_cell(I nx, const T* x, T s, T rh) {
    if (s != s) return nx;
    if (s == x[nx - 1]) return nx - 1;
    I g;
    if (s < x[0]) g = 0;
    else if (s == x[1]) g = nx - 1;
    else {
        const T t = (s - x[0]) * rh;
        g = !(t < T(nx - 1)) ? nx : static_cast<I>(t) + 1;
    }
    I r = g;
    if (g != nx && s >= x[g]) r = walk_right<T, I>(x, g + 1, nx, s);
    if (r == 0) return 0;
    if (x[r - 1] <= s) return r;
    return walk_left<T, I>(x, r - 1, s);
}

// Cell in (low, high] given x[low] <= s < x[high]: halving without
// branches, so that random sites cost no mispredictions.
template <typename T, typename I>
inline I bracketed_cell(const T* x, I low, I high, T s) {
    I len = high - low;
    while (len > 1) {
        const I half = len / 2;
        low = x[low + half] <= s ? low + half : low;
        len -= half;
    }
    return low + 1;
}

template <typename T, typename I, typename O>
void sorted(I nx, const T* x, int64_t n, const T* site, int64_t* hint, O* cell) {
    I c = static_cast<I>(std::clamp<int64_t>(*hint, 0, nx - 1));
    for (int64_t i = 0; i < n; ++i) {
        const T s = site[i];
        if (c < nx && s < x[c]) {
            // The common case of dense ascending sites: still in the hint's
            // cell (or left of the partition).
            c = s < x[0] ? 0 : c;
            cell[i] = static_cast<O>(c);
            continue;
        }
        if (s == x[nx - 1]) { cell[i] = static_cast<O>(nx - 1); continue; }
        if (s < x[0]) { cell[i] = 0; c = 0; continue; }
        if (!(s < x[nx - 1])) { cell[i] = static_cast<O>(nx); c = nx; continue; }
        if (c > nx - 1) c = nx - 1;  // after a site past the end, the next must ascend
        if (s < x[c]) { cell[i] = static_cast<O>(c); continue; }
        // x[c] <= s < x[nx-1]: gallop from the hint, then halve the bracket.
        // The cell is the one bisection over [c, nx-1] finds, at a cost that
        // grows with the distance moved rather than with nx.
        I low = c, high = c + 1, step = 1;
        while (high < nx - 1 && !(s < x[high])) {
            low = high;
            const I rest = nx - 1 - c;
            step = step > rest / 2 ? rest : step * 2;
            high = c + step;
        }
        c = bracketed_cell<T, I>(x, low, high, s);
        cell[i] = static_cast<O>(c);
    }
    *hint = c;
}

// Hybrid: bisection, then a walk. With the task's look-up table the bin of
// the site brackets the cell first; the cell is the same either way.
template <typename T, typename I>
inline I hybrid_cell(I nx, const T* x, T s, T lut_scale, int64_t lut_size, const int64_t* lut) {
    if (!(s < x[nx - 1])) return s == x[nx - 1] ? nx - 1 : nx;
    if (s < x[0]) return 0;
    if (lut != nullptr) {
        const T b = (s - x[0]) * lut_scale;
        if (b >= T(0) && b < T(lut_size + 1)) {
            const int64_t k = static_cast<int64_t>(b);
            const int64_t lo = lut[2 * k], hi = lut[2 * k + 1];
            if (lo >= 0 && lo < hi && hi < nx && x[lo] <= s && s < x[hi])
                return bracketed_cell<T, I>(x, static_cast<I>(lo), static_cast<I>(hi), s);
        }
    }
    I low = 0, high = nx;
    if (high - low > 100) bisect<T, I>(x, low, high, s, 100);
    return walk_right<T, I>(x, low + 1, high, s);
}

// Hybrid search of a batch through the look-up table, eight sites in step:
// the halvings of the eight brackets are independent, so their loads overlap.
// Sites outside the partition, NaN, or outside a usable bin go the scalar way.
template <typename T, typename I, typename O>
void hybrid_lut(I nx, const T* x, int64_t n, const T* site, T lut_scale, int64_t lut_size,
                const int64_t* lut, O* cell) {
    constexpr int kLanes = 8;
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        I low[kLanes], len[kLanes];
        I most = 1;
        for (int l = 0; l < kLanes; ++l) {
            const T s = site[i + l];
            low[l] = 0, len[l] = 1;
            bool ok = s < x[nx - 1] && !(s < x[0]);
            if (ok) {
                const T b = (s - x[0]) * lut_scale;
                ok = b >= T(0) && b < T(lut_size + 1);
                if (ok) {
                    const int64_t k = static_cast<int64_t>(b);
                    const int64_t lo = lut[2 * k], hi = lut[2 * k + 1];
                    ok = lo >= 0 && lo < hi && hi < nx && x[lo] <= s && s < x[hi];
                    if (ok) low[l] = static_cast<I>(lo), len[l] = static_cast<I>(hi - lo);
                }
            }
            if (!ok) {
                cell[i + l] = static_cast<O>(hybrid_cell<T, I>(nx, x, s, lut_scale, lut_size, lut));
                len[l] = 0;
            }
            most = len[l] > most ? len[l] : most;
        }
        while (most > 1) {
            for (int l = 0; l < kLanes; ++l) {
                const I half = len[l] / 2;
                low[l] = x[low[l] + half] <= site[i + l] ? low[l] + half : low[l];
                len[l] -= half;
            }
            most -= most / 2;
        }
        for (int l = 0; l < kLanes; ++l)
            if (len[l] != 0) cell[i + l] = static_cast<O>(low[l] + 1);
    }
    for (; i < n; ++i) cell[i] = static_cast<O>(hybrid_cell<T, I>(nx, x, site[i], lut_scale, lut_size, lut));
}

template <typename T, typename I>
inline I peak_cell(I nx, const T* x, T s) {
    if (s != s) return nx;
    if (s == x[nx - 1]) return nx - 1;
    I low = 0, high = nx - 1;
    if (nx >= 42) bisect<T, I>(x, low, high, s, 40);
    if (s >= x[low]) return walk_right<T, I>(x, low + 1, nx, s);
    if (low == 0) return 0;
    if (x[low - 1] <= s) return low;
    return walk_left<T, I>(x, low - 1, s);
}

// Correction of a call-back's cell: a walk from the hint. Ties stay in the
// hint's cell, and a hint below 1 puts x[0] in cell 0.
template <typename T, typename I>
inline I user_walk(I nx, const T* x, T s, int64_t hint) {
    if (s != s) return nx;
    if (hint >= nx) return s == x[nx - 1] ? nx - 1 : walk_left<T, I>(x, nx, s);
    const I k = static_cast<I>(hint < 0 ? 0 : hint);
    if (s > x[k]) return s == x[nx - 1] ? nx - 1 : walk_right<T, I>(x, k + 1, nx, s);
    if (hint < 1) return 0;
    if (x[k - 1] <= s) return k;
    return walk_left<T, I>(x, k - 1, s);
}

}  // namespace

template <typename T, typename I, typename O>
int search_run(int kind, int64_t nx64, const T* x, int64_t n, const T* site, int64_t* hint, T scale,
               int64_t lut_size, const int64_t* lut, O* cell, SearchCallBack<T> cb, void* params,
               void* word, int32_t* flags) {
    const I nx = static_cast<I>(nx64);
    switch (kind) {
        case kSearchUniform: uniform<T, I, O>(nx, x, n, site, scale, cell); return DF_OK;
        case kSearchQuasiUniform: {
            const T rh = T(1) / scale;
            for (int64_t i = 0; i < n; ++i) cell[i] = static_cast<O>(quasi_cell<T, I>(nx, x, site[i], rh));
            return DF_OK;
        }
        case kSearchSorted: sorted<T, I, O>(nx, x, n, site, hint, cell); return DF_OK;
        case kSearchPeak:
            for (int64_t i = 0; i < n; ++i) cell[i] = static_cast<O>(peak_cell<T, I>(nx, x, site[i]));
            return DF_OK;
        case kSearchHybrid:
            if (lut != nullptr) {
                hybrid_lut<T, I, O>(nx, x, n, site, scale, lut_size, lut, cell);
                return DF_OK;
            }
            for (int64_t i = 0; i < n; ++i)
                cell[i] = static_cast<O>(hybrid_cell<T, I>(nx, x, site[i], scale, lut_size, lut));
            return DF_OK;
        default: break;
    }
    if (n <= 0) return DF_OK;
    std::memset(cell, 0, static_cast<size_t>(n) * sizeof(O));
    std::memset(flags, 0, static_cast<size_t>(n) * sizeof(int32_t));
    int64_t count = n;
    const int st = cb(&count, site, cell, flags, params, word);
    if (st < 0) return st;
    if (st == 1000) return DF_OK;
    for (int64_t i = 0; i < n; ++i) {
        if (flags[i] != 0) continue;
        const T s = site[i];
        if (kind == kSearchUniUser)
            cell[i] = static_cast<O>(uniform_cell<T, I>(x, nx, s, (s - x[0]) / scale));
        else
            cell[i] = static_cast<O>(user_walk<T, I>(nx, x, s, static_cast<int64_t>(cell[i])));
    }
    return st;
}

#define ORV_DF_SEARCH_INSTANCES(T)                                                                    \
    template int search_run<T, int32_t, int64_t>(int, int64_t, const T*, int64_t, const T*,           \
                                                 int64_t*, T, int64_t, const int64_t*, int64_t*,      \
                                                 SearchCallBack<T>, void*, void*, int32_t*);          \
    template int search_run<T, int64_t, int64_t>(int, int64_t, const T*, int64_t, const T*,           \
                                                 int64_t*, T, int64_t, const int64_t*, int64_t*,      \
                                                 SearchCallBack<T>, void*, void*, int32_t*);          \
    template int search_run<T, int32_t, int32_t>(int, int64_t, const T*, int64_t, const T*,           \
                                                 int64_t*, T, int64_t, const int64_t*, int32_t*,      \
                                                 SearchCallBack<T>, void*, void*, int32_t*);
ORV_DF_SEARCH_INSTANCES(double)
ORV_DF_SEARCH_INSTANCES(float)
#undef ORV_DF_SEARCH_INSTANCES

namespace {

// The unsuffixed forms: bit 1 alone selects 32-bit cells, otherwise 64-bit
// slots by nx.
template <typename T>
int search_by_flags(int kind, int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint,
                    T scale, int64_t lut_size, const int64_t* lut, void* cell, int64_t flags,
                    SearchCallBack<T> cb, void* params, void* word, int32_t* flag) {
    if ((flags & 3) == 2)
        return search_run<T, int32_t, int32_t>(kind, nx, x, n, site, hint, scale, lut_size, lut,
                                               static_cast<int32_t*>(cell), cb, params, word, flag);
    return search_slots<T>(kind, nx, x, n, site, hint, scale, lut_size, lut,
                           static_cast<int64_t*>(cell), cb, params, word, flag);
}

// Search1D over teams: chunk = nsite / threads for each team, the rest on
// the calling thread. Every team's sorted search starts from hint 0.
template <typename T>
struct SearchJob {
    int kind;
    int64_t nx;
    const T* x;
    const T* site;
    T scale;
    int64_t lut_size;
    const int64_t* lut;
    void* cell;
    int64_t flags;
    SearchCallBack<T> cb;
    void* params;
    int64_t chunk;
    int32_t* flag;  // one per site, user-defined kinds only
    int status[256];

    int run(int64_t first, int64_t count) {
        int64_t hint = 0;
        const size_t w = (flags & 3) == 2 ? 4 : 8;
        return search_by_flags<T>(kind, nx, x, count, site + first, &hint, scale, lut_size, lut,
                                  static_cast<char*>(cell) + first * w, flags, cb, params, nullptr,
                                  flag != nullptr ? flag + first : nullptr);
    }
    static void body(int team, int, void*, void* args) {
        auto* j = static_cast<SearchJob*>(args);
        j->status[team] = j->run(team * j->chunk, j->chunk);
    }
};

template <typename T>
int search_entry(DFTask* t, int64_t nsite, const T* site, int64_t sitehint, const T* datahint,
                 void* cell, SearchCallBack<T> cb, void* params, const DFThreadOps* ops) {
    if (t == nullptr) return DF_NULL_TASK;
    int kind = 0;
    if (const int st = select_search<T>(t, cb != nullptr, sitehint, datahint, &kind); st != DF_OK)
        return st;
    if (nsite <= 0) return DF_OK;
    const T* x = static_cast<const T*>(t->x);
    SearchJob<T> job{kind, t->nx, x, site, search_scale<T>(t, kind, datahint), t->lut_size,
                     t->lut, cell, (t->wide_ints & 1) ? 3 : 2, cb, params, 0, nullptr, {}};
    T stack_sites[0x1000];
    T* grid = nullptr;
    if (sitehint == DF_SITES_UNIFORM) {
        grid = nsite <= 0x1000 ? stack_sites : scratch<T>(nsite);
        if (grid == nullptr) return DF_NO_MEMORY;
        expand_grid<T>(site, nsite, 0, nsite, grid);
        job.site = grid;
    }
    if (cb != nullptr) {
        job.flag = scratch<int32_t>(nsite);
        if (job.flag == nullptr) {
            if (grid != stack_sites) orv_serv_deallocate(grid);
            return DF_NO_MEMORY;
        }
    }
    int threads = ops != nullptr && ops->max_threads != nullptr ? ops->max_threads() : 1;
    threads = std::min(threads, 256);
    int st = DF_OK;
    if (threads < 2 || ops->parallel_run == nullptr) {
        st = job.run(0, nsite);
    } else {
        job.chunk = nsite / threads;
        if (job.chunk > 0) ops->parallel_run(threads, threads, &job, SearchJob<T>::body);
        const int64_t done = job.chunk * threads;
        st = job.run(done, nsite - done);
        for (int j = 0; j < threads && job.chunk > 0; ++j)
            if (job.status[j] < 0) { st = job.status[j]; break; }
    }
    if (job.flag != nullptr) orv_serv_deallocate(job.flag);
    if (grid != nullptr && grid != stack_sites) orv_serv_deallocate(grid);
    return st;
}

// Forms of one kernel.
template <typename T, int Kind>
struct Forms {
    static int f32(int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T*,
                   int64_t ls, const int64_t* l, int32_t* c, SearchCallBack<T> cb = nullptr,
                   void* p = nullptr, void* w = nullptr, int32_t* f = nullptr) {
        return search_run<T, int32_t, int32_t>(Kind, nx, x, n, s, h, sc, ls, l, c, cb, p, w, f);
    }
    static int f64(int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T*,
                   int64_t ls, const int64_t* l, int64_t* c, SearchCallBack<T> cb = nullptr,
                   void* p = nullptr, void* w = nullptr, int32_t* f = nullptr) {
        return search_run<T, int64_t, int64_t>(Kind, nx, x, n, s, h, sc, ls, l, c, cb, p, w, f);
    }
    static int pack(int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T*,
                    int64_t ls, const int64_t* l, int64_t* c, SearchCallBack<T> cb = nullptr,
                    void* p = nullptr, void* w = nullptr, int32_t* f = nullptr) {
        return search_run<T, int32_t, int64_t>(Kind, nx, x, n, s, h, sc, ls, l, c, cb, p, w, f);
    }
    static int any(int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T*,
                   int64_t ls, const int64_t* l, void* c, int64_t flags,
                   SearchCallBack<T> cb = nullptr, void* p = nullptr, void* w = nullptr,
                   int32_t* f = nullptr) {
        return search_by_flags<T>(Kind, nx, x, n, s, h, sc, ls, l, c, flags, cb, p, w, f);
    }
};

}  // namespace
}  // namespace orv::df

using orv::df::Forms;

#define ORV_DF_PLAIN_FORMS(t, T, name, kind)                                                       \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D32(                                     \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int32_t* c) {                                                            \
        return Forms<T, kind>::f32(nx, x, n, s, h, sc, d, ls, l, c);                               \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D64(                                     \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int64_t* c) {                                                            \
        return Forms<T, kind>::f64(nx, x, n, s, h, sc, d, ls, l, c);                               \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D64Pack(                                 \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int64_t* c) {                                                            \
        return Forms<T, kind>::pack(nx, x, n, s, h, sc, d, ls, l, c);                              \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D(                                       \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, void* c, int64_t flags) {                                                \
        return Forms<T, kind>::any(nx, x, n, s, h, sc, d, ls, l, c, flags);                        \
    }

// The user-defined 64 and 64Pack forms are one entry point.
#define ORV_DF_USER_FORMS(t, T, name, kind)                                                        \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D32(                                     \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int32_t* c, DF##t##SearchCallBack cb, void* p, void* w, int32_t* f) {    \
        return Forms<T, kind>::f32(nx, x, n, s, h, sc, d, ls, l, c, cb, p, w, f);                  \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D64(                                     \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int64_t* c, DF##t##SearchCallBack cb, void* p, void* w, int32_t* f) {    \
        return Forms<T, kind>::f64(nx, x, n, s, h, sc, d, ls, l, c, cb, p, w, f);                  \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D64Pack(                                 \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, int64_t* c, DF##t##SearchCallBack cb, void* p, void* w, int32_t* f) {    \
        return Forms<T, kind>::f64(nx, x, n, s, h, sc, d, ls, l, c, cb, p, w, f);                  \
    }                                                                                              \
    ORV_EXPORT int orv_df_kernel_##t##DF##name##Search1D(                                       \
        int64_t nx, const T* x, int64_t n, const T* s, int64_t* h, T sc, const T* d, int64_t ls,   \
        const int64_t* l, void* c, int64_t flags, DF##t##SearchCallBack cb, void* p, void* w,      \
        int32_t* f) {                                                                              \
        return Forms<T, kind>::any(nx, x, n, s, h, sc, d, ls, l, c, flags, cb, p, w, f);           \
    }

#define ORV_DF_ALL_FORMS(t, T)                                            \
    ORV_DF_PLAIN_FORMS(t, T, Uniform, orv::df::kSearchUniform)            \
    ORV_DF_PLAIN_FORMS(t, T, QuasiUniform, orv::df::kSearchQuasiUniform)  \
    ORV_DF_PLAIN_FORMS(t, T, Sorted, orv::df::kSearchSorted)              \
    ORV_DF_PLAIN_FORMS(t, T, Peak, orv::df::kSearchPeak)                  \
    ORV_DF_PLAIN_FORMS(t, T, Hybrid, orv::df::kSearchHybrid)              \
    ORV_DF_USER_FORMS(t, T, UserDef, orv::df::kSearchUser)                \
    ORV_DF_USER_FORMS(t, T, UniUserDef, orv::df::kSearchUniUser)
ORV_DF_ALL_FORMS(d, double)
ORV_DF_ALL_FORMS(s, float)

ORV_EXPORT int orv_df_kernel_dDFSearch1D(DFTask* task, int64_t, int64_t nsite, const double* site,
                                            int64_t sitehint, const double* datahint, void* cell,
                                            DFdSearchCallBack cb, void* params,
                                            const DFThreadOps* ops) {
    if (task != nullptr && task->is_double != 1) return DF_BAD_PRECISION;
    return orv::df::search_entry<double>(task, nsite, site, sitehint, datahint, cell, cb, params, ops);
}
ORV_EXPORT int orv_df_kernel_sDFSearch1D(DFTask* task, int64_t, int64_t nsite, const float* site,
                                            int64_t sitehint, const float* datahint, void* cell,
                                            DFsSearchCallBack cb, void* params,
                                            const DFThreadOps* ops) {
    if (task != nullptr && task->is_double != 0) return DF_BAD_PRECISION;
    return orv::df::search_entry<float>(task, nsite, site, sitehint, datahint, cell, cb, params, ops);
}
