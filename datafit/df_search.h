// Cell search shared by the search, interpolation and integration kernels:
// the choice of search kind, its scale, and the kernels as templates over
// precision, index arithmetic and output element.
#ifndef ORV_DATAFIT_DF_SEARCH_H
#define ORV_DATAFIT_DF_SEARCH_H

#include "datafit/df_task.h"

#include <orv/datafit_eval.h>

namespace orv::df {

enum SearchKind : int {
    kSearchUniform = 0,
    kSearchQuasiUniform = 1,
    kSearchSorted = 2,
    kSearchPeak = 3,
    kSearchHybrid = 4,
    kSearchUser = 5,
    kSearchUniUser = 6,
    kSearchGiven = 7,  // cells come from the caller
};

template <typename T>
using SearchCallBack = int (*)(int64_t*, const T*, void*, int32_t*, void*, void*);

inline bool is_nan_hint(double v) { return v != v; }

// Kind of a search by the task's partition, the site hint and the data hint:
// call-back first, then uniform / quasi-uniform partition, sorted sites, and
// the data hint (0 hybrid, 1 peak with the peak index within 0..nx).
template <typename T>
int select_search(const DFTask* t, bool has_cb, int64_t sitehint, const T* datahint, int* kind) {
    if (has_cb) {
        *kind = is_uniform(t->xhint) ? kSearchUniUser : kSearchUser;
        return DF_OK;
    }
    if (is_uniform(t->xhint)) return *kind = kSearchUniform, DF_OK;
    if (t->xhint == DF_X_QUASI_UNIFORM) return *kind = kSearchQuasiUniform, DF_OK;
    if (sitehint == DF_SITES_SORTED) return *kind = kSearchSorted, DF_OK;
    if (datahint == nullptr || datahint[1] == T(0)) return *kind = kSearchHybrid, DF_OK;
    if (datahint[1] == T(1) && datahint[4] >= T(0) && datahint[4] <= T(t->nx))
        return *kind = kSearchPeak, DF_OK;
    return DF_BAD_DATAHINT;
}

template <typename T>
T lut_scale_of(const DFTask* t) {
    if constexpr (sizeof(T) == 8) return t->lut_scale.d;
    else return t->lut_scale.s;
}

// The scale a kind reads: the step for the uniform kinds, the mean step for
// quasi-uniform, the peak index for peak, lut_scale otherwise.
template <typename T>
T search_scale(const DFTask* t, int kind, const T* datahint) {
    const T* x = static_cast<const T*>(t->x);
    switch (kind) {
        case kSearchUniform:
        case kSearchUniUser: return (x[1] - x[0]) / T(t->nx - 1);
        case kSearchQuasiUniform: return (x[t->nx - 1] - x[0]) / T(t->nx - 1);
        case kSearchPeak: return datahint[4];
        default: return lut_scale_of<T>(t);
    }
}

// Runs search kernel `kind` over n sites. I is the index arithmetic (int32_t
// or int64_t), O the output element. Returns DF_OK or a call-back's status.
template <typename T, typename I, typename O>
int search_run(int kind, int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,
               int64_t lut_size, const int64_t* lut, O* cell, SearchCallBack<T> cb, void* params,
               void* word, int32_t* flags);

// 64-bit cell slots: computed in 32 bits below 0x7FFFFFFF breakpoints.
template <typename T>
int search_slots(int kind, int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint,
                 T scale, int64_t lut_size, const int64_t* lut, int64_t* cell,
                 SearchCallBack<T> cb, void* params, void* word, int32_t* flags) {
    if (nx >= 0x7FFFFFFF)
        return search_run<T, int64_t, int64_t>(kind, nx, x, n, site, hint, scale, lut_size, lut,
                                               cell, cb, params, word, flags);
    return search_run<T, int32_t, int64_t>(kind, nx, x, n, site, hint, scale, lut_size, lut, cell,
                                           cb, params, word, flags);
}

// Expands the two ends of a uniform grid of n sites into out[0..count).
template <typename T>
inline void expand_grid(const T* ends, int64_t n, int64_t first, int64_t count, T* out) {
    const T step = n > 1 ? (ends[1] - ends[0]) / T(n - 1) : T(0);
    for (int64_t i = 0; i < count; ++i) out[i] = ends[0] + T(first + i) * step;
}

}  // namespace orv::df

#endif
