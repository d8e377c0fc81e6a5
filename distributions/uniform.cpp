// Uniform reals and integers, raw and uniform bit words, Bernoulli: the
// distributions that sit right on a generator's fills.
#include <cstring>

#include "distributions/draw.h"
#include "frame/export.h"

namespace orv::dist {
namespace {

template <typename T>
int32_t uniform(int32_t method, void* s, int32_t n, T* r, T a, T b) {
    const int32_t status = draw_uniform<T>(s, n, r, a, b);
    if (status >= 0 && (method & kAccurate) && n > 0)
        for (int32_t i = 0; i < n; ++i)
            if (!(r[i] >= a && r[i] <= b)) r[i] = std::min(std::max(r[i], a), b);
    return status;
}

const BrngRow& row_of(void* s) {
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(__vstGetStreamStateBrng(s), &row, &sub);
    return table[row];
}

// Which worker makes whole uniform words: MCG59 keeps the top 32 of its 59
// bits; generators whose outputs are 32 uniform bits pass them on; others
// (fewer bits, or not a power of two modulus) have none. A stream named in
// the first numbering is matched to its built-in row by its word fill;
// registered rows have none (their bit quality is not known).
enum class BitsWorker { none, narrow, words };

BitsWorker bits_worker(void* s) {
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(__vstGetStreamStateBrng(s), &row, &sub);
    if (table != __RegBrngsNew) {
        const OrvWordFillFn fill = table[row].wordFill;
        row = ORV_BRNG_BUILT_IN;
        for (uint32_t k = 0; k < ORV_BRNG_BUILT_IN; ++k)
            if (__RegBrngsNew[k].wordFill == fill) row = k;
    }
    switch (row) {
        case 3: return BitsWorker::narrow;
        case 7: case 8: case 12: case 13: case 14: case 15: return BitsWorker::words;
        default: return BitsWorker::none;
    }
}

constexpr int32_t kBitsBlock = 2048;  // MCG59 values per round

// MCG59 values in rounds of 2048, each giving `per_round` outputs; after the
// whole rounds one call takes the remainder, also when it is empty.
template <typename Out, typename Pack>
int32_t narrow_bits(void* s, int32_t n, Out* r, int32_t per_round, Pack pack) {
    const OrvWordFillFn fill = row_of(s).wordFill;
    uint64_t values[kBitsBlock];
    const int32_t count = std::max(n, 0);
    const int32_t rounds = count / per_round;
    const int32_t values_per_out = kBitsBlock / per_round;
    for (int32_t k = 0; k < rounds; ++k, r += per_round) {
        const int32_t status = fill(s, kBitsBlock, reinterpret_cast<uint32_t*>(values));
        if (status < 0) return status;
        for (int32_t i = 0; i < per_round; ++i) r[i] = pack(values + i * values_per_out);
    }
    const int32_t rest = count - rounds * per_round;
    const int32_t status = fill(s, rest * values_per_out, reinterpret_cast<uint32_t*>(values));
    if (status < 0) return status;
    for (int32_t i = 0; i < rest; ++i) r[i] = pack(values + i * values_per_out);
    return status;
}

uint32_t top32(uint64_t v) { return static_cast<uint32_t>(v >> 27); }

}  // namespace
}  // namespace orv::dist

using namespace orv::dist;

ORV_EXPORT int32_t _vstsRngUniform(int32_t method, void* s, int32_t n, float* r, float a, float b) {
    return uniform<float>(method, s, n, r, a, b);
}

ORV_EXPORT int32_t _vstdRngUniform(int32_t method, void* s, int32_t n, double* r, double a, double b) {
    return uniform<double>(method, s, n, r, a, b);
}

// One double on [a, b) per integer, rounded towards minus infinity.
ORV_EXPORT int32_t _vstiRngUniform(int32_t method, void* s, int32_t n, int32_t* r, int32_t a, int32_t b) {
    if (n < 1) return 0;
    double v[kBlock];
    int32_t status = 0;
    for (int32_t done = 0; done < n; done += kBlock) {
        const int32_t m = std::min(n - done, kBlock);
        status = _vstdRngUniform(0, s, m, v, a, b);
        if (status < 0) return status;
        for (int32_t i = 0; i < m; ++i) {
            // Saturated first: an abstract stream's values need not lie in [a, b].
            double x = std::min(std::max(v[i], -2147483648.0), 2147483647.0);
            if (x != x) x = a;
            if (x < static_cast<double>(static_cast<int32_t>(x))) x -= 1.0;
            r[done + i] = static_cast<int32_t>(std::max(x, -2147483648.0));
        }
    }
    return status;
}

ORV_EXPORT int32_t _vstiRngUniformBits(int32_t method, void* s, int32_t n, uint32_t* r) {
    return row_of(s).wordFill(s, n, r);
}

ORV_EXPORT int32_t _vstiRngUniformBits32(int32_t method, void* s, int32_t n, uint32_t* r) {
    switch (bits_worker(s)) {
        case BitsWorker::narrow:
            return narrow_bits(s, n, r, kBitsBlock, [](const uint64_t* v) { return top32(v[0]); });
        case BitsWorker::words: return row_of(s).wordFill(s, n, r);
        default: return ORV_RNG_ERROR_NO_NUMBITS;
    }
}

// Two consecutive 32-bit outputs per word, the earlier in the low half.
ORV_EXPORT int32_t _vstiRngUniformBits64(int32_t method, void* s, int32_t n, uint64_t* r) {
    switch (bits_worker(s)) {
        case BitsWorker::narrow:
            return narrow_bits(s, n, r, kBitsBlock / 2, [](const uint64_t* v) {
                return static_cast<uint64_t>(top32(v[0])) | static_cast<uint64_t>(top32(v[1])) << 32;
            });
        case BitsWorker::words: {
            // 2n words, in pieces so that the count stays a positive int32.
            const OrvWordFillFn fill = row_of(s).wordFill;
            auto* w = reinterpret_cast<uint32_t*>(r);
            for (int64_t left = 2 * static_cast<int64_t>(n); left > 0;) {
                const auto m = static_cast<int32_t>(std::min<int64_t>(left, int64_t{1} << 30));
                const int32_t status = fill(s, m, w);
                if (status < 0) return status;
                w += m;
                left -= m;
            }
            return 0;
        }
        default: return ORV_RNG_ERROR_NO_NUMBITS;
    }
}

// The single uniforms are drawn into r itself; positive floats order as
// their bit patterns, so comparing patterns as integers is u < p.
ORV_EXPORT int32_t _vstiRngBernoulli(int32_t method, void* s, int32_t n, int32_t* r, double p) {
    const int32_t status = _vstsRngUniform(0, s, n, reinterpret_cast<float*>(r), 0.0f, 1.0f);
    if (status < 0 || n < 1) return status;
    const float pf = static_cast<float>(p);
    int32_t pbits = 0;
    std::memcpy(&pbits, &pf, sizeof pbits);
    for (int32_t i = 0; i < n; ++i) r[i] = r[i] < pbits ? 1 : 0;
    return status;
}
