// MCG59's real fills, built into the wider kernel libraries: the
// distributions draw through these when the front end has loaded one
// (distributions/kernel_tables.cpp). The values are bitwise the baseline
// fills' (__vstdBRngMCG59, __vstsBRngMCG59), and so is the state after.
#include "frame/export.h"
#include "rng/congruential/mcg59_core.h"

ORV_EXPORT int32_t orv_rng_kernel_dBRngMCG59(void* stream, int32_t n, double* r, double a, double b) {
    return orv::rng::mcg59::fill<double>(stream, n, r, a, b);
}

ORV_EXPORT int32_t orv_rng_kernel_sBRngMCG59(void* stream, int32_t n, float* r, float a, float b) {
    return orv::rng::mcg59::fill<float>(stream, n, r, a, b);
}
