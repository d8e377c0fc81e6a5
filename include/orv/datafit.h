/* Data fitting: the spline task record, its number codes and status codes,
 * and the exported task, editor and construction entries. Plain C interface.
 * Every kernel returns 0 on success or one of the negative DF_ codes. */
#ifndef ORV_DATAFIT_H
#define ORV_DATAFIT_H

#include <stddef.h>
#include <stdint.h>

#include <orv/threading.h>

#if defined(ORV_BUILDING_KERNEL)
#define ORV_DF_API __attribute__((visibility("default")))
#else
#define ORV_DF_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The task record: 160 bytes at fixed offsets, allocated with alignment 128.
 * x, ic and bc point into the caller's arrays; the y and scoeff pointer
 * tables and lut are owned by the record. */
typedef struct DFTask {
    int32_t wide_ints;    /*   0: 0: caller integers and cell arrays are 32 bits */
    uint8_t marker;       /*   4: always 4 */
    uint8_t pad0[3];
    int32_t is_double;    /*   8: 1 for the d create call, 0 for the s one */
    int32_t dimension;    /*  12: always 1 */
    int64_t nx;           /*  16: number of breakpoints */
    const void* x;        /*  24: breakpoints (the two ends when uniform) */
    int64_t xhint;        /*  32: partition kind, DF_X_* */
    int64_t ny;           /*  40: number of functions (0 treated as 1) */
    const void** y;       /*  48: owned table of pointers to function values */
    int64_t yhint;        /*  56: value layout, DF_Y_* */
    int64_t sorder;       /*  64: coefficients per cell */
    int64_t stype;        /*  72: spline kind within the order */
    int64_t ic_type;      /*  80: internal condition kind */
    const void* ic;       /*  88: internal condition values */
    int64_t bc_type;      /*  96: boundary condition kind, DF_BC_* */
    const void* bc;       /* 104: boundary condition values */
    void** scoeff;        /* 112: owned table of ny coefficient block pointers */
    int64_t scoeffhint;   /* 120: coefficient table layout, DF_Y_* codes */
    int32_t flag23;       /* 128: 0 or 1, stored and queried only */
    int32_t pad1;
    int64_t lut_size;     /* 136: bins of the breakpoint look-up table */
    int64_t* lut;         /* 144: lut_size + 2 pairs (low, high) of indices */
    union {               /* 152: bins per unit of x, in the task's precision */
        double d;
        float s;
    } lut_scale;
} DFTask;

/* Partition kinds (xhint). Bit 2 is the uniform test. */
#define DF_X_UNKNOWN 0
#define DF_X_NON_UNIFORM 1
#define DF_X_QUASI_UNIFORM 2
#define DF_X_UNIFORM 4

/* Layouts of function values (yhint) and coefficient tables (scoeffhint). */
#define DF_Y_DEFAULT 0x00  /* same as DF_Y_ROWS */
#define DF_Y_ROWS 0x10     /* one block, function k at base + k*nx */
#define DF_Y_COLUMNS 0x20  /* one block, value i of function k at i*ny + k */
#define DF_Y_SEPARATE 0x80 /* one block per function, set slot by slot */

/* Boundary condition kinds (bc_type). bc[0] serves the left end, bc[1] the right. */
#define DF_BC_NOT_A_KNOT 0x01
#define DF_BC_FREE_END 0x02
#define DF_BC_1ST_LEFT 0x04
#define DF_BC_1ST_RIGHT 0x08
#define DF_BC_2ND_LEFT 0x10
#define DF_BC_2ND_RIGHT 0x20
#define DF_BC_PERIODIC 0x40
#define DF_BC_NONE 0x00     /* Akima only */
#define DF_BC_Q_VALUE 0x80  /* quadratic stype 0: bc[0] is the value at the middle of cell 0 */

/* Spline orders and kinds. */
#define DF_PP_LINEAR 2
#define DF_PP_QUADRATIC 3
#define DF_PP_CUBIC 4
#define DF_IC_SECONDARY_KNOTS 8  /* ic_type bit 3: quadratic stype 1 knot array */

/* Parameter ids of iEditVal / iQueryVal. */
#define DF_ID_NX 14
#define DF_ID_XHINT 15
#define DF_ID_NY 16
#define DF_ID_YHINT 17
#define DF_ID_SORDER 18
#define DF_ID_STYPE 19
#define DF_ID_IC_TYPE 20
#define DF_ID_BC_TYPE 21
#define DF_ID_SCOEFFHINT 22
#define DF_ID_FLAG23 23
/* Pointer ids of the pointer editors and queries. */
#define DF_PTR_X 1
#define DF_PTR_Y 2
#define DF_PTR_IC 3
#define DF_PTR_BC 4
#define DF_PTR_SCOEFF 5

/* Status codes. */
#define DF_OK 0
#define DF_NULL_TASK (-1000)          /* task pointer is null */
#define DF_NO_MEMORY (-1001)          /* allocation failed */
#define DF_BAD_METHOD (-1002)         /* method non-zero, or stype not allowed here */
#define DF_BAD_NX (-1004)             /* too few breakpoints */
#define DF_NULL_X (-1005)             /* breakpoint pointer null */
#define DF_BAD_XHINT (-1006)          /* xhint not 0, 1, 2, 4 */
#define DF_BAD_NY (-1007)             /* ny below 1, or y / coefficients given with ny 0 */
#define DF_NULL_Y (-1008)             /* ny given with null y */
#define DF_BAD_YHINT (-1009)          /* illegal yhint, or y slot edit on columns layout */
#define DF_BAD_SORDER (-1010)         /* negative sorder, or not the constructor's order */
#define DF_BAD_STYPE (-1011)          /* illegal order and kind pair */
#define DF_BAD_IC_TYPE (-1012)        /* illegal ic_type, or ic given with ic_type 0 */
#define DF_BAD_IC (-1013)             /* ic null where needed, or secondary knots out of order */
#define DF_BAD_BC_TYPE (-1014)        /* illegal bc_type */
#define DF_NULL_BC (-1015)            /* bc null where the kind needs it */
#define DF_NULL_SCOEFF (-1016)        /* coefficient pointer null */
#define DF_BAD_SCOEFFHINT (-1017)     /* illegal scoeffhint */
#define DF_NOT_PERIODIC (-1018)       /* periodic kind with y[0] != y[n-1] */
#define DF_BAD_PARAM_ID (-1019)       /* unknown parameter id */
#define DF_BAD_INDEX (-1020)          /* function index out of range */
#define DF_NOT_A_BREAKPOINT (-1022)   /* look-up of a site that is no breakpoint */
#define DF_BAD_ORDER_COUNT (-1024)    /* look-up asked for more than one order */
#define DF_NO_VALUE_REQUESTED (-1025) /* look-up without the value itself */
#define DF_BAD_DATAHINT (-1026)       /* malformed search hint record */
#define DF_BAD_RHINT (-1028)          /* illegal result layout */
#define DF_BAD_FLAG23 (-1036)         /* parameter 23 not 0 or 1 */
#define DF_NULL_OUTPUT (-1037)        /* query output pointer null */
#define DF_SOLVER_FAILED (-1500)      /* tridiagonal routine reported a non-zero info */
#define DF_BAD_PRECISION (-1038)      /* entry of the other precision than the task's */
#define DF_BAD_ARRAY (-1039)          /* null array about to be used, or a result count that overflows */

/* Task life. */
ORV_DF_API int orv_df_kernel_dNewTask1D(DFTask** task, int64_t nx, const double* x, int64_t xhint,
                                        int64_t ny, const double* y, int64_t yhint,
                                        int32_t wide_ints);
ORV_DF_API int orv_df_kernel_sNewTask1D(DFTask** task, int64_t nx, const float* x, int64_t xhint,
                                        int64_t ny, const float* y, int64_t yhint,
                                        int32_t wide_ints);
ORV_DF_API int orv_df_kernel_DeleteTask(DFTask** task);

/* Editors and queries. iQueryVal writes an int64_t when wide_ints is
 * non-zero, else an int32_t. */
ORV_DF_API int orv_df_kernel_dEditPPSpline1D(DFTask* task, int64_t sorder, int64_t stype,
                                             int64_t bc_type, const double* bc, int64_t ic_type,
                                             const double* ic, double* scoeff, int64_t scoeffhint);
ORV_DF_API int orv_df_kernel_sEditPPSpline1D(DFTask* task, int64_t sorder, int64_t stype,
                                             int64_t bc_type, const float* bc, int64_t ic_type,
                                             const float* ic, float* scoeff, int64_t scoeffhint);
ORV_DF_API int orv_df_kernel_iEditVal(DFTask* task, int64_t id, int64_t value);
ORV_DF_API int orv_df_kernel_iQueryVal(DFTask* task, int64_t id, void* out);
ORV_DF_API int orv_df_kernel_dEditPtr(DFTask* task, int64_t id, const double* ptr);
ORV_DF_API int orv_df_kernel_sEditPtr(DFTask* task, int64_t id, const float* ptr);
ORV_DF_API int orv_df_kernel_dQueryPtr(DFTask* task, int64_t id, const double** out);
ORV_DF_API int orv_df_kernel_sQueryPtr(DFTask* task, int64_t id, const float** out);
ORV_DF_API int orv_df_kernel_dEditIdxPtr(DFTask* task, int64_t id, int64_t idx, const double* ptr);
ORV_DF_API int orv_df_kernel_sEditIdxPtr(DFTask* task, int64_t id, int64_t idx, const float* ptr);
ORV_DF_API int orv_df_kernel_dQueryIdxPtr(DFTask* task, int64_t id, int64_t idx, const double** out);
ORV_DF_API int orv_df_kernel_sQueryIdxPtr(DFTask* task, int64_t id, int64_t idx, const float** out);

/* Constructors: task, an unused integer, method, thread services. They
 * write only through the coefficient table. */
#define ORV_DF_CONSTRUCTOR(name)                                                                  \
    ORV_DF_API int orv_df_kernel_d##name(DFTask* task, int64_t unused, int64_t method,            \
                                         const DFThreadOps* ops);                                 \
    ORV_DF_API int orv_df_kernel_s##name(DFTask* task, int64_t unused, int64_t method,            \
                                         const DFThreadOps* ops);
ORV_DF_CONSTRUCTOR(DFLinearSpline1D)
ORV_DF_CONSTRUCTOR(DFQuadraticSpline1D)
ORV_DF_CONSTRUCTOR(DFAkimaCubicSpline1D)
ORV_DF_CONSTRUCTOR(DFHymanCubicSpline1D)
ORV_DF_CONSTRUCTOR(DFBesselCubicSpline1D)
ORV_DF_CONSTRUCTOR(DFHermiteCubicSpline1D)
ORV_DF_CONSTRUCTOR(DFDefaultCubicSpline1D)
ORV_DF_CONSTRUCTOR(DFNaturalCubicSpline1D)
#undef ORV_DF_CONSTRUCTOR

#ifdef __cplusplus
}
#endif

#endif
