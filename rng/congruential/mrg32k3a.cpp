// MRG32k3a: L'Ecuyer's combined multiple recursive generator,
// x(n) = 1403580 x(n-2) - 810728 x(n-3) mod m1,
// y(n) = 527612 y(n-1) - 1370589 y(n-3) mod m2, output (x - y) mod m1.
#include <bit>
#include <cstring>

#include "rng/brng_row.h"
#include "rng/congruential/modular.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

constexpr int64_t kA12 = 1403580, kA13 = 810728;
constexpr int64_t kB21 = 527612, kB23 = 1370589;
// Slightly above 1/(m1 + 1).
const double kScale = std::bit_cast<double>(0x3DF000000D10000Bull);

constexpr uint32_t kRowX[3] = {0, 1403580u, kMrgM1 - 810728u};
constexpr uint32_t kRowY[3] = {527612u, 0, kMrgM2 - 1370589u};

struct State {
    uint32_t x[3];  // oldest first
    uint32_t y[3];
};
static_assert(16 + sizeof(State) <= 40);

// Residue of p in [0, 2^54) modulo 2^32 - c, folding the high part twice.
template <uint64_t C>
inline uint32_t fold(uint64_t p) {
    constexpr uint64_t m = (1ull << 32) - C;
    p = (p >> 32) * C + (p & 0xFFFFFFFFull);
    p = (p >> 32) * C + (p & 0xFFFFFFFFull);
    if (p >= m) p -= m;
    return static_cast<uint32_t>(p);
}

// The negative term is offset by a multiple of the modulus so that the
// integer combination stays non-negative.
inline uint32_t step_x(uint32_t x0, uint32_t x1) {
    return fold<209>(static_cast<uint64_t>(kA12 * x1 - kA13 * x0 + kA13 * int64_t{kMrgM1}));
}
inline uint32_t step_y(uint32_t y0, uint32_t y2) {
    return fold<22853>(static_cast<uint64_t>(kB21 * y2 - kB23 * y0 + kB23 * int64_t{kMrgM2}));
}
inline uint32_t combine(uint32_t x, uint32_t y) {
    const int64_t d = int64_t{x} - int64_t{y};
    return static_cast<uint32_t>(d < 0 ? d + kMrgM1 : d);
}

// Blocks of 16 outputs: x(n) does not depend on x(n-1), so two x steps run
// side by side; y runs one step at a time beside them.
template <typename Out>
void generate(State* st, int32_t n, Out&& out) {
    uint32_t x0 = st->x[0], x1 = st->x[1], x2 = st->x[2];
    uint32_t y0 = st->y[0], y1 = st->y[1], y2 = st->y[2];
    int32_t i = 0;
    const int32_t end = n & ~15;
    for (; i < end; i += 16)
        for (int k = 0; k < 16; k += 2) {
            const uint32_t x3 = step_x(x0, x1);
            const uint32_t x4 = step_x(x1, x2);
            const uint32_t y3 = step_y(y0, y2);
            const uint32_t y4 = step_y(y1, y3);
            out(i + k, combine(x3, y3));
            out(i + k + 1, combine(x4, y4));
            x0 = x2, x1 = x3, x2 = x4;
            y0 = y2, y1 = y3, y2 = y4;
        }
    for (; i < n; ++i) {
        const uint32_t x3 = step_x(x0, x1);
        const uint32_t y3 = step_y(y0, y2);
        out(i, combine(x3, y3));
        x0 = x1, x1 = x2, x2 = x3;
        y0 = y1, y1 = y2, y2 = y3;
    }
    st->x[0] = x0, st->x[1] = x1, st->x[2] = x2;
    st->y[0] = y0, st->y[1] = y1, st->y[2] = y2;
}

const uint32_t* table_words(const MrgPowerTable& t) { return t[0].data(); }

}  // namespace

ORV_RNG_EXPORT int32_t __vstBRngMRG32K3AInitStream(int32_t method, void* stream, int32_t count,
                                                  const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            uint32_t w[6] = {1, 1, 1, 1, 1, 1};
            const uint32_t* seed = static_cast<const uint32_t*>(params);
            for (int32_t i = 0; i < count && i < 6; ++i) w[i] = seed[i];
            for (int i = 0; i < 3; ++i) {
                st->x[i] = w[i] >= kMrgM1 ? w[i] - kMrgM1 : w[i];
                st->y[i] = w[i + 3] >= kMrgM2 ? w[i + 3] - kMrgM2 : w[i + 3];
            }
            if ((st->x[0] | st->x[1] | st->x[2]) == 0) st->x[0] = 1;
            if ((st->y[0] | st->y[1] | st->y[2]) == 0) st->y[0] = 1;
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG:
            return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP: {
            uint64_t nskip;
            std::memcpy(&nskip, params, sizeof nskip);
            __vstiVect3PowMod(st->x, kRowX, kMrgM1, nskip);
            return __vstiVect3PowMod(st->y, kRowY, kMrgM2, nskip);
        }
        case ORV_RNG_METHOD_SKIP_EX: {
            const uint64_t* e = static_cast<const uint64_t*>(params);
            if (count < 1 || e == nullptr) return 0;  // a count of no words skips nothing
            bool narrow = count < 4;
            if (!narrow) {
                narrow = true;
                for (int32_t i = 3; i < count; ++i)
                    if (e[i] != 0) narrow = false;
            }
            if (narrow) {
                const int32_t words = count < 3 ? count : 3;
                __vstiVect3PowArrayMod_M1(st->x, words, e, table_words(kMrgPowersM1));
                return __vstiVect3PowArrayMod_M2(st->y, words, e, table_words(kMrgPowersM2));
            }
            __vstiVect3PowArrayMod(st->x, kRowX, kMrgM1, count, e);
            return __vstiVect3PowArrayMod(st->y, kRowY, kMrgM2, count, e);
        }
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_RNG_EXPORT int32_t __vstiBRngMRG32K3A(void* stream, int32_t n, uint32_t* r) {
    generate(state<State>(stream), n, [r](int32_t i, uint32_t z) { r[i] = z; });
    return 0;
}

ORV_RNG_EXPORT int32_t __vstdBRngMRG32K3A(void* stream, int32_t n, double* r, double a,
                                          double b) {
    const double scale = (b - a) * kScale;
    generate(state<State>(stream), n,
             [r, scale, a](int32_t i, uint32_t z) { r[i] = static_cast<double>(z) * scale + a; });
    return 0;
}

ORV_RNG_EXPORT int32_t __vstsBRngMRG32K3A(void* stream, int32_t n, float* r, float a, float b) {
    const double da = a;
    const double scale = (static_cast<double>(b) - da) * kScale;
    generate(state<State>(stream), n, [r, scale, da](int32_t i, uint32_t z) {
        r[i] = static_cast<float>(static_cast<double>(z) * scale + da);
    });
    return 0;
}
