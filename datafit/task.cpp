// Task creation and deletion, the owned pointer tables and the breakpoint
// look-up table.
#include "datafit/df_task.h"

#include <cmath>
#include <cstring>

namespace orv::df {

void** table_new(int64_t slots) {
    if (slots < 1) slots = 1;
    if (slots >= PTRDIFF_MAX / static_cast<int64_t>(sizeof(void*))) return nullptr;
    auto* block = static_cast<int64_t*>(
        orv_serv_allocate(static_cast<size_t>(slots + 1) * sizeof(void*), orv::kAlignment));
    if (block == nullptr) return nullptr;
    std::memset(block, 0, static_cast<size_t>(slots + 1) * sizeof(void*));
    block[0] = slots;
    return reinterpret_cast<void**>(block + 1);
}

void table_free(void** table) {
    if (table != nullptr) orv_serv_deallocate(reinterpret_cast<int64_t*>(table) - 1);
}

int64_t table_slots(void* const* table) {
    return table == nullptr ? 0 : reinterpret_cast<const int64_t*>(table)[-1];
}

int rebuild_y_table(DFTask* t) {
    if (t->y == nullptr) return DF_OK;
    const void** old = t->y;
    const int64_t slots = t->yhint == DF_Y_COLUMNS ? 1 : functions(t);
    void** fresh = table_new(slots);
    if (fresh == nullptr) {
        table_free(const_cast<void**>(old));
        t->y = nullptr;
        return DF_NO_MEMORY;
    }
    const int64_t elem = t->is_double ? 8 : 4;
    const char* base = static_cast<const char*>(old[0]);
    const int64_t old_slots = table_slots(const_cast<void* const*>(old));
    for (int64_t k = 0; k < slots; ++k) {
        if (t->yhint == DF_Y_SEPARATE)
            fresh[k] = k < old_slots ? const_cast<void*>(old[k]) : nullptr;
        else
            fresh[k] = const_cast<char*>(base) + k * t->nx * elem;
    }
    table_free(const_cast<void**>(old));
    t->y = const_cast<const void**>(fresh);
    return DF_OK;
}

int64_t scoeff_spacing(const DFTask* t) {
    return t->nx * t->sorder - (t->stype == 1 ? 0 : t->sorder);
}

int rebuild_scoeff_table(DFTask* t) {
    if (t->scoeff == nullptr) return DF_OK;
    void** old = t->scoeff;
    const int64_t slots = functions(t);
    void** fresh = table_new(slots);
    if (fresh == nullptr) {
        table_free(old);
        t->scoeff = nullptr;
        return DF_NO_MEMORY;
    }
    const int64_t elem = t->is_double ? 8 : 4;
    const int64_t old_slots = table_slots(old);
    for (int64_t k = 0; k < slots; ++k) {
        if (t->scoeffhint & 0x80)
            fresh[k] = k < old_slots ? old[k] : nullptr;
        else
            fresh[k] = static_cast<char*>(old[0]) + k * scoeff_spacing(t) * elem;
    }
    table_free(old);
    t->scoeff = fresh;
    return DF_OK;
}

namespace {

int sizes_fit(int64_t elem, int64_t nx, int64_t ny, int64_t sorder) {
    if (ny < 1) ny = 1;
    if (ny >= PTRDIFF_MAX / static_cast<int64_t>(sizeof(void*))) return DF_NO_MEMORY;
    const int64_t values = checked_product(checked_product(nx, ny), elem);
    const int64_t coeffs = checked_product(checked_product(checked_product(nx, sorder), ny), elem);
    return values < 0 || coeffs < 0 ? DF_NO_MEMORY : DF_OK;
}

}  // namespace

int check_sizes(const DFTask* t, int64_t nx, int64_t ny, int64_t sorder) {
    return sizes_fit(t->is_double ? 8 : 4, nx, ny, sorder);
}

int check_build(const DFTask* t, int64_t order) {
    if (t->sorder != order) return DF_BAD_SORDER;
    if (const int st = check_sizes(t, t->nx, functions(t), order); st != DF_OK) return st;
    return check_tables(t);
}

int check_tables(const DFTask* t) {
    const int64_t ny = functions(t);
    if (t->y == nullptr) return DF_NULL_Y;
    const int64_t need_y = t->yhint == DF_Y_COLUMNS ? 1 : ny;
    if (table_slots(const_cast<void* const*>(t->y)) < need_y) return DF_NULL_Y;
    for (int64_t k = 0; k < need_y; ++k)
        if (t->y[k] == nullptr) return DF_NULL_Y;
    if (t->scoeff == nullptr || table_slots(t->scoeff) < ny) return DF_NULL_SCOEFF;
    for (int64_t k = 0; k < ny; ++k)
        if (t->scoeff[k] == nullptr) return DF_NULL_SCOEFF;
    return DF_OK;
}

namespace {

// Pairs (low, high): for a site in bin b, the cell lies between breakpoints
// low and high of pair b.
template <typename T>
int build_lut_t(DFTask* t) {
    if (t->lut != nullptr) {
        orv_serv_deallocate(t->lut);
        t->lut = nullptr;
    }
    const int64_t nx = t->nx;
    const T* x = static_cast<const T*>(t->x);
    int64_t size = nx / 16;
    if (size < 16) size = 16;
    if (size > 1024) size = 1024;
    auto* lut = static_cast<int64_t*>(
        orv_serv_allocate(static_cast<size_t>(size) * 16 + 32, orv::kAlignment));
    if (lut == nullptr) return DF_NO_MEMORY;
    for (int64_t j = 0; j < 2 * (size + 2); ++j) lut[j] = -1;
    const T scale = T(size) / (x[nx - 1] - x[0]);
    lut[0] = 0;
    for (int64_t i = 1; i < nx; ++i) {
        const T f = (x[i] - x[0]) * scale;
        // Breakpoints out of order or not finite would index outside the
        // table; they are held to its ends.
        int64_t b = 0;
        if (f >= T(size)) b = size;
        else if (f > T(0)) b = static_cast<int64_t>(f);
        if (b != 0) {
            if (lut[2 * (b - 1) + 1] == -1) lut[2 * (b - 1) + 1] = i;
            lut[2 * (b + 1)] = i;
        }
    }
    lut[2 * (size - 1) + 1] = nx - 1;
    for (int64_t j = 1; j < size + 2; ++j)
        if (lut[2 * j] == -1) lut[2 * j] = lut[2 * (j - 1)];
    for (int64_t j = size; j >= 0; --j)
        if (lut[2 * j + 1] == -1) lut[2 * j + 1] = lut[2 * (j + 1) + 1];
    lut[2 * size] = lut[2 * (size - 1)];
    lut[2 * size + 1] = lut[2 * (size - 1) + 1];
    t->lut = lut;
    t->lut_size = size;
    if constexpr (sizeof(T) == 8) t->lut_scale.d = scale;
    else t->lut_scale.s = scale;
    return DF_OK;
}

template <typename T>
int new_task(DFTask** task, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y,
             int64_t yhint, int32_t wide_ints) {
    if (task == nullptr) return DF_NULL_TASK;
    if (nx < 2) return DF_BAD_NX;
    if (x == nullptr) return DF_NULL_X;
    if (!xhint_legal(xhint)) return DF_BAD_XHINT;
    if (ny == 0 && y != nullptr) return DF_BAD_NY;
    if (ny != 0 && y == nullptr) return DF_NULL_Y;
    if (!layout_legal(yhint)) return DF_BAD_YHINT;
    if (ny < 0) return DF_BAD_NY;
    if (sizes_fit(sizeof(T), nx, ny, 0) != DF_OK) return DF_NO_MEMORY;
    auto* t = static_cast<DFTask*>(orv_serv_allocate(sizeof(DFTask), orv::kAlignment));
    if (t == nullptr) return DF_NO_MEMORY;
    std::memset(static_cast<void*>(t), 0, sizeof(DFTask));
    t->nx = nx;
    t->x = x;
    t->xhint = xhint;
    t->ny = ny;
    t->yhint = yhint;
    t->wide_ints = wide_ints;
    t->marker = 4;
    t->is_double = sizeof(T) == 8 ? 1 : 0;
    t->dimension = 1;
    if (y != nullptr) {
        const int64_t slots = yhint == DF_Y_COLUMNS ? 1 : ny;
        void** table = table_new(slots);
        if (table == nullptr) {
            orv_serv_deallocate(t);
            return DF_NO_MEMORY;
        }
        table[0] = const_cast<T*>(y);
        if (yhint != DF_Y_SEPARATE)
            for (int64_t k = 1; k < slots; ++k) table[k] = const_cast<T*>(y) + k * nx;
        t->y = const_cast<const void**>(table);
    }
    if (!is_uniform(xhint)) {
        const int st = build_lut_t<T>(t);
        if (st != DF_OK) {
            table_free(const_cast<void**>(t->y));
            orv_serv_deallocate(t);
            return st;
        }
    }
    *task = t;
    return DF_OK;
}

}  // namespace

int build_lut(DFTask* t) { return t->is_double ? build_lut_t<double>(t) : build_lut_t<float>(t); }

}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dNewTask1D(DFTask** task, int64_t nx, const double* x,
                                           int64_t xhint, int64_t ny, const double* y,
                                           int64_t yhint, int32_t wide_ints) {
    return new_task(task, nx, x, xhint, ny, y, yhint, wide_ints);
}

ORV_EXPORT int orv_df_kernel_sNewTask1D(DFTask** task, int64_t nx, const float* x,
                                           int64_t xhint, int64_t ny, const float* y,
                                           int64_t yhint, int32_t wide_ints) {
    return new_task(task, nx, x, xhint, ny, y, yhint, wide_ints);
}

ORV_EXPORT int orv_df_kernel_DeleteTask(DFTask** task) {
    if (task == nullptr || *task == nullptr) return DF_NULL_TASK;
    DFTask* t = *task;
    table_free(const_cast<void**>(t->y));
    table_free(t->scoeff);
    if (t->lut != nullptr) orv_serv_deallocate(t->lut);
    orv_serv_deallocate(t);
    *task = nullptr;
    return DF_OK;
}
