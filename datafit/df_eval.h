// What interpolation and integration share: the evaluation kind of a task,
// the checks of the tables a kind reads, the polynomial index of a cell, and
// the block-range runner over DFThreadOps.
#ifndef ORV_DATAFIT_DF_EVAL_H
#define ORV_DATAFIT_DF_EVAL_H

#include "datafit/df_search.h"

#include <algorithm>


namespace orv::df {

enum EvalKind : int {
    kEvalLinear = 0,
    kEvalQuadratic = 1,
    kEvalCubic = 2,
    kEvalKnotQuadratic = 3,
    kEvalGeneric = 4,
    kEvalStepLeft = 5,   // continuous from the left
    kEvalStepRight = 6,  // continuous from the right
    kEvalLookUp = 7,
};

// Evaluation kind from sorder and stype; -1 for an illegal pair.
inline int eval_kind(int64_t sorder, int64_t stype) {
    switch (sorder) {
        case 0: return stype == 8 ? kEvalStepLeft : stype == 7 ? kEvalStepRight
                                                : stype == 6 ? kEvalLookUp : kEvalGeneric;
        case 1: return -1;
        case 2: return kEvalLinear;
        case 3: return stype == 0 ? kEvalQuadratic : stype == 1 ? kEvalKnotQuadratic : -1;
        case 4: return stype >= 0 && stype < 10 && ((0x23D >> stype) & 1) ? kEvalCubic : -1;
        default: return sorder < 0 ? -1 : kEvalGeneric;
    }
}
inline bool reads_values(int kind) { return kind >= kEvalStepLeft; }

// The tables a kind reads must be there: DF_NULL_Y or DF_NULL_SCOEFF.
inline int check_eval_tables(const DFTask* t, int kind, bool all_callbacks) {
    if (t->x == nullptr) return DF_NULL_X;
    if (t->nx < 2) return DF_BAD_NX;
    if (all_callbacks && t->sorder == 0 && kind == kEvalGeneric) return DF_OK;
    const int64_t ny = functions(t);
    if (reads_values(kind)) {
        const int64_t need = t->yhint == DF_Y_COLUMNS ? 1 : ny;
        if (t->y == nullptr || table_slots(const_cast<void* const*>(t->y)) < need) return DF_NULL_Y;
        for (int64_t k = 0; k < need; ++k)
            if (t->y[k] == nullptr) return DF_NULL_Y;
        return DF_OK;
    }
    if (t->scoeff == nullptr || table_slots(t->scoeff) < ny) return DF_NULL_SCOEFF;
    for (int64_t k = 0; k < ny; ++k)
        if (t->scoeff[k] == nullptr) return DF_NULL_SCOEFF;
    return DF_OK;
}

// Breakpoint k, read or formed on a uniform partition.
template <typename T>
struct Breaks {
    const T* x;
    T h;
    bool uniform;
    T operator[](int64_t k) const { return uniform ? T(k) * h + x[0] : x[k]; }
    T right_end(int64_t nx) const { return uniform ? x[1] : x[nx - 1]; }
};
template <typename T>
inline Breaks<T> breaks_of(const DFTask* t) {
    const T* x = static_cast<const T*>(t->x);
    const bool u = is_uniform(t->xhint);
    return {x, u ? (x[1] - x[0]) / T(t->nx - 1) : T(0), u};
}

// Secondary knot k of the quadratic kind 1: the caller's array, or the
// midpoints with the ends at x[0] and x[nx-1].
template <typename T>
inline T knot(const DFTask* t, const Breaks<T>& b, int64_t k) {
    if (t->ic != nullptr) return static_cast<const T*>(t->ic)[k];
    if (k == 0) return b[0];
    if (k >= t->nx) return b.right_end(t->nx);
    return (b[k - 1] + b[k]) * T(0.5);
}

// Polynomial index of cell c for the polynomial kinds 0, 1, 2, 4.
inline int64_t poly_index(int64_t c, int64_t nx) {
    int64_t p = std::max<int64_t>(c, 1) - 1;
    if (c >= nx) p -= 1;
    return p;
}

// Value of function f at breakpoint p.
template <typename T>
inline T value_at(const DFTask* t, int64_t f, int64_t p) {
    if (t->yhint == DF_Y_COLUMNS) return static_cast<const T*>(t->y[0])[p * functions(t) + f];
    return static_cast<const T*>(t->y[f])[p];
}

// Step kinds: the breakpoint whose value a site in cell c reads.
template <typename T>
inline int64_t step_index(int kind, int64_t c, int64_t nx, T s, const Breaks<T>& b) {
    if (kind == kEvalStepLeft) {
        if (c <= 0) return 0;
        if (c - 1 >= nx - 1 || s == b[c - 1]) return std::min(c - 1, nx - 1);
        return c;
    }
    int64_t p = std::max<int64_t>(c, 1) - 1;
    if (s == b.right_end(nx)) p += 1;
    return std::min(p, nx - 1);
}

inline int thread_count(const DFThreadOps* ops) {
    if (ops == nullptr || ops->max_threads == nullptr || ops->parallel_run == nullptr) return 1;
    return std::clamp(ops->max_threads(), 1, 256);
}

}  // namespace orv::df

#endif
