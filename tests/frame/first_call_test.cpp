// The shortest path through the library: stub, table, dAdd/dSub/dMul, with
// the floating-point state guarded and the caller's rounding honoured.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>
#include <vector>

#include <orv/vtm.h>

#include "frame/fp_guard.h"

namespace fr = orv::frame;

namespace {

using Binary = void (*)(int, const double*, const double*, double*);

struct Op {
    const char* name;
    Binary stubs[4];
    double (*ref)(double, double);
};

const Op kOps[] = {
    {"dAdd", {_vtmdAdd, _vtmdAdd_HA, _vtmdAdd_50, _vtmdAdd_26}, [](double x, double y) { return x + y; }},
    {"dSub", {_vtmdSub, _vtmdSub_HA, _vtmdSub_50, _vtmdSub_26}, [](double x, double y) { return x - y; }},
    {"dMul", {_vtmdMul, _vtmdMul_HA, _vtmdMul_50, _vtmdMul_26}, [](double x, double y) { return x * y; }},
};

void PrintTo(const Op& op, std::ostream* os) { *os << op.name; }

class FirstCall : public testing::TestWithParam<Op> {};

// Every tier's stub reaches a kernel that computes the operation; lengths
// are the vector conventions' test, through the plain stub.
TEST_P(FirstCall, EveryTierStubMatchesScalarArithmetic) {
    const Op& op = GetParam();
    const int n = 19;  // a block of 16 and a remainder
    std::vector<double> a(n + 1), b(n + 1);
    for (int i = 0; i < n; ++i) {
        a[i] = std::ldexp(1.0 + i / 7.0, i % 9 - 4) * (i % 3 ? 1 : -1);
        b[i] = 3.0 / (i + 1.5);
    }
    for (Binary f : op.stubs) {
        std::vector<double> r(n + 1, -7.0);
        f(n, a.data(), b.data(), r.data());
        for (int i = 0; i < n; ++i) ASSERT_EQ(r[i], op.ref(a[i], b[i])) << op.name << " i=" << i;
        EXPECT_EQ(r[n], -7.0) << "wrote past n";
    }
}

TEST_P(FirstCall, ResultMayAliasAnInput) {
    const Op& op = GetParam();
    std::vector<double> a(19), b(19), want(19);
    for (int i = 0; i < 19; ++i) {
        a[i] = i * 0.3 - 2;
        b[i] = 1.0 / (i + 1);
        want[i] = op.ref(a[i], b[i]);
    }
    op.stubs[0](19, a.data(), b.data(), a.data());
    EXPECT_EQ(a, want);
}

TEST_P(FirstCall, StridedFormsGatherAndScatter) {
    const Op& op = GetParam();
    auto* table = op.stubs[0] == _vtmdAdd ? orv_vtm_kernel_dAddI_ttab
                  : op.stubs[0] == _vtmdSub ? orv_vtm_kernel_dSubI_ttab
                                            : orv_vtm_kernel_dMulI_ttab;
    for (int inc : {1, 2, 3, -1}) {
        const int n = 21, span = n * 3 + 1;
        std::vector<double> a(span), b(span), r(span, 0.5);
        for (int i = 0; i < span; ++i) { a[i] = i + 0.25; b[i] = 2.0 - i * 0.125; }
        const long base = inc < 0 ? (n - 1) * 1L : 0;  // negative increments walk down
        table[1](n, a.data() + base, inc, b.data(), 2, r.data(), 3);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(r[i * 3], op.ref(a[base + i * inc], b[i * 2])) << "inc " << inc;
        EXPECT_EQ(r[1], 0.5);
    }
}

INSTANTIATE_TEST_SUITE_P(Ops, FirstCall, testing::ValuesIn(kOps),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FirstCall, NonPositiveCountWritesNothingAndKeepsState) {
    double a[2] = {1, 2}, r[2] = {9, 9};
    const uint32_t mx = fr::mxcsr();
    const uint16_t cw = fr::x87_control();
    _vtmdAdd(0, a, a, r);
    _vtmdMul(-5, a, a, r);
    EXPECT_EQ(r[0], 9.0);
    EXPECT_EQ(fr::mxcsr(), mx);
    EXPECT_EQ(fr::x87_control(), cw);
}

TEST(FirstCall, CallersRoundingDirectionIsHonoured) {
    const double a[3] = {1.0, -1.0, 1.0}, b[3] = {0x1p-60, -0x1p-60, 0x1p-53 + 0x1p-60};
    double r[3];
    ASSERT_EQ(std::fesetround(FE_TOWARDZERO), 0);
    _vtmdAdd(3, a, b, r);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(r[0], 1.0);
    EXPECT_EQ(r[1], -1.0);
    EXPECT_EQ(r[2], 1.0);  // nearest would round up to 1 + 2^-52
}

TEST(FirstCall, UnmaskedExceptionsRaiseNothingAndStateComesBack) {
    const uint32_t mx = fr::mxcsr();
    const uint16_t cw = fr::x87_control();
    fr::set_mxcsr((mx & ~0x1F80u) & ~0x3Fu);  // all SSE exceptions unmasked, flags clear
    fr::x87_set_control(static_cast<uint16_t>(cw & ~0x3F));
    const double inf = std::numeric_limits<double>::infinity();
    double a[9] = {0, 1, 2, 3, 4, 5, 6, 7, 0}, b[9] = {inf, 1, 1, 1, 1, 1, 1, 1, inf}, r[9];
    _vtmdMul(9, a, b, r);  // 0 * inf in the round and in the remainder
    const uint32_t after = fr::mxcsr();
    const uint16_t cw_after = fr::x87_control();
    fr::set_mxcsr(mx);
    fr::x87_set_control(cw);
    EXPECT_TRUE(std::isnan(r[0]));
    EXPECT_TRUE(std::isnan(r[8]));
    EXPECT_EQ(after & 0x1F80u, 0u) << "masks restored to the caller's";
    EXPECT_EQ(after & 0x01u, 0x01u) << "invalid flag kept";
    EXPECT_EQ(cw_after & 0x3F, 0) << "x87 word restored";
}

TEST(FirstCall, StridedFormRoundsToNearestUnderEveryCallerRounding) {
    const double a[4] = {1.0, 0, 1.0, 0}, b[4] = {0x1p-53 + 0x1p-60, 0, 0x1p-53 + 0x1p-60, 0};
    double r[4] = {};
    std::fesetround(FE_TOWARDZERO);
    _vtmdAddI(2, a, 2, b, 2, r, 2);  // reads the mode: round to nearest inside
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(r[0], 1.0 + 0x1p-52);
    EXPECT_EQ(r[2], 1.0 + 0x1p-52);
}

TEST(FirstCall, FlushToZeroOnlyUnderTheExactDenormalField) {
    const double tiny[2] = {0x1p-1070, 0}, one[2] = {1.0, 0};
    double r[2];
    _vtmSetMode(VTM_FTZDAZ_ON);
    _vtmdMulI(1, tiny, 2, one, 2, r, 2);
    EXPECT_EQ(r[0], 0.0);
    _vtmdMul(1, tiny, one, r);  // the plain kernel does not read the mode
    EXPECT_EQ(r[0], 0x1p-1070);
    _vtmSetMode(VTM_FTZDAZ_OFF);
    _vtmdMulI(1, tiny, 2, one, 2, r, 2);
    EXPECT_EQ(r[0], 0x1p-1070);
}

}  // namespace
