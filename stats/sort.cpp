// _vstdSSSort, _vstsSSSort: each admitted variable's observations sorted
// ascending into a compact row of `sorted`, by a least-significant-digit
// radix sort on keys whose unsigned order is the order of the reals.
#include "stats/frame.h"
#include "stats/qsort.h"

namespace {

using namespace orv::ss;

constexpr uint64_t kMethodRadix = 0x100000;

template <typename T> struct KeyOf;
template <> struct KeyOf<double> { using type = uint64_t; };
template <> struct KeyOf<float> { using type = uint32_t; };

// Sign clear: the sign bit set; sign set: every bit inverted. Unsigned order
// is then real order, with -NaN below -inf, -0 below +0 and +NaN above +inf.
template <typename K>
inline K to_key(K u) {
    constexpr K sign = K(1) << (sizeof(K) * 8 - 1);
    return (u & sign) ? ~u : (u | sign);
}
template <typename K>
inline K from_key(K k) {
    constexpr K sign = K(1) << (sizeof(K) * 8 - 1);
    return (k & sign) ? (k ^ sign) : ~k;
}

// 11-bit digits: 6 for a double (the top one 9 bits wide), 3 for a float.
constexpr int kDigitBits = 11;
constexpr uint32_t kDigitMask = (1u << kDigitBits) - 1;

// One scatter of n keys by the digit at `shift`: the first reads the values
// themselves (stride apart) and makes their keys, the last writes values
// back; `pos` holds each bucket's next place. Each store asks for the line
// 128 bytes further on in its bucket, so that the next lines of up to 2048
// buckets are on their way before they are written (a prefetch past the
// end of the array never faults).
constexpr int kAheadBytes = 128;
template <typename K, typename T>
inline K key_at(const T* x, int64_t i) {
    K u;
    std::memcpy(&u, x + i, sizeof u);
    return to_key(u);
}

template <typename K, bool kLast, typename T>
void scatter_first(const T* x, int64_t stride, K* to, int64_t n, int shift, int64_t* pos) {
    for (int64_t i = 0; i < n; ++i) {
        const K k = key_at<K>(x, i * stride);
        const int64_t at = pos[(k >> shift) & kDigitMask]++;
        to[at] = kLast ? from_key(k) : k;
        __builtin_prefetch(reinterpret_cast<const char*>(to + at) + kAheadBytes, 1);
    }
}
template <typename K, bool kLast>
void scatter(const K* from, K* to, int64_t n, int shift, int64_t* pos) {
    for (int64_t i = 0; i < n; ++i) {
        const K k = from[i];
        const int64_t at = pos[(k >> shift) & kDigitMask]++;
        to[at] = kLast ? from_key(k) : k;
        __builtin_prefetch(reinterpret_cast<const char*>(to + at) + kAheadBytes, 1);
    }
}

// Sorts the n values src[0], src[stride], ... into row[0..n) with scratch
// s[0..n); src may be row itself (stride 1). All digit histograms are
// counted in one pass over the values; a digit every key shares is not
// scattered. The first scatter makes the keys and the last turns them back
// into values, and the first goes to row or to s so that the last ends in
// row: one read pass and one scatter per digit that varies.
template <typename T>
void radix_sort(const T* src, int64_t stride, T* row, T* s, int64_t n) {
    using K = typename KeyOf<T>::type;
    static_assert(sizeof(K) == sizeof(T));
    constexpr int bits = sizeof(K) * 8;
    constexpr int passes = (bits + kDigitBits - 1) / kDigitBits;
    uint32_t count[passes][kDigitMask + 1] = {};
    // The top digit takes few values on most data, so that one counter is
    // bumped again and again; two sets of counters for it (even and odd
    // elements) halve that chain of increments.
    uint32_t top[2][kDigitMask + 1] = {};
    constexpr int top_shift = (passes - 1) * kDigitBits;
    int64_t i = 0;
    for (; i + 1 < n; i += 2) {
        const K k = key_at<K>(src, i * stride), m = key_at<K>(src, (i + 1) * stride);
        for (int d = 0; d + 1 < passes; ++d) {
            ++count[d][(k >> (d * kDigitBits)) & kDigitMask];
            ++count[d][(m >> (d * kDigitBits)) & kDigitMask];
        }
        ++top[0][k >> top_shift];
        ++top[1][m >> top_shift];
    }
    for (; i < n; ++i) {
        const K k = key_at<K>(src, i * stride);
        for (int d = 0; d + 1 < passes; ++d) ++count[d][(k >> (d * kDigitBits)) & kDigitMask];
        ++top[0][k >> top_shift];
    }
    for (uint32_t b = 0; b <= kDigitMask; ++b) count[passes - 1][b] = top[0][b] + top[1][b];

    int active[passes];
    int na = 0;
    const K k0 = key_at<K>(src, 0);
    for (int d = 0; d < passes; ++d)
        if (count[d][(k0 >> (d * kDigitBits)) & kDigitMask] != n) active[na++] = d;
    K* const out = reinterpret_cast<K*>(row);
    K* const other = reinterpret_cast<K*>(s);
    const bool in_place = src == row;
    if (na == 0) {
        if (!in_place)
            for (int64_t j = 0; j < n; ++j) row[j] = src[j * stride];
        return;
    }
    // Scatter j of na goes to row when na - j is odd; in place the first one
    // cannot, and the result is copied back from s at the end.
    K* to = (na % 2 == 1 && !in_place) ? out : other;
    const K* from = nullptr;
    int64_t pos[kDigitMask + 1];
    for (int j = 0; j < na; ++j) {
        const int d = active[j], shift = d * kDigitBits;
        int64_t start = 0;
        for (uint32_t b = 0; b <= kDigitMask; ++b) {
            pos[b] = start;
            start += count[d][b];
        }
        const bool first = j == 0, last = j == na - 1;
        if (first && last)
            scatter_first<K, true>(src, stride, to, n, shift, pos);
        else if (first)
            scatter_first<K, false>(src, stride, to, n, shift, pos);
        else if (last)
            scatter<K, true>(from, to, n, shift, pos);
        else
            scatter<K, false>(from, to, n, shift, pos);
        from = to;
        to = to == other ? out : other;
    }
    if (from != out) std::memcpy(row, from, static_cast<std::size_t>(n) * sizeof(T));
}

template <typename T>
struct Context {
    const T* x;
    int64_t p, n;
    bool x_by_var, out_by_var;
    T* sorted;
    const Admitted* admitted;
    T* scratch;  // per thread: n for the radix sort, and n more for the row when out is by observation
    int64_t per_thread;
    int threads;
};

template <typename T>
void item(int a, int thread, int, void* vctx) {
    auto& c = *static_cast<Context<T>*>(vctx);
    const int64_t v = (*c.admitted)[a], n = c.n;
    Buffer<T> own;  // a table that reports a thread index beyond its count
    T* s = c.scratch + static_cast<int64_t>(thread) * c.per_thread;
    if (thread < 0 || thread >= c.threads) {
        if (!own.allocate(static_cast<std::size_t>(c.per_thread), false)) return;
        s = own.get();
    }
    T* row = c.out_by_var ? c.sorted + a * n : s + n;
    const T* src = c.x_by_var ? c.x + v * n : c.x + v;
    const int64_t stride = c.x_by_var ? 1 : c.p;
    if (n <= 0x7fffffff) {
        radix_sort(src, stride, row, s, n);
    } else {
        if (src != row)
            for (int64_t i = 0; i < n; ++i) row[i] = src[i * stride];
        quicksort(row, n);
    }
    if (!c.out_by_var)
        for (int64_t i = 0; i < n; ++i) c.sorted[i * c.p + a] = row[i];
}

template <typename T>
int32_t sort(SsTask* task, uint64_t, uint64_t method, const SsThreadingTable* threading) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    T* const out = view.real(Field::sorted);
    if (!out) return view.missing(Field::sorted);
    if (!task->sorted_storage) return view.missing(Field::sorted_storage);
    if (!task->data_storage) return SS_ERR_STORAGE_WORD;
    const int64_t out_word = view.integer(Field::sorted_storage);
    const int64_t word = view.integer(Field::data_storage);
    const T* const x = view.real(Field::data);
    const bool in_place = out == x;
    if (in_place) {
        if ((out_word & SS_STORAGE_BY_VARIABLE) != (word & SS_STORAGE_BY_VARIABLE))
            return SS_ERR_STORAGE_WORD;
        if (task->indices) return SS_ERR_SORT_IN_PLACE_INDICES;
    }
    const int64_t layouts = SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION;
    if (!(word & layouts) || !(out_word & layouts)) return SS_ERR_STORAGE_VALUE;
    if (!(method & kMethodRadix)) return SS_ERR_METHOD;
    if (!task->dimension || view.integer(Field::dimension) < 1) return SS_ERR_DIMENSION;
    if (!task->observations || view.integer(Field::observations) < 1) return SS_ERR_OBSERVATIONS;
    if (!x) return view.missing(Field::data);
    const int64_t p = view.integer(Field::dimension), n = view.integer(Field::observations);
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements)) return SS_ERR_NO_MEMORY;

    // Threads within a scratch budget of 1 GiB for each thread allowed.
    const bool out_by_var = (out_word & SS_STORAGE_BY_VARIABLE) != 0;
    const int64_t per_thread = out_by_var ? n : 2 * n;
    const int64_t maxthr = max_threads(threading);
    int64_t threads = std::min(maxthr, p);
    const int64_t bytes = per_thread * static_cast<int64_t>(sizeof(T));
    threads = std::max<int64_t>(1, std::min<int64_t>(threads, maxthr * (int64_t(1) << 30) / bytes));
    threads = std::min<int64_t>(threads, INT32_MAX);
    int64_t total = 0;
    Buffer<T> scratch;
    if (!checked_count(per_thread, threads, sizeof(T), &total) ||
        !scratch.allocate(static_cast<std::size_t>(total), false))
        return SS_ERR_NO_MEMORY;
    Admitted admitted;
    if (!admitted.build(view.mask(), p) || admitted.count > INT32_MAX) return SS_ERR_NO_MEMORY;
    Context<T> ctx{x, p, n, (word & SS_STORAGE_BY_VARIABLE) || p == 1, out_by_var || p == 1,
                   out, &admitted, scratch.get(), per_thread,
                   static_cast<int>(threads)};
    run_items(threading, static_cast<int>(admitted.count), static_cast<int>(threads), &ctx, &item<T>);
    return SS_OK;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSSort(SsTask* task, uint64_t estimates, uint64_t method,
                                  const SsThreadingTable* threading) {
    return sort<double>(task, estimates, method, threading);
}
ORV_EXPORT int32_t _vstsSSSort(SsTask* task, uint64_t estimates, uint64_t method,
                                  const SsThreadingTable* threading) {
    return sort<float>(task, estimates, method, threading);
}
