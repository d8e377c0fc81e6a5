// _vstdSSWMedian, _vstsSSWMedian: the weighted quantile of order
// quantile_orders[0] (the weighted median at 0.5) of every variable, into
// quantiles[v]. The values are sorted together with their weights; the
// result is the value where the running weight reaches t = q * total, with
// linear interpolation on the running weight between the last value of
// positive weight below and the value that passes t, and the midpoint of two
// values when an even count meets t exactly.
#include "stats/frame.h"
#include "stats/qsort.h"

namespace {

using namespace orv::ss;

// A value with its weight, ordered by the value: the quicksort carries the
// weight with every move.
template <typename T>
struct Pair {
    T v, w;
    bool operator<(const Pair& o) const { return v < o.v; }
    bool operator>(const Pair& o) const { return v > o.v; }
};

template <typename T>
T weighted_quantile(const Pair<T>* a, int64_t n, T total, T t, T q) {
    T c = 0;
    int64_t i = 0;
    for (; i < n; ++i) {
        c += a[i].w;
        if (t <= c) break;
    }
    if (i >= n) i = n - 1;  // t above the running total: the largest value
    const T v = a[i].v;
    if (c <= t) {
        if (n % 2 == 0 && i != n - 1) {
            int64_t j = i + 1;
            while (j < n && !(a[j].w > 0)) ++j;
            if (j > n - 1) j = n - 1;
            return (v + a[j].v) * T(0.5);
        }
        return v;
    }
    const T w = a[i].w, below = c - w;
    if (!(below > 0)) return v;
    int64_t k = i - 1;
    while (k >= 0 && !(a[k].w > 0)) --k;
    if (k < 0 || (n % 2 == 1 && below == (total - w) * q)) return v;
    return a[k].v + (v - a[k].v) * (t - below) / w;
}

template <typename T>
int32_t wmedian(SsTask* task, uint64_t, uint64_t, const SsThreadingTable*) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    // Cheap guards of what would be read or written out of bounds.
    const int64_t p = task->dimension ? view.integer(Field::dimension) : 0;
    if (p < 1) return SS_ERR_DIMENSION;
    const int64_t n = task->observations ? view.integer(Field::observations) : 0;
    if (n < 1) return SS_ERR_OBSERVATIONS;
    if (!task->data_storage) return SS_ERR_STORAGE_WORD;
    const T* const x = view.real(Field::data);
    const T* const w = view.real(Field::weights);
    const T* const orders = view.real(Field::quantile_orders);
    T* const out = view.real(Field::quantiles);
    if (!x) return view.missing(Field::data);
    if (!w) return view.missing(Field::weights);
    if (!orders) return view.missing(Field::quantile_orders);
    if (!out) return view.missing(Field::quantiles);
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements) ||
        !checked_count(n, 2, sizeof(T), &elements))
        return SS_ERR_NO_MEMORY;
    const bool by_var = view.integer(Field::data_storage) == SS_STORAGE_BY_VARIABLE;
    Buffer<Pair<T>> pairs;
    if (!pairs.allocate(static_cast<std::size_t>(n), false)) return SS_ERR_NO_MEMORY;
    Pair<T>* a = pairs.get();

    T lane[4] = {0, 0, 0, 0};
    int64_t i = 0;
    for (; i + 4 <= n; i += 4)
        for (int l = 0; l < 4; ++l) lane[l] += w[i + l];
    for (; i < n; ++i) lane[0] += w[i];
    const T total = (lane[0] + lane[1]) + (lane[2] + lane[3]);
    const T q = orders[0], t = total * q;
    for (int64_t v = 0; v < p; ++v) {
        for (int64_t j = 0; j < n; ++j) a[j] = {by_var ? x[v * n + j] : x[j * p + v], w[j]};
        quicksort(a, n);
        out[v] = weighted_quantile(a, n, total, t, q);
    }
    return SS_OK;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSWMedian(SsTask* task, uint64_t estimates, uint64_t method,
                                     const SsThreadingTable* threading) {
    return wmedian<double>(task, estimates, method, threading);
}
ORV_EXPORT int32_t _vstsSSWMedian(SsTask* task, uint64_t estimates, uint64_t method,
                                     const SsThreadingTable* threading) {
    return wmedian<float>(task, estimates, method, threading);
}
