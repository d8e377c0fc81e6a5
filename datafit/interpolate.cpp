// orv_df_kernel_[sd]DFInterpolate1D: values and derivatives of every function
// of a task at a batch of sites, in blocks of 256 sites (search, evaluate,
// copy into the result layout), serially or in block ranges over teams.
#include "datafit/df_eval.h"

#include <cstring>

namespace orv::df {
namespace {

constexpr int64_t kBlock = 256;

template <typename T>
using InterpCallBack = int (*)(int64_t*, const int64_t*, const T*, T*, void*, void*);

// Where results of one block go: element (f, i, d) at base + f*fs + i*is + d.
template <typename T>
struct Dest {
    T* base;
    int64_t fs, is;
    T* at(int64_t f, int64_t i) const { return base + f * fs + i * is; }
};

template <typename T>
struct Interp {
    const DFTask* t;
    int kind, skind;
    T scale;
    int64_t nsite;
    const T* site;
    bool site_ends, sorted_sites, store_cells, given_cells;
    void* cell;
    const int64_t* orders;  // the requested derivative orders, rising
    int nd;
    bool want_value;
    T* r;
    int64_t rhint;
    InterpCallBack<T> cb[3];  // left, right, inside
    void* cbp[3];
    SearchCallBack<T> scb;
    void* scbp;
    T* buffer;     // nd*ny*256 a team, layouts other than 0x10
    int64_t nblocks, per_team;
    int status[256];

    int64_t ny() const { return functions(t); }

    // Derivatives of the cell polynomial c[0..order) at t, for the orders asked.
    template <int Order>
    void poly(const T* c, int64_t order, T x, T* out) const {
        for (int d = 0; d < nd; ++d) {
            const int64_t k = orders[d];
            T v = T(0);
            if constexpr (Order == 2) {
                v = k == 0 ? x * c[1] + c[0] : k == 1 ? c[1] : T(0);
            } else if constexpr (Order == 3) {
                v = k == 0 ? (x * c[2] + c[1]) * x + c[0]
                  : k == 1 ? T(2) * c[2] * x + c[1] : k == 2 ? T(2) * c[2] : T(0);
            } else if constexpr (Order == 4) {
                v = k == 0 ? ((x * c[3] + c[2]) * x + c[1]) * x + c[0]
                  : k == 1 ? (T(3) * c[3] * x + T(2) * c[2]) * x + c[1]
                  : k == 2 ? T(6) * c[3] * x + T(2) * c[2] : k == 3 ? T(6) * c[3] : T(0);
            } else {
                // Generic: sum over j >= k of c_j j!/(j-k)! t^(j-k), by Horner.
                for (int64_t j = order - 1; j >= k; --j) {
                    T f = T(1);
                    for (int64_t q = 0; q < k; ++q) f *= T(j - q);
                    v = v * x + f * c[j];
                }
            }
            out[d] = v;
        }
    }

    template <bool Uniform>
    void cubic_rows(const T* coeff, const T* s, const int64_t* cells, int64_t m, T* out, int64_t is,
                    const Breaks<T>& b) const {
        const int64_t nx = t->nx;
        for (int64_t i = 0; i < m; ++i) {
            const int64_t p = poly_index(cells[i], nx);
            const T x = s[i] - (Uniform ? T(p) * b.h + b.x[0] : b.x[p]);
            const T* c = coeff + 4 * p;
            T* o = out + i * is;
            o[0] = ((x * c[3] + c[2]) * x + c[1]) * x + c[0];
            if (nd == 3) {
                o[1] = (T(3) * c[3] * x + T(2) * c[2]) * x + c[1];
                o[2] = T(6) * c[3] * x + T(2) * c[2];
            }
        }
    }

    // Evaluates the spline at sites idx[0..m) of the block (all when idx is
    // null). Returns DF_OK or DF_NOT_A_BREAKPOINT and friends for look-up.
    int spline(const T* s, const int64_t* cells, const int64_t* idx, int64_t m,
               const Dest<T>& dst) const {
        const int64_t nx = t->nx, so = t->sorder;
        const Breaks<T> b = breaks_of<T>(t);
        if (kind == kEvalLookUp) return look_up(s, cells, idx, m, dst, b);
        if (kind == kEvalStepLeft || kind == kEvalStepRight) {
            if (!want_value) return DF_OK;
            for (int64_t q = 0; q < m; ++q) {
                const int64_t i = idx ? idx[q] : q;
                const int64_t p = step_index<T>(kind, cells[i], nx, s[i], b);
                for (int64_t f = 0; f < ny(); ++f) dst.at(f, i)[0] = value_at<T>(t, f, p);
            }
            return DF_OK;
        }
        for (int64_t f = 0; f < ny(); ++f) {
            const T* coeff = static_cast<const T*>(t->scoeff[f]);
            if (kind == kEvalCubic && idx == nullptr && orders[0] == 0 &&
                (nd == 1 || (nd == 3 && orders[1] == 1 && orders[2] == 2))) {
                // The common requests of a cubic: the value, or it with two derivatives.
                if (b.uniform) cubic_rows<true>(coeff, s, cells, m, dst.at(f, 0), dst.is, b);
                else cubic_rows<false>(coeff, s, cells, m, dst.at(f, 0), dst.is, b);
                continue;
            }
            for (int64_t q = 0; q < m; ++q) {
                const int64_t i = idx ? idx[q] : q;
                int64_t p;
                if (kind == kEvalKnotQuadratic) {
                    p = std::max<int64_t>(cells[i], 1);
                    if (cells[i] >= nx) p -= 1;
                    if (s[i] < knot<T>(t, b, p)) p -= 1;
                } else {
                    p = poly_index(cells[i], nx);
                }
                const T x = s[i] - b[p];
                const T* c = coeff + so * p;
                T* out = dst.at(f, i);
                switch (so) {
                    case 2: poly<2>(c, so, x, out); break;
                    case 3: poly<3>(c, so, x, out); break;
                    case 4: poly<4>(c, so, x, out); break;
                    default: poly<0>(c, so, x, out); break;
                }
            }
        }
        return DF_OK;
    }

    int look_up(const T* s, const int64_t* cells, const int64_t* idx, int64_t m,
                const Dest<T>& dst, const Breaks<T>& b) const {
        const int64_t nx = t->nx;
        const T tol = sizeof(T) == 8 ? T(9.094947017729282e-13) : T(0.00024414063f);
        int64_t ps[kBlock];
        for (int64_t q = 0; q < m; ++q) {
            const int64_t i = idx ? idx[q] : q;
            const int64_t c = cells[i];
            if (c <= 0) return DF_NOT_A_BREAKPOINT;
            int64_t p = c - 1;
            if (s[i] == b.right_end(nx)) p = nx - 1;
            else if (!b.uniform) {
                if (s[i] != b[c - 1]) {
                    if (c < nx && s[i] == b[c]) p = c;
                    else return DF_NOT_A_BREAKPOINT;
                }
            } else {
                const T d0 = s[i] - (b.h * T(c - 1) + b.x[0]);
                const T d1 = s[i] - (b.h * T(c) + b.x[0]);
                if (!(d0 <= tol && d0 >= -tol)) {
                    if (c < nx && d1 < tol && d1 > -tol) p = c;
                    else return DF_NOT_A_BREAKPOINT;
                }
            }
            ps[q] = std::min(p, nx - 1);
        }
        if (nd > 1) return DF_BAD_ORDER_COUNT;
        if (!want_value) return DF_NO_VALUE_REQUESTED;
        for (int64_t q = 0; q < m; ++q) {
            const int64_t i = idx ? idx[q] : q;
            for (int64_t f = 0; f < ny(); ++f) dst.at(f, i)[0] = value_at<T>(t, f, ps[q]);
        }
        return DF_OK;
    }

    // Sites split into left of x[0], right of the right end and the rest; a
    // group with a call-back goes to it, the others to the spline.
    int groups(const T* s, const int64_t* cells, int64_t m, const Dest<T>& dst, T* scratch_out) const {
        const Breaks<T> b = breaks_of<T>(t);
        const T lo = b[0], hi = b.right_end(t->nx);
        int64_t idx[3][kBlock], count[3] = {0, 0, 0};
        for (int64_t i = 0; i < m; ++i) {
            const int g = s[i] < lo ? 0 : s[i] > hi ? 1 : 2;
            idx[g][count[g]++] = i;
        }
        const int64_t per = ny() * nd;
        for (int g = 0; g < 3; ++g) {
            if (count[g] == 0) continue;
            if (cb[g] == nullptr) {
                if (const int st = spline(s, cells, idx[g], count[g], dst); st != DF_OK) return st;
                continue;
            }
            T gs[kBlock];
            int64_t gc[kBlock];
            for (int64_t q = 0; q < count[g]; ++q) gs[q] = s[idx[g][q]], gc[q] = cells[idx[g][q]];
            int64_t n = count[g];
            const int st = cb[g](&n, gc, gs, scratch_out, cbp[g], nullptr);
            if (st < 0) return st;
            for (int64_t q = 0; q < count[g]; ++q)
                for (int64_t f = 0; f < ny(); ++f)
                    std::memcpy(dst.at(f, idx[g][q]), scratch_out + q * per + f * nd,
                                static_cast<size_t>(nd) * sizeof(T));
        }
        return DF_OK;
    }

    // Block copy into the caller's layout; step kinds write order 0 only.
    void copy_out(const T* buf, int64_t first, int64_t m) const {
        const int64_t n = nsite, Y = ny(), dmax = reads_values(kind) ? 1 : nd;
        for (int64_t f = 0; f < Y; ++f)
            for (int64_t i = 0; i < m; ++i)
                for (int64_t d = 0; d < dmax; ++d) {
                    const T v = buf[f * kBlock * nd + i * nd + d];
                    const int64_t g = first + i;
                    if (rhint == 0x20) r[d * Y * n + f * n + g] = v;
                    else if (rhint == 0x100) r[g * Y * nd + f * nd + d] = v;
                    else r[f * nd * n + d * n + g] = v;
                }
    }

    int block(int64_t first, int64_t m, int64_t* hint, T* buf, T* cb_out) const {
        const int64_t nx = t->nx;
        T grid[kBlock];
        const T* s = site + first;
        if (site_ends) {
            expand_grid<T>(site, nsite, first, m, grid);
            s = grid;
        }
        int64_t cells[kBlock];
        const bool wide = (t->wide_ints & 1) != 0;
        if (given_cells) {
            for (int64_t i = 0; i < m; ++i)
                cells[i] = wide ? static_cast<const int64_t*>(cell)[first + i]
                                : static_cast<const int32_t*>(cell)[first + i];
        } else {
            int32_t flags[kBlock];
            const T* x = static_cast<const T*>(t->x);
            const int st = search_slots<T>(skind, nx, x, m, s, hint, scale, t->lut_size, t->lut,
                                           cells, scb, scbp, nullptr, flags);
            if (st < 0) return st;
            if (store_cells)
                for (int64_t i = 0; i < m; ++i) {
                    if (wide) static_cast<int64_t*>(cell)[first + i] = cells[i];
                    else static_cast<int32_t*>(cell)[first + i] = static_cast<int32_t>(cells[i]);
                }
        }
        // Cells outside 0..nx (given by the caller or a call-back) are clamped.
        for (int64_t i = 0; i < m; ++i) cells[i] = std::clamp<int64_t>(cells[i], 0, nx);
        const Dest<T> dst = rhint == 0x10 ? Dest<T>{r + first * nd, nsite * nd, nd}
                                          : Dest<T>{buf, kBlock * nd, nd};
        const bool any_cb = cb[0] || cb[1] || cb[2];
        const int st = any_cb ? groups(s, cells, m, dst, cb_out) : spline(s, cells, nullptr, m, dst);
        if (st != DF_OK) return st;
        if (rhint != 0x10) copy_out(buf, first, m);
        return DF_OK;
    }

    // Blocks [b0, b1) with one running hint and this team's buffers.
    int blocks(int64_t b0, int64_t b1, T* buf) const {
        const bool any_cb = cb[0] || cb[1] || cb[2];
        const int64_t need = any_cb ? kBlock * ny() * nd : 0;
        T stack_out[1024];
        T* out = need <= 1024 ? stack_out : scratch<T>(need);
        if (out == nullptr) return DF_NO_MEMORY;
        int64_t hint = 0;
        int st = DF_OK;
        for (int64_t k = b0; k < b1 && st == DF_OK; ++k) {
            const int64_t first = k * kBlock;
            st = block(first, std::min(kBlock, nsite - first), &hint, buf, out);
        }
        if (out != stack_out) orv_serv_deallocate(out);
        return st;
    }

    static void body(int team, int, void*, void* args) {
        auto* j = static_cast<Interp*>(args);
        const int64_t b0 = team * j->per_team, b1 = std::min(j->nblocks, b0 + j->per_team);
        T* buf = j->buffer != nullptr ? j->buffer + team * j->ny() * j->nd * kBlock : nullptr;
        j->status[team] = b0 < b1 ? j->blocks(b0, b1, buf) : DF_OK;
    }
};

template <typename T>
int interpolate(DFTask* t, int64_t type, int64_t nsite, const T* site, int64_t sitehint,
                int64_t ndorder, const void* dorder, const T* datahint, T* r, int64_t rhint,
                void* cell, InterpCallBack<T> le, void* lep, InterpCallBack<T> re, void* rep,
                InterpCallBack<T> ie, void* iep, SearchCallBack<T> se, void* sep,
                const DFThreadOps* ops) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->is_double != (sizeof(T) == 8 ? 1 : 0)) return DF_BAD_PRECISION;
    const int kind = eval_kind(t->sorder, t->stype);
    const bool all_cb = le != nullptr && re != nullptr && ie != nullptr;
    if (kind < 0 || (t->sorder == 0 && kind == kEvalGeneric && !all_cb)) return DF_BAD_STYPE;
    int skind = kSearchGiven;
    if (type != DF_INTERP_CELLS_GIVEN)
        if (const int st = select_search<T>(t, se != nullptr, sitehint, datahint, &skind); st != DF_OK)
            return st;
    if (rhint == 0 || rhint == 0x80) rhint = 0x10;
    if (rhint != 0x10 && rhint != 0x20 && rhint != 0x100 && rhint != 0x200) return DF_BAD_RHINT;
    if (const int st = check_eval_tables(t, kind, all_cb); st != DF_OK) return st;
    if (nsite <= 0) return DF_OK;

    // Requested orders: any non-zero flag counts once; none means the value.
    const bool wide = (t->wide_ints & 1) != 0;
    int64_t nflags = std::max<int64_t>(ndorder, 0), nd = 0;
    for (int64_t k = 0; k < nflags; ++k)
        nd += (wide ? static_cast<const int64_t*>(dorder)[k] : static_cast<const int32_t*>(dorder)[k]) != 0;
    const bool need_cells = type == DF_INTERP_CELLS_GIVEN || (type & DF_INTERP_STORE_CELLS);
    int64_t total = 0;
    if (site == nullptr || r == nullptr || (nflags > 0 && dorder == nullptr) ||
        (need_cells && cell == nullptr) || (sitehint == DF_SITES_UNIFORM && nsite > 1 && site == nullptr) ||
        __builtin_mul_overflow(nsite, functions(t) * std::max<int64_t>(nd, 1), &total))
        return DF_BAD_ARRAY;
    int64_t stack_orders[64];
    int64_t* orders = nd <= 64 ? stack_orders : scratch<int64_t>(nd);
    if (orders == nullptr) return DF_NO_MEMORY;
    if (nd == 0) {
        orders[0] = 0, nd = 1;
    } else {
        int64_t q = 0;
        for (int64_t k = 0; k < nflags; ++k)
            if ((wide ? static_cast<const int64_t*>(dorder)[k] : static_cast<const int32_t*>(dorder)[k]) != 0)
                orders[q++] = k;
    }

    Interp<T> job{};
    job.t = t, job.kind = kind, job.skind = skind;
    job.scale = skind == kSearchGiven ? T(0) : search_scale<T>(t, skind, datahint);
    job.nsite = nsite, job.site = site;
    job.site_ends = (sitehint & DF_SITES_UNIFORM) != 0;
    job.sorted_sites = sitehint == DF_SITES_SORTED;
    job.given_cells = type == DF_INTERP_CELLS_GIVEN;
    job.store_cells = !job.given_cells && (type & DF_INTERP_STORE_CELLS);
    job.cell = cell, job.orders = orders, job.nd = static_cast<int>(nd);
    job.want_value = orders[0] == 0;
    job.r = r, job.rhint = rhint;
    job.cb[0] = le, job.cb[1] = re, job.cb[2] = ie;
    job.cbp[0] = lep, job.cbp[1] = rep, job.cbp[2] = iep;
    job.scb = se, job.scbp = sep;
    job.nblocks = (nsite + kBlock - 1) / kBlock;

    const int threads = thread_count(ops);
    const bool teams = threads >= 2 && nsite > 4096;
    const int nteams = teams ? static_cast<int>(std::min<int64_t>(threads, job.nblocks)) : 1;
    T stack_buf[8 * kBlock];
    const int64_t per_team = functions(t) * nd;
    if (rhint != 0x10) {
        job.buffer = per_team * nteams <= 8 ? stack_buf : scratch<T>(per_team * nteams * kBlock);
        if (job.buffer == nullptr) {
            if (orders != stack_orders) orv_serv_deallocate(orders);
            return DF_NO_MEMORY;
        }
    }
    int st = DF_OK;
    if (!teams) {
        st = job.blocks(0, job.nblocks, job.buffer);
    } else {
        job.per_team = (job.nblocks + nteams - 1) / nteams;
        ops->parallel_run(nteams, nteams, &job, Interp<T>::body);
        for (int k = 0; k < nteams; ++k)
            if (job.status[k] != DF_OK) { st = job.status[k]; break; }
    }
    if (job.buffer != nullptr && job.buffer != stack_buf) orv_serv_deallocate(job.buffer);
    if (orders != stack_orders) orv_serv_deallocate(orders);
    return st;
}

}  // namespace
}  // namespace orv::df

ORV_EXPORT int orv_df_kernel_dDFInterpolate1D(
    DFTask* task, int64_t type, int64_t, int64_t nsite, const double* site, int64_t sitehint,
    int64_t ndorder, const void* dorder, const double* datahint, double* r, int64_t rhint,
    void* cell, DFdInterpCallBack le, void* lep, DFdInterpCallBack re, void* rep,
    DFdInterpCallBack ie, void* iep, DFdSearchCallBack se, void* sep, const DFThreadOps* ops) {
    return orv::df::interpolate<double>(task, type, nsite, site, sitehint, ndorder, dorder, datahint,
                                        r, rhint, cell, le, lep, re, rep, ie, iep, se, sep, ops);
}
ORV_EXPORT int orv_df_kernel_sDFInterpolate1D(
    DFTask* task, int64_t type, int64_t, int64_t nsite, const float* site, int64_t sitehint,
    int64_t ndorder, const void* dorder, const float* datahint, float* r, int64_t rhint,
    void* cell, DFsInterpCallBack le, void* lep, DFsInterpCallBack re, void* rep,
    DFsInterpCallBack ie, void* iep, DFsSearchCallBack se, void* sep, const DFThreadOps* ops) {
    return orv::df::interpolate<float>(task, type, nsite, site, sitehint, ndorder, dorder, datahint,
                                       r, rhint, cell, le, lep, re, rep, ie, iep, se, sep, ops);
}
