/* Data fitting: a cubic spline through samples of t^3, evaluated with its
 * derivatives and integrated. */
#include <orv/orv.h>

#include <math.h>
#include <stdio.h>

int main(void) {
    const double x[5] = {0.0, 1.0, 2.0, 3.0, 4.0};
    const double y[5] = {0.0, 1.0, 8.0, 27.0, 64.0}; /* t^3 at the breakpoints */
    double coeff[4 * 4];                             /* (nx - 1) cells of 4 coefficients */
    const double second[2] = {0.0, 24.0};            /* y'' at both ends, exact for t^3 */
    DFTask* task = NULL;

    /* Build: breakpoints (checked: finite, strictly increasing), a natural
     * cubic with given second derivatives at the ends, and construction. */
    if (orv_df_dnew_task(&task, 5, x, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS) != DF_OK) return 1;
    if (orv_df_dedit_spline(task, DF_PP_CUBIC, ORV_DF_CUBIC_NATURAL,
                            DF_BC_2ND_LEFT | DF_BC_2ND_RIGHT, second, 0, NULL, coeff, 16) != DF_OK)
        return 1;
    if (orv_df_dconstruct(task) != DF_OK) return 1;

    /* Evaluate: value, first and second derivative at three sites. */
    const double site[3] = {0.5, 2.0, 3.75};
    const int32_t orders[3] = {1, 1, 1};
    double r[9];
    int64_t cell[3];
    if (orv_df_dinterpolate(task, 3, site, 0, 3, orders, r, DF_R_FUNCTION_SITE_ORDER, cell) != DF_OK)
        return 1;
    for (int i = 0; i < 3; ++i) {
        const double t = site[i];
        printf("s=%.2f cell=%lld  f=%.6f f'=%.6f f''=%.6f\n", t, (long long)cell[i], r[3 * i],
               r[3 * i + 1], r[3 * i + 2]);
        if (fabs(r[3 * i] - t * t * t) > 1e-12 || fabs(r[3 * i + 1] - 3 * t * t) > 1e-12 ||
            fabs(r[3 * i + 2] - 6 * t) > 1e-12)
            return 2;
    }

    /* Integrate over [0, 4] and over [1, 5]; past x[4] the last cubic extends. */
    const double lo[2] = {0.0, 1.0}, hi[2] = {4.0, 5.0};
    double area[2];
    if (orv_df_dintegrate(task, 2, lo, 0, hi, 0, area, 0x10) != DF_OK) return 1;
    printf("integral 0..4 = %.6f, 1..5 = %.6f\n", area[0], area[1]);
    if (fabs(area[0] - 64.0) > 1e-12 || fabs(area[1] - (625.0 - 1.0) / 4) > 1e-11) return 3;

    /* A repeated breakpoint is refused, not turned into infinite coefficients. */
    const double twice[3] = {0.0, 1.0, 1.0};
    DFTask* bad = NULL;
    if (orv_df_dnew_task(&bad, 3, twice, DF_X_NON_UNIFORM, 1, y, DF_Y_ROWS) != ORV_DF_BAD_BREAKPOINTS)
        return 4;

    orv_df_delete_task(&task);
    return 0;
}
