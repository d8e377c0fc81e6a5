// The trigonometric tables against their rules, recomputed with MPFR.
#include <gmp.h>
#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <cstdint>

#include "vector/trig/trig_tables.h"

namespace {

using namespace orv::trig;

// Row E holds bits k0 .. k0+191 of 1/(2 pi), k0 = max(E, 1) - 1023 - 51:
// floor(2^(k0+191) / (2 pi)) mod 2^192.
TEST(TrigTables, ReductionRowsAreTheBitsOfOneOverTwoPi) {
    mpfr_t inv, v;
    mpfr_inits2(2600, inv, v, (mpfr_ptr)0);
    mpfr_const_pi(inv, MPFR_RNDN);
    mpfr_mul_2ui(inv, inv, 1, MPFR_RNDN);
    mpfr_ui_div(inv, 1, inv, MPFR_RNDN);
    mpz_t z, w;
    mpz_inits(z, w, nullptr);
    for (int E = 0; E < 2048; ++E) {
        const long k0 = std::max(E, 1) - 1023 - 51;
        mpfr_mul_2si(v, inv, k0 + 191, MPFR_RNDN);
        mpfr_get_z(z, v, MPFR_RNDD);
        mpz_fdiv_r_2exp(z, z, 192);
        mpz_set_ui(w, 0);
        for (int i = 0; i < 3; ++i) {  // w = w 2^64 + word, by 32-bit halves
            mpz_mul_2exp(w, w, 32);
            mpz_add_ui(w, w, uint32_t(kReduceD[E][i] >> 32));
            mpz_mul_2exp(w, w, 32);
            mpz_add_ui(w, w, uint32_t(kReduceD[E][i]));
        }
        ASSERT_EQ(mpz_cmp(z, w), 0) << "row " << E;
    }
    mpz_clears(z, w, nullptr);
    mpfr_clears(inv, v, (mpfr_ptr)0);
}

// Row j: sin and cos of j pi/256, each as a double and the double of the rest.
TEST(TrigTables, SineCosineRows) {
    mpfr_t a, s, c;
    mpfr_inits2(300, a, s, c, (mpfr_ptr)0);
    for (int j = 0; j < 512; ++j) {
        mpfr_set_si(a, j, MPFR_RNDN);
        mpfr_div_2ui(a, a, 8, MPFR_RNDN);  // exact: sinpi and cospi are exact at the zeros
        mpfr_sinpi(s, a, MPFR_RNDN);
        mpfr_cospi(c, a, MPFR_RNDN);
        const double sh = mpfr_get_d(s, MPFR_RNDN), ch = mpfr_get_d(c, MPFR_RNDN);
        mpfr_sub_d(s, s, sh, MPFR_RNDN);
        mpfr_sub_d(c, c, ch, MPFR_RNDN);
        EXPECT_EQ(kSinCosD[j][0], sh) << j;
        EXPECT_EQ(kSinCosD[j][1], mpfr_get_d(s, MPFR_RNDN) + 0.0) << j;
        EXPECT_EQ(kSinCosD[j][2], ch) << j;
        EXPECT_EQ(kSinCosD[j][3], mpfr_get_d(c, MPFR_RNDN) + 0.0) << j;
    }
    mpfr_clears(a, s, c, (mpfr_ptr)0);
}

// The Cody-Waite parts: the 30-bit heads times n below 2^23 are exact, and
// the parts sum to pi/256 within 2^-150.
TEST(TrigTables, PiSplits) {
    mpfr_t p, sum;
    mpfr_inits2(400, p, sum, (mpfr_ptr)0);
    mpfr_const_pi(p, MPFR_RNDN);
    mpfr_div_2ui(p, p, 8, MPFR_RNDN);
    mpfr_set_d(sum, 0.0, MPFR_RNDN);
    for (int i = 0; i < 4; ++i) {
        if (i < 3) {
            mpfr_t h;
            mpfr_init2(h, 53);
            mpfr_set_d(h, kPi256[i], MPFR_RNDN);
            EXPECT_LE(mpfr_min_prec(h), 30) << i;
            mpfr_clear(h);
        }
        mpfr_add_d(sum, sum, kPi256[i], MPFR_RNDN);
    }
    mpfr_sub(sum, sum, p, MPFR_RNDN);
    mpfr_abs(sum, sum, MPFR_RNDN);
    EXPECT_LT(mpfr_get_d(sum, MPFR_RNDN), 0x1p-150);
    mpfr_clears(p, sum, (mpfr_ptr)0);
}

}  // namespace
