// Checked vector calls: argument checks, tier selection through the kernel
// tables, and chunked parallel calls for long vectors.
#include <orv/orv.h>

#include <omp.h>

#include <algorithm>
#include <atomic>

namespace {

std::atomic<int> g_threshold{1 << 16};

int tier_slot() {
    const int slot = orv_vtm_kernel_GetTTableIndex();
    return slot >= 0 && slot <= 2 ? slot : 1;  // an accuracy field outside 1..3 means HA
}

bool reject(int n, bool null_array) {
    if (n < 0) {
        _vtmSetErrStatus(VtmStatusBadArgument);
        return true;
    }
    if (n > 0 && null_array) {
        _vtmSetErrStatus(VtmStatusBadPointer);
        return true;
    }
    return false;
}

// Runs body(begin, count) over chunks on the OpenMP threads. Each worker
// takes the caller's mode and callback, and reports indices relative to
// base; the caller's status becomes that of the last chunk with an error.
template <typename Body>
void run_chunked(int n, const void* base, Body body) {
    const int threads = std::min(orv_get_num_threads(), std::max(1, n / 4096));
    if (n < g_threshold.load(std::memory_order_relaxed) || threads < 2) {
        body(0, n);
        return;
    }
    const uint32_t mode = _vtmGetMode();
    const VtmErrorCallBack cb = _vtmGetErrorCallBack();
    int statuses[256] = {0};
    const int chunks = std::min(threads, 256);
#pragma omp parallel for num_threads(chunks) schedule(static, 1)
    for (int c = 0; c < chunks; ++c) {
        const int begin = static_cast<int>(static_cast<long>(n) * c / chunks);
        const int end = static_cast<int>(static_cast<long>(n) * (c + 1) / chunks);
        const uint32_t own_mode = _vtmSetMode(mode);
        const VtmErrorCallBack own_cb = _vtmSetErrorCallBack(cb);
        void* own_base = _vtmSetInterfInputVectorPointer(const_cast<void*>(base));
        const int32_t own_status = _vtmClearErrStatus();
        body(begin, end - begin);
        statuses[c] = _vtmSetErrStatus(own_status);
        _vtmSetInterfInputVectorPointer(own_base);
        _vtmSetErrorCallBack(own_cb);
        _vtmSetMode(own_mode);
    }
    for (int c = 0; c < chunks; ++c)
        if (statuses[c] != 0) _vtmSetErrStatus(statuses[c]);
}

using BinaryD = void (*)(int, const double*, const double*, double*);
using BinaryDI = void (*)(int, const double*, int, const double*, int, double*, int);

void binary_d(BinaryD const* table, int n, const double* a, const double* b, double* r) {
    if (reject(n, !a || !b || !r) || n == 0) return;
    const BinaryD k = table[tier_slot()];
    run_chunked(n, a, [&](int begin, int count) { k(count, a + begin, b + begin, r + begin); });
}

void binary_di(BinaryDI const* table, int n, const double* a, int inca, const double* b, int incb,
               double* r, int incr) {
    if (reject(n, !a || !b || !r) || n == 0) return;
    table[tier_slot()](n, a, inca, b, incb, r, incr);
}

}  // namespace

extern "C" {

void vtmdAdd(int n, const double* a, const double* b, double* r) {
    binary_d(orv_vtm_kernel_dAdd_ttab, n, a, b, r);
}
void vtmdSub(int n, const double* a, const double* b, double* r) {
    binary_d(orv_vtm_kernel_dSub_ttab, n, a, b, r);
}
void vtmdMul(int n, const double* a, const double* b, double* r) {
    binary_d(orv_vtm_kernel_dMul_ttab, n, a, b, r);
}
void vtmdAddI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    binary_di(orv_vtm_kernel_dAddI_ttab, n, a, inca, b, incb, r, incr);
}
void vtmdSubI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    binary_di(orv_vtm_kernel_dSubI_ttab, n, a, inca, b, incb, r, incr);
}
void vtmdMulI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    binary_di(orv_vtm_kernel_dMulI_ttab, n, a, inca, b, incb, r, incr);
}

void orv_set_parallel_threshold(int n) { g_threshold.store(n > 0 ? n : 1, std::memory_order_relaxed); }
int orv_get_parallel_threshold(void) { return g_threshold.load(std::memory_order_relaxed); }

}  // extern "C"
