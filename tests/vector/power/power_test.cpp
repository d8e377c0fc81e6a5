// The scalar-exponent loop of Powx against Pow, plain and strided. The
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
