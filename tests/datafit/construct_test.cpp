// Properties of every constructor, boundary kind, value layout and partition
// kind: interpolation, continuity, end conditions, periodicity, reproduction
// of lines, monotonicity of Hyman, and single
// precision against double.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "spline_util.h"

namespace {

using dftest::Kind;

struct Case { Kind kind; int64_t bc_type, stype, yhint, xhint, nx, ny; bool threads; };

std::string case_name(const Case& c) {
    char buf[128];
    snprintf(buf, sizeof buf, "%s_s%d_bc%x_y%x_x%d_n%d%s", dftest::name(c.kind), int(c.stype),
             unsigned(c.bc_type), unsigned(c.yhint), int(c.xhint), int(c.nx),
             c.threads ? "_omp" : "");
    return buf;
}

std::vector<Case> all_cases() {
    std::vector<Case> out;
    const int64_t layouts[] = {0x0, 0x10, 0x20, 0x80};
    const int64_t cubic_bc[] = {0x01, 0x02, 0x0C, 0x24, 0x18, 0x30, 0x40};
    for (int64_t yh : layouts)
        for (int64_t xh : {1, 4}) {
            out.push_back({Kind::Linear, 0, 0, yh, xh, 9, 3, false});
            out.push_back({Kind::Linear, 0, 0, yh, xh, 2, 3, false});
            out.push_back({Kind::Quadratic, 0x80, 0, yh, xh, 9, 3, false});
            for (int64_t bc : {0x02, 0x0C, 0x24, 0x18, 0x30})
                out.push_back({Kind::Quadratic, bc, 1, yh, xh, 9, 3, false});
            for (Kind k : {Kind::Akima, Kind::Bessel, Kind::Hyman, Kind::Hermite, Kind::Default,
                           Kind::Natural})
                for (int64_t bc : cubic_bc) out.push_back({k, bc, 0, yh, xh, 11, 3, false});
            out.push_back({Kind::Akima, 0x00, 0, yh, xh, 11, 3, false});
        }
    // Several tiles of cells and of functions, spread over threads.
    for (Kind k : {Kind::Akima, Kind::Hyman, Kind::Natural})
        for (int64_t yh : {0x10, 0x20})
            for (int64_t bc : {0x01, 0x30, 0x40})
                out.push_back({k, bc, 0, yh, 1, 4500, 6, true});
    // The smallest partitions each kind accepts.
    for (int64_t bc : {0x02, 0x0C, 0x30, 0x40}) out.push_back({Kind::Natural, bc, 0, 0x10, 1, 2, 2, false});
    for (int64_t bc : {0x01, 0x02, 0x0C, 0x24, 0x40})
        out.push_back({Kind::Natural, bc, 0, 0x10, 1, 3, 2, false});
    out.push_back({Kind::Akima, 0x01, 0, 0x10, 1, 5, 2, false});
    out.push_back({Kind::Hyman, 0x02, 0, 0x10, 4, 4, 2, false});
    out.push_back({Kind::Bessel, 0x0C, 0, 0x20, 1, 3, 2, false});
    out.push_back({Kind::Default, 0x01, 0, 0x10, 1, 3, 2, false});
    return out;
}

// A problem: breakpoints, values of ny functions (rows), end values, ic.
struct Problem {
    std::vector<double> xs;    // all breakpoints
    std::vector<double> xarg;  // what the task holds (two ends when uniform)
    std::vector<double> y;     // rows: function k at k*nx
    std::vector<double> bc, ic;
};

enum class Shape { Wavy, Line };

Problem make(const Case& c, Shape shape) {
    Problem p;
    const int64_t n = c.nx;
    const bool uniform = c.xhint == 4;
    if (uniform) {
        p.xarg = {-1.0, -1.0 + 0.8 * double(n - 1)};
        const double h = (p.xarg[1] - p.xarg[0]) / double(n - 1);
        for (int64_t i = 0; i < n; ++i) p.xs.push_back(p.xarg[0] + double(i) * h);
    } else {
        for (int64_t i = 0; i < n; ++i) p.xs.push_back(double(i) + 0.3 * std::sin(2.1 * double(i)));
        p.xarg = p.xs;
    }
    const bool periodic = c.bc_type == 0x40;
    for (int64_t k = 0; k < c.ny; ++k)
        for (int64_t i = 0; i < n; ++i) {
            const double x = p.xs[i];
            const double xr = x * 10.0 / double(n);
            double v = std::sin(0.9 * x + double(k)) + 0.05 * double(k) * xr * xr;
            if (shape == Shape::Line) v = periodic ? 2.0 : 2.0 + 3.0 * x;
            p.y.push_back(v);
        }
    if (periodic)
        for (int64_t k = 0; k < c.ny; ++k) p.y[k * n + n - 1] = p.y[k * n];
    const bool line = shape == Shape::Line;
    if (c.kind == Kind::Quadratic && c.stype == 0) {
        const double xm = 0.5 * (p.xs[0] + p.xs[1]);
        p.bc = {line ? 2.0 + 3.0 * xm : 0.25, 0.0};
    } else {
        // Values used by the first and second derivative conditions.
        const bool first_left = c.bc_type & 0x04, first_right = c.bc_type & 0x08;
        const double slope = periodic ? 0.0 : 3.0;
        p.bc = {line ? (first_left ? slope : 0.0) : 0.7, line ? (first_right ? slope : 0.0) : -1.3};
    }
    if (c.kind == Kind::Hermite)
        for (int64_t i = 1; i + 1 < n; ++i)
            p.ic.push_back(line ? (periodic ? 0.0 : 3.0) : std::cos(0.9 * p.xs[i]));
    if (c.kind == Kind::Default)
        for (int64_t i = 1; i + 1 < n; ++i) p.ic.push_back(line ? 0.0 : 0.4 * std::sin(1.3 * double(i)));
    // Secondary knots off the midpoints on non-uniform partitions; the
    // uniform cases take the midpoints by default.
    if (c.kind == Kind::Quadratic && c.stype == 1 && !uniform) {
        p.ic.push_back(p.xs[0]);
        for (int64_t k = 1; k < n; ++k) p.ic.push_back(p.xs[k - 1] + (0.2 + 0.05 * double(k % 5)) * (p.xs[k] - p.xs[k - 1]));
        p.ic.push_back(p.xs[n - 1]);
    }
    return p;
}

// A built spline in precision T: coefficients per function as doubles.
template <typename T>
struct Built { int status = -1; std::vector<std::vector<double>> coef; };

template <typename T>
Built<T> build(const Case& c, const Problem& p) {
    const int64_t n = c.nx, ny = c.ny;
    std::vector<T> x(p.xarg.begin(), p.xarg.end()), bc(p.bc.begin(), p.bc.end()),
        ic(p.ic.begin(), p.ic.end());
    // Values in the case's layout.
    std::vector<T> y(n * ny);
    for (int64_t k = 0; k < ny; ++k)
        for (int64_t i = 0; i < n; ++i) {
            const T v = T(p.y[k * n + i]);
            if (c.yhint == 0x20) y[i * ny + k] = v;
            else y[k * n + i] = v;
        }
    const int64_t order = dftest::order_of(c.kind);
    const int64_t per = (c.kind == Kind::Quadratic && c.stype == 1 ? n : n - 1) * order;
    std::vector<std::vector<T>> blocks(ny, std::vector<T>(per, T(-777)));
    std::vector<T> one_block(per * ny, T(-777));
    const bool separate = c.yhint == 0x80;
    Built<T> out;
    DFTask* t = nullptr;
    int st = dftest::Api<T>::new_task(&t, n, x.data(), c.xhint, ny, y.data(), c.yhint, 0);
    EXPECT_EQ(st, DF_OK);
    if (st != DF_OK) return out;
    const bool knots = c.kind == Kind::Quadratic && c.stype == 1;
    const int64_t ic_type = ic.empty() ? 0 : (knots ? 8 : 1);
    const T* icp = ic.empty() ? nullptr : ic.data();
    st = dftest::Api<T>::edit_pp(t, order, c.stype, c.bc_type, bc.data(), ic_type, icp,
                                 separate ? blocks[0].data() : one_block.data(),
                                 separate ? 0x80 : c.yhint);
    for (int64_t k = 1; separate && k < ny; ++k) {
        EXPECT_EQ(dftest::Api<T>::edit_idx_ptr(t, DF_PTR_Y, k, y.data() + k * n), DF_OK);
        EXPECT_EQ(dftest::Api<T>::edit_idx_ptr(t, DF_PTR_SCOEFF, k, blocks[k].data()), DF_OK);
    }
    EXPECT_EQ(st, DF_OK);
    // Secondary knots without an array: the midpoints.
    if (knots && ic.empty()) { EXPECT_EQ(orv_df_kernel_iEditVal(t, DF_ID_IC_TYPE, 8), DF_OK); }
    const DFThreadOps* ops = c.threads ? orv_df_thread_ops_openmp() : orv_df_thread_ops_serial();
    out.status = dftest::ctor<T>(c.kind)(t, 0, 0, ops);
    for (int64_t k = 0; k < ny; ++k) {
        const T* b = separate ? blocks[k].data() : one_block.data() + k * per;
        out.coef.emplace_back(b, b + per);
    }
    orv_df_kernel_DeleteTask(&t);
    return out;
}

// One test per constructor; the cases of its kinds, layouts and partitions
// run inside it, each under a trace of its name.
class Construct : public ::testing::TestWithParam<Kind> {
  protected:
    template <typename Body>
    void for_each_case(Body body) {
        for (const Case& c : all_cases()) {
            if (c.kind != GetParam()) continue;
            SCOPED_TRACE(case_name(c));
            body(c);
        }
    }
};

double near_tol(double a, double b) { return 1e-9 * (1.0 + std::fabs(a) + std::fabs(b)); }

void interpolates_joins_and_meets_end_conditions(const Case& c) {
    const Problem p = make(c, Shape::Wavy);
    const Built<double> b = build<double>(c, p);
    ASSERT_EQ(b.status, DF_OK);
    const int64_t n = c.nx, order = dftest::order_of(c.kind);
    const auto& X = p.xs;
    for (int64_t k = 0; k < c.ny; ++k) {
        const double* co = b.coef[k].data();
        const double* Y = p.y.data() + k * n;
        auto P = [&](int64_t cell, double site, int der) {
            return dftest::poly(co + cell * order, int(order), site - X[cell], der);
        };
        if (c.kind == Kind::Quadratic && c.stype == 1) {
            // Parabolas around each breakpoint, joined with value and slope at the knots.
            for (int64_t i = 0; i < n; ++i) EXPECT_EQ(co[3 * i], Y[i]);
            for (int64_t i = 1; i < n; ++i) {
                const double tk = p.ic.empty() ? 0.5 * (X[i - 1] + X[i]) : p.ic[i];
                for (int der = 0; der < 2; ++der) {
                    const double l = dftest::poly(co + 3 * (i - 1), 3, tk - X[i - 1], der);
                    const double r = dftest::poly(co + 3 * i, 3, tk - X[i], der);
                    EXPECT_NEAR(l, r, near_tol(l, r)) << "function " << k << " knot " << i;
                }
            }
            const double* L = co + 3 * (n - 1);
            if (c.bc_type & 0x04) EXPECT_NEAR(co[1], p.bc[0], 1e-9);
            else EXPECT_NEAR(2 * co[2], (c.bc_type & 0x10) ? p.bc[0] : 0.0, 1e-9);
            if (c.bc_type & 0x08) EXPECT_NEAR(L[1], p.bc[1], 1e-9);
            else EXPECT_NEAR(2 * L[2], (c.bc_type & 0x20) ? p.bc[1] : 0.0, 1e-9);
            continue;
        }
        for (int64_t i = 0; i + 1 < n; ++i) {
            EXPECT_EQ(co[i * order], Y[i]);
            EXPECT_NEAR(P(i, X[i + 1], 0), Y[i + 1], near_tol(Y[i + 1], 0)) << "cell " << i;
        }
        // Default joins second derivatives only: its first derivatives are
        // continuous just when the given ones come from a C2 spline.
        const int first = c.kind == Kind::Default ? 2 : 1;
        const int last = c.kind == Kind::Linear ? 0
                         : (c.kind == Kind::Natural || c.kind == Kind::Default) ? 2 : 1;
        for (int64_t i = 1; i + 1 < n; ++i)
            for (int der = first; der <= last; ++der) {
                const double l = P(i - 1, X[i], der), r = P(i, X[i], der);
                EXPECT_NEAR(l, r, near_tol(l, r)) << "function " << k << " breakpoint " << i
                                                  << " derivative " << der;
            }
        if (c.kind == Kind::Quadratic) {
            EXPECT_NEAR(P(0, 0.5 * (X[0] + X[1]), 0), p.bc[0], 1e-12);
            continue;
        }
        // Two breakpoints: a straight line whatever the end kind.
        if (c.kind == Kind::Linear || n == 2) continue;
        const double left1 = P(0, X[0], 1), left2 = P(0, X[0], 2);
        const double right1 = P(n - 2, X[n - 1], 1), right2 = P(n - 2, X[n - 1], 2);
        switch (c.bc_type) {
            case 0x01:
                // Not-a-knot: the third derivative is continuous at x[1] and
                // x[n-2]; with C1 too, the two end cells are one cubic each.
                if (c.kind == Kind::Default && n >= 4) {
                    EXPECT_NEAR(co[3], co[7], 1e-9 * (1 + std::fabs(co[3])));
                    EXPECT_NEAR(co[4 * (n - 3) + 3], co[4 * (n - 2) + 3], 1e-9 * (1 + std::fabs(co[3])));
                } else if (n >= 4 || c.kind == Kind::Natural) {
                    EXPECT_NEAR(P(0, X[2], 0), Y[2], near_tol(Y[2], 0));
                    EXPECT_NEAR(P(n - 2, X[n - 3], 0), Y[n - 3], near_tol(Y[n - 3], 0));
                }
                break;
            case 0x40: {
                const double d0 = P(0, X[0], 1), d1 = P(n - 2, X[n - 1], 1);
                EXPECT_NEAR(d0, d1, near_tol(d0, d1));
                if (c.kind == Kind::Natural || c.kind == Kind::Default) {
                    EXPECT_NEAR(left2, right2, near_tol(left2, right2) * 10);
                }
                break;
            }
            case 0x00: break;
            default:
                if (c.bc_type & 0x04) { EXPECT_NEAR(left1, p.bc[0], 1e-9); }
                if (c.bc_type & 0x08) { EXPECT_NEAR(right1, p.bc[1], 1e-9); }
                if (c.bc_type & 0x10) { EXPECT_NEAR(left2, p.bc[0], 1e-8); }
                if (c.bc_type & 0x20) { EXPECT_NEAR(right2, p.bc[1], 1e-8); }
                if (c.bc_type == 0x02) {
                    EXPECT_NEAR(left2, 0.0, 1e-8);
                    EXPECT_NEAR(right2, 0.0, 1e-8);
                }
        }
        if (c.kind == Kind::Hermite) {
            for (int64_t i = 1; i + 1 < n; ++i) EXPECT_EQ(co[i * 4 + 1], p.ic[i - 1]);
        }
    }
}

void reproduces_a_straight_line(const Case& c) {
    const Problem p = make(c, Shape::Line);
    const Built<double> b = build<double>(c, p);
    ASSERT_EQ(b.status, DF_OK);
    // Not-a-knot on three points takes a zero middle slope: no line.
    if (c.kind == Kind::Natural && c.bc_type == 0x01 && c.nx == 3) return;
    const int64_t order = dftest::order_of(c.kind);
    const double slope = c.bc_type == 0x40 ? 0.0 : 3.0;
    for (int64_t k = 0; k < c.ny; ++k)
        for (size_t cell = 0; cell * order < b.coef[k].size(); ++cell) {
            const double* co = b.coef[k].data() + cell * order;
            EXPECT_NEAR(co[1], slope, 1e-10) << "function " << k << " cell " << cell;
            for (int64_t j = 2; j < order; ++j) EXPECT_NEAR(co[j], 0.0, 1e-9) << "cell " << cell;
        }
}

void single_is_within_few_ulps_of_double(const Case& c) {
    Problem p = make(c, Shape::Wavy);
    // Both precisions see the same data: the float-rounded one.
    for (auto* v : {&p.xarg, &p.xs, &p.y, &p.bc, &p.ic})
        for (double& e : *v) e = double(float(e));
    if (c.xhint == 4) {
        const double h = double(float((float(p.xarg[1]) - float(p.xarg[0])) / float(c.nx - 1)));
        for (int64_t i = 0; i < c.nx; ++i) p.xs[i] = p.xarg[0] + double(i) * h;
    }
    const Built<double> d = build<double>(c, p);
    const Built<float> s = build<float>(c, p);
    ASSERT_EQ(d.status, DF_OK);
    ASSERT_EQ(s.status, DF_OK);
    const int64_t order = dftest::order_of(c.kind);
    double hmin = 1e300, ymax = 0;
    for (int64_t i = 0; i + 1 < c.nx; ++i) hmin = std::min(hmin, p.xs[i + 1] - p.xs[i]);
    for (double v : p.y) ymax = std::max(ymax, std::fabs(v));
    for (int64_t k = 0; k < c.ny; ++k) {
        // Coefficient j is compared at the magnitude of its column, and at
        // least at ymax / h^j: slopes and their differences lose the digits
        // of the values in either precision.
        std::vector<double> scale(order, 0.0);
        for (size_t i = 0; i < d.coef[k].size(); ++i)
            scale[i % order] = std::max(scale[i % order], std::fabs(d.coef[k][i]));
        for (int64_t j = 0; j < order; ++j) scale[j] = std::max(scale[j], ymax / std::pow(hmin, double(j)));
        for (size_t i = 0; i < d.coef[k].size(); ++i)
            EXPECT_NEAR(s.coef[k][i], d.coef[k][i], 32 * FLT_EPSILON * (scale[i % order] + 1e-30))
                << "function " << k << " element " << i;
    }
}

TEST_P(Construct, InterpolatesJoinsAndMeetsEndConditions) {
    for_each_case(interpolates_joins_and_meets_end_conditions);
}
TEST_P(Construct, ReproducesAStraightLine) { for_each_case(reproduces_a_straight_line); }
TEST_P(Construct, SingleIsWithinFewUlpsOfDouble) { for_each_case(single_is_within_few_ulps_of_double); }

INSTANTIATE_TEST_SUITE_P(All, Construct,
                         ::testing::ValuesIn(dftest::kKinds),
                         [](const auto& info) { return std::string(dftest::name(info.param)); });

// Hyman keeps monotone data monotone and is flat at a local extremum.
TEST(Hyman, MonotoneDataGiveAMonotoneSpline) {
    for (int64_t xh : {1, 4}) {
        const Case c{Kind::Hyman, 0x02, 0, 0x10, xh, 12, 1, false};
        Problem p = make(c, Shape::Wavy);
        const double steps[] = {0, 0.1, 3.0, 3.05, 3.1, 8.0, 8.0, 8.2, 20.0, 20.01, 20.02, 21.0};
        for (int64_t i = 0; i < c.nx; ++i) p.y[i] = steps[i];
        const Built<double> b = build<double>(c, p);
        ASSERT_EQ(b.status, DF_OK);
        for (int64_t i = 0; i + 1 < c.nx; ++i)
            for (int q = 0; q <= 16; ++q) {
                const double t = (p.xs[i + 1] - p.xs[i]) * q / 16.0;
                EXPECT_GE(dftest::poly(b.coef[0].data() + 4 * i, 4, t, 1), -1e-12)
                    << "cell " << i << " step " << q;
            }
    }
}

TEST(Hyman, ZeroDerivativeAtALocalExtremum) {
    const Case c{Kind::Hyman, 0x01, 0, 0x10, 1, 7, 1, false};
    Problem p = make(c, Shape::Wavy);
    const double v[] = {0, 1, 3, 2, 2.5, 4, 1};  // extrema at 2, 3, 5; flat neighbour none
    for (int i = 0; i < 7; ++i) p.y[i] = v[i];
    const Built<double> b = build<double>(c, p);
    ASSERT_EQ(b.status, DF_OK);
    for (int i : {2, 3, 5}) EXPECT_EQ(b.coef[0][4 * i + 1], 0.0) << i;
    for (int i : {1, 4}) EXPECT_GT(b.coef[0][4 * i + 1], 0.0) << i;
}

// Akima with equal slope differences falls back to the mean of the slopes.
TEST(Akima, EqualSlopesGiveTheirMean) {
    const Case c{Kind::Akima, 0x00, 0, 0x10, 1, 6, 1, false};
    Problem p = make(c, Shape::Wavy);
    for (int64_t i = 0; i < 6; ++i) p.xs[i] = p.xarg[i] = double(i);
    const double v[] = {0, 1, 2, 3, 5, 7};  // slopes 1 1 1 2 2
    for (int i = 0; i < 6; ++i) p.y[i] = v[i];
    const Built<double> b = build<double>(c, p);
    ASSERT_EQ(b.status, DF_OK);
    EXPECT_EQ(b.coef[0][4 * 1 + 1], 1.0);  // both weights zero: mean of 1 and 1
    EXPECT_EQ(b.coef[0][4 * 2 + 1], 1.0);  // weights 1 and 0: left slope
    EXPECT_EQ(b.coef[0][4 * 3 + 1], 1.5);  // both zero again: mean of 1 and 2
    EXPECT_EQ(b.coef[0][4 * 4 + 1], 2.0);  // weights 0 and 1: right slope
}

// One function on a non-uniform partition takes a single pass eliminating
// from both ends (with its minors rescaled on the way; odd lengths have a
// middle row, short ones almost no common steps); it must give what the
// factored solver gives the same function as one of two.
TEST(Natural, OneFunctionMatchesTheSharedSolver) {
    for (int64_t bc : {0x02, 0x0C, 0x24, 0x18, 0x30})
    for (int64_t nx : {6, 7, 5000, 5001}) {
        const Case one{Kind::Natural, bc, 0, 0x10, 1, nx, 1, false};
        const Case two{Kind::Natural, bc, 0, 0x10, 1, nx, 2, false};
        Problem p1 = make(one, Shape::Wavy), p2 = make(two, Shape::Wavy);
        std::copy(p1.y.begin(), p1.y.begin() + nx, p2.y.begin());
        const Built<double> a = build<double>(one, p1), b = build<double>(two, p2);
        ASSERT_EQ(a.status, DF_OK);
        ASSERT_EQ(b.status, DF_OK);
        for (size_t i = 0; i < a.coef[0].size(); ++i)
            ASSERT_NEAR(a.coef[0][i], b.coef[0][i], 1e-11 * (1 + std::fabs(b.coef[0][i])))
                << bc << " " << nx << " " << i;
    }
}

}  // namespace
