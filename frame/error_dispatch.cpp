#include "frame/error_dispatch.h"
#include "frame/export.h"

#include <cerrno>
#include <cstring>

#include <orv/orv_core.h>

#include "frame/mode_word.h"
#include "frame/thread_record.h"

namespace orv::frame {
namespace {

constexpr int kMaxName = 47;

template <typename E> struct Element;
template <> struct Element<float> {
    static constexpr int shift = 2;
    static void load(double& re, double*, const float& e) { re = e; }
    static void store(float& e, double re, double) { e = static_cast<float>(re); }
};
template <> struct Element<double> {
    static constexpr int shift = 3;
    static void load(double& re, double*, const double& e) { re = e; }
    static void store(double& e, double re, double) { e = re; }
};
template <> struct Element<OrvComplex8> {
    static constexpr int shift = 3;
    static void load(double& re, double* im, const OrvComplex8& e) { re = e.re; *im = e.im; }
    static void store(OrvComplex8& e, double re, double im) {
        e.re = static_cast<float>(re);
        e.im = static_cast<float>(im);
    }
};
template <> struct Element<OrvComplex16> {
    static constexpr int shift = 4;
    static void load(double& re, double* im, const OrvComplex16& e) { re = e.re; *im = e.im; }
    static void store(OrvComplex16& e, double re, double im) { e.re = re; e.im = im; }
};

// The steps of an error entry. Unit-stride entries pass increments of 1;
// the element read is at index times increment, a signed 32-bit product.
template <typename E>
void error_entry(int32_t status, int32_t index, const E* a, int32_t inca, const E* b,
                 int32_t incb, E* r1, int32_t incr1, E* r2, int32_t incr2, const char* name) {
    const uint32_t mode = current_mode();
    const uint32_t e = mode & VTM_ERRMODE_MASK;
    if (e == VTM_ERRMODE_NOERR) return;
    VtmThreadRecord* rec = thread_record();
    rec->errStatus = status;
    if (e == VTM_ERRMODE_IGNORE) return;

    VtmErrorContext ctx;  // deliberately not cleared: unfilled fields are undefined
    ctx.code = status;
    ctx.index = index;
    if (const unsigned char* base = thread_record()->interfInputVectorPointer) {
        const auto bytes = reinterpret_cast<const unsigned char*>(a) - base;
        ctx.index = static_cast<int32_t>(static_cast<uint32_t>(index) +
                                         static_cast<uint32_t>(bytes >> Element<E>::shift));
    }
    int len = 0;
    if (name != nullptr)
        while (len < kMaxName && name[len] != '\0') ++len;
    if (len > 0) std::memcpy(ctx.functionName, name, static_cast<std::size_t>(len));
    ctx.functionName[len] = '\0';
    ctx.functionNameLength = len;

    const bool has_values = status != VtmStatusBadArgument && status != VtmStatusBadPointer;
    const auto at = [index](int32_t inc) {
        return static_cast<int32_t>(static_cast<uint32_t>(index) * static_cast<uint32_t>(inc));
    };
    if (has_values) {
        Element<E>::load(ctx.arg1, &ctx.arg1Imag, a[at(inca)]);
        Element<E>::load(ctx.arg2, &ctx.arg2Imag, b[at(incb)]);
        Element<E>::load(ctx.res1, &ctx.res1Imag, r1[at(incr1)]);
        Element<E>::load(ctx.res2, &ctx.res2Imag, r2[at(incr2)]);
    }
    if ((mode & VTM_ERRMODE_CALLBACK) != 0) {
        if (VtmErrorCallBack cb = thread_record()->errorCallBack) {
            if (cb(&ctx) != 0) return;
        }
    }
    if ((mode & 0x2F00u) != 0) dispatch_error(&ctx);
    if (has_values) {
        Element<E>::store(r2[at(incr2)], ctx.res2, ctx.res2Imag);
        Element<E>::store(r1[at(incr1)], ctx.res1, ctx.res1Imag);
    }
}

bool same_bits(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; }

void print_values(const VtmErrorContext* c) {
    const bool one_arg = same_bits(c->arg1, c->arg2) || c->arg2 == 0.0;
    const bool one_res = same_bits(c->res1, c->res2) || c->res2 == 0.0;
    const int i = c->index;
    if (one_arg && one_res) {
        orv_serv_print(1, 755, 2, i, c->arg1);
        orv_serv_print(1, 756, 2, i, c->res1);
    } else if (one_arg) {
        orv_serv_print(1, 757, 2, i, c->arg1);
        orv_serv_print(1, 758, 2, i, c->res1);
        orv_serv_print(1, 759, 2, i, c->res2);
    } else if (one_res) {
        orv_serv_print(1, 760, 2, i, c->arg1);
        orv_serv_print(1, 761, 2, i, c->arg2);
        orv_serv_print(1, 762, 2, i, c->res1);
    } else {
        orv_serv_print(1, 763, 2, i, c->arg1);
        orv_serv_print(1, 764, 2, i, c->arg2);
        orv_serv_print(1, 765, 2, i, c->res1);
        orv_serv_print(1, 766, 2, i, c->res2);
    }
}

void print_error(const VtmErrorContext* c) {
    switch (c->code) {
        case VtmStatusOk:
            return;
        case VtmStatusBadPointer:
            orv_serv_print(1, 749, 1, c->functionName);
            return;
        case VtmStatusBadArgument:
            orv_serv_print(1, 748, 2, c->functionName, c->index);
            return;
        default: {
            int msg = 754;
            if (c->code >= 1 && c->code <= 4) msg = 749 + c->code;
            orv_serv_print(1, msg, 1, c->functionName);
            print_values(c);
        }
    }
}

// x87 environment as fnstenv stores it in 32-bit protected mode.
struct X87Env {
    uint16_t control, pad0;
    uint16_t status, pad1;
    uint32_t rest[5];
};

// Delivers the status's floating-point exception through the x87 unit: the
// working environment carries the flag with the trap classes unmasked; the
// load of the saved (all masked) environment that follows is the waiting
// instruction at which an unmasked exception arrives.
void raise_x87(int32_t status) {
    const uint32_t mode = current_mode();
    X87Env saved, work;
    __asm__ volatile("fnstenv %0" : "=m"(saved));
    work = saved;
    uint16_t unmask = 0;
    if (mode & VTM_TRAP_INVALID) unmask |= 0x01;
    if (mode & VTM_TRAP_DIVBYZERO) unmask |= 0x04;
    if (mode & VTM_TRAP_OVERFLOW) unmask |= 0x08;
    if (mode & VTM_TRAP_UNDERFLOW) unmask |= 0x10;
    work.control = static_cast<uint16_t>(work.control & ~unmask);
    uint16_t flag = 0;
    switch (status) {
        case 1: flag = 0x01; break;
        case 2: flag = 0x04; break;
        case 3: flag = 0x08; break;
        case 4: flag = 0x10; break;
        default: break;
    }
    work.status = static_cast<uint16_t>((work.status & ~0x3Fu) | flag);
    __asm__ volatile("fldenv %0" : : "m"(work) : "memory");
    saved.control = static_cast<uint16_t>(saved.control | 0x3F);
    saved.status = static_cast<uint16_t>(saved.status | flag);
    __asm__ volatile("fldenv %0" : : "m"(saved) : "memory");
}

}  // namespace

int errno_for_status(int32_t status) {
    switch (status) {
        case VtmStatusOk: return 0;
        case VtmStatusBadArgument: return EINVAL;
        case VtmStatusBadPointer: return EACCES;
        case VtmStatusDomain: return EDOM;
        case VtmStatusPole:
        case VtmStatusOverflow:
        case VtmStatusUnderflow: return ERANGE;
        default: return EFAULT;
    }
}

void dispatch_error(const VtmErrorContext* context) {
    // errno is the C runtime's own, per thread; no search for it is needed.
    if (current_mode() & VTM_ERRMODE_ERRNO) errno = errno_for_status(context->code);
    if (current_mode() & VTM_ERRMODE_STDERR) print_error(context);
    if (current_mode() & VTM_ERRMODE_EXCEPT) raise_x87(context->code);
}

void error_s(int32_t s, int32_t i, const float* a, const float* b, float* r1, float* r2,
             const char* name) {
    error_entry(s, i, a, 1, b, 1, r1, 1, r2, 1, name);
}
void error_s_strided(int32_t s, int32_t i, const float* a, int32_t inca, const float* b,
                     int32_t incb, float* r1, int32_t incr1, float* r2, int32_t incr2,
                     const char* name) {
    error_entry(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_c(int32_t s, int32_t i, const OrvComplex8* a, const OrvComplex8* b, OrvComplex8* r1,
             OrvComplex8* r2, const char* name) {
    error_entry(s, i, a, 1, b, 1, r1, 1, r2, 1, name);
}
void error_c_strided(int32_t s, int32_t i, const OrvComplex8* a, int32_t inca,
                     const OrvComplex8* b, int32_t incb, OrvComplex8* r1, int32_t incr1,
                     OrvComplex8* r2, int32_t incr2, const char* name) {
    error_entry(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_d(int32_t s, int32_t i, const double* a, const double* b, double* r1, double* r2,
             const char* name) {
    error_entry(s, i, a, 1, b, 1, r1, 1, r2, 1, name);
}
void error_d_strided(int32_t s, int32_t i, const double* a, int32_t inca, const double* b,
                     int32_t incb, double* r1, int32_t incr1, double* r2, int32_t incr2,
                     const char* name) {
    error_entry(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
void error_z(int32_t s, int32_t i, const OrvComplex16* a, const OrvComplex16* b,
             OrvComplex16* r1, OrvComplex16* r2, const char* name) {
    error_entry(s, i, a, 1, b, 1, r1, 1, r2, 1, name);
}
void error_z_strided(int32_t s, int32_t i, const OrvComplex16* a, int32_t inca,
                     const OrvComplex16* b, int32_t incb, OrvComplex16* r1, int32_t incr1,
                     OrvComplex16* r2, int32_t incr2, const char* name) {
    error_entry(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}

}  // namespace orv::frame

using orv::frame::thread_record;

ORV_EXPORT int32_t orv_vtm_kernel_GetErrStatus(void) { return thread_record()->errStatus; }
ORV_EXPORT int32_t _vtmGetErrStatus(void) __attribute__((alias("orv_vtm_kernel_GetErrStatus")));

ORV_EXPORT int32_t orv_vtm_kernel_SetErrStatus(int32_t status) {
    auto* rec = thread_record();
    const int32_t before = rec->errStatus;
    rec->errStatus = status;
    return before;
}
ORV_EXPORT int32_t _vtmSetErrStatus(int32_t) __attribute__((alias("orv_vtm_kernel_SetErrStatus")));

ORV_EXPORT int32_t orv_vtm_kernel_ClearErrStatus(void) {
    auto* rec = thread_record();
    const int32_t before = rec->errStatus;
    rec->errStatus = 0;
    return before;
}
ORV_EXPORT int32_t _vtmClearErrStatus(void) __attribute__((alias("orv_vtm_kernel_ClearErrStatus")));

ORV_EXPORT VtmErrorCallBack orv_vtm_kernel_GetErrorCallBack(void) {
    return thread_record()->errorCallBack;
}
ORV_EXPORT VtmErrorCallBack _vtmGetErrorCallBack(void)
    __attribute__((alias("orv_vtm_kernel_GetErrorCallBack")));

ORV_EXPORT VtmErrorCallBack orv_vtm_kernel_SetErrorCallBack(VtmErrorCallBack callback) {
    uint32_t mode = orv::frame::current_mode() & ~VTM_ERRMODE_CALLBACK;
    if (callback != nullptr) mode |= VTM_ERRMODE_CALLBACK;
    auto* rec = thread_record();
    const VtmErrorCallBack before = rec->errorCallBack;
    rec->errorCallBack = callback;
    orv_vtm_kernel_SetMode(mode);
    return before;
}
ORV_EXPORT VtmErrorCallBack _vtmSetErrorCallBack(VtmErrorCallBack)
    __attribute__((alias("orv_vtm_kernel_SetErrorCallBack")));

ORV_EXPORT VtmErrorCallBack orv_vtm_kernel_ClearErrorCallBack(void) {
    const uint32_t mode = orv::frame::current_mode() & ~VTM_ERRMODE_CALLBACK;
    auto* rec = thread_record();
    const VtmErrorCallBack before = rec->errorCallBack;
    rec->errorCallBack = nullptr;
    orv_vtm_kernel_SetMode(mode);
    return before;
}
ORV_EXPORT VtmErrorCallBack _vtmClearErrorCallBack(void)
    __attribute__((alias("orv_vtm_kernel_ClearErrorCallBack")));

ORV_EXPORT int32_t dll_cpu_version(void) { return 0; }
