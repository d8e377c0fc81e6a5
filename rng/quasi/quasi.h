// What Sobol and Niederr share: the state header, the Gray-code walk over
// transposed rows of direction numbers, the per-dimension selection by
// leapfrog, skip-ahead by recomputation, and the end of the 32-bit sequence.
// Point number `counter` is x = XOR of v[b] over the bits b of its Gray code.
#pragma once

#include <cstddef>
#include <cstdint>
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
template <typename Out>
int32_t fill(View view, int32_t n, Out&& out);
int32_t leapfrog(View view, int32_t nstreams, int32_t k);
int32_t skip(View view, int32_t count, const void* params);

// Sobol's numbers m from a primitive polynomial of degree s and its first s
// initial numbers; false when they aren't odd numbers below 2^(k+1).
bool sobol_directions(uint32_t poly, const uint32_t* m_first, int s, uint32_t* v);

// The fills' conversions.
struct DoubleMap {
    double scale, a;
    DoubleMap(double a_, double b) : scale((b - a_) * 0x1p-32), a(a_) {}
    double operator()(uint32_t w) const { return static_cast<double>(w) * scale + a; }
};
struct FloatMap {
    float scale, a;
    FloatMap(float a_, float b) : scale((b - a_) * 0x1p-32f), a(a_) {}
    float operator()(uint32_t w) const { return static_cast<float>(w) * scale + a; }
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

// Whole points of a small dimension D kept in registers.
template <int D, typename Out>
int32_t whole_points(View v, int32_t i, int32_t n, Out& out) {
    uint32_t x[D];
    for (int d = 0; d < D; ++d) x[d] = v.x[d];
    uint32_t counter = v.h->counter;
    for (; n - i >= D; i += D) {
        for (int d = 0; d < D; ++d) out(i + d, x[d]);
        const uint32_t* row = v.rows + static_cast<size_t>(lowest_zero(counter)) * v.row_stride;
        for (int d = 0; d < D; ++d) x[d] ^= row[d];
        ++counter;
    }
    for (int d = 0; d < D; ++d) v.x[d] = x[d];
    v.h->counter = counter;
    return i;
}

template <typename Out>
int32_t fill(View v, int32_t n, Out&& out) {
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
            out(i, x);
            x ^= vs[lowest_zero(counter)];
        }
        // From a multiple of 4 the lowest zero bits run 0, 1, 0, c.
        for (; n - i >= 4; i += 4, counter += 4) {
            out(i, x);
            x ^= vs[0];
            out(i + 1, x);
            x ^= vs[1];
            out(i + 2, x);
            x ^= vs[0];
            out(i + 3, x);
            x ^= vs[lowest_zero(counter + 3)];
        }
        for (; i < n; ++i, ++counter) {
            out(i, x);
            x ^= vs[lowest_zero(counter)];
        }
        v.x[s] = x;
        h->counter = counter;
        return 0;
    }
    const uint32_t dim = h->dimension;
    // Finish a point begun by an earlier call.
    if (h->position != 0) {
        for (; i < n && h->position < dim; ++i) out(i, v.x[h->position++]);
        if (h->position < dim) return 0;
        xor_row(v, lowest_zero(h->counter));
        ++h->counter;
        h->position = 0;
    }
    if (v.rows != nullptr) {
        switch (dim) {
            case 1: i = whole_points<1>(v, i, n, out); break;
            case 2: i = whole_points<2>(v, i, n, out); break;
            case 3: i = whole_points<3>(v, i, n, out); break;
            case 4: i = whole_points<4>(v, i, n, out); break;
            case 5: i = whole_points<5>(v, i, n, out); break;
            case 6: i = whole_points<6>(v, i, n, out); break;
            case 7: i = whole_points<7>(v, i, n, out); break;
            case 8: i = whole_points<8>(v, i, n, out); break;
            default: break;
        }
    }
    for (; n - i >= static_cast<int32_t>(dim); i += static_cast<int32_t>(dim)) {
        for (uint32_t d = 0; d < dim; ++d) out(i + static_cast<int32_t>(d), v.x[d]);
        xor_row(v, lowest_zero(h->counter));
        ++h->counter;
    }
    for (; i < n; ++i) out(i, v.x[h->position++]);
    return 0;
}

}  // namespace orv::rng::quasi
