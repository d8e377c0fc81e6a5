// R250: Kirkpatrick and Stoll's shift-register generator,
// x(t) = x(t-250) XOR x(t-147), seeded by a linear congruential sequence
// with a forced bit diagonal so that the 32 bit columns are independent.
#include <cstring>

#include "rng/brng_row.h"
#include "rng/state_check.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

constexpr int kLong = 250, kShort = 147, kGap = kLong - kShort;  // j = i + 103

struct State {
    uint32_t w[kLong];
    uint32_t i;  // position of x(t-250)
    uint32_t j;  // position of x(t-147)
};
static_assert(16 + sizeof(State) <= 1024);

// Raw words are produced into slots of the output array (a float slot, or
// the first four bytes of a double slot), which serve as the ring for long
// batches; the interval forms convert them in a final pass.
template <typename Slot>
struct Ring {
    Slot* r;
    uint32_t get(int32_t t) const {
        uint32_t v;
        std::memcpy(&v, &r[t], 4);
        return v;
    }
    void put(int32_t t, uint32_t v) const { std::memcpy(&r[t], &v, 4); }
};

template <typename Slot>
void generate_words(State* st, int32_t n, Ring<Slot> out) {
    if (n < kLong) {
        uint32_t i = st->i % kLong, j = st->j % kLong;
        for (int32_t t = 0; t < n; ++t) {
            const uint32_t v = st->w[i] ^ st->w[j];
            st->w[i] = v;
            out.put(t, v);
            if (++i == kLong) i = 0;
            if (++j == kLong) j = 0;
        }
        st->i = i;
        st->j = j;
        return;
    }
    // Unroll the ring into order: h[k] = x(t-250+k) for k = 0..249.
    uint32_t h[kLong];
    const uint32_t i0 = st->i % kLong;
    for (int k = 0; k < kLong; ++k) h[k] = st->w[(i0 + k) % kLong];
    int32_t t = 0;
    for (; t < kShort; ++t) out.put(t, h[t] ^ h[t + kGap]);
    for (; t < kLong; ++t) out.put(t, h[t] ^ out.get(t - kShort));
    for (; t < n; ++t) out.put(t, out.get(t - kLong) ^ out.get(t - kShort));
    for (int k = 0; k < kLong; ++k) st->w[k] = out.get(n - kLong + k);
    st->i = 0;
    st->j = kGap;
}

}  // namespace

ORV_EXPORT int32_t __vstBRngR250InitStream(int32_t method, void* stream, int32_t count,
                                              const void* params) {
    State* st = state<State>(stream);
    switch (method) {
        case ORV_RNG_METHOD_SEED: {
            const uint32_t* seed = static_cast<const uint32_t*>(params);
            if (count >= kLong) {
                std::memcpy(st->w, seed, sizeof st->w);
            } else {
                uint32_t s = count >= 1 ? seed[0] : 1;
                if (s == 0) s = 1;
                for (int k = 0; k < kLong; ++k) {
                    s *= 69069u;
                    st->w[k] = s;
                }
                for (int k = 0; k < 32; ++k) {
                    const uint32_t bit = 0x80000000u >> k;
                    uint32_t& w = st->w[3 + 7 * k];
                    w = (w & (bit - 1)) | bit;
                }
            }
            st->i = 0;
            st->j = kGap;
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

ORV_EXPORT int32_t __vstiBRngR250(void* stream, int32_t n, uint32_t* r) {
    generate_words(state<State>(stream), n, Ring<uint32_t>{r});
    return 0;
}

ORV_EXPORT int32_t __vstdBRngR250(void* stream, int32_t n, double* r, double a, double b) {
    generate_words(state<State>(stream), n, Ring<double>{r});
    const double scale = (b - a) * 0x1p-32;
    const Ring<double> ring{r};
    for (int32_t t = 0; t < n; ++t) r[t] = static_cast<double>(ring.get(t)) * scale + a;
    return 0;
}

ORV_EXPORT int32_t __vstsBRngR250(void* stream, int32_t n, float* r, float a, float b) {
    generate_words(state<State>(stream), n, Ring<float>{r});
    const double da = a;
    const double scale = (static_cast<double>(b) - da) * 0x1p-32;
    const Ring<float> ring{r};
    for (int32_t t = 0; t < n; ++t)
        r[t] = static_cast<float>(static_cast<double>(ring.get(t)) * scale + da);
    return 0;
}

// The two ring positions stay 103 apart inside the ring. An all-zero ring is
// possible: seeding with 250 zero words gives it.
bool orv::rng::r250_state_possible(const void* stream) {
    const State* st = state<State>(const_cast<void*>(stream));
    return st->i < kLong && st->j == (st->i + kGap) % kLong;
}
