/* Mersenne-twister generators (MT19937, SFMT19937) and the GF(2) polynomial
 * jump-ahead engine they share. Plain C interface, kernel level: these
 * entries trust their callers like the rest of <orv/rng.h>. */
#ifndef ORV_RNG_TWISTER_H
#define ORV_RNG_TWISTER_H

#include <orv/rng.h>

#ifdef __cplusplus
extern "C" {
#endif

ORV_RNG_API int32_t __vstBRngMT19937InitStream(int32_t method, void* stream, int32_t count,
                                               const void* params);
ORV_RNG_API int32_t __vstsBRngMT19937(void* stream, int32_t n, float* r, float a, float b);
ORV_RNG_API int32_t __vstdBRngMT19937(void* stream, int32_t n, double* r, double a, double b);
ORV_RNG_API int32_t __vstiBRngMT19937(void* stream, int32_t n, uint32_t* r);

ORV_RNG_API int32_t __vstBRngSFMT19937InitStream(int32_t method, void* stream, int32_t count,
                                                 const void* params);
ORV_RNG_API int32_t __vstsBRngSFMT19937(void* stream, int32_t n, float* r, float a, float b);
ORV_RNG_API int32_t __vstdBRngSFMT19937(void* stream, int32_t n, double* r, double a, double b);
ORV_RNG_API int32_t __vstiBRngSFMT19937(void* stream, int32_t n, uint32_t* r);

/* Operations a linear generator over GF(2) supplies to the jump engine. A
 * state is a whole stream record of stateBytes bytes; its words form a ring
 * read from the state's own position.
 *   zero(s)                   all words 0, position 0
 *   add(a, b, flag)           a ^= b word for word, each from its own position
 *   copy(dst, src)            words and position
 *   step(s)                   one advance by the generator's unit (word or block)
 *   prepare(s, &nskip, &carry) serve what the current block can; 0 when done,
 *                             else 1 with nskip the units left and s at a block end
 *   finish(s, result, carry)  result into s rotated to start at 0, position used up */
typedef void (*OrvJumpZeroFn)(void* s);
typedef void (*OrvJumpAddFn)(void* a, const void* b, int32_t flag);
typedef void (*OrvJumpCopyFn)(void* dst, const void* src);
typedef void (*OrvJumpStepFn)(void* s);
typedef void (*OrvJumpFinishFn)(void* s, const void* result, int32_t carry);
typedef int32_t (*OrvJumpPrepareFn)(void* s, uint64_t* nskip, int32_t* carry);

/* s = p(T) s with p = x^nskip modulo the characteristic polynomial of the
 * step T, given by its ascending exponents (terms of them, the last being
 * degree). Horner's rule, or a sliding window of 8 bits over a table of 128
 * states. Return 0, or -4 when scratch memory can't be had (or the
 * remainder of `words` 64-bit words can't hold the degree). */
ORV_RNG_API int32_t __vst_SkipAheadHorner(void* state, OrvJumpZeroFn zero, OrvJumpAddFn add,
                                          OrvJumpCopyFn copy, OrvJumpStepFn step,
                                          OrvJumpFinishFn finish, OrvJumpPrepareFn prepare,
                                          uint64_t nskip, int32_t words, int32_t degree,
                                          int32_t stateBytes, int32_t terms, const uint32_t* exponents);
ORV_RNG_API int32_t __vst_SkipAheadSWin(void* state, OrvJumpZeroFn zero, OrvJumpAddFn add,
                                        OrvJumpCopyFn copy, OrvJumpStepFn step, OrvJumpFinishFn finish,
                                        OrvJumpPrepareFn prepare, uint64_t nskip, int32_t words,
                                        int32_t degree, int32_t stateBytes, int32_t terms,
                                        const uint32_t* exponents);

/* rem = x^e modulo the polynomial of `exponents`, over GF(2); bit i of the
 * result is bit i % 32 of rem[i / 32], and rem holds `words` 64-bit words.
 * Returns 0, or -4 (scratch not available, or `words` too few for degree). */
ORV_RNG_API int32_t __vstPolyRem(uint64_t e, int32_t degree, int32_t terms, const uint32_t* exponents,
                                 int32_t words, uint32_t* rem);

#ifdef __cplusplus
}
#endif

#endif
