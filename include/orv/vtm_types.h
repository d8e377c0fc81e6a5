/* Types shared by the vector-math declarations. */
#ifndef ORV_VTM_TYPES_H
#define ORV_VTM_TYPES_H

#include <stdint.h>

#if defined(ORV_BUILDING_KERNEL)
#define ORV_VTM_API __attribute__((visibility("default")))
#else
#define ORV_VTM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Complex elements: real part first. */
typedef struct OrvComplex8 { float re, im; } OrvComplex8;
typedef struct OrvComplex16 { double re, im; } OrvComplex16;

#ifdef __cplusplus
}
#endif

#endif
