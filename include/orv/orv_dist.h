/* Random distributions, checked calls: numbers of one distribution drawn
 * from a stream made with <orv/orv_rng.h>.
 *
 * Shape: vst<t>Rng<Name>(method, stream, n, r, parameters...), t = s (float),
 * d (double) or i (integers and bits). Each returns 0 on success or a
 * negative status. A call refused for a bad argument writes nothing into r
 * and draws nothing from the stream; n = 0 returns 0 and does neither. A
 * fill that fails (abstract streams and TRNG only) returns its status; the
 * elements of earlier blocks are then written, later ones are not.
 *
 * method: 0, or ORV_RNG_METHOD_ACCURATE (bit 30). Rounding in the generator's
 * fill can put a uniform on the end b of [a, b); with the flag, results that
 * rounding carried over a bound of the distribution's interval are clamped
 * back onto it ([a, b] for Uniform, at least a for Exponential and Rayleigh).
 *
 * Uniforms consumed (a stream can be replayed): one per output, Laplace two.
 * Cutting a request into several calls gives the same sequence.
 *
 * Besides the codes below, a call can return ORV_RNG_ERROR_INVALID_BRNG
 * (-1000) for a stream whose record names no usable generator, and the
 * status of a failed fill. */
#ifndef ORV_ORV_DIST_H
#define ORV_ORV_DIST_H

#include <stdint.h>

#include <orv/dist.h>
#include <orv/orv_rng.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Refusals (with ORV_RNG_ERROR_BAD_COUNT -1020 for n negative,
 * ORV_RNG_ERROR_NULL_STREAM -1021 and ORV_RNG_ERROR_NULL_ARRAY -1022 for a
 * null r when n > 0, and ORV_RNG_ERROR_BAD_METHOD -2 for a method other than
 * 0 or ORV_RNG_METHOD_ACCURATE). */
#define ORV_RNG_ERROR_BAD_INTERVAL (-1025)     /* a not below b, or b - a not finite */
#define ORV_RNG_ERROR_BAD_SCALE (-1026)        /* scale beta not positive and finite */
#define ORV_RNG_ERROR_BAD_PROBABILITY (-1027)  /* p outside [0, 1] */
#define ORV_RNG_ERROR_BAD_DISPLACEMENT (-1028) /* displacement a not finite */

/* Values on [a, b). */
ORV_API int vstsRngUniform(int method, OrvStreamPtr stream, int n, float* r, float a, float b);
ORV_API int vstdRngUniform(int method, OrvStreamPtr stream, int n, double* r, double a, double b);
/* Integers a .. b-1 (a < b), each from one double uniform on [a, b) rounded down. */
ORV_API int vstiRngUniform(int method, OrvStreamPtr stream, int n, int* r, int a, int b);
/* The generator's raw output words: r holds n * wordBytes / 4 elements
 * (wordBytes from vstGetBrngProperties: 4, 8 or 16). */
ORV_API int vstiRngUniformBits(int method, OrvStreamPtr stream, int n, uint32_t* r);
/* n words of 32 or 64 uniform bits, on MCG59 (top 32 of its 59 bits), MT19937,
 * MT2203, SFMT19937, TRNG, ARS5 and PHILOX4X32X10; other generators give
 * ORV_RNG_ERROR_NO_NUMBITS (-1014) and draw nothing. A 64-bit word holds two
 * consecutive 32-bit words, the earlier one in its low half. */
ORV_API int vstiRngUniformBits32(int method, OrvStreamPtr stream, int n, uint32_t* r);
ORV_API int vstiRngUniformBits64(int method, OrvStreamPtr stream, int n, uint64_t* r);
/* 1 with probability p (0 <= p <= 1, taken in single precision), else 0. */
ORV_API int vstiRngBernoulli(int method, OrvStreamPtr stream, int n, int* r, double p);

/* Displacement a (finite) and scale beta > 0. Exponential: a - beta ln u,
 * density exp(-(x - a) / beta) / beta on x >= a. */
ORV_API int vstsRngExponential(int method, OrvStreamPtr stream, int n, float* r, float a, float beta);
ORV_API int vstdRngExponential(int method, OrvStreamPtr stream, int n, double* r, double a, double beta);
/* Rayleigh: a + beta sqrt(-ln u), distribution function 1 - exp(-((x - a) / beta)^2). */
ORV_API int vstsRngRayleigh(int method, OrvStreamPtr stream, int n, float* r, float a, float beta);
ORV_API int vstdRngRayleigh(int method, OrvStreamPtr stream, int n, double* r, double a, double beta);
/* Gumbel (smallest extreme value): a + beta ln(-ln u), distribution function
 * 1 - exp(-exp((x - a) / beta)). */
ORV_API int vstsRngGumbel(int method, OrvStreamPtr stream, int n, float* r, float a, float beta);
ORV_API int vstdRngGumbel(int method, OrvStreamPtr stream, int n, double* r, double a, double beta);
/* Laplace: density exp(-|x - a| / beta) / (2 beta); two uniforms per output. */
ORV_API int vstsRngLaplace(int method, OrvStreamPtr stream, int n, float* r, float a, float beta);
ORV_API int vstdRngLaplace(int method, OrvStreamPtr stream, int n, double* r, double a, double beta);

#ifdef __cplusplus
}
#endif

#endif
