// Helpers of the data-fitting tests: the constructors by name, and the
// evaluation of a cell polynomial and its derivatives from the coefficients.
#ifndef ORV_TESTS_DATAFIT_SPLINE_UTIL_H
#define ORV_TESTS_DATAFIT_SPLINE_UTIL_H

#include <orv/datafit.h>
#include <orv/threading.h>

#include <string>

namespace dftest {

enum class Kind { Linear, Quadratic, Akima, Bessel, Hyman, Hermite, Default, Natural };
// Every constructor, the one list the tests run through.
inline constexpr Kind kKinds[] = {Kind::Linear, Kind::Quadratic, Kind::Akima, Kind::Bessel,
                                  Kind::Hyman,  Kind::Hermite,   Kind::Default, Kind::Natural};

inline const char* name(Kind k) {
    static const char* const names[] = {"linear", "quadratic", "akima", "bessel",
                                        "hyman", "hermite", "default", "natural"};
    return names[static_cast<int>(k)];
}
inline Kind kind_of(const std::string& s) {
    for (Kind k : kKinds)
        if (s == name(k)) return k;
    return Kind::Natural;
}

using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);
template <typename T>
Ctor ctor(Kind k) {
    static const Ctor d[] = {orv_df_kernel_dDFLinearSpline1D, orv_df_kernel_dDFQuadraticSpline1D,
                             orv_df_kernel_dDFAkimaCubicSpline1D, orv_df_kernel_dDFBesselCubicSpline1D,
                             orv_df_kernel_dDFHymanCubicSpline1D, orv_df_kernel_dDFHermiteCubicSpline1D,
                             orv_df_kernel_dDFDefaultCubicSpline1D, orv_df_kernel_dDFNaturalCubicSpline1D};
    static const Ctor s[] = {orv_df_kernel_sDFLinearSpline1D, orv_df_kernel_sDFQuadraticSpline1D,
                             orv_df_kernel_sDFAkimaCubicSpline1D, orv_df_kernel_sDFBesselCubicSpline1D,
                             orv_df_kernel_sDFHymanCubicSpline1D, orv_df_kernel_sDFHermiteCubicSpline1D,
                             orv_df_kernel_sDFDefaultCubicSpline1D, orv_df_kernel_sDFNaturalCubicSpline1D};
    return (sizeof(T) == 8 ? d : s)[static_cast<int>(k)];
}

// The task calls of precision T, so that a test is written once for both.
template <typename T>
struct Api;
template <>
struct Api<double> {
    static constexpr auto new_task = orv_df_kernel_dNewTask1D;
    static constexpr auto edit_pp = orv_df_kernel_dEditPPSpline1D;
    static constexpr auto edit_idx_ptr = orv_df_kernel_dEditIdxPtr;
};
template <>
struct Api<float> {
    static constexpr auto new_task = orv_df_kernel_sNewTask1D;
    static constexpr auto edit_pp = orv_df_kernel_sEditPPSpline1D;
    static constexpr auto edit_idx_ptr = orv_df_kernel_sEditIdxPtr;
};

// A threading table that runs three teams one after the other on this thread.
inline int three_teams() { return 3; }
inline void in_turn(int n, int, void* args, DFBodyFn body) {
    for (int t = n - 1; t >= 0; --t) body(t, n, nullptr, args);
}
inline const DFThreadOps kThree = {in_turn, nullptr, nullptr, nullptr, three_teams};

inline int order_of(Kind k) { return k == Kind::Linear ? 2 : k == Kind::Quadratic ? 3 : 4; }

// Derivative der of sum c[j] t^j at t.
template <typename T>
double poly(const T* c, int order, double t, int der) {
    double r = 0;
    for (int j = order - 1; j >= der; --j) {
        double f = 1;
        for (int q = 0; q < der; ++q) f *= j - q;
        r = r * t + f * static_cast<double>(c[j]);
    }
    return r;
}

}  // namespace dftest

#endif
