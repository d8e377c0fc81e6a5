/* Distributions: waiting times and coin flips from one stream, a refused call
 * that draws nothing, and the sample mean against the distribution's. */
#include <orv/orv.h>

#include <math.h>
#include <stdio.h>

int main(void) {
    enum { kN = 100000 };
    static double wait[kN];
    static int coin[kN];
    OrvStreamPtr s = NULL;
    if (vstNewStream(&s, ORV_BRNG_SFMT19937, 2026) != 0) return 1;

    /* Exponential with displacement 0 and scale 2.5: mean 2.5, sd 2.5. */
    if (vstdRngExponential(0, s, kN, wait, 0.0, 2.5) != 0) return 2;
    double mean = 0;
    for (int i = 0; i < kN; ++i) mean += wait[i] / kN;
    if (fabs(mean - 2.5) > 5 * 2.5 / sqrt(kN)) return 3;

    /* A scale that is not positive is refused: nothing written, nothing drawn. */
    wait[0] = -1;
    if (vstdRngExponential(0, s, kN, wait, 0.0, 0.0) != ORV_RNG_ERROR_BAD_SCALE) return 4;
    if (wait[0] != -1) return 5;

    /* Bernoulli with p = 0.25. */
    if (vstiRngBernoulli(0, s, kN, coin, 0.25) != 0) return 6;
    int heads = 0;
    for (int i = 0; i < kN; ++i) heads += coin[i];
    printf("mean wait %.4f (2.5), heads %.4f (0.25)\n", mean, (double)heads / kN);

    vstDeleteStream(&s);
    return fabs((double)heads / kN - 0.25) < 5 * sqrt(0.25 * 0.75 / kN) ? 0 : 7;
}
