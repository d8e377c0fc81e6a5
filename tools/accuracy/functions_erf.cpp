// References, domains and path edges of the error-function family. Erf and
// Erfc are MPFR's; Erfcx and CdfNorm are built from them at a higher
// precision; the inverses are solved by Newton's method in MPFR.
#include <cmath>
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

// Working precision of the composed references.
mpfr_prec_t work_prec(const mpfr_t r) { return mpfr_get_prec(r) + 96; }

struct Tmp {
    mpfr_t v;
    explicit Tmp(mpfr_prec_t p) { mpfr_init2(v, p); }
    ~Tmp() { mpfr_clear(v); }
    operator mpfr_ptr() { return v; }
};

void erf_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_erf(r, a, MPFR_RNDN); }
void erfc_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_erfc(r, a, MPFR_RNDN); }

// exp(a^2) erfc(a); for a above 2^14, before erfc leaves MPFR's exponent
// range, the asymptotic series 1/(a sqrt pi) (1 - 1/(2a^2) + 3/(4a^4) -
// 15/(8a^6) + 105/(16a^8)), whose next term is below 2^-130 relative there.
void erfcx_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    if (mpfr_nan_p(a)) return mpfr_set_nan(r);
    if (mpfr_inf_p(a)) return mpfr_sgn(a) > 0 ? mpfr_set_zero(r, 1) : mpfr_set_inf(r, 1);
    const mpfr_prec_t p = work_prec(r);
    Tmp x(p), y(p), t(p), s(p);
    if (mpfr_cmp_d(a, 0x1p14) > 0) {
        mpfr_sqr(t, a, MPFR_RNDN);
        mpfr_ui_div(t, 1, t, MPFR_RNDN);  // t = 1/a^2
        mpfr_mul_d(s, t, 105.0 / 16, MPFR_RNDN);
        mpfr_add_d(s, s, -15.0 / 8, MPFR_RNDN);
        mpfr_mul(s, s, t, MPFR_RNDN);
        mpfr_add_d(s, s, 3.0 / 4, MPFR_RNDN);
        mpfr_mul(s, s, t, MPFR_RNDN);
        mpfr_sub_d(s, s, 0.5, MPFR_RNDN);
        mpfr_mul(s, s, t, MPFR_RNDN);
        mpfr_add_ui(s, s, 1, MPFR_RNDN);
        mpfr_const_pi(y, MPFR_RNDN);
        mpfr_sqrt(y, y, MPFR_RNDN);
        mpfr_mul(y, y, a, MPFR_RNDN);
        mpfr_div(r, s, y, MPFR_RNDN);
        return;
    }
    mpfr_erfc(x, a, MPFR_RNDN);
    mpfr_sqr(y, a, MPFR_RNDN);
    mpfr_exp(y, y, MPFR_RNDN);
    mpfr_mul(r, x, y, MPFR_RNDN);
}

// erfc(-a/sqrt 2)/2.
void cdfnorm_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    const mpfr_prec_t p = work_prec(r);
    Tmp z(p), k(p);
    mpfr_sqrt_ui(k, 2, MPFR_RNDN);
    mpfr_div(z, a, k, MPFR_RNDN);
    mpfr_neg(z, z, MPFR_RNDN);
    mpfr_erfc(z, z, MPFR_RNDN);
    mpfr_div_2ui(r, z, 1, MPFR_RNDN);
}

// x with erfc(x) = q for 0 < q <= 1: Newton on ln erfc, which is concave and
// decreasing, so that after the first step the iterates fall to the root.
void solve_erfc(mpfr_t x, const mpfr_t q) {
    const mpfr_prec_t p = mpfr_get_prec(x);
    Tmp lq(p), f(p), d(p), e(p), dx(p);
    mpfr_log(lq, q, MPFR_RNDN);
    const double l = -mpfr_get_d(lq, MPFR_RNDN);
    mpfr_set_d(x, l > 0.7 ? std::sqrt(l) : 0.9 * l, MPFR_RNDN);
    for (int it = 0; it < 60; ++it) {
        mpfr_erfc(f, x, MPFR_RNDN);
        mpfr_sqr(e, x, MPFR_RNDN);
        mpfr_neg(e, e, MPFR_RNDN);
        mpfr_exp(e, e, MPFR_RNDN);  // exp(-x^2)
        mpfr_const_pi(d, MPFR_RNDN);
        mpfr_sqrt(d, d, MPFR_RNDN);
        mpfr_mul(d, d, f, MPFR_RNDN);
        mpfr_div(d, e, d, MPFR_RNDN);
        mpfr_mul_si(d, d, -2, MPFR_RNDN);  // (ln erfc)' = -2 exp(-x^2) / (sqrt(pi) erfc)
        mpfr_log(f, f, MPFR_RNDN);
        mpfr_sub(f, f, lq, MPFR_RNDN);
        mpfr_div(dx, f, d, MPFR_RNDN);
        mpfr_sub(x, x, dx, MPFR_RNDN);
        if (mpfr_zero_p(dx) || mpfr_get_exp(dx) < mpfr_get_exp(x) - p + 24) break;
    }
}

// x with erf(x) = y for |y| <= 1/2, by Newton on erf (concave for x > 0).
void solve_erf(mpfr_t x, const mpfr_t y) {
    const mpfr_prec_t p = mpfr_get_prec(x);
    Tmp f(p), e(p), dx(p), k(p);
    mpfr_const_pi(k, MPFR_RNDN);
    mpfr_sqrt(k, k, MPFR_RNDN);
    mpfr_div_2ui(k, k, 1, MPFR_RNDN);  // sqrt(pi)/2
    mpfr_mul(x, y, k, MPFR_RNDN);
    for (int it = 0; it < 60 && !mpfr_zero_p(x); ++it) {
        mpfr_erf(f, x, MPFR_RNDN);
        mpfr_sub(f, f, y, MPFR_RNDN);
        mpfr_sqr(e, x, MPFR_RNDN);
        mpfr_exp(e, e, MPFR_RNDN);
        mpfr_mul(dx, f, e, MPFR_RNDN);
        mpfr_mul(dx, dx, k, MPFR_RNDN);  // f / (2/sqrt(pi) exp(-x^2))
        mpfr_sub(x, x, dx, MPFR_RNDN);
        if (mpfr_zero_p(dx) || mpfr_get_exp(dx) < mpfr_get_exp(x) - p + 24) break;
    }
}

// erfc^-1(q) for any q: NaN outside [0, 2], infinities at the ends.
void erfcinv_at(mpfr_t r, const mpfr_t q) {
    if (mpfr_nan_p(q) || mpfr_cmp_ui(q, 0) < 0 || mpfr_cmp_ui(q, 2) > 0) return mpfr_set_nan(r);
    if (mpfr_zero_p(q)) return mpfr_set_inf(r, 1);
    if (mpfr_cmp_ui(q, 2) == 0) return mpfr_set_inf(r, -1);
    const mpfr_prec_t p = work_prec(r);
    Tmp x(p), y(p);
    if (mpfr_cmp_d(q, 0.5) > 0 && mpfr_cmp_d(q, 1.5) < 0) {
        mpfr_ui_sub(y, 1, q, MPFR_RNDN);
        solve_erf(x, y);
    } else if (mpfr_cmp_ui(q, 1) > 0) {
        mpfr_ui_sub(y, 2, q, MPFR_RNDN);
        solve_erfc(x, y);
        mpfr_neg(x, x, MPFR_RNDN);
    } else {
        solve_erfc(x, q);
    }
    mpfr_set(r, x, MPFR_RNDN);
}

void erfcinv_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { erfcinv_at(r, a); }

void erfinv_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    if (mpfr_zero_p(a)) return (void)mpfr_set(r, a, MPFR_RNDN);
    const mpfr_prec_t p = work_prec(r);
    Tmp q(p);
    mpfr_ui_sub(q, 1, a, MPFR_RNDN);  // exact at this precision for |a| >= 2^-90
    if (mpfr_regular_p(a) && mpfr_cmpabs_ui(a, 1) < 0 && mpfr_cmp_d(q, 0.5) > 0 && mpfr_cmp_d(q, 1.5) < 0) {
        Tmp x(p);
        solve_erf(x, a);
        mpfr_set(r, x, MPFR_RNDN);
        return;
    }
    erfcinv_at(r, q);
}

// -sqrt(2) erfc^-1(2p).
void cdfnorminv_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    const mpfr_prec_t p = work_prec(r);
    Tmp q(p), x(p), k(p);
    mpfr_mul_2ui(q, a, 1, MPFR_RNDN);
    erfcinv_at(x, q);
    mpfr_sqrt_ui(k, 2, MPFR_RNDN);
    mpfr_mul(x, x, k, MPFR_RNDN);
    if (mpfr_zero_p(x)) return mpfr_set_zero(r, 1);  // Phi^-1(1/2) = +0
    mpfr_neg(r, x, MPFR_RNDN);
}

// Where the paths change: the small form below 1/2, the rows of width 1/8
// up to 12, the asymptotic form beyond, the ends of the tail.
std::vector<double> rows(double sign) {
    std::vector<double> v;
    for (int j = 4; j <= 96; ++j) v.push_back(sign * j / 8.0);
    return v;
}
std::vector<double> both_rows() {
    std::vector<double> v = rows(1.0), m = rows(-1.0);
    v.insert(v.end(), m.begin(), m.end());
    return v;
}
// The double Erf and Erfc read rows of 1/16 binade on [1/2, 26.5].
std::vector<double> ln_rows() {
    std::vector<double> v;
    for (int e = -1; e <= 4; ++e)
        for (int i = 0; i < 16; ++i) {
            const double x = std::ldexp(1.0 + i / 16.0, e);
            if (x > 26.5) break;
            v.push_back(x);
            v.push_back(-x);
        }
    return v;
}
std::vector<double> cdf_rows() {
    std::vector<double> v;
    for (double e : both_rows()) v.push_back(e * 1.4142135623730951);
    return v;
}
const std::vector<double> kErf = {0.5, -0.5, 6.0, -6.0, 12.0, 0x1p-1000, 0x1p-1022};
const std::vector<double> kErfc = {0.5, -0.5, 6.0, -6.0, 9.0, 12.0, 9.19, 10.06, 26.5, 26.55, 27.3};
const std::vector<double> kErfcx = {0.5, -0.5, 12.0, -9.38, -9.25, -26.0, -26.6287, 0x1p124, 0x1p500, 4.8e37, 2.5e307};
const std::vector<double> kCdf = {0.7071067811865476, -0.7071067811865476, -16.97, -16.5, -13.0, -12.5, 40.0, -37.5,
                                  -38.4, -40.0};
// The guesses change piece at q = e^-4, e^-16, e^-64 (q = 1 - |y|, y, 2p).
const std::vector<double> kErfInv = {0.5, -0.5, 1.0, -1.0, 0x1p-500, 0x1p-1022, 0x1p-126,
                                     0.9816843611112658, 0.9999998874648253};
const std::vector<double> kErfcInv = {0.5, 1.5, 1.0, 2.0, 0x1p-1022, 0x1p-126, 1e-300, 0x1p-200,
                                      0.01831563888873418, 1.1253517471925912e-07, 1.603810890548638e-28, 1.9816843611112658};
const std::vector<double> kCdfInv = {0.25, 0.75, 0.5, 1.0, 0x1p-1022, 0x1p-126, 1e-300, 0x1p-200,
                                     0.00915781944436709, 5.626758735962956e-08, 8.01905445274319e-29, 0.9908421805556329};
const std::vector<double> kNone = {};

#define KNOWN(T, FN, REF, DOM, TH, ED, DP) Known{#T #FN, REF, Domain::DOM, TH, ED, DP}

const Describe known({
    KNOWN(s, Erf, erf_, All, kErf, both_rows(), kNone),
    KNOWN(d, Erf, erf_, All, kErf, ln_rows(), kNone),
    KNOWN(s, Erfc, erfc_, All, kErfc, both_rows(), kNone),
    KNOWN(d, Erfc, erfc_, All, kErfc, ln_rows(), kNone),
    KNOWN(s, Erfcx, erfcx_, All, kErfcx, both_rows(), kNone),
    KNOWN(d, Erfcx, erfcx_, All, kErfcx, both_rows(), kNone),
    KNOWN(s, CdfNorm, cdfnorm_, All, kCdf, cdf_rows(), kNone),
    KNOWN(d, CdfNorm, cdfnorm_, All, kCdf, cdf_rows(), kNone),
    KNOWN(s, ErfInv, erfinv_, All, kErfInv, kNone, kNone),
    KNOWN(d, ErfInv, erfinv_, All, kErfInv, kNone, kNone),
    KNOWN(s, ErfcInv, erfcinv_, Positive, kErfcInv, kNone, kNone),
    KNOWN(d, ErfcInv, erfcinv_, Positive, kErfcInv, kNone, kNone),
    KNOWN(s, CdfNormInv, cdfnorminv_, Positive, kCdfInv, kNone, kNone),
    KNOWN(d, CdfNormInv, cdfnorminv_, Positive, kCdfInv, kNone, kNone),
});

}  // namespace
}  // namespace accuracy
