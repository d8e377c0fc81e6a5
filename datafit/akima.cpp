// Akima cubic splines (Akima 1970): derivatives from slopes weighted by the
// change of the neighbouring slopes.
#include "datafit/local_cubic.h"

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFAkimaCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<double, Local::Akima>(t, ops);
}
ORV_EXPORT int orv_df_kernel_sDFAkimaCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps* ops) {
    return local_entry<float, Local::Akima>(t, ops);
}
