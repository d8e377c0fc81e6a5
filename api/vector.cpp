// Checked vector calls: argument checks, tier selection through the kernel
// tables, chunked parallel calls for long vectors, and the forms that take
// the mode for one call. The calls themselves are generated
// (vtm_checked.inc, from vector/functions.def); this file holds what they
// share.
#include <orv/orv.h>

#include <dlfcn.h>
#include <omp.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
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

// The wider kernel library chosen at load, or none (the baseline).
struct Variant {
    void* handle = nullptr;
    int version = 0;
};

bool cpu_runs(int version) {
    __builtin_cpu_init();
    if (version == 2)
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw");
    if (version == 1) return __builtin_cpu_supports("avx2");
    return true;
}

// ORV_ISA's choice, else the widest; then the widest the processor runs at
// or below it whose library loads from the baseline's folder.
Variant pick_variant() {
    int want = 2;
    if (const char* isa = std::getenv("ORV_ISA")) {
        if (std::strcmp(isa, "sse2") == 0) want = 0;
        if (std::strcmp(isa, "avx2") == 0) want = 1;
    }
    Dl_info info;
    std::string dir;
    if (dladdr(reinterpret_cast<void*>(&dll_cpu_version), &info) && info.dli_fname) {
        dir = info.dli_fname;
        const size_t slash = dir.rfind('/');
        dir = slash == std::string::npos ? std::string() : dir.substr(0, slash + 1);
    }
    static const char* const kFiles[] = {nullptr, "liborv_kernel_avx2.so.0", "liborv_kernel_avx512.so.0"};
    for (int v = want; v > 0; --v) {
        if (!cpu_runs(v)) continue;
        void* h = dlopen((dir + kFiles[v]).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!h) continue;
        auto version = reinterpret_cast<int32_t (*)()>(dlsym(h, "dll_cpu_version"));
        if (version && version() == v) return {h, v};
        dlclose(h);
    }
    return {};
}

const Variant& variant() {
    static const Variant v = pick_variant();
    return v;
}
// Decided at load.
const int g_variant_at_load = variant().version;

}  // namespace

namespace orv_front {

// The table of the chosen variant that stands for the baseline's table base.
template <typename Fn>
Fn* const* variant_table(Fn* const* base, const char* name) {
    if (void* h = variant().handle)
        if (void* t = dlsym(h, name)) return static_cast<Fn* const*>(t);
    return base;
}

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

// A checked call's table, looked up once per call site.
#define ORV_FRONT_TABLE(FN)                                                                   \
    ([] {                                                                                     \
        static auto* const t_ =                                                               \
            orv_front::variant_table(orv_vtm_kernel_##FN##_ttab, "orv_vtm_kernel_" #FN "_ttab"); \
        return t_;                                                                            \
    }())

#include "vtm_checked.inc"

extern "C" {

void orv_set_parallel_threshold(int n) { g_threshold.store(n > 0 ? n : 1, std::memory_order_relaxed); }
int orv_get_parallel_threshold(void) { return g_threshold.load(std::memory_order_relaxed); }
int orv_get_vector_variant(void) { return variant().version; }

}  // extern "C"
