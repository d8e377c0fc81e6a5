/* A user's program, built from the installed package with only <orv/orv.h>:
 * adds two vectors through the front end and a tier-suffixed stub, draws
 * from a random stream, and builds a spline task. Valid C and C++; the C++
 * build compiles consumer.cpp, which includes this file. */
#include <orv/orv.h>

#include <stdio.h>

int main(void) {
    double a[5] = {1, 2, 3, 4, 5}, b[5] = {0.5, 0.25, 0.125, 0.0625, 0.03125}, r[5], s[5];
    vtmdAdd(5, a, b, r);
    _vtmdAdd_50(5, a, b, s);
    for (int i = 0; i < 5; ++i)
        if (r[i] != a[i] + b[i] || s[i] != r[i]) return 1;

    /* MCG31M1 seeded with 1: x(1) = 1132489760. */
    void* stream = NULL;
    uint32_t seed = 1, w[2] = {0, 0};
    if (__vstNewStreamEx(&stream, ORV_BRNG_MCG31M1, 1, &seed) != 0) return 2;
    __vstiBRngMCG31M1(stream, 2, w);
    __vstDeleteStream(&stream);
    if (w[0] != 1 || w[1] != 1132489760u) return 3;

    DFTask* task = NULL;
    if (orv_df_kernel_dNewTask1D(&task, 5, a, DF_X_NON_UNIFORM, 1, r, DF_Y_ROWS, 0) != 0) return 4;
    orv_df_kernel_DeleteTask(&task);

    printf("consumer (%s): dAdd, MCG31M1 and a spline task ok, %d vector functions present\n",
#ifdef __cplusplus
           "C++",
#else
           "C",
#endif
           ORV_VTM_FUNCTIONS_PRESENT);
    return 0;
}
