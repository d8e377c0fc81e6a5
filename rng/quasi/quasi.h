// What Sobol and Niederr share: the state header, the Gray-code walk over
// transposed rows of direction numbers, the per-dimension selection by
// leapfrog, skip-ahead by recomputation, and the end of the 32-bit sequence.
// Point number `counter` is x = XOR of v[b] over the bits b of its Gray code.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "rng/brng_row.h"

namespace orv::rng::quasi {

inline constexpr uint32_t kAll = 0xFFFFFFFFu;
inline constexpr int kBits = 32;

// The fields at the start of the state; the point begins at record offset 48.
struct Header {
    uint32_t counter;    // index of the current point, 1 after seeding
    uint32_t dimension;
    uint32_t selected;   // the one dimension delivered, or kAll
    uint32_t position;   // coordinates of the current point delivered already
    uint32_t pad[4];
};
static_assert(sizeof(Header) == 32);

// Where a stream's numbers are: the point x, the direction numbers by
// dimension (v[d][k] at by_dim[d * dim_stride + k]) and, when present, the
// transposed rows (row k at rows + k * row_stride, one word a dimension).
struct View {
    Header* h;
    uint32_t* x;
    const uint32_t* by_dim;
    size_t dim_stride;
    const uint32_t* rows;
    size_t row_stride;
};

// Index of the lowest zero bit, by byte lookup.
int lowest_zero(uint32_t counter);

// The direction numbers of a seeding, before they are placed.
struct Directions {
    uint32_t dimension = 0;
    std::vector<uint32_t> v;  // 32 words a dimension, normalised to the top bit
};

// Fills the record's tables (or a chunk's) from the directions and sets the
// header and the first point.
void place(const Directions& dir, View view);

// The three fills and the jumps, for any view.
template <typename Emit>
int32_t fill(View view, int32_t n, const Emit& out);
int32_t leapfrog(View view, int32_t nstreams, int32_t k);
int32_t skip(View view, int32_t count, const void* params);

// Sobol's numbers m from a primitive polynomial of degree s and its first s
// initial numbers; false when they aren't odd numbers below 2^(k+1).
bool sobol_directions(uint32_t poly, const uint32_t* m_first, int s, uint32_t* v);

// The fills' outputs: one value, or a run of values converted four at a
// time. An unsigned word becomes a double exactly as (int32)(w ^ 2^31) + 2^31;
// a float is that double rounded once, as the scalar conversion rounds.
struct WordEmit {
    uint32_t* r;
    void one(int32_t i, uint32_t x) const { r[i] = x; }
    void four(int32_t i, __m128i x) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(r + i), x); }
    void many(int32_t i, const uint32_t* x, int32_t count) const {
        std::memcpy(r + i, x, sizeof(uint32_t) * static_cast<size_t>(count));
    }
};

inline void exact_doubles(__m128i w, __m128d& lo, __m128d& hi) {
    const __m128i t = _mm_xor_si128(w, _mm_set1_epi32(static_cast<int>(0x80000000u)));
    const __m128d bias = _mm_set1_pd(0x1p31);
    lo = _mm_add_pd(_mm_cvtepi32_pd(t), bias);
    hi = _mm_add_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(t, 0xEE)), bias);
}

struct DoubleEmit {
    double* r;
    double scale, a;
    DoubleEmit(double* r_, double a_, double b) : r(r_), scale((b - a_) * 0x1p-32), a(a_) {}
    void one(int32_t i, uint32_t x) const { r[i] = static_cast<double>(x) * scale + a; }
    void four(int32_t i, __m128i x) const {
        const __m128d s = _mm_set1_pd(scale), o = _mm_set1_pd(a);
        __m128d lo, hi;
        exact_doubles(x, lo, hi);
        _mm_storeu_pd(r + i, _mm_add_pd(_mm_mul_pd(lo, s), o));
        _mm_storeu_pd(r + i + 2, _mm_add_pd(_mm_mul_pd(hi, s), o));
    }
    void many(int32_t i, const uint32_t* x, int32_t count) const {
        int32_t j = 0;
        for (; j + 4 <= count; j += 4) four(i + j, _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + j)));
        for (; j < count; ++j) one(i + j, x[j]);
    }
};

struct FloatEmit {
    float* r;
    float scale, a;
    FloatEmit(float* r_, float a_, float b) : r(r_), scale((b - a_) * 0x1p-32f), a(a_) {}
    void one(int32_t i, uint32_t x) const { r[i] = static_cast<float>(x) * scale + a; }
    void four(int32_t i, __m128i x) const {
        __m128d lo, hi;
        exact_doubles(x, lo, hi);
        const __m128 f = _mm_movelh_ps(_mm_cvtpd_ps(lo), _mm_cvtpd_ps(hi));
        _mm_storeu_ps(r + i, _mm_add_ps(_mm_mul_ps(f, _mm_set1_ps(scale)), _mm_set1_ps(a)));
    }
    void many(int32_t i, const uint32_t* x, int32_t count) const {
        int32_t j = 0;
        for (; j + 4 <= count; j += 4) four(i + j, _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + j)));
        for (; j < count; ++j) one(i + j, x[j]);
    }
};

// ----------------------------------------------------------------------------

inline void xor_row(View v, int c) {
    const uint32_t d = v.h->dimension;
    if (v.rows != nullptr) {
        const uint32_t* row = v.rows + static_cast<size_t>(c) * v.row_stride;
        for (uint32_t i = 0; i < d; ++i) v.x[i] ^= row[i];
    } else {
        for (uint32_t i = 0; i < d; ++i) v.x[i] ^= v.by_dim[i * v.dim_stride + static_cast<size_t>(c)];
    }
}

// Whole points four at a time from a counter that is a multiple of 4: the
// lowest zero bits of counter .. counter + 3 are 0, 1, 0 and c, so the four
// points are x, x ^ v0, x ^ v0 ^ v1 and x ^ v1 (v0, v1 the first two rows),
// written as one run, and x moves on by v1 ^ v[c].
constexpr uint32_t kGroupDims = 64;

// D is the dimension when it is known at compile time (small ones), 0
// otherwise. Runs are built with 16-byte stores that the conversion's
// 16-byte loads read back whole; dimensions are padded to a multiple of 4
// (the rows have room: their stride is at least that).
template <uint32_t D, typename Emit>
int32_t point_groups(View v, int32_t i, int32_t n, const Emit& out) {
    const uint32_t dim = D != 0 ? D : v.h->dimension;
    const uint32_t padded = (dim + 3) & ~3u;
    const uint32_t* r0 = v.rows;
    const uint32_t* r1 = v.rows + v.row_stride;
    alignas(16) uint32_t k[4][kGroupDims], xs[kGroupDims], run[kGroupDims];
    for (uint32_t d = 0; d < padded; ++d) {
        k[0][d] = 0;
        k[1][d] = r0[d];
        k[2][d] = r0[d] ^ r1[d];
        k[3][d] = r1[d];
        xs[d] = d < dim ? v.x[d] : 0;
    }
    auto vec = [](const uint32_t* p) { return _mm_load_si128(reinterpret_cast<const __m128i*>(p)); };
    auto put = [](uint32_t* p, __m128i x) { _mm_store_si128(reinterpret_cast<__m128i*>(p), x); };
    uint32_t counter = v.h->counter;
    const int32_t group = 4 * static_cast<int32_t>(dim);
    if (dim == 1) {  // the four points are one register
        const __m128i kk = _mm_setr_epi32(0, static_cast<int>(k[1][0]), static_cast<int>(k[2][0]),
                                          static_cast<int>(k[3][0]));
        uint32_t x = xs[0];
        for (; n - i >= 4; i += 4, counter += 4) {
            out.four(i, _mm_xor_si128(_mm_set1_epi32(static_cast<int>(x)), kk));
            x ^= k[3][0] ^ v.rows[static_cast<size_t>(lowest_zero(counter + 3)) * v.row_stride];
        }
        xs[0] = x;
    }
    for (; n - i >= group; i += group, counter += 4) {
        if (dim == 2) {
            const __m128i x = _mm_unpacklo_epi64(vec(xs), vec(xs));
            out.four(i, _mm_xor_si128(x, _mm_unpacklo_epi64(vec(k[0]), vec(k[1]))));
            out.four(i + 4, _mm_xor_si128(x, _mm_unpacklo_epi64(vec(k[2]), vec(k[3]))));
        } else if (dim % 4 == 0) {
            for (uint32_t d = 0; d < dim; d += 4) {
                const __m128i x = vec(xs + d);
                for (uint32_t p = 0; p < 4; ++p) out.four(i + static_cast<int32_t>(p * dim + d), _mm_xor_si128(x, vec(k[p] + d)));
            }
        } else {
            for (uint32_t p = 0; p < 4; ++p) {
                for (uint32_t d = 0; d < padded; d += 4) put(run + d, _mm_xor_si128(vec(xs + d), vec(k[p] + d)));
                out.many(i + static_cast<int32_t>(p * dim), run, static_cast<int32_t>(dim));
            }
        }
        const uint32_t* rc = v.rows + static_cast<size_t>(lowest_zero(counter + 3)) * v.row_stride;
        for (uint32_t d = 0; d < padded; d += 4)
            put(xs + d, _mm_xor_si128(vec(xs + d), _mm_xor_si128(vec(k[3] + d),
                                                                 _mm_loadu_si128(reinterpret_cast<const __m128i*>(rc + d)))));
    }
    for (uint32_t d = 0; d < dim; ++d) v.x[d] = xs[d];
    v.h->counter = counter;
    return i;
}

template <typename Emit>
int32_t fill(View v, int32_t n, const Emit& out) {
    Header* h = v.h;
    if (n <= 0) return 0;
    if (uint64_t{h->counter} + static_cast<uint64_t>(n) > 0xFFFFFFFFull) return ORV_RNG_ERROR_QRNG_PERIOD_ELAPSED;
    int32_t i = 0;
    if (h->selected != kAll) {
        const uint32_t s = h->selected;
        uint32_t x = v.x[s];
        uint32_t counter = h->counter;
        const uint32_t* vs = v.by_dim + s * v.dim_stride;
        for (; i < n && (counter & 3) != 0; ++i, ++counter) {
            out.one(i, x);
            x ^= vs[lowest_zero(counter)];
        }
        // From a multiple of 4 the lowest zero bits run 0, 1, 0, c.
        for (; n - i >= 4; i += 4, counter += 4) {
            const uint32_t run[4] = {x, x ^ vs[0], x ^ vs[0] ^ vs[1], x ^ vs[1]};
            out.many(i, run, 4);
            x ^= vs[1] ^ vs[lowest_zero(counter + 3)];
        }
        for (; i < n; ++i, ++counter) {
            out.one(i, x);
            x ^= vs[lowest_zero(counter)];
        }
        v.x[s] = x;
        h->counter = counter;
        return 0;
    }
    const uint32_t dim = h->dimension;
    const int32_t whole = static_cast<int32_t>(dim);
    // Finish a point begun by an earlier call.
    if (h->position != 0) {
        for (; i < n && h->position < dim; ++i) out.one(i, v.x[h->position++]);
        if (h->position < dim) return 0;
        xor_row(v, lowest_zero(h->counter));
        ++h->counter;
        h->position = 0;
    }
    const bool groups = v.rows != nullptr && dim <= kGroupDims;
    for (; n - i >= whole && (!groups || (h->counter & 3) != 0 || n - i < 4 * whole); i += whole) {
        out.many(i, v.x, whole);
        xor_row(v, lowest_zero(h->counter));
        ++h->counter;
    }
    if (groups) {
        switch (dim) {
            case 1: i = point_groups<1>(v, i, n, out); break;
            case 2: i = point_groups<2>(v, i, n, out); break;
            case 3: i = point_groups<3>(v, i, n, out); break;
            case 4: i = point_groups<4>(v, i, n, out); break;
            case 5: i = point_groups<5>(v, i, n, out); break;
            case 6: i = point_groups<6>(v, i, n, out); break;
            case 7: i = point_groups<7>(v, i, n, out); break;
            case 8: i = point_groups<8>(v, i, n, out); break;
            default: i = point_groups<0>(v, i, n, out); break;
        }
        for (; n - i >= whole; i += whole) {
            out.many(i, v.x, whole);
            xor_row(v, lowest_zero(h->counter));
            ++h->counter;
        }
    }
    for (; i < n; ++i) out.one(i, v.x[h->position++]);
    return 0;
}

}  // namespace orv::rng::quasi
