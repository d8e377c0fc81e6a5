// Abstract streams: numbers handed out from a caller's buffer of n values,
// which the caller's function refills (all n values) each time it runs out.
// The integer kind hands out words; the double and single kinds hold numbers
// on the caller's interval [c, d) and map them onto the fill's [a, b).
// A stream record carries pointers, so its image is usable only in the
// process that made it: a check word keyed by a per-process secret refuses
// a stream loaded elsewhere (-1120) instead of calling a stale pointer.
#include "rng/abstract.h"

#include <x86intrin.h>

#include <cstring>

#include "rng/brng_row.h"
#include "rng/stream.h"

namespace {

using namespace orv::rng;

template <typename T, typename Refill>
struct State {
    using Value = T;
    T* buffer;
    Refill refill;
    int32_t n;
    int32_t pos;  // next unread value; n when the buffer is used up
    uint64_t check;
};
using IState = State<uint32_t, OrvIAbstractRefill>;
struct DState : State<double, OrvDAbstractRefill> {
    double c, d;  // interval of the buffer's numbers
};
struct SState : State<float, OrvSAbstractRefill> {
    float c, d;
};
static_assert(16 + sizeof(IState) <= 48 && 16 + sizeof(DState) <= 64 && 16 + sizeof(SState) <= 56);

uint64_t mix(uint64_t x) {  // splitmix64's finaliser
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

uint64_t process_secret() {
    static const uint64_t secret = mix(__rdtsc() ^ reinterpret_cast<uintptr_t>(&secret));
    return secret;
}

template <typename S>
uint64_t check_of(const S& st) {
    uint64_t h = process_secret();
    h = mix(h ^ reinterpret_cast<uintptr_t>(st.buffer));
    h = mix(h ^ reinterpret_cast<uintptr_t>(st.refill));
    return mix(h ^ static_cast<uint32_t>(st.n));
}

template <typename S, typename T, typename Refill>
int32_t make(void** out, uint32_t id, int32_t n, T* buffer, Refill refill, S** made) {
    if (out == nullptr || buffer == nullptr || refill == nullptr) return ORV_RNG_ERROR_NULL_PTR;
    if (n < 1) return ORV_RNG_ERROR_BAD_ARGUMENT;
    BrngRow row;
    __vstGetBrngProperties(static_cast<int32_t>(id), &row);
    void* s = allocate_block(static_cast<size_t>(row.streamBytes));
    if (s == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    std::memset(s, 0, static_cast<size_t>(row.streamBytes));
    header(s)->brngId = id;
    header(s)->mark = 1;
    header(s)->chunks = nullptr;
    S* st = state<S>(s);
    st->buffer = buffer;
    st->refill = refill;
    st->n = n;
    st->pos = 0;
    st->check = check_of(*st);
    *made = st;
    *out = s;
    return 0;
}

// Copies values out of the buffer through map, refilling as needed; a
// refill's non-zero status ends the fill with what it wrote so far.
template <typename S, typename Out>
int32_t drain(void* stream, int32_t n, Out&& out) {
    S* st = state<S>(stream);
    if (st->check != check_of(*st)) return ORV_RNG_ERROR_ABSTRACT_FOREIGN;
    for (int32_t i = 0; i < n;) {
        if (st->pos >= st->n) {
            const int32_t status = st->refill(stream, st->n, st->buffer);
            if (status != 0) return status;
            st->pos = 0;
        }
        const int32_t k = n - i < st->n - st->pos ? n - i : st->n - st->pos;
        for (int32_t j = 0; j < k; ++j) out(i + j, st->buffer[st->pos + j]);
        st->pos += k;
        i += k;
    }
    return 0;
}

}  // namespace

namespace orv::rng::abstract {

int32_t init(int32_t method, void*, int32_t, const void*) {
    switch (method) {
        case ORV_RNG_METHOD_SEED: return ORV_RNG_ERROR_INVALID_BRNG;  // made only by their own calls
        case ORV_RNG_METHOD_LEAPFROG: return ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP: return ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED;
        case ORV_RNG_METHOD_SKIP_EX: return ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED;
        default: return ORV_RNG_ERROR_BAD_METHOD;
    }
}

int32_t word_fill(void* stream, int32_t n, uint32_t* r) {
    return drain<IState>(stream, n, [r](int32_t i, uint32_t w) { r[i] = w; });
}

int32_t double_fill(void* stream, int32_t n, double* r, double a, double b) {
    const DState* st = state<DState>(stream);
    const double c = st->c, scale = (b - a) / (st->d - st->c);
    return drain<DState>(stream, n, [r, a, c, scale](int32_t i, double u) { r[i] = (u - c) * scale + a; });
}

int32_t float_fill(void* stream, int32_t n, float* r, float a, float b) {
    const SState* st = state<SState>(stream);
    const float c = st->c, scale = (b - a) / (st->d - st->c);
    return drain<SState>(stream, n, [r, a, c, scale](int32_t i, float u) { r[i] = (u - c) * scale + a; });
}

}  // namespace orv::rng::abstract

ORV_EXPORT int32_t __vstiNewAbstractStream(void** out, int32_t n, uint32_t* buffer, OrvIAbstractRefill refill) {
    IState* st = nullptr;
    return make(out, ORV_BRNG_IABSTRACT, n, buffer, refill, &st);
}

ORV_EXPORT int32_t __vstdNewAbstractStream(void** out, int32_t n, double* buffer, double c, double d,
                                               OrvDAbstractRefill refill) {
    if (!(c < d) || d - c > 1.7e308) return ORV_RNG_ERROR_BAD_ARGUMENT;
    DState* st = nullptr;
    const int32_t status = make(out, ORV_BRNG_DABSTRACT, n, buffer, refill, &st);
    if (status == 0) st->c = c, st->d = d;
    return status;
}

ORV_EXPORT int32_t __vstsNewAbstractStream(void** out, int32_t n, float* buffer, float c, float d,
                                               OrvSAbstractRefill refill) {
    if (!(c < d) || !(d - c < 3.4e38f)) return ORV_RNG_ERROR_BAD_ARGUMENT;
    SState* st = nullptr;
    const int32_t status = make(out, ORV_BRNG_SABSTRACT, n, buffer, refill, &st);
    if (status == 0) st->c = c, st->d = d;
    return status;
}
