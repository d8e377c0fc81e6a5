// MCG59: the multiplicative congruential generator x = a x mod 2^59 with
// a = 13^13.
#include <cstring>

#include "rng/brng_row.h"
#include "rng/congruential/modular.h"
#include "rng/state_check.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

constexpr uint64_t kMultiplier = 0x113769B23C5FDull;
constexpr float kTwoM59 = 0x1p-59f;
constexpr double kTwoM59d = 0x1p-59;

struct State {
    uint64_t x;  // the next output
    uint64_t a;  // the current multiplier
};
static_assert(16 + sizeof(State) <= 32);

// Sixteen values in flight, each advanced by a^16 per block; then singly.
template <typename Out>
void generate(State* st, int32_t n, Out&& out) {
    uint64_t x = st->x;
    const uint64_t a = st->a;
    int32_t i = 0;
    if (n >= 16) {
        const uint64_t a16 = __vstiPowMod2P59(a, 16);
        uint64_t v[16];
        v[0] = x;
        for (int k = 1; k < 16; ++k) v[k] = (a * v[k - 1]) & kMask59;
        const int32_t end = n & ~15;
        for (; i < end; i += 16)
            for (int k = 0; k < 16; ++k) {
                out(i + k, v[k]);
                v[k] = (a16 * v[k]) & kMask59;
            }
        x = v[0];
    }
    for (; i < n; ++i) {
        out(i, x);
        x = (a * x) & kMask59;
    }
    st->x = x;
}

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
    const double scale = (b - a) * kTwoM59d;
    generate(state<State>(stream), n,
             [r, scale, a](int32_t i, uint64_t v) {
                 // Values are below 2^59: the signed conversion is exact and one instruction.
                 r[i] = static_cast<double>(static_cast<int64_t>(v)) * scale + a;
             });
    return 0;
}

// Single precision throughout.
ORV_EXPORT int32_t __vstsBRngMCG59(void* stream, int32_t n, float* r, float a, float b) {
    const float scale = (b - a) * kTwoM59;
    generate(state<State>(stream), n,
             [r, scale, a](int32_t i, uint64_t v) {
                 r[i] = static_cast<float>(static_cast<int64_t>(v)) * scale + a;
             });
    return 0;
}

// x is a non-zero residue; a is a power of the odd multiplier, so odd.
bool orv::rng::mcg59_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    return st->x != 0 && st->x <= kMask59 && (st->a & 1) != 0 && st->a <= kMask59;
}
