// The shared walk of the quasi-random generators: lookups, placing the
// direction numbers, selection of one dimension, skip-ahead.
#include "rng/quasi/quasi.h"

#include <cstring>

namespace orv::rng::quasi {

namespace {

struct LowestZero {
    uint8_t of[256];
    constexpr LowestZero() : of() {
        for (int b = 0; b < 256; ++b) {
            int z = 0;
            while (z < 8 && ((b >> z) & 1) != 0) ++z;
            of[b] = static_cast<uint8_t>(z);
        }
    }
};
constexpr LowestZero kLowestZero;

// Point number `counter` of dimension d, from scratch.
uint32_t coordinate(const View& v, uint32_t d, uint32_t counter) {
    const uint32_t gray = counter ^ (counter >> 1);
    uint32_t x = 0;
    for (int b = 0; b < kBits; ++b)
        if ((gray >> b) & 1u) x ^= v.by_dim[d * v.dim_stride + static_cast<size_t>(b)];
    return x;
}

}  // namespace

int lowest_zero(uint32_t counter) {
    int add = 0;
    while ((counter & 0xFFu) == 0xFFu && add < 32) {
        counter >>= 8;
        add += 8;
    }
    return add == 32 ? 32 : add + kLowestZero.of[counter & 0xFFu];
}

void place(const Directions& dir, View view) {
    const uint32_t dim = dir.dimension;
    uint32_t* by_dim = const_cast<uint32_t*>(view.by_dim);
    uint32_t* rows = const_cast<uint32_t*>(view.rows);
    for (uint32_t d = 0; d < dim; ++d) {
        for (int k = 0; k < kBits; ++k) {
            const uint32_t vk = dir.v[d * kBits + static_cast<size_t>(k)];
            by_dim[d * view.dim_stride + static_cast<size_t>(k)] = vk;
            if (rows != nullptr) rows[static_cast<size_t>(k) * view.row_stride + d] = vk;
        }
        if (view.dim_stride > static_cast<size_t>(kBits)) by_dim[d * view.dim_stride + kBits] = 0;
        view.x[d] = dir.v[d * kBits];
    }
    view.h->counter = 1;
    view.h->dimension = dim;
    view.h->selected = kAll;
    view.h->position = 0;
}

bool sobol_directions(uint32_t poly, const uint32_t* m_first, int s, uint32_t* v) {
    uint64_t m[kBits];
    if (s < 0 || s > kBits) return false;
    for (int k = 0; k < s && k < kBits; ++k) {
        m[k] = m_first[k];
        if ((m[k] & 1u) == 0 || m[k] >= (uint64_t{1} << (k + 1))) return false;
    }
    if (s == 0) {  // the first dimension: every number is 1
        for (int k = 0; k < kBits; ++k) m[k] = 1;
    }
    // m_k = 2 a_1 m_{k-1} ^ 4 a_2 m_{k-2} ^ ... ^ 2^s m_{k-s} ^ m_{k-s}.
    for (int k = s == 0 ? kBits : s; k < kBits; ++k) {
        uint64_t next = m[k - s] ^ (m[k - s] << s);
        for (int i = 1; i < s; ++i)
            if ((poly >> (s - i)) & 1u) next ^= m[k - i] << i;
        m[k] = next;
    }
    for (int k = 0; k < kBits; ++k) v[k] = static_cast<uint32_t>(m[k] << (31 - k));
    return true;
}

// Only the selection of one dimension: count 0x7FFFFFFF and k a dimension.
int32_t leapfrog(View v, int32_t nstreams, int32_t k) {
    Header* h = v.h;
    const uint32_t uk = static_cast<uint32_t>(k);
    if (nstreams != 0x7FFFFFFF || uk >= h->dimension) return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
    if (uk == h->selected) return 0;
    if (h->selected == kAll) {
        if (h->position != 0 && uk < h->dimension - h->position) {
            v.x[uk] ^= v.by_dim[uk * v.dim_stride + static_cast<size_t>(lowest_zero(h->counter))];
            ++h->counter;
        }
    } else {
        ++h->counter;
        v.x[uk] = coordinate(v, uk, h->counter);
    }
    h->position = 0;
    h->selected = uk;
    return 0;
}

// Moves by nskip coordinates: whole points by the counter, the rest by the
// position within a point; every coordinate is recomputed.
int32_t skip(View v, int32_t count, const void* params) {
    if (count < 1) return ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED;
    Header* h = v.h;
    uint64_t nskip;
    std::memcpy(&nskip, params, sizeof nskip);
    const uint64_t dim = h->dimension;
    const uint64_t points = nskip / dim + (h->position + nskip % dim) / dim;
    const uint64_t position = (h->position + nskip % dim) % dim;
    if (points > 0xFFFFFFFFull - h->counter) return ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED;
    h->counter = static_cast<uint32_t>(h->counter + points);
    for (uint32_t d = 0; d < h->dimension; ++d) v.x[d] = coordinate(v, d, h->counter);
    h->position = static_cast<uint32_t>(position);
    return 0;
}

}  // namespace orv::rng::quasi
