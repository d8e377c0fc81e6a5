// Checked data-fitting calls: argument checks before anything is written,
// cells and derivative flags in the task's integer width, the OpenMP table.
#include <orv/orv_datafit.h>


namespace {

template <typename T>
constexpr int32_t is_double = sizeof(T) == 8 ? 1 : 0;

bool hint_ok(int64_t h) { return h == 0 || h == DF_SITES_UNIFORM || h == DF_SITES_SORTED; }

// The checks every call shares, in the documented order.
template <typename T>
int check(const DFTask* t, int64_t n, const T* a, int64_t ahint, const T* b, int64_t bhint) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->is_double != is_double<T>) return DF_BAD_PRECISION;
    if (n < 0) return ORV_DF_BAD_COUNT;
    if (n > 0 && (a == nullptr || b == nullptr)) return ORV_DF_NULL_SITES;
    if (!hint_ok(ahint) || !hint_ok(bhint)) return ORV_DF_BAD_SITEHINT;
    return DF_OK;
}

int64_t functions(const DFTask* t) { return t->ny < 1 ? 1 : t->ny; }
bool wide(const DFTask* t) { return (t->wide_ints & 1) != 0; }

// Narrow cells of a 32-bit task, widened in place from the end.
void widen(int64_t* cell, int64_t n) {
    const int32_t* narrow = reinterpret_cast<const int32_t*>(cell);
    for (int64_t i = n - 1; i >= 0; --i) cell[i] = narrow[i];
}

template <typename T, typename Search, typename SearchCb>
int search(Search kernel, DFTask* t, int64_t n, const T* site, int64_t hint, int64_t* cell) {
    if (const int st = check<T>(t, n, site, hint, site, 0); st != DF_OK) return st;
    if (n > 0 && cell == nullptr) return ORV_DF_NULL_RESULT;
    if (n == 0) return DF_OK;
    // A 32-bit task writes int32 cells into the front half of the caller's
    // array; they are widened after the call. A refusal writes nothing.
    const int st = kernel(t, 0, n, site, hint, nullptr, cell, SearchCb(nullptr), nullptr,
                          orv_df_thread_ops_openmp());
    if (st == DF_OK && !wide(t)) widen(cell, n);
    return st;
}

template <typename T, typename Interp, typename InterpCb, typename SearchCb>
int interpolate(Interp kernel, DFTask* t, int64_t n, const T* site, int64_t hint, int64_t ndorder,
                const int32_t* dorder, T* r, int64_t rhint, int64_t* cell) {
    if (const int st = check<T>(t, n, site, hint, site, 0); st != DF_OK) return st;
    if (n > 0 && r == nullptr) return ORV_DF_NULL_RESULT;
    if (ndorder < 0 || ndorder > 64 || (ndorder > 0 && dorder == nullptr)) return ORV_DF_BAD_ORDERS;
    int64_t flags64[64];
    int32_t flags32[64];
    int64_t nd = 0;
    for (int64_t k = 0; k < ndorder; ++k) {
        if (dorder[k] != 0 && dorder[k] != 1) return ORV_DF_BAD_ORDERS;
        flags64[k] = flags32[k] = dorder[k];
        nd += dorder[k];
    }
    int64_t total = 0;
    if (__builtin_mul_overflow(n, functions(t) * (nd == 0 ? 1 : nd), &total) ||
        total > INT64_MAX / int64_t(sizeof(T)))
        return ORV_DF_TOO_LARGE;
    if (n == 0) return DF_OK;
    const void* flags = wide(t) ? static_cast<const void*>(flags64) : static_cast<const void*>(flags32);
    const int st = kernel(t, cell != nullptr ? DF_INTERP_STORE_CELLS : 0, 0, n, site, hint, ndorder,
                          flags, nullptr, r, rhint, cell, InterpCb(nullptr), nullptr,
                          InterpCb(nullptr), nullptr, InterpCb(nullptr), nullptr, SearchCb(nullptr),
                          nullptr, orv_df_thread_ops_openmp());
    if (st == DF_OK && cell != nullptr && !wide(t)) widen(cell, n);
    return st;
}

template <typename T, typename Integr, typename IntegrCb, typename SearchCb>
int integrate(Integr kernel, DFTask* t, int64_t n, const T* llim, int64_t lh, const T* rlim,
              int64_t rh, T* r, int64_t rhint) {
    if (const int st = check<T>(t, n, llim, lh, rlim, rh); st != DF_OK) return st;
    if (n > 0 && r == nullptr) return ORV_DF_NULL_RESULT;
    int64_t total = 0;
    if (__builtin_mul_overflow(n, functions(t), &total) || total > INT64_MAX / int64_t(sizeof(T)))
        return ORV_DF_TOO_LARGE;
    if (n == 0) return DF_OK;
    return kernel(t, 0, n, llim, lh, rlim, rh, nullptr, nullptr, r, rhint, IntegrCb(nullptr), nullptr,
                  IntegrCb(nullptr), nullptr, IntegrCb(nullptr), nullptr, SearchCb(nullptr), nullptr,
                  orv_df_thread_ops_openmp());
}

}  // namespace

extern "C" {

int orv_df_dsearch(DFTask* t, int64_t n, const double* site, int64_t hint, int64_t* cell) {
    return search<double, decltype(&orv_df_kernel_dDFSearch1D), DFdSearchCallBack>(
        orv_df_kernel_dDFSearch1D, t, n, site, hint, cell);
}
int orv_df_ssearch(DFTask* t, int64_t n, const float* site, int64_t hint, int64_t* cell) {
    return search<float, decltype(&orv_df_kernel_sDFSearch1D), DFsSearchCallBack>(
        orv_df_kernel_sDFSearch1D, t, n, site, hint, cell);
}
int orv_df_dinterpolate(DFTask* t, int64_t n, const double* site, int64_t hint, int64_t ndorder,
                        const int32_t* dorder, double* r, int64_t rhint, int64_t* cell) {
    return interpolate<double, decltype(&orv_df_kernel_dDFInterpolate1D), DFdInterpCallBack,
                       DFdSearchCallBack>(orv_df_kernel_dDFInterpolate1D, t, n, site, hint, ndorder,
                                          dorder, r, rhint, cell);
}
int orv_df_sinterpolate(DFTask* t, int64_t n, const float* site, int64_t hint, int64_t ndorder,
                        const int32_t* dorder, float* r, int64_t rhint, int64_t* cell) {
    return interpolate<float, decltype(&orv_df_kernel_sDFInterpolate1D), DFsInterpCallBack,
                       DFsSearchCallBack>(orv_df_kernel_sDFInterpolate1D, t, n, site, hint, ndorder,
                                          dorder, r, rhint, cell);
}
int orv_df_dintegrate(DFTask* t, int64_t n, const double* llim, int64_t lh, const double* rlim,
                      int64_t rh, double* r, int64_t rhint) {
    return integrate<double, decltype(&orv_df_kernel_dDFIntegrate1D), DFdIntegrCallBack,
                     DFdSearchCallBack>(orv_df_kernel_dDFIntegrate1D, t, n, llim, lh, rlim, rh, r,
                                        rhint);
}
int orv_df_sintegrate(DFTask* t, int64_t n, const float* llim, int64_t lh, const float* rlim,
                      int64_t rh, float* r, int64_t rhint) {
    return integrate<float, decltype(&orv_df_kernel_sDFIntegrate1D), DFsIntegrCallBack,
                     DFsSearchCallBack>(orv_df_kernel_sDFIntegrate1D, t, n, llim, lh, rlim, rh, r,
                                        rhint);
}

}  // extern "C"
