// Sinpi, Cospi, Tanpi, Sind, Cosd, Tand and SinCospi in every tier slot: the
// exact values at multiples of a quarter turn (signed zeros, poles, large
// arguments, which are all integers or half-integers), infinities and NaN
// with their statuses, the exactness of the reduction (a period added or the
// sign turned gives the same bits), a huge lane inside a block, and SinCospi
// against Sinpi and Cospi. Accuracy on random inputs is measured by
// tools/accuracy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
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
    int inf_status_s, inf_status_d;
};

const Fn kFns[] = {
    {"Sinpi", orv_vtm_kernel_sSinpi_ttab, orv_vtm_kernel_dSinpi_ttab, 2, Odd, 0, 1},
    {"Cospi", orv_vtm_kernel_sCospi_ttab, orv_vtm_kernel_dCospi_ttab, 2, Even, 0, 1},
    {"Tanpi", orv_vtm_kernel_sTanpi_ttab, orv_vtm_kernel_dTanpi_ttab, 2, Odd, 1, 1},
    {"Sind", orv_vtm_kernel_sSind_ttab, orv_vtm_kernel_dSind_ttab, 360, Odd, 1, 1},
    {"Cosd", orv_vtm_kernel_sCosd_ttab, orv_vtm_kernel_dCosd_ttab, 360, Even, 1, 1},
    {"Tand", orv_vtm_kernel_sTand_ttab, orv_vtm_kernel_dTand_ttab, 360, Odd, 1, 1},
};

const Fn& fn(const std::string& name) {
    for (const Fn& f : kFns)
        if (name == f.name) return f;
    throw std::runtime_error(name);
}

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

struct Exact {
    const char* fn;
    double x, want;
};

const double kInf = std::numeric_limits<double>::infinity();
const Exact kExact[] = {
    {"Sinpi", 1, 0.0},        {"Sinpi", -1, -0.0},      {"Sinpi", 0.5, 1},
    {"Sinpi", -0.5, -1},      {"Sinpi", 1.5, -1},       {"Sinpi", -0.0, -0.0},
    {"Sinpi", 0x1p22 + 0.5, 1}, {"Sinpi", 0x1p60, 0.0}, {"Sinpi", -0x1p60, -0.0},
    {"Cospi", 0.5, 0.0},      {"Cospi", -0.5, 0.0},     {"Cospi", 1.5, 0.0},
    {"Cospi", 1, -1},         {"Cospi", 0, 1},          {"Cospi", 0x1p22 + 1, -1},
    {"Cospi", 0x1p60, 1},     {"Tanpi", 1, -0.0},       {"Tanpi", -1, 0.0},
    {"Tanpi", 2, 0.0},        {"Tanpi", 0.5, kInf},     {"Tanpi", -0.5, -kInf},
    {"Tanpi", 1.5, -kInf},    {"Tanpi", 2.5, kInf},     {"Tanpi", 0x1p22 + 1, -0.0},
    {"Tanpi", 0x1p60, 0.0},   {"Sind", 180, 0.0},       {"Sind", -180, -0.0},
    {"Sind", 90, 1},          {"Sind", 270, -1},        {"Sind", 360 * 0x1p40, 0.0},
    {"Cosd", 90, 0.0},        {"Cosd", 270, 0.0},       {"Cosd", 180, -1},
    {"Cosd", 0, 1},           {"Cosd", 360 * 0x1p40, 1}, {"Tand", 180, -0.0},
    {"Tand", 90, kInf},       {"Tand", -90, -kInf},     {"Tand", 270, -kInf},
    {"Tand", 360, 0.0},       {"Tand", 180.0 * 131073, -0.0},
};

// Each value alone (tail block) and in lane 9 of a block of 0.3, with no status.
template <typename T>
void exact_values() {
    for (const Exact& e : kExact) {
        const Fn& f = fn(e.fn);
        for (int slot = 0; slot < 3; ++slot) {
            ErrorCapture cap;
            std::vector<T> one{T(e.x)}, block(16, T(0.3)), r1, r16;
            block[9] = T(e.x);
            run(f, slot, one, r1);
            run(f, slot, block, r16);
            for (T got : {r1[0], r16[9]})
                EXPECT_TRUE(same_bits(got, T(e.want)))
                    << (sizeof(T) == 4 ? "s" : "d") << f.name << "(" << e.x << ") slot " << slot
                    << " gave " << got;
            EXPECT_EQ(_vtmGetErrStatus(), 0) << f.name << "(" << e.x << ")";
        }
    }
}

TEST(TrigPi, ExactValuesZerosAndPoles) {
    exact_values<float>();
    exact_values<double>();
}

// Infinity: NaN and the function's status at the element's index, with the
// function's name; NaN: NaN and nothing reported.
template <typename T>
void infinities_and_nan(const Fn& f, int slot) {
    const T inf = std::numeric_limits<T>::infinity();
    const int status = sizeof(T) == 4 ? f.inf_status_s : f.inf_status_d;
    ErrorCapture cap;
    std::vector<T> a(16, T(0.25)), r;
    a[3] = -inf, a[8] = std::numeric_limits<T>::quiet_NaN();
    run(f, slot, a, r);
    EXPECT_TRUE(std::isnan(r[3]) && std::isnan(r[8])) << f.name;
    if (status == 0) {
        EXPECT_TRUE(cap.errors().empty()) << f.name;
    } else {
        ASSERT_EQ(cap.errors().size(), 1u) << f.name;
        EXPECT_EQ(cap.errors()[0].index, 3);
        EXPECT_EQ(cap.errors()[0].code, status);
        EXPECT_EQ(cap.errors()[0].name, std::string(sizeof(T) == 4 ? "vs" : "vd") + f.name);
    }
    EXPECT_EQ(_vtmGetErrStatus(), status) << f.name;
}

TEST(TrigPi, InfinitiesAndNaN) {
    for (const Fn& f : kFns)
        for (int slot = 0; slot < 3; ++slot) {
            infinities_and_nan<float>(f, slot);
            infinities_and_nan<double>(f, slot);
        }
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

TEST(TrigPi, ReductionIsExact) {
    for (const Fn& f : kFns)
        for (int slot = 0; slot < 3; ++slot) {
            reduction_exact<float>(f, slot);
            reduction_exact<double>(f, slot);
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

TEST(TrigPi, HugeLaneInABlock) {
    for (const Fn& f : kFns)
        for (int slot = 0; slot < 3; ++slot) {
            huge_lane<double>(f, slot, 1e300);
            huge_lane<float>(f, slot, 1e30f);
        }
}

// SinCospi gives the HA Sinpi and Cospi bit for bit, plain and strided, and
// reports an infinite element once in double and not at all in single.
template <typename T>
void sincospi_matches(void (*sc)(int, const T*, T*, T*),
                      void (*sci)(int, const T*, int, T*, int, T*, int)) {
    std::mt19937_64 g(5);
    const int n = 37;
    std::vector<T> a(n), s(n), c(n), st(3 * n), ct(2 * n), s2, c2;
    for (T& v : a) v = std::ldexp(T(double(g() >> 11) * 0x1p-53 - 0.5), int(g() % 80) - 10);
    a[4] = std::numeric_limits<T>::infinity();
    a[20] = std::numeric_limits<T>::quiet_NaN();
    a[30] = T(1e30);
    run(fn("Sinpi"), 1, a, s2);
    run(fn("Cospi"), 1, a, c2);
    ErrorCapture cap;
    sc(n, a.data(), s.data(), c.data());
    ASSERT_EQ(cap.errors().size(), sizeof(T) == 4 ? 0u : 1u);
    if (sizeof(T) == 8) {
        EXPECT_EQ(cap.errors()[0].index, 4);
    }
    sci(n, a.data(), 1, st.data(), 3, ct.data(), 2);
    for (int i = 0; i < n; ++i) {
        if (std::isnan(s2[i])) {
            EXPECT_TRUE(std::isnan(s[i]) && std::isnan(c[i]) && std::isnan(st[3 * i])) << i;
            continue;
        }
        EXPECT_TRUE(same_bits(s[i], s2[i]) && same_bits(c[i], c2[i])) << i;
        EXPECT_TRUE(same_bits(st[3 * i], s2[i]) && same_bits(ct[2 * i], c2[i])) << i;
    }
}

TEST(TrigPi, SinCospiIsSinpiAndCospi) {
    sincospi_matches<float>(orv_kern_sSinCospi, orv_kern_sSinCospiI);
    sincospi_matches<double>(orv_kern_dSinCospi, orv_kern_dSinCospiI);
}

}  // namespace
