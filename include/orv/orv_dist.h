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
 * method: the variant (0 where a distribution has one; the Gaussian and
 * lognormal methods of <orv/dist.h>), optionally with ORV_RNG_METHOD_ACCURATE
 * (bit 30). Rounding in the generator's fill can put a uniform on the end b
 * of [a, b); with the flag, results that rounding carried over a bound of
 * the distribution's interval are clamped back onto it ([a, b] for Uniform,
 * at least a for Exponential, Rayleigh and Weibull, at least b for
 * Lognormal).
 *
 * Uniforms consumed (a stream can be replayed): one per output; two for
 * Laplace and for Gaussian BOXMULLER; for BOXMULLER2 one per output counted
 * in whole pairs, a pair's unused half kept on the stream for the next call
 * with that method (also through save, load and copy). Cutting a request
 * into several calls gives the same sequence.
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
 * ORV_RNG_ERROR_NULL_STREAM -1021, ORV_RNG_ERROR_NULL_ARRAY -1022 for a null
 * r when n > 0 or a null GaussianMV mean or factor, and
 * ORV_RNG_ERROR_BAD_METHOD -2 for a method that is not one of the
 * distribution's, with or without ORV_RNG_METHOD_ACCURATE). */
#define ORV_RNG_ERROR_BAD_INTERVAL (-1025)     /* a not below b, or b - a not finite */
#define ORV_RNG_ERROR_BAD_SCALE (-1026)        /* scale beta not positive and finite */
#define ORV_RNG_ERROR_BAD_PROBABILITY (-1027)  /* p outside [0, 1] */
#define ORV_RNG_ERROR_BAD_DISPLACEMENT (-1028) /* displacement a (mean, b) not finite */
#define ORV_RNG_ERROR_BAD_SHAPE (-1029)        /* Weibull shape alpha not positive and finite */
#define ORV_RNG_ERROR_BAD_DIMENSION (-1030)    /* GaussianMV dimen below 1 */
#define ORV_RNG_ERROR_BAD_STORAGE (-1031)      /* GaussianMV mstorage not a storage below */
#define ORV_RNG_ERROR_BAD_FACTOR (-1032)       /* factor with a read element not finite or a diagonal not > 0 */

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
/* Cauchy: a + beta tan(v), v uniform on [-pi/2, pi/2); distribution
 * function 1/2 + atan((x - a) / beta) / pi. */
ORV_API int vstsRngCauchy(int method, OrvStreamPtr stream, int n, float* r, float a, float beta);
ORV_API int vstdRngCauchy(int method, OrvStreamPtr stream, int n, double* r, double a, double beta);
/* Weibull of shape alpha > 0: a + beta (-ln u)^(1/alpha), distribution function
 * 1 - exp(-((x - a) / beta)^alpha). */
ORV_API int vstsRngWeibull(int method, OrvStreamPtr stream, int n, float* r, float alpha, float a, float beta);
ORV_API int vstdRngWeibull(int method, OrvStreamPtr stream, int n, double* r, double alpha, double a,
                           double beta);

/* Normal of mean a (finite) and standard deviation sigma > 0. method:
 * ORV_RNG_METHOD_GAUSSIAN_BOXMULLER, _BOXMULLER2 (the fastest) or _ICDF. The
 * flag of bit 30 changes nothing here. ICDF works through the inverse error
 * function kernel of the enhanced-performance tier: about half the
 * precision's bits. */
ORV_API int vstsRngGaussian(int method, OrvStreamPtr stream, int n, float* r, float a, float sigma);
ORV_API int vstdRngGaussian(int method, OrvStreamPtr stream, int n, double* r, double a, double sigma);
/* Lognormal: b + beta exp(x), x normal of mean a and deviation sigma > 0; b
 * finite, beta > 0. method: ORV_RNG_METHOD_LOGNORMAL_BOXMULLER2 (0) or
 * ORV_RNG_METHOD_LOGNORMAL_ICDF; the accuracy flag also selects ICDF, and
 * keeps results at or above b. */
ORV_API int vstsRngLognormal(int method, OrvStreamPtr stream, int n, float* r, float a, float sigma, float b,
                             float beta);
ORV_API int vstdRngLognormal(int method, OrvStreamPtr stream, int n, double* r, double a, double sigma,
                             double b, double beta);
/* n vectors of dimen elements, one after another in r (n * dimen elements,
 * at most 2^31 - 1, else ORV_RNG_ERROR_BAD_COUNT): mean a (dimen finite values)
 * plus L z, z standard normal by the Gaussian method, so of covariance L L^T.
 * L is the lower Cholesky factor of the covariance, in mstorage
 * ORV_RNG_MATRIX_STORAGE_FULL (dimen x dimen, row by row; the part above the
 * diagonal is not read), _PACKED (the lower triangle column by column:
 * L00, L10, .. L(d-1)0, L11, ..) or _DIAGONAL (the dimen diagonal values).
 * The elements read must be finite and the diagonal positive, else
 * ORV_RNG_ERROR_BAD_FACTOR. With dimen 1 the result is the Gaussian's. */
ORV_API int vstsRngGaussianMV(int method, OrvStreamPtr stream, int n, float* r, int dimen, int mstorage,
                              const float* a, const float* t);
ORV_API int vstdRngGaussianMV(int method, OrvStreamPtr stream, int n, double* r, int dimen, int mstorage,
                              const double* a, const double* t);

#ifdef __cplusplus
}
#endif

#endif
