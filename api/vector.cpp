// Checked vector calls: argument checks, tier selection through the kernel
// tables, chunked parallel calls for long vectors, and the forms that take
// the mode for one call. The calls themselves are generated
// (vtm_checked.inc, from vector/functions.def); this file holds what they
// share.
#include <orv/orv.h>

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <initializer_list>

namespace {

std::atomic<int> g_threshold{1 << 16};

int tier_slot() {
    const int slot = orv_vtm_kernel_GetTTableIndex();
    return slot >= 0 && slot <= 2 ? slot : 1;  // an accuracy field outside 1..3 means HA
}

bool reject(long long n, bool null_array) {
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

}  // namespace

namespace orv_front {

bool any_null(std::initializer_list<const void*> arrays) {
    for (const void* p : arrays)
        if (!p) return true;
    return false;
}

// A plain elementwise call: checked, then the tier's kernel over chunks.
template <typename Fn, typename Body>
void chunked(Fn* const* table, int n, std::initializer_list<const void*> arrays, const void* base,
             Body body) {
    if (reject(n, any_null(arrays)) || n == 0) return;
    Fn* const k = table[tier_slot()];
    run_chunked(n, base, [&](int begin, int count) { body(k, begin, count); });
}

// A strided or pack call: checked, then the tier's kernel on the whole.
template <typename Fn, typename Body>
void whole(Fn* const* table, long long n, std::initializer_list<const void*> arrays, Body body) {
    if (reject(n, any_null(arrays)) || n == 0) return;
    body(table[tier_slot()]);
}

// The mode for one call: merged in, and the thread's earlier word merged
// back after it (a field that was empty keeps the call's value, as the merge
// cannot empty a field).
struct ModeScope {
    explicit ModeScope(unsigned int mode) : saved(_vtmSetMode(mode)) {}
    ~ModeScope() { _vtmSetMode(saved); }
    ModeScope(const ModeScope&) = delete;
    ModeScope& operator=(const ModeScope&) = delete;
    uint32_t saved;
};

}  // namespace orv_front

#include "vtm_checked.inc"

extern "C" {

void orv_set_parallel_threshold(int n) { g_threshold.store(n > 0 ? n : 1, std::memory_order_relaxed); }
int orv_get_parallel_threshold(void) { return g_threshold.load(std::memory_order_relaxed); }

}  // extern "C"
