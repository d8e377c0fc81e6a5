// Sinpi, Cospi, Tanpi, Sind, Cosd and Tand in every tier slot: the
// reduction is exact (a period added or the sign turned gives the same
// bits) and a huge lane inside a block is computed as alone. Their exact
// values, infinities and NaN are rows of tests/vector/edges_test.cpp;
// accuracy on random inputs is measured by tools/accuracy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

using KS = void (*)(int, const float*, float*);
using KD = void (*)(int, const double*, double*);

enum Parity { Odd, Even };

struct Fn {
    const char* name;
    const KS* s;  // three slots
    const KD* d;
    double period;
    Parity parity;
};

const Fn kFns[] = {
    {"Sinpi", orv_vtm_kernel_sSinpi_ttab, orv_vtm_kernel_dSinpi_ttab, 2, Odd},
    {"Cospi", orv_vtm_kernel_sCospi_ttab, orv_vtm_kernel_dCospi_ttab, 2, Even},
    {"Tanpi", orv_vtm_kernel_sTanpi_ttab, orv_vtm_kernel_dTanpi_ttab, 2, Odd},
    {"Sind", orv_vtm_kernel_sSind_ttab, orv_vtm_kernel_dSind_ttab, 360, Odd},
    {"Cosd", orv_vtm_kernel_sCosd_ttab, orv_vtm_kernel_dCosd_ttab, 360, Even},
    {"Tand", orv_vtm_kernel_sTand_ttab, orv_vtm_kernel_dTand_ttab, 360, Odd},
};

template <typename T>
void run(const Fn& f, int slot, const std::vector<T>& a, std::vector<T>& r) {
    r.resize(a.size());
    if constexpr (sizeof(T) == 4)
        f.s[slot](int(a.size()), a.data(), r.data());
    else
        f.d[slot](int(a.size()), a.data(), r.data());
}

template <typename T>
bool same_bits(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The reduction is exact: x and x plus a period give the same bits, and -x
// gives the same bits (even functions) or the negated ones (odd).
template <typename T>
void reduction_exact(const Fn& f, int slot) {
    std::mt19937_64 g(12);
    std::vector<T> a, ap, an, r, rp, rn;
    for (int i = 0; i < 400; ++i) {
        // Multiples of 2^-10 below 2^12, so that adding the period is exact.
        const T x = T(double(g() % (1u << 22)) * 0x1p-10);
        a.push_back(x), ap.push_back(x + T(f.period)), an.push_back(-x);
    }
    run(f, slot, a, r);
    run(f, slot, ap, rp);
    run(f, slot, an, rn);
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_TRUE(same_bits(r[i], rp[i])) << f.name << slot << " " << a[i];
        EXPECT_TRUE(same_bits(f.parity == Odd ? T(-r[i]) : r[i], rn[i]) || std::isinf(r[i]))
            << f.name << slot << " " << a[i];
    }
}

// A huge lane (the callout) among fifteen of 0.3: those fifteen as in a block
// of 0.3 alone, the huge one as computed alone, no status.
template <typename T>
void huge_lane(const Fn& f, int slot, T huge) {
    ErrorCapture cap;
    std::vector<T> plain(16, T(0.3)), mixed = plain, one{huge}, rp, rm, r1;
    mixed[7] = huge;
    run(f, slot, plain, rp);
    run(f, slot, mixed, rm);
    run(f, slot, one, r1);
    for (int l = 0; l < 16; ++l)
        EXPECT_TRUE(same_bits(rm[l], l == 7 ? r1[0] : rp[l])) << f.name << slot << " lane " << l;
    EXPECT_EQ(_vtmGetErrStatus(), 0);
}

TEST(TrigPi, ReductionIsExactAndAHugeLaneIsAsAlone) {
    for (const Fn& f : kFns)
        for (int slot = 0; slot < 3; ++slot) {
            reduction_exact<float>(f, slot);
            reduction_exact<double>(f, slot);
            huge_lane<double>(f, slot, 1e300);
            huge_lane<float>(f, slot, 1e30f);
        }
}

}  // namespace
