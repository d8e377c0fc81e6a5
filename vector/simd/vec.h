// The width-generic register vocabulary of the vector kernels. One source is
// compiled at three register widths, picked by ORV_SIMD_BYTES: 16 (SSE2, the
// default), 32 (AVX2) or 64 (AVX-512). The float and double registers are
// the compiler's native vector types of that width (__m128, __m256, __m512
// and their double forms), so + - * / on them are single IEEE operations in
// the order written, at every width; the integer views are vector types of
// the same size with 32-bit or 64-bit lanes. Only the few operations that
// have no portable spelling (square root, one bit a lane, gathers, the
// in-lane shuffle of 32-bit words) name an instruction set, once here.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <type_traits>

// The native register types carry a may_alias attribute that template
// arguments drop (harmless here).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"

#ifndef ORV_SIMD_BYTES
#define ORV_SIMD_BYTES 16
#endif

namespace orv::vec::simd {

inline constexpr int kBytes = ORV_SIMD_BYTES;

#if ORV_SIMD_BYTES == 16
using VF = __m128;
using VD = __m128d;
#elif ORV_SIMD_BYTES == 32
using VF = __m256;
using VD = __m256d;
#elif ORV_SIMD_BYTES == 64
using VF = __m512;
using VD = __m512d;
#else
#error "ORV_SIMD_BYTES must be 16, 32 or 64"
#endif

// Integer views of one register, and the double register holding as many
// lanes as a float register (twice its size; two native registers).
using VI32 = int32_t __attribute__((vector_size(kBytes)));
using VU32 = uint32_t __attribute__((vector_size(kBytes)));
using VI64 = int64_t __attribute__((vector_size(kBytes)));
using VU64 = uint64_t __attribute__((vector_size(kBytes)));
using VDW = double __attribute__((vector_size(2 * kBytes)));

// Register of element type T, and its signed and unsigned integer views
// with lanes of the same width.
template <typename T>
using VOf = std::conditional_t<sizeof(T) == 4, VF, VD>;
template <typename T>
using IOf = std::conditional_t<sizeof(T) == 4, VI32, VI64>;
template <typename T>
using UOf = std::conditional_t<sizeof(T) == 4, VU32, VU64>;

// Bit casts between registers of the same size.
template <typename To, typename From>
inline To as(From v) {
    static_assert(sizeof(To) == sizeof(From));
    return (To)v;
}

// Every lane set to s (bit for bit, signed zeros and NaN payloads kept):
// lane 0 shuffled to every lane, which compiles to one broadcast at every
// width (a lane-by-lane fill is not always recognised inside long kernels,
// and then costs a masked move a lane).
template <typename V, typename S>
inline V fill(S s) {
    V v{};
    v[0] = s;
    return __builtin_shuffle(v, decltype(v < v){});
}

// ---- operations naming an instruction set ----

inline VF sqrt(VF a) {
#if ORV_SIMD_BYTES == 16
    return _mm_sqrt_ps(a);
#elif ORV_SIMD_BYTES == 32
    return _mm256_sqrt_ps(a);
#else
    return _mm512_mask_sqrt_ps(a, __mmask16(0xFFFF), a);  // every lane; see the gathers below
#endif
}
inline VD sqrt(VD a) {
#if ORV_SIMD_BYTES == 16
    return _mm_sqrt_pd(a);
#elif ORV_SIMD_BYTES == 32
    return _mm256_sqrt_pd(a);
#else
    return _mm512_mask_sqrt_pd(a, __mmask8(0xFF), a);
#endif
}

// The correctly rounded square root of one double (IEEE 754 sqrt), without
// the C library's errno path.
inline double sqrt(double x) { return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x))); }

// int64(trunc(x)) in each lane, for |x| < 2^31 (the conversion that
// truncates whatever the rounding mode).
inline VI64 trunc_small(VD x) {
#if ORV_SIMD_BYTES == 16
    const __m128i k = _mm_cvttpd_epi32(x);
    return (VI64)_mm_unpacklo_epi32(k, _mm_srai_epi32(k, 31));
#elif ORV_SIMD_BYTES == 32
    return (VI64)_mm256_cvtepi32_epi64(_mm256_cvttpd_epi32(x));
#else
    return (VI64)_mm512_cvtepi32_epi64(_mm512_cvttpd_epi32(x));
#endif
}

// One bit a lane: the sign bit of each 32-bit (VF) or 64-bit (VD) lane.
inline uint32_t lanes(VF m) {
#if ORV_SIMD_BYTES == 16
    return uint32_t(_mm_movemask_ps(m));
#elif ORV_SIMD_BYTES == 32
    return uint32_t(_mm256_movemask_ps(m));
#else
    return uint32_t(_mm512_movepi32_mask(_mm512_castps_si512(m)));
#endif
}
inline uint32_t lanes(VD m) {
#if ORV_SIMD_BYTES == 16
    return uint32_t(_mm_movemask_pd(m));
#elif ORV_SIMD_BYTES == 32
    return uint32_t(_mm256_movemask_pd(m));
#else
    return uint32_t(_mm512_movepi64_mask(_mm512_castpd_si512(m)));
#endif
}

// Each 64-bit lane filled with two copies of its high 32-bit word
// (scalar: hi = bits >> 32; lane = hi << 32 | hi).
inline VI32 high_words(VI32 v) {
#if ORV_SIMD_BYTES == 16
    return (VI32)_mm_shuffle_epi32((__m128i)v, _MM_SHUFFLE(3, 3, 1, 1));
#elif ORV_SIMD_BYTES == 32
    return (VI32)_mm256_shuffle_epi32((__m256i)v, _MM_SHUFFLE(3, 3, 1, 1));
#else
    return (VI32)_mm512_mask_shuffle_epi32((__m512i)v, __mmask16(0xFFFF), (__m512i)v, _MM_PERM_DDBB);
#endif
}

// ---- element-type overloads used by the kernels and the block driver ----

template <typename T>
struct Reg {
    using V = VOf<T>;
    static constexpr int kWidth = kBytes / int(sizeof(T));
    static V load(const T* p) {
        V v;
        __builtin_memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(T* p, V v) { __builtin_memcpy(p, &v, sizeof v); }
    static V set1(T x) { return fill<V>(x); }
    static V bits(std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t> b) {
        return as<V>(fill<UOf<T>>(b));
    }
};

template <typename V>
concept FloatReg = std::is_same_v<V, VF> || std::is_same_v<V, VD>;
template <FloatReg V>
using IntOf = std::conditional_t<std::is_same_v<V, VF>, VI32, VI64>;

template <FloatReg V>
inline V add(V a, V b) { return a + b; }
template <FloatReg V>
inline V sub(V a, V b) { return a - b; }
template <FloatReg V>
inline V mul(V a, V b) { return a * b; }
template <FloatReg V>
inline V div(V a, V b) { return a / b; }
template <FloatReg V>
inline V band(V a, V b) { return as<V>(as<IntOf<V>>(a) & as<IntOf<V>>(b)); }
template <FloatReg V>
inline V bor(V a, V b) { return as<V>(as<IntOf<V>>(a) | as<IntOf<V>>(b)); }
template <FloatReg V>
inline V bxor(V a, V b) { return as<V>(as<IntOf<V>>(a) ^ as<IntOf<V>>(b)); }
template <FloatReg V>
inline V bandnot(V a, V b) { return as<V>(~as<IntOf<V>>(a) & as<IntOf<V>>(b)); }  // ~a & b
// Comparisons give all ones in the lanes where they hold.
template <FloatReg V>
inline V lt(V a, V b) { return as<V>(a < b); }
template <FloatReg V>
inline V le(V a, V b) { return as<V>(a <= b); }
template <FloatReg V>
inline V not_lt(V a, V b) { return as<V>(~(a < b)); }  // true for NaN
template <FloatReg V>
inline V eq(V a, V b) { return as<V>(a == b); }
template <FloatReg V>
inline V unord(V a, V b) { return as<V>((a != a) | (b != b)); }
// mask ? a : b, lane by lane
template <FloatReg V>
inline V select(V mask, V a, V b) { return bor(band(mask, a), bandnot(mask, b)); }

// r, except a NaN in a: then a quieted. After r = a + b or a * b this makes
// the first argument's NaN win when both are NaN (the instruction's own
// rule), whichever operand order the compiler gives the commutative
// operation; without it the payload could differ between code paths.
template <FloatReg V>
inline V first_nan(V a, V r) { return as<V>((a != a) ? as<IntOf<V>>(a + a) : as<IntOf<V>>(r)); }
template <typename T>
    requires std::is_floating_point_v<T>
inline T first_nan(T a, T r) { return a != a ? a + a : r; }

// All ones in the lanes whose bits (single) or high word (double), less lo,
// are at or above span as unsigned numbers: the integer range test of the
// special masks.
inline VF outside(VF x, uint32_t lo, uint32_t span) {
    const VU32 t = as<VU32>(x) - lo;
    return as<VF>(t > (span - 1));
}
inline VD outside(VD x, uint32_t lo, uint32_t span) {
    return as<VD>(high_words(as<VI32>(outside(as<VF>(x), lo, span))));
}
// All ones in the lanes whose sign bit is set.
inline VF negative(VF x) { return as<VF>(as<VI32>(x) >> 31); }
inline VD negative(VD x) { return as<VD>(high_words(as<VI32>(x) >> 31)); }

// Exact conversion of small integers (|k| < 2^31) in 64-bit lanes to double:
// k + 1.5 2^52 has k in its low bits, so the subtraction is exact.
inline VD small_int_to_double(VI64 k) {
    const VD magic = fill<VD>(6755399441055744.0);
    return as<VD>(as<VI64>(magic) + k) - magic;
}
// Signed 32-bit lanes to float (exact below 2^24 in magnitude, else rounded
// in the current direction).
inline VF to_float(VI32 k) { return __builtin_convertvector(k, VF); }
// Float lanes widened to double, and back (rounded once).
inline VDW widen(VF x) { return __builtin_convertvector(x, VDW); }
inline VF narrow(VDW x) { return __builtin_convertvector(x, VF); }

// The low and high halves of a float register widened to double registers
// (scalar: lo[i] = double(x[i]), hi[i] = double(x[i + W/2]) for W float
// lanes), and two double registers rounded once to one float register
// (scalar: r[i] = float(lo[i]), r[i + W/2] = float(hi[i])). One conversion
// instruction a half: the compiler splits the generic conversion of a
// half-register vector into 128-bit pieces in the wide builds, and the
// generic narrowing goes through memory, which stalls the reload.
inline VD widen_lo(VF x) {
#if ORV_SIMD_BYTES == 64
    return (VD)_mm512_cvtps_pd(_mm512_castps512_ps256((__m512)x));
#elif ORV_SIMD_BYTES == 32
    return (VD)_mm256_cvtps_pd(_mm256_castps256_ps128((__m256)x));
#else
    return (VD)_mm_cvtps_pd((__m128)x);
#endif
}
inline VD widen_hi(VF x) {
#if ORV_SIMD_BYTES == 64
    return (VD)_mm512_cvtps_pd(_mm512_extractf32x8_ps((__m512)x, 1));
#elif ORV_SIMD_BYTES == 32
    return (VD)_mm256_cvtps_pd(_mm256_extractf128_ps((__m256)x, 1));
#else
    return (VD)_mm_cvtps_pd(_mm_movehl_ps((__m128)x, (__m128)x));
#endif
}
inline VF narrow(VD lo, VD hi) {
#if ORV_SIMD_BYTES == 64
    return (VF)_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps((__m512d)lo)),
                                  _mm512_cvtpd_ps((__m512d)hi), 1);
#elif ORV_SIMD_BYTES == 32
    return (VF)_mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps((__m256d)lo)),
                                    _mm256_cvtpd_ps((__m256d)hi), 1);
#else
    return (VF)_mm_movelh_ps(_mm_cvtpd_ps((__m128d)lo), _mm_cvtpd_ps((__m128d)hi));
#endif
}

// ---- gathers ----

// Lanes of base[idx * Stride], for 32-bit (float) or 64-bit (double) index
// lanes; rows are read from lanes in any order (loads have no side effects).
template <int Stride>
inline VF gather(const float* base, VI32 idx) {
#if ORV_SIMD_BYTES == 32
    return _mm256_i32gather_ps(base, (__m256i)(idx * Stride), 4);
#elif ORV_SIMD_BYTES == 64
    // The masked form with a zero source: the plain one starts from an
    // undefined register, which GCC 12 reports as uninitialised.
    return _mm512_mask_i32gather_ps(_mm512_setzero_ps(), __mmask16(0xFFFF), (__m512i)(idx * Stride), base, 4);
#else
    VF v;
    for (int l = 0; l < 4; ++l) v[l] = base[idx[l] * Stride];
    return v;
#endif
}
template <int Stride>
inline VD gather(const double* base, VI64 idx) {
#if ORV_SIMD_BYTES == 32
    return _mm256_i64gather_pd(base, (__m256i)(idx * Stride), 8);
#elif ORV_SIMD_BYTES == 64
    return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), __mmask8(0xFF), (__m512i)(idx * Stride), base, 8);
#else
    VD v;
    v[0] = base[idx[0] * Stride];
    v[1] = base[idx[1] * Stride];
    return v;
#endif
}

}  // namespace orv::vec::simd

#pragma GCC diagnostic pop
