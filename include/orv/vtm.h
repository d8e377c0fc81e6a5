/* Vector math: mode word, status codes, error callback and the vector functions. */
#ifndef ORV_VTM_H
#define ORV_VTM_H

#include <stddef.h>
#include <stdint.h>
#include <orv/vtm_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Mode word fields. */
#define VTM_ACCURACY_MASK     0xFu
#define VTM_LA                0x1u   /* low accuracy tier, slot 0 */
#define VTM_HA                0x2u   /* high accuracy tier, slot 1 */
#define VTM_EP                0x3u   /* enhanced performance tier, slot 2 */
#define VTM_DEFAULT_PRECISION 0x0u

#define VTM_CONSISTENCY_MASK  0xF0u
#define VTM_FLOAT_CONSISTENT  0x10u
#define VTM_DOUBLE_CONSISTEN  0x20u
#define VTM_RESTORE           0x30u

#define VTM_ERRMODE_MASK      0xFF00u
#define VTM_ERRMODE_IGNORE    0x100u   /* record the status, nothing else */
#define VTM_ERRMODE_ERRNO     0x200u   /* set the C runtime's errno */
#define VTM_ERRMODE_STDERR    0x400u   /* print to standard error */
#define VTM_ERRMODE_EXCEPT    0x800u   /* raise the floating-point exception */
#define VTM_ERRMODE_CALLBACK  0x1000u  /* call the thread's error callback */
#define VTM_ERRMODE_NOERR     0x2000u  /* record nothing at all */
#define VTM_ERRMODE_DEFAULT   0x1A00u

#define VTM_SPARE_MASK        0x30000u
#define VTM_DENORMAL_MASK     0x3C0000u
#define VTM_FTZDAZ_ON         0x280000u  /* flush denormals to zero inside kernels */
#define VTM_FTZDAZ_OFF        0x140000u

#define VTM_TRAP_MASK         0xF000000u
#define VTM_TRAP_INVALID      0x1000000u
#define VTM_TRAP_DIVBYZERO    0x2000000u
#define VTM_TRAP_OVERFLOW     0x4000000u
#define VTM_TRAP_UNDERFLOW    0x8000000u

#define VTM_MODE_BUILTIN_DEFAULT 0x1A02u

/* Status codes of vector functions. */
#define VtmStatusOk           0
#define VtmStatusBadArgument  (-1)  /* the argument numbered by the record's index */
#define VtmStatusBadPointer   (-2)  /* a pointer argument is unusable */
#define VtmStatusDomain       1     /* argument outside the function's domain */
#define VtmStatusPole         2     /* result is a pole */
#define VtmStatusOverflow     3     /* result overflows */
#define VtmStatusUnderflow    4     /* result underflows */

/* The record handed to an error callback; its layout is fixed. */
typedef struct VtmErrorContext {
    int32_t code;                 /* status */
    int32_t index;                /* element index in the caller's array */
    double arg1, arg2;            /* arguments, widened to double */
    double res1, res2;            /* results, widened to double */
    char functionName[64];        /* at most 47 characters and a NUL */
    int32_t functionNameLength;
    int32_t padding;
    double arg1Imag, arg2Imag;    /* complex functions only */
    double res1Imag, res2Imag;
} VtmErrorContext;

/* Zero: run the other error modes and take res1/res2 into the result. */
typedef int32_t (*VtmErrorCallBack)(VtmErrorContext* context);

ORV_VTM_API uint32_t _vtmGetMode(void);
ORV_VTM_API uint32_t orv_vtm_kernel_GetMode(void);
ORV_VTM_API uint32_t _vtmSetMode(uint32_t mode);
ORV_VTM_API uint32_t orv_vtm_kernel_SetMode(uint32_t mode);
ORV_VTM_API int32_t orv_vtm_kernel_GetTTableIndex(void);
ORV_VTM_API int32_t orv_vtm_kernel_GetTTableIndexM(int32_t ignored, uint32_t mode);

ORV_VTM_API int32_t _vtmGetErrStatus(void);
ORV_VTM_API int32_t orv_vtm_kernel_GetErrStatus(void);
ORV_VTM_API int32_t _vtmSetErrStatus(int32_t status);
ORV_VTM_API int32_t orv_vtm_kernel_SetErrStatus(int32_t status);
ORV_VTM_API int32_t _vtmClearErrStatus(void);
ORV_VTM_API int32_t orv_vtm_kernel_ClearErrStatus(void);
ORV_VTM_API VtmErrorCallBack _vtmGetErrorCallBack(void);
ORV_VTM_API VtmErrorCallBack orv_vtm_kernel_GetErrorCallBack(void);
ORV_VTM_API VtmErrorCallBack _vtmSetErrorCallBack(VtmErrorCallBack callback);
ORV_VTM_API VtmErrorCallBack orv_vtm_kernel_SetErrorCallBack(VtmErrorCallBack callback);
ORV_VTM_API VtmErrorCallBack _vtmClearErrorCallBack(void);
ORV_VTM_API VtmErrorCallBack orv_vtm_kernel_ClearErrorCallBack(void);
ORV_VTM_API void* _vtmSetInterfInputVectorPointer(void* base);
ORV_VTM_API void* orv_vtm_kernel_SetInterfInputVectorPointer(void* base);

/* 0 identifies the baseline SSE2 variant. */
ORV_VTM_API int32_t dll_cpu_version(void);

#ifdef __cplusplus
}
#endif

#include <orv/vtm_functions.h>

#endif
