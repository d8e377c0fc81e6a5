// References, domains and random pairs of the power and root family.
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

constexpr mpfr_rnd_t N = MPFR_RNDN;

void pow_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_pow(r, a, b, N); }
void powr_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_powr(r, a, b, N); }
void cbrt_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_cbrt(r, a, N); }
void inv_cbrt_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_rootn_si(r, a, -3, N); }
void hypot_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t b) { mpfr_hypot(r, a, b, N); }
// a^(2/3) as the cube root of the exact square; a^(3/2) as a sqrt(a), NaN
// below zero (sqrt(-0) is -0, and -0 times -0 gives the +0 wanted).
void pow2o3_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    mpfr_t s;
    mpfr_init2(s, 2 * mpfr_get_prec(a) + 8);
    mpfr_sqr(s, a, N);
    mpfr_cbrt(r, s, N);
    mpfr_clear(s);
}
void pow3o2_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) {
    mpfr_t s;
    mpfr_init2(s, mpfr_get_prec(r) + 16);
    mpfr_sqrt(s, a, N);
    mpfr_mul(r, s, a, N);
    mpfr_clear(s);
}

// Exponents: a fifth small integers (both signs of the base then), the rest
// of magnitude 2^-20 to 2^20 with either sign, log-uniform.
double draw_y(std::mt19937_64& g, bool) {
    std::uniform_real_distribution<double> u(0.0, 1.0);
    if (g() % 5 == 0) return double(int(g() % 129) - 64);
    const double m = std::exp2(-20.0 + 40.0 * u(g));
    return g() & 1 ? -m : m;
}
// A base for y: y log2 x uniform over the binades of the result and a bit
// beyond (a tenth within one of the overflow or the underflow edge), which
// puts bases near 1 beside large exponents.
double draw_x(std::mt19937_64& g, double y, bool single) {
    std::uniform_real_distribution<double> u(0.0, 1.0);
    const double top = single ? 128.0 : 1024.0, bottom = single ? -150.0 : -1075.0;
    double t;
    switch (g() % 10) {
        case 0: t = top - 1.0 + 1.1 * u(g); break;
        case 1: t = bottom + 2.0 * u(g); break;
        default: t = bottom + (top + 2.0 - bottom) * u(g);
    }
    double x = std::exp2(t / y);
    if (!std::isfinite(x) || x == 0.0) x = std::exp2(u(g) * 8.0 - 4.0);
    if (std::nearbyint(y) == y && (g() & 1)) x = -x;
    return x;
}
const PairDraw kPowPairs{draw_y, draw_x};

// Hypot: one component over all binades, the other within 2^-30 to 2^30 of
// it, where neither term of the sum is negligible.
double hypot_y(std::mt19937_64& g, bool single) {
    std::uniform_real_distribution<double> u(0.0, 1.0);
    const double lo = single ? -149.0 : -1074.0, hi = single ? 128.0 : 1024.0;
    const double m = std::exp2(lo + (hi - lo) * u(g));
    return g() & 1 ? -m : m;
}
double hypot_x(std::mt19937_64& g, double y, bool) {
    std::uniform_real_distribution<double> u(-30.0, 30.0);
    const double m = y * std::exp2(u(g));
    return g() & 1 ? -m : m;
}
const PairDraw kHypotPairs{hypot_y, hypot_x};

const std::vector<double> kNone = {};
const std::vector<double> kPowTh = {1.0, -1.0, 0.5, 2.0, 3.0, -3.0, 0x1p-60};
// The 129 row edges of the 128-row logarithm table that the double Pow
// step reduces x by (bits of 0x1.6aaaap-1 plus multiples of 2^45); around
// 1, deeper.
std::vector<double> dpow_row_edges() {
    std::vector<double> v;
    for (uint64_t j = 0; j <= 128; ++j) v.push_back(std::bit_cast<double>(0x3FE6AAAA00000000ull + (j << 45)));
    return v;
}
const std::vector<double> kPowRows = dpow_row_edges();
const std::vector<double> kPowDeep = {1.0 - 0x1p-9, 1.0 + 0x1p-8};
// The 129 row edges of the single powers' 128-row log2 table (bits of the
// float 0x1.65p-1 plus multiples of 2^16), and 1 and the edges of the row
// centred on it, deeper.
std::vector<double> spow_row_edges() {
    std::vector<double> v;
    for (uint32_t i = 0; i <= 128; ++i) v.push_back(double(std::bit_cast<float>(0x3F328000u + (i << 16))));
    return v;
}
const std::vector<double> kSpowRows = spow_row_edges();
const std::vector<double> kSpowDeep = {1.0 - 0x1p-9, 1.0, 1.0 + 0x1p-8};
// Where the roots' reduction changes binade of m (1, 2, 4, 8 times powers of 8).
const std::vector<double> kThirds = {1.0, 2.0, 4.0, 8.0, 0x1p-1022, 0x1p-126, 0x1p-3, 0x1p99};
const std::vector<double> kPow3o2Th = {0x1p-84, 0x1p85, 0x1p-680, 0x1p682, 0x1p-600, 0x1p600,
                                       0x1p-716, 0x1p-100, 4.0, 1.0, 2.0};
const std::vector<double> kHypotTh = {0x1p-500, 0x1p500, 0x1p-1022, 0x1p-126, 0x1p511, 0x1p1023};

#define KNOWN(T, FN, REF, DOM, TH, ED, DP, PAIR) Known{#T #FN, REF, Domain::DOM, TH, ED, DP, PAIR}

const Describe known({
    KNOWN(s, Pow, pow_, All, kPowTh, kSpowRows, kSpowDeep, &kPowPairs),
    KNOWN(d, Pow, pow_, All, kPowTh, kPowRows, kPowDeep, &kPowPairs),
    KNOWN(s, Powr, powr_, All, kPowTh, kSpowRows, kSpowDeep, &kPowPairs),
    KNOWN(d, Powr, powr_, All, kPowTh, kPowRows, kPowDeep, &kPowPairs),
    KNOWN(s, Powx, pow_, All, kPowTh, kSpowRows, kSpowDeep, &kPowPairs),
    KNOWN(d, Powx, pow_, All, kPowTh, kPowRows, kPowDeep, &kPowPairs),
    KNOWN(s, Cbrt, cbrt_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(d, Cbrt, cbrt_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(s, InvCbrt, inv_cbrt_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(d, InvCbrt, inv_cbrt_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(s, Pow2o3, pow2o3_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(d, Pow2o3, pow2o3_, All, kThirds, kNone, kNone, nullptr),
    KNOWN(s, Pow3o2, pow3o2_, Positive, kPow3o2Th, kNone, kNone, nullptr),
    KNOWN(d, Pow3o2, pow3o2_, Positive, kPow3o2Th, kNone, kNone, nullptr),
    KNOWN(s, Hypot, hypot_, All, kHypotTh, kNone, kNone, &kHypotPairs),
    KNOWN(d, Hypot, hypot_, All, kHypotTh, kNone, kNone, &kHypotPairs),
});

}  // namespace
}  // namespace accuracy
