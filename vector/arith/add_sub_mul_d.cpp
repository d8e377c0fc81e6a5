// dAdd, dSub, dMul and their strided forms. The plain kernels keep the
// caller's rounding direction and report nothing; they run 8 elements a
// round as four unaligned pairs, and the rest one at a time from the highest
// index down (8 elements, four registers, at the SSE2 width; four registers
// a round at every width). The strided kernels read the mode word like the blocked ones.
// They bypass the block driver: its 16-lane blocks with filler lanes and its
// mode read at entry would change this order of stores (which lets r alias
// a or b) and the caller's rounding direction that these kernels keep.
#include "frame/fp_guard.h"
#include "frame/kernel_tables.h"
#include "frame/mode_word.h"
#include "vector/simd/vec.h"

namespace {

using orv::frame::FpGuard;
using R = orv::vec::simd::Reg<double>;
using VD = R::V;
constexpr int kW = R::kWidth;

// With both arguments NaN, the first one's NaN is the result (Add, Mul).
using orv::vec::simd::first_nan;
struct AddOp {
    static VD pair(VD x, VD y) { return first_nan(x, x + y); }
    static double one(double x, double y) { return first_nan(x, x + y); }
};
struct SubOp {
    static VD pair(VD x, VD y) { return x - y; }
    static double one(double x, double y) { return x - y; }
};
struct MulOp {
    static VD pair(VD x, VD y) { return first_nan(x, x * y); }
    static double one(double x, double y) { return first_nan(x, x * y); }
};

template <typename Op>
inline void pair_at(const double* a, const double* b, double* r, long i) {
    R::store(r + i, Op::pair(R::load(a + i), R::load(b + i)));
}

template <typename Op>
void plain_kernel(int n, const double* a, const double* b, double* r) {
    FpGuard guard = FpGuard::keep_rounding();
    if (n < 1) return;
    constexpr int kRound = 4 * kW;
    const long rounds = n / kRound;
    long i = 0;
    for (long k = 0; k < rounds; ++k, i += kRound) {
        // All four registers are loaded before any store, so r may alias a or b.
        const VD x0 = R::load(a + i), y0 = R::load(b + i);
        const VD x1 = R::load(a + i + kW), y1 = R::load(b + i + kW);
        const VD x2 = R::load(a + i + 2 * kW), y2 = R::load(b + i + 2 * kW);
        const VD x3 = R::load(a + i + 3 * kW), y3 = R::load(b + i + 3 * kW);
        R::store(r + i, Op::pair(x0, y0));
        R::store(r + i + kW, Op::pair(x1, y1));
        R::store(r + i + 2 * kW, Op::pair(x2, y2));
        R::store(r + i + 3 * kW, Op::pair(x3, y3));
    }
    // Wider registers: whole registers of the remainder first.
    for (; n - i >= 8; i += kW) pair_at<Op>(a, b, r, i);
    // Straight-line remainder entered by its count, highest index first.
    switch ((n - i) % 8) {
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
        alignas(64) double x[8], y[8], z[8];
        for (int l = 0; l < 8; ++l) {
            x[l] = a[(i + l) * sa];
            y[l] = b[(i + l) * sb];
        }
        for (int l = 0; l < 8; ++l) z[l] = Op::one(x[l], y[l]);
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
