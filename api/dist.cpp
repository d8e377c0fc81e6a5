// Checked distribution calls: every argument the kernel entries trust is
// tested before anything is drawn, so a refused call changes nothing.
#include <cmath>

#include <orv/orv_dist.h>

namespace {

// Status of the arguments every call shares; n = 0 is handled by the caller.
int check_common(int method, const void* s, int n, const void* r) {
    if ((method & ~ORV_RNG_METHOD_ACCURATE) != 0) return ORV_RNG_ERROR_BAD_METHOD;
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

// Runs the kernel entry when the shared and the particular checks pass and
// there is something to draw.
template <typename Call>
int checked(int method, const void* s, int n, const void* r, int particular, Call call) {
    if (const int bad = check_common(method, s, n, r)) return bad;
    if (particular != 0) return particular;
    return n == 0 ? 0 : call();
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

}  // extern "C"
