// Rows of the exponential and logarithm family, plain and strided. The
// strided kernels are measured through a unary adapter that spreads the
// inputs and results with an increment of 3.
#include <orv/vtm.h>

#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

constexpr double kOneUlp = 1.0;

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

// A unary kernel shape over the strided table of a function.
template <typename T, auto* kTab, int kSlot>
void strided_adapter(int n, const T* a, T* r) {
    constexpr int inc = 3;
    std::vector<T> xs(static_cast<size_t>(n) * inc + 1), rs(static_cast<size_t>(n) * inc + 1);
    for (int i = 0; i < n; ++i) xs[static_cast<size_t>(i) * inc] = a[i];
    (*kTab)[kSlot](n, xs.data(), inc, rs.data(), inc);
    for (int i = 0; i < n; ++i) r[i] = rs[static_cast<size_t>(i) * inc];
}

#define ADAPT(T, TY, FN)                                                                       \
    void (*const kAdapt_##T##FN##I[3])(int, const TY*, TY*) = {                                 \
        strided_adapter<TY, &orv_vtm_kernel_##T##FN##I_ttab, 0>,                                \
        strided_adapter<TY, &orv_vtm_kernel_##T##FN##I_ttab, 1>,                                \
        strided_adapter<TY, &orv_vtm_kernel_##T##FN##I_ttab, 2>};
#define ADAPT2(FN) ADAPT(s, float, FN) ADAPT(d, double, FN)
ADAPT2(Exp) ADAPT2(Exp2) ADAPT2(Exp10) ADAPT2(Expm1) ADAPT2(Ln) ADAPT2(Log2) ADAPT2(Log10)
ADAPT2(Log1p) ADAPT2(Logb)

#define ROW(T, FN, REF, DOM, B, TH)                                                            \
    Function{#T #FN, *#T, Shape::Unary, (const void*)orv_vtm_kernel_##T##FN##_ttab, REF,        \
             Domain::DOM, {B, B, B}, TH},                                                       \
        Function{#T #FN "I", *#T, Shape::Unary, (const void*)kAdapt_##T##FN##I, REF,           \
                 Domain::DOM, {B, B, B}, TH}

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
                                    709.782712893384};
const std::vector<double> kLog = {1.0, 0x1p-126, 0x1p-1022, 0.6855, 1.371};
const std::vector<double> kLog1p = {-1.0, 0x1p-57, 0x1p-13, 1.0};
const std::vector<double> kNone = {};

const Register reg({
    ROW(s, Exp, exp_, All, kOneUlp, kExpS),       ROW(d, Exp, exp_, All, kOneUlp, kExpD),
    ROW(s, Exp2, exp2_, All, kOneUlp, kExp2S),    ROW(d, Exp2, exp2_, All, kOneUlp, kExp2D),
    ROW(s, Exp10, exp10_, All, kOneUlp, kExp10S), ROW(d, Exp10, exp10_, All, kOneUlp, kExp10D),
    ROW(s, Expm1, expm1_, All, kOneUlp, kExpm1),  ROW(d, Expm1, expm1_, All, kOneUlp, kExpm1),
    ROW(s, Ln, ln_, Positive, kOneUlp, kLog),     ROW(d, Ln, ln_, Positive, kOneUlp, kLog),
    ROW(s, Log2, log2_, Positive, kOneUlp, kLog), ROW(d, Log2, log2_, Positive, kOneUlp, kLog),
    ROW(s, Log10, log10_, Positive, kOneUlp, kLog), ROW(d, Log10, log10_, Positive, kOneUlp, kLog),
    ROW(s, Log1p, log1p_, All, kOneUlp, kLog1p),  ROW(d, Log1p, log1p_, All, kOneUlp, kLog1p),
    ROW(s, Logb, logb_, All, kOneUlp, kNone),     ROW(d, Logb, logb_, All, kOneUlp, kNone),
});

}  // namespace
}  // namespace accuracy
