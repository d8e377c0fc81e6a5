// The spline task record and what the editors and constructors share:
// the code tests, the owned pointer tables, the views of function values,
// the look-up table builder and the entry checks of the constructors.
#ifndef ORV_DATAFIT_DF_TASK_H
#define ORV_DATAFIT_DF_TASK_H

#include <orv/datafit.h>
#include <orv/orv_core.h>
#include <orv/threading.h>

#include <cstddef>
#include <cstdint>

#include "frame/export.h"

static_assert(sizeof(DFTask) == 160, "DFTask is 160 bytes");
static_assert(offsetof(DFTask, marker) == 4);
static_assert(offsetof(DFTask, is_double) == 8);
static_assert(offsetof(DFTask, dimension) == 12);
static_assert(offsetof(DFTask, nx) == 16);
static_assert(offsetof(DFTask, x) == 24);
static_assert(offsetof(DFTask, xhint) == 32);
static_assert(offsetof(DFTask, ny) == 40);
static_assert(offsetof(DFTask, y) == 48);
static_assert(offsetof(DFTask, yhint) == 56);
static_assert(offsetof(DFTask, sorder) == 64);
static_assert(offsetof(DFTask, stype) == 72);
static_assert(offsetof(DFTask, ic_type) == 80);
static_assert(offsetof(DFTask, ic) == 88);
static_assert(offsetof(DFTask, bc_type) == 96);
static_assert(offsetof(DFTask, bc) == 104);
static_assert(offsetof(DFTask, scoeff) == 112);
static_assert(offsetof(DFTask, scoeffhint) == 120);
static_assert(offsetof(DFTask, flag23) == 128);
static_assert(offsetof(DFTask, lut_size) == 136);
static_assert(offsetof(DFTask, lut) == 144);
static_assert(offsetof(DFTask, lut_scale) == 152);

namespace orv::df {


// Layout codes: rotate right by 4 bits, at most 8, and its bit set in 0x107
// (accepts 0, 0x10, 0x20, 0x80 only).
inline bool layout_legal(int64_t hint) {
    const uint64_t v = static_cast<uint64_t>(hint);
    const uint64_t r = (v >> 4) | (v << 60);
    return r <= 8 && ((0x107u >> r) & 1u) != 0;
}
inline bool is_uniform(int64_t xhint) { return (xhint & 4) != 0; }
inline bool xhint_legal(int64_t xhint) {
    return xhint == 0 || xhint == 1 || xhint == 2 || xhint == 4;
}
// Row of the worker tables: columns layout 0, the others 1.
inline int layout_row(int64_t yhint) { return yhint == DF_Y_COLUMNS ? 0 : 1; }
inline int64_t functions(const DFTask* t) { return t->ny < 1 ? 1 : t->ny; }

// Boundary index of a bc_type: 0..7, or -1 for a code without a worker.
inline int boundary_index(int64_t bc_type) {
    switch (bc_type) {
        case 0x01: return 0;
        case 0x02: return 1;
        case 0x0C: return 2;
        case 0x24: return 3;
        case 0x18: return 4;
        case 0x30: return 5;
        case 0x40: return 6;
        case 0x00: return 7;
        default: return -1;
    }
}
inline bool boundary_needs_values(int index) { return index >= 2 && index <= 5; }

// Owned pointer tables keep their slot count in a header word before slot 0,
// so that editors and constructors never read past the end.
void** table_new(int64_t slots);
void table_free(void** table);
int64_t table_slots(void* const* table);

// Rebuilds the y table from slot 0 by the layout (rows: spacing nx; columns:
// one slot; separate: old slots kept). Returns DF_OK or DF_NO_MEMORY.
int rebuild_y_table(DFTask* t);
// Rebuilds the coefficient table from slot 0 by scoeffhint and the spacing
// of the spline kind. Returns DF_OK or DF_NO_MEMORY.
int rebuild_scoeff_table(DFTask* t);
int64_t scoeff_spacing(const DFTask* t);

// Builds the breakpoint look-up table in the task's precision, releasing an
// old one. Returns DF_OK or DF_NO_MEMORY (the field is then null).
int build_lut(DFTask* t);

// Function values of function k: value i at base[i*stride] in the columns
// layout (Cols), at base[i] otherwise.
template <typename T, bool Cols>
struct Values {
    const T* base;
    int64_t stride;
    T operator[](int64_t i) const {
        if constexpr (Cols) return base[i * stride];
        else return base[i];
    }
};

// Value view of function k; Cols is the columns layout (row 0).
template <typename T, bool Cols>
inline Values<T, Cols> values_of(const DFTask* t, int64_t k) {
    if constexpr (Cols)
        return {static_cast<const T*>(t->y[0]) + k, functions(t)};
    else
        return {static_cast<const T*>(t->y[k]), 1};
}

// The breakpoints: x[i] on a non-uniform partition, x0 + i*h on a uniform one.
template <typename T>
struct Grid {
    const T* x;
    int64_t n;
    T h, r;  // uniform step and its reciprocal
};
template <typename T>
inline Grid<T> grid_of(const DFTask* t) {
    Grid<T> g{static_cast<const T*>(t->x), t->nx, T(0), T(0)};
    if (is_uniform(t->xhint)) {
        g.h = (g.x[1] - g.x[0]) / T(t->nx - 1);
        g.r = T(1) / g.h;
    }
    return g;
}

// Tests that every table slot the constructor will read or write is there:
// DF_NULL_Y for a missing value block, DF_NULL_SCOEFF for a missing
// coefficient block.
int check_tables(const DFTask* t);

// Boundary value b of the task (bc[b]).
template <typename T>
inline T bc_value(const DFTask* t, int b) {
    return static_cast<const T*>(t->bc)[b];
}

// Coefficient block of function k.
template <typename T>
inline T* coeff_of(const DFTask* t, int64_t k) {
    return static_cast<T*>(t->scoeff[k]);
}

// Scratch of n elements of T from orv_serv_allocate, or null (also when n
// elements would not fit in memory).
template <typename T>
inline T* scratch(int64_t n) {
    if (n < 0 || n > PTRDIFF_MAX / static_cast<int64_t>(sizeof(T))) return nullptr;
    return static_cast<T*>(orv_serv_allocate(static_cast<size_t>(n) * sizeof(T), orv::kAlignment));
}

// Product of non-negative counts, or -1 when it exceeds what one block of
// memory can hold (PTRDIFF_MAX bytes).
inline int64_t checked_product(int64_t a, int64_t b) {
    int64_t r;
    if (a < 0 || b < 0 || __builtin_mul_overflow(a, b, &r)) return -1;
    return r;
}

// Tests that the blocks a task with these counts addresses fit in memory:
// the pointer table of ny slots, nx*ny values and nx*sorder coefficients of
// each function, in the task's precision. DF_OK or DF_NO_MEMORY, so that a
// count that would wrap a size is refused before any memory is touched.
int check_sizes(const DFTask* t, int64_t nx, int64_t ny, int64_t sorder);

// Checks of every constructor beyond its entry steps: the task's precision
// against the constructor's (DF_BAD_PRECISION), the order it makes
// (DF_BAD_SORDER), the sizes, and the table slots (check_tables).
template <typename T>
inline bool precision_matches(const DFTask* t) {
    return (t->is_double != 0) == (sizeof(T) == 8);
}
int check_build(const DFTask* t, int64_t order);

// The cubic cell from the left value, the cell slope s = (y1 - y0) * rh, the
// end derivatives and rh = 1/h; shared by every cubic family.
template <typename T>
inline void cubic_cell(T* c, T y0, T s, T d0, T d1, T rh) {
    c[0] = y0;
    c[1] = d0;
    c[2] = (T(3) * s - T(2) * d0 - d1) * rh;
    c[3] = (d0 + d1 - T(2) * s) * rh * rh;
}

// Threshold of the Akima weights in each precision.
template <typename T>
constexpr T akima_eps();
template <>
constexpr double akima_eps<double>() { return 1e-10; }
template <>
constexpr float akima_eps<float>() { return 1e-06f; }

}  // namespace orv::df

#endif
