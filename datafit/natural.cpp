// Natural cubic splines: C2 interpolating cubics whose breakpoint
// derivatives solve one tridiagonal system. The matrix depends only on the
// breakpoints, so it is factored once and all functions are solved together,
// one right-hand side each. The periodic system is cyclic; it is reduced to
// a tridiagonal one and closed with a rank-one (Sherman-Morrison) correction.
#include "datafit/df_task.h"

#include <emmintrin.h>

#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

namespace orv::df {
namespace {

template <typename T>
struct Tridiag;
template <>
struct Tridiag<double> {
    static void factor(int n, double* dl, double* d, double* du, int* info) {
        ddttrfb_4dfl(&n, dl, d, du, info);
    }
    static void solve(int n, int nrhs, const double* dl, const double* d, const double* du,
                      double* b, int ldb, int* info) {
        ddttrsb_4dfl("N", &n, &nrhs, dl, d, du, b, &ldb, info);
    }
};
template <>
struct Tridiag<float> {
    static void factor(int n, float* dl, float* d, float* du, int* info) {
        sdttrfb_4dfl(&n, dl, d, du, info);
    }
    static void solve(int n, int nrhs, const float* dl, const float* d, const float* du,
                      float* b, int ldb, int* info) {
        sdttrsb_4dfl("N", &n, &nrhs, dl, d, du, b, &ldb, info);
    }
};

// Whether x[i+1] > x[i] for every i (a NaN fails), two steps a lane for double.
template <typename T>
bool strictly_increasing(const T* x, int64_t n) {
    int64_t i = 0;
    bool up = true;
    if constexpr (std::is_same_v<T, double>) {
        __m128d bad = _mm_setzero_pd(), bad2 = _mm_setzero_pd();
        for (; i + 4 < n; i += 4) {
            const __m128d a = _mm_loadu_pd(x + i), b = _mm_loadu_pd(x + i + 2);
            const __m128d a1 = _mm_loadu_pd(x + i + 1), b1 = _mm_loadu_pd(x + i + 3);
            bad = _mm_or_pd(bad, _mm_cmpngt_pd(a1, a)), bad2 = _mm_or_pd(bad2, _mm_cmpngt_pd(b1, b));
        }
        for (; i + 2 < n; i += 2) bad = _mm_or_pd(bad, _mm_cmpngt_pd(_mm_loadu_pd(x + i + 1), _mm_loadu_pd(x + i)));
        up = _mm_movemask_pd(_mm_or_pd(bad, bad2)) == 0;
    }
    for (; i + 1 < n; ++i) up &= x[i + 1] > x[i];
    return up;
}

// Breakpoint derivatives of the small cases that need no system: n = 2 (the
// single slope), and n = 3 with not-a-knot (d[1] = 0) or the free end.
template <typename T, int BI>
void small_derivatives(int64_t n, const T* h, const T* s, T* d) {
    if (n == 2) {
        d[0] = d[1] = s[0];
    } else if constexpr (BI == 0) {
        const T H = h[0] + h[1];
        d[1] = T(0);
        d[0] = (s[1] * h[0] * h[0] + (T(2) * H + h[0]) * h[1] * s[0]) / (H * h[1]);
        d[2] = (h[1] * h[1] * s[0] + s[1] * h[0] * (h[1] + T(2) * H)) / (h[0] * H);
    } else {
        d[1] = (h[1] * s[0] + h[0] * s[1]) / (h[0] + h[1]);
        d[0] = T(1.5) * s[0] - T(0.5) * d[1];
        d[2] = T(1.5) * s[1] - T(0.5) * d[1];
    }
}

// Solves the columns whose right-hand sides stand at offset `at` of every
// coefficient block: in one call when the blocks are evenly spaced (so the
// columns overlap in the solver as before), otherwise block by block.
template <typename T>
int solve_columns(const DFTask* t, int64_t ny, int64_t m, int64_t at, const T* dl, const T* dd,
                  const T* du) {
    T* first = coeff_of<T>(t, 0) + at;
    int64_t stride = ny > 1 ? coeff_of<T>(t, 1) - coeff_of<T>(t, 0) : m;
    bool even = stride >= m && stride <= INT_MAX && ny <= INT_MAX;
    for (int64_t k = 2; even && k < ny; ++k) even = coeff_of<T>(t, k) - coeff_of<T>(t, 0) == k * stride;
    int info = 0;
    if (even) {
        Tridiag<T>::solve(static_cast<int>(m), static_cast<int>(ny), dl, dd, du, first,
                          static_cast<int>(stride), &info);
        return info;
    }
    for (int64_t k = 0; k < ny && info == 0; ++k)
        Tridiag<T>::solve(static_cast<int>(m), 1, dl, dd, du, coeff_of<T>(t, k) + at,
                          static_cast<int>(m), &info);
    return info;
}

// The derivatives d of function k are solved in the top n elements of its
// coefficient block (4(n-1) elements), and the cells are then written from
// the first on: cell i overwrites no derivative above d[i+1]. Scratch holds
// what all functions share: 1/h, the pivots, and the two off-diagonals
// unless they can sit below the derivatives of block 0, which is done when
// the factorisation cannot fail (strictly increasing breakpoints and a
// diagonally dominant matrix: every kind but not-a-knot), so that a refused
// system leaves every block as it was.
// One function on an increasing non-uniform partition with a diagonally
// dominant system (boundary kinds 1 to 5): the system is built, eliminated
// and solved in one forward and one backward pass, with no scratch. The
// forward pass runs the Thomas elimination through continuants (p[i] the
// leading principal minors, q[i] = p[i] times the eliminated right-hand
// side), so that its chain has no division, and leaves in the four slots of
// cell i the eliminated right-hand side, the multiplier of d[i+1], the slope
// and 1/h; the backward pass turns them into d and the cell's coefficients.
template <typename T, bool Cols, int BI>
void natural_fused(const DFTask* t, const T* x, int64_t n, T* c) {
    constexpr int kExp = std::numeric_limits<T>::max_exponent / 2;
    const T big = std::ldexp(T(1), kExp), tiny = std::ldexp(T(1), -kExp);
    const auto y = values_of<T, Cols>(t, 0);
    const T* bc = static_cast<const T*>(t->bc);
    // Row 0.
    T h0 = x[1] - x[0], rh0 = T(1) / h0, s0 = (y[1] - y[0]) * rh0;
    T b0 = T(2), c0 = T(1), r0 = T(3) * s0;
    if constexpr (BI == 2 || BI == 3) b0 = T(1), c0 = T(0), r0 = bc[0];
    if constexpr (BI == 4 || BI == 5) r0 = T(3) * s0 - T(0.5) * h0 * bc[0];
    T pm = T(1), pc = b0, q = r0;
    T inv = T(1) / pc;
    c[0] = q * inv, c[1] = c0 * inv, c[2] = s0, c[3] = rh0;
    T cprev = c0, hprev = h0, sprev = s0;
    // Interior rows i = 1 .. n-2: sub-diagonal h[i], diagonal 2 (x[i+1] - x[i-1]),
    // super-diagonal h[i-1]; right-hand side 3 (h[i] s[i-1] + h[i-1] s[i]).
    for (int64_t i = 1; i + 1 < n; ++i) {
        const T h = x[i + 1] - x[i], rh = T(1) / h, sl = (y[i + 1] - y[i]) * rh;
        const T a = h, b = T(2) * (x[i + 1] - x[i - 1]), r = T(3) * (h * sprev + hprev * sl);
        const T pn = b * pc - (a * cprev) * pm;
        q = r * pc - a * q;
        pm = pc;
        pc = pn;
        inv = T(1) / pc;
        T* ci = c + 4 * i;
        ci[0] = q * inv, ci[1] = hprev * pm * inv, ci[2] = sl, ci[3] = rh;
        cprev = hprev, hprev = h, sprev = sl;
        const T m = std::fabs(pc);
        if (m > big || m < tiny) {
            const int e = std::ilogb(pc);
            pc = std::ldexp(pc, -e), pm = std::ldexp(pm, -e), q = std::ldexp(q, -e);
        }
    }
    // Row n-1.
    T an = T(1), bn = T(2), rn = T(3) * sprev;
    if constexpr (BI == 2 || BI == 4) an = T(0), bn = T(1), rn = bc[1];
    if constexpr (BI == 3 || BI == 5) rn = T(3) * sprev + T(0.5) * hprev * bc[1];
    const T pn = bn * pc - (an * cprev) * pm;
    q = rn * pc - an * q;
    // Backward: d[i] = r'[i] - g[i] d[i+1], and cell i from d[i], d[i+1].
    // Two rows a step, d[i-1] = (r'[i-1] - g[i-1] r'[i]) + g[i-1] g[i] d[i+1], which
    // halves the chain of dependent operations.
    T d2 = q / pn;
    int64_t i = n - 2;
    if constexpr (std::is_same_v<T, double>) {
        // The two cells of a step side by side in one register (lane 0 cell
        // i-1, lane 1 cell i): the same operations in the same order.
        const __m128d two = _mm_set1_pd(2.0), three = _mm_set1_pd(3.0);
        for (; i >= 1; i -= 2) {
            double* c1 = c + 4 * i;
            double* c0 = c1 - 4;
            const double d1 = c1[0] - c1[1] * d2;
            const double d0 = (c0[0] - c0[1] * c1[0]) + (c0[1] * c1[1]) * d2;
            const __m128d a0 = _mm_loadu_pd(c0 + 2), a1 = _mm_loadu_pd(c1 + 2);
            const __m128d sl = _mm_unpacklo_pd(a0, a1), rh = _mm_unpackhi_pd(a0, a1);
            const __m128d da = _mm_set_pd(d1, d0), db = _mm_set_pd(d2, d1);
            const __m128d k2 = _mm_mul_pd(_mm_sub_pd(_mm_sub_pd(_mm_mul_pd(three, sl), _mm_mul_pd(two, da)), db), rh);
            const __m128d k3 = _mm_mul_pd(_mm_mul_pd(_mm_sub_pd(_mm_add_pd(da, db), _mm_mul_pd(two, sl)), rh), rh);
            const __m128d yv = _mm_set_pd(y[i], y[i - 1]);
            _mm_storeu_pd(c0, _mm_unpacklo_pd(yv, da));
            _mm_storeu_pd(c1, _mm_unpackhi_pd(yv, da));
            _mm_storeu_pd(c0 + 2, _mm_unpacklo_pd(k2, k3));
            _mm_storeu_pd(c1 + 2, _mm_unpackhi_pd(k2, k3));
            d2 = d0;
        }
    }
    for (; i >= 1; i -= 2) {
        T* c1 = c + 4 * i;
        T* c0 = c1 - 4;
        const T d1 = c1[0] - c1[1] * d2;
        const T d0 = (c0[0] - c0[1] * c1[0]) + (c0[1] * c1[1]) * d2;
        cubic_cell(c1, y[i], c1[2], d1, d2, c1[3]);
        cubic_cell(c0, y[i - 1], c0[2], d0, d1, c0[3]);
        d2 = d0;
    }
    if (i == 0) cubic_cell(c, y[0], c[2], c[0] - c[1] * d2, d2, c[3]);
}

// The same system for one function in double precision, eliminated from
// both ends at once ("burn at both ends", a twisted factorisation): lane 0 of
// each SSE2 register runs the forward pass above down from row 0, lane 1 runs
// it up from row n-1 on the mirrored problem (x -> -x, so slopes and
// derivatives change sign and row n-1 reads as a first row), with the same
// operations a lane as the one-row pass. The lanes meet at rows k and k+1,
// where d[k] = E[k] - G[k] d[k+1] from above and d[k+1] = -E'[k+1] - G'[k+1] d[k]
// from below give d[k+1]; the backward pass then runs outwards in both lanes.
// Lane 0 leaves row i in cell i, lane 1 leaves its row j in cell j-1. Each
// lane's minors are rescaled on their own. Needs n >= 6.
template <bool Cols, int BI>
void natural_two_ended(const DFTask* t, const double* x, int64_t n, double* c) {
    const auto y = values_of<double, Cols>(t, 0);
    const double* bc = static_cast<const double*>(t->bc);
    const __m128d big = _mm_set1_pd(0x1p512), tiny = _mm_set1_pd(0x1p-512);
    const __m128d one = _mm_set1_pd(1.0), two = _mm_set1_pd(2.0), three = _mm_set1_pd(3.0);
    const __m128d hisign = _mm_set_pd(-0.0, 0.0);
    const __m128d absm = _mm_castsi128_pd(_mm_set1_epi64x(0x7fffffffffffffffLL));
    auto pair = [](double lo, double hi) { return _mm_set_pd(hi, lo); };
    auto lo = [](__m128d v) { return _mm_cvtsd_f64(v); };
    auto hi = [](__m128d v) { return _mm_cvtsd_f64(_mm_unpackhi_pd(v, v)); };
    const int64_t half = n / 2;
    // Rows 0 and n-1 (mirrored): diagonal b, super-diagonal cc, right-hand side r.
    __m128d Xp = _mm_xor_pd(pair(x[0], x[n - 1]), hisign), Xc = _mm_xor_pd(pair(x[1], x[n - 2]), hisign);
    __m128d Yc = pair(y[1], y[n - 2]);
    __m128d h = _mm_sub_pd(Xc, Xp), rh = _mm_div_pd(one, h);
    __m128d sl = _mm_mul_pd(_mm_sub_pd(Yc, pair(y[0], y[n - 1])), rh);
    double b0 = 2.0, c0 = 1.0, r0 = 3.0 * lo(sl), bn = 2.0, an = 1.0, rn = 3.0 * hi(sl);
    if constexpr (BI == 2 || BI == 3) b0 = 1.0, c0 = 0.0, r0 = bc[0];
    if constexpr (BI == 4 || BI == 5) r0 = 3.0 * lo(sl) - 0.5 * lo(h) * bc[0];
    if constexpr (BI == 2 || BI == 4) bn = 1.0, an = 0.0, rn = -bc[1];
    if constexpr (BI == 3 || BI == 5) rn = 3.0 * hi(sl) - 0.5 * hi(h) * bc[1];
    __m128d cprev = pair(c0, an), pm = one, pc = pair(b0, bn), q = pair(r0, rn);
    __m128d inv = _mm_div_pd(one, pc), E = _mm_mul_pd(q, inv), G = _mm_mul_pd(cprev, inv);
    _mm_storeu_pd(c + 4 * (n - 2), _mm_unpackhi_pd(E, G));
    _mm_storeu_pd(c + 4 * (n - 2) + 2, _mm_unpackhi_pd(sl, rh));
    _mm_storeu_pd(c, _mm_unpacklo_pd(E, G));
    _mm_storeu_pd(c + 2, _mm_unpacklo_pd(sl, rh));
    __m128d hprev = h, sprev = sl;
    // Interior rows i (lane 0) and j = n-1-i (lane 1) while i < j.
    for (int64_t i = 1; i < half; ++i) {
        const int64_t j = n - 1 - i;
        const __m128d Xn = _mm_xor_pd(pair(x[i + 1], x[j - 1]), hisign), Yn = pair(y[i + 1], y[j - 1]);
        h = _mm_sub_pd(Xn, Xc), rh = _mm_div_pd(one, h), sl = _mm_mul_pd(_mm_sub_pd(Yn, Yc), rh);
        const __m128d b = _mm_mul_pd(two, _mm_sub_pd(Xn, Xp));
        const __m128d r = _mm_mul_pd(three, _mm_add_pd(_mm_mul_pd(h, sprev), _mm_mul_pd(hprev, sl)));
        const __m128d pn = _mm_sub_pd(_mm_mul_pd(b, pc), _mm_mul_pd(_mm_mul_pd(h, cprev), pm));
        q = _mm_sub_pd(_mm_mul_pd(r, pc), _mm_mul_pd(h, q));
        pm = pc, pc = pn, inv = _mm_div_pd(one, pc);
        E = _mm_mul_pd(q, inv), G = _mm_mul_pd(_mm_mul_pd(hprev, pm), inv);
        // Lane 1 first: at the last step its cell is lane 0's next one.
        _mm_storeu_pd(c + 4 * (j - 1), _mm_unpackhi_pd(E, G));
        _mm_storeu_pd(c + 4 * (j - 1) + 2, _mm_unpackhi_pd(sl, rh));
        _mm_storeu_pd(c + 4 * i, _mm_unpacklo_pd(E, G));
        _mm_storeu_pd(c + 4 * i + 2, _mm_unpacklo_pd(sl, rh));
        cprev = hprev, hprev = h, sprev = sl, Xp = Xc, Xc = Xn, Yc = Yn;
        const __m128d m = _mm_and_pd(pc, absm);
        if (_mm_movemask_pd(_mm_or_pd(_mm_cmpgt_pd(m, big), _mm_cmplt_pd(m, tiny))) != 0) {
            alignas(16) double P[2], M[2], Q[2];
            _mm_store_pd(P, pc), _mm_store_pd(M, pm), _mm_store_pd(Q, q);
            for (int l = 0; l < 2; ++l) {
                const int e = std::ilogb(P[l]);
                P[l] = std::ldexp(P[l], -e), M[l] = std::ldexp(M[l], -e), Q[l] = std::ldexp(Q[l], -e);
            }
            pc = _mm_load_pd(P), pm = _mm_load_pd(M), q = _mm_load_pd(Q);
        }
    }
    double Ek = lo(E), Gk = lo(G);
    const double Eb = hi(E), Gb = hi(G);
    int64_t k = half - 1;
    if (n & 1) {
        // The middle row, lane 0 alone.
        k = half;
        const double hk = x[k + 1] - x[k], rk = 1.0 / hk, sk = (y[k + 1] - y[k]) * rk;
        const double bk = 2.0 * (x[k + 1] - x[k - 1]), r = 3.0 * (hk * lo(sprev) + lo(hprev) * sk);
        const double pn = bk * lo(pc) - (hk * lo(cprev)) * lo(pm), qk = r * lo(pc) - hk * lo(q);
        const double ik = 1.0 / pn;
        Ek = qk * ik, Gk = lo(hprev) * lo(pc) * ik;
        c[4 * k] = Ek, c[4 * k + 1] = Gk, c[4 * k + 2] = sk, c[4 * k + 3] = rk;
    }
    const double dk1 = -(Eb + Gb * Ek) / (1.0 - Gb * Gk);  // d[k+1]
    // Backward: lane 0 d[i] = E[i] - G[i] d[i+1] and cell i, lane 1 the mirrored
    // d'[j] = E'[j] - G'[j] d'[j-1] and cell j-1 with the signs turned back.
    __m128d D = pair(dk1, -dk1);
    const int64_t steps = n - 2 - k;
    for (int64_t u = 0; u < steps; ++u) {
        const int64_t i = k - u, jc = k + 1 + u;
        const __m128d Lt = _mm_loadu_pd(c + 4 * i), Lb = _mm_loadu_pd(c + 4 * jc);
        const __m128d St = _mm_loadu_pd(c + 4 * i + 2), Sb = _mm_loadu_pd(c + 4 * jc + 2);
        const __m128d s = _mm_unpacklo_pd(St, Sb), rv = _mm_unpackhi_pd(St, Sb);
        const __m128d Dn = _mm_sub_pd(_mm_unpacklo_pd(Lt, Lb), _mm_mul_pd(_mm_unpackhi_pd(Lt, Lb), D));
        // Left and right derivative of each lane's cell.
        const __m128d da = _mm_move_sd(D, Dn), db = _mm_move_sd(Dn, D);
        // 3s - 2da - db = u - w and da + db - 2s = w, u = s - da, w = (db - s) - u.
        const __m128d uu = _mm_sub_pd(s, da), w = _mm_sub_pd(_mm_sub_pd(db, s), uu);
        const __m128d rs = _mm_xor_pd(rv, hisign);
        const __m128d k2 = _mm_mul_pd(_mm_sub_pd(uu, w), rs), k3 = _mm_mul_pd(_mm_mul_pd(w, rv), rs);
        const __m128d c1 = _mm_xor_pd(da, hisign), yv = pair(y[i], y[jc]);
        _mm_storeu_pd(c + 4 * i, _mm_unpacklo_pd(yv, c1));
        _mm_storeu_pd(c + 4 * i + 2, _mm_unpacklo_pd(k2, k3));
        _mm_storeu_pd(c + 4 * jc, _mm_unpackhi_pd(yv, c1));
        _mm_storeu_pd(c + 4 * jc + 2, _mm_unpackhi_pd(k2, k3));
        D = Dn;
    }
    double d1 = lo(D);
    for (int64_t i = k - steps; i >= 0; --i) {
        double* ci = c + 4 * i;
        const double d0 = ci[0] - ci[1] * d1;
        cubic_cell(ci, y[i], ci[2], d0, d1, ci[3]);
        d1 = d0;
    }
}

template <typename T, bool Cols, bool Uniform, int BI>
int natural_worker(const DFTask* t) {
    const Grid<T> g = grid_of<T>(t);
    const int64_t n = g.n, ny = functions(t);
    const T* x = g.x;
    const T* bc = static_cast<const T*>(t->bc);
    if (BI == 6) {
        for (int64_t k = 0; k < ny; ++k) {
            const auto y = values_of<T, Cols>(t, k);
            if (!(y[0] == y[n - 1])) return DF_NOT_PERIODIC;
        }
    }
    if (n > INT_MAX / 2) return DF_NO_MEMORY;
    const bool small = n == 2 || (n == 3 && (BI == 0 || BI == 1));
    const int64_t m = BI == 6 ? n - 1 : n;  // order of the system
    const int64_t at = 3 * n - 4;           // derivatives within a block
    bool increasing = Uniform ? g.h > T(0) : true;
    if constexpr (!Uniform) increasing = strictly_increasing(x, n);
    const bool host = !small && increasing && BI != 0;
    if constexpr (!Uniform && BI >= 1 && BI <= 5) {
        if (host && ny == 1) {
            if constexpr (std::is_same_v<T, double>)
                if (n >= 6) {
                    natural_two_ended<Cols, BI>(t, x, n, coeff_of<T>(t, 0));
                    return DF_OK;
                }
            natural_fused<T, Cols, BI>(t, x, n, coeff_of<T>(t, 0));
            return DF_OK;
        }
    }
    const int64_t rh_len = Uniform ? 0 : n - 1;
    const int64_t band_len = small ? 0 : (host ? m : 3 * m);
    const int64_t z_len = BI == 6 && !small ? m : 0;
    T* work = scratch<T>(rh_len + band_len + z_len + 1);
    if (work == nullptr) return DF_NO_MEMORY;
    T* rh_store = work;
    auto rh = [&](int64_t i) { if constexpr (Uniform) return g.r; else return rh_store[i]; };
    auto h = [&](int64_t i) { if constexpr (Uniform) return g.h; else return x[i + 1] - x[i]; };
    if constexpr (!Uniform)
        for (int64_t i = 0; i + 1 < n; ++i) rh_store[i] = T(1) / (x[i + 1] - x[i]);
    T* dd = work + rh_len;
    T* dl = host ? coeff_of<T>(t, 0) : dd + m;
    T* du = dl + m;
    T* z = work + rh_len + band_len;
    auto span = [&](int64_t i) { return Uniform ? g.h + g.h : x[i + 1] - x[i - 1]; };
    if (!small) {
        // Interior rows: continuity of the second derivative at x[i].
        for (int64_t i = 1; i + 1 < n; ++i) {
            dl[i - 1] = h(i);
            dd[i] = T(2) * span(i);
            du[i] = h(i - 1);
        }
        if constexpr (BI == 6) {
            // Cyclic rows 0 and m-1 with the corners h[0] and h[n-3] moved
            // into the rank-one term u v^T, u = (h[0], 0.., h[n-3]), v = (1, 0.., 1).
            dd[0] = T(2) * (h(n - 2) + h(0)) - h(0);
            du[0] = h(n - 2);
            if (m > 1) {
                dl[m - 2] = h(n - 2);
                dd[m - 1] = T(2) * (h(n - 3) + h(n - 2)) - h(n - 3);
            }
        } else {
            if constexpr (BI == 0) {
                dd[0] = h(1);
                du[0] = Uniform ? g.h + g.h : x[2] - x[0];
                dl[n - 2] = Uniform ? g.h + g.h : x[n - 1] - x[n - 3];
                dd[n - 1] = h(n - 3);
            }
            if constexpr (BI == 1 || BI == 4 || BI == 5) dd[0] = T(2), du[0] = T(1);
            if constexpr (BI == 2 || BI == 3) dd[0] = T(1), du[0] = T(0);
            if constexpr (BI == 1 || BI == 3 || BI == 5) dl[n - 2] = T(1), dd[n - 1] = T(2);
            if constexpr (BI == 2 || BI == 4) dl[n - 2] = T(0), dd[n - 1] = T(1);
        }
        int info = 0;
        Tridiag<T>::factor(static_cast<int>(m), dl, dd, du, &info);
        if (info != 0) {
            orv_serv_deallocate(work);
            return DF_SOLVER_FAILED;
        }
    }
    // Right-hand sides, one column per function.
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* b = coeff_of<T>(t, k) + at;
        if (small) {
            T s[2], hs[2];
            for (int64_t i = 0; i + 1 < n; ++i) s[i] = (y[i + 1] - y[i]) * rh(i), hs[i] = h(i);
            small_derivatives<T, BI>(n, hs, s, b);
            continue;
        }
        // Slopes first, then the interior rows from them, from the top down
        // so that each row still reads the slopes it needs.
        for (int64_t i = 0; i + 1 < n; ++i) b[i] = (y[i + 1] - y[i]) * rh(i);
        for (int64_t i = n - 2; i >= 1; --i) b[i] = T(3) * (h(i) * b[i - 1] + h(i - 1) * b[i]);
        const T s0 = (y[1] - y[0]) * rh(0), s1 = (y[2] - y[1]) * rh(1);
        const T sl = (y[n - 1] - y[n - 2]) * rh(n - 2), sl1 = (y[n - 2] - y[n - 3]) * rh(n - 3);
        if constexpr (BI == 6) {
            b[0] = T(3) * (h(0) * sl + h(n - 2) * s0);
        } else {
            if constexpr (BI == 0) {
                const T H = Uniform ? g.h + g.h : x[2] - x[0];
                const T Hl = Uniform ? g.h + g.h : x[n - 1] - x[n - 3];
                const T a = h(n - 3), bb = h(n - 2), h0 = h(0), h1 = h(1);
                b[0] = (s1 * h0 * h0 + s0 * h1 * (T(2) * H + h0)) / H;
                b[n - 1] = (sl1 * bb * bb + sl * a * (T(2) * Hl + bb)) / Hl;
            }
            if constexpr (BI == 1) b[0] = T(3) * s0, b[n - 1] = T(3) * sl;
            if constexpr (BI == 2 || BI == 3) b[0] = bc[0];
            if constexpr (BI == 2 || BI == 4) b[n - 1] = bc[1];
            if constexpr (BI == 4 || BI == 5) b[0] = T(3) * s0 - T(0.5) * h(0) * bc[0];
            if constexpr (BI == 3 || BI == 5) b[n - 1] = T(3) * sl + T(0.5) * h(n - 2) * bc[1];
        }
    }
    if (!small) {
        int info = solve_columns<T>(t, ny, m, at, dl, dd, du);
        if constexpr (BI == 6) {
            for (int64_t i = 0; i < m; ++i) z[i] = T(0);
            z[0] = h(0);
            z[m - 1] += h(n - 3);
            if (info == 0)
                Tridiag<T>::solve(static_cast<int>(m), 1, dl, dd, du, z, static_cast<int>(m), &info);
            const T f = T(1) / (z[0] + T(1) + z[m - 1]);
            for (int64_t k = 0; k < ny; ++k) {
                T* b = coeff_of<T>(t, k) + at;
                const T c = (b[0] + b[m - 1]) * f;
                for (int64_t i = 0; i < m; ++i) b[i] -= c * z[i];
                b[n - 1] = b[0];
            }
        }
        if (info != 0) {
            orv_serv_deallocate(work);
            return DF_SOLVER_FAILED;
        }
    }
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* c = coeff_of<T>(t, k);
        const T* d = c + at;
        T d0 = d[0];
        for (int64_t i = 0; i + 1 < n; ++i) {
            const T d1 = d[i + 1];
            cubic_cell(c + 4 * i, y[i], (y[i + 1] - y[i]) * rh(i), d0, d1, rh(i));
            d0 = d1;
        }
    }
    orv_serv_deallocate(work);
    return DF_OK;
}

template <typename T, bool Cols, bool Uniform>
struct NaturalRow {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker row[7] = {
        natural_worker<T, Cols, Uniform, 0>, natural_worker<T, Cols, Uniform, 1>,
        natural_worker<T, Cols, Uniform, 2>, natural_worker<T, Cols, Uniform, 3>,
        natural_worker<T, Cols, Uniform, 4>, natural_worker<T, Cols, Uniform, 5>,
        natural_worker<T, Cols, Uniform, 6>};
};

template <typename T>
int natural_entry(DFTask* t, int64_t method) {
    using Worker = int (*)(const DFTask*);
    static constexpr const Worker* kWorkers[2][2] = {
        {NaturalRow<T, true, false>::row, NaturalRow<T, true, true>::row},
        {NaturalRow<T, false, false>::row, NaturalRow<T, false, true>::row}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (method != 0) return DF_BAD_METHOD;
    if (t->nx < 2 || (t->nx == 2 && t->bc_type == DF_BC_NOT_A_KNOT)) return DF_BAD_NX;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    const int bi = boundary_index(t->bc_type);
    if (bi < 0 || bi == 7) return DF_BAD_BC_TYPE;
    if (t->bc == nullptr) {
        if (boundary_needs_values(bi)) return DF_NULL_BC;
        if (bi == 6 && (t->stype == 0 || t->stype == 3)) return DF_NULL_BC;
    }
    if (const int st = check_build(t, 4); st != DF_OK) return st;
    return kWorkers[layout_row(t->yhint)][is_uniform(t->xhint)][bi](t);
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<double>(t, method);
}
ORV_EXPORT int orv_df_kernel_sDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<float>(t, method);
}
