// Niederr: Niederreiter's base-2 sequence with the generator matrices built
// from irreducible polynomials over GF(2) (the construction of Bratley, Fox
// and Niederreiter, ACM TOMS 738), walked in Gray-code order like Sobol.
// 318 dimensions from the built-in polynomials; user data: mode 1 gives one
// polynomial a dimension, mode 4 the 32 direction numbers of each. Beyond
// the record's 318 dimensions the numbers and the point live in chunk 10.
#include <cstring>

#include <orv/orv_core.h>

#include "rng/quasi/quasi.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;
using namespace orv::rng::quasi;

constexpr uint32_t kPolynomials[] = {
#include "rng/quasi/niederr_polynomials.inc"
};
constexpr uint32_t kMaxInline = sizeof kPolynomials / sizeof kPolynomials[0];
static_assert(kMaxInline == 318);
constexpr int kChunk = 10;
constexpr int kPrecision = 31;  // columns of the generator matrices

// Record layout in words from the state's start.
constexpr size_t kX = 8, kV = kX + 320, kVStride = 33, kRows = kV + kMaxInline * kVStride, kRowStride = 320;
static_assert(16 + 4 * (kRows + 32 * kRowStride) <= 84288);

uint32_t* words(void* stream) { return state<uint32_t>(stream); }

View view_of(void* stream) {
    uint32_t* w = words(stream);
    auto* h = reinterpret_cast<Header*>(w);
    if (auto* chunk = static_cast<uint32_t*>(__vstSearchChunk(stream, kChunk)))
        return {h, chunk + size_t{32} * h->dimension, chunk, kBits, nullptr, 0};
    return {h, w + kX, w + kV, kVStride, w + kRows, kRowStride};
}

int degree(uint64_t p) { return p == 0 ? -1 : 63 - __builtin_clzll(p); }

uint64_t gf2_multiply(uint64_t a, uint64_t b) {
    uint64_t r = 0;
    for (; b != 0; b >>= 1, a <<= 1)
        if (b & 1u) r ^= a;
    return r;
}

// The direction numbers of one dimension from its irreducible polynomial p:
// the powers p^j give, by a linear recurrence, the sequences v whose windows
// form the columns of the generator matrix. False for a polynomial of
// degree 0 or one too high for the 64-bit products.
bool niederreiter_dimension(uint32_t p, uint32_t* out) {
    const int e = degree(p);
    if (e < 1 || e > 31) return false;
    uint64_t b = 1;  // p^j
    int u = 0;
    uint8_t v[128];
    uint8_t column[kPrecision][kPrecision];  // column[j][r]
    for (int j = 0; j < kPrecision; ++j) {
        if (u == 0) {
            const int bigm = degree(b);
            b = gf2_multiply(b, p);
            const int m = degree(b);
            if (m >= 64) return false;
            std::memset(v, 0, sizeof v);
            v[bigm] = 1;
            for (int r = bigm + 1; r < m; ++r) v[r] = 1;
            const int maxv = kPrecision + 64;
            for (int r = 0; r + m <= maxv; ++r) {
                uint8_t sum = 0;
                for (int k = 0; k < m; ++k) sum ^= static_cast<uint8_t>(((b >> k) & 1u) & v[r + k]);
                v[r + m] = sum;
            }
        }
        for (int r = 0; r < kPrecision; ++r) column[j][r] = v[r + u];
        if (++u == e) u = 0;
    }
    // Direction number k: row k of the matrix read across the columns, the
    // first column at the top bit.
    for (int k = 0; k < kBits; ++k) {
        uint32_t term = 0;
        if (k < kPrecision)
            for (int j = 0; j < kPrecision; ++j) term = term << 1 | column[j][k];
        out[k] = term << 1;
    }
    return true;
}

bool from_polynomials(Directions& dir, uint32_t dim, const uint32_t* polys) {
    dir.dimension = dim;
    dir.v.assign(size_t{dim} * kBits, 0);
    for (uint32_t d = 0; d < dim; ++d)
        if (!niederreiter_dimension(polys[d], dir.v.data() + size_t{d} * kBits)) return false;
    return true;
}

bool user_numbers(Directions& dir, int32_t count, const uint32_t* w) {
    const uint32_t dim = w[0];
    const uint64_t avail = static_cast<uint64_t>(count);
    if (dim == 0 || dim > (0x7FFFFFFFu / 4) / 33) return false;  // chunk 10 within an int32 size
    switch (w[2]) {
        case 1:
            return uint64_t{dim} + 3 <= avail && from_polynomials(dir, dim, w + 3);
        case 4:
            if (uint64_t{32} * dim + 3 > avail) return false;
            dir.dimension = dim;
            dir.v.assign(w + 3, w + 3 + size_t{32} * dim);
            return true;
        default:
            return false;
    }
}

int32_t seed(void* stream, int32_t count, const uint32_t* w) {
    Directions dir;
    const bool user = count >= 3 && w[1] == 1 && user_numbers(dir, count, w);
    if (!user) from_polynomials(dir, count >= 1 && w[0] >= 1 && w[0] <= kMaxInline ? w[0] : 1, kPolynomials);
    auto* h = reinterpret_cast<Header*>(words(stream));
    const uint32_t dim = dir.dimension;
    if (dim <= kMaxInline) {
        uint32_t* sw = words(stream);
        place(dir, {h, sw + kX, sw + kV, kVStride, sw + kRows, kRowStride});
        return 0;
    }
    const size_t chunk_words = size_t{33} * dim;
    auto* chunk = static_cast<uint32_t*>(allocate_block(chunk_words * 4));
    if (chunk == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    place(dir, {h, chunk + size_t{32} * dim, chunk, kBits, nullptr, 0});
    const int32_t st = __vstAddChunk(stream, kChunk, nullptr, chunk, static_cast<int32_t>(chunk_words * 4));
    if (st != 0) orv_serv_deallocate(chunk);
    return st;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngNiederrInitStream(int32_t method, void* stream, int32_t count,
                                                 const void* params) {
    switch (method) {
        case ORV_RNG_METHOD_SEED:
            return seed(stream, count, static_cast<const uint32_t*>(params));
        case ORV_RNG_METHOD_LEAPFROG:
            return leapfrog(view_of(stream), count, *static_cast<const int32_t*>(params));
        case ORV_RNG_METHOD_SKIP:
            return skip(view_of(stream), count, params);
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngNiederr(void* stream, int32_t n, uint32_t* r) {
    return fill(view_of(stream), n, WordEmit{r});
}

ORV_EXPORT int32_t __vstdBRngNiederr(void* stream, int32_t n, double* r, double a, double b) {
    return fill(view_of(stream), n, DoubleEmit(r, a, b));
}

ORV_EXPORT int32_t __vstsBRngNiederr(void* stream, int32_t n, float* r, float a, float b) {
    return fill(view_of(stream), n, FloatEmit(r, a, b));
}
