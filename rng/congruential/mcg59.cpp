// MCG59: the multiplicative congruential generator x = a x mod 2^59 with
// a = 13^13.
#include <cstring>

#include "rng/brng_row.h"
#include "rng/congruential/mcg59_core.h"
#include "rng/state_check.h"

namespace {

using namespace orv::rng;
using mcg59::generate;
using mcg59::kMultiplier;
using mcg59::State;

}  // namespace

ORV_EXPORT int32_t __vstBRngMCG59InitStream(int32_t method, void* stream, int32_t count,
                                               const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            uint64_t x = 1;
            const uint32_t* seed = static_cast<const uint32_t*>(params);
            if (count == 1) x = seed[0];
            if (count >= 2) x = (seed[0] | static_cast<uint64_t>(seed[1]) << 32) & kMask59;
            if (x == 0) x = 1;
            st->x = x;
            st->a = kMultiplier;
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG: {
            const uint32_t k = static_cast<uint32_t>(*static_cast<const int32_t*>(params));
            st->x = (__vstiPowMod2P59(st->a, k) * st->x) & kMask59;
            st->a = __vstiPowMod2P59(st->a, static_cast<uint32_t>(count));
            return 0;
        }
        case ORV_RNG_METHOD_SKIP: {
            uint64_t nskip;
            std::memcpy(&nskip, params, sizeof nskip);
            st->x = (__vstiPowMod2P59(st->a, nskip) * st->x) & kMask59;
            return 0;
        }
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

// Raw 59-bit values into 64-bit elements.
ORV_EXPORT int32_t __vstiBRngMCG59(void* stream, int32_t n, uint32_t* r) {
    unsigned char* out = reinterpret_cast<unsigned char*>(r);
    generate(state<State>(stream), n,
             [out](int32_t i, uint64_t v) { std::memcpy(out + 8 * static_cast<size_t>(i), &v, 8); });
    return 0;
}

ORV_EXPORT int32_t __vstdBRngMCG59(void* stream, int32_t n, double* r, double a, double b) {
    return mcg59::fill<double>(stream, n, r, a, b);
}

// Single precision throughout.
ORV_EXPORT int32_t __vstsBRngMCG59(void* stream, int32_t n, float* r, float a, float b) {
    return mcg59::fill<float>(stream, n, r, a, b);
}

// x is a non-zero residue; a is a power of the odd multiplier, so odd.
bool orv::rng::mcg59_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    return st->x != 0 && st->x <= kMask59 && (st->a & 1) != 0 && st->a <= kMask59;
}
