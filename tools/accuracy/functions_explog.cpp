// References, domains, thresholds and row edges of the exponential and
// logarithm family.
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

void exp_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_exp(r, a, MPFR_RNDN); }
void exp2_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_exp2(r, a, MPFR_RNDN); }
void exp10_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_exp10(r, a, MPFR_RNDN); }
void expm1_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_expm1(r, a, MPFR_RNDN); }
void ln_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_log(r, a, MPFR_RNDN); }
void log2_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_log2(r, a, MPFR_RNDN); }
void log10_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_log10(r, a, MPFR_RNDN); }
void log1p_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_log1p(r, a, MPFR_RNDN); }
// The exponent of |a| as a value: -inf for zero, +inf for infinities.
void logb_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    if (mpfr_nan_p(a)) return mpfr_set_nan(r);
    if (mpfr_zero_p(a)) return mpfr_set_inf(r, -1);
    if (mpfr_inf_p(a)) return mpfr_set_inf(r, 1);
    mpfr_set_si(r, mpfr_get_exp(a) - 1, MPFR_RNDN);
}

// The bounds of the fast paths and callouts, where the path changes.
const std::vector<double> kExpS = {87.33654, -87.33654, 88.72283, -103.97208, 0x1p-53};
const std::vector<double> kExpD = {708.3964185322641, -708.3964185322641, 709.782712893384,
                                   -745.1332191019411, 0x1p-53};
const std::vector<double> kExp2S = {126.0, -126.0, 128.0, -150.0};
const std::vector<double> kExp2D = {1022.0, -1022.0, 1024.0, -1075.0};
const std::vector<double> kExp10S = {37.9, -37.929783, 38.53184, -45.1545};
const std::vector<double> kExp10D = {307.0, -307.6526555685887, 308.2547155599167,
                                     -323.60724533877976};
const std::vector<double> kExpm1 = {0x1p-57, 0x1p-5, 38.816242111356935, 88.72283,
                                    709.782712893384, -38.816242111356935};
const std::vector<double> kLog = {1.0, 0x1p-126, 0x1p-1022, 0.6855, 1.371};
const std::vector<double> kLog1p = {-1.0, 0x1p-57, 0x1p-13, 0x1.24p-4, 1.0};
const std::vector<double> kNone = {};

// Row edges of the reductions: the exponentials round x / step to an
// integer (128 rows in single, 64 in double, two periods either side of 0);
// the double logarithms pick one of 128 rows by the top mantissa bits; the
// single Ln, Log2 and Log10 reduce the mantissa to [2/3, 4/3) without a
// table; Logb changes at the powers of two.
const double kLn2 = 0.6931471805599453, kLog10_2 = 0.30102999566398120;
const std::vector<double> kExpRowsS = periodic_edges(kLn2 / 128, 256);
const std::vector<double> kExpRowsD = periodic_edges(kLn2 / 64, 128);
const std::vector<double> kExp2RowsS = periodic_edges(1.0 / 128, 256);
const std::vector<double> kExp2RowsD = periodic_edges(1.0 / 64, 128);
const std::vector<double> kExp10RowsS = periodic_edges(kLog10_2 / 128, 256);
const std::vector<double> kExp10RowsD = periodic_edges(kLog10_2 / 64, 128);
const std::vector<double> kLogRowsS = {2.0 / 3, 4.0 / 3, 8.0 / 3, 0x1p-100 * 4 / 3};
const std::vector<double> kLogRowsD = log_row_edges();
const std::vector<double> kLog1pRows = log_row_edges(-1.0);
const std::vector<double> kLogbRows = {0.5, 1.0, 2.0, 0x1p-126, 0x1p-1022, 0x1p100};
// The edges of the double logarithms' row that holds 1: below them the
// result is small, and the rounding of the reduced argument counts fully.
const std::vector<double> kLogDeep = {1.0 - 0x1p-9, 1.0 + 0x1p-8};

#define KNOWN(T, FN, REF, DOM, TH, ED, DP) Known{#T #FN, REF, Domain::DOM, TH, ED, DP}

const Describe known({
    KNOWN(s, Exp, exp_, All, kExpS, kExpRowsS, kNone),
    KNOWN(d, Exp, exp_, All, kExpD, kExpRowsD, kNone),
    KNOWN(s, Exp2, exp2_, All, kExp2S, kExp2RowsS, kNone),
    KNOWN(d, Exp2, exp2_, All, kExp2D, kExp2RowsD, kNone),
    KNOWN(s, Exp10, exp10_, All, kExp10S, kExp10RowsS, kNone),
    KNOWN(d, Exp10, exp10_, All, kExp10D, kExp10RowsD, kNone),
    KNOWN(s, Expm1, expm1_, All, kExpm1, kExpRowsD, kNone),
    KNOWN(d, Expm1, expm1_, All, kExpm1, kExpRowsD, kNone),
    KNOWN(s, Ln, ln_, Positive, kLog, kLogRowsS, kNone),
    KNOWN(d, Ln, ln_, Positive, kLog, kLogRowsD, kLogDeep),
    KNOWN(s, Log2, log2_, Positive, kLog, kLogRowsS, kNone),
    KNOWN(d, Log2, log2_, Positive, kLog, kLogRowsD, kLogDeep),
    KNOWN(s, Log10, log10_, Positive, kLog, kLogRowsS, kNone),
    KNOWN(d, Log10, log10_, Positive, kLog, kLogRowsD, kLogDeep),
    KNOWN(s, Log1p, log1p_, All, kLog1p, kLog1pRows, kNone),
    KNOWN(d, Log1p, log1p_, All, kLog1p, kLog1pRows, kNone),
    KNOWN(s, Logb, logb_, All, kNone, kLogbRows, kNone),
    KNOWN(d, Logb, logb_, All, kNone, kLogbRows, kNone),
});

}  // namespace
}  // namespace accuracy
