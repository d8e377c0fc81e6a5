// References, thresholds and row edges of the forward trigonometric family.
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

void sin_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_sin(r, a, MPFR_RNDN); }
void cos_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_cos(r, a, MPFR_RNDN); }
void sincos_(mpfr_t r, mpfr_t r2, const mpfr_t a, const mpfr_t) { mpfr_sin_cos(r, r2, a, MPFR_RNDN); }
void tan_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_tan(r, a, MPFR_RNDN); }

const double kPi = 3.141592653589793;
// Where the path changes: the double Payne-Hanek reduction from 2^16 and
// the lanes kept below 2^-20; the single fast path up to 10000.
const std::vector<double> kTrigD = {65536.0, -65536.0, 9.5367431640625e-07, 0x1p-1022,
                                   2 * 3.141592653589793, 100 * 3.141592653589793};
const std::vector<double> kTrigS = {10000.0, -10000.0, 65536.0, 9.5367431640625e-07,
                                   2 * 3.141592653589793, 1000.5 * 3.141592653589793};
// Row edges: the double table has a row per pi/256 (the first 64 either
// side of 0; random inputs reach the others), the single reduction
// a quadrant per pi/2 (two periods either side of 0).
const std::vector<double> kRowsD = periodic_edges(kPi / 256, 64);
const std::vector<double> kRowsS = periodic_edges(kPi / 2, 8);
// Zeros of the results, where the reduced argument counts fully.
const std::vector<double> kZeros = {kPi, kPi / 2};

#define KNOWN(T, FN, REF, TH, ED) Known{#T #FN, REF, Domain::All, TH, ED, kZeros}

const Describe known({
    KNOWN(s, Sin, sin_, kTrigS, kRowsS),
    KNOWN(d, Sin, sin_, kTrigD, kRowsD),
    KNOWN(s, Cos, cos_, kTrigS, kRowsS),
    KNOWN(d, Cos, cos_, kTrigD, kRowsD),
    KNOWN(s, Tan, tan_, kTrigS, kRowsS),
    KNOWN(d, Tan, tan_, kTrigD, kRowsD),
    KNOWN(s, SinCos, sincos_, kTrigS, kRowsS),
    KNOWN(d, SinCos, sincos_, kTrigD, kRowsD),
});

}  // namespace
}  // namespace accuracy
