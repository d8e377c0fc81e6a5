// Double-double arithmetic without FMA: Knuth's two-sum, Dekker's fast
// two-sum, Veltkamp's split and Dekker's exact product, on scalars and on
// SSE2 registers of two doubles. Every operation is one IEEE step in the
// order written, so the results are exact where the method says so.
#pragma once

#include <emmintrin.h>

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
inline __m128d two_sum(__m128d a, __m128d b, __m128d* err) {
    const __m128d s = _mm_add_pd(a, b);
    const __m128d bb = _mm_sub_pd(s, a);
    *err = _mm_add_pd(_mm_sub_pd(a, _mm_sub_pd(s, bb)), _mm_sub_pd(b, bb));
    return s;
}

// s + err == a + b exactly when a is 0 or |a| >= |b| (Dekker).
inline double fast_two_sum(double a, double b, double* err) {
    const double s = a + b;
    *err = (a - s) + b;
    return s;
}
inline __m128d fast_two_sum(__m128d a, __m128d b, __m128d* err) {
    const __m128d s = _mm_add_pd(a, b);
    *err = _mm_add_pd(_mm_sub_pd(a, s), b);
    return s;
}

// Veltkamp's split by 2^27 + 1: a == h + l, each with at most 26 bits.
inline constexpr double kSplitter = 134217729.0;
inline void split(double a, double* h, double* l) {
    const double c = kSplitter * a;
    *h = c - (c - a);
    *l = a - *h;
}
inline __m128d split_hi(__m128d a) {
    const __m128d c = _mm_mul_pd(_mm_set1_pd(kSplitter), a);
    return _mm_sub_pd(c, _mm_sub_pd(c, a));
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
inline __m128d mul_dd(__m128d hi, __m128d lo, double c_hi, double c_lo) {
    double ch, cl;
    split(c_hi, &ch, &cl);
    const __m128d vch = _mm_set1_pd(ch), vcl = _mm_set1_pd(cl);
    const __m128d ph = _mm_mul_pd(hi, _mm_set1_pd(c_hi));
    const __m128d h = split_hi(hi), l = _mm_sub_pd(hi, h);
    const __m128d pl = _mm_add_pd(
        _mm_add_pd(_mm_add_pd(_mm_sub_pd(_mm_mul_pd(h, vch), ph), _mm_mul_pd(h, vcl)), _mm_mul_pd(l, vch)),
        _mm_mul_pd(l, vcl));
    return _mm_add_pd(
        ph, _mm_add_pd(pl, _mm_add_pd(_mm_mul_pd(hi, _mm_set1_pd(c_lo)), _mm_mul_pd(lo, _mm_set1_pd(c_hi)))));
}

}  // namespace orv::vec::dd
