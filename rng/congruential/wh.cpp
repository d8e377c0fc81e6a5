// WH: the four-part Wichmann-Hill generator (Wichmann and Hill, 2006) with
// 273 parameter sets: x[i] = a[i] x[i] mod m[i], output the fractional part
// of the sum of x[i] / m[i].
#include "rng/congruential/wh.h"

#include <emmintrin.h>

#include <array>
#include <cmath>
#include <cstring>

#include "rng/brng_row.h"
#include "rng/state_check.h"
#include "rng/stream.h"

namespace orv::rng {

const WhParameters kWhParameters[273] = {
#include "rng/congruential/wh_parameters.inc"
};

namespace {
constexpr WhParameters kParams[273] = {
#include "rng/congruential/wh_parameters.inc"
};
constexpr std::array<std::array<double, 4>, 273> reciprocals() {
    std::array<std::array<double, 4>, 273> t{};
    for (int r = 0; r < 273; ++r)
        for (int i = 0; i < 4; ++i) t[r][i] = 1.0 / kParams[r].m[i];
    return t;
}
constexpr auto kReciprocalTable = reciprocals();
}  // namespace

const double kWhReciprocals[273][4] = {
#define R(r) {kReciprocalTable[r][0], kReciprocalTable[r][1], kReciprocalTable[r][2], kReciprocalTable[r][3]}
#define R4(r) R(r), R(r + 1), R(r + 2), R(r + 3)
#define R16(r) R4(r), R4(r + 4), R4(r + 8), R4(r + 12)
#define R64(r) R16(r), R16(r + 16), R16(r + 32), R16(r + 48)
    R64(0), R64(64), R64(128), R64(192), R16(256), R(272)
#undef R64
#undef R16
#undef R4
#undef R
};

}  // namespace orv::rng

namespace {

using namespace orv::rng;

struct State {
    uint32_t x[4];  // the next output
    uint32_t a[4];  // the current multipliers
};
static_assert(16 + sizeof(State) == 48);

struct Set {
    uint32_t m[4];
    double inv[4];
};

Set parameter_set(const void* stream) {
    uint32_t sub = sub_generator(header(stream)->brngId);
    if (sub >= 273) sub = 0;  // only reachable through a damaged record
    Set s;
    for (int i = 0; i < 4; ++i) {
        s.m[i] = kWhParameters[sub].m[i];
        s.inv[i] = kWhReciprocals[sub][i];
    }
    return s;
}

// Exact residue of a product below 2^48 through a double reciprocal: the
// truncated quotient is off by at most one, which the two tests correct.
inline uint32_t reduce(uint64_t p, uint32_t m, double inv) {
    const int64_t q = static_cast<int64_t>(static_cast<double>(p) * inv);
    int64_t r = static_cast<int64_t>(p) - q * m;
    if (r < 0) r += m;
    if (r >= m) r -= m;
    return static_cast<uint32_t>(r);
}

// The working copy of the state, reduced modulo m: a state that came from
// a damaged image can't push the products past 2^48.
inline void load(const State* st, const Set& s, uint32_t x[4], uint32_t a[4]) {
    for (int i = 0; i < 4; ++i) {
        x[i] = st->x[i] < s.m[i] ? st->x[i] : st->x[i] % s.m[i];
        a[i] = st->a[i] < s.m[i] ? st->a[i] : st->a[i] % s.m[i];
    }
}

// The fills work in doubles, the four parts in two SSE2 registers: the
// products are below 2^48 and exact, the quotient is truncated through int32
// and the remainder corrected once each way by masks, with no branch. Eight
// outputs per round, x(t+k) = a^k x(t), so the products of a round are
// independent.
constexpr int kRound = 8;

struct Pair {
    __m128d lo, hi;  // parts 0 and 1, parts 2 and 3
};

// inv is 1/m rounded up, so the truncated quotient is never below the true
// one and at most one above it: one correction.
inline __m128d reduce_pd(__m128d p, __m128d m, __m128d inv) {
    const __m128d q = _mm_cvtepi32_pd(_mm_cvttpd_epi32(_mm_mul_pd(p, inv)));
    const __m128d r = _mm_sub_pd(p, _mm_mul_pd(q, m));
    return _mm_add_pd(r, _mm_and_pd(_mm_cmplt_pd(r, _mm_setzero_pd()), m));
}

inline Pair mulmod(const Pair& a, const Pair& x, const Pair& m, const Pair& inv) {
    return Pair{reduce_pd(_mm_mul_pd(a.lo, x.lo), m.lo, inv.lo), reduce_pd(_mm_mul_pd(a.hi, x.hi), m.hi, inv.hi)};
}

inline Pair pair_of(const double v[4]) { return Pair{_mm_loadu_pd(v), _mm_loadu_pd(v + 2)}; }

// Calls one(i, x) with the four parts of output i, or two(i, x, y) with
// those of outputs i and i + 1, for i below n.
template <typename One, typename Two>
void generate(void* stream, int32_t n, One&& one, Two&& two) {
    State* st = state<State>(stream);
    const Set s = parameter_set(stream);
    uint32_t xi[4], ai[4];
    load(st, s, xi, ai);
    double xd[4], ad[4], md[4], up[4];
    for (int k = 0; k < 4; ++k) {
        xd[k] = xi[k], ad[k] = ai[k], md[k] = s.m[k];
        up[k] = std::nextafter(1.0 / md[k], 1.0);
    }
    const Pair m = pair_of(md), inv = pair_of(up), a = pair_of(ad);
    // Powers a^1 .. a^8 give eight outputs per round from one state.
    Pair pw[kRound];
    pw[0] = a;
    for (int k = 1; k < kRound; ++k) pw[k] = mulmod(pw[k - 1], a, m, inv);
    Pair x = pair_of(xd);
    Pair ys[kRound];
    int32_t i = 0;
    for (; i + kRound <= n; i += kRound) {
        ys[0] = x;
        for (int k = 1; k < kRound; ++k) ys[k] = mulmod(pw[k - 1], x, m, inv);
        x = mulmod(pw[kRound - 1], x, m, inv);
        for (int k = 0; k < kRound; k += 2) two(i + k, ys[k], ys[k + 1]);
    }
    for (; i < n; ++i) {
        one(i, x);
        x = mulmod(a, x, m, inv);
    }
    alignas(16) double cur[4];
    _mm_store_pd(cur, x.lo);
    _mm_store_pd(cur + 2, x.hi);
    for (int k = 0; k < 4; ++k) st->x[k] = static_cast<uint32_t>(cur[k]);
}

// u = x[0]/m[0] + ... + x[3]/m[3] through the reciprocals, in this order,
// minus its integer part; for two outputs at once in the two lanes.
template <typename One, typename Two>
void generate_interval(void* stream, int32_t n, One&& one, Two&& two) {
    const Set s = parameter_set(stream);
    const __m128d inv_lo = _mm_loadu_pd(s.inv), inv_hi = _mm_loadu_pd(s.inv + 2);
    generate(
        stream, n,
        [&one, inv_lo, inv_hi](int32_t i, const Pair& x) {
            const __m128d p01 = _mm_mul_pd(x.lo, inv_lo), p23 = _mm_mul_pd(x.hi, inv_hi);
            double u = _mm_cvtsd_f64(p01) + _mm_cvtsd_f64(_mm_unpackhi_pd(p01, p01));
            u += _mm_cvtsd_f64(p23);
            u += _mm_cvtsd_f64(_mm_unpackhi_pd(p23, p23));
            one(i, u - static_cast<double>(_mm_cvttsd_si32(_mm_set_sd(u))));
        },
        [&two, inv_lo, inv_hi](int32_t i, const Pair& x, const Pair& y) {
            const __m128d px01 = _mm_mul_pd(x.lo, inv_lo), px23 = _mm_mul_pd(x.hi, inv_hi);
            const __m128d py01 = _mm_mul_pd(y.lo, inv_lo), py23 = _mm_mul_pd(y.hi, inv_hi);
            __m128d u = _mm_add_pd(_mm_unpacklo_pd(px01, py01), _mm_unpackhi_pd(px01, py01));
            u = _mm_add_pd(u, _mm_unpacklo_pd(px23, py23));
            u = _mm_add_pd(u, _mm_unpackhi_pd(px23, py23));
            two(i, _mm_sub_pd(u, _mm_cvtepi32_pd(_mm_cvttpd_epi32(u))));
        });
}

}  // namespace

ORV_EXPORT int32_t __vstBRngWHInitStream(int32_t method, void* stream, int32_t count,
                                            const void* params) {
    State* st = state<State>(stream);
    if (method < 0 || method > 3) return ORV_RNG_ERROR_BAD_METHOD;
    if (method == ORV_RNG_METHOD_SKIP_EX) return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
    const Set s = parameter_set(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            uint32_t sub = sub_generator(header(stream)->brngId);
            if (sub >= 273) sub = 0;
            const uint32_t words = static_cast<uint32_t>(count) <= 3 ? static_cast<uint32_t>(count) : 4;
            const uint32_t* seed = static_cast<const uint32_t*>(params);
            for (uint32_t i = 0; i < 4; ++i) {
                uint32_t x = i < words ? seed[i] % s.m[i] : 1;
                st->x[i] = x == 0 ? 1 : x;
                st->a[i] = (kWhParameters[sub].multipliers >> (8 * i)) & 0xFF;
            }
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG: {
            load(st, s, st->x, st->a);
            const uint32_t k = static_cast<uint32_t>(*static_cast<const int32_t*>(params));
            for (int i = 0; i < 4; ++i) {
                st->x[i] = reduce(static_cast<uint64_t>(__vstiPowMod(st->a[i], k, s.m[i])) * st->x[i],
                                  s.m[i], s.inv[i]);
                st->a[i] = __vstiPowMod(st->a[i], static_cast<uint32_t>(count), s.m[i]);
            }
            return 0;
        }
        default: {  // skip ahead by one 64-bit count
            uint64_t nskip;
            std::memcpy(&nskip, params, sizeof nskip);
            load(st, s, st->x, st->a);
            for (int i = 0; i < 4; ++i)
                st->x[i] = reduce(static_cast<uint64_t>(__vstiPowMod(st->a[i], nskip, s.m[i])) * st->x[i],
                                  s.m[i], s.inv[i]);
            return 0;
        }
    }
}

// Each output is the four parts of the state, so n outputs fill 4n words.
ORV_EXPORT int32_t __vstiBRngWH(void* stream, int32_t n, uint32_t* r) {
    auto one = [r](int32_t i, const Pair& x) {
        const __m128i w = _mm_unpacklo_epi64(_mm_cvttpd_epi32(x.lo), _mm_cvttpd_epi32(x.hi));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r + 4 * static_cast<size_t>(i)), w);
    };
    generate(stream, n, one, [&one](int32_t i, const Pair& x, const Pair& y) {
        one(i, x);
        one(i + 1, y);
    });
    return 0;
}

ORV_EXPORT int32_t __vstdBRngWH(void* stream, int32_t n, double* r, double a, double b) {
    const double scale = b - a;
    const __m128d vs = _mm_set1_pd(scale), va = _mm_set1_pd(a);
    generate_interval(
        stream, n, [r, scale, a](int32_t i, double u) { r[i] = u * scale + a; },
        [r, vs, va](int32_t i, __m128d u) { _mm_storeu_pd(r + i, _mm_add_pd(_mm_mul_pd(u, vs), va)); });
    return 0;
}

ORV_EXPORT int32_t __vstsBRngWH(void* stream, int32_t n, float* r, float a, float b) {
    const double da = a;
    const double scale = static_cast<double>(b) - da;
    const __m128d vs = _mm_set1_pd(scale), va = _mm_set1_pd(da);
    generate_interval(
        stream, n, [r, scale, da](int32_t i, double u) { r[i] = static_cast<float>(u * scale + da); },
        [r, vs, va](int32_t i, __m128d u) {
            const __m128 f = _mm_cvtpd_ps(_mm_add_pd(_mm_mul_pd(u, vs), va));
            _mm_storel_pi(reinterpret_cast<__m64*>(r + i), f);
        });
    return 0;
}

// Every part's value and multiplier are non-zero residues of its prime modulus.
bool orv::rng::wh_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    const Set s = parameter_set(stream);
    for (int i = 0; i < 4; ++i)
        if (st->x[i] == 0 || st->x[i] >= s.m[i] || st->a[i] == 0 || st->a[i] >= s.m[i]) return false;
    return true;
}
