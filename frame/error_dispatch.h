// Status and callback accessors, the eight error entries of the vector
// kernels, and the dispatcher for errno, printing and traps.
#pragma once

#include <cstdint>

#include <orv/vtm.h>

namespace orv::frame {

// Error entries. Array arguments are the kernel's base pointers; a unary
// kernel passes (status, i, a, a, r, r, name).
void error_s(int32_t status, int32_t index, const float* a, const float* b, float* r1, float* r2,
             const char* name);
void error_s_strided(int32_t status, int32_t index, const float* a, int32_t inca, const float* b,
                     int32_t incb, float* r1, int32_t incr1, float* r2, int32_t incr2,
                     const char* name);
void error_c(int32_t status, int32_t index, const OrvComplex8* a, const OrvComplex8* b,
             OrvComplex8* r1, OrvComplex8* r2, const char* name);
void error_c_strided(int32_t status, int32_t index, const OrvComplex8* a, int32_t inca,
                     const OrvComplex8* b, int32_t incb, OrvComplex8* r1, int32_t incr1,
                     OrvComplex8* r2, int32_t incr2, const char* name);
void error_d(int32_t status, int32_t index, const double* a, const double* b, double* r1,
             double* r2, const char* name);
void error_d_strided(int32_t status, int32_t index, const double* a, int32_t inca,
                     const double* b, int32_t incb, double* r1, int32_t incr1, double* r2,
                     int32_t incr2, const char* name);
void error_z(int32_t status, int32_t index, const OrvComplex16* a, const OrvComplex16* b,
             OrvComplex16* r1, OrvComplex16* r2, const char* name);
void error_z_strided(int32_t status, int32_t index, const OrvComplex16* a, int32_t inca,
                     const OrvComplex16* b, int32_t incb, OrvComplex16* r1, int32_t incr1,
                     OrvComplex16* r2, int32_t incr2, const char* name);

// Overloads by element type, for kernels written once for float and double.
inline void report_error(int32_t s, int32_t i, const float* a, const float* b, float* r1,
                         float* r2, const char* name) { error_s(s, i, a, b, r1, r2, name); }
inline void report_error(int32_t s, int32_t i, const double* a, const double* b, double* r1,
                         double* r2, const char* name) { error_d(s, i, a, b, r1, r2, name); }
inline void report_error(int32_t s, int32_t i, const float* a, int32_t inca, const float* b,
                         int32_t incb, float* r1, int32_t incr1, float* r2, int32_t incr2,
                         const char* name) {
    error_s_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
inline void report_error(int32_t s, int32_t i, const double* a, int32_t inca, const double* b,
                         int32_t incb, double* r1, int32_t incr1, double* r2, int32_t incr2,
                         const char* name) {
    error_d_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}

// errno value for a status.
int errno_for_status(int32_t status);
// Runs the errno, stderr and exception steps that the mode asks for.
void dispatch_error(const VtmErrorContext* context);

}  // namespace orv::frame
