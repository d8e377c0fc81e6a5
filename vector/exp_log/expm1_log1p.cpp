// Expm1 and Log1p: scalar loops over the elements, each through the ranges
// of its callout. The plain forms keep the caller's rounding and flush bits;
// the strided forms read the mode like the blocked kernels.
#include "vector/exp_log/explog_block.h"
#include "vector/exp_log/explog_internal.h"

namespace orv::explog {
namespace {

template <typename T>
void plain_loop(int n, const T* a, T* r, int32_t (*callout)(const T*, T*), const char* name) {
    orv::frame::FpGuard guard = orv::frame::FpGuard::keep_rounding();
    if (n < 1) return;
    scalar_loop(n, callout, Plain<T>{a, r, name});
}

template <typename T>
void strided_loop(void (*const* plain_table)(int, const T*, T*), int n, const T* a, int inca, T* r,
                  int incr, int32_t (*callout)(const T*, T*), const char* name) {
    if (inca == 1 && incr == 1) {
        plain_table[orv::frame::kSlotHA](n, a, r);
        return;
    }
    orv::frame::FpGuard guard = orv::frame::FpGuard::from_mode(orv::frame::current_mode());
    if (n < 1) return;
    scalar_loop(n, callout, Strided<T>{a, inca, r, incr, name});
}

}  // namespace
}  // namespace orv::explog

using namespace orv::explog;
namespace vtm = orv::vtm;

extern "C" {

void orv_kern_sExpm1(int n, const float* a, float* r) { plain_loop(n, a, r, expm1_s, vtm::kName_sExpm1); }
void orv_kern_dExpm1(int n, const double* a, double* r) { plain_loop(n, a, r, expm1_d, vtm::kName_dExpm1); }
void orv_kern_sLog1p(int n, const float* a, float* r) { plain_loop(n, a, r, log1p_s, vtm::kName_sLog1p); }
void orv_kern_dLog1p(int n, const double* a, double* r) { plain_loop(n, a, r, log1p_d, vtm::kName_dLog1p); }
void orv_kern_sExpm1I(int n, const float* a, int inca, float* r, int incr) {
    strided_loop(orv_vtm_kernel_sExpm1_ttab, n, a, inca, r, incr, expm1_s, vtm::kName_sExpm1I);
}
void orv_kern_dExpm1I(int n, const double* a, int inca, double* r, int incr) {
    strided_loop(orv_vtm_kernel_dExpm1_ttab, n, a, inca, r, incr, expm1_d, vtm::kName_dExpm1I);
}
void orv_kern_sLog1pI(int n, const float* a, int inca, float* r, int incr) {
    strided_loop(orv_vtm_kernel_sLog1p_ttab, n, a, inca, r, incr, log1p_s, vtm::kName_sLog1pI);
}
void orv_kern_dLog1pI(int n, const double* a, int inca, double* r, int incr) {
    strided_loop(orv_vtm_kernel_dLog1p_ttab, n, a, inca, r, incr, log1p_d, vtm::kName_dLog1pI);
}

}  // extern "C"
