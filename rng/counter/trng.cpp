// TRNG: numbers from the processor's RDRAND. Each 64-bit value gets up to
// `retries` + 1 attempts; one that arrives only at the last attempt still
// counts as a failure (-1131), and the fill keeps what it wrote before.
#include <immintrin.h>

#include <cstring>

#include "frame/fault_injection.h"
#include "rng/brng_row.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

constexpr uint32_t kDefaultRetries = 10;

struct State {
    uint32_t zero;
    uint32_t retries;
};
static_assert(16 + sizeof(State) <= 24);

bool have_rdrand() {
    static const bool rdrand = __vstCPUisRDRAND() != 0;
    return rdrand;
}

__attribute__((target("rdrnd"))) bool rdrand_attempt(unsigned long long* v) {
    if (orv::fault::hit(orv::fault::kRdrandNoData)) return false;
    return _rdrand64_step(v) != 0;
}

bool next64(const State* st, uint64_t* v) {
    const uint32_t retries = st->retries;
    for (uint32_t attempt = 0;; ++attempt) {
        unsigned long long x;
        if (rdrand_attempt(&x)) {
            *v = x;
            return attempt < retries;
        }
        if (attempt == retries) return false;
    }
}

// Two 32-bit outputs from each 64-bit value, low half first.
template <typename Out>
int32_t generate32(void* stream, int32_t n, Out&& out) {
    if (!have_rdrand()) return ORV_RNG_ERROR_NO_RDRAND;
    const State* st = state<State>(stream);
    for (int32_t i = 0; i < n; i += 2) {
        uint64_t v;
        if (!next64(st, &v)) return ORV_RNG_ERROR_RDRAND_EXHAUSTED;
        out(i, static_cast<uint32_t>(v));
        if (i + 1 < n) out(i + 1, static_cast<uint32_t>(v >> 32));
    }
    return 0;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngTRNGInitStream(int32_t method, void* stream, int32_t count,
                                              const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            if (!have_rdrand()) return ORV_RNG_ERROR_NO_RDRAND;
            st->zero = 0;
            st->retries = kDefaultRetries;
            if (count > 1) {
                const uint32_t r = static_cast<const uint32_t*>(params)[1];
                if (r != 0) st->retries = r;
            }
            return 0;
        }
        case ORV_RNG_METHOD_LEAPFROG:
            return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP:
            return ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP_EX:
            return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default:
            return ORV_RNG_ERROR_BAD_METHOD;
    }
}

ORV_EXPORT int32_t __vstiBRngTRNG(void* stream, int32_t n, uint32_t* r) {
    return generate32(stream, n, [r](int32_t i, uint32_t w) { r[i] = w; });
}

ORV_EXPORT int32_t __vstsBRngTRNG(void* stream, int32_t n, float* r, float a, float b) {
    const float scale = (b - a) * 0x1p-32f;
    return generate32(stream, n, [r, scale, a](int32_t i, uint32_t w) { r[i] = static_cast<float>(w) * scale + a; });
}

ORV_EXPORT int32_t __vstdBRngTRNG(void* stream, int32_t n, double* r, double a, double b) {
    if (!have_rdrand()) return ORV_RNG_ERROR_NO_RDRAND;
    const State* st = state<State>(stream);
    for (int32_t i = 0; i < n; ++i) {
        uint64_t v;
        if (!next64(st, &v)) return ORV_RNG_ERROR_RDRAND_EXHAUSTED;
        r[i] = (static_cast<double>(v) * (b - a)) * 0x1p-64 + a;
    }
    return 0;
}
