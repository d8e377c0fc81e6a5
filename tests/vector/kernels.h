// The exported kernels of the arithmetic family by name, callable with
// either element type through one helper.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>

#include <orv/vtm.h>

struct Kernels {
    const char* name;
    int arity;
    void* s;   // plain single kernel (HA name)
    void* d;   // plain double kernel
    void* sI;  // strided forms
    void* dI;
};

#define ORV_K1(FN) {#FN, 1, (void*)_vtms##FN, (void*)_vtmd##FN, (void*)_vtms##FN##I, (void*)_vtmd##FN##I}
#define ORV_K2(FN) {#FN, 2, (void*)_vtms##FN, (void*)_vtmd##FN, (void*)_vtms##FN##I, (void*)_vtmd##FN##I}

inline const Kernels kAllKernels[] = {
    ORV_K2(Add), ORV_K2(Sub), ORV_K2(Mul), ORV_K1(Sqr), ORV_K1(Abs), ORV_K1(Inv), ORV_K2(Div),
    ORV_K1(Sqrt), ORV_K1(InvSqrt), ORV_K1(Ceil), ORV_K1(Floor), ORV_K1(Trunc), ORV_K1(Round),
    ORV_K1(Rint), ORV_K1(NearbyInt), ORV_K1(Frac), ORV_K2(Fmax), ORV_K2(Fmin), ORV_K2(MaxMag),
    ORV_K2(MinMag), ORV_K2(CopySign), ORV_K2(NextAfter), ORV_K2(Fdim), ORV_K2(Fmod),
    ORV_K2(Remainder),
};

inline const Kernels& kernels(const std::string& name) {
    for (const Kernels& k : kAllKernels)
        if (name == k.name) return k;
    throw std::runtime_error("no kernel " + name);
}

template <typename T>
void call(const Kernels& k, int n, const T* x, const T* y, T* r) {
    void* f = sizeof(T) == 4 ? k.s : k.d;
    if (k.arity == 1)
        reinterpret_cast<void (*)(int, const T*, T*)>(f)(n, x, r);
    else
        reinterpret_cast<void (*)(int, const T*, const T*, T*)>(f)(n, x, y, r);
}

template <typename T>
void call_strided(const Kernels& k, int n, const T* x, int incx, const T* y, int incy, T* r,
                  int incr) {
    void* f = sizeof(T) == 4 ? k.sI : k.dI;
    if (k.arity == 1)
        reinterpret_cast<void (*)(int, const T*, int, T*, int)>(f)(n, x, incx, r, incr);
    else
        reinterpret_cast<void (*)(int, const T*, int, const T*, int, T*, int)>(f)(n, x, incx, y,
                                                                                 incy, r, incr);
}

template <typename T>
bool same_bits(T x, T y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }

// Bitwise equality, any NaN matching any NaN.
template <typename T>
bool same_value(T got, T want) {
    if (want != want) return got != got;
    return same_bits(got, want);
}
