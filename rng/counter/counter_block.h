// What ARS5 and PHILOX4X32X10 share: a 128-bit counter turned into blocks of
// four 32-bit words, read in order; skip-ahead by moving the counter; the
// signed interval mapping.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "rng/brng_row.h"

namespace orv::rng::counter {

using u128 = unsigned __int128;

inline u128 load128(const uint32_t w[4]) {
    u128 v = 0;
    for (int i = 3; i >= 0; --i) v = v << 32 | w[i];
    return v;
}
inline void store128(uint32_t w[4], u128 v) {
    for (int i = 0; i < 4; ++i, v >>= 32) w[i] = static_cast<uint32_t>(v);
}

// The signed mapping onto [a, b): (int32)w * ((b - a) 2^-32) + (a + b) / 2.
struct DoubleMap {
    double scale, mid;
    DoubleMap(double a, double b) : scale((b - a) * 0x1p-32), mid((a + b) * 0.5) {}
    double operator()(uint32_t w) const { return static_cast<double>(static_cast<int32_t>(w)) * scale + mid; }
};
struct FloatMap {
    float scale, mid;
    FloatMap(float a, float b) : scale((b - a) * 0x1p-32f), mid((a + b) * 0.5f) {}
    float operator()(uint32_t w) const { return static_cast<float>(static_cast<int32_t>(w)) * scale + mid; }
};

// Stores of one block (a register of its four words in order) into the
// caller's array, in the three output forms; the same arithmetic as the maps.
struct WordStore {
    uint32_t* r;
    void operator()(int32_t i, __m128i w) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(r + i), w); }
};
struct DoubleStore {
    double* r;
    __m128d scale, mid;
    void operator()(int32_t i, __m128i w) const {
        const __m128d lo = _mm_cvtepi32_pd(w), hi = _mm_cvtepi32_pd(_mm_shuffle_epi32(w, 0xEE));
        _mm_storeu_pd(r + i, _mm_add_pd(_mm_mul_pd(lo, scale), mid));
        _mm_storeu_pd(r + i + 2, _mm_add_pd(_mm_mul_pd(hi, scale), mid));
    }
};
struct FloatStore {
    float* r;
    __m128 scale, mid;
    void operator()(int32_t i, __m128i w) const {
        _mm_storeu_ps(r + i, _mm_add_ps(_mm_mul_ps(_mm_cvtepi32_ps(w), scale), mid));
    }
};

// A skip count of up to three 64-bit words (more are ignored), as a 192-bit
// number in two parts.
struct SkipCount {
    u128 low = 0;
    uint64_t high = 0;
};
inline SkipCount skip_count(int32_t method, int32_t count, const void* params) {
    SkipCount c;
    uint64_t w[3] = {0, 0, 0};
    const int32_t words = method == ORV_RNG_METHOD_SKIP ? 1 : (count < 3 ? count : 3);
    if (words > 0) std::memcpy(w, params, sizeof(uint64_t) * static_cast<size_t>(words));
    c.low = static_cast<u128>(w[1]) << 64 | w[0];
    c.high = w[2];
    return c;
}

// State fields common to both generators, behind their keys.
struct Position {
    uint32_t counter[4];
    uint32_t left;  // words of `block` still unread
    uint32_t block[4];
};

// Skip-ahead by `c` outputs. When the count reaches past the unread words,
// d = count - left: the counter moves by (d - 1) / 4 and one block is made,
// leaving (left - count) mod 4 words of it unread. (ARS5's recipe, moving by
// d / 4 and leaving 4 - d mod 4, gives the same sequence.)
template <typename Block>
void skip(Position& p, const SkipCount& c, Block&& make_block) {
    if (c.high == 0 && c.low <= p.left) {
        p.left -= static_cast<uint32_t>(c.low);
        return;
    }
    // d - 1 as 192 bits, then shifted down by 2 into 128 bits.
    const u128 d_low = c.low - p.left;
    const uint64_t d_high = c.high - (c.low < p.left ? 1 : 0);
    const u128 dm1_low = d_low - 1;
    const uint64_t dm1_high = d_high - (d_low == 0 ? 1 : 0);
    const u128 blocks = dm1_low >> 2 | static_cast<u128>(dm1_high) << 126;
    u128 ctr = load128(p.counter) + blocks;
    store128(p.counter, ctr);
    make_block(p.counter, p.block);
    store128(p.counter, ctr + 1);
    p.left = (p.left - static_cast<uint32_t>(c.low)) & 3u;
}

// The fill: unread words of the current block, groups of G blocks written
// straight to the output by `groups(ctr, g, i)` (4 G g outputs from index
// i), whole blocks, and a last block of which the rest stays for the next
// call. `blocks(ctr, k, out)` writes k consecutive blocks (16 bytes each)
// from counter ctr into out.
template <int G, typename Groups, typename Blocks, typename Out>
void fill(Position& p, int32_t n, Groups&& groups, Blocks&& blocks, Out&& out) {
    int32_t i = 0;
    for (; p.left > 0 && i < n; --p.left) out(i++, p.block[4 - p.left]);
    if (i >= n) return;
    u128 ctr = load128(p.counter);
    if (const int32_t g = (n - i) / (4 * G); g > 0) {
        groups(ctr, g, i);
        ctr += static_cast<u128>(G) * static_cast<u128>(g);
        i += 4 * G * g;
    }
    constexpr int kBatch = 16;
    uint32_t buf[4 * kBatch];
    while (n - i >= 4) {
        const int k = (n - i) / 4 < kBatch ? (n - i) / 4 : kBatch;
        blocks(ctr, k, buf);
        ctr += static_cast<u128>(k);
        for (int j = 0; j < 4 * k; ++j) out(i + j, buf[j]);
        i += 4 * k;
    }
    if (i < n) {
        blocks(ctr, 1, p.block);
        ctr += 1;
        p.left = 4;
        for (; i < n; --p.left) out(i++, p.block[4 - p.left]);
    }
    store128(p.counter, ctr);
}

}  // namespace orv::rng::counter
