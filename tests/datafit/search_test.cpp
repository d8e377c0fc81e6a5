// Cell search: every search kernel in every output form against
// searchsorted(x, s, side='right') with the right-end rule (written here as
// std::upper_bound, which is that definition), on arbitrary, sorted, uniform
// and quasi-uniform partitions with NaN and boundary sites; the user-defined
// walk's tie rule; kind selection and statuses of Search1D; teams.
#include <gtest/gtest.h>

#include <orv/datafit_eval.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "spline_util.h"

namespace {

// Cell of s: searchsorted right, x[nx-1] in cell nx-1, NaN in cell nx.
int64_t ref_cell(const std::vector<double>& x, double s) {
    const int64_t nx = int64_t(x.size());
    if (std::isnan(s)) return nx;
    if (s == x.back()) return nx - 1;
    return std::upper_bound(x.begin(), x.end(), s) - x.begin();
}

bool nan_last(double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; }  // as numpy sorts

enum class Part { Arbitrary, Sorted, Uniform, Quasi };

struct Data { std::vector<double> x, xarg, site; };

Data make(Part p, int64_t nx, uint32_t seed) {
    std::mt19937_64 g(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    Data d;
    if (p == Part::Uniform) {
        d.xarg = {-2.0, -2.0 + 0.25 * double(nx - 1)};  // exact step
        for (int64_t i = 0; i < nx; ++i) d.x.push_back(-2.0 + 0.25 * double(i));
    } else {
        double v = -3.0;
        for (int64_t i = 0; i < nx; ++i) {
            d.x.push_back(v);
            v += p == Part::Quasi ? 0.5 + 0.2 * u(g) : 0.01 + 2.0 * u(g) * u(g);
        }
        d.xarg = d.x;
    }
    const double lo = d.x.front(), hi = d.x.back();
    for (int i = 0; i < 600; ++i) d.site.push_back(lo - 1.0 + (hi - lo + 2.0) * u(g));
    for (double b : d.x) d.site.push_back(b);
    d.site.insert(d.site.end(), {lo, hi, std::nextafter(hi, 1e300), std::nextafter(lo, -1e300),
                                 1e300, -1e300, NAN, NAN, lo, hi});
    std::shuffle(d.site.begin(), d.site.end(), g);
    if (p == Part::Sorted) std::sort(d.site.begin(), d.site.end(), nan_last);
    return d;
}

// Call-back that leaves every cell to the walk from hint 0.
int zero_hints(int64_t*, const double*, void*, int32_t*, void*, void*) { return 0; }

enum class Form { F32, F64, Pack, Any32, Any64 };
enum Kernel { Uniform, Quasi, Sorted, Peak, Hybrid, User, UniUser };

#define DF_CALL(name, ...)                                                                    \
    switch (form) {                                                                           \
        case Form::F32: st = orv_df_kernel_dDF##name##Search1D32(__VA_ARGS__, c32.data() EXTRA); break; \
        case Form::F64: st = orv_df_kernel_dDF##name##Search1D64(__VA_ARGS__, c64.data() EXTRA); break; \
        case Form::Pack: st = orv_df_kernel_dDF##name##Search1D64Pack(__VA_ARGS__, c64.data() EXTRA); break; \
        case Form::Any32: st = orv_df_kernel_dDF##name##Search1D(__VA_ARGS__, c32.data(), 2 EXTRA); break; \
        case Form::Any64: st = orv_df_kernel_dDF##name##Search1D(__VA_ARGS__, c64.data(), 3 EXTRA); break; \
    }

// Runs one kernel in one form; cells come back as int64.
std::vector<int64_t> run(Kernel k, Form form, const Data& d, double scale, int64_t* hint) {
    const int64_t nx = int64_t(d.x.size()), n = int64_t(d.site.size());
    std::vector<int32_t> c32(n, -7);
    std::vector<int64_t> c64(n, -7);
    std::vector<int32_t> flags(n);
    const double* x = k == Uniform || k == UniUser ? d.xarg.data() : d.x.data();
    const double* s = d.site.data();
    int st = -1;
#define EXTRA
    switch (k) {
        case Uniform: DF_CALL(Uniform, nx, x, n, s, hint, scale, nullptr, 0, nullptr) break;
        case Quasi: DF_CALL(QuasiUniform, nx, x, n, s, hint, scale, nullptr, 0, nullptr) break;
        case Sorted: DF_CALL(Sorted, nx, x, n, s, hint, scale, nullptr, 0, nullptr) break;
        case Peak: DF_CALL(Peak, nx, x, n, s, hint, scale, nullptr, 0, nullptr) break;
        case Hybrid: DF_CALL(Hybrid, nx, x, n, s, hint, scale, nullptr, 0, nullptr) break;
        default: break;
    }
#undef EXTRA
#define EXTRA , zero_hints, nullptr, nullptr, flags.data()
    if (k == User) DF_CALL(UserDef, nx, x, n, s, hint, scale, nullptr, 0, nullptr)
    if (k == UniUser) DF_CALL(UniUserDef, nx, x, n, s, hint, scale, nullptr, 0, nullptr)
#undef EXTRA
    EXPECT_EQ(st, 0);
    const bool narrow = form == Form::F32 || form == Form::Any32;
    std::vector<int64_t> out(n);
    for (int64_t i = 0; i < n; ++i) out[i] = narrow ? c32[i] : c64[i];
    return out;
}

struct KernelCase { Kernel k; Part p; };

class SearchKernel : public testing::TestWithParam<KernelCase> {};

TEST_P(SearchKernel, MatchesSearchsortedInEveryForm) {
    const auto [k, p] = GetParam();
    for (int64_t nx : {2, 3, 41, 42, 150, 1000}) {
        const Data d = make(p, nx, uint32_t(nx * 31 + int(k)));
        const double lo = d.x.front(), hi = d.x.back();
        double scale = 0;
        if (k == Uniform || k == UniUser) scale = (d.xarg[1] - d.xarg[0]) / double(nx - 1);
        if (k == Quasi) scale = (hi - lo) / double(nx - 1);
        for (Form f : {Form::F32, Form::F64, Form::Pack, Form::Any32, Form::Any64}) {
            int64_t hint = 0;
            const auto cells = run(k, f, d, scale, &hint);
            for (size_t i = 0; i < d.site.size(); ++i) {
                int64_t want = ref_cell(d.x, d.site[i]);
                if (k == User && d.site[i] == lo && nx > 1) want = 0;  // walk from hint 0
                ASSERT_EQ(cells[i], want) << "nx " << nx << " site " << d.site[i] << " form " << int(f);
            }
            if (k == Sorted) { EXPECT_EQ(hint, nx); }  // the last sites are past the end
        }
    }
}

std::vector<KernelCase> kernel_cases() {
    return {{Uniform, Part::Uniform}, {UniUser, Part::Uniform}, {Quasi, Part::Quasi},
            {Quasi, Part::Arbitrary}, {Sorted, Part::Sorted}, {Peak, Part::Arbitrary},
            {Peak, Part::Quasi},      {Hybrid, Part::Arbitrary}, {Hybrid, Part::Uniform},
            {User, Part::Arbitrary}};
}
INSTANTIATE_TEST_SUITE_P(Kernels, SearchKernel, testing::ValuesIn(kernel_cases()));

// The user-defined walk: ties stay in the hint's cell, flagged cells are
// kept, 1000 makes every cell final, a negative status is returned.
struct Hints { std::vector<int64_t> cell; std::vector<int32_t> flag; int result; };
int give_hints(int64_t* n, const double*, void* cell, int32_t* flag, void* params, void*) {
    auto* h = static_cast<Hints*>(params);
    for (int64_t i = 0; i < *n; ++i) static_cast<int64_t*>(cell)[i] = h->cell[i], flag[i] = h->flag[i];
    return h->result;
}

TEST(UserDefinedSearch, WalkTieRuleAndFlags) {
    const std::vector<double> x = {0, 1, 2, 3, 4, 5};
    const std::vector<double> s = {2, 2, 0, 0, 5, 5, 2.5, 2.5, 9, -1};
    Hints h{{2, 3, 0, 1, 6, 2, 0, 5, 3, 4}, {0, 0, 0, 0, 0, 0, 0, 0, 1, 0}, 7};
    std::vector<int64_t> c(s.size());
    std::vector<int32_t> flags(s.size());
    int64_t hint = 0;
    auto walk = [&](auto entry) {
        return entry(6, x.data(), int64_t(s.size()), s.data(), &hint, 0, nullptr, 0, nullptr, c.data(), give_hints,
                     &h, nullptr, flags.data());
    };
    EXPECT_EQ(walk(orv_df_kernel_dDFUserDefSearch1D64), 7);
    // x[2] from hint 2 stays in cell 2, from hint 3 walks to 3 (x[2] <= s);
    // x[0] from hint 0 is in cell 0, from hint 1 in cell 1; the flagged 3 stays.
    EXPECT_EQ(c, (std::vector<int64_t>{2, 3, 0, 1, 5, 5, 3, 3, 3, 0}));
    h.result = 1000;
    EXPECT_EQ(walk(orv_df_kernel_dDFUserDefSearch1D64), 0);
    EXPECT_EQ(c, h.cell);
    h.result = -5;
    EXPECT_EQ(walk(orv_df_kernel_dDFUserDefSearch1D64Pack), -5);
}

TEST(Search1D, KindSelectionStatusesAndTeams) {
    for (int64_t xhint : {1, 2, 4}) {
        Data d = make(xhint == 4 ? Part::Uniform : xhint == 2 ? Part::Quasi : Part::Arbitrary, 300, 5);
        DFTask* t = nullptr;
        ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 300, d.xarg.data(), xhint, 0, nullptr, 0, 0), 0);
        const int64_t n = int64_t(d.site.size());
        const double peak_ok[5] = {0, 1, 0, 0, 300}, peak_bad[5] = {0, 1, 0, 0, 301},
                     bad[5] = {0, 2, 0, 0, 0}, nan_hint[5] = {0, NAN, 0, 0, 0};
        for (const double* dh : {(const double*)nullptr, peak_ok, peak_bad, bad, nan_hint})
            for (const DFThreadOps* ops : {(const DFThreadOps*)nullptr, &dftest::kThree}) {
                std::vector<int32_t> c(n, -9);
                const int st = orv_df_kernel_dDFSearch1D(t, 0, n, d.site.data(), 0, dh, c.data(),
                                                         nullptr, nullptr, ops);
                const bool refused = xhint == 1 && dh != nullptr && dh != peak_ok;
                ASSERT_EQ(st, refused ? DF_BAD_DATAHINT : 0);
                for (int64_t i = 0; i < n; ++i)
                    ASSERT_EQ(c[i], refused ? -9 : ref_cell(d.x, d.site[i])) << i;
            }
        // Sites by their ends, sorted sites winning over a data hint, user call-back.
        const double ends[2] = {d.x.front() - 1.0, d.x.back() + 1.0};
        std::vector<int64_t> c(5000);
        t->wide_ints = 1;
        ASSERT_EQ(orv_df_kernel_dDFSearch1D(t, 0, 5000, ends, DF_SITES_UNIFORM, bad, c.data(),
                                            nullptr, nullptr, &dftest::kThree),
                  xhint == 1 ? DF_BAD_DATAHINT : 0);
        ASSERT_EQ(orv_df_kernel_dDFSearch1D(t, 0, 5000, ends, DF_SITES_UNIFORM, nullptr, c.data(),
                                            nullptr, nullptr, &dftest::kThree), 0);
        for (int64_t i = 0; i < 5000; ++i)
            ASSERT_EQ(c[i], ref_cell(d.x, ends[0] + double(i) * ((ends[1] - ends[0]) / 4999.0)));
        std::vector<double> sorted = d.site;
        std::sort(sorted.begin(), sorted.end(), nan_last);
        ASSERT_EQ(orv_df_kernel_dDFSearch1D(t, 0, n, sorted.data(), DF_SITES_SORTED, bad, c.data(),
                                            nullptr, nullptr, nullptr), 0);
        for (int64_t i = 0; i < n; ++i) ASSERT_EQ(c[i], ref_cell(d.x, sorted[i]));
        ASSERT_EQ(orv_df_kernel_dDFSearch1D(t, 0, n, d.site.data(), 0, bad, c.data(), zero_hints,
                                            nullptr, &dftest::kThree), 0);
        for (int64_t i = 0; i < n; ++i)
            if (d.site[i] != d.x[0] || xhint == 4) { ASSERT_EQ(c[i], ref_cell(d.x, d.site[i])); }
        orv_df_kernel_DeleteTask(&t);
    }
    EXPECT_EQ(orv_df_kernel_dDFSearch1D(nullptr, 0, 1, nullptr, 0, nullptr, nullptr, nullptr,
                                        nullptr, nullptr), DF_NULL_TASK);
}

TEST(Search1D, SinglePrecision) {
    std::vector<float> x = {-1.0f, 0.5f, 0.75f, 2.0f, 7.5f};
    std::vector<float> s = {-2.0f, -1.0f, 0.5f, 0.6f, 2.0f, 7.5f, 8.0f, NAN};
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_sNewTask1D(&t, 5, x.data(), 1, 0, nullptr, 0, 0), 0);
    std::vector<int32_t> c(s.size());
    ASSERT_EQ(orv_df_kernel_sDFSearch1D(t, 0, int64_t(s.size()), s.data(), 0, nullptr, c.data(),
                                        nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(c, (std::vector<int32_t>{0, 1, 2, 2, 4, 4, 5, 5}));
    EXPECT_EQ(orv_df_kernel_dDFSearch1D(t, 0, 1, nullptr, 0, nullptr, c.data(), nullptr, nullptr,
                                        nullptr), DF_BAD_PRECISION);
    orv_df_kernel_DeleteTask(&t);
}

}  // namespace
