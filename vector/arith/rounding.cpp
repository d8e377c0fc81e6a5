// The rounding family: Ceil, Floor, Trunc, Round, Rint, NearbyInt, Frac and
// Modf. For |x| below 2^p (p the fraction width), adding and taking away
// 2^p with the sign of x leaves an integer within one of x in any rounding
// direction, and a comparison repairs it to the ceiling or floor; Trunc,
// Round and Frac do the same on |x|. The result then takes the sign of x by
// a bitwise or, so zeros keep their sign. Larger values have no fraction
// and pass unchanged, NaN quieted. Rint and NearbyInt round in the caller's
// direction: their shifted value is taken as it is.
#include <cmath>

#include "vector/block_driver.h"

namespace {

using orv::vec::bits;
using orv::vec::Bits;
using orv::vec::Fmt;
using orv::vec::from_bits;

template <typename T>
inline constexpr T kShift = T(sizeof(T) == 4 ? 0x1p23 : 0x1p52);

template <typename T>
struct Parts {
    T ax;         // |x|
    Bits<T> s;    // sign bit of x
    bool big;     // |x| >= 2^p, infinity or NaN: no fraction bits
    T fl;         // floor(|x|) when !big
};

template <typename T>
inline Parts<T> parts(T x) {
    const Bits<T> b = bits(x);
    Parts<T> p;
    p.s = b & Fmt<T>::kSign;
    p.ax = from_bits<T>(b & Fmt<T>::kAbs);
    p.big = (b & Fmt<T>::kAbs) >= bits(kShift<T>);
    const T t = (p.ax + kShift<T>) - kShift<T>;
    p.fl = t > p.ax ? t - T(1) : t;
    return p;
}

template <typename T>
inline T with_sign(T v, Bits<T> s) { return from_bits<T>(bits(v) | s); }

enum class Op { Ceil, Floor, Trunc, Round, Rint, Frac };

template <typename E, Op O, bool ReadsMode>
struct RoundK {
    using T = E;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = ReadsMode;
    static constexpr bool kSpecial = false;
    static constexpr bool kDivisorTest = false;
    using V = typename orv::vec::simd::Reg<T>::V;
    static V fastv(V x) {
        using namespace orv::vec::simd;
        using R = Reg<T>;
        const V sign = R::bits(Fmt<T>::kSign), one = R::set1(T(1)), shift = R::set1(kShift<T>);
        const V ax = bandnot(sign, x), s = band(sign, x);
        V m;  // the result before its sign is set
        if constexpr (O == Op::Ceil || O == Op::Floor || O == Op::Rint) {
            // Shift with the sign of x: t is x rounded in the current direction.
            const V sh = bor(shift, s);
            const V t = sub(add(x, sh), sh);
            if constexpr (O == Op::Ceil)
                m = add(t, band(lt(t, x), one));
            else if constexpr (O == Op::Floor)
                m = sub(t, band(lt(x, t), one));
            else
                m = t;
        } else {
            const V t = sub(add(ax, shift), shift);
            const V fl = sub(t, band(lt(ax, t), one));  // floor(|x|)
            if constexpr (O == Op::Trunc)
                m = fl;
            else if constexpr (O == Op::Round)
                m = add(fl, band(not_lt(sub(ax, fl), R::set1(T(0.5))), one));
            else  // Frac
                m = sub(ax, fl);
        }
        // The result's magnitude with the sign of x: zeros keep the sign of x.
        const V small = bor(bandnot(sign, m), s);
        // |x| >= 2^p, infinity or NaN: x itself (x + 0 quiets a NaN), or for
        // Frac a zero of the sign of x.
        V whole = add(x, R::set1(T(0)));
        if constexpr (O == Op::Frac) whole = select(unord(x, x), whole, s);
        return select(lt(ax, shift), small, whole);
    }
};

// Rint and NearbyInt raise nothing of their own: the inexact flag that the
// shift raises is taken back unless it was set before the call.
struct KeepInexact {
    bool was_set = (orv::frame::mxcsr() & 0x20) != 0;
    ~KeepInexact() {
        if (!was_set) orv::frame::set_mxcsr(orv::frame::mxcsr() & ~0x20u);
    }
};

template <typename K>
void rint_plain(int n, const typename K::T* a, typename K::T* r) {
    orv::frame::FpGuard guard = orv::vec::enter(false);
    KeepInexact keep;
    orv::vec::run<K>(orv::vec::Access<typename K::T, false>{a, a, r}, n, "");
}
template <typename K, typename Fn>
void rint_strided(Fn* const* table, int n, const typename K::T* a, int inca, typename K::T* r,
                  int incr) {
    if (inca == 1 && incr == 1) {
        table[orv::frame::kSlotHA](n, a, r);
        return;
    }
    orv::frame::FpGuard guard = orv::vec::enter(true);
    KeepInexact keep;
    orv::vec::run<K>(orv::vec::Access<typename K::T, true>{a, a, r, inca, inca, incr}, n, "");
}

// Modf: integral part to r1, fraction to r2, through the driver's
// two-result shape.
template <typename E>
struct ModfK {
    using In = E;
    using Out = E;
    static constexpr orv::vec::Shape kShape = orv::vec::Shape::TwoResults;
    static constexpr bool kReadsMode = false;
    static constexpr bool kSpecial = false;
    static void fast(E x, E* r1, E* r2) {
        const Parts<E> p = parts(x);
        if (!p.big) {
            *r1 = with_sign(p.fl, p.s);
            *r2 = with_sign(p.ax - p.fl, p.s);
        } else if (orv::vec::is_nan_bits(x)) {
            *r1 = *r2 = x + x;
        } else {
            *r1 = x;
            *r2 = with_sign(E(0), p.s);
        }
    }
};

}  // namespace

ORV_UNARY_KERNELS(sCeil, RoundK<float, Op::Ceil, false>)
ORV_UNARY_KERNELS(dCeil, RoundK<double, Op::Ceil, false>)
ORV_UNARY_KERNELS(sFloor, RoundK<float, Op::Floor, false>)
ORV_UNARY_KERNELS(dFloor, RoundK<double, Op::Floor, false>)
ORV_UNARY_KERNELS(sTrunc, RoundK<float, Op::Trunc, false>)
ORV_UNARY_KERNELS(dTrunc, RoundK<double, Op::Trunc, false>)
ORV_UNARY_KERNELS(sRound, RoundK<float, Op::Round, false>)
ORV_UNARY_KERNELS(dRound, RoundK<double, Op::Round, true>)
ORV_UNARY_KERNELS(sFrac, RoundK<float, Op::Frac, true>)
ORV_UNARY_KERNELS(dFrac, RoundK<double, Op::Frac, true>)

using SRint = RoundK<float, Op::Rint, false>;
using DRint = RoundK<double, Op::Rint, false>;

extern "C" {
void orv_kern_sRint(int n, const float* a, float* r) { rint_plain<SRint>(n, a, r); }
void orv_kern_dRint(int n, const double* a, double* r) { rint_plain<DRint>(n, a, r); }
void orv_kern_sNearbyInt(int n, const float* a, float* r) { rint_plain<SRint>(n, a, r); }
void orv_kern_dNearbyInt(int n, const double* a, double* r) { rint_plain<DRint>(n, a, r); }
void orv_kern_sRintI(int n, const float* a, int inca, float* r, int incr) {
    rint_strided<SRint>(orv_vtm_kernel_sRint_ttab, n, a, inca, r, incr);
}
void orv_kern_dRintI(int n, const double* a, int inca, double* r, int incr) {
    rint_strided<DRint>(orv_vtm_kernel_dRint_ttab, n, a, inca, r, incr);
}
void orv_kern_sNearbyIntI(int n, const float* a, int inca, float* r, int incr) {
    rint_strided<SRint>(orv_vtm_kernel_sNearbyInt_ttab, n, a, inca, r, incr);
}
void orv_kern_dNearbyIntI(int n, const double* a, int inca, double* r, int incr) {
    rint_strided<DRint>(orv_vtm_kernel_dNearbyInt_ttab, n, a, inca, r, incr);
}

}  // extern "C"

ORV_TWO_RESULTS_KERNELS(sModf, ModfK<float>)
ORV_TWO_RESULTS_KERNELS(dModf, ModfK<double>)
