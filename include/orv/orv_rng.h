/* Random streams, checked calls: create, copy, delete, skip ahead, leapfrog,
 * save and load streams, and query or register generators, without touching
 * the kernel's double-underscore entries.
 *
 * Every call returns an int status: 0 on success, a negative code on failure.
 * A call refused for a bad argument writes nothing (no stream made, no output
 * pointer set, nothing drawn or skipped). Besides the codes below, a call can
 * return any status of the random component listed in <orv/rng.h>: -4 when
 * memory can't be had, -1000 for a generator number that is not valid (also
 * for a stream whose record names none), -1002/-1003/-1004 when the stream's
 * generator can't leapfrog or skip ahead that way, and the stream-file codes
 * -1100 to -1140 and -1200.
 *
 * Ownership: a stream made by vstNewStream, vstNewStreamEx, vstCopyStream or
 * a load call belongs to the caller until vstDeleteStream, which frees it
 * with its chunks and sets the caller's pointer to null. */
#ifndef ORV_ORV_RNG_H
#define ORV_ORV_RNG_H

#include <stdint.h>

#include <orv/rng.h>
#include <orv/threading.h> /* ORV_API */

#ifdef __cplusplus
extern "C" {
#endif

/** Refusals of the checked calls (the random component's range). */
#define ORV_RNG_ERROR_BAD_COUNT (-1020)        /* a count (n, seeds, skip) is negative */
#define ORV_RNG_ERROR_NULL_STREAM (-1021)      /* null stream, or null pointer to receive one */
#define ORV_RNG_ERROR_NULL_ARRAY (-1022)       /* null array, file name, memory block or output */
#define ORV_RNG_ERROR_LEAPFROG_INDEX (-1023)   /* leapfrog index k outside 0 .. nstreams-1 */
#define ORV_RNG_ERROR_STREAMS_DIFFER (-1024)   /* copy of state between different generators */
/** ORV_RNG_ERROR_LEAPFROG_NSTREAMS (-1013) also answers a leapfrog count below 1,
 * and ORV_RNG_ERROR_INVALID_BRNG (-1000) a generator number that is not valid. */

/** A new stream of generator `brng` seeded by one word. */
ORV_API int vstNewStream(OrvStreamPtr* stream, int brng, uint32_t seed);
/** A new stream seeded by n words (n = 0: the generator's default seed). */
ORV_API int vstNewStreamEx(OrvStreamPtr* stream, int brng, int n, const uint32_t* params);
/** Frees the stream and its chunks, and sets *stream to null. */
ORV_API int vstDeleteStream(OrvStreamPtr* stream);
/** A new stream with the state and chunks of src. */
ORV_API int vstCopyStream(OrvStreamPtr* stream, OrvStreamPtr src);
/** The seed part of src's state, and its chunks, into dst of the same generator. */
ORV_API int vstCopyStreamState(OrvStreamPtr dst, OrvStreamPtr src);

/** Advances the stream by nskip outputs (nskip >= 0). */
ORV_API int vstSkipAheadStream(OrvStreamPtr stream, long long nskip);
/** Advances by the n-word count nskip[0] + nskip[1] 2^64 + ... */
ORV_API int vstSkipAheadStreamEx(OrvStreamPtr stream, int n, const uint64_t* nskip);
/** Makes the stream the k-th of nstreams interleaved streams, 0 <= k < nstreams. */
ORV_API int vstLeapfrogStream(OrvStreamPtr stream, int k, int nstreams);

/** Stream files (version 2 images) and memory images of vstGetStreamSize bytes. */
ORV_API int vstSaveStreamF(OrvStreamPtr stream, const char* fname);
ORV_API int vstLoadStreamF(OrvStreamPtr* stream, const char* fname);
ORV_API int vstSaveStreamM(OrvStreamPtr stream, char* memptr);
ORV_API int vstLoadStreamM(OrvStreamPtr* stream, const char* memptr);
/** Bytes of the stream's image, or a negative status. */
ORV_API int vstGetStreamSize(OrvStreamPtr stream);

/** The stream's generator number, or a negative status. */
ORV_API int vstGetStreamStateBrng(OrvStreamPtr stream);
/** The 56-byte row of generator brng. */
ORV_API int vstGetBrngProperties(int brng, BrngRow* properties);
/** Rows in the second numbering, built-in and registered. */
ORV_API int vstGetNumRegBrngs(void);
/** Adds a generator; returns its number (positive) or a negative status. */
ORV_API int vstRegisterBrng(const BrngRow* properties);

#ifdef __cplusplus
}
#endif

#endif
