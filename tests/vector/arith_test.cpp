// Results and statuses of the arithmetic and rounding kernels, through the
// exported names, with the status read back and the error record seen by a
// callback.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <orv/vtm.h>

#include "capture.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

template <typename T>
bool same_bits(T x, T y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }

// One element through a unary function of either width, with the record seen.
struct UnaryCase {
    const char* fn;
    double x;
    double want;     // compared bit for bit, NaN matching any NaN
    int status;      // 0: no entry reached
};

using UnaryS = void (*)(int, const float*, float*);
using UnaryD = void (*)(int, const double*, double*);
struct UnaryFn {
    const char* name;
    UnaryS s;
    UnaryD d;
};

const UnaryFn kUnary[] = {
    {"Sqrt", _vtmsSqrt, _vtmdSqrt},
    {"InvSqrt", _vtmsInvSqrt, _vtmdInvSqrt},
};

const UnaryFn& find_unary(const char* name) {
    for (const UnaryFn& f : kUnary)
        if (std::strcmp(f.name, name) == 0) return f;
    throw std::runtime_error(name);
}

template <typename T>
bool matches(T got, double want) {
    if (std::isnan(want)) return std::isnan(got);
    return same_bits(got, T(want));
}

void PrintTo(const UnaryCase& c, std::ostream* os) { *os << c.fn << "(" << c.x << ")"; }

class UnaryStatus : public testing::TestWithParam<UnaryCase> {};

TEST_P(UnaryStatus, SingleAndDoubleGiveResultStatusAndRecord) {
    const UnaryCase& c = GetParam();
    const UnaryFn& f = find_unary(c.fn);
    for (int width = 0; width < 2; ++width) {
        ErrorCapture cap;
        // The element sits at index 5 of a block of ordinary values.
        std::vector<double> xd(20, 4.0);
        xd[5] = c.x;
        std::vector<double> rd(20);
        std::vector<float> xs(xd.begin(), xd.end()), rs(20);
        std::string name = std::string(width ? "vd" : "vs") + c.fn;
        if (width) {
            f.d(20, xd.data(), rd.data());
            EXPECT_TRUE(matches(rd[5], c.want)) << name << " got " << rd[5];
        } else {
            f.s(20, xs.data(), rs.data());
            EXPECT_TRUE(matches(rs[5], c.want)) << name << " got " << rs[5];
        }
        EXPECT_EQ(_vtmGetErrStatus(), c.status) << name;
        if (c.status == 0) {
            EXPECT_TRUE(cap.errors().empty()) << name;
        } else {
            ASSERT_EQ(cap.errors().size(), 1u) << name;
            const SeenError& e = cap.errors()[0];
            EXPECT_EQ(e.code, c.status);
            EXPECT_EQ(e.index, 5);
            EXPECT_EQ(e.name, name);
            EXPECT_TRUE(matches(e.arg1, c.x) || same_bits(e.arg1, double(float(c.x))));
            EXPECT_TRUE(matches(e.res1, c.want));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    SqrtInvSqrt, UnaryStatus,
    testing::Values(UnaryCase{"Sqrt", 4.0, 2.0, 0}, UnaryCase{"Sqrt", -0.0, -0.0, 0},
                    UnaryCase{"Sqrt", 0.0, 0.0, 0}, UnaryCase{"Sqrt", -1.0, kNaN, 1},
                    UnaryCase{"Sqrt", -kInf, kNaN, 1}, UnaryCase{"Sqrt", kInf, kInf, 0},
                    UnaryCase{"Sqrt", kNaN, kNaN, 0}, UnaryCase{"Sqrt", 0x1p-140, 0x1p-70, 0},
                    UnaryCase{"InvSqrt", 0.25, 2.0, 0}, UnaryCase{"InvSqrt", 0.0, kInf, 2},
                    UnaryCase{"InvSqrt", -0.0, -kInf, 2}, UnaryCase{"InvSqrt", -4.0, kNaN, 1},
                    UnaryCase{"InvSqrt", -kInf, kNaN, 1}, UnaryCase{"InvSqrt", kInf, 0.0, 0},
                    UnaryCase{"InvSqrt", 0x1p-140, 0x1p70, 0}));

}  // namespace
