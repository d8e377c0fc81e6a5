// Hermite cubic splines: interior derivatives given by the caller in ic.
#include "datafit/local_cubic.h"

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFHermiteCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<double, Local::Hermite>(t, ops);
}
ORV_EXPORT int orv_df_kernel_sDFHermiteCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<float, Local::Hermite>(t, ops);
}
