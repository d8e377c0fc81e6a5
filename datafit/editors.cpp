// Editors and queries of the spline task: each checks in a fixed order and
// stores a field as soon as it has passed; nothing is rolled back.
#include "datafit/df_task.h"

namespace orv::df {
namespace {

// Fills the coefficient slots after slot 0 with the spacing of the spline
// kind, in elements of the task's precision; bit 7 of scoeffhint keeps them.
void spread_scoeff_slots(DFTask* t) {
    if (t->scoeffhint & 0x80) return;
    const int64_t step = scoeff_spacing(t) * (t->is_double ? 8 : 4);
    for (int64_t k = 1; k < t->ny; ++k) t->scoeff[k] = static_cast<char*>(t->scoeff[0]) + k * step;
}

template <typename T>
int edit_pp_spline(DFTask* t, int64_t sorder, int64_t stype, int64_t bc_type, const T* bc,
                   int64_t ic_type, const T* ic, T* scoeff, int64_t scoeffhint) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->dimension != 1) return DF_OK;
    if (sorder < 0) return DF_BAD_SORDER;
    if (stype < 0) return DF_BAD_STYPE;
    if (const int st = check_sizes(t, t->nx, t->ny, sorder); st != DF_OK) return st;
    t->sorder = sorder;
    t->stype = stype;
    if (bc == nullptr && bc_type > 2 && bc_type != DF_BC_PERIODIC) return DF_NULL_BC;
    t->bc_type = bc_type;
    t->bc = bc;
    if (ic_type != 0 && ic == nullptr) return DF_BAD_IC;
    if (ic_type == 0 && ic != nullptr) return DF_BAD_IC_TYPE;
    t->ic_type = ic_type;
    t->ic = ic;
    if (scoeff == nullptr) {
        t->scoeffhint = scoeffhint;
        return DF_OK;
    }
    if (t->ny == 0) return DF_BAD_NY;
    table_free(t->scoeff);
    t->scoeff = table_new(t->ny);
    if (t->scoeff == nullptr) return DF_NO_MEMORY;
    t->scoeff[0] = scoeff;
    t->scoeffhint = scoeffhint;
    spread_scoeff_slots(t);
    return DF_OK;
    return DF_OK;
}

int edit_val(DFTask* t, int64_t id, int64_t v) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->dimension != 1) return DF_OK;
    const uint64_t u = static_cast<uint64_t>(v);
    switch (id) {
        case DF_ID_NX:
            if (v < 2) return DF_BAD_NX;
            if (const int st = check_sizes(t, v, t->ny, t->sorder); st != DF_OK) return st;
            t->nx = v;
            if (t->yhint != DF_Y_SEPARATE && t->yhint != DF_Y_COLUMNS) {
                const int st = rebuild_y_table(t);
                if (st != DF_OK) return st;
            }
            return (t->scoeffhint & 0x80) ? DF_OK : rebuild_scoeff_table(t);
        case DF_ID_XHINT:
            if (!xhint_legal(v)) return DF_BAD_XHINT;
            t->xhint = v;
            return v == DF_X_NON_UNIFORM ? build_lut(t) : DF_OK;
        case DF_ID_NY: {
            if (v < 1) return DF_BAD_NY;
            if (const int st = check_sizes(t, t->nx, v, t->sorder); st != DF_OK) return st;
            t->ny = v;
            const int st = rebuild_y_table(t);
            if (st != DF_OK) return st;
            return rebuild_scoeff_table(t);
        }
        case DF_ID_YHINT:
            if (!layout_legal(v)) return DF_BAD_YHINT;
            t->yhint = v;
            return rebuild_y_table(t);
        case DF_ID_SORDER:
            if (v < 0) return DF_BAD_SORDER;
            if (const int st = check_sizes(t, t->nx, t->ny, v); st != DF_OK) return st;
            t->sorder = v;
            return (t->scoeffhint & 0x80) ? DF_OK : rebuild_scoeff_table(t);
        case DF_ID_STYPE:
            if (u > 5 && u != 9) return DF_BAD_STYPE;
            t->stype = v;
            return (t->scoeffhint & 0x80) ? DF_OK : rebuild_scoeff_table(t);
        case DF_ID_IC_TYPE:
            if (u > 2 && (u & 8) == 0) return DF_BAD_IC_TYPE;
            t->ic_type = v;
            return DF_OK;
        case DF_ID_BC_TYPE:
            if (v < 0) return DF_BAD_BC_TYPE;
            t->bc_type = v;
            return DF_OK;
        case DF_ID_SCOEFFHINT:
            if (!layout_legal(v)) return DF_BAD_SCOEFFHINT;
            t->scoeffhint = v;
            return DF_OK;
        case DF_ID_FLAG23:
            if (u > 1) return DF_BAD_FLAG23;
            t->flag23 = static_cast<int32_t>(v);
            return DF_OK;
        default:
            return DF_BAD_PARAM_ID;
    }
}

int query_val(DFTask* t, int64_t id, void* out) {
    if (t == nullptr) return DF_NULL_TASK;
    if (out == nullptr) return DF_NULL_OUTPUT;
    if (t->dimension != 1) return DF_OK;
    int64_t v;
    switch (id) {
        case DF_ID_NX: v = t->nx; break;
        case DF_ID_XHINT: v = t->xhint; break;
        case DF_ID_NY: v = t->ny; break;
        case DF_ID_YHINT: v = t->yhint; break;
        case DF_ID_SORDER: v = t->sorder; break;
        case DF_ID_STYPE: v = t->stype; break;
        case DF_ID_IC_TYPE: v = t->ic_type; break;
        case DF_ID_BC_TYPE: v = t->bc_type; break;
        case DF_ID_SCOEFFHINT: v = t->scoeffhint; break;
        case DF_ID_FLAG23: v = t->flag23; break;
        default: return DF_BAD_PARAM_ID;
    }
    if (t->wide_ints != 0) *static_cast<int64_t*>(out) = v;
    else *static_cast<int32_t*>(out) = static_cast<int32_t>(v);
    return DF_OK;
}

template <typename T>
int edit_ptr(DFTask* t, int64_t id, const T* p) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->dimension != 1) return DF_OK;
    switch (id) {
        case DF_PTR_X:
            if (p == nullptr) return DF_NULL_X;
            t->x = p;
            return DF_OK;
        case DF_PTR_Y: {
            if (p == nullptr) return DF_NULL_Y;
            if (t->ny == 0) return DF_BAD_NY;
            if (const int st = check_sizes(t, t->nx, t->ny, 0); st != DF_OK) return st;
            const int64_t slots = t->yhint == DF_Y_COLUMNS ? 1 : t->ny;
            table_free(const_cast<void**>(t->y));
            void** table = table_new(slots);
            t->y = const_cast<const void**>(table);
            if (table == nullptr) return DF_NO_MEMORY;
            table[0] = const_cast<T*>(p);
            if (t->yhint != DF_Y_SEPARATE)
                for (int64_t k = 1; k < slots; ++k) table[k] = const_cast<T*>(p) + k * t->nx;
            return DF_OK;
        }
        case DF_PTR_IC:
            if (p == nullptr) return DF_BAD_IC;
            t->ic = p;
            return DF_OK;
        case DF_PTR_BC:
            if (p == nullptr) return DF_NULL_BC;
            t->bc = p;
            return DF_OK;
        case DF_PTR_SCOEFF: {
            if (p == nullptr) return DF_NULL_SCOEFF;
            if (t->ny == 0) return DF_BAD_NY;
            if (const int st = check_sizes(t, t->nx, t->ny, t->sorder); st != DF_OK) return st;
            table_free(t->scoeff);
            t->scoeff = table_new(t->ny);
            if (t->scoeff == nullptr) return DF_NO_MEMORY;
            t->scoeff[0] = const_cast<T*>(p);
            spread_scoeff_slots(t);
            return DF_OK;
        }
        default:
            return DF_BAD_PARAM_ID;
    }
}

template <typename T>
int query_ptr(DFTask* t, int64_t id, const T** out) {
    if (t == nullptr) return DF_NULL_TASK;
    if (out == nullptr) return DF_NULL_OUTPUT;
    if (t->dimension != 1) return DF_OK;
    switch (id) {
        case DF_PTR_X: *out = static_cast<const T*>(t->x); return DF_OK;
        case DF_PTR_Y: *out = t->y ? static_cast<const T*>(t->y[0]) : nullptr; return DF_OK;
        case DF_PTR_IC: *out = static_cast<const T*>(t->ic); return DF_OK;
        case DF_PTR_BC: *out = static_cast<const T*>(t->bc); return DF_OK;
        case DF_PTR_SCOEFF:
            *out = t->scoeff ? static_cast<const T*>(t->scoeff[0]) : nullptr;
            return DF_OK;
        default: return DF_BAD_PARAM_ID;
    }
}

// A table that is absent, or smaller than ny, grows to ny slots keeping its
// entries. Returns the table or null when the allocation failed.
void** grown(void** table, int64_t ny) {
    if (table != nullptr && table_slots(table) >= ny) return table;
    void** fresh = table_new(ny);
    if (fresh == nullptr) return nullptr;
    for (int64_t k = 0; k < table_slots(table); ++k) fresh[k] = table[k];
    table_free(table);
    return fresh;
}

template <typename T>
int edit_idx_ptr(DFTask* t, int64_t id, int64_t idx, const T* p) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->dimension != 1) return DF_OK;
    if ((id != DF_PTR_Y && id != DF_PTR_SCOEFF) || idx < 0 || idx >= t->ny) return DF_BAD_INDEX;
    if (p == nullptr) return id == DF_PTR_SCOEFF ? DF_NULL_SCOEFF : DF_NULL_Y;
    if (id == DF_PTR_Y) {
        if (t->yhint == DF_Y_COLUMNS) return DF_BAD_YHINT;
        void** table = grown(const_cast<void**>(t->y), t->ny);
        if (table == nullptr) return DF_NO_MEMORY;
        table[idx] = const_cast<T*>(p);
        t->y = const_cast<const void**>(table);
    } else {
        void** table = grown(t->scoeff, t->ny);
        if (table == nullptr) return DF_NO_MEMORY;
        table[idx] = const_cast<T*>(p);
        t->scoeff = table;
    }
    return DF_OK;
}

// Reads one slot; the index may be ny itself, one past the edit range. A
// slot the table does not hold reads as null.
template <typename T>
int query_idx_ptr(DFTask* t, int64_t id, int64_t idx, const T** out) {
    if (t == nullptr) return DF_NULL_TASK;
    if (out == nullptr) return DF_NULL_OUTPUT;
    if (t->dimension != 1) return DF_OK;
    if ((id != DF_PTR_Y && id != DF_PTR_SCOEFF) || idx < 0 || idx > t->ny) return DF_BAD_INDEX;
    void* const* table = id == DF_PTR_Y ? const_cast<void* const*>(t->y) : t->scoeff;
    *out = idx < table_slots(table) ? static_cast<const T*>(table[idx]) : nullptr;
    return DF_OK;
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dEditPPSpline1D(DFTask* t, int64_t sorder, int64_t stype,
                                                int64_t bc_type, const double* bc,
                                                int64_t ic_type, const double* ic, double* scoeff,
                                                int64_t scoeffhint) {
    return edit_pp_spline(t, sorder, stype, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}
ORV_EXPORT int orv_df_kernel_sEditPPSpline1D(DFTask* t, int64_t sorder, int64_t stype,
                                                int64_t bc_type, const float* bc, int64_t ic_type,
                                                const float* ic, float* scoeff,
                                                int64_t scoeffhint) {
    return edit_pp_spline(t, sorder, stype, bc_type, bc, ic_type, ic, scoeff, scoeffhint);
}
ORV_EXPORT int orv_df_kernel_iEditVal(DFTask* t, int64_t id, int64_t value) {
    return edit_val(t, id, value);
}
ORV_EXPORT int orv_df_kernel_iQueryVal(DFTask* t, int64_t id, void* out) {
    return query_val(t, id, out);
}
ORV_EXPORT int orv_df_kernel_dEditPtr(DFTask* t, int64_t id, const double* p) {
    return edit_ptr(t, id, p);
}
ORV_EXPORT int orv_df_kernel_sEditPtr(DFTask* t, int64_t id, const float* p) {
    return edit_ptr(t, id, p);
}
ORV_EXPORT int orv_df_kernel_dQueryPtr(DFTask* t, int64_t id, const double** out) {
    return query_ptr(t, id, out);
}
ORV_EXPORT int orv_df_kernel_sQueryPtr(DFTask* t, int64_t id, const float** out) {
    return query_ptr(t, id, out);
}
ORV_EXPORT int orv_df_kernel_dEditIdxPtr(DFTask* t, int64_t id, int64_t idx, const double* p) {
    return edit_idx_ptr(t, id, idx, p);
}
ORV_EXPORT int orv_df_kernel_sEditIdxPtr(DFTask* t, int64_t id, int64_t idx, const float* p) {
    return edit_idx_ptr(t, id, idx, p);
}
ORV_EXPORT int orv_df_kernel_dQueryIdxPtr(DFTask* t, int64_t id, int64_t idx,
                                             const double** out) {
    return query_idx_ptr(t, id, idx, out);
}
ORV_EXPORT int orv_df_kernel_sQueryIdxPtr(DFTask* t, int64_t id, int64_t idx,
                                             const float** out) {
    return query_idx_ptr(t, id, idx, out);
}
