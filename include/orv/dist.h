/* Random distributions, kernel entries: numbers of one distribution drawn
 * from a stream. These entries trust their callers (the checked calls are in
 * <orv/orv_dist.h>). Each returns the status of the stream's fills: 0, or the
 * negative status of a fill that failed, after which the elements of the
 * failed block and later ones are unwritten.
 *
 * method: the low bits select the variant; ORV_RNG_METHOD_ACCURATE (bit 30)
 * clamps results that rounding carried over a bound of the distribution's
 * interval back onto the bound. Parameters follow the result array. */
#ifndef ORV_DIST_H
#define ORV_DIST_H

#include <stdint.h>

#include <orv/rng.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ORV_RNG_METHOD_ACCURATE 0x40000000

/* Values on [a, b): the generator's fill, with method's bit 30 clamping onto [a, b]. */
ORV_RNG_API int32_t _vstsRngUniform(int32_t method, void* stream, int32_t n, float* r, float a, float b);
ORV_RNG_API int32_t _vstdRngUniform(int32_t method, void* stream, int32_t n, double* r, double a,
                                    double b);
/* Integers a .. b-1, one double uniform on [a, b) each, rounded down. */
ORV_RNG_API int32_t _vstiRngUniform(int32_t method, void* stream, int32_t n, int32_t* r, int32_t a,
                                    int32_t b);
/* The generator's raw output words (wordBytes / 4 elements of r per output). */
ORV_RNG_API int32_t _vstiRngUniformBits(int32_t method, void* stream, int32_t n, uint32_t* r);
/* n words of 32 or 64 uniform bits; ORV_RNG_ERROR_NO_NUMBITS (-1014) for
 * generators whose outputs are not whole uniform words, nothing drawn. */
ORV_RNG_API int32_t _vstiRngUniformBits32(int32_t method, void* stream, int32_t n, uint32_t* r);
ORV_RNG_API int32_t _vstiRngUniformBits64(int32_t method, void* stream, int32_t n, uint64_t* r);
/* 1 with probability p, else 0: one single-precision uniform each. */
ORV_RNG_API int32_t _vstiRngBernoulli(int32_t method, void* stream, int32_t n, int32_t* r, double p);

/* Displacement a and scale beta; one uniform per output, Laplace two. */
#define ORV_DIST_DECLARE_TRANSFORM(Name)                                                             \
    ORV_RNG_API int32_t _vsts##Name(int32_t method, void* stream, int32_t n, float* r, float a,    \
                                    float beta);                                                 \
    ORV_RNG_API int32_t _vstd##Name(int32_t method, void* stream, int32_t n, double* r, double a, \
                                    double beta);
/* a - ln(u) beta; bit 30 keeps results at or above a. */
ORV_DIST_DECLARE_TRANSFORM(RngExponential)
/* sqrt(-ln u) beta + a; bit 30 keeps results at or above a. */
ORV_DIST_DECLARE_TRANSFORM(RngRayleigh)
/* ln(-ln u) beta + a (the smallest-extreme-value form). */
ORV_DIST_DECLARE_TRANSFORM(RngGumbel)
/* a + beta ln(u1) when u2 > 0.5, else a - beta ln(u1). */
ORV_DIST_DECLARE_TRANSFORM(RngLaplace)
#undef ORV_DIST_DECLARE_TRANSFORM

#ifdef __cplusplus
}
#endif

#endif
