/* Tables of threading operations that the statistics and data-fitting
 * kernels receive as their last argument. The kernels start no threads;
 * all parallel work goes through these tables. The front end (liborv)
 * supplies a serial table and an OpenMP-backed table of each kind. */
#ifndef ORV_THREADING_H
#define ORV_THREADING_H

#include <stdint.h>

#if defined(ORV_BUILDING_API)
#define ORV_API __attribute__((visibility("default")))
#else
#define ORV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Statistics. */
typedef void (*SsItemFn)(int item, int thread, int nthreads, void* context);
typedef void (*SsPieceFn)(int piece, int ignored, int npieces, void* context);
typedef struct SsThreadingTable {
    /* 0: call fn once for each item below count, on nthreads threads. */
    void (*run_items)(int count, int nthreads, void* context, SsItemFn fn);
    /* 1: run in parallel; reserved for pooled covariance. */
    void (*run_parallel)(int nthreads, void* context, SsItemFn fn);
    /* 2: call fn once per piece, the pieces in parallel. */
    void (*run_pieces)(int npieces, void* context, SsPieceFn fn);
    /* 3: not used. */
    void* reserved3;
    /* 4: number of threads available. */
    int (*max_threads)(void);
} SsThreadingTable;

/** Data fitting. */
typedef void (*DFBodyFn)(int team, int nteams, void* unused, void* args);
typedef struct DFThreadOps {
    /* 0: call body once for each of nteams teams with the team's index. */
    void (*parallel_run)(int nteams, int nteams_again, void* args, DFBodyFn body);
    void* reserved1;
    void* reserved2;
    void* reserved3;
    /* 4: number of threads available. */
    int (*max_threads)(void);
} DFThreadOps;

/** Tables of the front end. The serial tables run everything on the calling
 * thread; the OpenMP tables use up to orv_get_num_threads() threads. */
ORV_API const SsThreadingTable* orv_ss_threading_serial(void);
ORV_API const SsThreadingTable* orv_ss_threading_openmp(void);
ORV_API const DFThreadOps* orv_df_thread_ops_serial(void);
ORV_API const DFThreadOps* orv_df_thread_ops_openmp(void);

/** Thread count used by the OpenMP tables and the chunked vector calls:
 * n >= 1 sets it, n <= 0 goes back to OpenMP's own default. */
ORV_API void orv_set_num_threads(int n);
ORV_API int orv_get_num_threads(void);

#ifdef __cplusplus
}
#endif

#endif
