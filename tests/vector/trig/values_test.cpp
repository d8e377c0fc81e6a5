// Sin, Cos and Tan against MPFR at the hard cases of the reduction and at
// random exponents up to the largest finite value, and the edge cases of
// blocks that mix a huge lane with ordinary ones.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

struct Fn {
    const char* name;
    void (*s)(int, const float*, float*);
    void (*d)(int, const double*, double*);
    int (*ref)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
    bool odd;
};

const Fn kFns[] = {{"Sin", orv_kern_sSin, orv_kern_dSin, mpfr_sin, true},
                   {"Cos", orv_kern_sCos, orv_kern_dCos, mpfr_cos, false},
                   {"Tan", orv_kern_sTan, orv_kern_dTan, mpfr_tan, true}};

// Error of y in ULP of the format (precision p) against the function at x.
double ulp_error(const Fn& f, double x, double y, int p) {
    mpfr_t a, r;
    mpfr_inits2(300, a, r, (mpfr_ptr)0);
    mpfr_set_d(a, x, MPFR_RNDN);
    f.ref(r, a, MPFR_RNDN);
    const long e = mpfr_get_exp(r);  // r in [2^(e-1), 2^e)
    mpfr_sub_d(r, r, y, MPFR_RNDN);
    mpfr_mul_2si(r, r, p - e, MPFR_RNDN);
    const double err = std::fabs(mpfr_get_d(r, MPFR_RNDN));
    mpfr_clears(a, r, (mpfr_ptr)0);
    return err;
}

// f at x computed alone (tail) and in lane 5 of a block of ones.
template <typename T>
std::vector<T> both_paths(const Fn& f, T x) {
    std::vector<T> out;
    for (int n : {1, 16}) {
        std::vector<T> a(n, T(1)), r(n);
        const int at = n == 1 ? 0 : 5;
        a[at] = x;
        if constexpr (sizeof(T) == 4)
            f.s(n, a.data(), r.data());
        else
            f.d(n, a.data(), r.data());
        out.push_back(r[at]);
    }
    return out;
}

template <typename T>
void check(const Fn& f, T x, double bound) {
    for (T v : {x, -x})
        for (T y : both_paths(f, v))
            EXPECT_LE(ulp_error(f, v, y, sizeof(T) == 4 ? 24 : 53), bound)
                << f.name << (sizeof(T) == 4 ? "s" : "d") << "(" << std::hexfloat << double(v)
                << ") = " << double(y);
}

// The numbers closest to multiples of pi/2 (tests/data, from
// tools/find_trig_hard_cases.py; the first of each format is the one
// published by Muller, Elementary Functions, for that format).
TEST(TrigValues, HardCasesOfTheReduction) {
    std::ifstream in(ORV_TRIG_HARD_CASES);
    ASSERT_TRUE(in) << ORV_TRIG_HARD_CASES;
    std::string line;
    int count = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream ls(line);
        std::string fmt, hex;
        ls >> fmt >> hex;
        const double x = std::strtod(hex.c_str(), nullptr);
        for (const Fn& f : kFns) {
            if (fmt == "s")
                check<float>(f, float(x), 1.0);
            else
                check<double>(f, x, 1.0);
        }
        ++count;
    }
    EXPECT_GE(count, 40);
}

// Random mantissas at every exponent up to the largest finite value.
TEST(TrigValues, RandomExponentsUpToTheLargest) {
    std::mt19937_64 g(20261122);
    for (const Fn& f : kFns) {
        for (int e = -30; e <= 1023; ++e)
            for (int i = 0; i < 2; ++i)
                check<double>(f, std::ldexp(1.0 + double(g() >> 12) * 0x1p-52, e), 1.0);
        for (int e = -30; e <= 127; ++e)
            for (int i = 0; i < 4; ++i)
                check<float>(f, std::ldexp(1.0f + float(g() >> 41) * 0x1p-23f, e), 1.0);
    }
}

// One huge lane among ordinary ones: the others keep the results of a block
// without it (to the kernel's accuracy), a lane of 2^-30 beside it comes
// back as itself (Cos: 1), and no status is raised.
template <typename T>
void huge_lane(const Fn& f, T huge) {
    ErrorCapture cap;
    std::vector<T> ones(16, T(1)), plain(16), a(16, T(1)), r(16);
    a[7] = huge;
    a[6] = T(0x1p-30);
    auto run = [&](const std::vector<T>& in, std::vector<T>& out) {
        if constexpr (sizeof(T) == 4)
            f.s(16, in.data(), out.data());
        else
            f.d(16, in.data(), out.data());
    };
    run(ones, plain);
    run(a, r);
    const int p = sizeof(T) == 4 ? 24 : 53;
    for (int l = 0; l < 16; ++l) {
        if (l == 6 || l == 7) continue;
        EXPECT_LE(ulp_error(f, 1.0, r[l], p), ulp_error(f, 1.0, plain[l], p) + 1.0) << l;
        EXPECT_NEAR(double(r[l]), double(plain[l]), std::ldexp(1.0, 1 - p)) << f.name << l;
    }
    EXPECT_EQ(r[6], f.odd ? T(0x1p-30) : T(1)) << f.name;
    EXPECT_LE(ulp_error(f, double(huge), r[7], p), 1.0) << f.name;
    EXPECT_EQ(_vtmGetErrStatus(), 0);
}

TEST(TrigValues, HugeLaneInABlockOfOnes) {
    for (const Fn& f : kFns) {
        huge_lane<double>(f, 1e300);
        huge_lane<float>(f, 1e30f);
    }
}

// Signed zero, infinities (NaN, status 1, reported at their index) and NaN
// (NaN, no status), alone and inside a block.
template <typename T>
void specials(const Fn& f) {
    const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    ErrorCapture cap;
    std::vector<T> a(16, T(0.5)), r(16);
    a[2] = -T(0), a[3] = inf, a[9] = -inf, a[11] = nan;
    for (int n : {16, 4 /* tail */}) {
        seen_errors().clear();
        _vtmClearErrStatus();
        if constexpr (sizeof(T) == 4)
            f.s(n, a.data(), r.data());
        else
            f.d(n, a.data(), r.data());
        EXPECT_EQ(r[2], f.odd ? T(0) : T(1));
        EXPECT_EQ(std::signbit(r[2]), f.odd) << f.name;
        EXPECT_TRUE(std::isnan(r[3])) << f.name;
        const size_t want = n == 16 ? 2 : 1;
        ASSERT_EQ(cap.errors().size(), want) << f.name;
        EXPECT_EQ(cap.errors()[0].index, 3);
        EXPECT_EQ(cap.errors()[0].code, 1);
        EXPECT_EQ(cap.errors()[0].name, std::string(sizeof(T) == 4 ? "vs" : "vd") + f.name);
        if (n == 16) {
            EXPECT_EQ(cap.errors()[1].index, 9);
            EXPECT_TRUE(std::isnan(r[9]) && std::isnan(r[11]));
        }
        EXPECT_EQ(_vtmGetErrStatus(), 1);
    }
}

TEST(TrigValues, ZerosInfinitiesAndNaN) {
    for (const Fn& f : kFns) {
        specials<float>(f);
        specials<double>(f);
    }
}

}  // namespace

namespace {

// SinCos gives Sin and Cos bit for bit, plain and strided, and reports an
// infinite element once, with both results.
template <typename T>
void sincos_matches(void (*sc)(int, const T*, T*, T*),
                    void (*sci)(int, const T*, int, T*, int, T*, int), void (*sn)(int, const T*, T*),
                    void (*cs)(int, const T*, T*)) {
    std::mt19937_64 g(7);
    const int n = 37;
    std::vector<T> a(n), s(n), c(n), s2(n), c2(n), st(3 * n), ct(2 * n);
    for (T& v : a) v = std::ldexp(T(double(g() >> 11) * 0x1p-53 - 0.5), int(g() % 140) - 10);
    a[4] = std::numeric_limits<T>::infinity();
    a[20] = std::numeric_limits<T>::quiet_NaN();
    ErrorCapture cap;
    sn(n, a.data(), s2.data());
    cs(n, a.data(), c2.data());
    seen_errors().clear();
    sc(n, a.data(), s.data(), c.data());
    ASSERT_EQ(cap.errors().size(), 1u);
    EXPECT_EQ(cap.errors()[0].index, 4);
    EXPECT_TRUE(std::isnan(cap.errors()[0].res1) && std::isnan(cap.errors()[0].res2));
    sci(n, a.data(), 1, st.data(), 3, ct.data(), 2);
    for (int i = 0; i < n; ++i) {
        if (std::isnan(s2[i])) {
            EXPECT_TRUE(std::isnan(s[i]) && std::isnan(c[i]) && std::isnan(st[3 * i])) << i;
            continue;
        }
        EXPECT_EQ(s[i], s2[i]) << i;
        EXPECT_EQ(c[i], c2[i]) << i;
        EXPECT_EQ(st[3 * i], s2[i]) << i;
        EXPECT_EQ(ct[2 * i], c2[i]) << i;
    }
}

TEST(TrigValues, SinCosIsSinAndCos) {
    sincos_matches<float>(orv_kern_sSinCos, orv_kern_sSinCosI, orv_kern_sSin, orv_kern_sCos);
    sincos_matches<double>(orv_kern_dSinCos, orv_kern_dSinCosI, orv_kern_dSin, orv_kern_dCos);
}

}  // namespace
