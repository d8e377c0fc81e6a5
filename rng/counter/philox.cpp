// PHILOX4X32X10: Salmon et al.'s Philox-4x32 counter-based generator with
// ten rounds of multiply-and-XOR on a 128-bit counter and a 64-bit key.
// Blocks are made four at a time in SSE2 lanes.
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

// Four blocks at a time in SSE2: each 64-bit lane holds one word of one
// block in its low half, so _mm_mul_epu32 gives the whole product in place
// (low word in the low half, high word after a shift) and nothing needs
// repacking between rounds. The high halves carry garbage that no
// multiplication reads and the output drops.
struct Lanes {
    __m128i r[4];  // r[w]: word w of two blocks
};

inline void round(Lanes& a, __m128i m0, __m128i m1, __m128i k0, __m128i k1) {
    const __m128i p0 = _mm_mul_epu32(a.r[0], m0), p1 = _mm_mul_epu32(a.r[2], m1);
    a.r[0] = _mm_xor_si128(_mm_xor_si128(_mm_srli_epi64(p1, 32), a.r[1]), k0);
    a.r[2] = _mm_xor_si128(_mm_xor_si128(_mm_srli_epi64(p0, 32), a.r[3]), k1);
    a.r[1] = p1;
    a.r[3] = p0;
}

struct Keys {
    __m128i k0[10], k1[10];
    explicit Keys(const uint32_t key[2]) {
        uint32_t a = key[0], b = key[1];
        for (int r = 0; r < 10; ++r, a += kW0, b += kW1) {
            k0[r] = _mm_set1_epi32(static_cast<int>(a));
            k1[r] = _mm_set1_epi32(static_cast<int>(b));
        }
    }
};

// Lanes of blocks c and c + 1.
inline Lanes lanes(u128 c) {
    const u128 d = c + 1;
    Lanes l;
    for (int w = 0; w < 4; ++w)
        l.r[w] = _mm_set_epi64x(static_cast<long long>(static_cast<uint32_t>(d >> (32 * w))),
                                static_cast<long long>(static_cast<uint32_t>(c >> (32 * w))));
    return l;
}

// Blocks ctr .. ctr + 3, each as one register of its four words in order.
inline void group(const Keys& k, u128 ctr, __m128i out[4]) {
    Lanes a = lanes(ctr), b = lanes(ctr + 2);
    const __m128i m0 = _mm_set1_epi32(static_cast<int>(kM0)), m1 = _mm_set1_epi32(static_cast<int>(kM1));
    for (int r = 0; r < 10; ++r) {
        round(a, m0, m1, k.k0[r], k.k1[r]);
        round(b, m0, m1, k.k0[r], k.k1[r]);
    }
    const Lanes* both[2] = {&a, &b};
    for (int h = 0; h < 2; ++h) {
        const __m128i* r = both[h]->r;
        const __m128i lo01 = _mm_unpacklo_epi32(r[0], r[1]), lo23 = _mm_unpacklo_epi32(r[2], r[3]);
        const __m128i hi01 = _mm_unpackhi_epi32(r[0], r[1]), hi23 = _mm_unpackhi_epi32(r[2], r[3]);
        out[2 * h] = _mm_unpacklo_epi64(lo01, lo23);
        out[2 * h + 1] = _mm_unpacklo_epi64(hi01, hi23);
    }
}

void block4(const uint32_t key[2], u128 ctr, uint32_t* out) {
    const Keys k(key);
    __m128i b[4];
    group(k, ctr, b);
    for (int j = 0; j < 4; ++j) _mm_storeu_si128(reinterpret_cast<__m128i*>(out) + j, b[j]);
}

// Six blocks a group: four in the vector unit and two in the scalar one,
// whose multiplier works alongside, interleaved round by round.
constexpr int kGroupBlocks = 6;

inline void scalar_round(uint32_t r[4], uint32_t k0, uint32_t k1) {
    const uint64_t p0 = uint64_t{kM0} * r[0], p1 = uint64_t{kM1} * r[2];
    const uint32_t n0 = static_cast<uint32_t>(p1 >> 32) ^ r[1] ^ k0;
    const uint32_t n2 = static_cast<uint32_t>(p0 >> 32) ^ r[3] ^ k1;
    r[1] = static_cast<uint32_t>(p1);
    r[3] = static_cast<uint32_t>(p0);
    r[0] = n0;
    r[2] = n2;
}

template <typename Store>
auto groups_into(const uint32_t key[2], Store store) {
    return [key, store](u128 ctr, int32_t g, int32_t i) {
        const Keys k(key);
        uint32_t sk0[10], sk1[10];
        for (int r = 0; r < 10; ++r) {
            sk0[r] = key[0] + static_cast<uint32_t>(r) * kW0;
            sk1[r] = key[1] + static_cast<uint32_t>(r) * kW1;
        }
        const __m128i m0 = _mm_set1_epi32(static_cast<int>(kM0)), m1 = _mm_set1_epi32(static_cast<int>(kM1));
        for (int32_t q = 0; q < g; ++q, ctr += kGroupBlocks, i += 4 * kGroupBlocks) {
            Lanes a = lanes(ctr), b = lanes(ctr + 2);
            uint32_t s4[4], s5[4];
            store128(s4, ctr + 4);
            store128(s5, ctr + 5);
            for (int r = 0; r < 10; ++r) {
                round(a, m0, m1, k.k0[r], k.k1[r]);
                scalar_round(s4, sk0[r], sk1[r]);
                round(b, m0, m1, k.k0[r], k.k1[r]);
                scalar_round(s5, sk0[r], sk1[r]);
            }
            const Lanes* both[2] = {&a, &b};
            for (int h = 0; h < 2; ++h) {
                const __m128i* r = both[h]->r;
                const __m128i lo01 = _mm_unpacklo_epi32(r[0], r[1]), lo23 = _mm_unpacklo_epi32(r[2], r[3]);
                const __m128i hi01 = _mm_unpackhi_epi32(r[0], r[1]), hi23 = _mm_unpackhi_epi32(r[2], r[3]);
                store(i + 8 * h, _mm_unpacklo_epi64(lo01, lo23));
                store(i + 8 * h + 4, _mm_unpacklo_epi64(hi01, hi23));
            }
            store(i + 16, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s4)));
            store(i + 20, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s5)));
        }
    };
}

template <typename Store, typename Out>
int32_t generate(void* stream, int32_t n, Store store, Out&& out) {
    State* st = state<State>(stream);
    const uint32_t* key = st->key;
    fill<kGroupBlocks>(
        st->p, n, groups_into(key, store),
        [key](u128 ctr, int k, uint32_t* buf) {
            int j = 0;
            for (; j + 4 <= k; j += 4) block4(key, ctr + static_cast<u128>(j), buf + 4 * j);
            for (; j < k; ++j) block1(key, ctr + static_cast<u128>(j), buf + 4 * j);
        },
        out);
    return 0;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngPHILOX4X32X10InitStream(int32_t method, void* stream, int32_t count,
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

ORV_EXPORT int32_t __vstiBRngPHILOX4X32X10(void* stream, int32_t n, uint32_t* r) {
    return generate(stream, n, WordStore{r}, [r](int32_t i, uint32_t w) { r[i] = w; });
}

ORV_EXPORT int32_t __vstdBRngPHILOX4X32X10(void* stream, int32_t n, double* r, double a, double b) {
    const DoubleMap map(a, b);
    return generate(stream, n, DoubleStore{r, _mm_set1_pd(map.scale), _mm_set1_pd(map.mid)},
                    [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}

ORV_EXPORT int32_t __vstsBRngPHILOX4X32X10(void* stream, int32_t n, float* r, float a, float b) {
    const FloatMap map(a, b);
    return generate(stream, n, FloatStore{r, _mm_set1_ps(map.scale), _mm_set1_ps(map.mid)},
                    [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}
