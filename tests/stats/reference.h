// Two-pass reference estimates in long double, written apart from the
// library: first the weighted mean, then sums of powers of the deviations.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace ref {

// Observations by observation: x[i * p + j]. Empty w means unit weights.
struct Estimates {
    long double W = 0, W2 = 0;
    std::vector<long double> mean, raw2, raw3, raw4, sum1, sum2, sum3, sum4;
    std::vector<long double> cs2, cs3, cs4, c2, c3, c4, kurt, skew, var;
    std::vector<long double> cp, cov, cor;  // p x p, full
};

inline Estimates two_pass(const std::vector<double>& x, const std::vector<double>& w, int64_t n,
                          int64_t p) {
    Estimates e;
    auto wt = [&](int64_t i) -> long double { return w.empty() ? 1.0L : w[i]; };
    for (int64_t i = 0; i < n; ++i) {
        e.W += wt(i);
        e.W2 += wt(i) * wt(i);
    }
    auto vec = [&](std::vector<long double>& v) { v.assign(p, 0.0L); };
    for (auto* v : {&e.mean, &e.raw2, &e.raw3, &e.raw4, &e.sum1, &e.sum2, &e.sum3, &e.sum4, &e.cs2,
                    &e.cs3, &e.cs4, &e.c2, &e.c3, &e.c4, &e.kurt, &e.skew, &e.var})
        vec(*v);
    for (int64_t i = 0; i < n; ++i)
        for (int64_t j = 0; j < p; ++j) {
            const long double v = x[i * p + j], ww = wt(i);
            e.sum1[j] += ww * v;
            e.sum2[j] += ww * v * v;
            e.sum3[j] += ww * v * v * v;
            e.sum4[j] += ww * v * v * v * v;
        }
    for (int64_t j = 0; j < p; ++j) {
        e.mean[j] = e.sum1[j] / e.W;
        e.raw2[j] = e.sum2[j] / e.W;
        e.raw3[j] = e.sum3[j] / e.W;
        e.raw4[j] = e.sum4[j] / e.W;
    }
    e.cp.assign(p * p, 0.0L);
    for (int64_t i = 0; i < n; ++i)
        for (int64_t j = 0; j < p; ++j) {
            const long double d = x[i * p + j] - e.mean[j], ww = wt(i);
            e.cs2[j] += ww * d * d;
            e.cs3[j] += ww * d * d * d;
            e.cs4[j] += ww * d * d * d * d;
            for (int64_t k = 0; k < p; ++k) e.cp[j * p + k] += ww * d * (x[i * p + k] - e.mean[k]);
        }
    const long double div2 = e.W - e.W2 / e.W;
    e.cov.assign(p * p, 0.0L);
    e.cor.assign(p * p, 0.0L);
    for (int64_t j = 0; j < p; ++j) {
        e.c2[j] = e.cs2[j] / div2;
        e.c3[j] = e.cs3[j] / e.W;
        e.c4[j] = e.cs4[j] / e.W;
        e.kurt[j] = e.c4[j] / (e.c2[j] * e.c2[j]) - 3;
        e.skew[j] = e.c3[j] / std::pow(e.c2[j], 1.5L);
        e.var[j] = std::sqrt(e.c2[j]) / e.mean[j];
        for (int64_t k = 0; k < p; ++k) {
            e.cov[j * p + k] = e.cp[j * p + k] / div2;
            e.cor[j * p + k] = j == k ? e.cov[j * p + k]
                                      : e.cp[j * p + k] / std::sqrt(e.cp[j * p + j] * e.cp[k * p + k]);
        }
    }
    return e;
}

// Well-conditioned skewed data: offset by variable plus an exponential part,
// correlated through a shared component.
inline std::vector<double> make_data(int64_t n, int64_t p, unsigned seed) {
    std::mt19937_64 g(seed);
    std::exponential_distribution<double> ex(2.0);
    std::vector<double> x(n * p);
    for (int64_t i = 0; i < n; ++i) {
        const double shared = ex(g);
        for (int64_t j = 0; j < p; ++j) x[i * p + j] = 0.5 + 0.1 * j + ex(g) + (0.6 + 0.3 * j) * shared;
    }
    return x;
}

inline std::vector<double> make_weights(int64_t n, unsigned seed) {
    std::mt19937_64 g(seed);
    std::uniform_real_distribution<double> u(0.25, 2.0);
    std::vector<double> w(n);
    for (auto& v : w) v = u(g);
    return w;
}

}  // namespace ref
