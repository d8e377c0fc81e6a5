// Interpolation and integration of every spline kind the constructors make,
// against an independent piecewise-polynomial oracle with scipy's PPoly
// conventions (cell by searchsorted right, outermost polynomials extended,
// integrals by exact antiderivatives in long double); layouts, teams, step
// functions, look-up, call-back groups and every status in order.
#include <gtest/gtest.h>

#include <orv/datafit_eval.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "spline_util.h"

namespace {

using dftest::Kind;
using LD = long double;

// The evaluation calls without call-backs, trailing arguments defaulted.
int interp(DFTask* t, int64_t n, const double* site, int64_t shint, int64_t nord, const void* ord, double* r,
           int64_t rhint, int64_t type = 0, void* cells = nullptr, const double* dh = nullptr,
           const DFThreadOps* ops = nullptr) {
    return orv_df_kernel_dDFInterpolate1D(t, type, 0, n, site, shint, nord, ord, dh, r, rhint, cells, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, ops);
}
int integ(DFTask* t, int64_t n, const double* a, int64_t ah, const double* b, int64_t bh, double* r, int64_t rhint,
          const DFThreadOps* ops = nullptr, const double* ldh = nullptr, const double* rdh = nullptr) {
    return orv_df_kernel_dDFIntegrate1D(t, 0, n, a, ah, b, bh, ldh, rdh, r, rhint, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, nullptr, ops);
}

struct Spline {
    DFTask* t = nullptr;
    std::vector<double> xs, xarg, y, bc, ic, coeff, knots;
    int64_t nx = 0, ny = 0, order = 0;
    bool knot_quad = false;
    ~Spline() { orv_df_kernel_DeleteTask(&t); }
};

// Kinds: the eight constructors, with the quadratic on secondary knots as a ninth.
struct KindCase { Kind kind; int64_t stype, xhint; };

void build(Spline& s, KindCase c, int64_t nx, int64_t ny) {
    std::mt19937_64 g(uint64_t(nx) * 7 + uint64_t(c.kind));
    std::uniform_real_distribution<double> u(0.0, 1.0);
    s.nx = nx, s.ny = ny, s.order = dftest::order_of(c.kind);
    s.knot_quad = c.kind == Kind::Quadratic && c.stype == 1;
    if (c.xhint == 4) {
        s.xarg = {-1.5, 2.5};
        for (int64_t i = 0; i < nx; ++i) s.xs.push_back(double(i) * (4.0 / double(nx - 1)) + -1.5);
    } else {
        double v = -1.5;
        for (int64_t i = 0; i < nx; ++i, v += 0.05 + 0.6 * u(g)) s.xs.push_back(v);
        s.xarg = s.xs;
    }
    for (int64_t f = 0; f < ny; ++f)
        for (int64_t i = 0; i < nx; ++i) s.y.push_back(std::sin(1.3 * s.xs[i] + f) + 0.1 * u(g));
    s.bc = c.kind == Kind::Quadratic && c.stype == 0 ? std::vector<double>{0.3, 0} : std::vector<double>{0.7, -1.3};
    int64_t bc_type = c.kind == Kind::Linear ? 0 : c.kind == Kind::Quadratic ? (c.stype ? 2 : 0x80) : 2;
    if (c.kind == Kind::Hermite || c.kind == Kind::Default)
        for (int64_t i = 1; i + 1 < nx; ++i) s.ic.push_back(std::cos(0.9 * s.xs[i]));
    s.knots.push_back(s.xs[0]);
    for (int64_t k = 1; k < nx; ++k)
        s.knots.push_back(s.xs[k - 1] + (c.xhint == 4 ? 0.5 : 0.2 + 0.1 * double(k % 5)) * (s.xs[k] - s.xs[k - 1]));
    s.knots.push_back(s.xs[nx - 1]);
    if (s.knot_quad && c.xhint != 4) s.ic = s.knots;
    const int64_t per = (s.knot_quad ? nx : nx - 1) * s.order;
    s.coeff.assign(per * ny, 0.0);
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&s.t, nx, s.xarg.data(), c.xhint, ny, s.y.data(), 0x10, 0), 0);
    const int64_t ic_type = s.ic.empty() ? 0 : s.knot_quad ? 8 : 1;
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(s.t, s.order, c.stype, bc_type, s.bc.data(), ic_type,
                                            s.ic.empty() ? nullptr : s.ic.data(), s.coeff.data(), 0x10), 0);
    if (s.knot_quad && s.ic.empty()) { ASSERT_EQ(orv_df_kernel_iEditVal(s.t, DF_ID_IC_TYPE, 8), 0); }  // midpoints
    ASSERT_EQ(dftest::ctor<double>(c.kind)(s.t, 0, 0, nullptr), 0);
}

// Polynomial of a site: the cell's left breakpoint (searchsorted right,
// clamped to the outermost cells), or the knot interval on secondary knots.
int64_t piece_of(const Spline& s, double x) {
    const std::vector<double>& b = s.knot_quad ? s.knots : s.xs;
    return std::upper_bound(b.begin() + 1, b.end() - 1, x) - (b.begin() + 1);
}

LD oracle(const Spline& s, int64_t f, double x, int der) {
    const int64_t p = piece_of(s, x);
    return LD(dftest::poly(s.coeff.data() + f * (s.coeff.size() / s.ny) + p * s.order, int(s.order),
                           double(LD(x) - LD(s.xs[p])), der));
}

// Integral from a to b of polynomial p, exactly in long double.
LD poly_integral(const Spline& s, int64_t f, int64_t p, LD a, LD b) {
    const double* c = s.coeff.data() + f * (s.coeff.size() / s.ny) + p * s.order;
    LD fa = 0, fb = 0;
    a -= s.xs[p], b -= s.xs[p];
    for (int64_t j = s.order - 1; j >= 0; --j) fa = fa * a + c[j] / LD(j + 1), fb = fb * b + c[j] / LD(j + 1);
    return fb * b - fa * a;
}

LD oracle_integral(const Spline& s, int64_t f, double a, double b) {
    const double lo = std::min(a, b), hi = std::max(a, b);
    std::vector<double> cuts = {lo};
    const std::vector<double>& inner = s.knot_quad ? s.knots : s.xs;
    for (size_t i = 1; i + 1 < inner.size(); ++i)
        if (inner[i] > lo && inner[i] < hi) cuts.push_back(inner[i]);
    cuts.push_back(hi);
    LD sum = 0;
    for (size_t i = 0; i + 1 < cuts.size(); ++i)
        sum += poly_integral(s, f, piece_of(s, 0.5 * (cuts[i] + cuts[i + 1])), cuts[i], cuts[i + 1]);
    return a <= b ? sum : -sum;
}

std::vector<double> sites_for(const Spline& s, int64_t n, uint32_t seed) {
    std::mt19937_64 g(seed);
    std::uniform_real_distribution<double> u(s.xs.front() - 1.0, s.xs.back() + 1.0);
    std::vector<double> out = s.xs;
    while (int64_t(out.size()) < n) out.push_back(u(g));
    std::shuffle(out.begin(), out.end(), g);
    return out;
}

// Element (f, i, d) of result r in layout rhint.
int64_t at(int64_t rhint, int64_t f, int64_t i, int64_t d, int64_t ny, int64_t n, int64_t nd) {
    switch (rhint) {
        case 0x20: return d * ny * n + f * n + i;
        case 0x100: return i * ny * nd + f * nd + d;
        case 0x200: return f * nd * n + d * n + i;
        default: return f * n * nd + i * nd + d;
    }
}

bool close(LD got, LD want, LD scale) { return std::fabs(double(got - want)) <= 1e-12 * double(1 + scale); }

class Evaluate : public testing::TestWithParam<KindCase> {};

TEST_P(Evaluate, ValuesAndDerivativesInEveryLayoutAndOnTeams) {
    Spline s;
    build(s, GetParam(), 65, 2);  // a uniform step of 1/16, exact
    if (HasFatalFailure()) return;
    const int64_t n = 5000;
    const std::vector<double> site = sites_for(s, n, 3);
    const int32_t all[4] = {1, 1, 1, 1}, some[3] = {1, 0, 1};
    for (const DFThreadOps* ops : {(const DFThreadOps*)nullptr, &dftest::kThree})
        for (int64_t rhint : {0x10, 0x20, 0x100, 0x200})
            for (int which = 0; which < 2; ++which) {
                const int64_t nd = which == 0 ? 4 : 2;
                std::vector<double> r(n * s.ny * nd, NAN);
                ASSERT_EQ(interp(s.t, n, site.data(), 0, which ? 3 : 4, which ? (const void*)some : (const void*)all,
                                 r.data(), rhint, 0, nullptr, nullptr, ops), 0);
                for (int64_t f = 0; f < s.ny; ++f)
                    for (int64_t i = 0; i < n; ++i)
                        for (int64_t d = 0; d < nd; ++d) {
                            const int der = which ? int(2 * d) : int(d);
                            const LD want = oracle(s, f, site[i], der);
                            const double got = r[at(rhint, f, i, d, s.ny, n, nd)];
                            ASSERT_TRUE(close(got, want, std::fabs(double(want)) + 10))
                                << "site " << site[i] << " f " << f << " der " << der << " got " << got
                                << " want " << double(want) << " rhint " << rhint;
                        }
            }
}

TEST_P(Evaluate, IntegralsWithExtrapolationSignsAndTeams) {
    Spline s;
    build(s, GetParam(), 65, 2);  // a uniform step of 1/16, exact
    if (HasFatalFailure()) return;
    const int64_t n = 4500;
    std::vector<double> a = sites_for(s, n, 5), b = sites_for(s, n, 6);
    a[0] = b[0];                                      // equal limits
    a[1] = s.xs[0] - 2.0, b[1] = s.xs.back() + 2.0;   // both ends outside
    for (const DFThreadOps* ops : {(const DFThreadOps*)nullptr, &dftest::kThree})
        for (int64_t rhint : {0x10, 0x20}) {
            std::vector<double> r(n * s.ny), rs(n * s.ny);
            ASSERT_EQ(integ(s.t, n, a.data(), 0, b.data(), 0, r.data(), rhint, ops), 0);
            ASSERT_EQ(integ(s.t, n, b.data(), 0, a.data(), 0, rs.data(), rhint, ops), 0);
            for (int64_t f = 0; f < s.ny; ++f)
                for (int64_t i = 0; i < n; ++i) {
                    const int64_t k = rhint == 0x10 ? f * n + i : i * s.ny + f;
                    const LD want = oracle_integral(s, f, a[i], b[i]);
                    ASSERT_TRUE(close(r[k], want, 10 * (std::fabs(double(b[i] - a[i])) + 1))) << a[i] << " " << b[i];
                    ASSERT_EQ(r[k], -rs[k]);
                    if (i == 0) { ASSERT_EQ(r[k], 0.0); }
                }
        }
    // Limits given by their ends.
    const double le[2] = {s.xs[0] - 0.5, s.xs.back()}, re[2] = {s.xs.back() + 0.5, s.xs[0]};
    std::vector<double> r(300 * s.ny);
    ASSERT_EQ(integ(s.t, 300, le, DF_SITES_UNIFORM, re, DF_SITES_UNIFORM, r.data(), 0x10), 0);
    for (int64_t i = 0; i < 300; ++i) {
        const double lo = le[0] + double(i) * ((le[1] - le[0]) / 299), hi = re[0] + double(i) * ((re[1] - re[0]) / 299);
        ASSERT_TRUE(close(r[i], oracle_integral(s, 0, lo, hi), 10 * (std::fabs(hi - lo) + 1)));
    }
}

std::vector<KindCase> kind_cases() {
    std::vector<KindCase> out;
    for (int64_t xh : {1, 4})
        for (Kind k : dftest::kKinds)
            out.push_back({k, 0, xh});
    out.push_back({Kind::Quadratic, 1, 1});
    out.push_back({Kind::Quadratic, 1, 4});
    return out;
}
INSTANTIATE_TEST_SUITE_P(Kinds, Evaluate, testing::ValuesIn(kind_cases()));

// Sites by their ends, sorted sites, cells returned to the caller and given
// by the caller, ndorder 0, rhint 0 and 0x80.
TEST(Interpolate, SiteHintsAndCells) {
    Spline s;
    build(s, {Kind::Natural, 0, 1}, 40, 1);
    const double ends[2] = {s.xs[0] - 0.5, s.xs.back() + 0.5};
    const int64_t n = 700;
    std::vector<double> site(n);
    for (int64_t i = 0; i < n; ++i) site[i] = ends[0] + double(i) * ((ends[1] - ends[0]) / double(n - 1));
    std::vector<double> r1(n), r2(n), r3(n);
    std::vector<int32_t> cells(n, -1);
    ASSERT_EQ(interp(s.t, n, ends, DF_SITES_UNIFORM, 0, nullptr, r1.data(), 0, DF_INTERP_STORE_CELLS, cells.data()), 0);
    ASSERT_EQ(interp(s.t, n, site.data(), DF_SITES_SORTED, 0, nullptr, r2.data(), 0x80), 0);
    ASSERT_EQ(interp(s.t, n, site.data(), 0, 0, nullptr, r3.data(), 0x10, DF_INTERP_CELLS_GIVEN, cells.data()), 0);
    for (int64_t i = 0; i < n; ++i) {
        ASSERT_EQ(cells[i], std::upper_bound(s.xs.begin(), s.xs.end(), site[i]) - s.xs.begin() -
                                (site[i] == s.xs.back()));
        ASSERT_TRUE(close(r1[i], oracle(s, 0, site[i], 0), 10));
        ASSERT_EQ(r1[i], r2[i]);
        ASSERT_EQ(r1[i], r3[i]);
    }
}

// Step functions, look-up and their statuses, on both partition kinds.
TEST(Interpolate, StepFunctionsAndLookUp) {
    const double xs[4] = {0, 1, 3, 4}, xu[2] = {0, 3}, y[8] = {10, 1, 20, 2, 30, 3, 40, 4};  // columns, ny 2
    const double site[8] = {-1, 0, 0.5, 1, 2, 3, 4, 5};
    const double left[8] = {10, 10, 20, 20, 30, 30, 40, 40}, right[8] = {10, 10, 10, 20, 20, 30, 40, 40};
    DFTask* t = nullptr;
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 4, xs, 1, 2, y, 0x20, 0), 0);
    double r[16];
    for (int64_t stype : {8, 7}) {
        ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, 0, stype, 0, nullptr, 0, nullptr, nullptr, 0), 0);
        ASSERT_EQ(interp(t, 8, site, 0, 0, nullptr, r, 0x100), 0);
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(r[2 * i], (stype == 8 ? left : right)[i]) << stype << " " << site[i];
            EXPECT_EQ(r[2 * i + 1], (stype == 8 ? left : right)[i] / 10) << stype << " " << site[i];
        }
        // Integral from -1 to 5: outside pieces take the end values.
        const double a = -1, b = 5;
        double q[2];
        ASSERT_EQ(integ(t, 1, &a, 0, &b, 0, q, 0x10), 0);
        EXPECT_EQ(q[0], stype == 8 ? 10 + 20 + 2 * 30 + 40 + 40 : 10 + 10 + 2 * 20 + 30 + 40);
    }
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, 0, 6, 0, nullptr, 0, nullptr, nullptr, 0), 0);
    const double good[4] = {0, 1, 3, 4};
    const int32_t two[2] = {1, 1}, slope[2] = {0, 1};
    auto call = [&](const double* s, int64_t n, int64_t nord, const int32_t* ord) {
        return interp(t, n, s, 0, nord, ord, r, 0);
    };
    ASSERT_EQ(call(good, 4, 0, nullptr), 0);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(r[i], y[2 * i]);
    EXPECT_EQ(call(site + 4, 1, 0, nullptr), DF_NOT_A_BREAKPOINT);  // 2
    EXPECT_EQ(call(site, 1, 0, nullptr), DF_NOT_A_BREAKPOINT);      // left of x[0]
    EXPECT_EQ(call(good, 4, 2, two), DF_BAD_ORDER_COUNT);
    EXPECT_EQ(call(good, 4, 2, slope), DF_NO_VALUE_REQUESTED);
    EXPECT_EQ(call(site + 4, 1, 2, two), DF_NOT_A_BREAKPOINT);  // sites are checked first
    const double a = 0, b = 1;
    EXPECT_EQ(integ(t, 1, &a, 0, &b, 0, r, 0), DF_BAD_STYPE);
    orv_df_kernel_DeleteTask(&t);
    // Uniform look-up within 2^-40.
    ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, 4, xu, 4, 2, y, 0x20, 0), 0);
    ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, 0, 6, 0, nullptr, 0, nullptr, nullptr, 0), 0);
    const double near[3] = {1 + 1e-13, 2 - 1e-13, 3}, far = 1 + 1e-9;
    ASSERT_EQ(call(near, 3, 0, nullptr), 0);
    EXPECT_EQ(std::vector<double>(r, r + 3), (std::vector<double>{20, 30, 40}));
    EXPECT_EQ(call(&far, 1, 0, nullptr), DF_NOT_A_BREAKPOINT);
    orv_df_kernel_DeleteTask(&t);
}

// Call-backs: each group reaches its own call-back with the right sites, the
// others are evaluated by the spline; counts add up over blocks.
struct Calls { int calls = 0; int64_t sites = 0; double tag = 0; int result = 0; };
int group_cb(int64_t* n, const int64_t*, const double*, double* r, void* p, void*) {
    auto* c = static_cast<Calls*>(p);
    ++c->calls, c->sites += *n;
    for (int64_t i = 0; i < *n; ++i) r[i] = c->tag;
    return c->result;
}
int piece_cb(int64_t* n, const int64_t*, const double*, const int64_t*, const double*, double* r,
             void* p, void*) {
    auto* c = static_cast<Calls*>(p);
    ++c->calls, c->sites += *n;
    r[0] = c->tag;
    return c->result;
}

TEST(CallBacks, GroupsAndCounts) {
    Spline s;
    build(s, {Kind::Akima, 0, 1}, 30, 1);
    const int64_t n = 1000;  // four blocks
    const std::vector<double> site = sites_for(s, n, 9);
    int64_t nl = 0, nr = 0;
    for (double v : site) nl += v < s.xs[0], nr += v > s.xs.back();
    for (int mask = 1; mask < 8; ++mask) {
        Calls c[3];
        c[0].tag = 1e6, c[1].tag = 2e6, c[2].tag = 3e6;
        std::vector<double> r(n);
        ASSERT_EQ(orv_df_kernel_dDFInterpolate1D(
                      s.t, 0, 0, n, site.data(), 0, 0, nullptr, nullptr, r.data(), 0, nullptr,
                      mask & 1 ? group_cb : nullptr, &c[0], mask & 2 ? group_cb : nullptr, &c[1],
                      mask & 4 ? group_cb : nullptr, &c[2], nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(c[0].sites, mask & 1 ? nl : 0);
        EXPECT_EQ(c[1].sites, mask & 2 ? nr : 0);
        EXPECT_EQ(c[2].sites, mask & 4 ? n - nl - nr : 0);
        for (int g = 0; g < 3; ++g) EXPECT_LE(c[g].calls, 4);
        for (int64_t i = 0; i < n; ++i) {
            const int g = site[i] < s.xs[0] ? 0 : site[i] > s.xs.back() ? 1 : 2;
            if (mask & (1 << g)) ASSERT_EQ(r[i], c[g].tag);
            else ASSERT_TRUE(close(r[i], oracle(s, 0, site[i], 0), 10));
        }
        // Integration: pieces left, right and inside, one call each.
        Calls q[3];
        q[0].tag = 1, q[1].tag = 10, q[2].tag = 100;
        const double lo[3] = {s.xs[0] - 1, s.xs[0] - 1, s.xs[2]}, hi[3] = {s.xs.back() + 1, s.xs[0] - 0.5, s.xs[3]};
        double out[3];
        ASSERT_EQ(orv_df_kernel_dDFIntegrate1D(s.t, 0, 3, lo, 0, hi, 0, nullptr, nullptr, out, 0x10,
                                               mask & 1 ? piece_cb : nullptr, &q[0],
                                               mask & 2 ? piece_cb : nullptr, &q[1],
                                               mask & 4 ? piece_cb : nullptr, &q[2], nullptr, nullptr,
                                               nullptr), 0);
        EXPECT_EQ(q[0].calls, mask & 1 ? 2 : 0);
        EXPECT_EQ(q[1].calls, mask & 2 ? 1 : 0);
        EXPECT_EQ(q[2].calls, mask & 4 ? 2 : 0);
        LD want = (mask & 1) ? 1 : oracle_integral(s, 0, lo[0], s.xs[0]);
        want += (mask & 2) ? 10 : oracle_integral(s, 0, s.xs.back(), hi[0]);
        want += (mask & 4) ? 100 : oracle_integral(s, 0, s.xs[0], s.xs.back());
        EXPECT_TRUE(close(out[0], want, 100));
        EXPECT_TRUE(close(out[1], (mask & 1) ? 1 : oracle_integral(s, 0, lo[1], hi[1]), 10));
        EXPECT_TRUE(close(out[2], (mask & 4) ? 100 : oracle_integral(s, 0, lo[2], hi[2]), 10));
    }
    // A negative status ends the call; earlier blocks stay written.
    Calls bad;
    bad.result = -77;
    std::vector<double> r(n, -1);
    EXPECT_EQ(orv_df_kernel_dDFInterpolate1D(s.t, 0, 0, n, site.data(), 0, 0, nullptr, nullptr, r.data(),
                                             0, nullptr, nullptr, nullptr, nullptr, nullptr, group_cb, &bad,
                                             nullptr, nullptr, nullptr), -77);
    EXPECT_EQ(bad.calls, 1);
    EXPECT_EQ(orv_df_kernel_dDFIntegrate1D(s.t, 0, 1, site.data(), 0, site.data() + 1, 0, nullptr, nullptr,
                                           r.data(), 0, nullptr, nullptr, nullptr, nullptr, piece_cb, &bad,
                                           nullptr, nullptr, nullptr), -77);
}

TEST(Statuses, InOrderAndNothingWritten) {
    Spline s;
    build(s, {Kind::Hyman, 0, 1}, 12, 1);
    const double site[2] = {0.1, 0.2}, bad_hint[5] = {0, 2, 0, 0, 0}, peak[5] = {0, 1, 0, 0, 13};
    double r[4] = {7, 7, 7, 7};
    auto ip = [&](DFTask* t, const double* dh, int64_t rhint) {
        return interp(t, 2, site, 0, 0, nullptr, r, rhint, 0, nullptr, dh);
    };
    auto ig = [&](DFTask* t, const double* ldh, const double* rdh, int64_t rhint) {
        return integ(t, 2, site, 0, site, 0, r, rhint, nullptr, ldh, rdh);
    };
    EXPECT_EQ(ip(nullptr, bad_hint, 3), DF_NULL_TASK);
    EXPECT_EQ(ig(nullptr, bad_hint, bad_hint, 3), DF_NULL_TASK);
    EXPECT_EQ(ip(s.t, bad_hint, 3), DF_BAD_DATAHINT);
    EXPECT_EQ(ip(s.t, peak, 3), DF_BAD_DATAHINT);
    EXPECT_EQ(ip(s.t, nullptr, 3), DF_BAD_RHINT);
    EXPECT_EQ(ig(s.t, bad_hint, nullptr, 3), DF_BAD_DATAHINT);
    EXPECT_EQ(ig(s.t, nullptr, bad_hint, 3), DF_BAD_DATAHINT);
    EXPECT_EQ(ig(s.t, nullptr, nullptr, 0x100), DF_BAD_INTEGRATION_RHINT);
    s.t->sorder = 1;
    EXPECT_EQ(ip(s.t, bad_hint, 3), DF_BAD_STYPE);
    EXPECT_EQ(ig(s.t, bad_hint, bad_hint, 3), DF_BAD_STYPE);
    s.t->sorder = 0, s.t->stype = 3;  // no polynomial and no call-backs
    EXPECT_EQ(ip(s.t, nullptr, 0), DF_BAD_STYPE);
    EXPECT_EQ(ig(s.t, nullptr, nullptr, 0), DF_BAD_STYPE);
    s.t->sorder = 4, s.t->stype = 1;
    EXPECT_EQ(ip(s.t, nullptr, 0), DF_BAD_STYPE);
    s.t->stype = 0;
    void** coeff = s.t->scoeff;
    s.t->scoeff = nullptr;
    EXPECT_EQ(ip(s.t, nullptr, 0), DF_NULL_SCOEFF);
    EXPECT_EQ(ig(s.t, nullptr, nullptr, 0), DF_NULL_SCOEFF);
    s.t->scoeff = coeff;
    s.t->is_double = 0;
    EXPECT_EQ(ip(s.t, nullptr, 0), DF_BAD_PRECISION);
    EXPECT_EQ(ig(s.t, nullptr, nullptr, 0), DF_BAD_PRECISION);
    s.t->is_double = 1;
    for (double v : r) EXPECT_EQ(v, 7);
    const double peak_ok[5] = {0, 1, 0, 0, 12};
    EXPECT_EQ(ip(s.t, peak_ok, 0), 0);
}

// Single precision runs the same steps: values against the double oracle of
// the same rounded coefficients.
TEST(SinglePrecision, InterpolateAndIntegrate) {
    const float x[5] = {0.0f, 0.5f, 1.5f, 2.0f, 3.0f}, y[5] = {1.0f, 2.0f, 0.5f, 0.0f, 1.0f};
    DFTask* t = nullptr;
    std::vector<float> c(16);
    ASSERT_EQ(orv_df_kernel_sNewTask1D(&t, 5, x, 1, 1, y, 0, 0), 0);
    ASSERT_EQ(orv_df_kernel_sEditPPSpline1D(t, 4, 0, 2, nullptr, 0, nullptr, c.data(), 0), 0);
    ASSERT_EQ(orv_df_kernel_sDFNaturalCubicSpline1D(t, 0, 0, nullptr), 0);
    const float s[4] = {-0.5f, 0.5f, 1.7f, 3.5f};
    float r[4], q;
    ASSERT_EQ(orv_df_kernel_sDFInterpolate1D(t, 0, 0, 4, s, 0, 0, nullptr, nullptr, r, 0, nullptr, nullptr,
                                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr), 0);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(r[i], dftest::poly(c.data() + 4 * i, 4, s[i] - x[i], 0), 2e-6);  // site i in cell i
    ASSERT_EQ(orv_df_kernel_sDFIntegrate1D(t, 0, 1, x, 0, x + 4, 0, nullptr, nullptr, &q, 0, nullptr,
                                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                           nullptr), 0);
    double want = 0;
    for (int k = 0; k < 4; ++k) {
        const double w = x[k + 1] - x[k];
        for (int j = 0; j < 4; ++j) want += c[4 * k + j] * std::pow(w, j + 1) / (j + 1);
    }
    EXPECT_NEAR(q, want, 1e-5);
    orv_df_kernel_DeleteTask(&t);
}

// scipy's PPoly on fixed coefficients of orders 2, 3, 4 and 6: values and
// derivatives 0..3 and integrals with extrapolation
// (tests/data/datafit/ppoly_reference.txt, tools/gen_datafit_eval_ref.py).
TEST(PPolyReference, ValuesDerivativesAndIntegrals) {
    std::ifstream in(std::string(ORV_DF_DATA_DIR) + "/ppoly_reference.txt");
    ASSERT_TRUE(in.good());
    std::string line, word;
    std::vector<double> x, c, ys;
    int64_t order = 0, cases = 0;
    DFTask* t = nullptr;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        ls >> word;
        if (word == "case") {  // case order k nx n
            ls >> word >> order;
            ++cases;
            continue;
        }
        std::vector<double> v;
        for (double d; ls >> d;) v.push_back(d);
        if (word == "x") {
            x = v;
        } else if (word == "c") {
            c = v;
            ys.assign(x.size(), 0.0);
            orv_df_kernel_DeleteTask(&t);
            ASSERT_EQ(orv_df_kernel_dNewTask1D(&t, int64_t(x.size()), x.data(), 1, 1, ys.data(), 0, 0), 0);
            ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(t, order, 0, 0, nullptr, 0, nullptr, c.data(), 0), 0);
        } else if (word == "site") {
            const int32_t all[4] = {1, 1, 1, 1};
            double r[4];
            ASSERT_EQ(interp(t, 1, v.data(), 0, 4, all, r, 0), 0);
            for (int d = 0; d < 4; ++d)
                EXPECT_NEAR(r[d], v[1 + d], 1e-12 * (1 + std::fabs(v[1 + d]))) << "order " << order << " site " << v[0] << " der " << d;
        } else if (word == "integral") {
            double r;
            ASSERT_EQ(integ(t, 1, &v[0], 0, &v[1], 0, &r, 0), 0);
            EXPECT_NEAR(r, v[2], 1e-12 * (1 + std::fabs(v[2]))) << "order " << order << " " << v[0] << " " << v[1];
        }
    }
    orv_df_kernel_DeleteTask(&t);
    EXPECT_EQ(cases, 4);
}

}  // namespace
