// SFMT19937, the SIMD-oriented Fast Mersenne Twister of Saito and
// Matsumoto: 156 blocks of 128 bits, seeded by its published array form.
// A call that stops inside a block keeps the block's unread words aside.
#include <emmintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "rng/brng_row.h"
#include "rng/gf2_jump.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

#include "rng/twister/twister_polys.inc"

constexpr int32_t kWords = 624, kBlocks = 156, kPos1 = 122;
constexpr int32_t kDegree = 19968;

struct State {
    uint32_t w[kWords];  // 156 blocks of 4 words, block 0 first
    int32_t pos;         // next word, a multiple of 4 after a call; kWords: used up
    uint32_t side[3];    // unread words of the block a call stopped in
    int32_t sidePos;
    int32_t sideCount;
};
static_assert(16 + sizeof(State) == 2536);
static_assert(offsetof(State, w) == 0, "blocks are 16-byte aligned in the stream");

inline State* st(void* s) { return state<State>(s); }
inline const State* st(const void* s) { return state<State>(const_cast<void*>(s)); }

inline __m128i recursion(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i mask = _mm_set_epi32(static_cast<int>(0xBFFFFFF6u), static_cast<int>(0xBFFAFFFFu),
                                       static_cast<int>(0xDDFECB7Fu), static_cast<int>(0xDFFFFFEFu));
    __m128i r = _mm_xor_si128(a, _mm_slli_si128(a, 1));
    r = _mm_xor_si128(r, _mm_and_si128(_mm_srli_epi32(b, 11), mask));
    r = _mm_xor_si128(r, _mm_srli_si128(c, 1));
    // d is the block just made: keep its term last, so that the chain from
    // one block to the next is one shift and one XOR (the compiler would
    // otherwise reassociate it to the front).
    __asm__("" : "+x"(r));
    return _mm_xor_si128(r, _mm_slli_epi32(d, 18));
}

inline __m128i* blocks(uint32_t* w) { return reinterpret_cast<__m128i*>(w); }

// All blocks in ascending order, the loop split where block i + 122 wraps.
void regenerate(uint32_t* words) {
    __m128i* v = blocks(words);
    __m128i c = _mm_load_si128(v + kBlocks - 2), d = _mm_load_si128(v + kBlocks - 1);
    int32_t i = 0;
    for (; i < kBlocks - kPos1; ++i) {
        const __m128i r = recursion(_mm_load_si128(v + i), _mm_load_si128(v + i + kPos1), c, d);
        _mm_store_si128(v + i, r);
        c = d;
        d = r;
    }
    for (; i < kBlocks; ++i) {
        const __m128i r = recursion(_mm_load_si128(v + i), _mm_load_si128(v + i + kPos1 - kBlocks), c, d);
        _mm_store_si128(v + i, r);
        c = d;
        d = r;
    }
}

// A run of nb >= 156 whole blocks straight into the output, which serves as
// the ring (as in the generator's published array fill); the state then
// takes the last 156 blocks. Requires a used-up block (pos at the end).
void fill_direct(State* s, uint32_t* out, int32_t nb) {
    const __m128i* v = blocks(s->w);
    auto at = [out](int32_t j) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(out + 4 * j)); };
    auto put = [out](int32_t j, __m128i x) { _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 4 * j), x); };
    __m128i c = _mm_load_si128(v + kBlocks - 2), d = _mm_load_si128(v + kBlocks - 1);
    int32_t j = 0;
    for (; j < kBlocks - kPos1; ++j) {
        const __m128i r = recursion(_mm_load_si128(v + j), _mm_load_si128(v + j + kPos1), c, d);
        put(j, r);
        c = d;
        d = r;
    }
    for (; j < kBlocks; ++j) {
        const __m128i r = recursion(_mm_load_si128(v + j), at(j + kPos1 - kBlocks), c, d);
        put(j, r);
        c = d;
        d = r;
    }
    for (; j < nb; ++j) {
        const __m128i r = recursion(at(j - kBlocks), at(j + kPos1 - kBlocks), c, d);
        put(j, r);
        c = d;
        d = r;
    }
    std::memcpy(s->w, out + 4 * (nb - kBlocks), sizeof(State::w));
    s->pos = kWords;
}

// Keeps the unread rest of the block that pos stopped in, and rounds pos up.
void keep_rest(State* s) {
    const int32_t p = s->pos;
    if (p % 4 == 0) return;
    const int32_t rest = 4 - p % 4;
    std::memcpy(s->side, s->w + p, sizeof(uint32_t) * static_cast<size_t>(rest));
    s->sidePos = 0;
    s->sideCount = rest;
    s->pos = p + rest;
}

template <typename Out>
void generate(State* s, int32_t n, Out&& out) {
    int32_t i = 0;
    while (i < n && s->sidePos < s->sideCount) out(i++, s->side[s->sidePos++]);
    if (i == n) return;
    while (i < n) {
        if (s->pos >= kWords) {
            regenerate(s->w);
            s->pos = 0;
        }
        const int32_t m = std::min(n - i, kWords - s->pos);
        const uint32_t* src = s->w + s->pos;
        for (int32_t j = 0; j < m; ++j) out(i + j, src[j]);
        s->pos += m;
        i += m;
    }
    keep_rest(s);
}

void seed(State* s, int32_t count, const uint32_t* params) {
    constexpr int32_t kMid = 306, kLag = 11;
    const uint32_t one = 1;
    const uint32_t* key = count >= 1 ? params : &one;
    const int32_t len = count >= 1 ? count : 1;
    auto f1 = [](uint32_t x) { return (x ^ (x >> 27)) * 1664525u; };
    auto f2 = [](uint32_t x) { return (x ^ (x >> 27)) * 1566083941u; };
    uint32_t* w = s->w;
    std::fill(w, w + kWords, 0x8B8B8B8Bu);
    uint32_t r = f1(w[0] ^ w[kMid] ^ w[kWords - 1]);
    w[kMid] += r;
    r += static_cast<uint32_t>(len);
    w[kMid + kLag] += r;
    w[0] = r;
    const int32_t rounds = std::max(len + 1, kWords) - 1;
    int32_t i = 1;
    for (int32_t j = 0; j < rounds; ++j) {
        r = f1(w[i] ^ w[(i + kMid) % kWords] ^ w[(i + kWords - 1) % kWords]);
        w[(i + kMid) % kWords] += r;
        r += (j < len ? key[j] : 0u) + static_cast<uint32_t>(i);
        w[(i + kMid + kLag) % kWords] += r;
        w[i] = r;
        i = (i + 1) % kWords;
    }
    for (int32_t j = 0; j < kWords; ++j) {
        r = f2(w[i] + w[(i + kMid) % kWords] + w[(i + kWords - 1) % kWords]);
        w[(i + kMid) % kWords] ^= r;
        r -= static_cast<uint32_t>(i);
        w[(i + kMid + kLag) % kWords] ^= r;
        w[i] = r;
        i = (i + 1) % kWords;
    }
    s->pos = kWords;
    // Period certification: the state must have odd parity against the
    // certification vector, else bit 0 of word 0 is flipped.
    if (__builtin_parity((w[0] & 1u) ^ (w[3] & 0x13C9E684u)) == 0) w[0] ^= 1u;
    s->sidePos = 0;
    s->sideCount = 0;
}

// Operations of the jump engine; positions are in words, a multiple of 4.
inline int32_t ring_pos(const State* s) { return s->pos >= kWords ? 0 : s->pos; }

void op_zero(void* s) {
    std::memset(st(s)->w, 0, sizeof(State::w));
    st(s)->pos = 0;
}
void op_add(void* a, const void* b, int32_t) {
    xor_ring(st(a)->w, ring_pos(st(a)), st(b)->w, ring_pos(st(b)), kWords);
}
void op_copy(void* dst, const void* src) { std::memcpy(st(dst), st(src), sizeof(State)); }
void op_step(void* v) {
    State* s = st(v);
    const int32_t b = ring_pos(s) / 4;
    __m128i* x = blocks(s->w);
    _mm_store_si128(x + b, recursion(_mm_load_si128(x + b), _mm_load_si128(x + (b + kPos1) % kBlocks),
                                     _mm_load_si128(x + (b + kBlocks - 2) % kBlocks),
                                     _mm_load_si128(x + (b + kBlocks - 1) % kBlocks)));
    s->pos = 4 * (b + 1);
}
int32_t op_prepare(void* v, uint64_t* nskip, int32_t* carry) {
    State* s = st(v);
    const uint64_t avail = static_cast<uint64_t>(s->sideCount - s->sidePos);
    if (*nskip <= avail) {
        s->sidePos += static_cast<int32_t>(*nskip);
        return 0;
    }
    s->sidePos = s->sideCount;
    const uint64_t t = *nskip - avail + static_cast<uint64_t>(s->pos);
    if (t <= static_cast<uint64_t>(kWords)) {
        s->pos = static_cast<int32_t>(t);
        keep_rest(s);
        return 0;
    }
    const uint64_t left = t - kWords;
    s->pos = kWords;
    *nskip = left / 4 + (left % 4 != 0 ? 1 : 0);
    *carry = static_cast<int32_t>(left % 4);
    return 1;
}
void op_finish(void* v, const void* result, int32_t carry) {
    State* s = st(v);
    const State* r = st(result);
    rotate_ring(s->w, r->w, ring_pos(r), kWords);
    s->pos = kWords;
    if (carry != 0) {
        const int32_t rest = 4 - carry;
        std::memcpy(s->side, s->w + kWords - rest, sizeof(uint32_t) * static_cast<size_t>(rest));
        s->sidePos = 0;
        s->sideCount = rest;
    }
}

}  // namespace

namespace orv::rng {

int32_t sfmt19937_jump(void* stream, uint64_t nskip, bool horner) {
    auto* f = horner ? &__vst_SkipAheadHorner : &__vst_SkipAheadSWin;
    return f(stream, op_zero, op_add, op_copy, op_step, op_finish, op_prepare, nskip, kWords, kDegree, 2536,
             static_cast<int32_t>(std::size(kSfmt19937Poly)), kSfmt19937Poly);
}
const uint32_t* sfmt19937_polynomial(int32_t* terms) {
    *terms = static_cast<int32_t>(std::size(kSfmt19937Poly));
    return kSfmt19937Poly;
}

}  // namespace orv::rng

ORV_EXPORT int32_t __vstBRngSFMT19937InitStream(int32_t method, void* stream, int32_t count,
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
            return orv::rng::sfmt19937_jump(stream, nskip, nskip < static_cast<uint64_t>(kDegree));
        }
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngSFMT19937(void* stream, int32_t n, uint32_t* r) {
    State* s = st(stream);
    int32_t i = 0;
    while (i < n && s->sidePos < s->sideCount) r[i++] = s->side[s->sidePos++];
    // Whole runs are plain copies of the block words; long runs are made in
    // the output itself.
    while (i < n) {
        if (s->pos >= kWords && (n - i) / 4 >= kBlocks) {
            const int32_t nb = (n - i) / 4;
            fill_direct(s, r + i, nb);
            i += 4 * nb;
            continue;
        }
        if (s->pos >= kWords) {
            regenerate(s->w);
            s->pos = 0;
        }
        const int32_t m = std::min(n - i, kWords - s->pos);
        std::memcpy(r + i, s->w + s->pos, sizeof(uint32_t) * static_cast<size_t>(m));
        s->pos += m;
        i += m;
    }
    if (n > 0) keep_rest(s);
    return 0;
}

// The word read as signed: the first word 0 maps to the middle of [a, b).
ORV_EXPORT int32_t __vstdBRngSFMT19937(void* stream, int32_t n, double* r, double a, double b) {
    const double scale = (b - a) * 0x1p-32, mid = (a + b) * 0.5;
    generate(st(stream), n, [r, scale, mid](int32_t i, uint32_t w) {
        r[i] = static_cast<double>(static_cast<int32_t>(w)) * scale + mid;
    });
    return 0;
}

ORV_EXPORT int32_t __vstsBRngSFMT19937(void* stream, int32_t n, float* r, float a, float b) {
    const float scale = (b - a) * 0x1p-32f, mid = (a + b) * 0.5f;
    generate(st(stream), n, [r, scale, mid](int32_t i, uint32_t w) {
        r[i] = static_cast<float>(static_cast<int32_t>(w)) * scale + mid;
    });
    return 0;
}
