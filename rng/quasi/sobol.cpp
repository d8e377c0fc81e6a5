// Sobol: the Gray-code Sobol walk (Antonov and Saleev) in up to 40 dimensions
// from the Bratley-Fox numbers, or in any dimension from the user's numbers.
// Seed words: dimension, 1 for user numbers, the mode, then the data:
//   mode 1: one primitive polynomial a dimension, initial numbers built in;
//   mode 2: a row length L, then L initial numbers a dimension;
//   mode 3: the polynomials, the largest degree D, then D numbers a dimension;
//   mode 4: 32 direction numbers a dimension, normalised to the top bit.
// Mode bit 8 says the data begins with dimension 0 (otherwise it stays all
// ones). Modes 3 and 4 keep their numbers in chunks 9 (shared, read-only)
// and 13 (the point); the others in the record.
#include <x86intrin.h>

#include <cstring>

#include <orv/orv_core.h>

#include "rng/quasi/quasi.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;
using namespace orv::rng::quasi;

constexpr uint32_t kMaxBuiltIn = 40;
constexpr int kTableChunk = 9, kPointChunk = 13;

struct BuiltIn {
    int degree;
    uint32_t poly;
    uint32_t m[8];
};
constexpr BuiltIn kBuiltIn[] = {
#include "rng/quasi/sobol_table.inc"
};
static_assert(sizeof kBuiltIn / sizeof kBuiltIn[0] == kMaxBuiltIn - 1);

// Record layout in words from the state's start.
constexpr size_t kX = 8, kV = kX + 40, kVStride = 33, kRows = kV + 40 * kVStride, kRowStride = 48;
static_assert(16 + 4 * (kRows + 32 * kRowStride) <= 11712);

uint32_t* words(void* stream) { return state<uint32_t>(stream); }

size_t chunk_row_stride(uint32_t dim) { return (dim + 15u) & ~size_t{15}; }

View view_of(void* stream) {
    uint32_t* w = words(stream);
    auto* h = reinterpret_cast<Header*>(w);
    auto* table = static_cast<uint32_t*>(__vstSearchChunk(stream, kTableChunk));
    auto* point = static_cast<uint32_t*>(__vstSearchChunk(stream, kPointChunk));
    if (table != nullptr && point != nullptr)
        return {h, point, table, kBits, table + size_t{32} * h->dimension, chunk_row_stride(h->dimension)};
    return {h, w + kX, w + kV, kVStride, w + kRows, kRowStride};
}

// Numbers of dimension d (at or above 1) from a polynomial and initial numbers.
bool add_dimension(Directions& dir, uint32_t d, uint32_t poly, const uint32_t* m, int available) {
    int s = 31;
    while (s > 0 && ((poly >> s) & 1u) == 0) --s;
    if (s == 0 || (poly & 1u) == 0 || s > available) return false;
    return sobol_directions(poly, m, s, dir.v.data() + size_t{d} * kBits);
}

void dimension_zero(Directions& dir) { sobol_directions(1, nullptr, 0, dir.v.data()); }

void built_in(Directions& dir, uint32_t dim) {
    dir.dimension = dim;
    dir.v.assign(size_t{dim} * kBits, 0);
    dimension_zero(dir);
    for (uint32_t d = 1; d < dim; ++d) {
        const BuiltIn& b = kBuiltIn[d - 1];
        add_dimension(dir, d, b.poly, b.m, b.degree);
    }
}

// The user's numbers by mode; false when they don't apply (too few words,
// an unknown mode, a dimension out of range or numbers that aren't valid).
bool user_numbers(Directions& dir, int32_t count, const uint32_t* w, int* mode_out) {
    const uint32_t dim = w[0];
    const int mode = static_cast<int>(w[2] & 7u);
    const bool with_first = (w[2] & 8u) != 0;
    const uint64_t given = with_first ? dim : uint64_t{dim} - 1;  // dimensions in the data
    const uint64_t avail = static_cast<uint64_t>(count);
    *mode_out = mode;
    if (dim == 0) return false;
    // Chunk 9 must stay within an int32 size.
    if (dim > (0x7FFFFFFFu / 4 - 2048) / 64) return false;
    dir.dimension = dim;
    dir.v.assign(size_t{dim} * kBits, 0);
    const uint32_t first = with_first ? 0 : 1;
    if (!with_first) dimension_zero(dir);
    const uint32_t* data = w + 3;
    switch (mode) {
        case 1: {
            if (dim > kMaxBuiltIn || given + 3 > avail) return false;
            for (uint32_t d = first; d < dim; ++d) {
                uint32_t m[32];
                for (int k = 0; k < 32; ++k) m[k] = d == 0 ? 1 : k < 8 && kBuiltIn[d - 1].m[k] != 0 ? kBuiltIn[d - 1].m[k] : 1;
                if (!add_dimension(dir, d, data[d - first], m, 32)) return false;
            }
            return true;
        }
        case 2: {
            if (dim > kMaxBuiltIn || avail < 4) return false;
            const uint64_t row = data[0];
            if (given * row + 4 > avail) return false;
            for (uint32_t d = first; d < dim; ++d) {
                if (d == 0) continue;  // no polynomial: stays all ones
                const BuiltIn& b = kBuiltIn[d - 1];
                if (!add_dimension(dir, d, b.poly, data + 1 + (d - first) * row, static_cast<int>(row < 32 ? row : 32)))
                    return false;
            }
            if (with_first) dimension_zero(dir);
            return true;
        }
        case 3: {
            if (given + 4 > avail) return false;
            const uint64_t degree = data[given];
            if ((degree + 1) * given + 4 > avail) return false;
            const uint32_t* numbers = data + given + 1;
            for (uint32_t d = first; d < dim; ++d)
                if (!add_dimension(dir, d, data[d - first], numbers + (d - first) * degree,
                                   static_cast<int>(degree < 32 ? degree : 32)))
                    return false;
            return true;
        }
        case 4: {
            if (uint64_t{32} * dim + 3 > avail) return false;
            std::memcpy(dir.v.data(), data, sizeof(uint32_t) * 32 * dim);
            return true;
        }
        default:
            return false;
    }
}

int32_t seed(void* stream, int32_t count, const uint32_t* w) {
    Directions dir;
    int mode = 0;
    const bool user = count >= 4 && w[1] == 1 && user_numbers(dir, count, w, &mode);
    if (!user) built_in(dir, count >= 1 && w[0] >= 1 && w[0] <= kMaxBuiltIn ? w[0] : 1);
    auto* h = reinterpret_cast<Header*>(words(stream));
    if (!user || mode < 3) {
        uint32_t* sw = words(stream);
        place(dir, {h, sw + kX, sw + kV, kVStride, sw + kRows, kRowStride});
        return 0;
    }
    const uint32_t dim = dir.dimension;
    const size_t table_words = size_t{64} * dim - size_t{128} * (dim % 16) + 2048;
    auto* table = static_cast<uint32_t*>(allocate_block(table_words * 4));
    if (table == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    std::memset(table, 0, table_words * 4);
    auto* point = static_cast<uint32_t*>(allocate_block(size_t{4} * dim));
    if (point == nullptr) {
        orv_serv_deallocate(table);
        return ORV_RNG_ERROR_MEM_FAILURE;
    }
    place(dir, {h, point, table, kBits, table + size_t{32} * dim, chunk_row_stride(dim)});
    OrvChunkId id{{__rdtsc(), 0x536F626F6C}};
    __vstGenerateNewGlobalRODataTableEntryId(&id, id.word[1]);
    int32_t st = __vstAddChunk(stream, kTableChunk, &id, table, static_cast<int32_t>(table_words * 4));
    if (st != 0) {
        orv_serv_deallocate(table);
        orv_serv_deallocate(point);
        return st;
    }
    st = __vstAddChunk(stream, kPointChunk, nullptr, point, static_cast<int32_t>(4 * dim));
    if (st != 0) orv_serv_deallocate(point);
    return st;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngSobolInitStream(int32_t method, void* stream, int32_t count, const void* params) {
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

ORV_EXPORT int32_t __vstiBRngSobol(void* stream, int32_t n, uint32_t* r) {
    return fill(view_of(stream), n, WordEmit{r});
}

ORV_EXPORT int32_t __vstdBRngSobol(void* stream, int32_t n, double* r, double a, double b) {
    return fill(view_of(stream), n, DoubleEmit(r, a, b));
}

ORV_EXPORT int32_t __vstsBRngSobol(void* stream, int32_t n, float* r, float a, float b) {
    return fill(view_of(stream), n, FloatEmit(r, a, b));
}
