// MCG59, x = a x mod 2^59 with a = 13^13: its state and its real fills,
// shared by the baseline library and the wider kernel libraries (which
// export the fills for the distributions, rng/congruential/mcg59_wide.cpp).
// Every build gives the same values: the products are exact integers, the
// conversion of a value below 2^59 rounds once, and the scaling is one
// multiplication and one addition in the element type.
#pragma once

#include <cstdint>

#include "rng/congruential/modular.h"
#include "rng/stream.h"

#if defined(__AVX512F__) && defined(__AVX512DQ__)
#include <immintrin.h>
#endif

namespace orv::rng::mcg59 {

inline constexpr uint64_t kMultiplier = 0x113769B23C5FDull;

struct State {
    uint64_t x;  // the next output
    uint64_t a;  // the current multiplier
};
static_assert(kStateOffset + sizeof(State) <= 32);

inline uint64_t mul(uint64_t a, uint64_t b) { return (a * b) & kMask59; }

// Sixteen values in flight, each advanced by a^16 per block; then singly.
template <typename Out>
void generate(State* st, int32_t n, Out&& out) {
    uint64_t x = st->x;
    const uint64_t a = st->a;
    int32_t i = 0;
    if (n >= 16) {
        uint64_t a16 = a;
        for (int k = 0; k < 4; ++k) a16 = mul(a16, a16);
        uint64_t v[16];
        v[0] = x;
        for (int k = 1; k < 16; ++k) v[k] = mul(a, v[k - 1]);
        const int32_t end = n & ~15;
        for (; i < end; i += 16)
            for (int k = 0; k < 16; ++k) {
                out(i + k, v[k]);
                v[k] = mul(a16, v[k]);
            }
        x = v[0];
    }
    for (; i < n; ++i) {
        out(i, x);
        x = mul(a, x);
    }
    st->x = x;
}

#if defined(__AVX512F__) && defined(__AVX512DQ__)
// The whole blocks of sixteen outputs of generate's sequence, in two
// registers, each lane advanced by a^16 a block; returns their count and
// leaves the state at the next output.
template <typename T>
int32_t wide_blocks(State* st, int32_t n, T* r, T scale, T shift) {
    if (n < 16) return 0;
    const int32_t end = n & ~15;
    alignas(64) uint64_t v[16];
    v[0] = st->x;
    for (int k = 1; k < 16; ++k) v[k] = mul(st->a, v[k - 1]);
    uint64_t a16 = st->a;
    for (int k = 0; k < 4; ++k) a16 = mul(a16, a16);
    const __m512i m16 = _mm512_set1_epi64(static_cast<int64_t>(a16));
    const __m512i mask = _mm512_set1_epi64(static_cast<int64_t>(kMask59));
    __m512i lo = _mm512_load_si512(v), hi = _mm512_load_si512(v + 8);
    for (int32_t i = 0; i < end; i += 16) {
        if constexpr (sizeof(T) == 8) {
            const __m512d s = _mm512_set1_pd(scale), t = _mm512_set1_pd(shift);
            _mm512_storeu_pd(r + i, _mm512_add_pd(_mm512_mul_pd(_mm512_cvtepi64_pd(lo), s), t));
            _mm512_storeu_pd(r + i + 8, _mm512_add_pd(_mm512_mul_pd(_mm512_cvtepi64_pd(hi), s), t));
        } else {
            const __m256 s = _mm256_set1_ps(scale), t = _mm256_set1_ps(shift);
            _mm256_storeu_ps(r + i, _mm256_add_ps(_mm256_mul_ps(_mm512_cvtepi64_ps(lo), s), t));
            _mm256_storeu_ps(r + i + 8, _mm256_add_ps(_mm256_mul_ps(_mm512_cvtepi64_ps(hi), s), t));
        }
        lo = _mm512_and_si512(_mm512_mullo_epi64(lo, m16), mask);
        hi = _mm512_and_si512(_mm512_mullo_epi64(hi, m16), mask);
    }
    _mm512_store_si512(v, lo);
    st->x = v[0];
    return end;
}
#endif

// n reals on [a, b): value 2^-59 (b - a) + a, in T throughout.
template <typename T>
int32_t fill(void* stream, int32_t n, T* r, T a, T b) {
    const T scale = (b - a) * static_cast<T>(0x1p-59);
    State* st = state<State>(stream);
    int32_t done = 0;
#if defined(__AVX512F__) && defined(__AVX512DQ__)
    done = wide_blocks<T>(st, n, r, scale, a);
#endif
    generate(st, n - done, [r = r + done, scale, a](int32_t i, uint64_t v) {
        // Values are below 2^59: the signed conversion is exact in double,
        // rounds once in float, and is one instruction.
        r[i] = static_cast<T>(static_cast<int64_t>(v)) * scale + a;
    });
    return 0;
}

}  // namespace orv::rng::mcg59
