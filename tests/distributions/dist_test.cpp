// Distributions: every continuous one through the same checks (goodness of
// fit against its distribution function, the formula on a copy's uniforms,
// uniforms consumed, batch cuts), then the discrete and edge cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <orv/dist.h>
#include <orv/vtm.h>

namespace {

struct Stream {
    void* s = nullptr;
    Stream(int32_t brng, uint32_t seed) { __vstNewStreamEx(&s, brng, 1, &seed); }
    explicit Stream(void* p) : s(p) {}
    Stream(const Stream&) = delete;
    ~Stream() {
        if (s != nullptr) __vstDeleteStream(&s);
    }
    Stream copy() const {
        void* c = nullptr;
        __vstCopyStream(&c, s);
        return Stream(c);
    }
    Stream(Stream&& o) noexcept : s(o.s) { o.s = nullptr; }
    std::vector<char> image() const {
        std::vector<char> m(__vstGetStreamSize(s));
        __vstSaveStreamM(s, m.data());
        return m;
    }
};

template <typename T>
using Fn = int32_t (*)(int32_t, void*, int32_t, T*, T, T);

// One continuous distribution in one precision: its call widened to double,
// the uniforms of a stream in that precision, and the formula that maps the
// uniforms of one output to it.
struct Row {
    std::string name;
    int per_output;  // uniforms per output
    double p1, p2;   // parameters: a and beta, or a and b for Uniform
    double eps;
    std::function<int32_t(int32_t, void*, int32_t, double*)> draw;
    std::function<std::vector<double>(void*, int32_t)> uniforms;
    std::function<double(const double* u)> formula;
    std::function<double(double)> cdf;
};

template <typename T>
Row row(const char* name, Fn<T> fn, int per, double p1, double p2, double lo, double hi,
        std::function<double(const double*)> formula, std::function<double(double)> cdf) {
    return {std::string(sizeof(T) == 4 ? "s" : "d") + name, per, p1, p2, std::numeric_limits<T>::epsilon(),
            [=](int32_t method, void* s, int32_t n, double* r) {
                std::vector<T> v(static_cast<size_t>(std::max(n, 0)));
                const int32_t status = fn(method, s, n, v.data(), T(p1), T(p2));
                std::copy(v.begin(), v.end(), r);
                return status;
            },
            [=](void* s, int32_t k) {
                std::vector<T> v(static_cast<size_t>(k));
                if constexpr (sizeof(T) == 4)
                    _vstsRngUniform(0, s, k, v.data(), T(lo), T(hi));
                else
                    _vstdRngUniform(0, s, k, v.data(), T(lo), T(hi));
                return std::vector<double>(v.begin(), v.end());
            },
            formula, cdf};
}

double tail(double z) { return z <= 0 ? 0.0 : 1.0 - std::exp(-z); }

template <typename T>
void add_rows(std::vector<Row>& rows) {
    const double a = 0.5, beta = 2.0;  // displacement and scale of the transforms
    auto z = [=](double x) { return (x - a) / beta; };
    rows.push_back(row<T>("Uniform", sizeof(T) == 4 ? Fn<T>(_vstsRngUniform) : Fn<T>(_vstdRngUniform), 1, -1.0,
                          3.0, -1.0, 3.0, [](const double* u) { return u[0]; },
                          [](double x) { return std::clamp((x + 1.0) / 4.0, 0.0, 1.0); }));
    rows.push_back(row<T>("Exponential", sizeof(T) == 4 ? Fn<T>(_vstsRngExponential) : Fn<T>(_vstdRngExponential),
                          1, a, beta, 0, 1, [=](const double* u) { return a - std::log(u[0]) * beta; },
                          [=](double x) { return tail(z(x)); }));
    rows.push_back(row<T>("Rayleigh", sizeof(T) == 4 ? Fn<T>(_vstsRngRayleigh) : Fn<T>(_vstdRngRayleigh), 1, a,
                          beta, 0, 1, [=](const double* u) { return std::sqrt(-std::log(u[0])) * beta + a; },
                          [=](double x) { return tail(z(x) * std::fabs(z(x))); }));
    rows.push_back(row<T>("Gumbel", sizeof(T) == 4 ? Fn<T>(_vstsRngGumbel) : Fn<T>(_vstdRngGumbel), 1, a, beta, 0,
                          1, [=](const double* u) { return std::log(-std::log(u[0])) * beta + a; },
                          [=](double x) { return 1.0 - std::exp(-std::exp(z(x))); }));
    rows.push_back(row<T>("Laplace", sizeof(T) == 4 ? Fn<T>(_vstsRngLaplace) : Fn<T>(_vstdRngLaplace), 2, a, beta,
                          0, 1, [=](const double* u) { return std::log(u[0]) * (u[1] > 0.5 ? beta : -beta) + a; },
                          [=](double x) { return z(x) < 0 ? 0.5 * std::exp(z(x)) : 1.0 - 0.5 * std::exp(-z(x)); }));
}

std::vector<Row> all_rows() {
    std::vector<Row> rows;
    add_rows<float>(rows);
    add_rows<double>(rows);
    return rows;
}

// Every built-in or registered generator whose stream replays from a copy.
std::vector<int32_t> replayable_generators() {
    std::vector<int32_t> ids;
    for (int32_t k = 0; k < __vstGetNumRegBrngs(); ++k) {
        const int32_t id = (k + 1) << 20;
        Stream s(id, 7);
        if (s.s != nullptr && id != ORV_BRNG_TRNG) ids.push_back(id);
    }
    return ids;
}

class Continuous : public ::testing::TestWithParam<Row> {};

// Kolmogorov-Smirnov on 10^6 draws at a fixed seed: sqrt(n) D below 1.95 (p = 0.001).
TEST_P(Continuous, FitsItsDistributionFunction) {
    const Row& r = GetParam();
    const int32_t n = 1000000;
    Stream s(ORV_BRNG_MCG59, 20261122);
    std::vector<double> x(n);
    ASSERT_EQ(r.draw(0, s.s, n, x.data()), 0);
    std::sort(x.begin(), x.end());
    double d = 0;
    for (int32_t i = 0; i < n; ++i) {
        const double f = r.cdf(x[i]);
        d = std::max({d, f - double(i) / n, double(i + 1) / n - f});
    }
    EXPECT_LT(std::sqrt(double(n)) * d, 1.95) << r.name;
}

// On every generator: output equals the formula on a copy's uniforms (to a
// few rounding errors of the precision), and the stream ends where the copy
// does after exactly per_output * n uniforms, whatever n is.
TEST_P(Continuous, IsTheFormulaOnTheUniformsItConsumes) {
    const Row& r = GetParam();
    for (const int32_t id : replayable_generators())
        for (const int32_t n : {3, 1500}) {
            Stream s(id, 99), c = s.copy();
            std::vector<double> x(n);
            ASSERT_EQ(r.draw(0, s.s, n, x.data()), 0);
            const std::vector<double> u = r.uniforms(c.s, r.per_output * n);
            for (int32_t i = 0; i < n; ++i) {
                const double want = r.formula(&u[static_cast<size_t>(r.per_output * i)]);
                const double tol = 16 * r.eps * std::max(std::fabs(want), std::fabs(r.p1) + std::fabs(r.p2));
                ASSERT_NEAR(x[i], want, tol) << r.name << " generator " << std::hex << id << " i " << i;
            }
            EXPECT_EQ(s.image(), c.image()) << r.name << " generator " << std::hex << id << " n " << n;
        }
}

TEST_P(Continuous, BatchCutsDoNotChangeTheSequence) {
    const Row& r = GetParam();
    Stream s(ORV_BRNG_MRG32K3A, 5), c = s.copy();
    std::vector<double> whole(2500), cut(2500);
    ASSERT_EQ(r.draw(0, s.s, 2500, whole.data()), 0);
    int32_t at = 0;
    for (const int32_t m : {1000, 1, 1499}) {
        ASSERT_EQ(r.draw(0, c.s, m, cut.data() + at), 0);
        at += m;
    }
    EXPECT_EQ(whole, cut) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Distributions, Continuous, ::testing::ValuesIn(all_rows()),
                         [](const auto& info) { return info.param.name; });

// An abstract stream that hands out the given doubles, or fails when empty.
struct Fixed {
    std::vector<double> values;
    Stream stream{nullptr};
    explicit Fixed(std::vector<double> v) : values(std::move(v)) {
        void* s = nullptr;
        __vstdNewAbstractStream(&s, static_cast<int32_t>(values.size()), values.data(), 0.0, 1.0,
                                [](void*, int32_t, double*) { return int32_t{-77}; });
        stream.s = s;
    }
};

TEST(TransformEdges, ZeroUniformGivesLargeFiniteValuesAndFlagClampsAtA) {
    const double a = 1.0, beta = 3.0;
    double r[2];
    Fixed zero({0.0, 1.5});  // exact 0, and a value beyond 1 that puts a - ln(u) beta below a
    ASSERT_EQ(_vstdRngExponential(0, zero.stream.s, 2, r, a, beta), 0);
    EXPECT_DOUBLE_EQ(r[0], a + 744.44007192138122 * beta);
    EXPECT_LT(r[1], a);
    Fixed again({0.0, 1.5});
    ASSERT_EQ(_vstdRngExponential(ORV_RNG_METHOD_ACCURATE, again.stream.s, 2, r, a, beta), 0);
    EXPECT_EQ(r[1], a);
    for (auto fn : {_vstdRngGumbel, _vstdRngRayleigh, _vstdRngLaplace}) {
        Fixed z({0.0, 0.0});
        ASSERT_EQ(fn(0, z.stream.s, 1, r, a, beta), 0);
        EXPECT_TRUE(std::isfinite(r[0]));
    }
}

// A failed fill returns its status; the thread's callback and error mode are
// as they were, and a later block is not written.
TEST(TransformEdges, FailedDrawReturnsItsStatusAndRestoresTheBracket) {
    const VtmErrorCallBack before = orv_vtm_kernel_GetErrorCallBack();
    const uint32_t errmode = orv_vtm_kernel_GetMode() & VTM_ERRMODE_MASK;
    std::vector<double> r(1500, 42.0);
    Fixed few(std::vector<double>(2048 + 10, 0.25));
    EXPECT_EQ(_vstdRngLaplace(0, few.stream.s, 1500, r.data(), 0.0, 1.0), -77);
    EXPECT_NE(r[0], 42.0);
    EXPECT_EQ(r[1024], 42.0);
    EXPECT_EQ(orv_vtm_kernel_GetErrorCallBack(), before);
    EXPECT_EQ(orv_vtm_kernel_GetMode() & VTM_ERRMODE_MASK, errmode);
}

TEST(UniformEdges, FlagClampsOntoTheClosedInterval) {
    double r[3];
    Fixed beyond({1.25, -0.5, 0.5});
    ASSERT_EQ(_vstdRngUniform(ORV_RNG_METHOD_ACCURATE, beyond.stream.s, 3, r, 2.0, 4.0), 0);
    EXPECT_EQ(r[0], 4.0);
    EXPECT_EQ(r[1], 2.0);
    EXPECT_EQ(r[2], 3.0);
    Stream s(ORV_BRNG_MCG59, 1);
    ASSERT_EQ(_vstdRngUniform(ORV_RNG_METHOD_ACCURATE, s.s, 3, r, 5.0, 5.0), 0);
    EXPECT_TRUE(r[0] == 5.0 && r[1] == 5.0 && r[2] == 5.0);
}

// Integers are the floor of the copy's doubles, also below zero; Bernoulli
// is u < p on the copy's single uniforms.
TEST(DiscreteForms, IntegersAndBernoulliFollowTheCopysUniforms) {
    const int32_t n = 3000;
    Stream s(ORV_BRNG_MCG59, 3), c = s.copy();
    std::vector<int32_t> k(n);
    ASSERT_EQ(_vstiRngUniform(0, s.s, n, k.data(), -3, 4), 0);
    std::vector<double> u(n);
    _vstdRngUniform(0, c.s, n, u.data(), -3.0, 4.0);
    for (int32_t i = 0; i < n; ++i) ASSERT_EQ(k[i], static_cast<int32_t>(std::floor(u[i])));
    EXPECT_EQ(*std::min_element(k.begin(), k.end()), -3);
    EXPECT_EQ(*std::max_element(k.begin(), k.end()), 3);

    for (const double p : {0.0, 0.3, 1.0}) {
        std::vector<float> f(n);
        _vstsRngUniform(0, c.s, n, f.data(), 0.0f, 1.0f);
        ASSERT_EQ(_vstiRngBernoulli(0, s.s, n, k.data(), p), 0);
        for (int32_t i = 0; i < n; ++i) ASSERT_EQ(k[i], f[i] < float(p) ? 1 : 0) << p;
    }
    EXPECT_EQ(s.image(), c.image());
}

TEST(BitsForms, WholeWordsPerGeneratorAndRefusalsDrawNothing) {
    // MCG59: the top 32 of 59 bits; 64-bit words pair consecutive values, low half first.
    for (const int32_t n : {1024, 1500}) {
        Stream s(ORV_BRNG_MCG59, 11), c = s.copy();
        std::vector<uint64_t> w(n), raw(2 * n);
        ASSERT_EQ(_vstiRngUniformBits64(0, s.s, n, w.data()), 0);
        _vstiRngUniformBits(0, c.s, 2 * n, reinterpret_cast<uint32_t*>(raw.data()));
        for (int32_t i = 0; i < n; ++i) ASSERT_EQ(w[i], (raw[2 * i] >> 27) | (raw[2 * i + 1] >> 27) << 32);
        std::vector<uint32_t> w32(n);
        ASSERT_EQ(_vstiRngUniformBits32(0, s.s, n, w32.data()), 0);
        _vstiRngUniformBits(0, c.s, n, reinterpret_cast<uint32_t*>(raw.data()));
        for (int32_t i = 0; i < n; ++i) ASSERT_EQ(w32[i], raw[i] >> 27);
    }
    // Word generators: three 64-bit words are six outputs.
    Stream mt(ORV_BRNG_MT19937, 5), mc = mt.copy();
    uint64_t w[3];
    uint32_t raw[6];
    ASSERT_EQ(_vstiRngUniformBits64(0, mt.s, 3, w), 0);
    _vstiRngUniformBits(0, mc.s, 6, raw);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(w[i], raw[2 * i] | uint64_t(raw[2 * i + 1]) << 32);
    EXPECT_EQ(mt.image(), mc.image());
    // Generators without whole uniform words.
    for (const int32_t id : {ORV_BRNG_MRG32K3A, ORV_BRNG_MCG31M1, ORV_BRNG_WH, ORV_BRNG_SOBOL}) {
        Stream s(id, 5);
        const std::vector<char> before = s.image();
        EXPECT_EQ(_vstiRngUniformBits32(0, s.s, 4, raw), ORV_RNG_ERROR_NO_NUMBITS);
        EXPECT_EQ(_vstiRngUniformBits64(0, s.s, 2, w), ORV_RNG_ERROR_NO_NUMBITS);
        EXPECT_EQ(s.image(), before);
    }
}

}  // namespace
