// Pack and unpack: gather selected elements of a strided, masked or indexed
// array into a dense one, and scatter back. Elements move as bit patterns,
// so no floating-point state is touched, no mode is read and no thread
// record is made. The width argument chooses 32-bit (exactly 1) or 64-bit
// (any other value) for n, the increment and the mask and index entries.
#include <cstdint>
#include <cstring>

#include "frame/kernel_tables.h"

namespace {

// An element of the given size, copied as bytes.
template <int Size>
struct Elem {
    unsigned char b[Size];
};

template <int Size>
inline void copy(void* dst, const void* src) { std::memcpy(dst, src, Size); }

template <typename I, int Size>
void pack_i(I n, const Elem<Size>* a, I inca, Elem<Size>* y) {
    if (n < 1) return;
    I i = 0;
    for (; i + 8 <= n; i += 8) {
        const Elem<Size>* p = a + i * inca;
        for (int k = 0; k < 8; ++k) y[i + k] = p[k * inca];
    }
    for (; i < n; ++i) y[i] = a[i * inca];
}

template <typename I, int Size>
void unpack_i(I n, const Elem<Size>* a, Elem<Size>* y, I incy) {
    if (n < 1) return;
    I i = 0;
    for (; i + 8 <= n; i += 8) {
        Elem<Size>* p = y + i * incy;
        for (int k = 0; k < 8; ++k) p[k * incy] = a[i + k];
    }
    for (; i < n; ++i) y[i * incy] = a[i];
}

template <typename I, int Size>
void pack_m(I n, const Elem<Size>* a, const I* mask, Elem<Size>* y) {
    I j = 0;
    for (I i = 0; i < n; ++i)
        if (mask[i] != 0) y[j++] = a[i];
}

template <typename I, int Size>
void unpack_m(I n, const Elem<Size>* a, Elem<Size>* y, const I* mask) {
    I j = 0;
    for (I i = 0; i < n; ++i)
        if (mask[i] != 0) y[i] = a[j++];
}

template <typename I, int Size>
void pack_v(I n, const Elem<Size>* a, const I* index, Elem<Size>* y) {
    for (I i = 0; i < n; ++i) y[i] = a[index[i]];
}

template <typename I, int Size>
void unpack_v(I n, const Elem<Size>* a, Elem<Size>* y, const I* index) {
    for (I i = 0; i < n; ++i) y[index[i]] = a[i];
}

template <int Size>
using E = Elem<Size>;

}  // namespace

// Each kernel reads its integers at the width the last argument selects.
#define ORV_PACK_KERNELS(T, CT, SIZE)                                                            \
    extern "C" void orv_kern_##T##PackI(long long n, const CT* a, long long inca, CT* y,          \
                                        int width) {                                             \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) pack_i<int32_t>(int32_t(n), ea, int32_t(inca), ey);                      \
        else pack_i<int64_t>(int64_t(n), ea, int64_t(inca), ey);                                 \
    }                                                                                            \
    extern "C" void orv_kern_##T##UnpackI(long long n, const CT* a, CT* y, long long incy,        \
                                          int width) {                                           \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) unpack_i<int32_t>(int32_t(n), ea, ey, int32_t(incy));                    \
        else unpack_i<int64_t>(int64_t(n), ea, ey, int64_t(incy));                               \
    }                                                                                            \
    extern "C" void orv_kern_##T##PackV(long long n, const CT* a, const void* index, CT* y,       \
                                        int width) {                                             \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) pack_v<int32_t>(int32_t(n), ea, static_cast<const int32_t*>(index), ey); \
        else pack_v<int64_t>(int64_t(n), ea, static_cast<const int64_t*>(index), ey);            \
    }                                                                                            \
    extern "C" void orv_kern_##T##UnpackV(long long n, const CT* a, CT* y, const void* index,     \
                                          int width) {                                           \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) unpack_v<int32_t>(int32_t(n), ea, ey, static_cast<const int32_t*>(index)); \
        else unpack_v<int64_t>(int64_t(n), ea, ey, static_cast<const int64_t*>(index));         \
    }

#define ORV_MASK_KERNELS(T, CT, SIZE)                                                            \
    extern "C" void orv_kern_##T##PackM(long long n, const CT* a, const void* mask, CT* y,        \
                                        int width) {                                             \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) pack_m<int32_t>(int32_t(n), ea, static_cast<const int32_t*>(mask), ey);  \
        else pack_m<int64_t>(int64_t(n), ea, static_cast<const int64_t*>(mask), ey);             \
    }                                                                                            \
    extern "C" void orv_kern_##T##UnpackM(long long n, const CT* a, CT* y, const void* mask,      \
                                          int width) {                                           \
        auto* ea = reinterpret_cast<const E<SIZE>*>(a);                                          \
        auto* ey = reinterpret_cast<E<SIZE>*>(y);                                                \
        if (width == 1) unpack_m<int32_t>(int32_t(n), ea, ey, static_cast<const int32_t*>(mask)); \
        else unpack_m<int64_t>(int64_t(n), ea, ey, static_cast<const int64_t*>(mask));          \
    }

ORV_PACK_KERNELS(s, float, 4)
ORV_PACK_KERNELS(d, double, 8)
ORV_PACK_KERNELS(c, OrvComplex8, 8)
ORV_PACK_KERNELS(z, OrvComplex16, 16)
// One mask kernel serves c and d, which both move 8-byte elements.
ORV_MASK_KERNELS(s, float, 4)
ORV_MASK_KERNELS(d, double, 8)
ORV_MASK_KERNELS(z, OrvComplex16, 16)
