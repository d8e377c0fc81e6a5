// References, thresholds and row edges of the pi- and degree-scaled sine,
// cosine and tangent.
#include <vector>

#include "harness.h"

namespace accuracy {
namespace {

void sinpi_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_sinpi(r, a, MPFR_RNDN); }
void cospi_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_cospi(r, a, MPFR_RNDN); }
void tanpi_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_tanpi(r, a, MPFR_RNDN); }
void sincospi_(mpfr_t r, mpfr_t r2, const mpfr_t a, const mpfr_t) {
    mpfr_sinpi(r, a, MPFR_RNDN);
    mpfr_cospi(r2, a, MPFR_RNDN);
}
void sind_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_sinu(r, a, 360, MPFR_RNDN); }
void cosd_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_cosu(r, a, 360, MPFR_RNDN); }
void tand_(mpfr_t r, mpfr_t, const mpfr_t a, const mpfr_t) { mpfr_tanu(r, a, 360, MPFR_RNDN); }

// Where the path changes: the callout from 2^50 (double) and 2^21 (single).
const std::vector<double> kPiD = {0x1p50, -0x1p50, 0x1p-1022, 0.25, 1e6 + 0.5};
const std::vector<double> kPiS = {0x1p21, -0x1p21, 0x1p-126, 0.25, 1000.5};
const std::vector<double> kDegD = {0x1p50, -0x1p50, 0x1p-1022, 45.0, 3.6e8 + 90};
const std::vector<double> kDegS = {0x1p21, -0x1p21, 0x1p-126, 45.0, 36090.0};
// Quadrant edges: q = round(2|x|) changes at a quarter past each half, and
// round(|x|/90) at 45 degrees past each right angle.
const std::vector<double> kRowsPi = periodic_edges(0.5, 16);
const std::vector<double> kRowsDeg = periodic_edges(90.0, 16);
// Zeros of the results, where the remainder counts fully.
const std::vector<double> kZerosPi = {1.0, 0.5, 2.0, 1.5};
const std::vector<double> kZerosDeg = {180.0, 90.0, 360.0, 270.0};

#define KNOWN(T, FN, REF, TH, ED, Z) Known{#T #FN, REF, Domain::All, TH, ED, Z}

const Describe known({
    KNOWN(s, Sinpi, sinpi_, kPiS, kRowsPi, kZerosPi),
    KNOWN(d, Sinpi, sinpi_, kPiD, kRowsPi, kZerosPi),
    KNOWN(s, Cospi, cospi_, kPiS, kRowsPi, kZerosPi),
    KNOWN(d, Cospi, cospi_, kPiD, kRowsPi, kZerosPi),
    KNOWN(s, Tanpi, tanpi_, kPiS, kRowsPi, kZerosPi),
    KNOWN(d, Tanpi, tanpi_, kPiD, kRowsPi, kZerosPi),
    KNOWN(s, SinCospi, sincospi_, kPiS, kRowsPi, kZerosPi),
    KNOWN(d, SinCospi, sincospi_, kPiD, kRowsPi, kZerosPi),
    KNOWN(s, Sind, sind_, kDegS, kRowsDeg, kZerosDeg),
    KNOWN(d, Sind, sind_, kDegD, kRowsDeg, kZerosDeg),
    KNOWN(s, Cosd, cosd_, kDegS, kRowsDeg, kZerosDeg),
    KNOWN(d, Cosd, cosd_, kDegD, kRowsDeg, kZerosDeg),
    KNOWN(s, Tand, tand_, kDegS, kRowsDeg, kZerosDeg),
    KNOWN(d, Tand, tand_, kDegD, kRowsDeg, kZerosDeg),
});

}  // namespace
}  // namespace accuracy
