// A user's program: adds two vectors through the front end and through a
// tier-suffixed stub, and checks the answer.
#include <orv/orv.h>

#include <cstdio>

int main() {
    double a[5] = {1, 2, 3, 4, 5}, b[5] = {0.5, 0.25, 0.125, 0.0625, 0.03125}, r[5], s[5];
    vtmdAdd(5, a, b, r);
    _vtmdAdd_50(5, a, b, s);
    for (int i = 0; i < 5; ++i)
        if (r[i] != a[i] + b[i] || s[i] != r[i]) return 1;
    std::printf("consumer: dAdd ok, %d vector functions present\n", ORV_VTM_FUNCTIONS_PRESENT);
    return 0;
}
