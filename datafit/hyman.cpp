// Hyman cubic splines: Bessel derivatives passed through the monotone filter
// (Fritsch-Carlson, Hyman 1983), so monotone data give a monotone spline.
#include "datafit/local_cubic.h"

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFHymanCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<double, Local::Hyman>(t, ops);
}
ORV_EXPORT int orv_df_kernel_sDFHymanCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<float, Local::Hyman>(t, ops);
}
