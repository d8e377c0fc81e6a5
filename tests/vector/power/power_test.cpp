// The scalar-exponent loop of Powx against Pow, plain and strided; exact
// single powers. The
// special cases, statuses and exact results of the power and root kernels
// are rows of tests/vector/edges_test.cpp.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"

namespace {

// Powx against Pow with the exponent repeated, bit for bit in the HA slot,
// and its strided form against its plain one, over every slot.
template <typename T>
void powx_matches() {
    const int n = 37;
    std::vector<T> a(n), b(n), want(n), got(n);
    for (int i = 0; i < n; ++i) a[i] = T(0.37) * T(i - 9);  // zero and negatives call out
    for (T e : {T(2.5), T(-3), T(1e-3), T(40)}) {
        ErrorCapture cap;
        std::fill(b.begin(), b.end(), e);
        if constexpr (sizeof(T) == 4) {
            _vtmsPow(n, a.data(), b.data(), want.data());
            _vtmsPowx(n, a.data(), e, got.data());
        } else {
            _vtmdPow(n, a.data(), b.data(), want.data());
            _vtmdPowx(n, a.data(), e, got.data());
        }
        EXPECT_EQ(std::memcmp(want.data(), got.data(), n * sizeof(T)), 0) << e;
        for (int slot = 0; slot < 3; ++slot) {
            std::vector<T> plain(n), strided(2 * n, T(-7));
            if constexpr (sizeof(T) == 4) {
                orv_vtm_kernel_sPowx_ttab[slot](n, a.data(), e, plain.data());
                orv_vtm_kernel_sPowxI_ttab[slot](n / 2, a.data(), 2, e, strided.data(), 4);
            } else {
                orv_vtm_kernel_dPowx_ttab[slot](n, a.data(), e, plain.data());
                orv_vtm_kernel_dPowxI_ttab[slot](n / 2, a.data(), 2, e, strided.data(), 4);
            }
            for (int i = 0; i < n / 2; ++i) {
                EXPECT_TRUE(std::memcmp(&strided[4 * i], &plain[2 * i], sizeof(T)) == 0 ||
                            (std::isnan(strided[4 * i]) && std::isnan(plain[2 * i])))
                    << "slot " << slot << " i " << i;
                EXPECT_EQ(strided[4 * i + 1], T(-7));
            }
        }
    }
}
TEST(Powx, MatchesPowAndStridedMatchesPlain) {
    powx_matches<float>();
    powx_matches<double>();
}

// Exact powers come back exact from the single step (its error before the
// one rounding is far below half an ulp): b^n for integer bases and
// exponents whose result a float holds, and (1 + 2^-k)^2 near 1.
TEST(SinglePow, ExactPowersAreExact) {
    std::vector<float> x, y, want;
    for (int b = 2; b < 64; ++b)
        for (int n = -40; n <= 40; ++n) {
            const double v = std::pow(double(b), double(n));
            if (v > 0x1p-126 && v < 0x1p127 && double(float(v)) == v) x.push_back(float(b)), y.push_back(float(n)), want.push_back(float(v));
        }
    for (int k = 1; k <= 11; ++k) {
        const double b = 1.0 + std::ldexp(1.0, -k);
        x.push_back(float(b)), y.push_back(2.0f), want.push_back(float(b * b));
        x.push_back(float(b * b)), y.push_back(0.5f), want.push_back(float(b));
    }
    const int n = int(x.size());
    std::vector<float> r(n), rr(n);
    _vtmsPow_HA(n, x.data(), y.data(), r.data());
    _vtmsPowr_HA(n, x.data(), y.data(), rr.data());
    for (int i = 0; i < n; ++i) {
        EXPECT_EQ(r[i], want[i]) << x[i] << "^" << y[i];
        EXPECT_EQ(rr[i], want[i]) << x[i] << "^" << y[i];
        float px;
        _vtmsPowx_HA(1, &x[i], y[i], &px);
        EXPECT_EQ(px, want[i]) << x[i] << "^" << y[i];
    }
}

// The strided error record carries the element's ordinal.
TEST(Powx, StridedRecordIndexIsTheOrdinal) {
    ErrorCapture cap;
    const double a[8] = {1, 2, 3, -1, 5, 6, -2, 8};
    double r[8];
    _vtmdPowxI(4, a, 2, 0.5, r, 2);  // elements 1, 3, -2, ... : the third is -2
    ASSERT_EQ(cap.errors().size(), 1u);
    EXPECT_EQ(cap.errors()[0].index, 3);
    EXPECT_EQ(cap.errors()[0].code, 1);
    EXPECT_EQ(cap.errors()[0].name, "vdPowx");
}

}  // namespace
