// Cubic splines whose breakpoint derivatives come from local data (Akima,
// Bessel, Hyman) or from the caller (Hermite). The work is cut into tiles of
// 4 functions by up to 2048 cells, spread over the teams of DFThreadOps;
// each team has its own scratch and writes disjoint cells. A family supplies
// the interior derivative and its periodic and no-condition end rules.
#ifndef ORV_DATAFIT_LOCAL_CUBIC_H
#define ORV_DATAFIT_LOCAL_CUBIC_H

#include "datafit/df_task.h"

#include <emmintrin.h>

#include <cmath>
#include <type_traits>

namespace orv::df {

enum class Local { Akima, Bessel, Hyman, Hermite };

constexpr int64_t local_min_nx(Local f) {
    return f == Local::Akima ? 5 : f == Local::Hyman ? 4 : 3;
}
constexpr int64_t local_margin(Local f) { return f == Local::Akima ? 5 : 3; }

constexpr int64_t kTileFunctions = 4;
constexpr int64_t kTileCells = 2048;
// A team walks its run in chunks of this many cells, so that its scratch
// stays small (a few pages) whatever the run; the arithmetic of a cell does
// not depend on the chunk.
constexpr int64_t kChunkCells = 256;

// Quantities near both ends of one function, for the end routines.
template <typename T>
struct Ends {
    T y0, y1, y2, yl, yl1, yl2;  // y[0..2], y[n-1], y[n-2], y[n-3]
    T h0, h1, hl, hl1;           // h[0], h[1], h[n-2], h[n-3]
    T s0, s1, sl, sl1;           // s[0], s[1], s[n-2], s[n-3]
    T H0, Hl;                    // x[2] - x[0], x[n-1] - x[n-3]
    T r;                         // 1/h on a uniform partition
};

template <typename T, bool Uniform, typename V>
Ends<T> ends_of(const Grid<T>& g, const V& y) {
    const int64_t n = g.n;
    Ends<T> e;
    e.y0 = y[0], e.y1 = y[1], e.y2 = y[2];
    e.yl = y[n - 1], e.yl1 = y[n - 2], e.yl2 = y[n - 3];
    if constexpr (Uniform) {
        e.h0 = e.h1 = e.hl = e.hl1 = g.h;
        e.H0 = e.Hl = g.h + g.h;
        e.r = g.r;
        e.s0 = (e.y1 - e.y0) * g.r;
        e.s1 = (e.y2 - e.y1) * g.r;
        e.sl = (e.yl - e.yl1) * g.r;
        e.sl1 = (e.yl1 - e.yl2) * g.r;
    } else {
        const T* x = g.x;
        e.h0 = x[1] - x[0], e.h1 = x[2] - x[1];
        e.hl = x[n - 1] - x[n - 2], e.hl1 = x[n - 2] - x[n - 3];
        e.H0 = x[2] - x[0], e.Hl = x[n - 1] - x[n - 3];
        e.r = T(0);
        e.s0 = (e.y1 - e.y0) * (T(1) / e.h0);
        e.s1 = (e.y2 - e.y1) * (T(1) / e.h1);
        e.sl = (e.yl - e.yl1) * (T(1) / e.hl);
        e.sl1 = (e.yl1 - e.yl2) * (T(1) / e.hl1);
    }
    return e;
}

// Periodic end derivative of Akima: the Akima weights across the joint of
// the period, slopes s[n-3], s[n-2] on the left and s[0], s[1] on the right.
template <typename T>
T akima_periodic(const Ends<T>& e) {
    const T w1 = std::fabs(e.sl - e.sl1), w2 = std::fabs(e.s1 - e.s0);
    if (std::fabs(w1 + w2) >= akima_eps<T>()) return (w1 * e.s0 + w2 * e.sl) / (w1 + w2);
    return (e.sl + e.s0) * T(0.5);
}

// Left end derivative d[0] for boundary index bi, given d[1].
template <typename T, Local F, bool Uniform>
T left_end(int bi, const Ends<T>& e, T d1, const DFTask* t) {
    switch (bi) {
        case 0:  // not-a-knot: cells 0 and 1 are one cubic
            if constexpr (Uniform)
                return e.r * T(0.5) * (e.y2 + T(4) * e.y1 - T(5) * e.y0) - T(2) * d1;
            else
                return ((e.s1 * e.h0 * e.h0 + e.s0 * e.h1 * (T(2) * e.H0 + e.h0)) / e.H0 -
                        e.H0 * d1) / e.h1;
        case 1: return T(1.5) * e.s0 - T(0.5) * d1;
        case 2:
        case 3: return bc_value<T>(t, 0);
        case 4:
        case 5:
            if constexpr (Uniform)
                return T(1.5) * e.s0 - T(0.5) * d1 - T(0.25) * bc_value<T>(t, 0) / e.r;
            else
                return T(1.5) * e.s0 - T(0.5) * d1 - T(0.25) * e.h0 * bc_value<T>(t, 0);
        case 6:
            if constexpr (F == Local::Akima) return akima_periodic(e);
            else if constexpr (F == Local::Hermite) return bc_value<T>(t, 0);
            else if constexpr (Uniform)
                return e.r * T(0.5) * ((e.y1 + e.yl) - (e.y0 + e.yl1));
            else
                return (e.hl * e.s0 + ((e.yl - e.yl1) * e.h0) / e.hl) / (e.h0 + e.hl);
        default: return (T(3) * e.s0 - e.s1) * T(0.5);  // no condition (Akima)
    }
}

// Right end derivative d[n-1] for boundary index bi, given d[n-2].
template <typename T, Local F, bool Uniform>
T right_end(int bi, const Ends<T>& e, T dl1, const DFTask* t) {
    switch (bi) {
        case 0:
            if constexpr (Uniform)
                return e.r * T(0.5) * (T(5) * e.yl - T(4) * e.yl1 - e.yl2) - T(2) * dl1;
            else
                return ((e.sl1 * e.hl * e.hl + e.sl * e.hl1 * (T(2) * e.Hl + e.hl)) / e.Hl -
                        e.Hl * dl1) / e.hl1;
        case 1: return T(1.5) * e.sl - T(0.5) * dl1;
        case 2:
        case 4: return bc_value<T>(t, 1);
        case 3:
        case 5:
            if constexpr (Uniform)
                return T(1.5) * e.sl - T(0.5) * dl1 + T(0.25) * bc_value<T>(t, 1) / e.r;
            else
                return T(1.5) * e.sl - T(0.5) * dl1 + T(0.25) * e.hl * bc_value<T>(t, 1);
        case 6: return left_end<T, F, Uniform>(6, e, dl1, t);  // one derivative at the joint
        default: return (T(3) * e.sl - e.sl1) * T(0.5);
    }
}

// Interior derivative at breakpoint i from the slopes s and steps h around it.
template <typename T, Local F>
inline T interior(const T* s, const T* h, const T* x, const T* ic, int64_t i, int64_t n,
                  bool uniform) {
    if constexpr (F == Local::Hermite) {
        return ic[i - 1];
    } else {
        // Bessel: the slope at x[i] of the parabola through three points.
        const T span = uniform ? h[i - 1] + h[i] : x[i + 1] - x[i - 1];
        const T d = (h[i] * s[i - 1] + h[i - 1] * s[i]) / span;
        if constexpr (F == Local::Bessel) {
            return d;
        } else {
            // Fritsch-Carlson/Hyman monotone filter.
            if (s[i - 1] * s[i] <= T(0)) return T(0);
            const T m = T(3) * std::fmin(std::fabs(s[i - 1]), std::fabs(s[i]));
            const T a = std::fabs(d) < m ? std::fabs(d) : m;
            return std::copysign(a, d);
        }
    }
}

struct LocalArgs {
    const DFTask* task;
    int bi;
    int64_t groups, runs, run_cells, team_scratch;
    void* scratch;
};

template <typename T, Local F, bool Cols, bool Uniform>
void local_chunk(const LocalArgs& a, int64_t grp, int64_t c_lo, int64_t c_hi, T* work) {
    const DFTask* t = a.task;
    const Grid<T> g = grid_of<T>(t);
    const int64_t n = g.n, ny = functions(t);
    // Slopes are needed from two cells left of the run to one cell right of it.
    const int64_t lo = c_lo >= 2 ? c_lo - 2 : 0;
    const int64_t hi = c_hi + 1 <= n - 2 ? c_hi + 1 : n - 2;
    const int64_t len = hi - lo + 1;
    T* h = work - lo;
    T* rh = work + len - lo;
    T* s = work + 2 * len - lo;
    T* d = work + 3 * len - lo;
    const T* x = g.x;
    for (int64_t i = lo; i <= hi; ++i) {
        if constexpr (Uniform) {
            h[i] = g.h;
            rh[i] = g.r;
        } else {
            h[i] = x[i + 1] - x[i];
            rh[i] = T(1) / h[i];
        }
    }
    const T* ic = static_cast<const T*>(t->ic);
    const int64_t k_end = (grp + 1) * kTileFunctions < ny ? (grp + 1) * kTileFunctions : ny;
    for (int64_t k = grp * kTileFunctions; k < k_end; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        for (int64_t i = lo; i <= hi; ++i) s[i] = (y[i + 1] - y[i]) * rh[i];
        const int64_t i_lo = c_lo > 1 ? c_lo : 1, i_hi = c_hi < n - 2 ? c_hi : n - 2;
        if constexpr (F == Local::Akima) {
            // Akima 1970 with the differences W[i] = |s[i] - s[i-1]| formed
            // once; the missing outer ones take the nearest (W[0] = W[1],
            // W[n-1] = W[n-2]).
            T* w = work + 4 * len - lo;
            for (int64_t i = lo + 1; i <= hi; ++i) w[i] = std::fabs(s[i] - s[i - 1]);
            if (lo == 0) w[0] = w[1];
            if (hi == n - 2) w[n - 1] = w[n - 2];
            int64_t i = i_lo;
            if constexpr (std::is_same_v<T, double>) {
                // Two derivatives a step with one packed division; a lane whose
                // weights vanish divides by 1 and takes the mean instead, so no
                // flag is raised and each lane's arithmetic is the scalar one.
                const __m128d eps = _mm_set1_pd(akima_eps<double>()), one = _mm_set1_pd(1.0),
                              half = _mm_set1_pd(0.5);
                for (; i + 1 <= i_hi; i += 2) {
                    const __m128d wr = _mm_loadu_pd(w + i + 1), wl = _mm_loadu_pd(w + i - 1);
                    const __m128d sl = _mm_loadu_pd(s + i - 1), sr = _mm_loadu_pd(s + i);
                    const __m128d den = _mm_add_pd(wr, wl), ok = _mm_cmpge_pd(den, eps);
                    const __m128d q = _mm_div_pd(_mm_add_pd(_mm_mul_pd(wr, sl), _mm_mul_pd(wl, sr)),
                                                 _mm_or_pd(_mm_and_pd(ok, den), _mm_andnot_pd(ok, one)));
                    const __m128d mean = _mm_mul_pd(_mm_add_pd(sr, sl), half);
                    _mm_storeu_pd(d + i, _mm_or_pd(_mm_and_pd(ok, q), _mm_andnot_pd(ok, mean)));
                }
            }
            for (; i <= i_hi; ++i) {
                const T wr = w[i + 1], wl = w[i - 1], den = wr + wl;
                d[i] = den >= akima_eps<T>() ? (wr * s[i - 1] + wl * s[i]) / den
                                              : (s[i] + s[i - 1]) * T(0.5);
            }
        } else {
            for (int64_t i = i_lo; i <= i_hi; ++i)
                d[i] = interior<T, F>(s, h, x, ic, i, n, Uniform);
        }
        // A run always holds d[1] when it starts at cell 0, and d[n-2] when it
        // ends at the last cell, so the end routines need nothing more.
        if (c_lo == 0 || c_hi == n - 1) {
            const Ends<T> e = ends_of<T, Uniform>(g, y);
            if (c_lo == 0) d[0] = left_end<T, F, Uniform>(a.bi, e, d[1], t);
            if (c_hi == n - 1) d[n - 1] = right_end<T, F, Uniform>(a.bi, e, d[n - 2], t);
        }
        T* c = coeff_of<T>(t, k);
        for (int64_t i = c_lo; i < c_hi; ++i)
            cubic_cell(c + 4 * i, y[i], s[i], d[i], d[i + 1], rh[i]);
    }
}

// Cells [c_lo, c_hi) of the tile's run, chunk by chunk.
template <typename T, Local F, bool Cols, bool Uniform>
void local_tile(const LocalArgs& a, int64_t tile, T* work) {
    const int64_t n = a.task->nx;
    const int64_t grp = tile / a.runs, run = tile % a.runs;
    const int64_t c_lo = run * a.run_cells;
    int64_t c_hi = c_lo + a.run_cells;
    if (c_hi > n - 1) c_hi = n - 1;
    for (int64_t lo = c_lo; lo < c_hi; lo += kChunkCells)
        local_chunk<T, F, Cols, Uniform>(a, grp, lo, lo + kChunkCells < c_hi ? lo + kChunkCells : c_hi,
                                         work);
}

template <typename T, Local F, bool Cols, bool Uniform>
void local_body(int team, int nteams, void*, void* args) {
    const auto& a = *static_cast<const LocalArgs*>(args);
    T* work = static_cast<T*>(a.scratch) + team * a.team_scratch;
    const int64_t tiles = a.groups * a.runs;
    for (int64_t tile = team; tile < tiles; tile += nteams)
        local_tile<T, F, Cols, Uniform>(a, tile, work);
}

template <typename T, Local F, bool Cols, bool Uniform>
int local_worker(const DFTask* t, int bi, const DFThreadOps* ops) {
    const int64_t n = t->nx, ny = functions(t);
    if (bi == 6) {
        for (int64_t k = 0; k < ny; ++k) {
            const auto y = values_of<T, Cols>(t, k);
            if (!(y[0] == y[n - 1])) return DF_NOT_PERIODIC;
        }
    }
    LocalArgs a;
    a.task = t;
    a.bi = bi;
    a.groups = (ny + kTileFunctions - 1) / kTileFunctions;
    a.runs = (n - local_margin(F) + kTileCells - 1) / kTileCells;
    if (a.runs < 1) a.runs = 1;
    a.run_cells = (n - 1 + a.runs - 1) / a.runs;
    a.team_scratch = 5 * ((a.run_cells < kChunkCells ? a.run_cells : kChunkCells) + 4);
    const int64_t tiles = a.groups * a.runs;
    int64_t teams = 1;
    if (ops != nullptr && ops->max_threads != nullptr && ops->parallel_run != nullptr)
        teams = ops->max_threads();
    if (teams > tiles) teams = tiles;
    if (teams < 1) teams = 1;
    a.scratch = scratch<T>(teams * a.team_scratch);
    if (a.scratch == nullptr) return DF_NO_MEMORY;
    if (teams > 1)
        ops->parallel_run(static_cast<int>(teams), static_cast<int>(teams), &a,
                          local_body<T, F, Cols, Uniform>);
    else
        local_body<T, F, Cols, Uniform>(0, 1, nullptr, &a);
    orv_serv_deallocate(a.scratch);
    return DF_OK;
}

// Entry checks and worker choice by layout row and uniform flag.
template <typename T, Local F>
int local_entry(DFTask* t, const DFThreadOps* ops) {
    using Worker = int (*)(const DFTask*, int, const DFThreadOps*);
    static constexpr Worker kWorkers[2][2] = {
        {local_worker<T, F, true, false>, local_worker<T, F, true, true>},
        {local_worker<T, F, false, false>, local_worker<T, F, false, true>}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (t->nx < local_min_nx(F)) return DF_BAD_NX;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    const int bi = boundary_index(t->bc_type);
    if (bi < 0 || (bi == 7 && F != Local::Akima)) return DF_BAD_BC_TYPE;
    if (t->bc == nullptr) {
        if (boundary_needs_values(bi)) return DF_NULL_BC;
        if (bi == 6 && (t->stype == 0 || t->stype == 3 || F == Local::Hermite)) return DF_NULL_BC;
    }
    if (F == Local::Hermite && t->ic == nullptr) return DF_BAD_IC;
    if (const int st = check_build(t, 4); st != DF_OK) return st;
    return kWorkers[layout_row(t->yhint)][is_uniform(t->xhint)](t, bi, ops);
}

}  // namespace orv::df

#endif
