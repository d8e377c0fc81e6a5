// Special cases, statuses, exact results and the scalar-exponent loop of
// the power and root kernels, in single and double, each value alone (tail
// block) and in lane 5 of a full block.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A function by its plain HA entries: unary, binary or with one exponent.
struct Fn {
    const char* name;
    void (*s1)(int, const float*, float*);
    void (*d1)(int, const double*, double*);
    void (*s2)(int, const float*, const float*, float*);
    void (*d2)(int, const double*, const double*, double*);
    void (*sx)(int, const float*, float, float*);
    void (*dx)(int, const double*, double, double*);
};
const Fn kPow{"Pow", nullptr, nullptr, _vtmsPow, _vtmdPow, nullptr, nullptr};
const Fn kPowx{"Powx", nullptr, nullptr, nullptr, nullptr, _vtmsPowx, _vtmdPowx};
const Fn kPowr{"Powr", nullptr, nullptr, _vtmsPowr, _vtmdPowr, nullptr, nullptr};
const Fn kHypot{"Hypot", nullptr, nullptr, _vtmsHypot, _vtmdHypot, nullptr, nullptr};
const Fn kCbrt{"Cbrt", _vtmsCbrt, _vtmdCbrt, nullptr, nullptr, nullptr, nullptr};
const Fn kInvCbrt{"InvCbrt", _vtmsInvCbrt, _vtmdInvCbrt, nullptr, nullptr, nullptr, nullptr};
const Fn kPow2o3{"Pow2o3", _vtmsPow2o3, _vtmdPow2o3, nullptr, nullptr, nullptr, nullptr};
const Fn kPow3o2{"Pow3o2", _vtmsPow3o2, _vtmdPow3o2, nullptr, nullptr, nullptr, nullptr};

// f(x, y) at index 'at' of n elements (the others 0.75), with the status
// and the error records of the call.
template <typename T>
T call(const Fn& f, T x, T y, int n, int at, ErrorCapture& cap) {
    // Powx applies y to every lane: the others get 1, which reports nothing.
    std::vector<T> a(n, f.sx ? T(1) : T(0.75)), b(n, T(0.75)), r(n);
    a[at] = x;
    b[at] = y;
    if constexpr (sizeof(T) == 4) {
        if (f.s1) f.s1(n, a.data(), r.data());
        if (f.s2) f.s2(n, a.data(), b.data(), r.data());
        if (f.sx) f.sx(n, a.data(), y, r.data());
    } else {
        if (f.d1) f.d1(n, a.data(), r.data());
        if (f.d2) f.d2(n, a.data(), b.data(), r.data());
        if (f.dx) f.dx(n, a.data(), y, r.data());
    }
    (void)cap;
    return r[at];
}

template <typename T>
bool same(T got, double want) {
    if (std::isnan(want)) return std::isnan(got);
    const T w = T(want);
    return std::memcmp(&got, &w, sizeof(T)) == 0;  // the sign of a zero counts
}

struct Case {
    const Fn* f;
    double x, y, want;  // want as the result of both types, NaN for any NaN
    int status;
    char only = 0;  // 's' or 'd' for a row of one type
};

std::string show(const Case& c) {
    return std::string(c.f->name) + "(" + std::to_string(c.x) + ", " + std::to_string(c.y) + ")";
}

template <typename T>
void check(const Case& c) {
    const char t = sizeof(T) == 4 ? 's' : 'd';
    if (c.only && c.only != t) return;
    for (int n : {1, 16}) {
        ErrorCapture cap;
        const int at = n == 1 ? 0 : 5;
        const T got = call<T>(*c.f, T(c.x), T(c.y), n, at, cap);
        EXPECT_TRUE(same(got, c.want)) << t << show(c) << " n=" << n << " gave " << got;
        EXPECT_EQ(_vtmGetErrStatus(), c.status) << t << show(c) << " n=" << n;
        ASSERT_EQ(cap.errors().size(), c.status ? 1u : 0u) << t << show(c);
        if (c.status) {
            EXPECT_EQ(cap.errors()[0].index, at);
            EXPECT_EQ(cap.errors()[0].name, std::string("v") + t + c.f->name);
        }
    }
}

class Special : public ::testing::TestWithParam<Case> {};
TEST_P(Special, SingleAndDouble) {
    check<float>(GetParam());
    check<double>(GetParam());
}

// The special cases of pow in the C standard's Annex F, for Pow and for
// Powx (the exponent as its scalar).
std::vector<Case> annex_f() {
    const std::vector<Case> base = {
        {&kPow, kNaN, 0.0, 1, 0},    {&kPow, -kInf, -0.0, 1, 0},  {&kPow, -0.0, 0.0, 1, 0},
        {&kPow, -2.5, -0.0, 1, 0},   {&kPow, 1, kNaN, 1, 0},      {&kPow, 1, -kInf, 1, 0},
        {&kPow, 1, 1e30, 1, 0},      {&kPow, -1, kInf, 1, 0},     {&kPow, -1, -kInf, 1, 0},
        {&kPow, -0.0, -3, -kInf, 2}, {&kPow, 0.0, -3, kInf, 2},   {&kPow, -0.0, -2, kInf, 2},
        {&kPow, -0.0, -0.5, kInf, 2}, {&kPow, -0.0, -kInf, kInf, 0}, {&kPow, -0.0, 3, -0.0, 0},
        {&kPow, -0.0, 2, 0.0, 0},    {&kPow, -0.0, 0.5, 0.0, 0},  {&kPow, 0.0, kInf, 0.0, 0},
        {&kPow, -kInf, -3, -0.0, 0}, {&kPow, -kInf, -2, 0.0, 0},  {&kPow, -kInf, 3, -kInf, 0},
        {&kPow, -kInf, 2.5, kInf, 0}, {&kPow, kInf, -1, 0.0, 0},  {&kPow, kInf, 0.5, kInf, 0},
        {&kPow, -0.5, -kInf, kInf, 0}, {&kPow, -2, -kInf, 0.0, 0}, {&kPow, 0.5, kInf, 0.0, 0},
        {&kPow, -2, kInf, kInf, 0},  {&kPow, kNaN, 1, kNaN, 0},   {&kPow, 2, kNaN, kNaN, 0},
        {&kPow, -2, 3, -8, 0},       {&kPow, -2, 2, 4, 0},        {&kPow, -8, 1.0 / 3, kNaN, 1},
    };
    std::vector<Case> v = base;
    for (Case c : base) v.push_back((c.f = &kPowx, c));
    return v;
}
INSTANTIATE_TEST_SUITE_P(AnnexF, Special, ::testing::ValuesIn(annex_f()));

// One row for each status of each function (the table in docs/vector-power.md),
// and the values near the extremes where nothing may be reported.
INSTANTIATE_TEST_SUITE_P(
    Statuses, Special,
    ::testing::Values(Case{&kPow, -2, 0.5, kNaN, 1}, Case{&kPow, 0.0, -1, kInf, 2},
                      Case{&kPow, 10, 400, kInf, 3}, Case{&kPow, -10, 401, -kInf, 3},
                      Case{&kPow, 10, -400, 0.0, 4}, Case{&kPow, -10, -401, -0.0, 4},
                      Case{&kPowx, -3, 2.5, kNaN, 1}, Case{&kPowx, -0.0, -1, -kInf, 2},
                      Case{&kPowr, -2, 2, kNaN, 1}, Case{&kPowr, 0.0, 0.0, kNaN, 1},
                      Case{&kPowr, kInf, 0.0, kNaN, 1}, Case{&kPowr, 1, kInf, kNaN, 1},
                      Case{&kPowr, -0.0, -2, kInf, 2}, Case{&kPowr, -0.0, 3, 0.0, 0},
                      Case{&kPowr, 10, 400, kInf, 3}, Case{&kPowr, 10, -400, 0.0, 4},
                      Case{&kPow3o2, -1, 0, kNaN, 1}, Case{&kPow3o2, -0.0, 0, 0.0, 0},
                      Case{&kPow3o2, 1e300, 0, kInf, 3, 'd'}, Case{&kPow3o2, 1e-300, 0, 0.0, 4, 'd'},
                      Case{&kPow3o2, 1e30, 0, kInf, 3, 's'}, Case{&kPow3o2, 1e-32, 0, 0.0, 4, 's'},
                      Case{&kPow3o2, 0x1p600, 0, 0x1p900, 0, 'd'}, Case{&kPow3o2, 0x1p80, 0, 0x1p120, 0, 's'},
                      Case{&kInvCbrt, 0.0, 0, kInf, 2}, Case{&kInvCbrt, -0.0, 0, -kInf, 2},
                      Case{&kInvCbrt, -kInf, 0, -0.0, 0}, Case{&kCbrt, -0.0, 0, -0.0, 0},
                      Case{&kHypot, 1.5e308, -1.5e308, kInf, 3, 'd'}, Case{&kHypot, 3e38, 3e38, kInf, 3, 's'},
                      Case{&kHypot, 0x3p1021, 0x4p1021, 0x5p1021, 0, 'd'},
                      Case{&kHypot, 0x3p125, -0x4p125, 0x5p125, 0, 's'},
                      Case{&kHypot, 0x1p-1074, 0x1p-1074, 0x1p-1074, 4, 'd'},
                      Case{&kHypot, kInf, kNaN, kInf, 0},
                      Case{&kHypot, kNaN, -kInf, kInf, 0}, Case{&kHypot, -0.0, 0.0, 0.0, 0}));

// Exact results, which the final corrections must reach in both types.
INSTANTIATE_TEST_SUITE_P(
    Exact, Special,
    ::testing::Values(Case{&kPow, 3, 13, 1594323, 0}, Case{&kPow, 0.25, -2.5, 32, 0},
                      Case{&kPow, 2, -10, 0x1p-10, 0}, Case{&kPowx, 6, 2, 36, 0},
                      Case{&kPowr, 4, 1.5, 8, 0}, Case{&kCbrt, -343, 0, -7, 0},
                      Case{&kCbrt, 0x1p-129, 0, 0x1p-43, 0}, Case{&kInvCbrt, 0x1p-90, 0, 0x1p30, 0},
                      Case{&kInvCbrt, -0.125, 0, -2, 0}, Case{&kPow2o3, -27, 0, 9, 0},
                      Case{&kPow2o3, 0x1p-141, 0, 0x1p-94, 0}, Case{&kPow3o2, 9, 0, 27, 0},
                      Case{&kPow3o2, 0x1p-100, 0, 0x1p-150, 4, 's'}, Case{&kHypot, -3, 4, 5, 0},
                      Case{&kHypot, 0x1p-140, 0x1p-140, 0x1.6a09e6p-140, 4, 's'},
                      Case{&kHypot, 0x3p-1000, -0x4p-1000, 0x5p-1000, 0, 'd'},
                      Case{&kHypot, 0x3p-70, -0x4p-70, 0x5p-70, 0, 's'}));

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
                EXPECT_TRUE(same(strided[4 * i], double(plain[2 * i])) ||
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
