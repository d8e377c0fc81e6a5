// Every present real unary and binary function by base name, plain and
// strided, single and double, from the generated list of present functions
// (so a new kernel is covered without an edit here), callable with either
// element type through one helper.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <orv/vtm.h>

struct Kernels {
    std::string name;    // base name
    std::string family;  // the kernel directory: arith, exp_log
    int arity;
    void* s = nullptr;   // plain single kernel (HA name)
    void* d = nullptr;   // plain double kernel
    void* sI = nullptr;  // strided forms
    void* dI = nullptr;
    const void* tab[4] = {};  // the kernel tables (three slots) of s, d, sI, dI
};

inline const std::vector<Kernels>& all_kernels() {
    static const std::vector<Kernels> list = [] {
        struct Gen {
            const char* base;
            char type;
            bool strided;
            const char* family;
            const char* shape;
            void* stub;
            const void* tab;
        };
#define X(NAME, BASE, TYPE, STRIDED, FAMILY, SHAPE, B0, B1, B2) \
    Gen{#BASE, TYPE, STRIDED, #FAMILY, #SHAPE, (void*)_vtm##NAME, (const void*)orv_vtm_kernel_##NAME##_ttab},
        const Gen gen[] = {
#include "vtm_rows.inc"
        };
#undef X
        std::vector<Kernels> v;
        for (const Gen& g : gen) {
            const std::string shape = g.shape;
            if ((shape != "unary" && shape != "binary") || (g.type != 's' && g.type != 'd')) continue;
            Kernels* k = nullptr;
            for (Kernels& e : v)
                if (e.name == g.base) k = &e;
            if (!k) k = &v.emplace_back(Kernels{g.base, g.family, shape == "unary" ? 1 : 2});
            (g.type == 's' ? (g.strided ? k->sI : k->s) : (g.strided ? k->dI : k->d)) = g.stub;
            k->tab[(g.type == 'd') + 2 * g.strided] = g.tab;
        }
        for (const Kernels& k : v)
            if (!k.s || !k.d || !k.sI || !k.dI) throw std::runtime_error("incomplete forms of " + k.name);
        return v;
    }();
    return list;
}

inline const Kernels& kernels(const std::string& name) {
    for (const Kernels& k : all_kernels())
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
