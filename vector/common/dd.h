// Double-double arithmetic without FMA: Knuth's two-sum, Dekker's fast
// two-sum, Veltkamp's split and Dekker's exact product, on scalars and on
// double registers of the vocabulary's width (vector/simd/vec.h). Every operation is one IEEE step in the
// order written, so the results are exact where the method says so.
#pragma once

#include "vector/simd/vec.h"

namespace orv::vec::dd {

// A value as an unevaluated sum hi + lo.
struct Dd {
    double hi, lo;
};

// s + err == a + b exactly, for any a and b (Knuth).
inline double two_sum(double a, double b, double* err) {
    const double s = a + b;
    const double bb = s - a;
    *err = (a - (s - bb)) + (b - bb);
    return s;
}
inline simd::VD two_sum(simd::VD a, simd::VD b, simd::VD* err) {
    const simd::VD s = a + b;
    const simd::VD bb = s - a;
    *err = (a - (s - bb)) + (b - bb);
    return s;
}

// s + err == a + b exactly when a is 0 or |a| >= |b| (Dekker).
inline double fast_two_sum(double a, double b, double* err) {
    const double s = a + b;
    *err = (a - s) + b;
    return s;
}
inline simd::VD fast_two_sum(simd::VD a, simd::VD b, simd::VD* err) {
    const simd::VD s = a + b;
    *err = (a - s) + b;
    return s;
}

// Veltkamp's split by 2^27 + 1: a == h + l, each with at most 26 bits.
inline constexpr double kSplitter = 134217729.0;
inline void split(double a, double* h, double* l) {
    const double c = kSplitter * a;
    *h = c - (c - a);
    *l = a - *h;
}
template <typename V>  // simd::VD or simd::VDW
inline V split_hi(V a) {
    const V c = simd::fill<V>(kSplitter) * a;
    return c - (c - a);
}
// Dekker's exact product on registers: a b == p + *err.
template <typename V>
inline V two_prod(V a, V b, V* err) {
    const V ah = split_hi(a), al = a - ah;
    const V bh = split_hi(b), bl = b - bh;
    const V p = a * b;
    *err = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
    return p;
}

// Dekker's exact product: a b == hi + lo for operands without overflow or
// underflow.
inline Dd two_prod(double a, double b) {
    double ah, al, bh, bl;
    split(a, &ah, &al);
    split(b, &bh, &bl);
    const double p = a * b;
    return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

// (hi + lo) (c_hi + c_lo) rounded once at the end: Dekker's product of hi
// and c_hi, and the cross terms.
inline double mul_dd(Dd v, double c_hi, double c_lo) {
    const Dd p = two_prod(v.hi, c_hi);
    return p.hi + (p.lo + (v.hi * c_lo + v.lo * c_hi));
}
inline simd::VD mul_dd(simd::VD hi, simd::VD lo, double c_hi, double c_lo) {
    using simd::VD;
    double ch, cl;
    split(c_hi, &ch, &cl);
    const VD vch = simd::fill<VD>(ch), vcl = simd::fill<VD>(cl);
    const VD ph = hi * simd::fill<VD>(c_hi);
    const VD h = split_hi(hi), l = hi - h;
    const VD pl = (((h * vch - ph) + h * vcl) + l * vch) + l * vcl;
    return ph + (pl + (hi * simd::fill<VD>(c_lo) + lo * simd::fill<VD>(c_hi)));
}

}  // namespace orv::vec::dd
