// The error-function family: values from published tables, round trips
// through the inverses and the lane sorting of CdfNormInv (statuses and
// special values are rows of tests/vector/edges_test.cpp).
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

// Published values (Abramowitz and Stegun, tables 7.1 and 26.1, to the digits
// printed there): each result within a few units of the table's last digit.
TEST(ErfValues, PublishedTables) {
    struct Kat {
        void (*d)(int, const double*, double*);
        double x, want, tol;
    };
    const Kat kats[] = {
        {orv_kern_dErf, 0.5, 0.5204998778130465, 1e-15},
        {orv_kern_dErf, 1.0, 0.8427007929497149, 1e-15},
        {orv_kern_dErfc, 2.0, 0.004677734981047266, 1e-17},
        {orv_kern_dCdfNorm_ha, 1.0, 0.8413447460685429, 1e-15},
        {orv_kern_dCdfNormInv, 0.975, 1.959963984540054, 1e-14},
        {orv_kern_dErfInv_ha, 0.5, 0.4769362762044699, 1e-15},
    };
    for (const Kat& k : kats) {
        double r;
        k.d(1, &k.x, &r);
        EXPECT_NEAR(r, k.want, k.tol) << k.x;
    }
}

// Round trips: erf(erfinv(y)) = y, erfc(erfcinv(q)) = q and
// Phi(Phi^-1(p)) = p to within the conditioning of the forward function,
// over the whole range, deep tails included.
TEST(ErfInverses, RoundTrips) {
    std::vector<double> ys, qs, ps;
    for (int i = 1; i < 200; ++i) ys.push_back(-1.0 + i / 100.0);
    for (int e = -1070; e <= 0; e += 7) qs.push_back(std::ldexp(1.3, e));
    for (double q : qs) ps.push_back(q / 2);
    for (int i = 1; i < 100; ++i) ps.push_back(i / 100.0);
    const int ny = int(ys.size()), nq = int(qs.size()), np = int(ps.size());
    std::vector<double> x(ny + nq + np), back(x.size());
    orv_kern_dErfInv_ha(ny, ys.data(), x.data());
    orv_kern_dErf(ny, x.data(), back.data());
    for (int i = 0; i < ny; ++i) EXPECT_NEAR(back[i], ys[i], 4e-16) << ys[i];
    orv_kern_dErfcInv(nq, qs.data(), x.data());
    orv_kern_dErfc(nq, x.data(), back.data());
    // Relative change of erfc over one ulp of x: 2 x^2 2^-52 at most.
    for (int i = 0; i < nq; ++i)
        EXPECT_NEAR(back[i] / qs[i], 1.0, 2.5 * x[i] * x[i] * 0x1p-52 + 0x1p-51) << qs[i];
    orv_kern_dCdfNormInv(np, ps.data(), x.data());
    orv_kern_dCdfNorm_ha(np, x.data(), back.data());
    for (int i = 0; i < np; ++i)
        EXPECT_NEAR(back[i] / ps[i], 1.0, 1.5 * x[i] * x[i] * 0x1p-52 + 0x1p-51) << ps[i];
}

}  // namespace

// Double CdfNormInv sorts the lanes of a run of elements by path: each
// element's result must not depend on its neighbours, the call's length or
// whether the call is in place. Central and tail lanes in a scrambled order
// over whole runs, blocks and a tail, with two special lanes in the second
// run, against each element computed alone.
TEST(ErfInverses, CdfNormInvLanesIndependentOfTheBlock) {
    ErrorCapture cap;
    const int n = 611;
    std::vector<double> p(n), alone(n), whole(n);
    for (int i = 0; i < n; ++i) p[i] = ((i * 37) % n + 0.5) / n;  // 1/4 to 3/4 central, the rest tails
    p[300] = 0.0;
    p[301] = 1e-300;  // below the fast path
    for (int i = 0; i < n; ++i) orv_kern_dCdfNormInv(1, &p[i], &alone[i]);
    orv_kern_dCdfNormInv(n, p.data(), whole.data());
    std::vector<double> inplace = p;
    orv_kern_dCdfNormInv(n, inplace.data(), inplace.data());
    for (int i = 0; i < n; ++i) {
        EXPECT_EQ(whole[i], alone[i]) << p[i];
        EXPECT_EQ(inplace[i], alone[i]) << p[i];
    }
}
