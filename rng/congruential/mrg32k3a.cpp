// MRG32k3a: L'Ecuyer's combined multiple recursive generator,
// x(n) = 1403580 x(n-2) - 810728 x(n-3) mod m1,
// y(n) = 527612 y(n-1) - 1370589 y(n-3) mod m2, output (x - y) mod m1.
#include <emmintrin.h>

#include <bit>
#include <climits>
#include <cstring>

#include "rng/brng_row.h"
#include "rng/congruential/modular.h"
#include "rng/state_check.h"
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
void generate_scalar(State* st, int32_t n, Out&& out) {
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

// Long runs go in eight lanes, four SSE2 registers of doubles: lane j is
// the stream h = 2^k outputs after lane j - 1 (one table entry jumps it), so
// a run covers 8h outputs. Each lane steps the recursion in double
// arithmetic as in L'Ecuyer's published form: products below 2^53 are
// exact, the quotient comes from a reciprocal and int32 truncation, and the
// remainder is corrected once each way by masks.
constexpr int kRegisters = 4;
constexpr int kLanes = 2 * kRegisters;

inline __m128d reduce_pd(__m128d p, __m128d m, __m128d inv) {
    const __m128d q = _mm_cvtepi32_pd(_mm_cvttpd_epi32(_mm_mul_pd(p, inv)));
    __m128d r = _mm_sub_pd(p, _mm_mul_pd(q, m));
    r = _mm_add_pd(r, _mm_and_pd(_mm_cmplt_pd(r, _mm_setzero_pd()), m));
    return _mm_sub_pd(r, _mm_and_pd(_mm_cmpge_pd(r, m), m));
}

// Out receives (i, h, j, z) with z holding outputs i + 2jh and i + (2j+1)h.
template <typename Out>
void generate_lanes(State* st, int32_t h, int k, Out&& out) {
    alignas(16) double w[6][kLanes];  // x0 x1 x2 y0 y1 y2 of each lane
    State lane = *st;
    for (int j = 0; j < kLanes; ++j) {
        if (j > 0) {
            mat3_apply(kMrgPowersM1[k], lane.x, kMrgM1);
            mat3_apply(kMrgPowersM2[k], lane.y, kMrgM2);
        }
        for (int c = 0; c < 3; ++c) {
            w[c][j] = lane.x[c];
            w[3 + c][j] = lane.y[c];
        }
    }
    __m128d x0[kRegisters], x1[kRegisters], x2[kRegisters], y0[kRegisters], y1[kRegisters], y2[kRegisters];
    for (int r = 0; r < kRegisters; ++r) {
        x0[r] = _mm_load_pd(&w[0][2 * r]), x1[r] = _mm_load_pd(&w[1][2 * r]), x2[r] = _mm_load_pd(&w[2][2 * r]);
        y0[r] = _mm_load_pd(&w[3][2 * r]), y1[r] = _mm_load_pd(&w[4][2 * r]), y2[r] = _mm_load_pd(&w[5][2 * r]);
    }
    const __m128d m1 = _mm_set1_pd(kMrgM1), m2 = _mm_set1_pd(kMrgM2);
    const __m128d inv1 = _mm_set1_pd(1.0 / kMrgM1), inv2 = _mm_set1_pd(1.0 / kMrgM2);
    const __m128d a12 = _mm_set1_pd(1403580.0), a13 = _mm_set1_pd(810728.0);
    const __m128d b21 = _mm_set1_pd(527612.0), b23 = _mm_set1_pd(1370589.0);
    const __m128d zero = _mm_setzero_pd();
    for (int32_t i = 0; i < h; ++i) {
        for (int r = 0; r < kRegisters; ++r) {
            const __m128d x3 = reduce_pd(_mm_sub_pd(_mm_mul_pd(a12, x1[r]), _mm_mul_pd(a13, x0[r])), m1, inv1);
            const __m128d y3 = reduce_pd(_mm_sub_pd(_mm_mul_pd(b21, y2[r]), _mm_mul_pd(b23, y0[r])), m2, inv2);
            __m128d z = _mm_sub_pd(x3, y3);
            z = _mm_add_pd(z, _mm_and_pd(_mm_cmplt_pd(z, zero), m1));
            out(i, h, r, z);
            x0[r] = x1[r], x1[r] = x2[r], x2[r] = x3;
            y0[r] = y1[r], y1[r] = y2[r], y2[r] = y3;
        }
    }
    // The last lane ends where the run ends.
    const int r = kRegisters - 1;
    _mm_store_pd(&w[0][0], x0[r]), _mm_store_pd(&w[1][0], x1[r]), _mm_store_pd(&w[2][0], x2[r]);
    _mm_store_pd(&w[3][0], y0[r]), _mm_store_pd(&w[4][0], y1[r]), _mm_store_pd(&w[5][0], y2[r]);
    for (int c = 0; c < 3; ++c) {
        st->x[c] = static_cast<uint32_t>(w[c][1]);
        st->y[c] = static_cast<uint32_t>(w[3 + c][1]);
    }
}

constexpr int32_t kLaneMinimum = 16 * kLanes;

// Runs of eight lanes while at least kLaneMinimum outputs remain, each over
// the largest power of two h with 8h outputs left; the rest one at a time.
template <typename Scalar, typename Pair>
void generate(State* st, int32_t n, Scalar&& scalar, Pair&& pair_out) {
    int32_t done = 0;
    while (n - done >= kLaneMinimum) {
        const int k = std::bit_width(static_cast<uint32_t>((n - done) / kLanes)) - 1;
        const int32_t h = int32_t{1} << k;
        generate_lanes(st, h, k, [&pair_out, done](int32_t i, int32_t hh, int r, __m128d z) {
            pair_out(done + i + 2 * r * hh, hh, z);
        });
        done += kLanes * h;
    }
    generate_scalar(st, n - done, [&scalar, done](int32_t i, uint32_t z) { scalar(done + i, z); });
}

}  // namespace

ORV_EXPORT int32_t __vstBRngMRG32K3AInitStream(int32_t method, void* stream, int32_t count,
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

ORV_EXPORT int32_t __vstiBRngMRG32K3A(void* stream, int32_t n, uint32_t* r) {
    const __m128d half = _mm_set1_pd(2147483648.0);
    generate(
        state<State>(stream), n, [r](int32_t i, uint32_t z) { r[i] = z; },
        [r, half](int32_t i, int32_t h, __m128d z) {
            // z - 2^31 fits int32; the top bit comes back by the XOR.
            const __m128i w = _mm_xor_si128(_mm_cvttpd_epi32(_mm_sub_pd(z, half)), _mm_set1_epi32(INT32_MIN));
            r[i] = static_cast<uint32_t>(_mm_cvtsi128_si32(w));
            r[i + h] = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(w, 1)));
        });
    return 0;
}

ORV_EXPORT int32_t __vstdBRngMRG32K3A(void* stream, int32_t n, double* r, double a,
                                          double b) {
    const double scale = (b - a) * kScale;
    const __m128d vs = _mm_set1_pd(scale), va = _mm_set1_pd(a);
    generate(
        state<State>(stream), n,
        [r, scale, a](int32_t i, uint32_t z) { r[i] = static_cast<double>(z) * scale + a; },
        [r, vs, va](int32_t i, int32_t h, __m128d z) {
            const __m128d v = _mm_add_pd(_mm_mul_pd(z, vs), va);
            _mm_storel_pd(r + i, v);
            _mm_storeh_pd(r + i + h, v);
        });
    return 0;
}

ORV_EXPORT int32_t __vstsBRngMRG32K3A(void* stream, int32_t n, float* r, float a, float b) {
    const double da = a;
    const double scale = (static_cast<double>(b) - da) * kScale;
    const __m128d vs = _mm_set1_pd(scale), va = _mm_set1_pd(da);
    generate(
        state<State>(stream), n,
        [r, scale, da](int32_t i, uint32_t z) { r[i] = static_cast<float>(static_cast<double>(z) * scale + da); },
        [r, vs, va](int32_t i, int32_t h, __m128d z) {
            const __m128 v = _mm_cvtpd_ps(_mm_add_pd(_mm_mul_pd(z, vs), va));
            _mm_store_ss(r + i, v);
            _mm_store_ss(r + i + h, _mm_shuffle_ps(v, v, 1));
        });
    return 0;
}

// Each component is a residue, and neither is all zero: seeding lifts a zero
// component to (1, 0, 0), and the recursions never reach zero from elsewhere.
bool orv::rng::mrg32k3a_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    bool residues = true;
    for (int i = 0; i < 3; ++i) residues = residues && st->x[i] < kMrgM1 && st->y[i] < kMrgM2;
    return residues && (st->x[0] | st->x[1] | st->x[2]) != 0 && (st->y[0] | st->y[1] | st->y[2]) != 0;
}
