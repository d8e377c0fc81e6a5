// dAdd, dSub, dMul and their strided forms. The plain kernels keep the
// caller's rounding direction and report nothing; they run 8 elements a
// round as four unaligned pairs, and the rest one at a time from the highest
// index down. The strided kernels read the mode word like the blocked ones.
// They bypass the block driver: its 16-lane blocks with filler lanes and its
// mode read at entry would change this order of stores (which lets r alias
// a or b) and the caller's rounding direction that these kernels keep.
#include <emmintrin.h>

#include "frame/fp_guard.h"
#include "frame/kernel_tables.h"
#include "frame/mode_word.h"

namespace {

using orv::frame::FpGuard;

struct AddOp {
    static __m128d pair(__m128d x, __m128d y) { return _mm_add_pd(x, y); }
    static double one(double x, double y) { return x + y; }
};
struct SubOp {
    static __m128d pair(__m128d x, __m128d y) { return _mm_sub_pd(x, y); }
    static double one(double x, double y) { return x - y; }
};
struct MulOp {
    static __m128d pair(__m128d x, __m128d y) { return _mm_mul_pd(x, y); }
    static double one(double x, double y) { return x * y; }
};

template <typename Op>
inline void pair_at(const double* a, const double* b, double* r, long i) {
    _mm_storeu_pd(r + i, Op::pair(_mm_loadu_pd(a + i), _mm_loadu_pd(b + i)));
}

template <typename Op>
void plain_kernel(int n, const double* a, const double* b, double* r) {
    FpGuard guard = FpGuard::keep_rounding();
    if (n < 1) return;
    const long rounds = n / 8;
    long i = 0;
    for (long k = 0; k < rounds; ++k, i += 8) {
        // All four pairs are loaded before any store, so r may alias a or b.
        const __m128d x0 = _mm_loadu_pd(a + i), y0 = _mm_loadu_pd(b + i);
        const __m128d x1 = _mm_loadu_pd(a + i + 2), y1 = _mm_loadu_pd(b + i + 2);
        const __m128d x2 = _mm_loadu_pd(a + i + 4), y2 = _mm_loadu_pd(b + i + 4);
        const __m128d x3 = _mm_loadu_pd(a + i + 6), y3 = _mm_loadu_pd(b + i + 6);
        _mm_storeu_pd(r + i, Op::pair(x0, y0));
        _mm_storeu_pd(r + i + 2, Op::pair(x1, y1));
        _mm_storeu_pd(r + i + 4, Op::pair(x2, y2));
        _mm_storeu_pd(r + i + 6, Op::pair(x3, y3));
    }
    // Straight-line remainder entered by its count, highest index first.
    switch (n % 8) {
        case 7: r[i + 6] = Op::one(a[i + 6], b[i + 6]); [[fallthrough]];
        case 6: r[i + 5] = Op::one(a[i + 5], b[i + 5]); [[fallthrough]];
        case 5: r[i + 4] = Op::one(a[i + 4], b[i + 4]); [[fallthrough]];
        case 4: r[i + 3] = Op::one(a[i + 3], b[i + 3]); [[fallthrough]];
        case 3: r[i + 2] = Op::one(a[i + 2], b[i + 2]); [[fallthrough]];
        case 2: r[i + 1] = Op::one(a[i + 1], b[i + 1]); [[fallthrough]];
        case 1: r[i] = Op::one(a[i], b[i]); [[fallthrough]];
        default: break;
    }
}

template <typename Op>
void strided_kernel(void (*const* plain_table)(int, const double*, const double*, double*), int n,
                    const double* a, int inca, const double* b, int incb, double* r, int incr) {
    if (inca == 1 && incb == 1 && incr == 1) {
        plain_table[orv::frame::kSlotHA](n, a, b, r);
        return;
    }
    FpGuard guard = FpGuard::from_mode(orv::frame::current_mode());
    if (n < 1) return;
    const long sa = inca, sb = incb, sr = incr;
    long i = 0;
    for (; i + 8 <= n; i += 8) {
        alignas(16) double x[8], y[8], z[8];
        for (int l = 0; l < 8; ++l) {
            x[l] = a[(i + l) * sa];
            y[l] = b[(i + l) * sb];
        }
        for (int l = 0; l < 8; l += 2) pair_at<Op>(x, y, z, l);
        for (int l = 0; l < 8; ++l) r[(i + l) * sr] = z[l];
    }
    for (; i < n; ++i) r[i * sr] = Op::one(a[i * sa], b[i * sb]);
}

}  // namespace

extern "C" {

void orv_kern_dAdd(int n, const double* a, const double* b, double* r) { plain_kernel<AddOp>(n, a, b, r); }
void orv_kern_dSub(int n, const double* a, const double* b, double* r) { plain_kernel<SubOp>(n, a, b, r); }
void orv_kern_dMul(int n, const double* a, const double* b, double* r) { plain_kernel<MulOp>(n, a, b, r); }

void orv_kern_dAddI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    strided_kernel<AddOp>(orv_vtm_kernel_dAdd_ttab, n, a, inca, b, incb, r, incr);
}
void orv_kern_dSubI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    strided_kernel<SubOp>(orv_vtm_kernel_dSub_ttab, n, a, inca, b, incb, r, incr);
}
void orv_kern_dMulI(int n, const double* a, int inca, const double* b, int incb, double* r, int incr) {
    strided_kernel<MulOp>(orv_vtm_kernel_dMul_ttab, n, a, inca, b, incb, r, incr);
}

}  // extern "C"
