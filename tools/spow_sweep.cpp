// Opt-in accuracy sweep of the single powers (sPow, sPowr, sPowx in every
// tier) over many more pairs than the MPFR harness can afford: the
// reference is the C library's double pow, whose error (below 2^-52
// relative) moves a float ULP figure by less than 2^-28. Pairs are drawn as
// the harness draws them (a fifth small integer exponents, with negative
// bases half the time; the rest log-uniform in 2^-20 .. 2^20; y log2 x
// uniform over the result's binades, a tenth within one of the overflow
// edge, a tenth at the denormal results, a tenth with |y log2 x| < 2^-8,
// i.e. bases near 1), plus windows at the log2 table's row edges.
//
//   spow_sweep [pairs per function, default 10^8] [seed] [name filter]
// Prints the worst ULP of each function and any result whose class
// (infinity, zero, NaN) differs from the rounded reference.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <orv/vtm.h>

namespace {

double ulp_error(float r, double ref) {
    const float rf = float(ref);
    if (!std::isfinite(rf) || !std::isfinite(r) || std::isnan(ref)) {
        if (std::isnan(rf) && std::isnan(r)) return 0;
        return r == rf ? 0 : 1e9;  // class differs
    }
    const double a = std::fabs(ref);
    const int e = a < 0x1p-126 ? -126 : std::ilogb(a);
    return std::fabs(double(r) - ref) / std::ldexp(1.0, e - 23);
}

struct Draw {
    std::mt19937_64 g;
    std::uniform_real_distribution<double> u{0.0, 1.0};
    float y() {
        if (g() % 5 == 0) return float(int(g() % 129) - 64);
        const double m = std::exp2(-20.0 + 40.0 * u(g));
        return float(g() & 1 ? -m : m);
    }
    float x(float y, bool allow_negative) {
        double t;
        switch (g() % 10) {
            case 0: t = 127.0 + 1.1 * u(g); break;
            case 1: t = -150.0 + 2.0 * u(g); break;
            case 2: t = std::ldexp(2.0 * u(g) - 1.0, -8); break;
            case 3: {  // a base at a row edge of the log2 table, a few ulps off
                const uint32_t b = 0x3F328000u + uint32_t(g() % 129) * 0x10000u + uint32_t(int(g() % 17) - 8);
                float v;
                std::memcpy(&v, &b, 4);
                return std::ldexp(v, int(g() % 9) - 4);
            }
            default: t = -150.0 + 280.0 * u(g);
        }
        float x = float(std::exp2(t / double(y)));
        if (!std::isfinite(x) || x == 0.0f) x = float(std::exp2(u(g) * 8.0 - 4.0));
        if (allow_negative && std::nearbyint(y) == y && (g() & 1)) x = -x;
        return x;
    }
};

}  // namespace

int main(int argc, char** argv) {
    const long total = argc > 1 ? std::atol(argv[1]) : 100000000L;
    const uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 0) : 1;
    const char* filter = argc > 3 ? argv[3] : "";  // only the functions whose name holds it
    _vtmSetMode(VTM_ERRMODE_NOERR);
    constexpr int kChunk = 4096;
    std::vector<float> x(kChunk), y(kChunk), r(kChunk);
    using Bin = void (*)(int, const float*, const float*, float*);
    using Px = void (*)(int, const float*, float, float*);
    const struct {
        const char* name;
        Bin bin;
        Px px;
        bool powr;
    } fns[] = {
        {"sPow HA", _vtmsPow_HA, nullptr, false},   {"sPowr HA", _vtmsPowr_HA, nullptr, true},
        {"sPowx LA", nullptr, _vtmsPowx_21, false}, {"sPowx HA", nullptr, _vtmsPowx_HA, false},
        {"sPowx EP", nullptr, _vtmsPowx_11, false},
    };
    for (const auto& f : fns) {
        if (!std::strstr(f.name, filter)) continue;
        Draw d{std::mt19937_64(seed)};
        double worst = 0;
        float wx = 0, wy = 0;
        long bad = 0;
        for (long done = 0; done < total; done += kChunk) {
            const float cy = d.y();
            for (int i = 0; i < kChunk; ++i) {
                y[i] = f.px ? cy : d.y();
                x[i] = d.x(y[i], !f.powr);
            }
            if (f.px)
                f.px(kChunk, x.data(), cy, r.data());
            else
                f.bin(kChunk, x.data(), y.data(), r.data());
            for (int i = 0; i < kChunk; ++i) {
                const double e = ulp_error(r[i], std::pow(double(x[i]), double(y[i])));
                if (e >= 1e9) {
                    if (bad++ < 5) std::printf("  %s class differs: x %a y %a got %a\n", f.name, x[i], y[i], r[i]);
                } else if (e > worst) {
                    worst = e, wx = x[i], wy = y[i];
                }
            }
        }
        std::printf("%s: %ld pairs, worst %.4f ulp at x %a y %a, %ld class mismatches\n", f.name,
                    (total + kChunk - 1) / kChunk * kChunk, worst, wx, wy, bad);
    }
    return 0;
}
