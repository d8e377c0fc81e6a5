// Checked statistics calls: the compute entries with the OpenMP threading
// table. The entries check their records in the documented order.
#include <orv/orv.h>

extern "C" {

int32_t vstdSSBasic(SsTask* task, uint64_t estimates, uint64_t method) {
    return _vstdSSBasic(task, estimates, method, orv_ss_threading_openmp());
}
int32_t vstsSSBasic(SsTask* task, uint64_t estimates, uint64_t method) {
    return _vstsSSBasic(task, estimates, method, orv_ss_threading_openmp());
}
int32_t vstdSSMinmax(SsTask* task, uint64_t estimates, uint64_t method) {
    return _vstdSSMinmax(task, estimates, method, orv_ss_threading_openmp());
}
int32_t vstsSSMinmax(SsTask* task, uint64_t estimates, uint64_t method) {
    return _vstsSSMinmax(task, estimates, method, orv_ss_threading_openmp());
}

}
