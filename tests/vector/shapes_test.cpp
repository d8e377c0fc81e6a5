// The block driver's shapes beyond one real array in and out: complex pairs,
// mixed input and result types, two results, a scalar and an integer
// parameter. Each shape runs a small test kernel whose special elements go
// to a callout that reports; the results must be the element-wise ones, the
// error records must carry the element's index, arguments and results (both
// parts for complex), and a callback's replacement must reach the array.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <orv/vtm.h>

#include "vector/block_driver.h"

namespace {

using orv::vec::Shape;
using orv::vec::ShapedArgs;
using C8 = OrvComplex8;
using Z16 = OrvComplex16;

template <typename I, typename O, Shape S, bool ReadsMode = true>
struct Base {
    using In = I;
    using Out = O;
    static constexpr Shape kShape = S;
    static constexpr bool kReadsMode = ReadsMode, kSpecial = true;
};

// Complex to complex: (2 re, -im); NaN real part is a domain error.
struct ConjTwice : Base<Z16, Z16, Shape::Unary> {
    static Out fast(In x) { return {2 * x.re, -x.im}; }
    static bool special(In x) { return std::isnan(x.re); }
    static int32_t callout(In x, Out* r) { *r = {x.re, 7.0}; return VtmStatusDomain; }
    static In input(int i) { return {i % 5 == 3 ? NAN : 0.5 * i, 1.0 + i}; }
};
// Complex to real: re^2 + im^2; a huge real part overflows.
struct Norm2 : Base<C8, float, Shape::Unary, false> {
    static Out fast(In x) { return x.re * x.re + x.im * x.im; }
    static bool special(In x) { return x.re > 1e30f; }
    static int32_t callout(In, Out* r) { *r = INFINITY; return VtmStatusOverflow; }
    static In input(int i) { return {i % 7 == 2 ? 3e35f : 0.25f * i, -1.0f * i}; }
};
// Real to complex: (x, 2x); negative x is a domain error with (0, x).
struct Twin : Base<double, Z16, Shape::Unary> {
    static Out fast(In x) { return {x, 2 * x}; }
    static bool special(In x) { return x < 0; }
    static int32_t callout(In x, Out* r) { *r = {0.0, x}; return VtmStatusDomain; }
    static In input(int i) { return i % 6 == 1 ? -1.0 - i : 1.0 + i; }
};
// Binary complex: a + b; a zero real part of b is a pole.
struct CAdd : Base<C8, C8, Shape::Binary> {
    static Out fast(In x, In y) { return {x.re + y.re, x.im + y.im}; }
    static bool special(In, In y) { return y.re == 0; }
    static int32_t callout(In x, In, Out* r) { *r = {x.re, INFINITY}; return VtmStatusPole; }
    static In input(int i) { return {1.0f + i, 2.0f * i}; }
    static In input_b(int i) { return {i % 4 == 0 ? 0.0f : 0.5f * i, 1.0f}; }
};
// Two results: x + 1 and x - 1; negative x is a domain error.
struct PlusMinus : Base<double, double, Shape::TwoResults, false> {
    static void fast(In x, Out* r1, Out* r2) { *r1 = x + 1; *r2 = x - 1; }
    static bool special(In x) { return x < 0; }
    static int32_t callout(In x, Out* r1, Out* r2) { *r1 = -x; *r2 = NAN; return VtmStatusDomain; }
    static In input(int i) { return i % 5 == 4 ? -0.5 * i : 0.5 * i; }
};
// Scalar parameter: x p; a zero x is a pole.
struct Scale : Base<float, float, Shape::ScalarParam> {
    using P = float;
    static Out fast(In x, P p) { return x * p; }
    static bool special(In x, P) { return x == 0; }
    static int32_t callout(In, P, Out* r) { *r = INFINITY; return VtmStatusPole; }
    static In input(int i) { return i % 3 == 0 ? 0.0f : 1.5f * i; }
    static P param() { return 2.5f; }
};
// Integer parameter: x + order; x above 100 overflows.
struct Shift : Base<double, double, Shape::IntegerParam> {
    using P = int;
    static Out fast(In x, P k) { return x + k; }
    static bool special(In x, P) { return x > 100; }
    static int32_t callout(In, P, Out* r) { *r = INFINITY; return VtmStatusOverflow; }
    static In input(int i) { return i % 9 == 5 ? 1e3 * i : double(i); }
    static P param() { return -3; }
};

template <typename E> double re_of(E x) { if constexpr (orv::vec::ElemOf<E>::kComplex) return x.re; else return x; }
template <typename E> double im_of(E x) { if constexpr (orv::vec::ElemOf<E>::kComplex) return x.im; else return 0; }
template <typename E>
bool same(E x, E y) { return std::memcmp(&x, &y, sizeof x) == 0; }

struct Seen { int code, index; double arg1, arg2, res1, res2, arg1_im, res1_im; };
std::vector<Seen> seen;
bool replace = false;  // the callback writes 42 (+43i) and returns 0

int32_t record(VtmErrorContext* c) {
    seen.push_back({c->code, c->index, c->arg1, c->arg2, c->res1, c->res2, c->arg1Imag, c->res1Imag});
    if (replace) c->res1 = 42, c->res1Imag = 43;
    return 0;
}

// The driver's contract element by element: the fast result, or for a
// special element the callout's.
template <typename S>
bool oracle(typename S::In x, typename S::In y, typename S::Out* e1, typename S::Out* e2) {
    using orv::vec::Shape;
    if constexpr (S::kShape == Shape::TwoResults) {
        if (!S::special(x)) return S::fast(x, e1, e2), false;
        return S::callout(x, e1, e2), true;
    } else if constexpr (S::kShape == Shape::Binary) {
        if (!S::special(x, y)) return *e1 = S::fast(x, y), false;
        return S::callout(x, y, e1), true;
    } else if constexpr (requires { S::param(); }) {
        if (!S::special(x, S::param())) return *e1 = S::fast(x, S::param()), false;
        return S::callout(x, S::param(), e1), true;
    } else {
        if (!S::special(x)) return *e1 = S::fast(x), false;
        return S::callout(x, e1), true;
    }
}

template <typename S>
void check_shape(int n, int inc) {
    using In = typename S::In;
    using Out = typename S::Out;
    constexpr bool kTwo = S::kShape == Shape::TwoResults, kBin = S::kShape == Shape::Binary;
    constexpr bool kInC = orv::vec::ElemOf<In>::kComplex, kOutC = orv::vec::ElemOf<Out>::kComplex;
    std::vector<In> a(size_t(n) * inc + 1), b(a.size());
    for (int i = 0; i < n; ++i) {
        a[size_t(i) * inc] = S::input(i);
        if constexpr (kBin) b[size_t(i) * inc] = S::input_b(i);
    }
    std::vector<Out> r1(a.size()), r2(a.size());
    ShapedArgs<S> g{};
    g.a = a.data();
    g.b = b.data();
    if constexpr (requires { S::param(); }) g.p = S::param();
    g.r1 = r1.data();
    g.r2 = kTwo ? r2.data() : r1.data();
    g.inca = g.incb = g.incr1 = g.incr2 = inc;
    for (bool repl : {false, true}) {
        seen.clear();
        replace = repl;
        bool plain_called = false;
        orv::vec::shaped_strided<S>(g, n, "vTest", [&] {
            plain_called = true;
            orv::vec::shaped<S>(g, n, "vTest");
        });
        EXPECT_EQ(plain_called, inc == 1);
        size_t k = 0;
        for (int i = 0; i < n; ++i) {
            const In x = a[size_t(i) * inc], y = kBin ? b[size_t(i) * inc] : x;
            Out e1{}, e2{};
            if (oracle<S>(x, y, &e1, &e2)) {
                ASSERT_LT(k, seen.size()) << "element " << i << " not reported";
                const Seen& s = seen[k++];
                EXPECT_EQ(s.index, i);
                EXPECT_NE(s.code, 0);
                EXPECT_TRUE(same(s.arg1, re_of(x))) << i;
                if constexpr (kInC) { EXPECT_TRUE(same(s.arg1_im, im_of(x))) << i; }
                if constexpr (kBin) { EXPECT_EQ(s.arg2, re_of(y)); }
                if constexpr (S::kShape == Shape::ScalarParam) { EXPECT_EQ(s.arg2, S::param()); }
                EXPECT_TRUE(same(s.res1, re_of(e1))) << i;
                if constexpr (kTwo) {
                    EXPECT_TRUE(same(s.res2, e2));
                } else if constexpr (kOutC && !kInC) {
                    EXPECT_EQ(s.res2, e1.im);  // real to complex: the parts as two results
                } else if constexpr (kInC) {
                    EXPECT_TRUE(same(s.res1_im, im_of(e1)));
                }
                if (repl) {  // the callback's result reaches the array
                    if constexpr (kOutC) {
                        e1.re = 42;
                        if constexpr (kInC) e1.im = 43;
                    } else {
                        e1 = Out(42);
                    }
                }
            }
            EXPECT_TRUE(same(r1[size_t(i) * inc], e1)) << "element " << i << " inc " << inc;
            if constexpr (kTwo) { EXPECT_TRUE(same(r2[size_t(i) * inc], e2)) << i; }
        }
        EXPECT_EQ(k, seen.size());
    }
}

template <typename S>
class ShapedDriver : public testing::Test {};
using AllShapes = testing::Types<ConjTwice, Norm2, Twin, CAdd, PlusMinus, Scale, Shift>;
TYPED_TEST_SUITE(ShapedDriver, AllShapes);

TYPED_TEST(ShapedDriver, ElementsErrorsAndReadBack) {
    const uint32_t old = _vtmSetMode(VTM_ERRMODE_CALLBACK);
    _vtmSetErrorCallBack(record);
    for (int inc : {1, 3})
        for (int n : {0, 1, 15, 16, 17, 45}) check_shape<TypeParam>(n, inc);
    _vtmClearErrorCallBack();
    _vtmSetMode(old);
    _vtmClearErrStatus();
}

}  // namespace
