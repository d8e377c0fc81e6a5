/* The one header a user includes: it brings in every public header of the
 * library, and declares the front end's checked calls of the vector
 * functions with tier selection by the thread's mode word, chunked over
 * threads for long vectors. */
#ifndef ORV_ORV_H
#define ORV_ORV_H

#include <orv/datafit.h>
#include <orv/datafit_eval.h>
#include <orv/dist.h>
#include <orv/orv_dist.h>
#include <orv/orv_core.h>
#include <orv/orv_datafit.h>
#include <orv/orv_rng.h>
#include <orv/orv_rng_sources.h>
#include <orv/rng.h>
#include <orv/rng_twister.h>
#include <orv/ss_calls.h>
#include <orv/orv_stats.h>
#include <orv/stats.h>
#include <orv/threading.h>
#include <orv/vtm.h>
#include <orv/vtm_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Checked vector calls, one for every present vector function and form:
 * `vtm<t><Fn>[I]` with the arguments of `_vtm<t><Fn>[I]` (vtmdExp, vtmdAddI,
 * vtmsPackI), and `vtm<t><Fn>[I]Mode` with the mode word for that call as a
 * last argument (vtmdExpMode(n, a, r, VTM_LA)), merged in before the call
 * and the thread's earlier word merged back after it. A negative n records
 * VtmStatusBadArgument and a null array VtmStatusBadPointer in the thread's
 * status (read with vtmGetErrStatus), and nothing is written. The kernel
 * is taken from the slot of the thread's accuracy tier. Plain elementwise
 * calls of at least orv_get_parallel_threshold() elements are split into
 * chunks, one per thread; errors then report the index in the whole array,
 * and the thread's status is that of the last bad element. */
#include <orv/vtm_checked.h>

/** The thread's mode word, status and error callback (the kernel library's
 * _vtm... entries under the names callers use). vtmSetMode merges the fields
 * it is given into the word and returns the earlier word; the status and
 * callback setters return the earlier value. */
ORV_API uint32_t vtmGetMode(void);
ORV_API uint32_t vtmSetMode(uint32_t mode);
ORV_API int32_t vtmGetErrStatus(void);
ORV_API int32_t vtmSetErrStatus(int32_t status);
ORV_API int32_t vtmClearErrStatus(void);
ORV_API VtmErrorCallBack vtmGetErrorCallBack(void);
ORV_API VtmErrorCallBack vtmSetErrorCallBack(VtmErrorCallBack callback);
ORV_API VtmErrorCallBack vtmClearErrorCallBack(void);

/** Elements from which a vector call is split over threads (default 65536). */
ORV_API void orv_set_parallel_threshold(int n);
ORV_API int orv_get_parallel_threshold(void);

/* The kernel library the checked vector calls run on, chosen once at load:
 * the widest the processor supports, or the one ORV_ISA names (sse2, avx2,
 * avx512; one the processor lacks gives the widest below it). Returns its
 * dll_cpu_version: 0 SSE2 baseline, 1 AVX2, 2 AVX-512. Every variant gives
 * the same bits, statuses and error records. */
ORV_API int orv_get_vector_variant(void);

#ifdef __cplusplus
}
#endif

#endif
