// Statuses of the error-function family by the classes of C's Annex F
// (domain 1, pole 2, overflow 3, underflow 4), values from published
// tables, and round trips through the inverses.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

enum class Want { Value, Finite, PosInf, NegInf, NaN, Denormal, Zero };

struct Row {
    const char* what;
    void (*s)(int, const float*, float*);  // one of the two is set
    void (*d)(int, const double*, double*);
    double x;
    Want want;
    double value;  // for Want::Value
    int status;
};

bool matches(double y, const Row& t) {
    const double tiny = t.s ? FLT_MIN : DBL_MIN;
    switch (t.want) {
        case Want::Value: return y == t.value;
        case Want::Finite: return std::isfinite(y);
        case Want::PosInf: return y == kInf;
        case Want::NegInf: return y == -kInf;
        case Want::NaN: return std::isnan(y);
        case Want::Denormal: return y > 0 && y < tiny;
        case Want::Zero: return y == 0.0;
    }
    return false;
}

class Statuses : public ::testing::TestWithParam<Row> {};

// Alone (n = 1) and in lane 5 of 16, with the status and index the error
// entry receives.
TEST_P(Statuses, ResultAndStatus) {
    const Row& t = GetParam();
    for (int n : {1, 16}) {
        ErrorCapture cap;
        const int at = n == 1 ? 0 : 5;
        double y;
        if (t.s) {
            std::vector<float> a(n, 0.25f), r(n);
            a[at] = static_cast<float>(t.x);
            t.s(n, a.data(), r.data());
            y = r[at];
        } else {
            std::vector<double> a(n, 0.25), r(n);
            a[at] = t.x;
            t.d(n, a.data(), r.data());
            y = r[at];
        }
        EXPECT_TRUE(matches(y, t)) << t.what << " n=" << n << " gave " << y;
        EXPECT_EQ(_vtmGetErrStatus(), t.status) << t.what;
        ASSERT_EQ(cap.errors().size(), t.status ? 1u : 0u) << t.what;
        if (t.status) {
            EXPECT_EQ(cap.errors()[0].index, at);
        }
    }
}

#define S(fn) orv_kern_##fn, nullptr
#define D(fn) nullptr, orv_kern_##fn

INSTANTIATE_TEST_SUITE_P(
    Erf, Statuses,
    ::testing::Values(
        // domain
        Row{"sErfInv(1.5)", S(sErfInv_ha), 1.5, Want::NaN, 0, 1},
        Row{"dErfInv(-inf)", D(dErfInv_ha), -kInf, Want::NaN, 0, 1},
        Row{"dErfcInv(-0.5)", D(dErfcInv), -0.5, Want::NaN, 0, 1},
        Row{"sErfcInv(2.5)", S(sErfcInv), 2.5, Want::NaN, 0, 1},
        Row{"dCdfNormInv(1.25)", D(dCdfNormInv), 1.25, Want::NaN, 0, 1},
        Row{"sCdfNormInv(-1)", S(sCdfNormInv), -1.0, Want::NaN, 0, 1},
        // pole
        Row{"dErfInv(1)", D(dErfInv_ha), 1.0, Want::PosInf, 0, 2},
        Row{"sErfInv(-1)", S(sErfInv_la), -1.0, Want::NegInf, 0, 2},
        Row{"dErfInv EP(-1)", D(dErfInv_ep), -1.0, Want::NegInf, 0, 2},
        Row{"dErfcInv(0)", D(dErfcInv), 0.0, Want::PosInf, 0, 2},
        Row{"dErfcInv(2)", D(dErfcInv), 2.0, Want::NegInf, 0, 2},
        Row{"sErfcInv(0)", S(sErfcInv), 0.0, Want::PosInf, 0, 2},
        Row{"dCdfNormInv(0)", D(dCdfNormInv), 0.0, Want::NegInf, 0, 2},
        Row{"dCdfNormInv(1)", D(dCdfNormInv), 1.0, Want::PosInf, 0, 2},
        Row{"sCdfNormInv(1)", S(sCdfNormInv), 1.0, Want::PosInf, 0, 2},
        // overflow: erfcx(x) = exp(x^2) erfc(x) for x well below 0
        Row{"dErfcx(-27)", D(dErfcx), -27.0, Want::PosInf, 0, 3},
        Row{"dErfcx(-26.6)", D(dErfcx), -26.6, Want::Finite, 0, 0},
        Row{"sErfcx(-9.5)", S(sErfcx), -9.5, Want::PosInf, 0, 3},
        // underflow: denormal or zero results of non-zero exact values
        Row{"dErfc(26.6)", D(dErfc), 26.6, Want::Denormal, 0, 4},
        Row{"dErfc(28)", D(dErfc), 28.0, Want::Zero, 0, 4},
        Row{"sErfc(9.5)", S(sErfc), 9.5, Want::Denormal, 0, 4},
        Row{"sErfc(11)", S(sErfc), 11.0, Want::Zero, 0, 4},
        Row{"dErf(denormal)", D(dErf), 0x1p-1050, Want::Denormal, 0, 4},
        Row{"dCdfNorm(-38)", D(dCdfNorm_ha), -38.0, Want::Denormal, 0, 4},
        Row{"dCdfNorm(-41)", D(dCdfNorm_ha), -41.0, Want::Zero, 0, 4},
        Row{"sCdfNorm(-14)", S(sCdfNorm_ha), -14.0, Want::Denormal, 0, 4},
        Row{"dErfcx(1e308)", D(dErfcx), 1e308, Want::Denormal, 0, 4},
        Row{"dErfInv(denormal)", D(dErfInv_ha), 0x1p-1060, Want::Denormal, 0, 4},
        // no status: limits and exact points
        Row{"dErfc(+inf)", D(dErfc), kInf, Want::Zero, 0, 0},
        Row{"dErfc(-inf)", D(dErfc), -kInf, Want::Value, 2.0, 0},
        Row{"sErf(-inf)", S(sErf), -kInf, Want::Value, -1.0, 0},
        Row{"dErfcx(-inf)", D(dErfcx), -kInf, Want::PosInf, 0, 0},
        Row{"dErfcx(+inf)", D(dErfcx), kInf, Want::Zero, 0, 0},
        Row{"dCdfNorm(+inf)", D(dCdfNorm_ha), kInf, Want::Value, 1.0, 0},
        Row{"dCdfNormInv(0.5)", D(dCdfNormInv), 0.5, Want::Zero, 0, 0},
        Row{"dErfcInv(1)", D(dErfcInv), 1.0, Want::Zero, 0, 0},
        Row{"dErf(0)", D(dErf), 0.0, Want::Zero, 0, 0}),
    [](const ::testing::TestParamInfo<Row>& i) { return "case" + std::to_string(i.index); });

// Published values (Abramowitz and Stegun, tables 7.1 and 26.1, to the digits
// printed there): each result within a few units of the table's last digit.
TEST(ErfValues, PublishedTables) {
    struct Kat {
        void (*d)(int, const double*, double*);
        double x, want, tol;
    };
    const Kat kats[] = {
        {orv_kern_dErf, 0.5, 0.5204998778130465, 1e-15},
        {orv_kern_dErf, 1.0, 0.8427007929497149, 1e-15},
        {orv_kern_dErfc, 2.0, 0.004677734981047266, 1e-17},
        {orv_kern_dCdfNorm_ha, 1.0, 0.8413447460685429, 1e-15},
        {orv_kern_dCdfNormInv, 0.975, 1.959963984540054, 1e-14},
        {orv_kern_dErfInv_ha, 0.5, 0.4769362762044699, 1e-15},
    };
    for (const Kat& k : kats) {
        double r;
        k.d(1, &k.x, &r);
        EXPECT_NEAR(r, k.want, k.tol) << k.x;
    }
}

// Round trips: erf(erfinv(y)) = y, erfc(erfcinv(q)) = q and
// Phi(Phi^-1(p)) = p to within the conditioning of the forward function,
// over the whole range, deep tails included.
TEST(ErfInverses, RoundTrips) {
    std::vector<double> ys, qs, ps;
    for (int i = 1; i < 200; ++i) ys.push_back(-1.0 + i / 100.0);
    for (int e = -1070; e <= 0; e += 7) qs.push_back(std::ldexp(1.3, e));
    for (double q : qs) ps.push_back(q / 2);
    for (int i = 1; i < 100; ++i) ps.push_back(i / 100.0);
    const int ny = int(ys.size()), nq = int(qs.size()), np = int(ps.size());
    std::vector<double> x(ny + nq + np), back(x.size());
    orv_kern_dErfInv_ha(ny, ys.data(), x.data());
    orv_kern_dErf(ny, x.data(), back.data());
    for (int i = 0; i < ny; ++i) EXPECT_NEAR(back[i], ys[i], 4e-16) << ys[i];
    orv_kern_dErfcInv(nq, qs.data(), x.data());
    orv_kern_dErfc(nq, x.data(), back.data());
    // Relative change of erfc over one ulp of x: 2 x^2 2^-52 at most.
    for (int i = 0; i < nq; ++i)
        EXPECT_NEAR(back[i] / qs[i], 1.0, 2.5 * x[i] * x[i] * 0x1p-52 + 0x1p-51) << qs[i];
    orv_kern_dCdfNormInv(np, ps.data(), x.data());
    orv_kern_dCdfNorm_ha(np, x.data(), back.data());
    for (int i = 0; i < np; ++i)
        EXPECT_NEAR(back[i] / ps[i], 1.0, 1.5 * x[i] * x[i] * 0x1p-52 + 0x1p-51) << ps[i];
}

}  // namespace

// Double CdfNormInv sorts the lanes of a run of elements by path: each
// element's result must not depend on its neighbours, the call's length or
// whether the call is in place. Central and tail lanes in a scrambled order
// over whole runs, blocks and a tail, with two special lanes in the second
// run, against each element computed alone.
TEST(ErfInverses, CdfNormInvLanesIndependentOfTheBlock) {
    ErrorCapture cap;
    const int n = 611;
    std::vector<double> p(n), alone(n), whole(n);
    for (int i = 0; i < n; ++i) p[i] = ((i * 37) % n + 0.5) / n;  // 1/4 to 3/4 central, the rest tails
    p[300] = 0.0;
    p[301] = 1e-300;  // below the fast path
    for (int i = 0; i < n; ++i) orv_kern_dCdfNormInv(1, &p[i], &alone[i]);
    orv_kern_dCdfNormInv(n, p.data(), whole.data());
    std::vector<double> inplace = p;
    orv_kern_dCdfNormInv(n, inplace.data(), inplace.data());
    for (int i = 0; i < n; ++i) {
        EXPECT_EQ(whole[i], alone[i]) << p[i];
        EXPECT_EQ(inplace[i], alone[i]) << p[i];
    }
}
