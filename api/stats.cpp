// Checked statistics calls: the compute entries with the OpenMP threading
// table. The entries check their records in the documented order.
#include <orv/orv.h>

#define ORV_SS_CALL(name)                                                            \
    int32_t vst##name(SsTask* task, uint64_t estimates, uint64_t method) {           \
        return _vst##name(task, estimates, method, orv_ss_threading_openmp());       \
    }

extern "C" {
ORV_SS_CALL(dSSBasic)
ORV_SS_CALL(sSSBasic)
ORV_SS_CALL(dSSMinmax)
ORV_SS_CALL(sSSMinmax)
ORV_SS_CALL(dSSQuantiles)
ORV_SS_CALL(sSSQuantiles)
ORV_SS_CALL(dSSSort)
ORV_SS_CALL(sSSSort)
ORV_SS_CALL(dSSMAD)
ORV_SS_CALL(sSSMAD)
ORV_SS_CALL(dSSWMedian)
ORV_SS_CALL(sSSWMedian)
ORV_SS_CALL(dSSStreamQuantiles)
ORV_SS_CALL(sSSStreamQuantiles)
}
