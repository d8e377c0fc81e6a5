// Kernels of a table whose three slots differ, made by the tier macros of
// the block driver for a function of this test alone: each strided kernel
// with unit increments calls its own tier's plain kernel, and with other
// increments runs its own tier's algorithm.
#include <gtest/gtest.h>

#include <vector>

#include "vector/block_driver.h"

namespace orv::vtm {
inline constexpr const char kName_sTierProbe[] = "vsTierProbe";
inline constexpr const char kName_sTierProbeI[] = "vsTierProbe";
}  // namespace orv::vtm
extern "C" void (*const orv_vtm_kernel_sTierProbe_ttab[3])(int, const float*, float*);

namespace {
// Tier t adds t + 1: the result tells which kernel ran.
template <int kAdd>
struct AddK {
    using T = float;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = false;
    static constexpr bool kSpecial = false;
    static constexpr bool kDivisorTest = false;
    static T fast(T x) { return x + T(kAdd); }
};
}  // namespace

ORV_UNARY_KERNELS_TIER(sTierProbe, _la, 0, AddK<1>)
ORV_UNARY_KERNELS_TIER(sTierProbe, _ha, 1, AddK<2>)
ORV_UNARY_KERNELS_TIER(sTierProbe, _ep, 2, AddK<3>)

extern "C" void (*const orv_vtm_kernel_sTierProbe_ttab[3])(int, const float*, float*) = {
    orv_kern_sTierProbe_la, orv_kern_sTierProbe_ha, orv_kern_sTierProbe_ep};

namespace {

TEST(Tiers, StridedKernelsRunTheirOwnTier) {
    using Strided = void (*)(int, const float*, int, float*, int);
    const Strided strided[3] = {orv_kern_sTierProbeI_la, orv_kern_sTierProbeI_ha,
                                orv_kern_sTierProbeI_ep};
    const int n = 21;
    std::vector<float> x(2 * n), r(2 * n);
    for (int i = 0; i < 2 * n; ++i) x[i] = float(i);
    for (int slot = 0; slot < 3; ++slot)
        for (int inc : {1, 2}) {
            strided[slot](n, x.data(), inc, r.data(), inc);
            for (int i = 0; i < n; ++i) EXPECT_EQ(r[i * inc], x[i * inc] + float(slot + 1)) << slot << " inc " << inc;
        }
}

}  // namespace
