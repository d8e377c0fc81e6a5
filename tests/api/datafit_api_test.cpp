// The checked data-fitting calls: one refusal per bad argument, with nothing
// written, and the 64-bit cells of a 32-bit task.
#include <gtest/gtest.h>

#include <orv/orv_datafit.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

struct Fixture {
    double x[5] = {0, 1, 2, 4, 5}, y[5] = {1, 3, 2, 0, 1}, c[16] = {};
    DFTask* t = nullptr;
    Fixture() {
        orv_df_kernel_dNewTask1D(&t, 5, x, 1, 1, y, 0, 0);
        orv_df_kernel_dEditPPSpline1D(t, 4, 0, 2, nullptr, 0, nullptr, c, 0);
        orv_df_kernel_dDFNaturalCubicSpline1D(t, 0, 0, nullptr);
    }
    ~Fixture() { orv_df_kernel_DeleteTask(&t); }
};

TEST(DataFittingFrontEnd, RefusalsWriteNothing) {
    Fixture f;
    DFTask* ft = nullptr;
    const float fx[2] = {0, 1};
    ASSERT_EQ(orv_df_kernel_sNewTask1D(&ft, 2, fx, 1, 0, nullptr, 0, 0), 0);
    const double s[2] = {0.5, 3.0};
    const int32_t ord[2] = {1, 1}, bad_ord[2] = {1, 2};
    double r[4] = {7, 7, 7, 7};
    int64_t cell[2] = {7, 7};
    EXPECT_EQ(orv_df_dsearch(nullptr, 2, s, 0, cell), DF_NULL_TASK);
    EXPECT_EQ(orv_df_dsearch(ft, 2, s, 0, cell), DF_BAD_PRECISION);
    EXPECT_EQ(orv_df_dsearch(f.t, -1, s, 0, cell), ORV_DF_BAD_COUNT);
    EXPECT_EQ(orv_df_dsearch(f.t, 2, nullptr, 0, cell), ORV_DF_NULL_SITES);
    EXPECT_EQ(orv_df_dsearch(f.t, 2, s, 3, cell), ORV_DF_BAD_SITEHINT);
    EXPECT_EQ(orv_df_dsearch(f.t, 2, s, 0, nullptr), ORV_DF_NULL_RESULT);
    EXPECT_EQ(orv_df_dinterpolate(nullptr, 2, s, 0, 2, ord, r, 0, cell), DF_NULL_TASK);
    EXPECT_EQ(orv_df_dinterpolate(ft, 2, s, 0, 2, ord, r, 0, cell), DF_BAD_PRECISION);
    EXPECT_EQ(orv_df_dinterpolate(f.t, -2, s, 0, 2, ord, r, 0, cell), ORV_DF_BAD_COUNT);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, nullptr, 0, 2, ord, r, 0, cell), ORV_DF_NULL_SITES);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0x41, 2, ord, r, 0, cell), ORV_DF_BAD_SITEHINT);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0, 2, ord, nullptr, 0, cell), ORV_DF_NULL_RESULT);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0, 65, ord, r, 0, cell), ORV_DF_BAD_ORDERS);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0, 2, nullptr, r, 0, cell), ORV_DF_BAD_ORDERS);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0, 2, bad_ord, r, 0, cell), ORV_DF_BAD_ORDERS);
    EXPECT_EQ(orv_df_dinterpolate(f.t, INT64_MAX / 2, s, 0, 2, ord, r, 0, cell), ORV_DF_TOO_LARGE);
    EXPECT_EQ(orv_df_dinterpolate(f.t, 2, s, 0, 2, ord, r, 0x30, cell), DF_BAD_RHINT);
    EXPECT_EQ(orv_df_dintegrate(nullptr, 2, s, 0, s, 0, r, 0), DF_NULL_TASK);
    EXPECT_EQ(orv_df_dintegrate(ft, 2, s, 0, s, 0, r, 0), DF_BAD_PRECISION);
    EXPECT_EQ(orv_df_dintegrate(f.t, -1, s, 0, s, 0, r, 0), ORV_DF_BAD_COUNT);
    EXPECT_EQ(orv_df_dintegrate(f.t, 2, s, 0, nullptr, 0, r, 0), ORV_DF_NULL_SITES);
    EXPECT_EQ(orv_df_dintegrate(f.t, 2, s, 5, s, 0, r, 0), ORV_DF_BAD_SITEHINT);
    EXPECT_EQ(orv_df_dintegrate(f.t, 2, s, 0, s, 0, nullptr, 0), ORV_DF_NULL_RESULT);
    EXPECT_EQ(orv_df_dintegrate(f.t, INT64_MAX, s, 0, s, 0, r, 0), ORV_DF_TOO_LARGE);
    EXPECT_EQ(orv_df_dintegrate(f.t, 2, s, 0, s, 0, r, 0x100), DF_BAD_INTEGRATION_RHINT);
    EXPECT_EQ((std::vector<double>{r[0], r[1], r[2], r[3], double(cell[0]), double(cell[1])}), std::vector<double>(6, 7));
    const float fs[1] = {0.5f};
    float fr[1] = {7};
    EXPECT_EQ(orv_df_sinterpolate(ft, 1, fs, 0, 0, nullptr, fr, 0, nullptr), DF_BAD_STYPE);  // no spline yet
    ASSERT_EQ(orv_df_kernel_sEditPPSpline1D(ft, 2, 0, 0, nullptr, 0, nullptr, nullptr, 0), 0);
    EXPECT_EQ(orv_df_sinterpolate(ft, 1, fs, 0, 0, nullptr, fr, 0, nullptr), DF_NULL_SCOEFF);
    EXPECT_EQ(orv_df_sintegrate(ft, 1, fs, 0, fs, 0, fr, 0), DF_NULL_SCOEFF);
    EXPECT_EQ(fr[0], 7);
    orv_df_kernel_DeleteTask(&ft);
}

TEST(DataFittingFrontEnd, CellsAreWideAndResultsMatchTheKernels) {
    Fixture f;
    const double s[4] = {-1, 1, 4.5, 5};
    int64_t cell[4], cell2[4];
    ASSERT_EQ(orv_df_dsearch(f.t, 4, s, 0, cell), 0);
    EXPECT_EQ(std::vector<int64_t>(cell, cell + 4), (std::vector<int64_t>{0, 2, 4, 4}));
    const int32_t ord[3] = {1, 0, 1};
    double r[8], k[8];
    ASSERT_EQ(orv_df_dinterpolate(f.t, 4, s, 0, 3, ord, r, 0, cell2), 0);
    EXPECT_EQ(std::vector<int64_t>(cell2, cell2 + 4), (std::vector<int64_t>{0, 2, 4, 4}));
    ASSERT_EQ(orv_df_kernel_dDFInterpolate1D(f.t, 0, 0, 4, s, 0, 3, ord, nullptr, k, 0, nullptr, nullptr,
                                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr), 0);
    EXPECT_EQ(std::vector<double>(r, r + 8), std::vector<double>(k, k + 8));
    EXPECT_EQ(r[1 * 2 + 0], 3.0);  // value at a breakpoint
    double q = 0;
    ASSERT_EQ(orv_df_dintegrate(f.t, 1, s + 1, 0, s + 1, 0, &q, 0), 0);
    EXPECT_EQ(q, 0.0);
}

// A repeated, unordered or non-finite breakpoint used to pass the kernel
// constructors with status 0 and non-finite coefficients: refused at
// creation, and at construction when the caller's array changed since.
TEST(DataFittingFrontEnd, BadBreakpointsAreRefusedBeforeAnythingIsWritten) {
    const double nan = std::nan(""), inf = INFINITY;
    for (const std::vector<double>& bad : std::vector<std::vector<double>>{
             {0, 1, 1, 4, 5}, {0, 1, nan, 4, 5}, {0, 2, 1, 4, 5}, {0, 1, 2, 4, inf}}) {
        double x[5] = {0, 1, 2, 4, 5}, y[5] = {1, 3, 2, 0, 1}, c[16];
        std::fill(c, c + 16, 7.0);
        DFTask* t = nullptr;
        EXPECT_EQ(orv_df_dnew_task(&t, 5, bad.data(), DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS),
                  ORV_DF_BAD_BREAKPOINTS);
        EXPECT_EQ(t, nullptr);
        ASSERT_EQ(orv_df_dnew_task(&t, 5, x, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS), 0);
        ASSERT_EQ(orv_df_dedit_spline(t, DF_PP_CUBIC, ORV_DF_CUBIC_NATURAL, DF_BC_FREE_END, nullptr,
                                      0, nullptr, c, 16), 0);
        std::copy(bad.begin(), bad.end(), x);
        EXPECT_EQ(orv_df_dconstruct(t), ORV_DF_BAD_BREAKPOINTS);
        for (double v : c) EXPECT_EQ(v, 7.0);
        orv_df_delete_task(&t);
    }
    const double ends[2] = {3, 3};
    DFTask* t = nullptr;
    EXPECT_EQ(orv_df_dnew_task(&t, 5, ends, DF_X_UNIFORM, 0, nullptr, 0), ORV_DF_BAD_BREAKPOINTS);
}

// The construct call reaches the constructor of each order and kind: its
// coefficients are those of that constructor called directly.
TEST(DataFittingFrontEnd, ConstructPicksTheConstructorOfOrderAndKind) {
    using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);
    struct Kind { int64_t sorder, stype; Ctor ctor; };
    const Kind kinds[] = {{DF_PP_LINEAR, 0, orv_df_kernel_dDFLinearSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_NATURAL, orv_df_kernel_dDFNaturalCubicSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_AKIMA, orv_df_kernel_dDFAkimaCubicSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_HERMITE, orv_df_kernel_dDFHermiteCubicSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_BESSEL, orv_df_kernel_dDFBesselCubicSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_HYMAN, orv_df_kernel_dDFHymanCubicSpline1D},
                          {DF_PP_CUBIC, ORV_DF_CUBIC_DEFAULT, orv_df_kernel_dDFDefaultCubicSpline1D}};
    const double x[6] = {0, 1, 2, 4, 5, 7}, y[6] = {1, 3, 2, 0, 1, 4}, ic[6] = {1, -1, 2, 0, 3, 1};
    const double bc[2] = {0.5, -0.25};
    for (const Kind& k : kinds) {
        double mine[20] = {}, theirs[20] = {};
        DFTask *a = nullptr, *b = nullptr;
        ASSERT_EQ(orv_df_dnew_task(&a, 6, x, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS), 0);
        ASSERT_EQ(orv_df_kernel_dNewTask1D(&b, 6, x, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS, 1), 0);
        const int64_t ict = k.stype == ORV_DF_CUBIC_HERMITE || k.stype == ORV_DF_CUBIC_DEFAULT;
        const int64_t bct = k.sorder == DF_PP_CUBIC ? DF_BC_1ST_LEFT | DF_BC_2ND_RIGHT : 0;
        ASSERT_EQ(orv_df_dedit_spline(a, k.sorder, k.stype, bct, bc, ict, ict ? ic : nullptr, mine,
                                      20), 0);
        ASSERT_EQ(orv_df_kernel_dEditPPSpline1D(b, k.sorder, k.stype, bct, bc, ict,
                                                ict ? ic : nullptr, theirs, DF_Y_ROWS), 0);
        EXPECT_EQ(orv_df_dconstruct(a), 0) << k.stype;
        EXPECT_EQ(k.ctor(b, 0, 0, nullptr), 0) << k.stype;
        for (int i = 0; i < 20; ++i) EXPECT_EQ(mine[i], theirs[i]) << k.stype << " " << i;
        orv_df_delete_task(&a);
        orv_df_kernel_DeleteTask(&b);
    }
}

TEST(DataFittingFrontEnd, BuildingRefusalsStoreNothing) {
    double x[5] = {0, 1, 2, 4, 5}, y[5] = {1, 3, 2, 0, 1}, c[16];
    DFTask* t = nullptr;
    DFTask* const none = nullptr;
    EXPECT_EQ(orv_df_dnew_task(nullptr, 5, x, 0, 1, y, 0), DF_NULL_TASK);
    EXPECT_EQ(orv_df_dnew_task(&t, 1, x, 0, 1, y, 0), DF_BAD_NX);
    EXPECT_EQ(orv_df_dnew_task(&t, 5, nullptr, 0, 1, y, 0), DF_NULL_X);
    EXPECT_EQ(orv_df_dnew_task(&t, 5, x, 3, 1, y, 0), DF_BAD_XHINT);
    EXPECT_EQ(t, none);
    ASSERT_EQ(orv_df_dnew_task(&t, 5, x, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS), 0);
    DFTask* ft = nullptr;
    const float fx[2] = {0, 1};
    float fc[4];
    ASSERT_EQ(orv_df_snew_task(&ft, 2, fx, 0, 0, nullptr, 0), 0);
    EXPECT_EQ(orv_df_dedit_spline(nullptr, 4, 0, 2, nullptr, 0, nullptr, c, 16), DF_NULL_TASK);
    EXPECT_EQ(orv_df_sedit_spline(t, 4, 0, 2, nullptr, 0, nullptr, fc, 4), DF_BAD_PRECISION);
    EXPECT_EQ(orv_df_dedit_spline(t, 1, 0, 2, nullptr, 0, nullptr, c, 16), DF_BAD_SORDER);
    EXPECT_EQ(orv_df_dedit_spline(t, 5, 0, 2, nullptr, 0, nullptr, c, 16), DF_BAD_SORDER);
    EXPECT_EQ(orv_df_dedit_spline(t, 4, 1, 2, nullptr, 0, nullptr, c, 16), DF_BAD_STYPE);
    EXPECT_EQ(orv_df_dedit_spline(t, 3, 2, 2, nullptr, 0, nullptr, c, 16), DF_BAD_STYPE);
    EXPECT_EQ(orv_df_dedit_spline(t, 4, 0, 2, nullptr, 0, nullptr, nullptr, 16), DF_NULL_SCOEFF);
    EXPECT_EQ(orv_df_dedit_spline(t, 4, 0, 2, nullptr, 0, nullptr, c, 15), ORV_DF_SHORT_COEFFS);
    EXPECT_EQ(orv_df_dedit_spline(t, 3, 1, 2, nullptr, 8, nullptr, c, 12), ORV_DF_SHORT_COEFFS);
    EXPECT_EQ(t->sorder, 0);
    EXPECT_EQ(t->scoeff, nullptr);
    EXPECT_EQ(orv_df_dconstruct(nullptr), DF_NULL_TASK);
    EXPECT_EQ(orv_df_sconstruct(t), DF_BAD_PRECISION);
    EXPECT_EQ(orv_df_dconstruct(t), DF_BAD_SORDER);  // no spline edited yet
    orv_df_delete_task(&ft);
    orv_df_delete_task(&t);
}

}  // namespace
