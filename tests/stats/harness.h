// A task with every result array of the basic statistics, in either
// precision and data layout (with an optional variable mask), for the tests
// of every entry.
#pragma once

#include <orv/stats.h>
#include <orv/threading.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "reference.h"

namespace harness {

enum Arr { MEAN, RAW2, RAW3, RAW4, C2, C3, C4, KURT, SKEW, VAR, SUM1, SUM2, SUM3, SUM4,
           CS2, CS3, CS4, COV, COR, CP, NARR };

constexpr uint64_t kMoments = SS_EST_MEAN | SS_EST_RAW2 | SS_EST_RAW3 | SS_EST_RAW4 |
                              SS_EST_CENTRAL2 | SS_EST_CENTRAL3 | SS_EST_CENTRAL4 |
                              SS_EST_KURTOSIS | SS_EST_SKEWNESS | SS_EST_VARIATION;
constexpr uint64_t kSums = SS_EST_SUM1 | SS_EST_SUM2 | SS_EST_SUM3 | SS_EST_SUM4 |
                           SS_EST_CENTRAL_SUM2 | SS_EST_CENTRAL_SUM3 | SS_EST_CENTRAL_SUM4;
constexpr uint64_t kMatrices = SS_EST_COV | SS_EST_COR | SS_EST_CROSS_PRODUCT;

// The creator of precision T.
template <typename T>
inline constexpr auto new_task = sizeof(T) == 8 ? __vstdSSNewTask : __vstsSSNewTask;

// Number of elements of a p x p matrix in a storage form.
inline int64_t matrix_size(int form, int64_t p) { return form == 0 ? p * p : p * (p + 1) / 2; }

// Element (i, j) of a matrix in a storage form: full, lower or upper packed by rows.
template <typename T>
T element(const std::vector<T>& m, int form, int64_t p, int64_t i, int64_t j) {
    if (form == 0) return m[i * p + j];
    if (form == 1) {
        if (j > i) std::swap(i, j);
        return m[i * (i + 1) / 2 + j];
    }
    if (j < i) std::swap(i, j);
    int64_t off = 0;
    for (int64_t r = 0; r < i; ++r) off += p - r;
    return m[off + (j - i)];
}

template <typename T>
struct Task {
    int64_t p = 0, n = 0;  // read by the task through its pointers (int_is_64 = 1)
    int64_t storage = 0, cov_form = 0, cor_form = 0, cp_form = 0;
    std::vector<T> x, w;
    std::array<std::vector<T>, NARR> a;
    T accum[2] = {0, 0};
    SsTask* task = nullptr;

    // Data given by observation in xo; stored in the requested layout.
    Task(const std::vector<double>& xo, const std::vector<double>& wo, int64_t n_, int64_t p_,
         bool by_obs, int form, T fill = T(0), const int64_t* mask = nullptr)
        : p(p_), n(n_), cov_form(form), cor_form(form), cp_form(form) {
        storage = by_obs ? SS_STORAGE_BY_OBSERVATION : SS_STORAGE_BY_VARIABLE;
        set_data(xo, wo, n_);
        for (int k = 0; k < NARR; ++k)
            a[k].assign(k >= COV ? matrix_size(form, p) : p, fill);
        EXPECT_EQ(new_task<T>(&task, &p, &n, &storage, x.data(), w.empty() ? nullptr : w.data(), mask, 1),
                  SS_OK);
        __vstdSSEditMoments(task, a[MEAN].data(), a[RAW2].data(), a[RAW3].data(), a[RAW4].data(),
                            a[C2].data(), a[C3].data(), a[C4].data());
        __vstdSSEditSums(task, a[SUM1].data(), a[SUM2].data(), a[SUM3].data(), a[SUM4].data(),
                         a[CS2].data(), a[CS3].data(), a[CS4].data());
        __vstdSSEditCovCor(task, nullptr, a[COV].data(), &cov_form, a[COR].data(), &cor_form);
        __vstdSSEditCP(task, nullptr, nullptr, a[CP].data(), &cp_form);
        __vstdSSEditTask(task, SS_ED_kurtosis, a[KURT].data());
        __vstdSSEditTask(task, SS_ED_skewness, a[SKEW].data());
        __vstdSSEditTask(task, SS_ED_variation, a[VAR].data());
        __vstdSSEditTask(task, SS_ED_accum_weights, accum);
    }
    ~Task() { __vstSSDeleteTask(&task); }
    Task(const Task&) = delete;

    // Replaces the observations (by observation in xo) with a block of nb.
    void set_data(const std::vector<double>& xo, const std::vector<double>& wo, int64_t nb,
                  int64_t first = 0) {
        n = nb;
        x.assign(nb * p, T(0));
        const bool by_obs = storage == SS_STORAGE_BY_OBSERVATION;
        for (int64_t i = 0; i < nb; ++i)
            for (int64_t j = 0; j < p; ++j)
                x[by_obs ? i * p + j : j * nb + i] = static_cast<T>(xo[(first + i) * p + j]);
        w.clear();
        for (int64_t i = 0; i < (wo.empty() ? 0 : nb); ++i) w.push_back(static_cast<T>(wo[first + i]));
        if (task) {
            __vstdSSEditTask(task, SS_ED_data, x.data());
            task->weights = w.empty() ? nullptr : w.data();
        }
    }

    int32_t basic(uint64_t est, uint64_t method, const SsThreadingTable* thr = nullptr) {
        if (!thr) thr = orv_ss_threading_serial();
        return sizeof(T) == 8 ? _vstdSSBasic(task, est, method, thr)
                              : _vstsSSBasic(task, est, method, thr);
    }
};

inline ::testing::AssertionResult close(long double got, long double want, double tol) {
    if (std::fabs(got - want) <= tol * std::fabs(want)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << (double)got << " want " << (double)want
                                         << " rel " << (double)std::fabs((got - want) / want);
}

// Every vector estimate in the request against the reference.
template <typename T>
void expect_vectors(const Task<T>& t, const ref::Estimates& e, uint64_t est, double tol,
                    bool mean_is_input) {
    const struct { uint64_t bit; Arr arr; const std::vector<long double>* want; } rows[] = {
        {SS_EST_MEAN, MEAN, &e.mean}, {SS_EST_RAW2, RAW2, &e.raw2}, {SS_EST_RAW3, RAW3, &e.raw3},
        {SS_EST_RAW4, RAW4, &e.raw4}, {SS_EST_CENTRAL2, C2, &e.c2}, {SS_EST_CENTRAL3, C3, &e.c3},
        {SS_EST_CENTRAL4, C4, &e.c4}, {SS_EST_KURTOSIS, KURT, &e.kurt},
        {SS_EST_SKEWNESS, SKEW, &e.skew}, {SS_EST_VARIATION, VAR, &e.var},
        {SS_EST_SUM1, SUM1, &e.sum1}, {SS_EST_SUM2, SUM2, &e.sum2}, {SS_EST_SUM3, SUM3, &e.sum3},
        {SS_EST_SUM4, SUM4, &e.sum4}, {SS_EST_CENTRAL_SUM2, CS2, &e.cs2},
        {SS_EST_CENTRAL_SUM3, CS3, &e.cs3}, {SS_EST_CENTRAL_SUM4, CS4, &e.cs4}};
    for (const auto& r : rows) {
        if (!(est & r.bit) || (mean_is_input && r.arr == MEAN)) continue;
        for (int64_t j = 0; j < t.p; ++j)
            EXPECT_TRUE(close(t.a[r.arr][j], (*r.want)[j], tol)) << "array " << r.arr << " j " << j;
    }
}

template <typename T>
void expect_matrices(const Task<T>& t, const ref::Estimates& e, uint64_t est, double tol) {
    const struct { uint64_t bit; Arr arr; int64_t form; const std::vector<long double>* want; } rows[] = {
        {SS_EST_COV, COV, t.cov_form, &e.cov}, {SS_EST_COR, COR, t.cor_form, &e.cor},
        {SS_EST_CROSS_PRODUCT, CP, t.cp_form, &e.cp}};
    for (const auto& r : rows) {
        if (!(est & r.bit)) continue;
        for (int64_t i = 0; i < t.p; ++i)
            for (int64_t j = 0; j < t.p; ++j)
                EXPECT_TRUE(close(element(t.a[r.arr], (int)r.form, t.p, i, j), (*r.want)[i * t.p + j], tol))
                    << "matrix " << r.arr << " (" << i << ", " << j << ")";
    }
}

// Sets the mean where the method takes it as given, runs the basic entry and
// compares every requested estimate with the reference.
template <typename T>
void run_and_expect(Task<T>& t, const ref::Estimates& e, uint64_t est, uint64_t method, double tol,
                    const SsThreadingTable* thr = nullptr) {
    const bool given = method == SS_METHOD_GIVEN_MEAN;
    for (int64_t j = 0; given && j < t.p; ++j) t.a[MEAN][j] = static_cast<T>(e.mean[j]);
    ASSERT_EQ(t.basic(est, method, thr), SS_OK);
    expect_vectors(t, e, est, tol, given);
    expect_matrices(t, e, est, tol);
}

}  // namespace harness
