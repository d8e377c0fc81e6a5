/* Summary statistics: mean, variance, minimum, maximum and median of a
 * variable, then a second block of data continuing the first. */
#include <orv/orv.h>

#include <math.h>
#include <stdio.h>

int main(void) {
    int64_t p = 1, n = 5, layout = SS_STORAGE_BY_VARIABLE, nq = 1;
    double x[5] = {2, 4, 4, 5, 7}, mean, raw2, var, lo, hi, half = 0.5, median;
    double acc[2] = {0, 0}; /* total weight and total squared weight: the carried state */
    SsTask* task = NULL;

    if (vstdSSNewTask(&task, &p, &n, &layout, x, NULL, NULL) != 0) return 1;
    /* The variance needs the mean and the second raw moment too (written as well). */
    vstdSSEditMoments(task, &mean, &raw2, NULL, NULL, &var, NULL, NULL);
    vstdSSEditTask(task, SS_ED_minimum, &lo);
    vstdSSEditTask(task, SS_ED_maximum, &hi);
    vstdSSEditQuantiles(task, &nq, &half, &median, NULL, NULL);
    vstdSSEditTask(task, SS_ED_accum_weights, acc);

    /* Method 0: each estimate by its entry's default (running updates). */
    const uint64_t est = SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_MIN | SS_EST_MAX | SS_EST_QUANTILES;
    if (vstdSSCompute(task, est, 0) != 0) return 2;
    printf("mean %.2f variance %.2f min %.0f max %.0f median %.0f\n", mean, var, lo, hi, median);
    /* The variance divides by n - 1 (W - W2/W with unit weights). */
    if (fabs(mean - 4.4) > 1e-15 || fabs(var - 3.3) > 1e-14 || lo != 2 || hi != 7 || median != 4)
        return 3;

    /* A second block: the task reads the caller's n and x again, and the
     * moments, min and max carry on from acc. (Quantiles are of this block.) */
    double more[3] = {1, 9, 4.4};
    n = 3;
    vstdSSEditTask(task, SS_ED_data, more);
    if (vstdSSCompute(task, SS_EST_MEAN | SS_EST_MIN | SS_EST_MAX, 0) != 0) return 4;
    printf("after 8 values: mean %.4f min %.0f max %.0f (weight %.0f)\n", mean, lo, hi, acc[0]);
    if (fabs(mean - 36.4 / 8) > 1e-14 || lo != 1 || hi != 9 || acc[0] != 8) return 5;

    /* A refused call names the problem and writes nothing. */
    if (vstdSSCompute(task, SS_EST_SKEWNESS, 0) != SS_ERR_RAW3) return 6;
    vstSSDeleteTask(&task);
    return task == NULL ? 0 : 7;
}
