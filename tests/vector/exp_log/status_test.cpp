// The exponentials' shortcut under ERRMODE_NOERR. Thresholds and statuses
// are rows of the edge-case table (tests/vector/edges_test.cpp); lengths,
// lanes, strided forms, rounding and the denormal field are the vector
// conventions' tests.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"
#include "vector/block_driver.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Under ERRMODE_NOERR the Exp kernels settle lanes beyond the overflow and
// underflow bounds without a callout; other special lanes still take it.
struct CountingExp {
    using T = double;
    using V = __m128d;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static constexpr bool kNoErrShortcut = true;
    static constexpr double kOver = 709.782712893384, kUnder = -745.1332191019411;
    static inline int calls = 0;
    static V fastv(V x) { return x; }
    static int special_lanes(V x) {
        return _mm_movemask_pd(_mm_cmpgt_pd(_mm_andnot_pd(_mm_set1_pd(-0.0), x), _mm_set1_pd(700.0)));
    }
    static int32_t callout(double, double* r) {
        ++calls;
        *r = -1.0;
        return 0;
    }
};

TEST(ExpNoErr, ShortcutSkipsTheCallout) {
    const uint32_t old = _vtmSetMode(VTM_ERRMODE_NOERR);
    std::vector<double> a(16, 0.75), r(16);
    a[2] = 1000.0;
    a[7] = -1000.0;
    a[9] = 705.0;  // special but within the bounds: callout
    CountingExp::calls = 0;
    orv::vec::unary<CountingExp>(16, a.data(), r.data(), "test");
    EXPECT_EQ((std::vector<double>{r[2], r[7], r[9]}), (std::vector<double>{kInf, 0.0, -1.0}));
    EXPECT_EQ(CountingExp::calls, 1);
    // Without NOERR every special lane goes through the callout.
    _vtmSetMode(VTM_ERRMODE_IGNORE);
    CountingExp::calls = 0;
    orv::vec::unary<CountingExp>(16, a.data(), r.data(), "test");
    EXPECT_EQ(CountingExp::calls, 3);
    _vtmSetMode(old);
}

TEST(ExpNoErr, ExpOfThousandIsInfinityWithoutStatus) {
    const uint32_t old = _vtmSetMode(VTM_ERRMODE_NOERR);
    _vtmSetErrStatus(0);
    const float fs[] = {1000.0f, -1000.0f};
    float fr[2];
    orv_kern_sExp(2, fs, fr);
    const double ds[] = {1000.0, -1000.0};
    double dr[2];
    orv_kern_dExpI(2, ds, 1, dr, 1);
    EXPECT_EQ((std::vector<double>{fr[0], fr[1], dr[0], dr[1]}), (std::vector<double>{kInf, 0.0, kInf, 0.0}));
    EXPECT_EQ(_vtmGetErrStatus(), 0);
    _vtmSetMode(old);
}

}  // namespace
