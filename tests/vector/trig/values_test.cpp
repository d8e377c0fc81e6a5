// Sin, Cos and Tan against MPFR at the hard cases of the reduction, and
// SinCos and SinCospi against their two functions. Random inputs over every
// binade (blocks that mix huge lanes with ordinary ones) are the accuracy
// sample's; zeros, infinities and NaN are rows of edges_test.cpp.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <cstring>
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
};

const Fn kFns[] = {{"Sin", orv_kern_sSin, orv_kern_dSin, mpfr_sin},
                   {"Cos", orv_kern_sCos, orv_kern_dCos, mpfr_cos},
                   {"Tan", orv_kern_sTan, orv_kern_dTan, mpfr_tan}};

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

// f at x and -x, alone (tail) and in lane 5 of a block of ones: within one
// ulp of MPFR.
template <typename T>
void check(const Fn& f, T x) {
    for (T v : {x, -x})
        for (int n : {1, 16}) {
            std::vector<T> a(n, T(1)), r(n);
            const int at = n == 1 ? 0 : 5;
            a[at] = v;
            if constexpr (sizeof(T) == 4)
                f.s(n, a.data(), r.data());
            else
                f.d(n, a.data(), r.data());
            EXPECT_LE(ulp_error(f, v, r[at], sizeof(T) == 4 ? 24 : 53), 1.0)
                << f.name << (sizeof(T) == 4 ? "s" : "d") << "(" << std::hexfloat << double(v) << ") = "
                << double(r[at]);
        }
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
        for (const Fn& f : kFns) fmt == "s" ? check<float>(f, float(x)) : check<double>(f, x);
        ++count;
    }
    EXPECT_GE(count, 40);
}

// SinCos and SinCospi give the HA results of their two functions bit for
// bit, plain and strided, and report an infinite element (SinCospi in single
// does not), once, with both results.
template <typename T>
void pair_matches(const char* what, void (*sc)(int, const T*, T*, T*),
                  void (*sci)(int, const T*, int, T*, int, T*, int), void (*sn)(int, const T*, T*),
                  void (*cs)(int, const T*, T*), int exponents, bool reports) {
    std::mt19937_64 g(7);
    const int n = 37;
    std::vector<T> a(n), s(n), c(n), s2(n), c2(n), st(3 * n), ct(2 * n);
    for (T& v : a) v = std::ldexp(T(double(g() >> 11) * 0x1p-53 - 0.5), int(g() % exponents) - 10);
    a[4] = std::numeric_limits<T>::infinity();
    a[20] = std::numeric_limits<T>::quiet_NaN();
    a[30] = T(1e30);
    ErrorCapture cap;
    sn(n, a.data(), s2.data());
    cs(n, a.data(), c2.data());
    seen_errors().clear();
    sc(n, a.data(), s.data(), c.data());
    ASSERT_EQ(cap.errors().size(), reports ? 1u : 0u) << what;
    if (reports) {
        EXPECT_EQ(cap.errors()[0].index, 4) << what;
        EXPECT_TRUE(std::isnan(cap.errors()[0].res1) && std::isnan(cap.errors()[0].res2)) << what;
    }
    sci(n, a.data(), 1, st.data(), 3, ct.data(), 2);
    auto same = [](T x, T y) { return std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y); };
    for (int i = 0; i < n; ++i) {
        EXPECT_TRUE(same(s[i], s2[i]) && same(c[i], c2[i])) << what << " " << i;
        EXPECT_TRUE(same(st[3 * i], s2[i]) && same(ct[2 * i], c2[i])) << what << " " << i;
    }
}

TEST(TrigValues, SinCosAndSinCospiAreTheirTwoFunctions) {
    pair_matches<float>("sSinCos", orv_kern_sSinCos, orv_kern_sSinCosI, orv_kern_sSin, orv_kern_sCos, 140, true);
    pair_matches<double>("dSinCos", orv_kern_dSinCos, orv_kern_dSinCosI, orv_kern_dSin, orv_kern_dCos, 140, true);
    pair_matches<float>("sSinCospi", orv_kern_sSinCospi, orv_kern_sSinCospiI, orv_kern_sSinpi_ha,
                        orv_kern_sCospi_ha, 80, false);
    pair_matches<double>("dSinCospi", orv_kern_dSinCospi, orv_kern_dSinCospiI, orv_kern_dSinpi_ha,
                         orv_kern_dCospi_ha, 80, true);
}

}  // namespace
