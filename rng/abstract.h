// The abstract rows' functions, placed in the registry.
#pragma once

#include <cstdint>

namespace orv::rng::abstract {

int32_t init(int32_t method, void* stream, int32_t count, const void* params);
int32_t word_fill(void* stream, int32_t n, uint32_t* r);
int32_t double_fill(void* stream, int32_t n, double* r, double a, double b);
int32_t float_fill(void* stream, int32_t n, float* r, float a, float b);

}  // namespace orv::rng::abstract
