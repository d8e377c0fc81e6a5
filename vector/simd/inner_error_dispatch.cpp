// The baseline's error entries compiled into a wider kernel library under
// inner_ names, reading a per-thread proxy record (vector/simd/variant_frame.cpp
// wraps them). The status and callback accessors compiled alongside stay
// local to the library (its version script exports none of them).
#define error_s inner_error_s
#define error_s_strided inner_error_s_strided
#define error_d inner_error_d
#define error_d_strided inner_error_d_strided
#define error_c inner_error_c
#define error_c_strided inner_error_c_strided
#define error_z inner_error_z
#define error_z_strided inner_error_z_strided
#define thread_record variant_thread_record
#define dll_cpu_version inner_dll_cpu_version
#include "frame/error_dispatch.cpp"
