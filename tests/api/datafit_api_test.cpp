// The checked data-fitting calls: one refusal per bad argument, with nothing
// written, and the 64-bit cells of a 32-bit task.
#include <gtest/gtest.h>

#include <orv/orv_datafit.h>

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
    for (double v : r) EXPECT_EQ(v, 7);
    EXPECT_EQ(cell[0], 7);
    EXPECT_EQ(cell[1], 7);
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
    for (int i = 0; i < 8; ++i) EXPECT_EQ(r[i], k[i]);
    EXPECT_EQ(r[1 * 2 + 0], 3.0);  // value at a breakpoint
    double q = 0;
    ASSERT_EQ(orv_df_dintegrate(f.t, 1, s + 1, 0, s + 1, 0, &q, 0), 0);
    EXPECT_EQ(q, 0.0);
}

}  // namespace
