// Thresholds and statuses of the exponential and logarithm kernels, and
// which of them read the mode. Lengths, lanes, strided forms and rounding are
// the vector conventions' tests, run on every kernel.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"
#include "vector/block_driver.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

enum class Want { Finite, PosInf, NegInf, Zero, Denormal, NaN, MinusOne, PlusZero };

struct Threshold {
    const char* what;
    void (*s)(int, const float*, float*);   // one of the two is set
    void (*d)(int, const double*, double*);
    double x;
    Want want;
    int status;
};

bool matches(double y, Want w, bool single) {
    const double tiny = single ? FLT_MIN : DBL_MIN;
    switch (w) {
        case Want::Finite: return std::isfinite(y);
        case Want::PosInf: return y == kInf;
        case Want::NegInf: return y == -kInf;
        case Want::Zero: return y == 0.0;
        case Want::PlusZero: return y == 0.0 && !std::signbit(y);
        case Want::Denormal: return y > 0 && y < tiny;
        case Want::NaN: return std::isnan(y);
        case Want::MinusOne: return y == -1.0;
    }
    return false;
}

class Thresholds : public ::testing::TestWithParam<Threshold> {};

// Each value alone (tail path) and in lane 5 of a full block, with the
// status read from the thread's record and the entry's name.
TEST_P(Thresholds, ResultAndStatus) {
    const Threshold& t = GetParam();
    for (int n : {1, 16}) {
        ErrorCapture cap;
        const int at = n == 1 ? 0 : 5;
        double y;
        if (t.s) {
            std::vector<float> a(n, 0.75f), r(n);
            a[at] = static_cast<float>(t.x);
            t.s(n, a.data(), r.data());
            y = r[at];
        } else {
            std::vector<double> a(n, 0.75), r(n);
            a[at] = t.x;
            t.d(n, a.data(), r.data());
            y = r[at];
        }
        EXPECT_TRUE(matches(y, t.want, t.s != nullptr)) << t.what << " n=" << n << " gave " << y;
        EXPECT_EQ(_vtmGetErrStatus(), t.status) << t.what << " n=" << n;
        ASSERT_EQ(cap.errors().size(), t.status ? 1u : 0u) << t.what;
        if (t.status) {
            EXPECT_EQ(cap.errors()[0].index, at);
        }
    }
}

const float kExpOverS = 88.72283f;
const float kAboveExpOverS = std::nextafter(88.72283f, 100.0f);

INSTANTIATE_TEST_SUITE_P(
    ExpLog, Thresholds,
    ::testing::Values(
        Threshold{"sExp(88.72283)", orv_kern_sExp, nullptr, kExpOverS, Want::Finite, 0},
        Threshold{"sExp(just above)", orv_kern_sExp, nullptr, kAboveExpOverS, Want::PosInf, 3},
        Threshold{"dExp(709.782712893384)", nullptr, orv_kern_dExp, 709.782712893384, Want::Finite, 0},
        Threshold{"dExp(just above)", nullptr, orv_kern_dExp, std::nextafter(709.782712893384, 800.0),
                  Want::PosInf, 3},
        Threshold{"sExp(-100)", orv_kern_sExp, nullptr, -100.0, Want::Denormal, 0},
        Threshold{"dExp(-740)", nullptr, orv_kern_dExp, -740.0, Want::Denormal, 0},
        Threshold{"sExp(below underflow)", orv_kern_sExp, nullptr, -104.0, Want::Zero, 4},
        Threshold{"dExp(-746)", nullptr, orv_kern_dExp, -746.0, Want::Zero, 4},
        Threshold{"sExp(-inf)", orv_kern_sExp, nullptr, -kInf, Want::Zero, 0},
        Threshold{"sExp(+inf)", orv_kern_sExp, nullptr, kInf, Want::PosInf, 0},
        Threshold{"dExp(-inf)", nullptr, orv_kern_dExp, -kInf, Want::Zero, 0},
        Threshold{"dExp(+inf)", nullptr, orv_kern_dExp, kInf, Want::PosInf, 0},
        Threshold{"sExp2(-140)", orv_kern_sExp2, nullptr, -140.0, Want::Denormal, 4},
        Threshold{"sExp2(-126)", orv_kern_sExp2, nullptr, -126.0, Want::Finite, 0},
        Threshold{"dExp2(-1030)", nullptr, orv_kern_dExp2, -1030.0, Want::Denormal, 4},
        Threshold{"sExp2(128)", orv_kern_sExp2, nullptr, 128.0, Want::PosInf, 3},
        Threshold{"sExp2(127.99)", orv_kern_sExp2, nullptr, 127.99, Want::Finite, 0},
        Threshold{"dExp2(1024)", nullptr, orv_kern_dExp2, 1024.0, Want::PosInf, 3},
        // 38.53184 as a float lies above log10 of the largest float.
        Threshold{"sExp10(38.5318)", orv_kern_sExp10, nullptr, 38.5318, Want::Finite, 0},
        Threshold{"sExp10(38.53184)", orv_kern_sExp10, nullptr, 38.53184, Want::PosInf, 3},
        Threshold{"sExp10(-40)", orv_kern_sExp10, nullptr, -40.0, Want::Denormal, 4},
        Threshold{"dExp10(-310)", nullptr, orv_kern_dExp10, -310.0, Want::Denormal, 4},
        Threshold{"dExp10(309)", nullptr, orv_kern_dExp10, 309.0, Want::PosInf, 3},
        Threshold{"sExpm1(100)", orv_kern_sExpm1, nullptr, 100.0, Want::PosInf, 0},
        Threshold{"sExpm1(710)", orv_kern_sExpm1, nullptr, 710.0, Want::PosInf, 3},
        Threshold{"dExpm1(709.78)", nullptr, orv_kern_dExpm1, 709.78, Want::Finite, 0},
        Threshold{"dExpm1(710)", nullptr, orv_kern_dExpm1, 710.0, Want::PosInf, 3},
        Threshold{"dExpm1(-50)", nullptr, orv_kern_dExpm1, -50.0, Want::MinusOne, 0},
        Threshold{"dExpm1(-inf)", nullptr, orv_kern_dExpm1, -kInf, Want::MinusOne, 0},
        Threshold{"sLn(+0)", orv_kern_sLn, nullptr, 0.0, Want::NegInf, 2},
        Threshold{"sLn(-0)", orv_kern_sLn, nullptr, -0.0, Want::NegInf, 2},
        Threshold{"dLn(+0)", nullptr, orv_kern_dLn, 0.0, Want::NegInf, 2},
        Threshold{"dLn(-0)", nullptr, orv_kern_dLn, -0.0, Want::NegInf, 2},
        Threshold{"sLn(-1)", orv_kern_sLn, nullptr, -1.0, Want::NaN, 1},
        Threshold{"dLn(-inf)", nullptr, orv_kern_dLn, -kInf, Want::NaN, 1},
        Threshold{"dLn(+inf)", nullptr, orv_kern_dLn, kInf, Want::PosInf, 0},
        Threshold{"sLn(1)", orv_kern_sLn, nullptr, 1.0, Want::PlusZero, 0},
        Threshold{"dLn(1)", nullptr, orv_kern_dLn, 1.0, Want::PlusZero, 0},
        Threshold{"sLog2(0)", orv_kern_sLog2, nullptr, 0.0, Want::NegInf, 2},
        Threshold{"dLog10(-2)", nullptr, orv_kern_dLog10, -2.0, Want::NaN, 1},
        Threshold{"sLogb(0)", orv_kern_sLogb, nullptr, 0.0, Want::NegInf, 1},
        Threshold{"dLogb(-0)", nullptr, orv_kern_dLogb, -0.0, Want::NegInf, 1},
        Threshold{"dLogb(-inf)", nullptr, orv_kern_dLogb, -kInf, Want::PosInf, 0},
        Threshold{"sLog1p(-1)", orv_kern_sLog1p, nullptr, -1.0, Want::NegInf, 2},
        Threshold{"dLog1p(-1)", nullptr, orv_kern_dLog1p, -1.0, Want::NegInf, 2},
        Threshold{"dLog1p(-2)", nullptr, orv_kern_dLog1p, -2.0, Want::NaN, 1}),
    [](const ::testing::TestParamInfo<Threshold>& i) { return "case" + std::to_string(i.index); });

// Exact values a user relies on.
TEST(ExpLogValues, ExactPoints) {
    const double xs[] = {0.125, 1024.0, 0x1p-1074};
    double r[3];
    orv_kern_dLog2(3, xs, r);
    EXPECT_EQ(r[0], -3.0);
    EXPECT_EQ(r[1], 10.0);
    EXPECT_EQ(r[2], -1074.0);
    const float fs[] = {0x1p-149f, 3.0f, -0x1p100f};
    float fr[3];
    orv_kern_sLogb(3, fs, fr);
    EXPECT_EQ(fr[0], -149.0f);
    EXPECT_EQ(fr[1], 1.0f);
    EXPECT_EQ(fr[2], 100.0f);
    const double e[] = {0.0, -0.0, 1.0, 3.0};
    double er[4];
    orv_kern_dExp2(4, e, er);
    EXPECT_EQ(er[0], 1.0);
    EXPECT_EQ(er[1], 1.0);
    EXPECT_EQ(er[2], 2.0);
    EXPECT_EQ(er[3], 8.0);
}

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
    EXPECT_EQ(r[2], kInf);
    EXPECT_EQ(r[7], 0.0);
    EXPECT_EQ(r[9], -1.0);
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
    EXPECT_EQ(fr[0], INFINITY);
    EXPECT_EQ(fr[1], 0.0f);
    EXPECT_EQ(dr[0], kInf);
    EXPECT_EQ(dr[1], 0.0);
    EXPECT_EQ(_vtmGetErrStatus(), 0);
    _vtmSetMode(old);
}

// With the denormal field at 0x280000 a mode-reading kernel takes a
// denormal input as zero; plain Expm1 keeps the caller's state and does not.
TEST(ExpLogBlocks, DenormalsAsZeroOnlyWhereTheModeIsRead) {
    ErrorCapture cap(VTM_ERRMODE_CALLBACK | VTM_FTZDAZ_ON);
    const float x[1] = {0x1p-140f};
    float y[1];
    orv_kern_sLn(1, x, y);
    EXPECT_EQ(y[0], -INFINITY);
    EXPECT_EQ(_vtmGetErrStatus(), 2);
    orv_kern_sExpm1(1, x, y);
    EXPECT_EQ(y[0], 0x1p-140f);
}

}  // namespace
