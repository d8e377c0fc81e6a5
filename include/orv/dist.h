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
/* tan(v) beta + a, v uniform on [-pi/2, pi/2); method is not read. */
ORV_DIST_DECLARE_TRANSFORM(RngCauchy)
#undef ORV_DIST_DECLARE_TRANSFORM

/* Weibull of shape alpha: (-ln u)^(1/alpha) beta + a; bit 30 keeps results at
 * or above a. */
ORV_RNG_API int32_t _vstsRngWeibull(int32_t method, void* stream, int32_t n, float* r, float alpha,
                                    float a, float beta);
ORV_RNG_API int32_t _vstdRngWeibull(int32_t method, void* stream, int32_t n, double* r, double alpha,
                                    double a, double beta);

/* Gaussian methods (low bits of method). BOXMULLER: sqrt(-2 ln u1) sin(2 pi u2),
 * two uniforms per output. BOXMULLER2: both the sine and the cosine output of
 * each pair, one uniform per output; a pair whose second output was not asked
 * for is kept on the stream (saved, loaded and copied with it) and gives the
 * first output of the next call with this method. ICDF: sqrt(2) erfinv(v), v
 * uniform on [-1, 1), one uniform per output. Other methods return
 * ORV_RNG_ERROR_BAD_METHOD. */
#define ORV_RNG_METHOD_GAUSSIAN_BOXMULLER 0
#define ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2 1
#define ORV_RNG_METHOD_GAUSSIAN_ICDF 2
/* Lognormal: method 0 takes its normals by BOXMULLER2, any other value by ICDF. */
#define ORV_RNG_METHOD_LOGNORMAL_BOXMULLER2 0
#define ORV_RNG_METHOD_LOGNORMAL_ICDF 1

/* Mean a, standard deviation sigma. */
ORV_RNG_API int32_t _vstsRngGaussian(int32_t method, void* stream, int32_t n, float* r, float a,
                                     float sigma);
ORV_RNG_API int32_t _vstdRngGaussian(int32_t method, void* stream, int32_t n, double* r, double a,
                                     double sigma);
/* b + beta exp(x), x normal of mean a and deviation sigma; bit 30 keeps results
 * at or above b. */
ORV_RNG_API int32_t _vstsRngLognormal(int32_t method, void* stream, int32_t n, float* r, float a,
                                      float sigma, float b, float beta);
ORV_RNG_API int32_t _vstdRngLognormal(int32_t method, void* stream, int32_t n, double* r, double a,
                                      double sigma, double b, double beta);

/* Storage of the lower factor L of GaussianMV: FULL, dimen x dimen row by row
 * (the part above the diagonal is not read); PACKED, the lower triangle column
 * by column (L00, L10, .. L(d-1)0, L11, ..); DIAGONAL, the dimen values of a
 * diagonal L. */
#define ORV_RNG_MATRIX_STORAGE_FULL 0
#define ORV_RNG_MATRIX_STORAGE_PACKED 1
#define ORV_RNG_MATRIX_STORAGE_DIAGONAL 2
/* n vectors of dimen elements, one after another: a + L z with z standard
 * normal by the Gaussian method, so of covariance L L^T. Another mstorage
 * leaves the standard normals. A null a or t gives ORV_RNG_ERROR_NULL_PTR, a
 * dimen below 1 or n * dimen above 2^31 - 1 ORV_RNG_ERROR_BAD_ARGUMENT, with
 * nothing drawn. */
ORV_RNG_API int32_t _vstsRngGaussianMV(int32_t method, void* stream, int32_t n, float* r,
                                       int32_t dimen, int32_t mstorage, const float* a,
                                       const float* t);
ORV_RNG_API int32_t _vstdRngGaussianMV(int32_t method, void* stream, int32_t n, double* r,
                                       int32_t dimen, int32_t mstorage, const double* a,
                                       const double* t);

#ifdef __cplusplus
}
#endif

#endif
