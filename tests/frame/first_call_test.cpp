// The shortest path through the library, stub to kernel: results written over
// an input, counts that do nothing, and the floating-point state guarded.
// Lengths, strided forms, rounding directions and the denormal field are the
// vector conventions' tests.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <orv/vtm.h>

#include "frame/fp_guard.h"

namespace fr = orv::frame;

namespace {

TEST(FirstCall, ResultMayAliasAnInput) {
    using Binary = void (*)(int, const double*, const double*, double*);
    const std::pair<Binary, double (*)(double, double)> ops[] = {
        {_vtmdAdd, [](double x, double y) { return x + y; }},
        {_vtmdSub, [](double x, double y) { return x - y; }},
        {_vtmdMul, [](double x, double y) { return x * y; }}};
    for (const auto& [stub, ref] : ops) {
        std::vector<double> a(19), b(19), want(19);
        for (int i = 0; i < 19; ++i) {
            a[i] = i * 0.3 - 2;
            b[i] = 1.0 / (i + 1);
            want[i] = ref(a[i], b[i]);
        }
        stub(19, a.data(), b.data(), a.data());
        EXPECT_EQ(a, want);
    }
}

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

}  // namespace
