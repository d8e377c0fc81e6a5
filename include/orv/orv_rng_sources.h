/* Checked front-end calls for the quasi-random generators with the caller's
 * numbers, and for abstract streams. Every call returns 0 or a negative
 * status of <orv/rng.h>; on a refusal *out is left as it was and nothing is
 * made:
 *   ORV_RNG_ERROR_NULL_PTR (-5)      a null out, data, buffer or function;
 *   ORV_RNG_ERROR_BAD_ARGUMENT (-3)  a dimension, mode, word count or number
 *                                    that the generator can't use;
 *   ORV_RNG_ERROR_MEM_FAILURE (-4)   no memory. */
#ifndef ORV_RNG_SOURCES_H
#define ORV_RNG_SOURCES_H

#include <orv/rng.h>
#include <orv/threading.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Sobol in `dimension` dimensions. Mode 0 takes the built-in numbers
 * (dimension 1 to 40; data is not read). Modes 1 to 4, optionally plus 8 when
 * the data starts with dimension 0, read `nwords` words of data exactly as
 * the seed words from the fourth on (see docs/rng.md):
 *   1: one primitive polynomial a dimension (dimension up to 40);
 *   2: a row length L, then L initial numbers a dimension (dimension up to 40);
 *   3: the polynomials, the largest degree D, then D initial numbers a dimension;
 *   4: 32 direction numbers a dimension, normalised to the top bit.
 * Polynomials need their lowest bit and a degree of 1 to 31; initial number
 * m_k must be odd and below 2^(k+1); `nwords` must be the exact count. */
ORV_API int32_t vstNewSobolStream(void** out, uint32_t dimension, uint32_t mode, int32_t nwords,
                                  const uint32_t* data);

/** Niederreiter's base-2 sequence. Mode 0: built-in polynomials (dimension 1
 * to 318). Mode 1: one irreducible polynomial over GF(2) of degree 1 to 31 a
 * dimension, all different; mode 4: 32 direction numbers a dimension. */
ORV_API int32_t vstNewNiederrStream(void** out, uint32_t dimension, uint32_t mode, int32_t nwords,
                                    const uint32_t* data);

/** Abstract streams over a buffer of n >= 1 values (see <orv/rng.h>); the
 * interval kinds need c < d with a finite width. */
ORV_API int32_t vstiNewAbstractStream(void** out, int32_t n, uint32_t* buffer, OrvIAbstractRefill refill);
ORV_API int32_t vstdNewAbstractStream(void** out, int32_t n, double* buffer, double c, double d,
                                      OrvDAbstractRefill refill);
ORV_API int32_t vstsNewAbstractStream(void** out, int32_t n, float* buffer, float c, float d,
                                      OrvSAbstractRefill refill);

#ifdef __cplusplus
}
#endif

#endif
