// Bessel cubic splines: each derivative is the slope of the parabola
// through the breakpoint and its two neighbours.
#include "datafit/local_cubic.h"

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFBesselCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<double, Local::Bessel>(t, ops);
}
ORV_EXPORT int orv_df_kernel_sDFBesselCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<float, Local::Bessel>(t, ops);
}
