// The front end runs the widest kernel library the processor supports, or
// the one ORV_ISA names (run once per setting by ctest), and a checked call
// gives the baseline's bits whichever runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <orv/orv.h>

namespace {

int widest_runnable(int want) {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw");
    if (want >= 2 && avx512) return 2;
    if (want >= 1 && __builtin_cpu_supports("avx2")) return 1;
    return 0;
}

TEST(VectorVariant, IsTheWidestRunnableAtOrBelowTheRequest) {
    const char* isa = std::getenv("ORV_ISA");
    const std::string s = isa ? isa : "";
    const int want = s == "sse2" ? 0 : s == "avx2" ? 1 : 2;
    EXPECT_EQ(orv_get_vector_variant(), widest_runnable(want)) << "ORV_ISA=" << s;
}

TEST(VectorVariant, CheckedCallMatchesTheBaselineKernel) {
    std::vector<double> x(1003), got(x.size()), want(x.size());
    for (size_t i = 0; i < x.size(); ++i) x[i] = std::ldexp(double(i) - 500.5, int(i % 19) - 9);
    x[7] = -1.0;  // a domain error
    vtmClearErrStatus();
    vtmdLn(int(x.size()), x.data(), got.data());
    const int32_t status = vtmClearErrStatus();
    _vtmdLn(int(x.size()), x.data(), want.data());  // the baseline's stub
    EXPECT_EQ(status, vtmClearErrStatus());
    EXPECT_EQ(std::memcmp(got.data(), want.data(), x.size() * sizeof(double)), 0);
}

}  // namespace
