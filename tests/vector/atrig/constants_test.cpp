// The split constants of the inverse trigonometric kernels against MPFR at
// 200 bits: each hi + lo pair within 2^-104 of its value relative, hi the
// value rounded to double.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>

#include "vector/atrig/atrig_internal.h"

namespace {

using namespace orv::atrig;

struct Split {
    const char* what;
    double hi, lo;
    void (*value)(mpfr_t);
};

void atan_of(mpfr_t r, long num, long den) {
    mpfr_set_si(r, num, MPFR_RNDN);
    mpfr_div_si(r, r, den, MPFR_RNDN);
    mpfr_atan(r, r, MPFR_RNDN);
}

TEST(AtrigConstants, SplitsMatchMpfr) {
    const Split splits[] = {
        {"atan(1/2)", kAtanHalfHi, kAtanHalfLo, [](mpfr_t r) { atan_of(r, 1, 2); }},
        {"atan(1)", kAtanOneHi, kAtanOneLo, [](mpfr_t r) { atan_of(r, 1, 1); }},
        {"atan(3/2)", kAtan3o2Hi, kAtan3o2Lo, [](mpfr_t r) { atan_of(r, 3, 2); }},
        {"pi/2", kPio2Hi, kPio2Lo, [](mpfr_t r) { mpfr_const_pi(r, MPFR_RNDN), mpfr_div_2ui(r, r, 1, MPFR_RNDN); }},
        {"pi", kPiHi, kPiLo, [](mpfr_t r) { mpfr_const_pi(r, MPFR_RNDN); }},
        {"1/pi", kInvPiHi, kInvPiLo, [](mpfr_t r) { mpfr_const_pi(r, MPFR_RNDN), mpfr_ui_div(r, 1, r, MPFR_RNDN); }},
    };
    mpfr_t v, s;
    mpfr_inits2(200, v, s, (mpfr_ptr)nullptr);
    for (const Split& c : splits) {
        c.value(v);
        EXPECT_EQ(c.hi, mpfr_get_d(v, MPFR_RNDN)) << c.what;
        mpfr_set_d(s, c.hi, MPFR_RNDN);
        mpfr_add_d(s, s, c.lo, MPFR_RNDN);
        mpfr_sub(s, s, v, MPFR_RNDN);
        mpfr_div(s, s, v, MPFR_RNDN);
        EXPECT_LT(std::fabs(mpfr_get_d(s, MPFR_RNDN)), 0x1p-104) << c.what;
    }
    mpfr_clears(v, s, (mpfr_ptr)nullptr);
}

}  // namespace
