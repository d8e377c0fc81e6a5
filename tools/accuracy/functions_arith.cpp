// Rows of the arithmetic and rounding family.
#include <cmath>

#include <orv/vtm.h>

#include "harness.h"

namespace accuracy {
namespace {

constexpr double CR = kCorrectlyRounded;
constexpr double EX = kExact;

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

#define ROW(T, FN, SHAPE, REF, DOM, B, TH) \
    Function{#T #FN, *#T, Shape::SHAPE, (const void*)orv_vtm_kernel_##T##FN##_ttab, REF, Domain::DOM, {B, B, B}, TH}
#define BOTH(FN, SHAPE, REF, DOM, B, THS, THD) \
    ROW(s, FN, SHAPE, REF, DOM, B, THS), ROW(d, FN, SHAPE, REF, DOM, B, THD)

const Register reg({
    ROW(s, Add, Binary, add, All, CR, {}), ROW(s, Sub, Binary, sub, All, CR, {}),
    ROW(s, Mul, Binary, mul, All, CR, {}), ROW(d, Add, Binary, add, All, CR, {}),
    ROW(d, Sub, Binary, sub, All, CR, {}), ROW(d, Mul, Binary, mul, All, CR, {}),
    BOTH(Sqr, Unary, sqr, All, CR, {}, {}),
    BOTH(Abs, Unary, abs_, All, EX, {}, {}),
    BOTH(Inv, Unary, inv, All, CR, kDivS, kDivD),
    BOTH(Div, Binary, div, All, CR, kDivS, kDivD),
    BOTH(Sqrt, Unary, sqrt_, Positive, CR, kDivS, kDivD),
    // The block of InvSqrt is held to 1 ULP; its callout, reached by the
    // denormal inputs, to correct rounding.
    BOTH(InvSqrt, Unary, inv_sqrt, Positive, 1.0, kDivS, kDivD),
    Function{"sInvSqrt (denormal inputs)", 's', Shape::Unary, (const void*)orv_vtm_kernel_sInvSqrt_ttab,
             inv_sqrt, Domain::Denormal, {CR, CR, CR}, {}},
    Function{"dInvSqrt (denormal inputs)", 'd', Shape::Unary, (const void*)orv_vtm_kernel_dInvSqrt_ttab,
             inv_sqrt, Domain::Denormal, {CR, CR, CR}, {}},
    BOTH(Ceil, Unary, ceil_, All, EX, kRoundS, kRoundD),
    BOTH(Floor, Unary, floor_, All, EX, kRoundS, kRoundD),
    BOTH(Trunc, Unary, trunc_, All, EX, kRoundS, kRoundD),
    BOTH(Round, Unary, round_, All, EX, kRoundS, kRoundD),
    BOTH(Rint, Unary, rint_, All, EX, kRoundS, kRoundD),
    BOTH(NearbyInt, Unary, rint_, All, EX, kRoundS, kRoundD),
    BOTH(Frac, Unary, frac, All, EX, kRoundS, kRoundD),
    BOTH(Modf, TwoResults, modf_, All, EX, kRoundS, kRoundD),
    BOTH(Fmax, Binary, fmax_, All, EX, {}, {}),
    BOTH(Fmin, Binary, fmin_, All, EX, {}, {}),
    BOTH(MaxMag, Binary, maxmag, All, EX, {}, {}),
    BOTH(MinMag, Binary, minmag, All, EX, {}, {}),
    BOTH(CopySign, Binary, copysign_, All, EX, {}, {}),
    BOTH(Fdim, Binary, fdim_, All, CR, {}, {}),
    ROW(s, NextAfter, Binary, next_after<float>, All, EX, kDivS),
    ROW(d, NextAfter, Binary, next_after<double>, All, EX, kDivD),
    BOTH(Fmod, Binary, fmod_, All, EX, {}, {}),
    BOTH(Remainder, Binary, remainder_, All, EX, {}, {}),
    BOTH(LinearFrac, LinearFrac, div, All, CR, {}, {}),
});

}  // namespace
}  // namespace accuracy
