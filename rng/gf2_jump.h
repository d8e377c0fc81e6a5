// The GF(2) polynomial jump-ahead, generic over a generator's operations
// (declared in <orv/rng_twister.h>), and ring helpers its users share.
#pragma once

#include <cstdint>

#include <orv/rng_twister.h>

namespace orv::rng {

// a[(pa + i) % n] ^= b[(pb + i) % n] for i in 0..n-1, in runs that don't wrap.
void xor_ring(uint32_t* a, int32_t pa, const uint32_t* b, int32_t pb, int32_t n);

// dst[i] = src[(ps + i) % n] for i in 0..n-1.
void rotate_ring(uint32_t* dst, const uint32_t* src, int32_t ps, int32_t n);

}  // namespace orv::rng
