// The frame of a wider kernel library (AVX2, AVX-512). Such a library holds
// kernels only: the mode word, status and callback of each thread stay in
// the baseline library, reached here through its exported entry points, so
// a process has one of each whichever variant runs.
//
// The error entries are the baseline's own code (frame/error_dispatch.cpp,
// compiled into this library under the inner_ names, see
// vector/CMakeLists.txt), run on a per-thread proxy of the thread record:
// the proxy takes the baseline's callback and input base before the entry,
// and the baseline's status is set first, as the baseline's entry does,
// so a callback that reads the status sees it.
#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>

#include "frame/error_dispatch.h"
#include "frame/export.h"
#include "frame/mode_word.h"
#include "frame/thread_record.h"

#ifndef ORV_VARIANT_VERSION
#error "ORV_VARIANT_VERSION names the variant's dll_cpu_version"
#endif

extern "C" {
uint32_t orv_vtm_kernel_GetMode(void);
void* orv_vtm_kernel_SetInterfInputVectorPointer(void* base);
}

namespace orv::frame {

// The inner error entries, compiled from frame/error_dispatch.cpp.
void inner_error_s(int32_t, int32_t, const float*, const float*, float*, float*, const char*);
void inner_error_s_strided(int32_t, int32_t, const float*, int32_t, const float*, int32_t, float*,
                           int32_t, float*, int32_t, const char*);
void inner_error_d(int32_t, int32_t, const double*, const double*, double*, double*, const char*);
void inner_error_d_strided(int32_t, int32_t, const double*, int32_t, const double*, int32_t,
                           double*, int32_t, double*, int32_t, const char*);
void inner_error_c(int32_t, int32_t, const OrvComplex8*, const OrvComplex8*, OrvComplex8*,
                   OrvComplex8*, const char*);
void inner_error_c_strided(int32_t, int32_t, const OrvComplex8*, int32_t, const OrvComplex8*,
                           int32_t, OrvComplex8*, int32_t, OrvComplex8*, int32_t, const char*);
void inner_error_z(int32_t, int32_t, const OrvComplex16*, const OrvComplex16*, OrvComplex16*,
                   OrvComplex16*, const char*);
void inner_error_z_strided(int32_t, int32_t, const OrvComplex16*, int32_t, const OrvComplex16*,
                           int32_t, OrvComplex16*, int32_t, OrvComplex16*, int32_t, const char*);

namespace {

// The baseline's status and callback accessors. Their names are defined in
// this library too (the inner copy, not exported), so they are looked up
// in the baseline itself, found from an entry point this library lacks.
struct Baseline {
    int32_t (*set_status)(int32_t) = nullptr;
    VtmErrorCallBack (*get_callback)() = nullptr;
    Baseline() {
        Dl_info info;
        void* h = nullptr;
        if (dladdr(reinterpret_cast<void*>(&orv_vtm_kernel_GetMode), &info) && info.dli_fname)
            h = dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
        if (h) {
            set_status = reinterpret_cast<int32_t (*)(int32_t)>(dlsym(h, "orv_vtm_kernel_SetErrStatus"));
            get_callback =
                reinterpret_cast<VtmErrorCallBack (*)()>(dlsym(h, "orv_vtm_kernel_GetErrorCallBack"));
            dlclose(h);  // still loaded: this library depends on it
        }
        if (!set_status || !get_callback) std::abort();  // a broken installation
    }
};
const Baseline& baseline() {
    static const Baseline b;
    return b;
}

thread_local VtmThreadRecord proxy{};

// Prepares the proxy and the baseline's status for one error entry.
void enter(int32_t status) {
    const uint32_t e = current_mode() & VTM_ERRMODE_MASK;
    if (e == VTM_ERRMODE_NOERR) return;
    baseline().set_status(status);
    proxy.errorCallBack = baseline().get_callback();
    void* base = orv_vtm_kernel_SetInterfInputVectorPointer(nullptr);
    orv_vtm_kernel_SetInterfInputVectorPointer(base);
    proxy.interfInputVectorPointer = static_cast<unsigned char*>(base);
}

}  // namespace

uint32_t current_mode() { return orv_vtm_kernel_GetMode(); }
VtmThreadRecord* variant_thread_record() { return &proxy; }

void error_s(int32_t s, int32_t i, const float* a, const float* b, float* r1, float* r2,
             const char* name) {
    enter(s);
    inner_error_s(s, i, a, b, r1, r2, name);
}
void error_s_strided(int32_t s, int32_t i, const float* a, int32_t inca, const float* b,
                     int32_t incb, float* r1, int32_t incr1, float* r2, int32_t incr2,
                     const char* name) {
    enter(s);
    inner_error_s_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_d(int32_t s, int32_t i, const double* a, const double* b, double* r1, double* r2,
             const char* name) {
    enter(s);
    inner_error_d(s, i, a, b, r1, r2, name);
}
void error_d_strided(int32_t s, int32_t i, const double* a, int32_t inca, const double* b,
                     int32_t incb, double* r1, int32_t incr1, double* r2, int32_t incr2,
                     const char* name) {
    enter(s);
    inner_error_d_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_c(int32_t s, int32_t i, const OrvComplex8* a, const OrvComplex8* b, OrvComplex8* r1,
             OrvComplex8* r2, const char* name) {
    enter(s);
    inner_error_c(s, i, a, b, r1, r2, name);
}
void error_c_strided(int32_t s, int32_t i, const OrvComplex8* a, int32_t inca,
                     const OrvComplex8* b, int32_t incb, OrvComplex8* r1, int32_t incr1,
                     OrvComplex8* r2, int32_t incr2, const char* name) {
    enter(s);
    inner_error_c_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_z(int32_t s, int32_t i, const OrvComplex16* a, const OrvComplex16* b,
             OrvComplex16* r1, OrvComplex16* r2, const char* name) {
    enter(s);
    inner_error_z(s, i, a, b, r1, r2, name);
}
void error_z_strided(int32_t s, int32_t i, const OrvComplex16* a, int32_t inca,
                     const OrvComplex16* b, int32_t incb, OrvComplex16* r1, int32_t incr1,
                     OrvComplex16* r2, int32_t incr2, const char* name) {
    enter(s);
    inner_error_z_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}

}  // namespace orv::frame

// 1 for the AVX2 variant, 2 for the AVX-512 variant (0 is the baseline).
ORV_EXPORT int32_t dll_cpu_version(void) { return ORV_VARIANT_VERSION; }
