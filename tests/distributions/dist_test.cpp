// Distributions: every continuous one, in both precisions, through the same
// checks (fit to its distribution function; the formula on a copy's
// uniforms, uniforms consumed and batch cuts on every generator), then the
// discrete forms and the edge cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include <orv/dist.h>
#include <orv/orv.h>
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

// The next uniforms of a stream, to compare where two streams stand.
std::vector<double> uniforms_after(void* s) {
    std::vector<double> u(8);
    _vstdRngUniform(0, s, 8, u.data(), 0.0, 1.0);
    return u;
}

// An abstract stream handing out the given doubles as uniforms on [0, 1), then failing with -77.
Stream fixed(std::vector<double>& v) {
    void* s = nullptr;
    __vstdNewAbstractStream(&s, int32_t(v.size()), v.data(), 0.0, 1.0, [](void*, int32_t, double*) { return -77; });
    return own(s);
}

constexpr double A = 0.5, B = 2.0;                  // displacement (mean) and scale of every row
constexpr double kShape = 1.5, kLogMean = 0.2, kLogSd = 0.5;  // Weibull shape; the lognormal's normal
constexpr double kPi = 3.141592653589793;

// The inverse error function, by Newton steps on erf, or on erfc (for |u| > 0.5)
// where that keeps the residual accurate near the ends; at -1 and 1 the
// stated finite stand-in, the precision's largest finite result.
double erfinv(double u, bool single) {
    const double v = std::fabs(u);
    if (v == 1) return std::copysign(single ? 3.8325068950653076 : 5.8635847487551676, u);
    double x = v < 0.5 ? v : std::sqrt(-std::log((1 - v) * (1 + v)));
    for (int k = 0; k < 60; ++k) {
        const double res = v < 0.5 ? std::erf(x) - v : (1 - v) - std::erfc(x);
        x -= res / (1.1283791670955126 * std::exp(-x * x));
    }
    return u < 0 ? -x : x;
}
double phi(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

// The angle 2 pi u as the precision computes it, then the pair's sine (cosine).
double radius(double u) { return std::sqrt(-2 * std::log(u)); }
double angle(double u, bool single) {
    return single ? double(float(u) * float(6.283185307179586)) : u * 6.283185307179586;
}
double paired(const double* u, int32_t i, bool single) {
    const double* p = u + (i & ~1);
    return radius(p[0]) * (i % 2 ? std::cos(angle(p[1], single)) : std::sin(angle(p[1], single)));
}

// One continuous distribution and method: its two forms with the parameters
// above, the uniforms (on [lo, lo + width)) per output, the formula for
// output i from the uniforms, the distribution function, and whether its
// kernels are the half-precision ones (inverse error function, power).
struct Row {
    const char* name;
    int32_t (*fs)(void*, int32_t, float*);
    int32_t (*fd)(void*, int32_t, double*);
    int per;
    bool pairs;  // both outputs of a pair of uniforms: an odd count rounds up
    double lo, width;
    double (*formula)(const double* u, int32_t i, bool single);
    double (*cdf)(double z);  // of z = (x - A) / B
    bool half;
};
#define FORMS(Name, ...)                                                                   \
    [](void* s, int32_t n, float* r) { using T = float; return _vstsRng##Name(__VA_ARGS__); }, \
    [](void* s, int32_t n, double* r) { using T = double; return _vstdRng##Name(__VA_ARGS__); }
double tail(double z) { return z <= 0 ? 0.0 : 1.0 - std::exp(-z); }
double lognormal_cdf(double z) { return z <= 0 ? 0.0 : phi((std::log(z) - kLogMean) / kLogSd); }
const Row kRows[] = {
    {"Uniform", FORMS(Uniform, 0, s, n, r, T(A), T(A + B)), 1, false, A, B,
     [](const double* u, int32_t i, bool) { return u[i]; }, [](double z) { return std::clamp(z, 0.0, 1.0); }, false},
    {"Exponential", FORMS(Exponential, 0, s, n, r, T(A), T(B)), 1, false, 0, 1,
     [](const double* u, int32_t i, bool) { return A - std::log(u[i]) * B; }, tail, false},
    {"Rayleigh", FORMS(Rayleigh, 0, s, n, r, T(A), T(B)), 1, false, 0, 1,
     [](const double* u, int32_t i, bool) { return std::sqrt(-std::log(u[i])) * B + A; },
     [](double z) { return tail(z * std::fabs(z)); }, false},
    {"Gumbel", FORMS(Gumbel, 0, s, n, r, T(A), T(B)), 1, false, 0, 1,
     [](const double* u, int32_t i, bool) { return std::log(-std::log(u[i])) * B + A; },
     [](double z) { return 1.0 - std::exp(-std::exp(z)); }, false},
    {"Laplace", FORMS(Laplace, 0, s, n, r, T(A), T(B)), 2, false, 0, 1,
     [](const double* u, int32_t i, bool) { return std::log(u[2 * i]) * (u[2 * i + 1] > 0.5 ? B : -B) + A; },
     [](double z) { return z < 0 ? 0.5 * std::exp(z) : 1.0 - 0.5 * std::exp(-z); }, false},
    {"Cauchy", FORMS(Cauchy, 0, s, n, r, T(A), T(B)), 1, false, -kPi / 2, kPi,
     [](const double* u, int32_t i, bool) { return std::tan(u[i]) * B + A; },
     [](double z) { return 0.5 + std::atan(z) / kPi; }, false},
    {"Weibull", FORMS(Weibull, 0, s, n, r, T(kShape), T(A), T(B)), 1, false, 0, 1,
     [](const double* u, int32_t i, bool) { return std::pow(-std::log(u[i]), 1 / kShape) * B + A; },
     [](double z) { return tail(std::pow(std::max(z, 0.0), kShape)); }, true},
    {"GaussianBoxMuller", FORMS(Gaussian, 0, s, n, r, T(A), T(B)), 2, false, 0, 1,
     [](const double* u, int32_t i, bool single) { return paired(u + 2 * i, 0, single) * B + A; }, phi, false},
    {"GaussianBoxMuller2", FORMS(Gaussian, 1, s, n, r, T(A), T(B)), 1, true, 0, 1,
     [](const double* u, int32_t i, bool single) { return paired(u, i, single) * B + A; }, phi, false},
    {"GaussianIcdf", FORMS(Gaussian, 2, s, n, r, T(A), T(B)), 1, false, -1, 2,
     [](const double* u, int32_t i, bool single) { return erfinv(u[i], single) * std::sqrt(2.0) * B + A; }, phi, true},
    {"LognormalBoxMuller2", FORMS(Lognormal, 0, s, n, r, T(kLogMean), T(kLogSd), T(A), T(B)), 1, true, 0, 1,
     [](const double* u, int32_t i, bool single) { return A + B * std::exp(kLogMean + kLogSd * paired(u, i, single)); },
     lognormal_cdf, false},
    {"LognormalIcdf",  // any method but 0, here the accuracy flag alone
     FORMS(Lognormal, ORV_RNG_METHOD_ACCURATE, s, n, r, T(kLogMean), T(kLogSd), T(A), T(B)), 1, false, -1, 2,
     [](const double* u, int32_t i, bool single) {
         return A + B * std::exp(kLogMean + kLogSd * std::sqrt(2.0) * erfinv(u[i], single)); },
     lognormal_cdf, true},
};
#undef FORMS

class Continuous : public ::testing::TestWithParam<std::tuple<Row, bool>> {
protected:
    const Row& row = std::get<0>(GetParam());
    const bool single = std::get<1>(GetParam());
    // n outputs appended to out, widened to double.
    int32_t draw(void* s, int32_t n, std::vector<double>& out) {
        std::vector<float> f(n);
        std::vector<double> d(n);
        const int32_t st = single ? row.fs(s, n, f.data()) : row.fd(s, n, d.data());
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
// uniforms within a few roundings (half the precision's bits for the
// half-precision kernels), and the stream goes on as the copy does after
// exactly the stated number of uniforms: per * n, rounded up to whole pairs
// for the pair methods (buffered generators may differ in image).
TEST_P(Continuous, IsTheFormulaOnTheUniformsItConsumes) {
    const double eps = single ? 0x1p-23 : 0x1p-52;
    const double tol = row.half ? 8 * std::sqrt(eps) : 16 * eps;
    for (int32_t k = 0; k < __vstGetNumRegBrngs(); ++k)
        for (const int32_t n : {3, 5, 1500}) {
            Stream s = make((k + 1) << 20, 99);
            if (!s || (k + 1) << 20 == ORV_BRNG_TRNG) continue;
            Stream c = copy(s);
            std::vector<double> x;
            ASSERT_EQ(draw(s.get(), 1, x), 0);
            ASSERT_EQ(draw(s.get(), n - 1, x), 0);
            const int32_t used = row.pairs ? (n + 1) & ~1 : row.per * n;
            const std::vector<double> u = uniforms(c.get(), used);
            for (int32_t i = 0; i < n; ++i) {
                const double want = row.formula(u.data(), i, single);
                ASSERT_NEAR(x[i], want, tol * std::max(std::fabs(want), A + B)) << k << " " << i;
            }
            EXPECT_EQ(uniforms(s.get(), 8), uniforms(c.get(), 8)) << "generator row " << k << " n " << n;
        }
}

// The front end has loaded the widest kernel library the processor runs
// (this program links it), so the draws above ran its kernels. They equal,
// bit for bit, the draws of a child process kept on the baseline's kernels
// (ORV_ISA=sse2): 1500 outputs on MCG59, then uniforms of 0, subnormals, the
// smallest normal and just below 1, which take the kernels' special paths
// and the distribution's error handler.
TEST_P(Continuous, SameBitsAsOnTheBaselineKernels) {
    const double tiny = single ? 1e-40 : 1e-310, smallest = single ? 0x1p-149 : 0x1p-1074;
    std::vector<double> ends = {0.0, smallest, tiny, single ? 0x1p-126 : 0x1p-1022, 1 - 0x1p-24, 0.5, 0.0, 0x1p-30};
    std::vector<float> ends_f(ends.begin(), ends.end());
    void* raw = nullptr;
    if (single) __vstsNewAbstractStream(&raw, int32_t(ends.size()), ends_f.data(), 0.0f, 1.0f, [](void*, int32_t, float*) { return -77; });
    else __vstdNewAbstractStream(&raw, int32_t(ends.size()), ends.data(), 0.0, 1.0, [](void*, int32_t, double*) { return -77; });
    Stream s = make(ORV_BRNG_MCG59, 5), e = own(raw);
    std::vector<double> x;
    ASSERT_EQ(draw(s.get(), 1500, x), 0);
    ASSERT_EQ(draw(e.get(), int32_t(ends.size()) / row.per - 1, x), 0);
    if (const char* out = std::getenv("ORV_TEST_DRAWS_OUT")) {
        std::ofstream(out, std::ios::binary).write(reinterpret_cast<const char*>(x.data()), std::streamsize(8 * x.size()));
        return;
    }
    if (orv_get_vector_variant() == 0) GTEST_SKIP() << "no wider kernel library on this processor";
    const ::testing::TestInfo* me = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string file = ::testing::TempDir() + "draws_" + std::to_string(getpid());
    char self[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    const std::string child = "ORV_ISA=sse2 ORV_TEST_DRAWS_OUT=" + file + " '" + self + "' '--gtest_filter=" +
                              me->test_suite_name() + "." + me->name() + "' > /dev/null";
    ASSERT_EQ(std::system(child.c_str()), 0);
    std::ifstream in(file, std::ios::binary);
    std::vector<double> base(x.size());
    in.read(reinterpret_cast<char*>(base.data()), std::streamsize(8 * base.size()));
    std::remove(file.c_str());
    ASSERT_EQ(in.gcount(), std::streamsize(8 * x.size()));
    for (size_t i = 0; i < x.size(); ++i)
        ASSERT_EQ(std::memcmp(&x[i], &base[i], 8), 0) << i << ": " << x[i] << " against " << base[i];
}

INSTANTIATE_TEST_SUITE_P(Distributions, Continuous, ::testing::Combine(::testing::ValuesIn(kRows), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<1>(info.param) ? "s" : "d") + std::get<0>(info.param).name;
                         });

// ln(0) gives a large finite value (and inversion's -1 the stated finite
// stand-in); bit 30 clamps onto the interval (values past it come only from
// an abstract stream here); a zero width or deviation gives the mean for
// every method; a failed fill returns its status, leaves later blocks
// unwritten and restores the callback and mode.
TEST(Edges, EndsOfTheUniformsClampsAndFailedFills) {
    double r[5];
    std::vector<double> u = {0.0, 1.5, 0.0, 1.5, 1.25, -0.5, 0.0, 0.0, 0.0, 0.25, 0.0, 0.25, 0.0};
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
    ASSERT_EQ(_vstdRngGaussian(0, s.get(), 1, r, 1.0, 1.0), 0);
    EXPECT_DOUBLE_EQ(r[0], 1.0 + std::sqrt(2 * 744.44007192138122));
    ASSERT_EQ(_vstdRngGaussian(2, s.get(), 2, r, 0.0, 1.0), 0);  // uniforms on [-1, 1): 0 maps to -1
    EXPECT_DOUBLE_EQ(r[0], -5.8635847487551676 * std::sqrt(2.0));
    ASSERT_EQ(_vstdRngWeibull(0, s.get(), 1, r, 2.0, 1.0, 1.0), 0);
    EXPECT_DOUBLE_EQ(r[0], 1.0 + std::sqrt(744.44007192138122));
    Stream m = make(ORV_BRNG_MCG59, 1);
    ASSERT_EQ(_vstdRngUniform(ORV_RNG_METHOD_ACCURATE, m.get(), 3, r, 5.0, 5.0), 0);
    EXPECT_TRUE(r[0] == 5.0 && r[1] == 5.0 && r[2] == 5.0);
    for (int32_t method = 0; method < 3; ++method) {
        float y[5];
        ASSERT_EQ(_vstdRngGaussian(method, m.get(), 5, r, 3.0, 0.0), 0);
        ASSERT_EQ(_vstsRngGaussian(method, m.get(), 5, y, 3.0f, 0.0f), 0);
        for (int i = 0; i < 5; ++i) EXPECT_TRUE(r[i] == 3.0 && y[i] == 3.0f) << method;
    }
    EXPECT_EQ(_vstdRngGaussian(3, m.get(), 5, r, 0.0, 1.0), ORV_RNG_ERROR_BAD_METHOD);

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

// The two-output method keeps the unpaired half on the stream, one chunk per
// precision: n = 0 makes it and draws nothing; a saved and loaded stream (and
// a copy) keeps the half and delivers it without drawing; both halves are the
// sine and cosine outputs of one pair.
TEST(Gaussian, KeptHalfPairTravelsWithTheStream) {
    Stream s = make(ORV_BRNG_MRG32K3A, 8), c = copy(s);
    double d[2], e, u[4];
    float f;
    ASSERT_EQ(_vstdRngGaussian(1, s.get(), 0, d, 0.0, 1.0), 0);
    EXPECT_EQ(__vstGetNumChunks(s.get()), 1);
    ASSERT_EQ(_vstdRngGaussian(1, s.get(), 1, d, 0.0, 1.0), 0);
    ASSERT_EQ(_vstsRngGaussian(1, s.get(), 1, &f, 0.0f, 1.0f), 0);  // its own pair, from the next 2 uniforms
    void* raw = nullptr;
    ASSERT_EQ(__vstLoadStreamM(&raw, image(s).data()), 0);
    Stream loaded = own(raw);
    ASSERT_EQ(_vstdRngGaussian(1, loaded.get(), 1, &e, 0.0, 1.0), 0);
    ASSERT_EQ(_vstdRngGaussian(1, s.get(), 1, d + 1, 0.0, 1.0), 0);
    EXPECT_EQ(e, d[1]);
    _vstdRngUniform(0, c.get(), 4, u, 0.0, 1.0);  // both pairs' uniforms, no more
    EXPECT_NEAR(d[0] * d[0] + d[1] * d[1], -2 * std::log(u[0]), 1e-12);
    EXPECT_NEAR(std::atan2(d[0], d[1]), std::remainder(6.283185307179586 * u[1], 6.283185307179586), 1e-12);
    EXPECT_EQ(uniforms_after(loaded.get()), uniforms_after(copy(s).get()));
    EXPECT_EQ(uniforms_after(s.get()), uniforms_after(c.get()));
}

// A call large enough to write past the caches gives, bit for bit, the same
// draws cut into small calls (which keep half pairs between them).
template <typename T>
void large_call_as_cut(int32_t (*gauss)(int32_t, void*, int32_t, T*, T, T)) {
    const int32_t n = (int32_t(4) << 20) / int32_t(sizeof(T)) + 1001;
    Stream s = make(ORV_BRNG_SFMT19937, 5), c = copy(s);
    std::vector<T> whole(n), cut(n);
    ASSERT_EQ(gauss(1, s.get(), n, whole.data(), T(1), T(2)), 0);
    for (int32_t done = 0, k = 1; done < n; done += k, k = k * 7 + 3)
        ASSERT_EQ(gauss(1, c.get(), std::min(k, n - done), cut.data() + done, T(1), T(2)), 0);
    EXPECT_EQ(std::memcmp(whole.data(), cut.data(), n * sizeof(T)), 0);
}
TEST(Gaussian, LargeCallIsTheSameDrawsCut) {
    large_call_as_cut<double>(_vstdRngGaussian);
    large_call_as_cut<float>(_vstsRngGaussian);
}

// a + L z for each storage of L (full below dimen 11 and from 11 on, packed,
// diagonal) against the product done here on the normals of a copy; the full
// form's upper part is not read. For dimen 3, the sample mean and covariance
// of 2 10^5 vectors are within 5 standard errors of a and L L^T.
template <typename T, typename MV, typename G>
void multivariate(MV mv, G gaussian, int32_t method, int32_t mstorage, int32_t d, int32_t n) {
    auto L = [&](int32_t i, int32_t j) {
        return j > i || (j < i && mstorage == ORV_RNG_MATRIX_STORAGE_DIAGONAL) ? 0.0 : T(j == i ? 1 + 0.25 * i : 0.3 * std::cos(i + 2.0 * j));
    };
    std::vector<T> t, a;
    for (int32_t i = 0; i < d; ++i) {
        a.push_back(T(0.5 * i - 1));
        for (int32_t j = 0; j < d; ++j) {
            if (mstorage == ORV_RNG_MATRIX_STORAGE_FULL) t.push_back(T(j <= i ? L(i, j) : 99.0));      // row by row
            if (mstorage == ORV_RNG_MATRIX_STORAGE_PACKED && j >= i) t.push_back(T(L(j, i)));         // column by column
            if (mstorage == ORV_RNG_MATRIX_STORAGE_DIAGONAL && i == j) t.push_back(T(L(i, i)));
        }
    }
    Stream s = make(ORV_BRNG_SFMT19937, uint32_t(7 + method + 3 * mstorage)), c = copy(s);
    std::vector<T> x(size_t(n) * d), z(x.size());
    ASSERT_EQ(mv(method, s.get(), n, x.data(), d, mstorage, a.data(), t.data()), 0);
    gaussian(method, c.get(), n * d, z.data(), T(0), T(1));
    std::vector<double> mean(static_cast<size_t>(d)), cov(size_t(d) * d);
    for (size_t k = 0; k < x.size(); k += size_t(d))
        for (int32_t i = 0; i < d; ++i) {
            double want = a[size_t(i)];
            for (int32_t j = 0; j <= i; ++j) want += L(i, j) * z[k + size_t(j)];
            ASSERT_NEAR(x[k + size_t(i)], want, (sizeof(T) == 4 ? 1e-5 : 1e-13) * (1 + std::fabs(want))) << mstorage;
            mean[size_t(i)] += (x[k + size_t(i)] - a[size_t(i)]) / n;
            for (int32_t j = 0; j < d; ++j)
                cov[size_t(i * d + j)] += (x[k + size_t(i)] - a[size_t(i)]) * (x[k + size_t(j)] - a[size_t(j)]) / n;
        }
    for (int32_t i = 0; d == 3 && i < d; ++i)
        for (int32_t j = 0; j < d; ++j) {
            double c_ij = 0, c_ii = 0, c_jj = 0;
            for (int32_t k = 0; k < d; ++k) c_ij += L(i, k) * L(j, k), c_ii += L(i, k) * L(i, k), c_jj += L(j, k) * L(j, k);
            EXPECT_NEAR(mean[size_t(i)], 0.0, 5 * std::sqrt(c_ii / n));
            EXPECT_NEAR(cov[size_t(i * d + j)], c_ij, 5 * std::sqrt((c_ii * c_jj + c_ij * c_ij) / n)) << i << j;
        }
}

// Each storage and method; dimen 1 is the plain Gaussian whatever the
// storage; an unknown storage leaves the standard normals.
TEST(GaussianMV, EachStorageIsAPlusLz) {
    for (int32_t mstorage = 0; mstorage < 3; ++mstorage)
        for (int32_t method = 0; method < 3; ++method) {
            multivariate<double>(_vstdRngGaussianMV, _vstdRngGaussian, method, mstorage, 3, method == mstorage ? 200000 : 100);
            multivariate<double>(_vstdRngGaussianMV, _vstdRngGaussian, method, mstorage, 12, 100);
            multivariate<float>(_vstsRngGaussianMV, _vstsRngGaussian, method, mstorage, 4, 100);
        }
    Stream s = make(ORV_BRNG_MCG59, 2), c = copy(s);
    double x[6], y[6], m = 1.5, sd = 2.0;
    for (const int32_t mstorage : {0, 7}) {
        ASSERT_EQ(_vstdRngGaussianMV(0, s.get(), 6, x, 1, mstorage, &m, &sd), 0);
        ASSERT_EQ(_vstdRngGaussian(0, c.get(), 6, y, m, sd), 0);
        EXPECT_EQ(std::vector<double>(x, x + 6), std::vector<double>(y, y + 6));
    }
    ASSERT_EQ(_vstdRngGaussianMV(0, s.get(), 3, x, 2, 3, &m, &sd), 0);
    ASSERT_EQ(_vstdRngGaussian(0, c.get(), 6, y, 0.0, 1.0), 0);
    EXPECT_EQ(std::vector<double>(x, x + 6), std::vector<double>(y, y + 6));
}

}  // namespace
