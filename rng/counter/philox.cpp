// PHILOX4X32X10: Salmon et al.'s Philox-4x32 counter-based generator with
// ten rounds of multiply-and-XOR on a 128-bit counter and a 64-bit key.
// Blocks are made four at a time in SSE2 lanes (one block per lane).
#include <emmintrin.h>

#include "rng/counter/counter_block.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;
using namespace orv::rng::counter;

constexpr uint32_t kM0 = 0xD2511F53u, kM1 = 0xCD9E8D57u;
constexpr uint32_t kW0 = 0x9E3779B9u, kW1 = 0xBB67AE85u;

struct State {
    uint32_t key[2];
    Position p;
};
static_assert(16 + sizeof(State) <= 64);

void block1(const uint32_t key[2], u128 ctr, uint32_t* out) {
    uint32_t r[4];
    store128(r, ctr);
    uint32_t k0 = key[0], k1 = key[1];
    for (int round = 0; round < 10; ++round) {
        if (round > 0) k0 += kW0, k1 += kW1;
        const uint64_t p0 = uint64_t{kM0} * r[0], p1 = uint64_t{kM1} * r[2];
        const uint32_t n0 = static_cast<uint32_t>(p1 >> 32) ^ r[1] ^ k0;
        const uint32_t n2 = static_cast<uint32_t>(p0 >> 32) ^ r[3] ^ k1;
        r[1] = static_cast<uint32_t>(p1);
        r[3] = static_cast<uint32_t>(p0);
        r[0] = n0;
        r[2] = n2;
    }
    for (int i = 0; i < 4; ++i) out[i] = r[i];
}

// High and low halves of the 32-bit products of four lanes with m.
inline void mulhilo(__m128i x, __m128i m, __m128i& hi, __m128i& lo) {
    const __m128i low_mask = _mm_set1_epi64x(0xFFFFFFFF);
    const __m128i even = _mm_mul_epu32(x, m);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(x, 32), m);
    lo = _mm_or_si128(_mm_and_si128(even, low_mask), _mm_slli_epi64(odd, 32));
    hi = _mm_or_si128(_mm_srli_epi64(even, 32), _mm_andnot_si128(low_mask, odd));
}

void block4(const uint32_t key[2], u128 ctr, uint32_t* out) {
    alignas(16) uint32_t w[4][4];  // w[word][block]
    for (int b = 0; b < 4; ++b) {
        u128 c = ctr + static_cast<u128>(b);
        for (int i = 0; i < 4; ++i, c >>= 32) w[i][b] = static_cast<uint32_t>(c);
    }
    __m128i r0 = _mm_load_si128(reinterpret_cast<const __m128i*>(w[0]));
    __m128i r1 = _mm_load_si128(reinterpret_cast<const __m128i*>(w[1]));
    __m128i r2 = _mm_load_si128(reinterpret_cast<const __m128i*>(w[2]));
    __m128i r3 = _mm_load_si128(reinterpret_cast<const __m128i*>(w[3]));
    const __m128i m0 = _mm_set1_epi32(static_cast<int>(kM0)), m1 = _mm_set1_epi32(static_cast<int>(kM1));
    uint32_t k0 = key[0], k1 = key[1];
    for (int round = 0; round < 10; ++round) {
        if (round > 0) k0 += kW0, k1 += kW1;
        __m128i hi0, lo0, hi1, lo1;
        mulhilo(r0, m0, hi0, lo0);
        mulhilo(r2, m1, hi1, lo1);
        r0 = _mm_xor_si128(_mm_xor_si128(hi1, r1), _mm_set1_epi32(static_cast<int>(k0)));
        r2 = _mm_xor_si128(_mm_xor_si128(hi0, r3), _mm_set1_epi32(static_cast<int>(k1)));
        r1 = lo1;
        r3 = lo0;
    }
    // Transpose lanes back to blocks.
    const __m128i t0 = _mm_unpacklo_epi32(r0, r1), t1 = _mm_unpacklo_epi32(r2, r3);
    const __m128i t2 = _mm_unpackhi_epi32(r0, r1), t3 = _mm_unpackhi_epi32(r2, r3);
    __m128i* o = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(o + 0, _mm_unpacklo_epi64(t0, t1));
    _mm_storeu_si128(o + 1, _mm_unpackhi_epi64(t0, t1));
    _mm_storeu_si128(o + 2, _mm_unpacklo_epi64(t2, t3));
    _mm_storeu_si128(o + 3, _mm_unpackhi_epi64(t2, t3));
}

template <typename Out>
int32_t generate(void* stream, int32_t n, Out&& out) {
    State* st = state<State>(stream);
    const uint32_t* key = st->key;
    fill(
        st->p, n,
        [key](u128 ctr, int k, uint32_t* buf) {
            int j = 0;
            for (; j + 4 <= k; j += 4) block4(key, ctr + static_cast<u128>(j), buf + 4 * j);
            for (; j < k; ++j) block1(key, ctr + static_cast<u128>(j), buf + 4 * j);
        },
        out);
    return 0;
}

}  // namespace

ORV_RNG_EXPORT int32_t __vstBRngPHILOX4X32X10InitStream(int32_t method, void* stream, int32_t count,
                                                       const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            uint32_t seed[6] = {0, 0, 0, 0, 0, 0};
            const int32_t words = count < 0 ? 0 : count < 6 ? count : 6;
            if (words > 0) std::memcpy(seed, params, sizeof(uint32_t) * static_cast<size_t>(words));
            st->key[0] = seed[0];
            st->key[1] = seed[1];
            std::memcpy(st->p.counter, seed + 2, sizeof st->p.counter);
            st->p.left = 0;
            std::memset(st->p.block, 0, sizeof st->p.block);
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG:
            return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP:
        case ORV_RNG_METHOD_SKIP_EX: {
            const uint32_t* key = st->key;
            skip(st->p, skip_count(method, count, params),
                 [key](const uint32_t* ctr, uint32_t* out) { block1(key, load128(ctr), out); });
            return 0;
        }
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_RNG_EXPORT int32_t __vstiBRngPHILOX4X32X10(void* stream, int32_t n, uint32_t* r) {
    return generate(stream, n, [r](int32_t i, uint32_t w) { r[i] = w; });
}

ORV_RNG_EXPORT int32_t __vstdBRngPHILOX4X32X10(void* stream, int32_t n, double* r, double a, double b) {
    const DoubleMap map(a, b);
    return generate(stream, n, [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}

ORV_RNG_EXPORT int32_t __vstsBRngPHILOX4X32X10(void* stream, int32_t n, float* r, float a, float b) {
    const FloatMap map(a, b);
    return generate(stream, n, [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}
