// _vstdSSMinmax, _vstsSSMinmax: minimum and maximum of each admitted
// variable, accumulated from what the result arrays already hold, so that a
// caller seeds them once and feeds block after block. An element replaces
// the minimum only if strictly below it (the maximum: strictly above), so a
// NaN is never taken.
#include "stats/frame.h"

namespace {

using namespace orv::ss;

// One variable's row. Four lanes in turn break the dependence on the running
// extreme; the lanes then meet in lane order.
template <typename T, bool Min, bool Max>
void scan(const T* x, int64_t n, T* mn, T* mx) {
    T lo[4] = {*mn, *mn, *mn, *mn}, hi[4] = {*mx, *mx, *mx, *mx};
    int64_t i = 0;
    for (; i + 4 <= n; i += 4)
        for (int l = 0; l < 4; ++l) {
            const T v = x[i + l];
            if constexpr (Min) lo[l] = v < lo[l] ? v : lo[l];
            if constexpr (Max) hi[l] = v > hi[l] ? v : hi[l];
        }
    for (; i < n; ++i) {
        const T v = x[i];
        if constexpr (Min) lo[0] = v < lo[0] ? v : lo[0];
        if constexpr (Max) hi[0] = v > hi[0] ? v : hi[0];
    }
    for (int l = 1; l < 4; ++l) {
        if constexpr (Min) lo[0] = lo[l] < lo[0] ? lo[l] : lo[0];
        if constexpr (Max) hi[0] = hi[l] > hi[0] ? hi[l] : hi[0];
    }
    if constexpr (Min) *mn = lo[0];
    if constexpr (Max) *mx = hi[0];
}

template <typename T>
int32_t minmax(SsTask* task, uint64_t estimates, uint64_t method, const SsThreadingTable*) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    if (!task->data_storage) return SS_ERR_STORAGE_WORD;
    const int64_t word = view.integer(Field::data_storage);
    if (!(word & (SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION))) return SS_ERR_STORAGE_VALUE;
    const bool want_min = estimates & SS_EST_MIN, want_max = estimates & SS_EST_MAX;
    T* const mn = view.real(Field::minimum);
    T* const mx = view.real(Field::maximum);
    if (want_min && !mn) return view.missing(Field::minimum);
    if (want_max && !mx) return view.missing(Field::maximum);
    if (!(method & (SS_METHOD_PLAIN_SUMS | SS_METHOD_RUNNING))) return SS_ERR_METHOD;
    // The counts and the data, read through the record, must be there.
    if (!task->dimension || view.integer(Field::dimension) < 1) return SS_ERR_DIMENSION;
    if (!task->observations || view.integer(Field::observations) < 1) return SS_ERR_OBSERVATIONS;
    const T* x = view.real(Field::data);
    if (!x) return view.missing(Field::data);
    if (!want_min && !want_max) return SS_OK;
    const int64_t p = view.integer(Field::dimension), n = view.integer(Field::observations);
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements)) return SS_ERR_NO_MEMORY;

    Admitted admitted;
    if (!admitted.build(view.mask(), p)) return SS_ERR_NO_MEMORY;
    if ((word & SS_STORAGE_BY_VARIABLE) || p == 1) {
        T dummy_lo = 0, dummy_hi = 0;
        for (int64_t a = 0; a < admitted.count; ++a) {
            const int64_t v = admitted[a];
            T* lo = want_min ? mn + v : &dummy_lo;
            T* hi = want_max ? mx + v : &dummy_hi;
            if (want_min && want_max)
                scan<T, true, true>(x + v * n, n, lo, hi);
            else if (want_max)
                scan<T, false, true>(x + v * n, n, lo, hi);
            else
                scan<T, true, false>(x + v * n, n, lo, hi);
        }
        return SS_OK;
    }
    // By observation: one pass over the rows, every admitted variable in turn.
    for (int64_t i = 0; i < n; ++i) {
        const T* row = x + i * p;
        for (int64_t a = 0; a < admitted.count; ++a) {
            const int64_t v = admitted[a];
            const T t = row[v];
            if (want_min) mn[v] = t < mn[v] ? t : mn[v];
            if (want_max) mx[v] = t > mx[v] ? t : mx[v];
        }
    }
    return SS_OK;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSMinmax(SsTask* task, uint64_t estimates, uint64_t method,
                                    const SsThreadingTable* threading) {
    return minmax<double>(task, estimates, method, threading);
}

ORV_EXPORT int32_t _vstsSSMinmax(SsTask* task, uint64_t estimates, uint64_t method,
                                    const SsThreadingTable* threading) {
    return minmax<float>(task, estimates, method, threading);
}
