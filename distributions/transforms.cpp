// Continuous distributions that are one formula on uniforms, by inversion of
// their distribution functions: each draws into r and transforms in place
// with the vector kernels, so one uniform gives one output (Laplace: two).
#include "distributions/draw.h"
#include "frame/export.h"

namespace orv::dist {
namespace {

// The shape every one-pass transform shares: bracket with its handler,
// uniforms on [0, 1) into r, then the kernel steps and the scaling block by
// block, while a block is in cache. A generator whose fills cannot fail
// fills each block right before its steps (the same values: cuts do not
// change a stream's sequence), one pass over memory less; on the others n
// uniforms are drawn in one call first, so that a failed draw leaves r as
// the fill left it.
template <typename T, typename Kernel>
int32_t one_pass(VtmErrorCallBack handler, void* s, int32_t n, T* r, Kernel kernels, Affine<T> scale) {
    if (n < 1) return 0;
    KernelBracket bracket(handler);
    int32_t status = 0;
    if (draws_may_fail<T>(s)) {
        if ((status = draw_uniform<T>(s, n, r, T(0), T(1))) < 0) return status;
        transform_blocks(n, r, kernels, scale);
    } else {
        const auto draw_then = [&](int32_t m, T* x) {
            if (const int32_t st = draw_uniform<T>(s, m, x, T(0), T(1)); st != 0) status = st;
            kernels(m, x);
        };
        transform_blocks(n, r, draw_then, scale);
    }
    return status;
}

template <typename T>
int32_t exponential(int32_t method, void* s, int32_t n, T* r, T a, T beta) {
    const bool clamp = (method & kAccurate) != 0;
    return one_pass<T>(
        replace_every_error<T>, s, n, r, [](int32_t m, T* x) { run_kernel(Kernels<T>::ln(), m, x); },
        Affine<T>{-beta, a, clamp, a});  // a - ln(u) beta
}

template <typename T>
int32_t rayleigh(int32_t method, void* s, int32_t n, T* r, T a, T beta) {
    const bool clamp = (method & kAccurate) != 0;
    return one_pass<T>(
        replace_pole<T>, s, n, r,
        [](int32_t m, T* x) {
            run_kernel(Kernels<T>::ln(), m, x);
            for (int32_t i = 0; i < m; ++i) x[i] = -x[i];
            run_kernel(Kernels<T>::sqrt(), m, x);
        },
        Affine<T>{beta, a, clamp, a});
}

// ln of a standard exponential variate, 0 - ln(u) * 1 as the exponential
// forms it; its bracket would nest in this one with the same handler.
template <typename T>
int32_t gumbel(int32_t, void* s, int32_t n, T* r, T a, T beta) {
    return one_pass<T>(
        replace_every_error<T>, s, n, r,
        [](int32_t m, T* x) {
            run_kernel(Kernels<T>::ln(), m, x);
            for (int32_t i = 0; i < m; ++i) x[i] = T(0) - x[i] * T(1);
            run_kernel(Kernels<T>::ln(), m, x);
        },
        Affine<T>{beta, a});
}

// Rounds of kBlock outputs from 2 kBlock uniforms: the even ones give the
// magnitude, the odd ones the side of a.
template <typename T>
int32_t laplace(int32_t, void* s, int32_t n, T* r, T a, T beta) {
    if (n < 1) return 0;
    KernelBracket bracket(replace_every_error<T>);
    KernelMode mode;
    T u[2 * kBlock];
    int32_t status = 0;
    for (int32_t done = 0; done < n; done += kBlock) {
        const int32_t m = std::min(n - done, kBlock);
        status = draw_uniform<T>(s, 2 * m, u, T(0), T(1));
        if (status < 0) return status;
        T* out = r + done;
        for (int32_t i = 0; i < m; ++i) out[i] = u[2 * i];
        run_kernel(Kernels<T>::ln(), m, out);
        for (int32_t i = 0; i < m; ++i) out[i] = out[i] * (u[2 * i + 1] > T(0.5) ? beta : -beta) + a;
    }
    return status;
}

// tan of uniforms on (-pi/2, pi/2), in blocks; no bracket or handler of its
// own around the call (tan of a finite value reports nothing).
template <typename T>
int32_t cauchy(int32_t, void* s, int32_t n, T* r, T a, T beta) {
    if (n < 1) return 0;
    const T half_pi = T(1.5707963267948966);
    const int32_t status = draw_uniform<T>(s, n, r, -half_pi, half_pi);
    if (status < 0) return status;
    transform_blocks(
        n, r, [](int32_t m, T* x) { run_kernel(Kernels<T>::tan(), m, x); },
        Affine<T>{beta, a});
    return status;
}

// (-ln u)^(1/alpha), through the power kernel with one exponent.
template <typename T>
int32_t weibull(int32_t method, void* s, int32_t n, T* r, T alpha, T a, T beta) {
    const bool clamp = (method & kAccurate) != 0;
    const T exponent = T(1) / alpha;
    return one_pass<T>(
        replace_pole<T>, s, n, r,
        [=](int32_t m, T* x) {
            run_kernel(Kernels<T>::ln(), m, x);
            for (int32_t i = 0; i < m; ++i) x[i] = -x[i];
            run_kernel(Kernels<T>::powx(), m, x, exponent);
        },
        Affine<T>{beta, a, clamp, a});
}

}  // namespace
}  // namespace orv::dist

#define ORV_DIST_EXPORT_TRANSFORM(Name, impl)                                                        \
    ORV_EXPORT int32_t _vsts##Name(int32_t method, void* s, int32_t n, float* r, float a, float b) { \
        return orv::dist::impl<float>(method, s, n, r, a, b);                                        \
    }                                                                                                \
    ORV_EXPORT int32_t _vstd##Name(int32_t method, void* s, int32_t n, double* r, double a,         \
                                   double b) {                                                       \
        return orv::dist::impl<double>(method, s, n, r, a, b);                                       \
    }

ORV_DIST_EXPORT_TRANSFORM(RngExponential, exponential)
ORV_DIST_EXPORT_TRANSFORM(RngRayleigh, rayleigh)
ORV_DIST_EXPORT_TRANSFORM(RngGumbel, gumbel)
ORV_DIST_EXPORT_TRANSFORM(RngLaplace, laplace)
ORV_DIST_EXPORT_TRANSFORM(RngCauchy, cauchy)

ORV_EXPORT int32_t _vstsRngWeibull(int32_t method, void* s, int32_t n, float* r, float alpha, float a, float beta) {
    return orv::dist::weibull<float>(method, s, n, r, alpha, a, beta);
}
ORV_EXPORT int32_t _vstdRngWeibull(int32_t method, void* s, int32_t n, double* r, double alpha, double a,
                                   double beta) {
    return orv::dist::weibull<double>(method, s, n, r, alpha, a, beta);
}
