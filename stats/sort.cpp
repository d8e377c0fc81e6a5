// _vstdSSSort, _vstsSSSort: each admitted variable's observations sorted
// ascending into a compact row of `sorted`, by a least-significant-digit
// radix sort on keys whose unsigned order is the order of the reals.
#include "stats/frame.h"
#include "stats/qsort.h"

namespace {

using namespace orv::ss;

constexpr uint64_t kMethodRadix = 0x100000;

template <typename T> struct KeyOf;
template <> struct KeyOf<double> { using type = uint64_t; static constexpr int digits[6] = {11, 11, 10, 11, 11, 10}; };
template <> struct KeyOf<float> { using type = uint32_t; static constexpr int digits[3] = {11, 11, 10}; };

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

// Sorts a[0..n) with scratch s[0..n). All digit histograms are counted in
// the one pass that turns values into keys; a digit every key shares is not
// scattered.
template <typename T>
void radix_sort(T* a, T* s, int64_t n) {
    using K = typename KeyOf<T>::type;
    constexpr auto& width = KeyOf<T>::digits;
    constexpr int passes = sizeof(width) / sizeof(width[0]);
    int shift[passes];
    for (int d = 0, at = 0; d < passes; at += width[d], ++d) shift[d] = at;
    static_assert(sizeof(K) == sizeof(T));
    K* keys = reinterpret_cast<K*>(a);
    K* other = reinterpret_cast<K*>(s);
    int64_t count[passes][2048] = {};
    for (int64_t i = 0; i < n; ++i) {
        K u;
        std::memcpy(&u, &a[i], sizeof u);
        const K k = to_key(u);
        keys[i] = k;
        for (int d = 0; d < passes; ++d) ++count[d][(k >> shift[d]) & ((K(1) << width[d]) - 1)];
    }
    K* from = keys;
    K* to = other;
    for (int d = 0; d < passes; ++d) {
        const K mask = (K(1) << width[d]) - 1;
        if (count[d][(from[0] >> shift[d]) & mask] == n) continue;
        int64_t start = 0;
        for (K b = 0; b <= mask; ++b) {
            const int64_t c = count[d][b];
            count[d][b] = start;
            start += c;
        }
        for (int64_t i = 0; i < n; ++i) to[count[d][(from[i] >> shift[d]) & mask]++] = from[i];
        std::swap(from, to);
    }
    for (int64_t i = 0; i < n; ++i) {
        const K u = from_key(from[i]);
        std::memcpy(&a[i], &u, sizeof u);
    }
}

template <typename T>
struct Context {
    const T* x;
    int64_t p, n;
    bool x_by_var, out_by_var, in_place;
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
    if (!(c.in_place && c.x_by_var && c.out_by_var))
        for (int64_t i = 0; i < n; ++i) row[i] = c.x_by_var ? c.x[v * n + i] : c.x[i * c.p + v];
    if (n <= 0x7fffffff)
        radix_sort(row, s, n);
    else
        quicksort(row, n);
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
                   in_place, out, &admitted, scratch.get(), per_thread,
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
