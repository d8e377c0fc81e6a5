// Expm1 and Log1p: no block computation; the shared driver takes each
// element in turn through the ranges of its callout. The plain forms keep
// the caller's rounding and flush bits; the strided forms read the mode like
// the blocked kernels.
#include "vector/block_driver.h"
#include "vector/exp_log/explog_internal.h"

namespace orv::explog {
namespace {

template <typename T, int32_t (*Callout)(const T*, T*)>
struct CalloutOnly : KernelBase<T, Callout> {
    static constexpr bool kReadsMode = false;
    static constexpr bool kCalloutOnly = true;
};

}  // namespace
}  // namespace orv::explog

using namespace orv::explog;

// Plain and strided entry of each function; the strided form reports under
// the strided name.
ORV_UNARY_KERNELS(sExpm1, CalloutOnly<float, expm1_s>)
ORV_UNARY_KERNELS(dExpm1, CalloutOnly<double, expm1_d>)
ORV_UNARY_KERNELS(sLog1p, CalloutOnly<float, log1p_s>)
ORV_UNARY_KERNELS(dLog1p, CalloutOnly<double, log1p_d>)
