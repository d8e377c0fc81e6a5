// What every distribution shares: the one call that draws uniforms from a
// stream, the block size of scratch arrays, the kernel bracket and the
// in-place kernel call.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include <orv/dist.h>
#include <orv/rng.h>
#include <orv/vtm.h>

namespace orv::dist {

inline constexpr int32_t kAccurate = ORV_RNG_METHOD_ACCURATE;
// Outputs per round of the block loops: scratch stays on the stack and in L1/L2.
inline constexpr int32_t kBlock = 1024;

// A generator fill of the wider kernel library the process has loaded, for
// the baseline fill it copies bitwise (kernel_tables.cpp), else the fill.
OrvFloatFillFn loaded_fill(OrvFloatFillFn fill);
OrvDoubleFillFn loaded_fill(OrvDoubleFillFn fill);

// The stream's fill for T, through its registry row, unchecked (the stream
// record names a valid generator). Every distribution draws through here.
template <typename T>
int32_t draw_uniform(void* s, int32_t n, T* r, T a, T b) {
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(__vstGetStreamStateBrng(s), &row, &sub);
    if constexpr (std::is_same_v<T, float>)
        return loaded_fill(table[row].floatFill)(s, n, r, a, b);
    else
        return loaded_fill(table[row].doubleFill)(s, n, r, a, b);
}

// Runs a vector kernel under the distribution's error handler: the mode asks
// for the callback only, and each kernel call runs with denormals kept.
// The destructor restores the handler and the mode, also on a failed draw.
class KernelBracket {
public:
    explicit KernelBracket(VtmErrorCallBack handler)
        : mode_(orv_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK)),
          handler_(orv_vtm_kernel_SetErrorCallBack(handler)) {}
    ~KernelBracket() {
        orv_vtm_kernel_SetErrorCallBack(handler_);
        orv_vtm_kernel_SetMode(mode_);
    }
    KernelBracket(const KernelBracket&) = delete;
    KernelBracket& operator=(const KernelBracket&) = delete;

private:
    uint32_t mode_;
    VtmErrorCallBack handler_;
};

// The kernels' own mode (denormals kept) over a stretch of kernel calls.
// Only the kernels read the mode word, and this field of it, so one switch
// around a block loop runs every kernel call as a switch around each would.
class KernelMode {
public:
    KernelMode() : saved_(orv_vtm_kernel_SetMode(VTM_FTZDAZ_OFF)) {}
    ~KernelMode() { orv_vtm_kernel_SetMode(saved_); }
    KernelMode(const KernelMode&) = delete;
    KernelMode& operator=(const KernelMode&) = delete;

private:
    uint32_t saved_;
};

// A unary kernel, in place, through the third slot of its table: run_kernel
// inside a KernelMode, apply_kernel with its own.
template <typename T>
using KernelTable = void (*const*)(int, const T*, T*);
template <typename T>
void run_kernel(KernelTable<T> table, int32_t n, T* r) {
    table[2](n, r, r);
}
template <typename T>
void apply_kernel(KernelTable<T> table, int32_t n, T* r) {
    KernelMode mode;
    run_kernel(table, n, r);
}

// x mul + add, clamped below at `floor` where asked: the scaling of every
// one-formula distribution.
template <typename T>
struct Affine {
    T mul, add;
    bool clamp = false;
    T floor = T(0);
};

// The linear-fraction kernel, (a scalea + shifta) / (b scaleb + shiftb).
template <typename T>
using LinearFracTable = void (*const*)(int, const T*, const T*, T, T, T, T, T*);

// Sine and cosine of a together, into two arrays.
template <typename T>
using TwoResultTable = void (*const*)(int, const T*, T*, T*);
template <typename T>
void run_kernel(TwoResultTable<T> table, int32_t n, const T* a, T* r1, T* r2) {
    table[2](n, a, r1, r2);
}

// Every element raised to one exponent, in place.
template <typename T>
using PowxTable = void (*const*)(int, const T*, T, T*);
template <typename T>
void run_kernel(PowxTable<T> table, int32_t n, T* r, T exponent) {
    table[2](n, r, exponent, r);
}

// The table named `name` of the wider kernel library the process has loaded
// (kernel_tables.cpp), else base: the same kernels, bitwise, wider registers.
const void* loaded_table(const void* base, const char* name);

// The kernels the transforms use, by element type, each looked up once.
#define ORV_DIST_TABLE(Fn, Kind, Name)                                                                     \
    static Kind Fn() {                                                                                       \
        static const Kind t = static_cast<Kind>(                                                             \
            loaded_table(orv_vtm_kernel_##Name##_ttab, "orv_vtm_kernel_" #Name "_ttab"));                     \
        return t;                                                                                            \
    }
// The same list for both element types; P is the kernels' type letter.
#define ORV_DIST_KERNELS(P, T)                              \
    ORV_DIST_TABLE(ln, KernelTable<T>, P##Ln)               \
    ORV_DIST_TABLE(sqrt, KernelTable<T>, P##Sqrt)           \
    ORV_DIST_TABLE(exp, KernelTable<T>, P##Exp)             \
    ORV_DIST_TABLE(sin, KernelTable<T>, P##Sin)             \
    ORV_DIST_TABLE(cos, KernelTable<T>, P##Cos)             \
    ORV_DIST_TABLE(tan, KernelTable<T>, P##Tan)             \
    ORV_DIST_TABLE(erfinv, KernelTable<T>, P##ErfInv)       \
    ORV_DIST_TABLE(sincos, TwoResultTable<T>, P##SinCos)    \
    ORV_DIST_TABLE(powx, PowxTable<T>, P##Powx)             \
    ORV_DIST_TABLE(linear_frac, LinearFracTable<T>, P##LinearFrac)
template <typename T>
struct Kernels;
template <>
struct Kernels<double> {
    ORV_DIST_KERNELS(d, double)
};
template <>
struct Kernels<float> {
    ORV_DIST_KERNELS(s, float)
};
#undef ORV_DIST_KERNELS
#undef ORV_DIST_TABLE

// Kernel steps, then the affine scaling, on r in place, kBlock elements at
// a time while a block is in cache, inside one KernelMode. The scaling runs
// through the linear-fraction kernel with the divisor the constant 1
// (scaleb 0, shiftb 1): its result is the numerator x mul + add, exactly
// the scalar expression, at the width of the loaded kernel library.
template <typename T, typename Steps>
void transform_blocks(int32_t n, T* r, Steps steps, Affine<T> f) {
    KernelMode mode;
    for (int32_t done = 0; done < n; done += kBlock) {
        const int32_t m = std::min(n - done, kBlock);
        T* x = r + done;
        steps(m, x);
        Kernels<T>::linear_frac()[2](m, x, x, f.mul, f.add, T(0), T(1), x);
        if (f.clamp)
            for (int32_t i = 0; i < m; ++i) x[i] = x[i] < f.floor ? f.floor : x[i];
    }
}

// Whether a draw from the stream can fail: the fills of the abstract
// streams (rows 9 to 11), of TRNG (row 13) and of registered generators can;
// the other built-in generators' fills always succeed.
template <typename T>
bool draws_may_fail(void* s) {
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(__vstGetStreamStateBrng(s), &row, &sub);
    const auto fill = [](const BrngRow& r) {
        if constexpr (std::is_same_v<T, float>) return reinterpret_cast<const void*>(r.floatFill);
        else return reinterpret_cast<const void*>(r.doubleFill);
    };
    for (uint32_t k = 0; k < ORV_BRNG_BUILT_IN; ++k)
        if ((k < 9 || k == 12 || k > 13) && fill(__RegBrngsNew[k]) == fill(table[row])) return false;
    return true;
}

// The finite stand-in for ln(0): ln of the smallest subnormal, in each type.
template <typename T>
double log_zero_stand_in();
template <>
inline double log_zero_stand_in<double>() { return -744.44007192138122; }
template <>
inline double log_zero_stand_in<float>() { return -103.2789306640625; }  // bits 0xC059D1DA00000000

// Handlers of the bracket: the record's results become the stand-in, for
// every reported element or only for poles; returning 0 writes them back.
template <typename T>
int32_t replace_every_error(VtmErrorContext* c) {
    c->res1 = c->res2 = log_zero_stand_in<T>();
    return 0;
}
template <typename T>
int32_t replace_pole(VtmErrorContext* c) {
    if (c->code == VtmStatusPole) c->res1 = c->res2 = log_zero_stand_in<T>();
    return 0;
}

// Normal numbers: ln(0), the only pole of the logarithms, gives the
// stand-in above; the inverse error function at -1 or 1 gives the largest
// finite result of the precision's inverse error function, with the sign of
// the pole (read from the kernel's infinite result: in an in-place call the
// record's argument may already hold the result); a domain error gives that
// bound by the argument's sign.
template <typename T>
double gaussian_bound();
template <>
inline double gaussian_bound<double>() { return 5.8635847487551676; }
template <>
inline double gaussian_bound<float>() { return 3.8325068950653076; }  // bits 0x400EA8F960000000

template <typename T>
int32_t replace_gaussian(VtmErrorContext* c) {
    if (c->code == VtmStatusDomain) c->res1 = c->res2 = c->arg1 < 0 ? -gaussian_bound<T>() : gaussian_bound<T>();
    if (c->code == VtmStatusPole) c->res1 = c->res2 = log_zero_stand_in<T>();
    return 0;
}
template <typename T>
int32_t replace_erfinv_pole(VtmErrorContext* c) {
    if (c->code == VtmStatusDomain) return replace_gaussian<T>(c);
    if (c->code == VtmStatusPole) c->res1 = c->res2 = c->res1 < 0 ? -gaussian_bound<T>() : gaussian_bound<T>();
    return 0;
}

// Leaves a kernel's own result (an exponential that overflows stays infinite).
inline int32_t keep_result(VtmErrorContext*) { return 0; }

}  // namespace orv::dist
