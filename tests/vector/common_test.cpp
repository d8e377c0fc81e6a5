// The shared numeric toolkit of the kernels (vector/common): the
// double-double steps are exact as their methods claim (checked with MPFR),
// the register forms agree with the scalar ones lane by lane, and the
// polynomial schemes evaluate what they say.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <random>

#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/common/poly.h"

namespace {

namespace dd = orv::vec::dd;

// a + b - (s + e), or a b - (s + e), exactly: zero when the pair is exact.
bool exact(double a, double b, double s, double e, bool product) {
    mpfr_t x, y;
    mpfr_inits2(2200, x, y, (mpfr_ptr)nullptr);
    mpfr_set_d(x, a, MPFR_RNDN);
    mpfr_set_d(y, b, MPFR_RNDN);
    product ? mpfr_mul(x, x, y, MPFR_RNDN) : mpfr_add(x, x, y, MPFR_RNDN);
    mpfr_sub_d(x, x, s, MPFR_RNDN);
    mpfr_sub_d(x, x, e, MPFR_RNDN);
    const bool zero = mpfr_zero_p(x);
    mpfr_clears(x, y, (mpfr_ptr)nullptr);
    return zero;
}

double random_double(std::mt19937_64& g, int emin, int emax) {
    std::uniform_real_distribution<double> m(1.0, 2.0);
    const int e = emin + int(g() % unsigned(emax - emin + 1));
    return std::ldexp((g() & 1) ? -m(g) : m(g), e);
}

TEST(DoubleDouble, SumsAndProductsAreExact) {
    std::mt19937_64 g(7);
    for (int i = 0; i < 20000; ++i) {
        const double a = random_double(g, -60, 60), b = random_double(g, -60, 60);
        double e;
        const double s = dd::two_sum(a, b, &e);
        ASSERT_TRUE(exact(a, b, s, e, false)) << a << " + " << b;
        const double big = std::fabs(a) >= std::fabs(b) ? a : b, small = big == a ? b : a;
        const double f = dd::fast_two_sum(big, small, &e);
        ASSERT_TRUE(exact(big, small, f, e, false)) << big << " + " << small;
        const dd::Dd p = dd::two_prod(a, b);
        ASSERT_TRUE(exact(a, b, p.hi, p.lo, true)) << a << " * " << b;
        double h, l;
        dd::split(a, &h, &l);
        ASSERT_EQ(h + l, a);
        ASSERT_EQ(std::fmod(std::ldexp(h, 26 - std::ilogb(h)), 1.0), 0.0) << "high part over 26 bits";
    }
}

TEST(DoubleDouble, RegisterFormsMatchTheScalarOnes) {
    std::mt19937_64 g(8);
    for (int i = 0; i < 2000; ++i) {
        const double a[2] = {random_double(g, -30, 30), random_double(g, -30, 30)};
        const double b[2] = {random_double(g, -30, 30), random_double(g, -30, 30)};
        __m128d ev;
        double s[2], e[2], m[2];
        _mm_storeu_pd(s, dd::two_sum(_mm_loadu_pd(a), _mm_loadu_pd(b), &ev));
        _mm_storeu_pd(e, ev);
        _mm_storeu_pd(m, dd::mul_dd(_mm_loadu_pd(a), _mm_loadu_pd(b), 1.4426950408889634, 2.0355273740931033e-17));
        for (int k = 0; k < 2; ++k) {
            double es;
            EXPECT_EQ(s[k], dd::two_sum(a[k], b[k], &es));
            EXPECT_EQ(e[k], es);
            EXPECT_EQ(m[k], dd::mul_dd(dd::Dd{a[k], b[k]}, 1.4426950408889634, 2.0355273740931033e-17));
        }
    }
}

double splat1(double v) { return v; }
double ulp(double v) { return std::nextafter(std::fabs(v), INFINITY) - std::fabs(v); }

// Horner and Estrin on the Taylor coefficients of exp, highest first,
// against the sum in long double: both within a few ulps on [-1/2, 1/2].
TEST(Polynomials, HornerAndEstrinEvaluateTheirPolynomial) {
    static constexpr double c[8] = {1.0 / 5040, 1.0 / 720, 1.0 / 120, 1.0 / 24, 1.0 / 6, 0.5, 1.0, 1.0};
    for (double x = -0.5; x <= 0.5; x += 1.0 / 64) {
        long double ref = 0;
        for (double ci : c) ref = ref * x + ci;
        const double h = orv::vec::poly::horner(x, c, splat1), e = orv::vec::poly::estrin7(x, c, splat1);
        EXPECT_NEAR(h, double(ref), 4 * ulp(double(ref))) << x;
        EXPECT_NEAR(e, double(ref), 4 * ulp(double(ref))) << x;
        const __m128d v = orv::vec::poly::horner(_mm_set1_pd(x), c, orv::vec::bitops::splat);
        EXPECT_EQ(_mm_cvtsd_f64(v), h);
    }
}

}  // namespace
