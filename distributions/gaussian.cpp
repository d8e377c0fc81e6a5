// Normal numbers: the Box-Muller transform in two forms (one output per pair
// of uniforms, or both outputs of a pair with the unpaired half kept on the
// stream), inversion through the inverse error function, the multivariate
// form through a triangular multiply, and the lognormal on top.
#include <emmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <limits>

#include <orv/orv_core.h>

#include "distributions/draw.h"
#include "frame/export.h"

namespace orv::dist {
namespace {

template <typename T>
constexpr T kTwoPi = T(6.283185307179586);
template <typename T>
constexpr T kSqrt2 = T(1.4142135623730951);
// Outputs from this size on are written with streaming stores.
constexpr int64_t kStreamBytes = int64_t(4) << 20;

// Radii sqrt(-2 ln u) of m uniforms, in place, inside a KernelMode.
template <typename T>
void radii(int32_t m, T* u) {
    run_kernel(Kernels<T>::ln(), m, u);
    for (int32_t i = 0; i < m; ++i) u[i] *= T(-2);
    run_kernel(Kernels<T>::sqrt(), m, u);
}

// One output per pair: rad(u1) sin(2 pi u2), in blocks of kBlock outputs.
template <typename T>
int32_t box_muller(void* s, int32_t n, T* r, T a, T sigma) {
    if (n < 1) return 0;
    T u[2 * kBlock], rad[kBlock], ang[kBlock];
    KernelMode mode;
    int32_t status = 0;
    for (int32_t done = 0; done < n; done += kBlock) {
        const int32_t m = std::min(n - done, kBlock);
        status = draw_uniform<T>(s, 2 * m, u, T(0), T(1));
        if (status < 0) return status;
        for (int32_t i = 0; i < m; ++i) {
            rad[i] = u[2 * i];
            ang[i] = u[2 * i + 1] * kTwoPi<T>;
        }
        run_kernel(Kernels<T>::sin(), m, ang);
        radii(m, rad);
        T* out = r + done;
        for (int32_t i = 0; i < m; ++i) out[i] = (rad[i] * sigma) * ang[i] + a;
    }
    return status;
}

// The kept pair of the two-output form: its chunk type per precision, and -1
// in the first place when no half pair waits.
template <typename T>
constexpr int32_t kKeptPairChunk = std::is_same_v<T, double> ? 2 : 1;

template <typename T>
int32_t kept_pair(void* s, T** pair) {
    *pair = static_cast<T*>(__vstSearchChunk(s, kKeptPairChunk<T>));
    if (*pair != nullptr) return 0;
    auto* block = static_cast<T*>(orv_serv_allocate(2 * sizeof(T), 128));
    if (block == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    block[0] = block[1] = T(-1);
    const int32_t status = __vstAddChunk(s, kKeptPairChunk<T>, nullptr, block, int32_t(2 * sizeof(T)));
    if (status < 0) {
        orv_serv_deallocate(block);
        return status;
    }
    *pair = block;
    return 0;
}

// The last step of an output: v sigma + a when the scaling is applied as
// outputs are made, else v as it stands.
template <typename T>
struct Finish {
    T sigma, a;
    bool scaled;
    T operator()(T v) const { return scaled ? v * sigma + a : v; }
};

// out[2j] = f(rad[j] sn[j]) and out[2j + 1] = f(rad[j] cs[j]) for j < h, one
// 16-byte register of pairs a step (two double, four float), the products
// interleaved by a shuffle; with streaming stores (past the caches, out
// 16-byte aligned) when nt. The same roundings as one element at a time.
typedef double Pd __attribute__((vector_size(16)));
typedef float Ps __attribute__((vector_size(16)));
typedef int64_t Mq __attribute__((vector_size(16)));
typedef int32_t Md __attribute__((vector_size(16)));
template <typename T>
inline void interleave(int32_t h, const T* rad, const T* sn, const T* cs, T* out, Finish<T> f, bool nt) {
    constexpr bool kD = sizeof(T) == 8;
    using V = std::conditional_t<kD, Pd, Ps>;
    using M = std::conditional_t<kD, Mq, Md>;
    constexpr int W = 16 / sizeof(T);
    // Lanes of p and q alternately: the first half (kLo) and the second (kHi).
    M kLo, kHi;
    if constexpr (kD)
        kLo = Mq{0, 2}, kHi = Mq{1, 3};
    else
        kLo = Md{0, 4, 1, 5}, kHi = Md{2, 6, 3, 7};
    const auto load = [](const T* x) { V v; std::memcpy(&v, x, sizeof v); return v; };
    const auto store = [nt](T* x, V v) {
        if (nt)
            _mm_stream_si128(reinterpret_cast<__m128i*>(x), (__m128i)v);
        else
            std::memcpy(x, &v, sizeof v);
    };
    const V sigma = V{} + f.sigma, a = V{} + f.a;
    int32_t j = 0;
    for (; j + W <= h; j += W) {
        const V r = load(rad + j);
        V p = r * load(sn + j), q = r * load(cs + j);
        if (f.scaled) p = p * sigma + a, q = q * sigma + a;
        store(out + 2 * j, __builtin_shuffle(p, q, kLo));
        store(out + 2 * j + W, __builtin_shuffle(p, q, kHi));
    }
    for (; j < h; ++j) out[2 * j] = f(rad[j] * sn[j]), out[2 * j + 1] = f(rad[j] * cs[j]);
}

// m (even) uniforms into m/2 pairs of outputs at out: sine first, cosine
// second, each through finish.
template <typename T>
int32_t pair_round(void* s, int32_t m, T* out, Finish<T> finish, bool nt) {
    alignas(16) T u[kBlock], rad[kBlock / 2], ang[kBlock / 2], sn[kBlock / 2], cs[kBlock / 2];
    const int32_t status = draw_uniform<T>(s, m, u, T(0), T(1));
    if (status < 0) return status;
    const int32_t h = m / 2;
    for (int32_t j = 0; j < h; ++j) {
        rad[j] = u[2 * j];
        ang[j] = u[2 * j + 1] * kTwoPi<T>;
    }
    run_kernel(Kernels<T>::sincos(), h, ang, sn, cs);
    radii(h, rad);
    interleave(h, rad, sn, cs, out, finish, nt);
    return status;
}

// Both outputs of every pair. A pair whose second output is not asked for is
// kept on the stream, as its two uniforms, and pays the first output of the
// next call; so the sequence does not depend on how a request is cut.
// r * sigma + a is a last pass over all n, so that a failed draw leaves the
// raw values; on a generator whose fills cannot fail each output gets it as
// it is made, with the same result and one pass over memory less.
template <typename T>
int32_t box_muller2(void* s, int32_t n, T* r, T a, T sigma) {
    T* pair = nullptr;
    int32_t status = kept_pair<T>(s, &pair);
    if (status < 0 || n < 1) return status;
    const bool at_once = !draws_may_fail<T>(s);
    const Finish<T> finish{sigma, a, at_once};
    KernelMode mode;
    int32_t k = 0;
    if (pair[0] != T(-1)) {
        T rad = pair[0], ang = pair[1] * kTwoPi<T>;
        pair[0] = pair[1] = T(-1);  // delivered, also if a later draw fails
        run_kernel(Kernels<T>::cos(), 1, &ang);
        radii(1, &rad);
        r[k++] = finish(rad * ang);
    }
    const int32_t rest = n - k;
    // Outputs that are final and far beyond the caches bypass them.
    const bool nt = at_once && int64_t(n) * int64_t(sizeof(T)) >= kStreamBytes &&
                    reinterpret_cast<uintptr_t>(r + k) % 16 == 0;
    for (int32_t round = 0; round < rest / kBlock; ++round, k += kBlock)
        if ((status = pair_round<T>(s, kBlock, r + k, finish, nt)) < 0) break;
    if (nt) _mm_sfence();
    if (status < 0) return status;
    if (const int32_t even = (rest % kBlock) & ~1; even > 0) {
        if ((status = pair_round<T>(s, even, r + k, finish, false)) < 0) return status;
        k += even;
    }
    if (rest % 2 == 1) {
        T u[2];
        if ((status = draw_uniform<T>(s, 2, u, T(0), T(1))) < 0) return status;
        pair[0] = u[0];
        pair[1] = u[1];
        T rad = u[0], ang = u[1] * kTwoPi<T>;
        run_kernel(Kernels<T>::sin(), 1, &ang);
        radii(1, &rad);
        r[k] = finish(rad * ang);
    }
    if (!at_once)
        for (int32_t i = 0; i < n; ++i) r[i] = r[i] * sigma + a;
    return status;
}

// Inversion: sqrt(2) erfinv(v) of uniforms v on [-1, 1), drawn in one call,
// then the kernel and the scaling block by block.
template <typename T>
int32_t icdf(void* s, int32_t n, T* r, T a, T sigma) {
    if (n < 1) return 0;
    const int32_t status = draw_uniform<T>(s, n, r, T(-1), T(1));
    if (status < 0) return status;
    const T scale = sigma * kSqrt2<T>;
    KernelBracket own(replace_erfinv_pole<T>);
    transform_blocks(
        n, r, [](int32_t m, T* x) { run_kernel(Kernels<T>::erfinv(), m, x); },
        Affine<T>{scale, a});
    return status;
}

template <typename T>
int32_t gaussian(int32_t method, void* s, int32_t n, T* r, T a, T sigma) {
    KernelBracket bracket(replace_gaussian<T>);
    switch (method & ~kAccurate) {
        case ORV_RNG_METHOD_GAUSSIAN_BOXMULLER: return box_muller<T>(s, n, r, a, sigma);
        case ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2: return box_muller2<T>(s, n, r, a, sigma);
        case ORV_RNG_METHOD_GAUSSIAN_ICDF: return icdf<T>(s, n, r, a, sigma);
        default: return ORV_RNG_ERROR_BAD_METHOD;
    }
}

// exp of a normal: the pair method for method 0, inversion otherwise.
template <typename T>
int32_t lognormal(int32_t method, void* s, int32_t n, T* r, T a, T sigma, T b, T beta) {
    const int32_t normal = method == 0 ? ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2 : ORV_RNG_METHOD_GAUSSIAN_ICDF;
    const int32_t status = gaussian<T>(normal, s, n, r, a, sigma);
    if (status < 0 || n < 1) return status;
    const bool clamp = (method & kAccurate) != 0;
    KernelBracket bracket(keep_result);
    transform_blocks(
        n, r, [](int32_t m, T* x) { run_kernel(Kernels<T>::exp(), m, x); },
        Affine<T>{beta, b, clamp, b});
    return status;
}

// Triangular multiplies of orv_core, by precision.
template <typename T>
struct Blas;
template <>
struct Blas<double> {
    static constexpr auto small = orv_blas_xdtrmm_4vtm;
    static constexpr auto general = orv_blas4vtm_dtrmm;
    static constexpr auto packed = orv_blas4vtm_dptrmm;
};
template <>
struct Blas<float> {
    static constexpr auto small = orv_blas_xstrmm_4vtm;
    static constexpr auto general = orv_blas4vtm_strmm;
    static constexpr auto packed = orv_blas4vtm_sptrmm;
};

// n vectors a + L z, z standard normal, L the lower factor held in t: full
// (row by row), packed (the lower triangle column by column) or diagonal.
template <typename T>
int32_t gaussian_mv(int32_t method, void* s, int32_t n, T* r, int32_t dimen, int32_t mstorage, const T* a,
                    const T* t) {
    if (a == nullptr || t == nullptr) return ORV_RNG_ERROR_NULL_PTR;
    if (dimen == 1) return gaussian<T>(method, s, n, r, a[0], t[0]);
    if (dimen < 1 || (n > 0 && dimen > std::numeric_limits<int32_t>::max() / n))
        return ORV_RNG_ERROR_BAD_ARGUMENT;
    const int32_t status = gaussian<T>(method, s, std::max(n, 0) * dimen, r, T(0), T(1));
    if (status < 0 || n < 1) return status;
    const T one = 1;
    switch (mstorage) {
        case ORV_RNG_MATRIX_STORAGE_FULL:
            (dimen < 11 ? Blas<T>::small : Blas<T>::general)("L", "U", "T", "N", &dimen, &n, &one, t, &dimen, r,
                                                               &dimen);
            break;
        case ORV_RNG_MATRIX_STORAGE_PACKED:
            Blas<T>::packed("L", "L", "N", "N", &dimen, &n, &one, t, r, &dimen);
            break;
        case ORV_RNG_MATRIX_STORAGE_DIAGONAL:
            for (int64_t i = 0; i < int64_t(n) * dimen; i += dimen)
                for (int32_t j = 0; j < dimen; ++j) r[i + j] = a[j] + t[j] * r[i + j];
            return status;
        default: return status;
    }
    for (int64_t i = 0; i < int64_t(n) * dimen; i += dimen)
        for (int32_t j = 0; j < dimen; ++j) r[i + j] += a[j];
    return status;
}

}  // namespace
}  // namespace orv::dist

using namespace orv::dist;

ORV_EXPORT int32_t _vstsRngGaussian(int32_t method, void* s, int32_t n, float* r, float a, float sigma) {
    return gaussian<float>(method, s, n, r, a, sigma);
}
ORV_EXPORT int32_t _vstdRngGaussian(int32_t method, void* s, int32_t n, double* r, double a, double sigma) {
    return gaussian<double>(method, s, n, r, a, sigma);
}
ORV_EXPORT int32_t _vstsRngLognormal(int32_t method, void* s, int32_t n, float* r, float a, float sigma, float b,
                                     float beta) {
    return lognormal<float>(method, s, n, r, a, sigma, b, beta);
}
ORV_EXPORT int32_t _vstdRngLognormal(int32_t method, void* s, int32_t n, double* r, double a, double sigma,
                                     double b, double beta) {
    return lognormal<double>(method, s, n, r, a, sigma, b, beta);
}
ORV_EXPORT int32_t _vstsRngGaussianMV(int32_t method, void* s, int32_t n, float* r, int32_t dimen,
                                      int32_t mstorage, const float* a, const float* t) {
    return gaussian_mv<float>(method, s, n, r, dimen, mstorage, a, t);
}
ORV_EXPORT int32_t _vstdRngGaussianMV(int32_t method, void* s, int32_t n, double* r, int32_t dimen,
                                      int32_t mstorage, const double* a, const double* t) {
    return gaussian_mv<double>(method, s, n, r, dimen, mstorage, a, t);
}
