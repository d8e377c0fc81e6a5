// ARS5: the AES-round counter generator of Salmon et al. with five rounds,
// on the processor's AES instructions. The round keys add Weyl increments
// to the two 64-bit halves of the key. Without AES every entry returns -1140.
#include <immintrin.h>

#include "rng/counter/counter_block.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;
using namespace orv::rng::counter;

struct State {
    uint32_t key[4];
    Position p;
};
static_assert(16 + sizeof(State) <= 72);

bool have_aes() {
    static const bool aes = __vstCPUisAES() != 0;
    return aes;
}

// k blocks from counter ctr; four are kept in flight for the AES latency.
__attribute__((target("aes,sse2"))) void blocks(const uint32_t key[4], u128 ctr, int k, uint32_t* out) {
    const __m128i weyl = _mm_set_epi64x(static_cast<long long>(0xBB67AE8584CAA73Bull),
                                        static_cast<long long>(0x9E3779B97F4A7C15ull));
    __m128i rk[6];
    rk[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(key));
    for (int j = 1; j < 6; ++j) rk[j] = _mm_add_epi64(rk[j - 1], weyl);
    int b = 0;
    for (; b + 4 <= k; b += 4) {
        __m128i x[4];
        for (int l = 0; l < 4; ++l) {
            const u128 c = ctr + static_cast<u128>(b + l);
            x[l] = _mm_xor_si128(_mm_set_epi64x(static_cast<long long>(c >> 64), static_cast<long long>(c)), rk[0]);
        }
        for (int j = 1; j < 5; ++j)
            for (int l = 0; l < 4; ++l) x[l] = _mm_aesenc_si128(x[l], rk[j]);
        for (int l = 0; l < 4; ++l)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * (b + l)), _mm_aesenclast_si128(x[l], rk[5]));
    }
    for (; b < k; ++b) {
        const u128 c = ctr + static_cast<u128>(b);
        __m128i x = _mm_xor_si128(_mm_set_epi64x(static_cast<long long>(c >> 64), static_cast<long long>(c)), rk[0]);
        for (int j = 1; j < 5; ++j) x = _mm_aesenc_si128(x, rk[j]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * b), _mm_aesenclast_si128(x, rk[5]));
    }
}

// g groups of four blocks straight into the caller's array.
template <typename Store>
__attribute__((target("aes,sse2"))) void groups(const uint32_t key[4], u128 ctr, int32_t g, int32_t i,
                                                 const Store& store) {
    const __m128i weyl = _mm_set_epi64x(static_cast<long long>(0xBB67AE8584CAA73Bull),
                                        static_cast<long long>(0x9E3779B97F4A7C15ull));
    __m128i rk[6];
    rk[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(key));
    for (int j = 1; j < 6; ++j) rk[j] = _mm_add_epi64(rk[j - 1], weyl);
    for (int32_t q = 0; q < g; ++q, ctr += 4, i += 16) {
        __m128i x[4];
        for (int l = 0; l < 4; ++l) {
            const u128 c = ctr + static_cast<u128>(l);
            x[l] = _mm_xor_si128(_mm_set_epi64x(static_cast<long long>(c >> 64), static_cast<long long>(c)), rk[0]);
        }
        for (int j = 1; j < 5; ++j)
            for (int l = 0; l < 4; ++l) x[l] = _mm_aesenc_si128(x[l], rk[j]);
        for (int l = 0; l < 4; ++l) store(i + 4 * l, _mm_aesenclast_si128(x[l], rk[5]));
    }
}

template <typename Store, typename Out>
int32_t generate(void* stream, int32_t n, Store store, Out&& out) {
    if (!have_aes()) return ORV_RNG_ERROR_NO_AES;
    State* st = state<State>(stream);
    const uint32_t* key = st->key;
    fill<4>(
        st->p, n, [key, &store](u128 ctr, int32_t g, int32_t i) { groups(key, ctr, g, i, store); },
        [key](u128 ctr, int k, uint32_t* buf) { blocks(key, ctr, k, buf); }, out);
    return 0;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngARS5InitStream(int32_t method, void* stream, int32_t count,
                                              const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            if (!have_aes()) return ORV_RNG_ERROR_NO_AES;
            uint32_t seed[8] = {0, 0, 0, 0, 0, 0, 0, 0};
            const int32_t words = count < 0 ? 0 : count < 8 ? count : 8;
            if (words > 0) std::memcpy(seed, params, sizeof(uint32_t) * static_cast<size_t>(words));
            std::memcpy(st->key, seed, sizeof st->key);
            std::memcpy(st->p.counter, seed + 4, sizeof st->p.counter);
            st->p.left = 0;
            std::memset(st->p.block, 0, sizeof st->p.block);
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG:
            return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP:
        case ORV_RNG_METHOD_SKIP_EX: {
            if (!have_aes()) return ORV_RNG_ERROR_NO_AES;
            const uint32_t* key = st->key;
            skip(st->p, skip_count(method, count, params),
                 [key](const uint32_t* ctr, uint32_t* out) { blocks(key, load128(ctr), 1, out); });
            return 0;
        }
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngARS5(void* stream, int32_t n, uint32_t* r) {
    return generate(stream, n, WordStore{r}, [r](int32_t i, uint32_t w) { r[i] = w; });
}

ORV_EXPORT int32_t __vstdBRngARS5(void* stream, int32_t n, double* r, double a, double b) {
    const DoubleMap map(a, b);
    return generate(stream, n, DoubleStore{r, _mm_set1_pd(map.scale), _mm_set1_pd(map.mid)},
                    [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}

ORV_EXPORT int32_t __vstsBRngARS5(void* stream, int32_t n, float* r, float a, float b) {
    const FloatMap map(a, b);
    return generate(stream, n, FloatStore{r, _mm_set1_ps(map.scale), _mm_set1_ps(map.mid)},
                    [r, map](int32_t i, uint32_t w) { r[i] = map(w); });
}
