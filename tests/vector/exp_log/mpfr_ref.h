// Reference values from MPFR and the distance of a result from them in
// units in the last place of the result's format.
#pragma once

#include <mpfr.h>

#include <cmath>
#include <limits>

namespace explog_test {

using MpfrFn = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

// Error of y against fn(x) in ulps of the format with `digits` bits and
// minimum exponent `emin` (ulps of the correctly rounded value, denormals
// counted on their fixed grid). Non-finite or overflowing references must
// match exactly (returns 0 or +inf).
inline double ulp_error(double x, double y, MpfrFn fn, int digits, int emin, double max_finite) {
    mpfr_t mx, ref, diff;
    mpfr_inits2(256, mx, ref, diff, static_cast<mpfr_ptr>(nullptr));
    mpfr_set_d(mx, x, MPFR_RNDN);
    fn(ref, mx, MPFR_RNDN);
    double out;
    const double rounded = mpfr_get_d(ref, MPFR_RNDN);
    if (mpfr_nan_p(ref)) {
        out = std::isnan(y) ? 0.0 : std::numeric_limits<double>::infinity();
    } else if (mpfr_inf_p(ref) || std::fabs(rounded) > max_finite) {
        // Overflow: the correctly rounded value is infinity with the sign.
        out = (std::isinf(y) && (y > 0) == (mpfr_sgn(ref) > 0)) ? 0.0
                                                                : std::numeric_limits<double>::infinity();
    } else if (!std::isfinite(y)) {
        out = std::numeric_limits<double>::infinity();
    } else {
        mpfr_set_d(diff, y, MPFR_RNDN);
        mpfr_sub(diff, diff, ref, MPFR_RNDN);
        mpfr_abs(diff, diff, MPFR_RNDN);
        long e = 0;
        if (!mpfr_zero_p(ref)) {
            mpfr_get_d_2exp(&e, ref, MPFR_RNDN);  // |ref| = m 2^e, m in [0.5, 1)
            e -= 1;
        } else {
            e = emin;
        }
        if (e < emin) e = emin;
        mpfr_mul_2si(diff, diff, -(e - (digits - 1)), MPFR_RNDN);
        out = mpfr_get_d(diff, MPFR_RNDU);
    }
    mpfr_clears(mx, ref, diff, static_cast<mpfr_ptr>(nullptr));
    return out;
}

inline double ulp_error_s(float x, float y, MpfrFn fn) {
    return ulp_error(x, y, fn, 24, -126, 3.4028235677973366e38);
}
inline double ulp_error_d(double x, double y, MpfrFn fn) {
    return ulp_error(x, y, fn, 53, -1022, std::numeric_limits<double>::max());
}

}  // namespace explog_test
