// MCG31M1: the multiplicative congruential generator x = a x mod (2^31 - 1)
// with a = 1132489760 (L'Ecuyer's multiplier).
#include <bit>
#include <cstring>

#include "rng/brng_row.h"
#include "rng/congruential/modular.h"
#include "rng/state_check.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

constexpr uint32_t kMultiplier = 0x43806C20u;
// Slightly above 1/(2^31 - 1), so the largest output stays below 1.
const double kScale = std::bit_cast<double>(0x3E00000000200000ull);

struct State {
    uint32_t x;  // the next output
    uint32_t a;  // the current multiplier (a power of kMultiplier after leapfrog)
};
static_assert(16 + sizeof(State) <= 24);

// The first output is written before n is looked at: n below 1 writes one
// value and advances one step. Eight values are kept in flight, each
// advanced by a^8 per block.
template <typename Out>
void generate(State* st, int32_t n, Out&& out) {
    uint32_t x = st->x;
    const uint32_t a = st->a;
    out(0, x);
    x = reduce_m31(static_cast<uint64_t>(a) * x);
    int32_t i = 1;
    if (n - 1 >= 8) {
        const uint32_t a8 = __vstiPowMod2P31M1(a, 8);
        uint32_t v[8];
        v[0] = x;
        for (int k = 1; k < 8; ++k) v[k] = reduce_m31(static_cast<uint64_t>(a) * v[k - 1]);
        const int32_t end = 1 + ((n - 1) & ~7);
        for (; i < end; i += 8)
            for (int k = 0; k < 8; ++k) {
                out(i + k, v[k]);
                v[k] = reduce_m31(static_cast<uint64_t>(a8) * v[k]);
            }
        x = v[0];
    }
    for (; i < n; ++i) {
        out(i, x);
        x = reduce_m31(static_cast<uint64_t>(a) * x);
    }
    st->x = x;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngMCG31M1InitStream(int32_t method, void* stream, int32_t count,
                                                 const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            uint32_t x = 1;
            if (count >= 1) {
                x = *static_cast<const uint32_t*>(params) % kM31;
                if (x == 0) x = 1;
            }
            st->x = x;
            st->a = kMultiplier;
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG: {
            const uint32_t k = static_cast<uint32_t>(*static_cast<const int32_t*>(params));
            st->x = reduce_m31(static_cast<uint64_t>(__vstiPowMod2P31M1(st->a, k)) * st->x);
            st->a = __vstiPowMod2P31M1(st->a, static_cast<uint32_t>(count));
            return 0;
        }
        case ORV_RNG_METHOD_SKIP: {
            uint64_t nskip;
            std::memcpy(&nskip, params, sizeof nskip);
            st->x = reduce_m31(static_cast<uint64_t>(__vstiPowMod2P31M1(st->a, nskip)) * st->x);
            return 0;
        }
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngMCG31M1(void* stream, int32_t n, uint32_t* r) {
    generate(state<State>(stream), n, [r](int32_t i, uint32_t v) { r[i] = v; });
    return 0;
}

ORV_EXPORT int32_t __vstdBRngMCG31M1(void* stream, int32_t n, double* r, double a, double b) {
    const double scale = (b - a) * kScale;
    generate(state<State>(stream), n,
             [r, scale, a](int32_t i, uint32_t v) { r[i] = static_cast<double>(v) * scale + a; });
    return 0;
}

ORV_EXPORT int32_t __vstsBRngMCG31M1(void* stream, int32_t n, float* r, float a, float b) {
    const double da = a;
    const double scale = (static_cast<double>(b) - da) * kScale;
    generate(state<State>(stream), n, [r, scale, da](int32_t i, uint32_t v) {
        r[i] = static_cast<float>(static_cast<double>(v) * scale + da);
    });
    return 0;
}

// x is a non-zero residue and a a power of the multiplier, never 0 mod the prime.
bool orv::rng::mcg31m1_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    return st->x != 0 && st->x < kM31 && st->a != 0 && st->a < kM31;
}
