// Rows of the arithmetic and rounding family.
#include <cmath>

#include <orv/vtm.h>

#include "harness.h"

namespace accuracy {
namespace {

constexpr double CR = kCorrectlyRounded;

void add(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_add(r, a, b, MPFR_RNDN); }
void sub(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_sub(r, a, b, MPFR_RNDN); }
void mul(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_mul(r, a, b, MPFR_RNDN); }
void div(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_div(r, a, b, MPFR_RNDN); }
void sqr(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_sqr(r, a, MPFR_RNDN); }
void abs_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_abs(r, a, MPFR_RNDN); }
void inv(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_ui_div(r, 1, a, MPFR_RNDN); }
void sqrt_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_sqrt(r, a, MPFR_RNDN); }
void inv_sqrt(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    // IEEE rSqrt(-0) is -infinity.
    if (mpfr_zero_p(a))
        mpfr_set_inf(r, mpfr_signbit(a) ? -1 : 1);
    else
        mpfr_rec_sqrt(r, a, MPFR_RNDN);
}
void ceil_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_ceil(r, a); }
void floor_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_floor(r, a); }
void trunc_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_trunc(r, a); }
void round_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_round(r, a); }
void rint_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_rint(r, a, MPFR_RNDN); }
void frac(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    // The fraction of an infinity is a zero of its sign.
    if (mpfr_inf_p(a))
        mpfr_set_zero(r, mpfr_signbit(a) ? -1 : 1);
    else
        mpfr_frac(r, a, MPFR_RNDN);
}
void modf_(mpfr_t r, mpfr_t r2, const mpfr_t a, const mpfr_t) { mpfr_modf(r, r2, a, MPFR_RNDN); }
void fmax_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_max(r, a, b, MPFR_RNDN); }
void fmin_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_min(r, a, b, MPFR_RNDN); }
void maxmag(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) {
    if (mpfr_nan_p(a) || mpfr_nan_p(b) || mpfr_cmpabs(a, b) == 0) return mpfr_max(r, a, b, MPFR_RNDN), void();
    mpfr_set(r, mpfr_cmpabs(a, b) > 0 ? a : b, MPFR_RNDN);
}
void minmag(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) {
    if (mpfr_nan_p(a) || mpfr_nan_p(b) || mpfr_cmpabs(a, b) == 0) return mpfr_min(r, a, b, MPFR_RNDN), void();
    mpfr_set(r, mpfr_cmpabs(a, b) < 0 ? a : b, MPFR_RNDN);
}
void copysign_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_copysign(r, a, b, MPFR_RNDN); }
void fdim_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_dim(r, a, b, MPFR_RNDN); }
void fmod_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_fmod(r, a, b, MPFR_RNDN); }
void remainder_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_remainder(r, a, b, MPFR_RNDN); }

// The neighbour of x toward y in the element format, from the C library.
template <typename T>
void next_after(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) {
    if constexpr (sizeof(T) == 4)
        mpfr_set_flt(r, std::nextafter(mpfr_get_flt(a, MPFR_RNDN), mpfr_get_flt(b, MPFR_RNDN)), MPFR_RNDN);
    else
        mpfr_set_d(r, std::nextafter(mpfr_get_d(a, MPFR_RNDN), mpfr_get_d(b, MPFR_RNDN)), MPFR_RNDN);
}

// Values whose neighbourhood the rounding kernels treat differently.
const std::vector<double> kRoundS = {0.5, 1.0, 2.0, 0x1p22, 0x1p22 + 0.5, 0x1p23, 0x1p24, 8388607.5};
const std::vector<double> kRoundD = {0.5, 1.0, 2.0, 0x1p51, 0x1p51 + 0.5, 0x1p52, 0x1p53,
                                     4503599627370495.5};
const std::vector<double> kDivS = {0x1p-126, 0x1p126, 0x1p127};
const std::vector<double> kDivD = {0x1p-1022, 0x1p1022, 0x1p1023};

#define KNOWN(T, FN, REF, DOM, TH) Known{#T #FN, REF, Domain::DOM, TH}
#define BOTH(FN, REF, DOM, THS, THD) KNOWN(s, FN, REF, DOM, THS), KNOWN(d, FN, REF, DOM, THD)

const Describe known({
    BOTH(Add, add, All, {}, {}),
    BOTH(Sub, sub, All, {}, {}),
    BOTH(Mul, mul, All, {}, {}),
    BOTH(Sqr, sqr, All, {}, {}),
    BOTH(Abs, abs_, All, {}, {}),
    BOTH(Inv, inv, All, kDivS, kDivD),
    BOTH(Div, div, All, kDivS, kDivD),
    BOTH(Sqrt, sqrt_, Positive, kDivS, kDivD),
    BOTH(InvSqrt, inv_sqrt, Positive, kDivS, kDivD),
    BOTH(Ceil, ceil_, All, kRoundS, kRoundD),
    BOTH(Floor, floor_, All, kRoundS, kRoundD),
    BOTH(Trunc, trunc_, All, kRoundS, kRoundD),
    BOTH(Round, round_, All, kRoundS, kRoundD),
    BOTH(Rint, rint_, All, kRoundS, kRoundD),
    BOTH(NearbyInt, rint_, All, kRoundS, kRoundD),
    BOTH(Frac, frac, All, kRoundS, kRoundD),
    BOTH(Modf, modf_, All, kRoundS, kRoundD),
    BOTH(Fmax, fmax_, All, {}, {}),
    BOTH(Fmin, fmin_, All, {}, {}),
    BOTH(MaxMag, maxmag, All, {}, {}),
    BOTH(MinMag, minmag, All, {}, {}),
    BOTH(CopySign, copysign_, All, {}, {}),
    BOTH(Fdim, fdim_, All, {}, {}),
    KNOWN(s, NextAfter, next_after<float>, All, kDivS),
    KNOWN(d, NextAfter, next_after<double>, All, kDivD),
    BOTH(Fmod, fmod_, All, {}, {}),
    BOTH(Remainder, remainder_, All, {}, {}),
    BOTH(LinearFrac, div, All, {}, {}),
});

// The block of InvSqrt is held to 1 ULP (the generated row); its callout,
// reached by the denormal inputs, to correct rounding.
const Register extra({
    Function{"sInvSqrt (denormal inputs)", 's', Shape::Unary, (const void*)orv_vtm_kernel_sInvSqrt_ttab,
             inv_sqrt, Domain::Denormal, {CR, CR, CR}, {}},
    Function{"dInvSqrt (denormal inputs)", 'd', Shape::Unary, (const void*)orv_vtm_kernel_dInvSqrt_ttab,
             inv_sqrt, Domain::Denormal, {CR, CR, CR}, {}},
});

}  // namespace
}  // namespace accuracy
