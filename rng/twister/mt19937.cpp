// MT19937, the Mersenne Twister of Matsumoto and Nishimura: 624 words,
// seeded by the published init-by-array, regenerated a block at a time.
// Skip-ahead steps plainly below 2^20 words, above by the polynomial jump.
#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "rng/brng_row.h"
#include "rng/gf2_jump.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

#include "rng/twister/twister_polys.inc"

constexpr int32_t kN = 624, kM = 397;
constexpr uint32_t kMatrix = 0x9908B0DFu, kUpper = 0x80000000u, kLower = 0x7FFFFFFFu;
constexpr uint64_t kPlainLimit = 0xFFFFF;
constexpr int32_t kDegree = 19937;

struct State {
    uint32_t mt[kN];
    int32_t pos;  // next word to hand out; kN: block used up
    uint32_t unused;
};
static_assert(16 + sizeof(State) == 2520);

inline State* st(void* s) { return state<State>(s); }
inline const State* st(const void* s) { return state<State>(const_cast<void*>(s)); }

inline uint32_t twist(uint32_t cur, uint32_t next, uint32_t far) {
    const uint32_t y = (cur & kUpper) | (next & kLower);
    return far ^ (y >> 1) ^ ((0u - (y & 1)) & kMatrix);
}

// mt[k..k+3] from mt[k..k+4] and mt[far..far+3], four lanes at once.
inline void twist4(uint32_t* mt, int32_t k, const uint32_t* far) {
    const __m128i upper = _mm_set1_epi32(static_cast<int>(kUpper));
    const __m128i lower = _mm_set1_epi32(static_cast<int>(kLower));
    const __m128i matrix = _mm_set1_epi32(static_cast<int>(kMatrix));
    const __m128i cur = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mt + k));
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mt + k + 1));
    const __m128i f = _mm_loadu_si128(reinterpret_cast<const __m128i*>(far));
    const __m128i y = _mm_or_si128(_mm_and_si128(cur, upper), _mm_and_si128(next, lower));
    const __m128i odd = _mm_srai_epi32(_mm_slli_epi32(y, 31), 31);
    const __m128i r = _mm_xor_si128(_mm_xor_si128(f, _mm_srli_epi32(y, 1)), _mm_and_si128(odd, matrix));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(mt + k), r);
}

// The whole block in ascending order. The loop splits where k + 397 wraps;
// the lag 227 behind the wrap exceeds 4, so four lanes never read a word
// that the same vector writes.
void regenerate(uint32_t* mt) {
    int32_t k = 0;
    for (; k + 4 <= kN - kM; k += 4) twist4(mt, k, mt + k + kM);
    for (; k < kN - kM; ++k) mt[k] = twist(mt[k], mt[k + 1], mt[k + kM]);
    for (; k + 4 <= kN - 1; k += 4) twist4(mt, k, mt + k + kM - kN);
    for (; k < kN - 1; ++k) mt[k] = twist(mt[k], mt[k + 1], mt[k + kM - kN]);
    mt[kN - 1] = twist(mt[kN - 1], mt[0], mt[kM - 1]);
}

inline uint32_t temper(uint32_t y) {
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    return y ^ (y >> 18);
}

template <typename Out>
void generate(State* s, int32_t n, Out&& out) {
    int32_t i = 0;
    while (i < n) {
        if (s->pos >= kN) {
            regenerate(s->mt);
            s->pos = 0;
        }
        const int32_t m = std::min(n - i, kN - s->pos);
        const uint32_t* src = s->mt + s->pos;
        for (int32_t j = 0; j < m; ++j) out(i + j, temper(src[j]));
        s->pos += m;
        i += m;
    }
}

void seed(State* s, int32_t count, const uint32_t* params) {
    const uint32_t one = 1;
    const uint32_t* key = count >= 1 ? params : &one;
    const int32_t len = count >= 1 ? count : 1;
    uint32_t* mt = s->mt;
    mt[0] = 19650218u;
    for (int32_t i = 1; i < kN; ++i)
        mt[i] = 1812433253u * (mt[i - 1] ^ (mt[i - 1] >> 30)) + static_cast<uint32_t>(i);
    int32_t i = 1, j = 0;
    for (int32_t r = std::max(kN, len); r > 0; --r) {
        mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525u)) + key[j] + static_cast<uint32_t>(j);
        if (++i >= kN) {
            mt[0] = mt[kN - 1];
            i = 1;
        }
        if (++j >= len) j = 0;
    }
    for (int32_t r = kN - 1; r > 0; --r) {
        mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941u)) - static_cast<uint32_t>(i);
        if (++i >= kN) {
            mt[0] = mt[kN - 1];
            i = 1;
        }
    }
    mt[0] = 0x80000000u;
    s->pos = kN;
}

// Operations of the jump engine on whole stream records.
inline int32_t ring_pos(const State* s) { return s->pos >= kN ? 0 : s->pos; }

void op_zero(void* s) {
    std::memset(st(s)->mt, 0, sizeof(State::mt));
    st(s)->pos = 0;
}
void op_add(void* a, const void* b, int32_t) {
    xor_ring(st(a)->mt, ring_pos(st(a)), st(b)->mt, ring_pos(st(b)), kN);
}
void op_copy(void* dst, const void* src) { std::memcpy(st(dst), st(src), sizeof(State)); }
void op_step(void* v) {
    State* s = st(v);
    const int32_t p = ring_pos(s);
    uint32_t* mt = s->mt;
    mt[p] = twist(mt[p], mt[(p + 1) % kN], mt[(p + kM) % kN]);
    s->pos = p + 1;
}
int32_t op_prepare(void* v, uint64_t* nskip, int32_t* carry) {
    State* s = st(v);
    const uint64_t t = static_cast<uint64_t>(s->pos) + *nskip;
    if (t <= static_cast<uint64_t>(kN)) {
        s->pos = static_cast<int32_t>(t);
        return 0;
    }
    *nskip = t - kN;
    s->pos = kN;
    *carry = 0;
    return 1;
}
void op_finish(void* v, const void* result, int32_t) {
    State* s = st(v);
    const State* r = st(result);
    if (s == r) {
        uint32_t tmp[kN];
        rotate_ring(tmp, r->mt, ring_pos(r), kN);
        std::memcpy(s->mt, tmp, sizeof tmp);
    } else {
        rotate_ring(s->mt, r->mt, ring_pos(r), kN);
    }
    s->pos = kN;
}

// Generating and discarding without tempering: whole blocks, then pos.
void skip_plain(State* s, uint64_t nskip) {
    while (nskip > 0) {
        const uint64_t avail = static_cast<uint64_t>(kN - s->pos);
        if (nskip <= avail) {
            s->pos += static_cast<int32_t>(nskip);
            return;
        }
        nskip -= avail;
        regenerate(s->mt);
        s->pos = 0;
    }
}

}  // namespace

namespace orv::rng {

// Both evaluations of the jump, for tests that compare them.
int32_t mt19937_jump(void* stream, uint64_t nskip, bool horner) {
    auto* f = horner ? &__vst_SkipAheadHorner : &__vst_SkipAheadSWin;
    return f(stream, op_zero, op_add, op_copy, op_step, op_finish, op_prepare, nskip, kN, kDegree, 2520,
             static_cast<int32_t>(std::size(kMt19937Poly)), kMt19937Poly);
}
const uint32_t* mt19937_polynomial(int32_t* terms) {
    *terms = static_cast<int32_t>(std::size(kMt19937Poly));
    return kMt19937Poly;
}

}  // namespace orv::rng

ORV_EXPORT int32_t __vstBRngMT19937InitStream(int32_t method, void* stream, int32_t count,
                                                 const void* params) {
    switch (method) {
        case ORV_RNG_METHOD_SEED:
            seed(st(stream), count, static_cast<const uint32_t*>(params));
            return 0;
        case ORV_RNG_METHOD_LEAPFROG:
            return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP: {
            uint64_t nskip;
            std::memcpy(&nskip, params, sizeof nskip);
            if (nskip > kPlainLimit) return orv::rng::mt19937_jump(stream, nskip, false);
            skip_plain(st(stream), nskip);
            return 0;
        }
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngMT19937(void* stream, int32_t n, uint32_t* r) {
    generate(st(stream), n, [r](int32_t i, uint32_t y) { r[i] = y; });
    return 0;
}

// (double)y is formed as (double)(int32)(y ^ 2^31) + 2^31, exact and the same
// value, because SSE2 converts signed 32-bit lanes but not unsigned ones.
inline double unsigned_to_double(uint32_t y) {
    return static_cast<double>(static_cast<int32_t>(y ^ 0x80000000u)) + 2147483648.0;
}

ORV_EXPORT int32_t __vstdBRngMT19937(void* stream, int32_t n, double* r, double a, double b) {
    const double scale = (b - a) * 0x1p-32;
    generate(st(stream), n, [r, scale, a](int32_t i, uint32_t y) { r[i] = unsigned_to_double(y) * scale + a; });
    return 0;
}

// Computed in double, rounded once to single.
ORV_EXPORT int32_t __vstsBRngMT19937(void* stream, int32_t n, float* r, float a, float b) {
    const double da = a, scale = (static_cast<double>(b) - da) * 0x1p-32;
    generate(st(stream), n, [r, scale, da](int32_t i, uint32_t y) {
        r[i] = static_cast<float>(unsigned_to_double(y) * scale + da);
    });
    return 0;
}
