// orv_df_kernel_[sd]DFIntegrate1D: definite integrals of every function over
// a batch of limit pairs, in blocks of 128 pairs (search both sides, then
// integrate), with the outermost polynomials extending past the partition.
#include "datafit/df_eval.h"

namespace orv::df {
namespace {

constexpr int64_t kPairs = 128;

template <typename T>
using IntegrCallBack = int (*)(int64_t*, const int64_t*, const T*, const int64_t*, const T*, T*,
                               void*, void*);

// Antiderivative of sum c_j t^j that vanishes at 0, by Horner.
template <typename T>
inline T antider(const T* c, int64_t order, T t) {
    switch (order) {
        case 3: return ((c[2] * T(0.3333333333333333) * t + c[1] * T(0.5)) * t + c[0]) * t;
        case 4:
            return (((c[3] * T(0.25) * t + c[2] * T(0.3333333333333333)) * t + c[1] * T(0.5)) * t +
                    c[0]) * t;
        default: {
            T v = T(0);
            for (int64_t j = order - 1; j >= 0; --j) v = v * t + c[j] / T(j + 1);
            return v * t;
        }
    }
}

// Integral of one polynomial from t1 to t2.
template <typename T>
inline T piece(const T* c, int64_t order, T t1, T t2) {
    if (order == 2) return ((t1 + t2) * c[1] * T(0.5) + c[0]) * (t2 - t1);
    return antider<T>(c, order, t2) - antider<T>(c, order, t1);
}

template <typename T>
struct Integr {
    const DFTask* t;
    int kind, skind[2];
    T scale[2];
    int64_t nlim;
    const T* lim[2];
    bool ends[2];
    T* r;
    bool by_function;  // r[f*nlim + i]; else r[i*ny + f]
    IntegrCallBack<T> cb[3];
    void* cbp[3];
    SearchCallBack<T> scb;
    void* scbp;
    int64_t per_team, nblocks;
    int status[256];

    int64_t ny() const { return functions(t); }

    // Value of a step kind on the open interval of cell i.
    T step_value(int64_t f, int64_t i) const {
        const int64_t nx = t->nx;
        if (i <= 0) return value_at<T>(t, f, 0);
        if (i >= nx) return value_at<T>(t, f, nx - 1);
        return value_at<T>(t, f, kind == kEvalStepLeft ? i : i - 1);
    }

    // Whole cubic cells k0.. in rounds of four, into four partial sums;
    // returns the first cell not summed.
    template <bool Uniform>
    static int64_t whole_cubics(const T* c, int64_t k, int64_t end, const Breaks<T>& b, T* s4) {
        T a0 = s4[0], a1 = s4[1], a2 = s4[2], a3 = s4[3];
        const T* x = b.x;
        auto cell = [&](int64_t j) {
            const T w = Uniform ? (T(j + 1) * b.h + x[0]) - (T(j) * b.h + x[0]) : x[j + 1] - x[j];
            const T* cc = c + 4 * j;
            return (((cc[3] * T(0.25) * w + cc[2] * T(0.3333333333333333)) * w + cc[1] * T(0.5)) * w +
                    cc[0]) * w;
        };
        for (; k + 4 <= end; k += 4) {
            a0 += cell(k);
            a1 += cell(k + 1);
            a2 += cell(k + 2);
            a3 += cell(k + 3);
        }
        s4[0] = a0, s4[1] = a1, s4[2] = a2, s4[3] = a3;
        return k;
    }

    // Integral of function f over [lo, hi] (lo <= hi) with cells cl, ch.
    T plain(int64_t f, T lo, T hi, int64_t cl, int64_t ch, const Breaks<T>& b) const {
        const int64_t nx = t->nx;
        if (kind == kEvalStepLeft || kind == kEvalStepRight) {
            if (cl == ch) return (hi - lo) * step_value(f, cl);
            T sum = (b[std::min(cl, nx - 1)] - lo) * step_value(f, cl);
            for (int64_t i = cl + 1; i < ch; ++i) sum += (b[i] - b[i - 1]) * step_value(f, i);
            return sum + (hi - b[ch - 1]) * step_value(f, ch);
        }
        const T* c = static_cast<const T*>(t->scoeff[f]);
        const int64_t so = t->sorder;
        if (kind == kEvalKnotQuadratic) {
            auto triple = [&](int64_t cell, T s) {
                int64_t p = std::max<int64_t>(cell, 1);
                if (cell >= nx) p -= 1;
                if (s < knot<T>(t, b, p)) p -= 1;
                return p;
            };
            const int64_t pl = triple(cl, lo), ph = triple(ch, hi);
            if (pl == ph) return piece<T>(c + 3 * pl, 3, lo - b[pl], hi - b[pl]);
            T sum = piece<T>(c + 3 * pl, 3, lo - b[pl], knot<T>(t, b, pl + 1) - b[pl]);
            for (int64_t k = pl + 1; k < ph; ++k)
                sum += piece<T>(c + 3 * k, 3, knot<T>(t, b, k) - b[k], knot<T>(t, b, k + 1) - b[k]);
            return sum + piece<T>(c + 3 * ph, 3, knot<T>(t, b, ph) - b[ph], hi - b[ph]);
        }
        const int64_t pl = poly_index(cl, nx), ph = poly_index(ch, nx);
        if (pl == ph) return piece<T>(c + so * pl, so, lo - b[pl], hi - b[pl]);
        T first = piece<T>(c + so * pl, so, lo - b[pl], b[pl + 1] - b[pl]);
        // Whole cells in four partial sums.
        T s4[4] = {T(0), T(0), T(0), T(0)};
        int64_t k = pl + 1;
        if (so == 4) k = b.uniform ? whole_cubics<true>(c, k, ph, b, s4) : whole_cubics<false>(c, k, ph, b, s4);
        for (; k < ph; ++k) s4[k & 3] += piece<T>(c + so * k, so, T(0), b[k + 1] - b[k]);
        const T last = piece<T>(c + so * ph, so, T(0), hi - b[ph]);
        return first + ((s4[0] + s4[1]) + (s4[2] + s4[3])) + last;
    }

    // One pair with call-backs: pieces left of x[0], right of the right end,
    // and inside, each to its call-back or to the spline.
    int with_callbacks(T lo, T hi, int64_t cl, int64_t ch, const Breaks<T>& b, T* sum, T* tmp) const {
        const int64_t nx = t->nx, Y = ny();
        const T x0 = b[0], xr = b.right_end(nx);
        for (int64_t f = 0; f < Y; ++f) sum[f] = T(0);
        auto add = [&](int g, T a, T z, int64_t ca, int64_t cz) -> int {
            if (cb[g] != nullptr) {
                int64_t one = 1;
                const int st = cb[g](&one, &ca, &a, &cz, &z, tmp, cbp[g], nullptr);
                if (st < 0) return st;
                for (int64_t f = 0; f < Y; ++f) sum[f] += tmp[f];
            } else {
                for (int64_t f = 0; f < Y; ++f) sum[f] += plain(f, a, z, ca, cz, b);
            }
            return DF_OK;
        };
        if (lo < x0)
            if (const int st = add(0, lo, std::min(hi, x0), 0, 0); st < 0) return st;
        if (hi > xr)
            if (const int st = add(1, std::max(lo, xr), hi, nx, nx); st < 0) return st;
        const T a = std::max(lo, x0), z = std::min(hi, xr);
        if (a <= z && !(lo < x0 && hi <= x0) && !(hi > xr && lo >= xr))
            if (const int st = add(2, a, z, lo < x0 ? 1 : cl, hi > xr ? nx - 1 : ch); st < 0) return st;
        return DF_OK;
    }

    int block(int64_t first, int64_t m, int64_t* hints, T* tmp) const {
        T gen[2][kPairs];
        const T* l[2];
        int64_t cells[2][kPairs];
        int32_t flags[kPairs];
        const T* x = static_cast<const T*>(t->x);
        for (int side = 0; side < 2; ++side) {
            l[side] = lim[side] + first;
            if (ends[side]) {
                expand_grid<T>(lim[side], nlim, first, m, gen[side]);
                l[side] = gen[side];
            }
            const int st = search_slots<T>(skind[side], t->nx, x, m, l[side], &hints[side],
                                           scale[side], t->lut_size, t->lut, cells[side], scb,
                                           scbp, reinterpret_cast<void*>(intptr_t(side)), flags);
            if (st < 0) return st;
            for (int64_t i = 0; i < m; ++i) cells[side][i] = std::clamp<int64_t>(cells[side][i], 0, t->nx);
        }
        const Breaks<T> b = breaks_of<T>(t);
        const bool any_cb = cb[0] || cb[1] || cb[2];
        const int64_t Y = ny();
        for (int64_t i = 0; i < m; ++i) {
            const bool swap = l[0][i] > l[1][i];
            const T lo = swap ? l[1][i] : l[0][i], hi = swap ? l[0][i] : l[1][i];
            const int64_t cl = swap ? cells[1][i] : cells[0][i], ch = swap ? cells[0][i] : cells[1][i];
            const int64_t g = first + i;
            if (any_cb) {
                T* sum = tmp + Y;
                if (const int st = with_callbacks(lo, hi, cl, ch, b, sum, tmp); st < 0) return st;
                for (int64_t f = 0; f < Y; ++f)
                    (by_function ? r[f * nlim + g] : r[g * Y + f]) = swap ? -sum[f] : sum[f];
            } else {
                for (int64_t f = 0; f < Y; ++f) {
                    const T v = plain(f, lo, hi, cl, ch, b);
                    (by_function ? r[f * nlim + g] : r[g * Y + f]) = swap ? -v : v;
                }
            }
        }
        return DF_OK;
    }

    int blocks(int64_t b0, int64_t b1, int64_t last) const {
        T stack_tmp[32];
        const int64_t need = 2 * ny();
        T* tmp = need <= 32 ? stack_tmp : scratch<T>(need);
        if (tmp == nullptr) return DF_NO_MEMORY;
        int64_t hints[2] = {0, 0};
        int st = DF_OK;
        for (int64_t k = b0; k < b1 && st == DF_OK; ++k)
            st = block(k * kPairs, std::min(kPairs, last - k * kPairs), hints, tmp);
        if (tmp != stack_tmp) orv_serv_deallocate(tmp);
        return st;
    }

    static void body(int team, int, void*, void* args) {
        auto* j = static_cast<Integr*>(args);
        const int64_t b0 = team * j->per_team, b1 = std::min(j->nblocks, b0 + j->per_team);
        j->status[team] = b0 < b1 ? j->blocks(b0, b1, j->nblocks * kPairs) : DF_OK;
    }
};

template <typename T>
int integrate(DFTask* t, int64_t nlim, const T* llim, int64_t llimhint, const T* rlim,
              int64_t rlimhint, const T* ldh, const T* rdh, T* r, int64_t rhint,
              IntegrCallBack<T> le, void* lep, IntegrCallBack<T> re, void* rep, IntegrCallBack<T> ie,
              void* iep, SearchCallBack<T> se, void* sep, const DFThreadOps* ops) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->is_double != (sizeof(T) == 8 ? 1 : 0)) return DF_BAD_PRECISION;
    const int kind = eval_kind(t->sorder, t->stype);
    const bool all_cb = le != nullptr && re != nullptr && ie != nullptr;
    if (kind < 0 || kind == kEvalLookUp || (t->sorder == 0 && kind == kEvalGeneric && !all_cb))
        return DF_BAD_STYPE;
    Integr<T> job{};
    const T* dh[2] = {ldh, rdh};
    const int64_t hint[2] = {llimhint, rlimhint};
    for (int side = 0; side < 2; ++side)
        if (const int st = select_search<T>(t, se != nullptr, hint[side], dh[side], &job.skind[side]);
            st != DF_OK)
            return st;
    if (rhint != 0 && rhint != 0x10 && rhint != 0x20 && rhint != 0x80) return DF_BAD_INTEGRATION_RHINT;
    if (const int st = check_eval_tables(t, kind, all_cb); st != DF_OK) return st;
    if (nlim <= 0) return DF_OK;
    int64_t total = 0;
    if (llim == nullptr || rlim == nullptr || r == nullptr ||
        __builtin_mul_overflow(nlim, functions(t), &total))
        return DF_BAD_ARRAY;
    job.t = t, job.kind = kind, job.nlim = nlim, job.r = r;
    for (int side = 0; side < 2; ++side)
        job.scale[side] = search_scale<T>(t, job.skind[side], dh[side]);
    job.lim[0] = llim, job.lim[1] = rlim;
    job.ends[0] = (llimhint & DF_SITES_UNIFORM) != 0, job.ends[1] = (rlimhint & DF_SITES_UNIFORM) != 0;
    job.by_function = rhint == 0x10 || rhint == 0x80;
    job.cb[0] = le, job.cb[1] = re, job.cb[2] = ie;
    job.cbp[0] = lep, job.cbp[1] = rep, job.cbp[2] = iep;
    job.scb = se, job.scbp = sep;

    const int threads = thread_count(ops);
    const int64_t whole = nlim / kPairs;
    if (threads < 2 || nlim < 4096) {
        job.nblocks = (nlim + kPairs - 1) / kPairs;
        return job.blocks(0, job.nblocks, nlim);
    }
    // Whole blocks on the team, the short last block on the calling thread.
    const int nteams = static_cast<int>(std::min<int64_t>(threads, whole));
    job.nblocks = whole;
    job.per_team = (whole + nteams - 1) / nteams;
    ops->parallel_run(nteams, nteams, &job, Integr<T>::body);
    for (int k = 0; k < nteams; ++k)
        if (job.status[k] != DF_OK) return job.status[k];
    if (whole * kPairs < nlim) {
        int64_t hints[2] = {0, 0};
        T stack_tmp[32];
        T* tmp = 2 * functions(t) <= 32 ? stack_tmp : scratch<T>(2 * functions(t));
        if (tmp == nullptr) return DF_NO_MEMORY;
        const int st = job.block(whole * kPairs, nlim - whole * kPairs, hints, tmp);
        if (tmp != stack_tmp) orv_serv_deallocate(tmp);
        return st;
    }
    return DF_OK;
}

}  // namespace
}  // namespace orv::df

ORV_EXPORT int orv_df_kernel_dDFIntegrate1D(
    DFTask* task, int64_t, int64_t nlim, const double* llim, int64_t llimhint, const double* rlim,
    int64_t rlimhint, const double* ldh, const double* rdh, double* r, int64_t rhint,
    DFdIntegrCallBack le, void* lep, DFdIntegrCallBack re, void* rep, DFdIntegrCallBack ie,
    void* iep, DFdSearchCallBack se, void* sep, const DFThreadOps* ops) {
    return orv::df::integrate<double>(task, nlim, llim, llimhint, rlim, rlimhint, ldh, rdh, r, rhint,
                                      le, lep, re, rep, ie, iep, se, sep, ops);
}
ORV_EXPORT int orv_df_kernel_sDFIntegrate1D(
    DFTask* task, int64_t, int64_t nlim, const float* llim, int64_t llimhint, const float* rlim,
    int64_t rlimhint, const float* ldh, const float* rdh, float* r, int64_t rhint,
    DFsIntegrCallBack le, void* lep, DFsIntegrCallBack re, void* rep, DFsIntegrCallBack ie,
    void* iep, DFsSearchCallBack se, void* sep, const DFThreadOps* ops) {
    return orv::df::integrate<float>(task, nlim, llim, llimhint, rlim, rlimhint, ldh, rdh, r, rhint,
                                     le, lep, re, rep, ie, iep, se, sep, ops);
}
