// References, domains and path edges of the inverse trigonometric and
// hyperbolic family.
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

#define REF1(NAME, CALL) \
    void NAME(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { CALL(r, a, MPFR_RNDN); }
REF1(atan_, mpfr_atan)
REF1(asin_, mpfr_asin)
REF1(acos_, mpfr_acos)
REF1(atanpi_, mpfr_atanpi)
REF1(asinpi_, mpfr_asinpi)
REF1(acospi_, mpfr_acospi)
REF1(sinh_, mpfr_sinh)
REF1(cosh_, mpfr_cosh)
REF1(tanh_, mpfr_tanh)
REF1(asinh_, mpfr_asinh)
REF1(acosh_, mpfr_acosh)
REF1(atanh_, mpfr_atanh)
void atan2_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_atan2(r, a, b, MPFR_RNDN); }
void atan2pi_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_atan2pi(r, a, b, MPFR_RNDN); }

// Where the paths change: the centres of the arctangent reduction, the
// half-angle form of the arcsine from 1/2, the polynomial and exponential
// forms of the hyperbolic functions, the single kernels' extended-precision
// range, the overflow of Sinh and Cosh, the series and logarithm forms of
// the inverse hyperbolic functions.
const std::vector<double> kAtan = {0.4375, 0.6875, 1.1875, 2.4375, 1.1102230246251565e-16};
const std::vector<double> kUnit = {0.5, 1.0};
const std::vector<double> kSinhCosh = {1.0, 0.0003, 89.41599, 0x1p-126, 710.4758600739439};
const std::vector<double> kTanh = {0.25, 19.0, 40.0};
const std::vector<double> kAsinh = {0.125, 0x1p28};
const std::vector<double> kAcosh = {1.0, 1.125, 0x1p28};
const std::vector<double> kAtanh = {0.125, 1.0};
const std::vector<double> kNone = {};
// Results that cancel: acos and acospi near 1, acosh near 1.
const std::vector<double> kNearOne = {1.0};

#define KNOWN(T, FN, REF, DOM, TH, DP) Known{#T #FN, REF, Domain::DOM, TH, kNone, DP}

const Describe known({
    KNOWN(s, Atan, atan_, All, kAtan, kNone),       KNOWN(d, Atan, atan_, All, kAtan, kNone),
    KNOWN(s, Atanpi, atanpi_, All, kAtan, kNone),   KNOWN(d, Atanpi, atanpi_, All, kAtan, kNone),
    KNOWN(s, Atan2, atan2_, All, kNone, kNone),     KNOWN(d, Atan2, atan2_, All, kNone, kNone),
    KNOWN(s, Atan2pi, atan2pi_, All, kNone, kNone), KNOWN(d, Atan2pi, atan2pi_, All, kNone, kNone),
    KNOWN(s, Asin, asin_, All, kUnit, kNone),       KNOWN(d, Asin, asin_, All, kUnit, kNone),
    KNOWN(s, Acos, acos_, All, kUnit, kNearOne),    KNOWN(d, Acos, acos_, All, kUnit, kNearOne),
    KNOWN(s, Asinpi, asinpi_, All, kUnit, kNone),   KNOWN(d, Asinpi, asinpi_, All, kUnit, kNone),
    KNOWN(s, Acospi, acospi_, All, kUnit, kNearOne), KNOWN(d, Acospi, acospi_, All, kUnit, kNearOne),
    KNOWN(s, Sinh, sinh_, All, kSinhCosh, kNone),   KNOWN(d, Sinh, sinh_, All, kSinhCosh, kNone),
    KNOWN(s, Cosh, cosh_, All, kSinhCosh, kNone),   KNOWN(d, Cosh, cosh_, All, kSinhCosh, kNone),
    KNOWN(s, Tanh, tanh_, All, kTanh, kNone),       KNOWN(d, Tanh, tanh_, All, kTanh, kNone),
    KNOWN(s, Asinh, asinh_, All, kAsinh, kNone),    KNOWN(d, Asinh, asinh_, All, kAsinh, kNone),
    KNOWN(s, Acosh, acosh_, Positive, kAcosh, kNearOne), KNOWN(d, Acosh, acosh_, Positive, kAcosh, kNearOne),
    KNOWN(s, Atanh, atanh_, All, kAtanh, kNone),    KNOWN(d, Atanh, atanh_, All, kAtanh, kNone),
});

}  // namespace
}  // namespace accuracy
