// The constant tables against their rules, recomputed with MPFR.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace {

using namespace orv::explog;

// 2^(j/rows) at 200 bits.
void pow2_frac(mpfr_t v, int j, int rows) {
    mpfr_set_si(v, j, MPFR_RNDN);
    mpfr_div_si(v, v, rows, MPFR_RNDN);
    mpfr_exp2(v, v, MPFR_RNDN);
}

TEST(ExpLogTables, SingleExponentialRows) {
    mpfr_t v;
    mpfr_init2(v, 200);
    for (int j = 0; j < 128; ++j) {
        pow2_frac(v, j, 128);
        const float hi = mpfr_get_flt(v, MPFR_RNDN);
        mpfr_sub_d(v, v, hi, MPFR_RNDN);
        const float lo = mpfr_get_flt(v, MPFR_RNDN);
        EXPECT_EQ(kExp128F[j][0], hi) << j;
        EXPECT_EQ(kExp128F[j][1], lo) << j;
    }
    mpfr_clear(v);
}

TEST(ExpLogTables, DoubleExponentialRows) {
    mpfr_t v;
    mpfr_init2(v, 200);
    for (int j = 0; j < 64; ++j) {
        pow2_frac(v, j, 64);
        const double hi = mpfr_get_d(v, MPFR_RNDN);
        mpfr_sub_d(v, v, hi, MPFR_RNDN);
        EXPECT_EQ(kExp64D[j][0], hi) << j;
        EXPECT_EQ(kExp64D[j][1], mpfr_get_d(v, MPFR_RNDN)) << j;
    }
    mpfr_clear(v);
}

double from_bits(uint64_t b) {
    double d;
    std::memcpy(&d, &b, 8);
    return d;
}

// Row i holds the z of bits(kLogBase) + [i 2^45, (i+1) 2^45): its reciprocal
// is that of the interval's midpoint (of 1 for the row holding 1) rounded to
// 21 bits, and -ln R is split at 2^-43.
TEST(ExpLogTables, LogarithmRows) {
    mpfr_t c, rcp, l, t;
    mpfr_inits2(200, c, l, t, static_cast<mpfr_ptr>(nullptr));
    mpfr_init2(rcp, 21);
    for (int i = 0; i < 128; ++i) {
        const double z_lo = from_bits(kLogBase + (static_cast<uint64_t>(i) << 45));
        const double z_hi = from_bits(kLogBase + (static_cast<uint64_t>(i + 1) << 45));
        const bool holds_one = z_lo <= 1.0 && 1.0 < z_hi;
        if (holds_one) {
            mpfr_set_d(c, 1.0, MPFR_RNDN);
        } else {
            mpfr_set_d(c, z_lo, MPFR_RNDN);
            mpfr_add_d(c, c, z_hi, MPFR_RNDN);
            mpfr_div_2ui(c, c, 1, MPFR_RNDN);
        }
        mpfr_ui_div(rcp, 1, c, MPFR_RNDN);
        const double r = mpfr_get_d(rcp, MPFR_RNDN);
        EXPECT_EQ(kLogD[i][0], r) << i;
        // The reduced argument stays within the polynomial's range.
        EXPECT_LE(std::fabs(z_lo * r - 1.0), 0x1p-8 + 0x1p-20) << i;
        EXPECT_LE(std::fabs(z_hi * r - 1.0), 0x1p-8 + 0x1p-20) << i;
        // -ln R = Lhi + Llo, Lhi a multiple of 2^-43 nearest to it.
        mpfr_log(l, rcp, MPFR_RNDN);
        mpfr_neg(l, l, MPFR_RNDN);
        const double lhi = kLogD[i][1];
        EXPECT_EQ(std::ldexp(lhi, 43), std::nearbyint(std::ldexp(lhi, 43))) << i;
        mpfr_sub_d(t, l, lhi, MPFR_RNDN);
        EXPECT_LE(std::fabs(mpfr_get_d(t, MPFR_RNDN)), 0x1p-44) << i;
        EXPECT_EQ(kLogD[i][2], mpfr_get_d(t, MPFR_RNDN)) << i;
        if (holds_one) {
            EXPECT_EQ(r, 1.0);
            EXPECT_EQ(lhi, 0.0);
        }
    }
    mpfr_clears(c, rcp, l, t, static_cast<mpfr_ptr>(nullptr));
}

// The two-part constants of the reductions: the leading part times any
// reachable multiple is exact, and the sum is the constant to 2^-100.
TEST(ExpLogTables, ReductionConstants) {
    mpfr_t v;
    mpfr_init2(v, 200);
    mpfr_const_log2(v, MPFR_RNDN);
    mpfr_div_ui(v, v, 64, MPFR_RNDN);
    mpfr_add_d(v, v, kNegLn2by64Hi, MPFR_RNDN);
    mpfr_add_d(v, v, kNegLn2by64Lo, MPFR_RNDN);
    EXPECT_LT(std::fabs(mpfr_get_d(v, MPFR_RNDN)), 0x1p-95);
    mpfr_const_log2(v, MPFR_RNDN);
    mpfr_sub_d(v, v, kLn2Hi, MPFR_RNDN);
    mpfr_sub_d(v, v, kLn2Lo, MPFR_RNDN);
    EXPECT_LT(std::fabs(mpfr_get_d(v, MPFR_RNDN)), 0x1p-90);
    EXPECT_EQ(std::ldexp(kLn2Hi, 43), std::nearbyint(std::ldexp(kLn2Hi, 43)));
    // n ln2/64 hi exact for |n| up to 64 * 1100.
    EXPECT_EQ(std::ldexp(kNegLn2by64Hi, 70) * 0x1p-70 * 70400.0,
              std::ldexp(std::ldexp(kNegLn2by64Hi, 70) * 70400.0, -70));
    mpfr_clear(v);
}

}  // namespace
