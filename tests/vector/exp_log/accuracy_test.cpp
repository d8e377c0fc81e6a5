// Accuracy of the exponential and logarithm kernels against MPFR: at most
// one ulp over 4*10^4 inputs for each plain kernel and 10^4 for each strided
// one, the inputs spread over the whole domain, denormals included.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "frame/kernel_tables.h"
#include "mpfr_ref.h"

namespace {

using explog_test::MpfrFn;

enum class Domain { Exp, Exp2, Exp10, Expm1, Log, Log1p };

int mpfr_logb_exact(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t) {
    if (mpfr_zero_p(x)) return mpfr_set_inf(r, -1), 0;
    if (mpfr_inf_p(x)) return mpfr_set_inf(r, 1), 0;
    return mpfr_set_si(r, mpfr_get_exp(x) - 1, MPFR_RNDN);
}

struct Case {
    const char* name;
    void (*plain_s)(int, const float*, float*);
    void (*strided_s)(int, const float*, int, float*, int);
    void (*plain_d)(int, const double*, double*);
    void (*strided_d)(int, const double*, int, double*, int);
    MpfrFn ref;
    Domain dom;
};

// Inputs: half uniform over the interesting range, half with a uniform
// exponent and random sign, so that tiny and denormal arguments appear.
template <typename T>
std::vector<T> inputs(Domain dom, int n, uint32_t seed) {
    std::mt19937_64 g(seed);
    const bool single = sizeof(T) == 4;
    double lo = 0.0, hi = 0.0;
    switch (dom) {
        case Domain::Exp: lo = single ? -104 : -746; hi = single ? 89 : 710; break;
        case Domain::Exp2: lo = single ? -151 : -1076; hi = single ? 129 : 1025; break;
        case Domain::Exp10: lo = single ? -46 : -324; hi = single ? 39 : 309; break;
        case Domain::Expm1: lo = single ? -20 : -40; hi = single ? 89 : 710; break;
        case Domain::Log: lo = 0.25; hi = 4; break;
        case Domain::Log1p: lo = -1; hi = 2; break;
    }
    std::uniform_real_distribution<double> u(lo, hi);
    std::vector<T> v(n);
    for (int i = 0; i < n; ++i) {
        if (i % 4 == 2 && (dom == Domain::Log || dom == Domain::Log1p)) {
            // Near 1 (near 0 for Log1p), where the logarithms cancel.
            const double d = std::uniform_real_distribution<double>(-0x1p-6, 0x1p-6)(g);
            v[i] = static_cast<T>(dom == Domain::Log ? 1.0 + d : d);
        } else if (i % 2 == 0) {
            v[i] = static_cast<T>(u(g));
        } else if (dom == Domain::Log) {
            // Any positive finite bit pattern, denormals included.
            if (single) {
                uint32_t b = static_cast<uint32_t>(g()) % 0x7F800000u;
                std::memcpy(&v[i], &b, 4);
            } else {
                uint64_t b = g() % 0x7FF0000000000000ull;
                std::memcpy(&v[i], &b, 8);
            }
        } else {
            const int emin = dom == Domain::Log1p ? -60 : (single ? -150 : -1075);
            std::uniform_int_distribution<int> e(emin, dom == Domain::Log1p ? 60 : 3);
            const double m = std::ldexp(1.0 + std::uniform_real_distribution<double>(0, 1)(g), e(g));
            v[i] = static_cast<T>((g() & 1) ? m : -m);
            if (dom == Domain::Log1p && v[i] <= -1) v[i] = static_cast<T>(m);
        }
    }
    return v;
}

template <typename T>
double worst(const Case& c, int n, int stride, std::string* where) {
    const std::vector<T> x = inputs<T>(c.dom, n, 12345u + stride);
    std::vector<T> xs(static_cast<size_t>(n) * stride), rs(static_cast<size_t>(n) * stride);
    for (int i = 0; i < n; ++i) xs[static_cast<size_t>(i) * stride] = x[i];
    if constexpr (sizeof(T) == 4) {
        stride == 1 ? c.plain_s(n, xs.data(), rs.data()) : c.strided_s(n, xs.data(), stride, rs.data(), stride);
    } else {
        stride == 1 ? c.plain_d(n, xs.data(), rs.data()) : c.strided_d(n, xs.data(), stride, rs.data(), stride);
    }
    double w = 0;
    for (int i = 0; i < n; ++i) {
        const T y = rs[static_cast<size_t>(i) * stride];
        const double e = sizeof(T) == 4 ? explog_test::ulp_error_s(static_cast<float>(x[i]), static_cast<float>(y), c.ref)
                                        : explog_test::ulp_error_d(x[i], y, c.ref);
        if (e > w) {
            w = e;
            char buf[128];
            std::snprintf(buf, sizeof buf, "x=%.17g y=%.17g", static_cast<double>(x[i]), static_cast<double>(y));
            *where = buf;
        }
    }
    return w;
}

class Accuracy : public ::testing::TestWithParam<Case> {
protected:
    void SetUp() override { _vtmSetMode(VTM_ERRMODE_NOERR); }
};

TEST_P(Accuracy, SingleWithinOneUlp) {
    std::string at;
    EXPECT_LE(worst<float>(GetParam(), 40000, 1, &at), 1.0) << at;
    EXPECT_LE(worst<float>(GetParam(), 10000, 3, &at), 1.0) << "strided " << at;
}

TEST_P(Accuracy, DoubleWithinOneUlp) {
    std::string at;
    EXPECT_LE(worst<double>(GetParam(), 40000, 1, &at), 1.0) << at;
    EXPECT_LE(worst<double>(GetParam(), 10000, 3, &at), 1.0) << "strided " << at;
}

#define CASE(Fn, mp, dom) \
    Case{#Fn, orv_kern_s##Fn, orv_kern_s##Fn##I, orv_kern_d##Fn, orv_kern_d##Fn##I, mp, Domain::dom}

INSTANTIATE_TEST_SUITE_P(
    ExpLog, Accuracy,
    ::testing::Values(CASE(Exp, mpfr_exp, Exp), CASE(Exp2, mpfr_exp2, Exp2), CASE(Exp10, mpfr_exp10, Exp10),
                      CASE(Expm1, mpfr_expm1, Expm1), CASE(Ln, mpfr_log, Log), CASE(Log2, mpfr_log2, Log),
                      CASE(Log10, mpfr_log10, Log), CASE(Log1p, mpfr_log1p, Log1p),
                      CASE(Logb, mpfr_logb_exact, Log)),
    [](const ::testing::TestParamInfo<Case>& i) { return std::string(i.param.name); });

}  // namespace
