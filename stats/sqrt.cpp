// __vstdSqrt: square root from a table of reciprocal square roots.
// x = m * 2^E with m in [1, 4) and E even; a 256-cell table over [1, 4)
// gives 1/sqrt(m) to about 8 bits, three Newton steps for the reciprocal
// square root take it past 53 bits, and one Heron correction of m * y
// leaves the root within one unit in the last place.
#include "stats/ss_task.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr int kCells = 256;
constexpr double kCellWidth = 3.0 / kCells;

constexpr double rsqrt_newton(double m) {
    double y = 1.0 / m + 0.5;  // within a factor of two of 1/sqrt(m) on [1, 4)
    for (int i = 0; i < 8; ++i) y = y * (1.5 - 0.5 * m * y * y);
    return y;
}

constexpr std::array<double, kCells> make_rsqrt_table() {
    std::array<double, kCells> t{};
    for (int i = 0; i < kCells; ++i) t[i] = rsqrt_newton(1.0 + (i + 0.5) * kCellWidth);
    return t;
}
constexpr std::array<double, kCells> kRsqrt = make_rsqrt_table();

}  // namespace

extern "C" double __vstdSqrt(double x) {
    if (!(x > 0.0)) return (x == 0.0) ? x : std::numeric_limits<double>::quiet_NaN();
    if (x == std::numeric_limits<double>::infinity()) return x;
    int e = 0;
    double m = 2.0 * std::frexp(x, &e);  // exact; denormals included
    int E = e - 1;
    if (E & 1) {
        m *= 2.0;
        E -= 1;
    }
    int idx = static_cast<int>((m - 1.0) * (1.0 / kCellWidth));
    if (idx > kCells - 1) idx = kCells - 1;
    double y = kRsqrt[static_cast<std::size_t>(idx)];
    for (int i = 0; i < 3; ++i) y = y * (1.5 - 0.5 * m * y * y);
    double s = m * y;
    s = s + 0.5 * y * (m - s * s);
    return std::ldexp(s, E / 2);
}
