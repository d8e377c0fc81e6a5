// The scalar-exponent loop of Powx against Pow, plain and strided; exact
// single powers; denormal double results rounded once. The
// special cases, statuses and exact results of the power and root kernels
// are rows of tests/vector/edges_test.cpp.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
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

// Denormal results round once: x^2 for x in [2^-512, 2^-511) against the
// square rounded by integer arithmetic (a sum rounded to 53 bits and then
// to the denormal grid can land 0.75 ulp off).
TEST(DoublePow, DenormalSquaresRoundOnce) {
    const int n = 4096;
    std::vector<double> x(n), two(n, 2.0), r(n);
    uint64_t s = 12345;
    for (auto& v : x) {
        s = s * 6364136223846793005ull + 1442695040888963407ull;
        v = std::ldexp(1.0 + double(s >> 12) * 0x1p-52, -512);
    }
    _vtmdPow_HA(n, x.data(), two.data(), r.data());
    using U = unsigned __int128;
    for (int i = 0; i < n; ++i) {
        const U m = U(uint64_t(std::ldexp(x[i], 564)));  // x = m 2^-564, x^2 = m^2 2^-1128
        const U got = U(uint64_t(r[i] * 0x1p1000 * 0x1p74)) << 54;  // in units of 2^-1128, exact
        const U diff = got > m * m ? got - m * m : m * m - got;
        EXPECT_LE(double(diff), 0x1p53 + 0x1p50) << std::hexfloat << x[i];  // 0.5625 ulp (an ulp is 2^54)
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
