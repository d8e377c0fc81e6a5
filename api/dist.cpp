// Checked distribution calls: every argument the kernel entries trust is
// tested before anything is drawn, so a refused call changes nothing.
#include <cmath>
#include <cstdint>

#include <orv/orv_dist.h>

namespace {

// Status of the arguments every call shares; n = 0 is handled by the caller.
// method is one of `variants` numbers, with or without the accuracy flag.
int check_common(int method, const void* s, int n, const void* r, int variants = 1) {
    const int variant = method & ~ORV_RNG_METHOD_ACCURATE;
    if (variant < 0 || variant >= variants) return ORV_RNG_ERROR_BAD_METHOD;
    if (s == nullptr) return ORV_RNG_ERROR_NULL_STREAM;
    BrngRow row{};
    if (__vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(s)), &row) != 0 ||
        row.floatFill == nullptr || row.doubleFill == nullptr || row.wordFill == nullptr)
        return ORV_RNG_ERROR_INVALID_BRNG;
    if (n < 0) return ORV_RNG_ERROR_BAD_COUNT;
    if (n > 0 && r == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    return 0;
}

template <typename T>
int check_interval(T a, T b) {
    return a < b && std::isfinite(b - a) ? 0 : ORV_RNG_ERROR_BAD_INTERVAL;
}

template <typename T>
int check_location_scale(T a, T beta) {
    if (!std::isfinite(a)) return ORV_RNG_ERROR_BAD_DISPLACEMENT;
    return beta > 0 && std::isfinite(beta) ? 0 : ORV_RNG_ERROR_BAD_SCALE;
}

template <typename T>
int check_shape(T alpha) {
    return alpha > 0 && std::isfinite(alpha) ? 0 : ORV_RNG_ERROR_BAD_SHAPE;
}

// The first failing check of a list, or 0.
template <typename... Status>
int first_of(Status... status) {
    int bad = 0;
    ((bad = bad != 0 ? bad : status), ...);
    return bad;
}

// Runs the kernel entry when the shared and the particular checks pass and
// there is something to draw.
template <typename Call>
int checked(int method, const void* s, int n, const void* r, int particular, Call call, int variants = 1) {
    if (const int bad = check_common(method, s, n, r, variants)) return bad;
    if (particular != 0) return particular;
    return n == 0 ? 0 : call();
}

// A lower factor in the given storage: every element that is read finite,
// the diagonal positive (so L L^T is a covariance of full rank).
template <typename T>
int check_factor(int dimen, int mstorage, const T* a, const T* t) {
    if (mstorage < ORV_RNG_MATRIX_STORAGE_FULL || mstorage > ORV_RNG_MATRIX_STORAGE_DIAGONAL)
        return ORV_RNG_ERROR_BAD_STORAGE;
    if (a == nullptr || t == nullptr) return ORV_RNG_ERROR_NULL_ARRAY;
    for (int j = 0; j < dimen; ++j)
        if (!std::isfinite(a[j])) return ORV_RNG_ERROR_BAD_DISPLACEMENT;
    for (int i = 0, k = 0; i < dimen; ++i)
        for (int j = 0; j <= i; ++j) {
            // Element (i, j) of L: full row by row, packed column by column.
            T v = 0;
            if (mstorage == ORV_RNG_MATRIX_STORAGE_FULL) v = t[static_cast<int64_t>(i) * dimen + j];
            if (mstorage == ORV_RNG_MATRIX_STORAGE_PACKED)
                v = t[static_cast<int64_t>(j) * dimen - static_cast<int64_t>(j) * (j - 1) / 2 + (i - j)];
            if (mstorage == ORV_RNG_MATRIX_STORAGE_DIAGONAL && i == j) v = t[k++];
            if (!std::isfinite(v) || (i == j && !(v > 0))) return ORV_RNG_ERROR_BAD_FACTOR;
        }
    return 0;
}

template <typename T>
int check_mv(int method, const void* s, int n, const T* r, int dimen, int mstorage, const T* a, const T* t) {
    if (const int bad = check_common(method, s, n, r, 3)) return bad;
    if (dimen < 1) return ORV_RNG_ERROR_BAD_DIMENSION;
    if (n > 0 && dimen > INT32_MAX / n) return ORV_RNG_ERROR_BAD_COUNT;
    return check_factor(dimen, mstorage, a, t);
}

}  // namespace

extern "C" {

ORV_API int vstsRngUniform(int method, OrvStreamPtr s, int n, float* r, float a, float b) {
    return checked(method, s, n, r, check_interval(a, b), [&] { return _vstsRngUniform(method, s, n, r, a, b); });
}

ORV_API int vstdRngUniform(int method, OrvStreamPtr s, int n, double* r, double a, double b) {
    return checked(method, s, n, r, check_interval(a, b), [&] { return _vstdRngUniform(method, s, n, r, a, b); });
}

ORV_API int vstiRngUniform(int method, OrvStreamPtr s, int n, int* r, int a, int b) {
    return checked(method, s, n, r, a < b ? 0 : ORV_RNG_ERROR_BAD_INTERVAL,
                   [&] { return _vstiRngUniform(method, s, n, r, a, b); });
}

ORV_API int vstiRngUniformBits(int method, OrvStreamPtr s, int n, uint32_t* r) {
    return checked(method, s, n, r, 0, [&] { return _vstiRngUniformBits(method, s, n, r); });
}

ORV_API int vstiRngUniformBits32(int method, OrvStreamPtr s, int n, uint32_t* r) {
    return checked(method, s, n, r, 0, [&] { return _vstiRngUniformBits32(method, s, n, r); });
}

ORV_API int vstiRngUniformBits64(int method, OrvStreamPtr s, int n, uint64_t* r) {
    return checked(method, s, n, r, 0, [&] { return _vstiRngUniformBits64(method, s, n, r); });
}

ORV_API int vstiRngBernoulli(int method, OrvStreamPtr s, int n, int* r, double p) {
    return checked(method, s, n, r, p >= 0.0 && p <= 1.0 ? 0 : ORV_RNG_ERROR_BAD_PROBABILITY,
                   [&] { return _vstiRngBernoulli(method, s, n, r, p); });
}

#define ORV_CHECKED_LOCATION_SCALE(Name)                                                            \
    ORV_API int vsts##Name(int method, OrvStreamPtr s, int n, float* r, float a, float beta) {     \
        return checked(method, s, n, r, check_location_scale(a, beta),                              \
                       [&] { return _vsts##Name(method, s, n, r, a, beta); });                      \
    }                                                                                               \
    ORV_API int vstd##Name(int method, OrvStreamPtr s, int n, double* r, double a, double beta) {  \
        return checked(method, s, n, r, check_location_scale(a, beta),                              \
                       [&] { return _vstd##Name(method, s, n, r, a, beta); });                      \
    }

ORV_CHECKED_LOCATION_SCALE(RngExponential)
ORV_CHECKED_LOCATION_SCALE(RngRayleigh)
ORV_CHECKED_LOCATION_SCALE(RngGumbel)
ORV_CHECKED_LOCATION_SCALE(RngLaplace)

ORV_CHECKED_LOCATION_SCALE(RngCauchy)

ORV_API int vstsRngWeibull(int method, OrvStreamPtr s, int n, float* r, float alpha, float a, float beta) {
    return checked(method, s, n, r, first_of(check_shape(alpha), check_location_scale(a, beta)),
                   [&] { return _vstsRngWeibull(method, s, n, r, alpha, a, beta); });
}

ORV_API int vstdRngWeibull(int method, OrvStreamPtr s, int n, double* r, double alpha, double a, double beta) {
    return checked(method, s, n, r, first_of(check_shape(alpha), check_location_scale(a, beta)),
                   [&] { return _vstdRngWeibull(method, s, n, r, alpha, a, beta); });
}

ORV_API int vstsRngGaussian(int method, OrvStreamPtr s, int n, float* r, float a, float sigma) {
    return checked(method, s, n, r, check_location_scale(a, sigma),
                   [&] { return _vstsRngGaussian(method, s, n, r, a, sigma); }, 3);
}

ORV_API int vstdRngGaussian(int method, OrvStreamPtr s, int n, double* r, double a, double sigma) {
    return checked(method, s, n, r, check_location_scale(a, sigma),
                   [&] { return _vstdRngGaussian(method, s, n, r, a, sigma); }, 3);
}

ORV_API int vstsRngLognormal(int method, OrvStreamPtr s, int n, float* r, float a, float sigma, float b,
                             float beta) {
    return checked(method, s, n, r, first_of(check_location_scale(a, sigma), check_location_scale(b, beta)),
                   [&] { return _vstsRngLognormal(method, s, n, r, a, sigma, b, beta); }, 2);
}

ORV_API int vstdRngLognormal(int method, OrvStreamPtr s, int n, double* r, double a, double sigma, double b,
                             double beta) {
    return checked(method, s, n, r, first_of(check_location_scale(a, sigma), check_location_scale(b, beta)),
                   [&] { return _vstdRngLognormal(method, s, n, r, a, sigma, b, beta); }, 2);
}

ORV_API int vstsRngGaussianMV(int method, OrvStreamPtr s, int n, float* r, int dimen, int mstorage,
                              const float* a, const float* t) {
    if (const int bad = check_mv(method, s, n, r, dimen, mstorage, a, t)) return bad;
    return n == 0 ? 0 : _vstsRngGaussianMV(method, s, n, r, dimen, mstorage, a, t);
}

ORV_API int vstdRngGaussianMV(int method, OrvStreamPtr s, int n, double* r, int dimen, int mstorage,
                              const double* a, const double* t) {
    if (const int bad = check_mv(method, s, n, r, dimen, mstorage, a, t)) return bad;
    return n == 0 ? 0 : _vstdRngGaussianMV(method, s, n, r, dimen, mstorage, a, t);
}

}  // extern "C"
