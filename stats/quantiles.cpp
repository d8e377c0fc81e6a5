// _vstdSSQuantiles, _vstsSSQuantiles: quantiles by linear interpolation
// between order statistics, and the sorted observations, of each admitted
// variable (compact result rows); and the exported sorting routines.
#include "stats/frame.h"
#include "stats/qsort.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <cmath>

namespace {

using namespace orv::ss;

// Quantile of order q over sorted values: h = q (n - 1), between v[lo] and
// v[hi] with hi = lo + 1, clamped to n - 1.
inline void interpolation(double q, int64_t n, int64_t* lo, int64_t* hi, double* frac) {
    const double h = q * static_cast<double>(n - 1);
    *lo = static_cast<int64_t>(h);
    *hi = *lo >= n - 1 ? n - 1 : *lo + 1;
    *frac = h - static_cast<double>(*lo);
}

template <typename T>
T interpolate(T vlo, T vhi, double frac) {
    return static_cast<T>((vhi - vlo) * static_cast<T>(frac) + vlo);
}

template <typename T>
struct Context {
    const T* x;
    int64_t p, n;
    bool by_var;
    const T* orders;
    int64_t count;
    T* quantiles;        // null if not asked for
    T* order_stats;      // null if not asked for
    bool stats_by_var;
    const Admitted* admitted;
    T* scratch;          // n elements for each thread
    int threads;
    int32_t status;      // an item's allocation failure
};

template <typename T>
void item(int a, int thread, int, void* vctx) {
    auto& c = *static_cast<Context<T>*>(vctx);
    const int64_t v = (*c.admitted)[a], n = c.n;
    auto value = [&](int64_t i) { return c.by_var ? c.x[v * n + i] : c.x[i * c.p + v]; };
    if (c.order_stats) {
        const int64_t step = c.stats_by_var ? 1 : c.p;
        const Strided<T> row{c.stats_by_var ? c.order_stats + a * n : c.order_stats + a, step};
        for (int64_t i = 0; i < n; ++i) row[i] = value(i);
        if (step == 1)
            quicksort(row.a, n);
        else
            quicksort(row, n);
        for (int64_t r = 0; r < (c.quantiles ? c.count : 0); ++r) {
            int64_t lo, hi;
            double frac;
            interpolation(c.orders[r], n, &lo, &hi, &frac);
            c.quantiles[a * c.count + r] = interpolate(row[lo], row[hi], frac);
        }
        return;
    }
    // Selection of the ranks every order needs, on a bracket that shrinks
    // from one rank to the next.
    Buffer<T> own;  // a table that reports a thread index beyond its count
    T* s = c.scratch + static_cast<int64_t>(thread) * n;
    if (thread < 0 || thread >= c.threads) {
        if (!own.allocate(static_cast<std::size_t>(n), false)) {
            c.status = SS_ERR_NO_MEMORY;
            return;
        }
        s = own.get();
    }
    const int64_t m = 2 * c.count;
    const bool buckets = n >= kBucketMinimum;
    Buffer<int64_t> ranks;
    Buffer<T> vals;
    if (!ranks.allocate(static_cast<std::size_t>(m + (buckets ? 2 * kBuckets + m : 0)), false) ||
        !vals.allocate(static_cast<std::size_t>(m), false)) {
        c.status = SS_ERR_NO_MEMORY;
        return;
    }
    int64_t* ks = ranks.get();
    T* at = vals.get();  // the element of rank ks[j]
    for (int64_t r = 0; r < c.count; ++r) {
        double frac;
        interpolation(c.orders[r], n, &ks[2 * r], &ks[2 * r + 1], &frac);
    }
    std::sort(ks, ks + m);
    if (!buckets || !bucket_select(value, n, ks, m, s, ks + m, at)) {
        for (int64_t i = 0; i < n; ++i) s[i] = value(i);
        select_ranks(s, n, ks, m);
        for (int64_t j = 0; j < m; ++j) at[j] = s[ks[j]];
    }
    auto element = [&](int64_t k) { return at[std::lower_bound(ks, ks + m, k) - ks]; };
    for (int64_t r = 0; r < c.count; ++r) {
        int64_t lo, hi;
        double frac;
        interpolation(c.orders[r], n, &lo, &hi, &frac);
        c.quantiles[a * c.count + r] = interpolate(element(lo), element(hi), frac);
    }
}

template <typename T>
int32_t quantiles(SsTask* task, uint64_t estimates, uint64_t method,
                  const SsThreadingTable* threading) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    if (!task->data_storage) return SS_ERR_STORAGE_WORD;
    const int64_t word = view.integer(Field::data_storage);
    if (!(word & (SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION))) return SS_ERR_STORAGE_VALUE;
    const bool want_q = estimates & SS_EST_QUANTILES, want_os = estimates & SS_EST_ORDER_STATS;
    T* const q = view.real(Field::quantiles);
    const T* const orders = view.real(Field::quantile_orders);
    int64_t count = 0;
    if (want_q) {
        if (!q) return view.missing(Field::quantiles);
        if (!orders) return view.missing(Field::quantile_orders);
        if (!task->quantile_count) return view.missing(Field::quantile_count);
        count = view.integer(Field::quantile_count);
        if (count < 0) return SS_ERR_QUANTILE_COUNT;
        for (int64_t r = 0; r < count; ++r)
            if (!(orders[r] >= T(0) && orders[r] <= T(1))) return SS_ERR_QUANTILE_COUNT;  // NaN too
    }
    T* const os = view.real(Field::order_stats);
    int64_t os_word = 0;
    if (want_os) {
        if (!os) return view.missing(Field::order_stats);
        if (!task->order_stats_storage) return view.missing(Field::order_stats_storage);
        os_word = view.integer(Field::order_stats_storage);
        if (!(os_word & (SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION)))
            return SS_ERR_STORAGE_VALUE;
    }
    if (!(method & SS_METHOD_PLAIN_SUMS)) return SS_ERR_METHOD;
    // The counts and the data, read through the record, must be there.
    if (!task->dimension || view.integer(Field::dimension) < 1) return SS_ERR_DIMENSION;
    if (!task->observations || view.integer(Field::observations) < 1) return SS_ERR_OBSERVATIONS;
    const T* const x = view.real(Field::data);
    if (!x) return view.missing(Field::data);
    if (!want_os && (!want_q || count == 0)) return SS_OK;
    const int64_t p = view.integer(Field::dimension), n = view.integer(Field::observations);
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements)) return SS_ERR_NO_MEMORY;

    // Threads, with all their scratch under 1 GiB.
    int64_t threads = std::min(max_threads(threading), p);
    threads = std::min<int64_t>(threads, (int64_t(1) << 30) / (n * 8));
    threads = std::max<int64_t>(1, std::min<int64_t>(threads, INT32_MAX));
    Buffer<T> scratch;
    if (!want_os && !scratch.allocate(static_cast<std::size_t>(n * threads), false))
        return SS_ERR_NO_MEMORY;
    Admitted admitted;
    if (!admitted.build(view.mask(), p)) return SS_ERR_NO_MEMORY;
    if (admitted.count > INT32_MAX) return SS_ERR_NO_MEMORY;
    Context<T> ctx{x, p, n, (word & SS_STORAGE_BY_VARIABLE) || p == 1, orders, want_q ? count : 0,
                   want_q ? q : nullptr, want_os ? os : nullptr,
                   (os_word & SS_STORAGE_BY_VARIABLE) != 0, &admitted, scratch.get(),
                   static_cast<int>(threads), SS_OK};
    run_items(threading, static_cast<int>(admitted.count), static_cast<int>(threads), &ctx, &item<T>);
    return ctx.status;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                       const SsThreadingTable* threading) {
    return quantiles<double>(task, estimates, method, threading);
}
ORV_EXPORT int32_t _vstsSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                       const SsThreadingTable* threading) {
    return quantiles<float>(task, estimates, method, threading);
}

// The sorting routines: nothing happens for n below 1 or a null array, and
// a rank outside [0, n) selects nothing and gives NaN.
ORV_EXPORT void __vstdQSort(int64_t n, double* a) {
    if (a && n > 1) quicksort(a, n);
}
ORV_EXPORT void __vstsQSort(int64_t n, float* a) {
    if (a && n > 1) quicksort(a, n);
}
ORV_EXPORT void __vstdQSortStep(int64_t n, double* a, int64_t stride) {
    if (a && n > 1 && stride >= 1) quicksort(Strided<double>{a, stride}, n);
}
ORV_EXPORT void __vstsQSortStep(int64_t n, float* a, int64_t stride) {
    if (a && n > 1 && stride >= 1) quicksort(Strided<float>{a, stride}, n);
}
ORV_EXPORT double __vstdQSortSelect(int64_t n, double* a, int64_t k) {
    return a && k >= 0 && k < n ? select(a, n, k) : NAN;
}
ORV_EXPORT float __vstsQSortSelect(int64_t n, float* a, int64_t k) {
    return a && k >= 0 && k < n ? select(a, n, k) : NAN;
}
