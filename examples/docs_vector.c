/* Vector functions: exponentials of an array, a strided call with a negative
 * increment, the accuracy tier of one call, and the status of a bad element. */
#include <orv/orv.h>

#include <math.h>
#include <stdio.h>

int main(void) {
    double a[8], r[8];
    for (int i = 0; i < 8; ++i) a[i] = 0.25 * i;

    /* r[i] = exp(a[i]) in the thread's accuracy tier (high by default). */
    vtmdExp(8, a, r);
    for (int i = 0; i < 8; ++i)
        if (fabs(r[i] - exp(a[i])) > 1e-15 * r[i]) return 1;

    /* Element i of a strided call is a[i*inca]: with inca = -2 the call walks
     * down from the pointer given, here a[7], a[5], a[3], a[1]. */
    double back[4];
    vtmdExpI(4, a + 7, -2, back, 1);
    if (back[0] != r[7] || back[3] != r[1]) return 2;

    /* One call in the low-accuracy tier; the thread's mode is unchanged after. */
    const unsigned before = vtmGetMode();
    double fast[8];
    vtmdExpMode(8, a, fast, VTM_LA);
    if (vtmGetMode() != before) return 3;
    for (int i = 0; i < 8; ++i)
        if (fabs(fast[i] - r[i]) > 4e-16 * r[i]) return 4;

    /* A bad element finishes the vector and leaves a status in the thread. */
    vtmClearErrStatus();
    const double neg[2] = {-1.0, 4.0};
    double ln[2];
    vtmdLn(2, neg, ln);
    printf("ln(-1) = %f, ln(4) = %f, status %d\n", ln[0], ln[1], (int)vtmGetErrStatus());
    if (!isnan(ln[0]) || vtmGetErrStatus() != VtmStatusDomain) return 5;
    vtmClearErrStatus();
    return 0;
}
