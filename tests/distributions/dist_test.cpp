// Distributions: every continuous one, in both precisions, through the same
// checks (fit to its distribution function; the formula on a copy's
// uniforms, uniforms consumed and batch cuts on every generator), then the
// discrete forms and the edge cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include <orv/dist.h>
#include <orv/vtm.h>

namespace {

using Stream = std::unique_ptr<void, void (*)(void*)>;
Stream own(void* s) { return Stream(s, [](void* p) { __vstDeleteStream(&p); }); }
Stream make(int32_t id, uint32_t seed) {
    void* s = nullptr;
    __vstNewStreamEx(&s, id, 1, &seed);
    return own(s);
}
Stream copy(const Stream& src) {
    void* s = nullptr;
    __vstCopyStream(&s, src.get());
    return own(s);
}
std::vector<char> image(const Stream& s) {
    std::vector<char> m(__vstGetStreamSize(s.get()));
    __vstSaveStreamM(s.get(), m.data());
    return m;
}

// An abstract stream handing out the given doubles as uniforms on [0, 1), then failing with -77.
Stream fixed(std::vector<double>& v) {
    void* s = nullptr;
    __vstdNewAbstractStream(&s, int32_t(v.size()), v.data(), 0.0, 1.0, [](void*, int32_t, double*) { return -77; });
    return own(s);
}

constexpr double A = 0.5, B = 2.0;  // parameters (a, beta), or (a, b) = (A, A + B) for Uniform

// One continuous distribution: its two forms, the uniforms (on [lo, lo + width)) per output, the formula
// from them, and the distribution function.
struct Row {
    const char* name;
    int32_t (*fs)(int32_t, void*, int32_t, float*, float, float);
    int32_t (*fd)(int32_t, void*, int32_t, double*, double, double);
    int per;
    double lo, width;
    double (*formula)(const double* u);
    double (*cdf)(double z);  // of z = (x - A) / B
};
double tail(double z) { return z <= 0 ? 0.0 : 1.0 - std::exp(-z); }
const Row kRows[] = {
    {"Uniform", _vstsRngUniform, _vstdRngUniform, 1, A, B, [](const double* u) { return u[0]; },
     [](double z) { return std::clamp(z, 0.0, 1.0); }},
    {"Exponential", _vstsRngExponential, _vstdRngExponential, 1, 0, 1,
     [](const double* u) { return A - std::log(u[0]) * B; }, tail},
    {"Rayleigh", _vstsRngRayleigh, _vstdRngRayleigh, 1, 0, 1,
     [](const double* u) { return std::sqrt(-std::log(u[0])) * B + A; }, [](double z) { return tail(z * std::fabs(z)); }},
    {"Gumbel", _vstsRngGumbel, _vstdRngGumbel, 1, 0, 1, [](const double* u) { return std::log(-std::log(u[0])) * B + A; },
     [](double z) { return 1.0 - std::exp(-std::exp(z)); }},
    {"Laplace", _vstsRngLaplace, _vstdRngLaplace, 2, 0, 1,
     [](const double* u) { return std::log(u[0]) * (u[1] > 0.5 ? B : -B) + A; },
     [](double z) { return z < 0 ? 0.5 * std::exp(z) : 1.0 - 0.5 * std::exp(-z); }},
};
double second(const Row& r) { return r.fd == _vstdRngUniform ? A + B : B; }

class Continuous : public ::testing::TestWithParam<std::tuple<Row, bool>> {
protected:
    const Row& row = std::get<0>(GetParam());
    const bool single = std::get<1>(GetParam());
    // n outputs appended to out, widened to double.
    int32_t draw(void* s, int32_t n, std::vector<double>& out) {
        std::vector<float> f(n);
        std::vector<double> d(n);
        const int32_t st = single ? row.fs(0, s, n, f.data(), A, float(second(row))) : row.fd(0, s, n, d.data(), A, second(row));
        if (single) std::copy(f.begin(), f.end(), d.begin());
        out.insert(out.end(), d.begin(), d.end());
        return st;
    }
    std::vector<double> uniforms(void* s, int32_t k) {
        std::vector<float> f(k);
        std::vector<double> d(k);
        if (single) _vstsRngUniform(0, s, k, f.data(), float(row.lo), float(row.lo + row.width));
        if (single) std::copy(f.begin(), f.end(), d.begin());
        else _vstdRngUniform(0, s, k, d.data(), row.lo, row.lo + row.width);
        return d;
    }
};

// Kolmogorov-Smirnov on 10^6 draws at a fixed seed: sqrt(n) D below 1.95 (p = 0.001).
TEST_P(Continuous, FitsItsDistributionFunction) {
    const int32_t n = 1000000;
    Stream s = make(ORV_BRNG_MCG59, 20261122);
    std::vector<double> x;
    ASSERT_EQ(draw(s.get(), n, x), 0);
    std::sort(x.begin(), x.end());
    double d = 0;
    for (int32_t i = 0; i < n; ++i) {
        const double f = row.cdf((x[i] - A) / B);
        d = std::max({d, f - double(i) / n, double(i + 1) / n - f});
    }
    EXPECT_LT(std::sqrt(double(n)) * d, 1.95);
}

// On every generator that replays from a copy, n outputs drawn in two calls
// (the second crossing a block for n = 1500) are the formula on the copy's
// uniforms within a few roundings, and the stream goes on as the copy does
// after exactly per * n uniforms (buffered generators may differ in image).
TEST_P(Continuous, IsTheFormulaOnTheUniformsItConsumes) {
    const double eps = single ? 0x1p-23 : 0x1p-52;
    for (int32_t k = 0; k < __vstGetNumRegBrngs(); ++k)
        for (const int32_t n : {3, 1500}) {
            Stream s = make((k + 1) << 20, 99);
            if (!s || (k + 1) << 20 == ORV_BRNG_TRNG) continue;
            Stream c = copy(s);
            std::vector<double> x;
            ASSERT_EQ(draw(s.get(), 1, x), 0);
            ASSERT_EQ(draw(s.get(), n - 1, x), 0);
            const std::vector<double> u = uniforms(c.get(), row.per * n);
            for (int32_t i = 0; i < n; ++i) {
                const double want = row.formula(&u[size_t(row.per * i)]);
                ASSERT_NEAR(x[i], want, 16 * eps * std::max(std::fabs(want), A + B)) << k << " " << i;
            }
            EXPECT_EQ(uniforms(s.get(), 8), uniforms(c.get(), 8)) << "generator row " << k << " n " << n;
        }
}

INSTANTIATE_TEST_SUITE_P(Distributions, Continuous, ::testing::Combine(::testing::ValuesIn(kRows), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<1>(info.param) ? "s" : "d") + std::get<0>(info.param).name;
                         });

// ln(0) gives a large finite value; bit 30 clamps onto the interval (values
// past it come only from an abstract stream here); a failed fill returns its
// status, leaves later blocks unwritten and restores the callback and mode.
TEST(Edges, ZeroUniformClampsAndFailedFills) {
    double r[3];
    std::vector<double> u = {0.0, 1.5, 0.0, 1.5, 1.25, -0.5, 0.0, 0.0, 0.0};
    Stream s = fixed(u);
    ASSERT_EQ(_vstdRngExponential(0, s.get(), 2, r, 1.0, 3.0), 0);
    EXPECT_DOUBLE_EQ(r[0], 1.0 + 744.44007192138122 * 3.0);
    EXPECT_LT(r[1], 1.0);
    ASSERT_EQ(_vstdRngExponential(ORV_RNG_METHOD_ACCURATE, s.get(), 2, r, 1.0, 3.0), 0);
    EXPECT_EQ(r[1], 1.0);
    ASSERT_EQ(_vstdRngUniform(ORV_RNG_METHOD_ACCURATE, s.get(), 2, r, 2.0, 4.0), 0);
    EXPECT_TRUE(r[0] == 4.0 && r[1] == 2.0);
    for (auto fn : {_vstdRngGumbel, _vstdRngRayleigh}) {
        ASSERT_EQ(fn(0, s.get(), 1, r, 1.0, 3.0), 0);
        EXPECT_TRUE(std::isfinite(r[0]));
    }
    Stream m = make(ORV_BRNG_MCG59, 1);
    ASSERT_EQ(_vstdRngUniform(ORV_RNG_METHOD_ACCURATE, m.get(), 3, r, 5.0, 5.0), 0);
    EXPECT_TRUE(r[0] == 5.0 && r[1] == 5.0 && r[2] == 5.0);

    const VtmErrorCallBack before = orv_vtm_kernel_GetErrorCallBack();
    const uint32_t errmode = orv_vtm_kernel_GetMode() & VTM_ERRMODE_MASK;
    std::vector<double> out(1500, 42.0), few(2048 + 10, 0.25);
    Stream f = fixed(few);
    EXPECT_EQ(_vstdRngLaplace(0, f.get(), 1500, out.data(), 0.0, 1.0), -77);
    EXPECT_TRUE(out[0] != 42.0 && out[1024] == 42.0);
    EXPECT_EQ(orv_vtm_kernel_GetErrorCallBack(), before);
    EXPECT_EQ(orv_vtm_kernel_GetMode() & VTM_ERRMODE_MASK, errmode);
}

// Integers are the floor of the copy's doubles, also below zero; Bernoulli
// is u < p on the copy's single uniforms.
TEST(Discrete, IntegersAndBernoulliFollowTheCopysUniforms) {
    const int32_t n = 3000;
    Stream s = make(ORV_BRNG_MCG59, 3), c = copy(s);
    std::vector<int32_t> k(n);
    std::vector<double> u(n);
    std::vector<float> f(n);
    ASSERT_EQ(_vstiRngUniform(0, s.get(), n, k.data(), -3, 4), 0);
    _vstdRngUniform(0, c.get(), n, u.data(), -3.0, 4.0);
    for (int32_t i = 0; i < n; ++i) ASSERT_EQ(k[i], int32_t(std::floor(u[i])));
    EXPECT_TRUE(*std::min_element(k.begin(), k.end()) == -3 && *std::max_element(k.begin(), k.end()) == 3);
    for (const double p : {0.0, 0.3, 1.0}) {
        ASSERT_EQ(_vstiRngBernoulli(0, s.get(), n, k.data(), p), 0);
        _vstsRngUniform(0, c.get(), n, f.data(), 0.0f, 1.0f);
        for (int32_t i = 0; i < n; ++i) ASSERT_EQ(k[i], f[i] < float(p) ? 1 : 0) << p;
    }
    EXPECT_EQ(image(s), image(c));
}

// MCG59 keeps the top 32 of 59 bits (a whole round of 2048 and a part);
// word generators pass their words, two to a 64-bit word, low half first;
// others refuse and draw nothing.
TEST(Bits, WholeWordsPerGeneratorAndRefusalsDrawNothing) {
    std::vector<uint64_t> w(1500), raw(3000);
    Stream s = make(ORV_BRNG_MCG59, 11), c = copy(s);
    std::vector<uint32_t> w32(3000);
    ASSERT_EQ(_vstiRngUniformBits64(0, s.get(), 1500, w.data()), 0);
    ASSERT_EQ(_vstiRngUniformBits32(0, s.get(), 3000, w32.data()), 0);
    _vstiRngUniformBits(0, c.get(), 3000, reinterpret_cast<uint32_t*>(raw.data()));
    for (int i = 0; i < 1500; ++i) ASSERT_EQ(w[i], (raw[2 * i] >> 27) | (raw[2 * i + 1] >> 27) << 32);
    _vstiRngUniformBits(0, c.get(), 3000, reinterpret_cast<uint32_t*>(raw.data()));
    for (int i = 0; i < 3000; ++i) ASSERT_EQ(w32[i], raw[i] >> 27);
    EXPECT_EQ(image(s), image(c));
    Stream mt = make(ORV_BRNG_MT19937, 5), mc = copy(mt);
    uint32_t words[6];
    ASSERT_EQ(_vstiRngUniformBits64(0, mt.get(), 3, w.data()), 0);
    _vstiRngUniformBits(0, mc.get(), 6, words);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(w[i], words[2 * i] | uint64_t(words[2 * i + 1]) << 32);
    EXPECT_EQ(image(mt), image(mc));
    for (const int32_t id : {ORV_BRNG_MRG32K3A, ORV_BRNG_MCG31M1, ORV_BRNG_WH, ORV_BRNG_SOBOL}) {
        Stream g = make(id, 5);
        const std::vector<char> before = image(g);
        EXPECT_EQ(_vstiRngUniformBits32(0, g.get(), 4, words), ORV_RNG_ERROR_NO_NUMBITS);
        EXPECT_EQ(_vstiRngUniformBits64(0, g.get(), 2, w.data()), ORV_RNG_ERROR_NO_NUMBITS);
        EXPECT_EQ(image(g), before);
    }
}

}  // namespace
