// _vstdSSBasic, _vstsSSBasic: moments, sums, covariance, correlation and
// cross-product over one block of observations, continuing earlier blocks
// through accum_weights. Pieces of the data run through the caller's
// threading table and are merged in a fixed order with the pairwise
// (Chan-Golub-LeVeque / Pebay) formulas for central sums.
#include "stats/basic_kernels.h"
#include "stats/frame.h"

#include <orv/vtm.h>

#include <algorithm>
#include <bit>

#include "vtm_kernels.h"

namespace {

using namespace orv::ss;

// Arrays a request can need, in the order in which missing ones are reported.
enum NeedIndex {
    kMean, kRaw2, kRaw3, kRaw4, kC2, kC3, kC4, kCov, kCor, kKurt, kSkew, kVar,
    kSum1, kSum2, kSum3, kSum4, kCs2, kCs3, kCs4, kCp, kNeedCount
};
constexpr uint32_t bit(int i) { return 1u << i; }
constexpr uint32_t kRefused = 1u << kNeedCount;

// The task field of each array, whose null status the parameter list gives.
constexpr Field kNeedField[kNeedCount] = {
    Field::mean, Field::raw2, Field::raw3, Field::raw4, Field::central2, Field::central3,
    Field::central4, Field::cov, Field::cor, Field::kurtosis, Field::skewness,
    Field::variation, Field::sum1, Field::sum2, Field::sum3, Field::sum4, Field::central_sum2,
    Field::central_sum3, Field::central_sum4, Field::cross_product};

struct Requirement {
    uint64_t estimate;
    uint32_t direct, derived, plain_sums;
};

constexpr uint32_t M = bit(kMean), R2 = bit(kRaw2), R3 = bit(kRaw3), R4 = bit(kRaw4),
                   C2 = bit(kC2), C3 = bit(kC3), C4 = bit(kC4);

// What each estimate needs under the direct methods, the derived method and
// method_plain_sums.
constexpr Requirement kRequirements[] = {
    {SS_EST_MEAN, M, M | bit(kSum1), M},
    {SS_EST_RAW2, R2, R2 | bit(kSum2), R2},
    {SS_EST_RAW3, R3, R3 | bit(kSum3), R3},
    {SS_EST_RAW4, R4, R4 | bit(kSum4), R4},
    {SS_EST_CENTRAL2, M | R2 | C2, C2 | bit(kCs2), M | R2 | C2},
    {SS_EST_CENTRAL3, M | R2 | R3 | C3, C3 | bit(kCs3), M | R2 | R3 | C3},
    {SS_EST_CENTRAL4, M | R2 | R3 | R4 | C4, C4 | bit(kCs4), M | R2 | R3 | R4 | C4},
    {SS_EST_KURTOSIS, M | R2 | R3 | R4 | C2 | C4 | bit(kKurt), M | C2 | C4 | bit(kKurt),
     M | R2 | R3 | R4 | C2 | C4 | bit(kKurt)},
    {SS_EST_SKEWNESS, M | R2 | R3 | C2 | C3 | bit(kSkew), M | C2 | C3 | bit(kSkew),
     M | R2 | R3 | C2 | C3 | bit(kSkew)},
    {SS_EST_VARIATION, M | R2 | C2 | bit(kVar), M | C2 | bit(kVar), M | R2 | C2 | bit(kVar)},
    {SS_EST_COV, M | bit(kCov), bit(kCov) | bit(kCp), M | bit(kCov)},
    {SS_EST_COR, M | bit(kCor), bit(kCor) | bit(kCp), M | bit(kCor)},
    {SS_EST_SUM1, bit(kSum1), kRefused, bit(kSum1)},
    {SS_EST_SUM2, bit(kSum2), kRefused, bit(kSum2)},
    {SS_EST_SUM3, bit(kSum3), kRefused, bit(kSum3)},
    {SS_EST_SUM4, bit(kSum4), kRefused, bit(kSum4)},
    {SS_EST_CENTRAL_SUM2, M | bit(kCs2), kRefused, M | R2 | bit(kCs2)},
    {SS_EST_CENTRAL_SUM3, M | bit(kCs3), kRefused, M | R2 | R3 | bit(kCs3)},
    {SS_EST_CENTRAL_SUM4, M | bit(kCs4), kRefused, M | R2 | R3 | R4 | bit(kCs4)},
    {SS_EST_CROSS_PRODUCT, M | bit(kCp), kRefused, M | bit(kCp)},
};

enum class Method { Running, PlainSums, GivenMean };

// BLAS of the element type.
inline void syr(int n, double alpha, const double* x, double* a) {
    const int one = 1;
    orv_blas_dsyr("U", &n, &alpha, x, &one, a, &n);
}
inline void syr(int n, float alpha, const float* x, float* a) {
    const int one = 1;
    orv_blas_ssyr("U", &n, &alpha, x, &one, a, &n);
}
inline void syrk(const char* trans, int n, int k, const double* a, int lda, double* c) {
    const double one = 1;
    orv_blas_dsyrk("U", trans, &n, &k, &one, a, &lda, &one, c, &n);
}
inline void syrk(const char* trans, int n, int k, const float* a, int lda, float* c) {
    const float one = 1;
    orv_blas_ssyrk("U", trans, &n, &k, &one, a, &lda, &one, c, &n);
}
inline void gemm(const char* ta, const char* tb, int n, int k, const double* a, int lda,
                 const double* b, int ldb, double* c) {
    const double one = 1;
    orv_blas_dgemm(ta, tb, &n, &n, &k, &one, a, &lda, b, &ldb, &one, c, &n);
}
inline void gemm(const char* ta, const char* tb, int n, int k, const float* a, int lda,
                 const float* b, int ldb, float* c) {
    const float one = 1;
    orv_blas_sgemm(ta, tb, &n, &n, &k, &one, a, &lda, b, &ldb, &one, c, &n);
}

template <typename T>
inline T tsqrt(T v) {
    return static_cast<T>(__vstdSqrt(static_cast<double>(v)));
}

// In-place reciprocal square root of d[0..p) under the fixed mode; the
// vector kernel's first slot.
template <typename T>
void inv_sqrt(int p, T* d) {
    const uint32_t old = orv_vtm_kernel_SetMode(VTM_FTZDAZ_OFF);
    if constexpr (sizeof(T) == 8)
        orv_vtm_kernel_dInvSqrt_ttab[0](p, d, d);
    else
        orv_vtm_kernel_sInvSqrt_ttab[0](p, d, d);
    orv_vtm_kernel_SetMode(old);
}

// Position of element (i, j) of a p x p matrix in a storage form: 0 full,
// 1 lower packed by rows, 2 (or 3) upper packed by rows.
inline int64_t packed_pos(int form, int64_t p, int64_t i, int64_t j) {
    if (form == 0) return i * p + j;
    if (form == 1) return i * (i + 1) / 2 + j;
    return i * p - i * (i - 1) / 2 + (j - i);
}
inline bool in_form(int form, int64_t i, int64_t j) {
    return form == 0 || (form == 1 ? j <= i : j >= i);
}

// Expands a matrix of any form into the full p x p S, mirrored.
template <typename T>
void unpack(const T* src, int form, int64_t p, T* S) {
    if (form == 0) {
        std::memcpy(S, src, sizeof(T) * p * p);
        return;
    }
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = 0; j <= i; ++j) {
            const T v = form == 1 ? src[packed_pos(1, p, i, j)] : src[packed_pos(form, p, j, i)];
            S[i * p + j] = v;
            S[j * p + i] = v;
        }
}

// Writes val(i, j, S[i][j]) (i >= j) into out in its storage form, for the
// pairs the mask admits. out may be S itself (full form): the maintained
// triangle is rewritten in place and mirrored.
template <typename T, typename F>
void write_matrix(T* out, int form, int64_t p, T* S, const Mask& mask, F val) {
    if (out == S) {
        for (int64_t i = 0; i < p; ++i) {
            if (!mask.admits(i)) continue;
            for (int64_t j = 0; j <= i; ++j)
                if (mask.admits(j)) S[i * p + j] = val(i, j, S[i * p + j]);
        }
        for (int64_t i = 0; i < p; ++i) {
            if (!mask.admits(i)) continue;
            for (int64_t j = i + 1; j < p; ++j)
                if (mask.admits(j)) S[i * p + j] = S[j * p + i];
        }
        return;
    }
    for (int64_t i = 0; i < p; ++i) {
        if (!mask.admits(i)) continue;
        for (int64_t j = 0; j < p; ++j) {
            if (!in_form(form, i, j) || !mask.admits(j)) continue;
            const int64_t hi = std::max(i, j), lo = std::min(i, j);
            out[packed_pos(form, p, i, j)] = val(hi, lo, S[hi * p + lo]);
        }
    }
}

template <typename T>
struct Piece {
    T* a[7];
    T* S;
    Acc<T>* acc;
};

template <typename T>
struct Context {
    const T* x;
    const T* w;
    int64_t n, p, ld;
    bool by_obs, weighted, matrix;
    Method method;
    int level;
    Piece<T>* pieces;
    const T* given_mean;    // caller's mean under method_given_mean
    const T* carried_mean;  // centring of the previous call's matrix, if kept
    int32_t status;
};

// Observations per block of the rank-k updates: at least 128, or as many as
// fill 256 KiB, and no more than the piece holds.
inline int64_t block_length(int64_t p, std::size_t elem, int64_t len) {
    const int64_t bytes_per_obs = p * static_cast<int64_t>(elem);
    const int64_t fit = bytes_per_obs > 262144 ? 0 : 262144 / bytes_per_obs;
    return std::max<int64_t>(1, std::min<int64_t>(std::max<int64_t>(128, fit), len));
}

// The running method's matrix, a block at a time (Chan, Golub and LeVeque's
// pairwise update): the block's cross-product about its own mean through the
// BLAS, then S += C_b + Wa Wb / (Wa + Wb) (m_b - m_a)(m_b - m_a)'. The
// running kernel updates the means and central sums of the same block while
// it is in cache, exactly as without a matrix.
template <typename T>
void running_matrix(Context<T>& c, Piece<T>& pc, int64_t i0, int64_t i1, Kernel<T> vec) {
    const int64_t p = c.p;
    const int pi = static_cast<int>(p);
    const int64_t block = block_length(p, sizeof(T), i1 - i0);
    Buffer<T> buf;
    if (!buf.allocate(static_cast<std::size_t>(block * p * (c.weighted ? 2 : 1) + 2 * p), false)) {
        c.status = SS_ERR_NO_MEMORY;
        return;
    }
    T* const d = buf.get();                  // the block centred on its mean
    T* const wd = d + block * p;             // weighted: w[i] times d
    T* const ma = wd + (c.weighted ? block * p : 0);  // running mean before the block
    T* const mb = ma + p;                    // block mean, then m_b - m_a
    for (int64_t b = i0; b < i1; b += block) {
        const int64_t e = std::min(b + block, i1);
        const int64_t k = e - b;
        // Block weight and mean, summed in double also for the single form.
        double Wb = 0;
        if (c.weighted)
            for (int64_t i = b; i < e; ++i) Wb += c.w[i];
        else
            Wb = static_cast<double>(k);
        const T Wa = pc.acc->W;
        std::memcpy(ma, pc.a[0], sizeof(T) * p);
        vec(b, e, c.ld, p, c.x, c.w, pc.acc, pc.a, pc.S);
        if (Wb == 0) continue;  // zero weights add nothing (and NaN is not 0)
        for (int64_t j = 0; j < p; ++j) {
            double s = 0;
            if (c.by_obs)
                for (int64_t i = b; i < e; ++i) s += double(c.weighted ? c.w[i] : T(1)) * c.x[i * c.ld + j];
            else
                for (int64_t i = b; i < e; ++i) s += double(c.weighted ? c.w[i] : T(1)) * c.x[j * c.ld + i];
            mb[j] = static_cast<T>(s / Wb);
        }
        if (c.by_obs) {
            for (int64_t i = b; i < e; ++i) {
                const T* row = c.x + i * c.ld;
                T* out = d + (i - b) * p;
                for (int64_t j = 0; j < p; ++j) out[j] = row[j] - mb[j];
            }
        } else {
            for (int64_t j = 0; j < p; ++j) {
                const T* col = c.x + j * c.ld + b;
                T* out = d + j * k;
                for (int64_t i = 0; i < k; ++i) out[i] = col[i] - mb[j];
            }
        }
        const int ki = static_cast<int>(k);
        // Row-major S with row >= column is the column-major upper triangle.
        if (!c.weighted) {
            if (c.by_obs)
                syrk("N", pi, ki, d, pi, pc.S);
            else
                syrk("T", pi, ki, d, ki, pc.S);
        } else if (c.by_obs) {
            for (int64_t i = 0; i < k; ++i)
                for (int64_t j = 0; j < p; ++j) wd[i * p + j] = c.w[b + i] * d[i * p + j];
            gemm("N", "T", pi, ki, d, pi, wd, pi, pc.S);
        } else {
            for (int64_t j = 0; j < p; ++j)
                for (int64_t i = 0; i < k; ++i) wd[j * k + i] = c.w[b + i] * d[j * k + i];
            gemm("T", "N", pi, ki, d, ki, wd, ki, pc.S);
        }
        if (Wa == T(0)) continue;
        const T f = Wa * T(Wb) / (Wa + T(Wb));
        for (int64_t j = 0; j < p; ++j) mb[j] -= ma[j];
        syr(pi, f, mb, pc.S);
    }
}

template <typename T>
void run_piece(int piece, int, int npieces, void* vctx) {
    auto& c = *static_cast<Context<T>*>(vctx);
    Piece<T>& pc = c.pieces[piece];
    const int64_t chunk = c.n / npieces;
    const int64_t i0 = piece * chunk;
    const int64_t i1 = piece == npieces - 1 ? c.n : i0 + chunk;
    if (c.method == Method::Running) {
        const int idx = 8 * c.by_obs + 4 * c.weighted + c.level;
        const Kernel<T> vec = kRunningKernels<T>[static_cast<std::size_t>(idx)];
        if (c.matrix)
            running_matrix(c, pc, i0, i1, vec);
        else
            vec(i0, i1, c.ld, c.p, c.x, c.w, pc.acc, pc.a, pc.S);
        return;
    }
    const int idx = 8 * c.by_obs + 4 * c.weighted + c.level;
    const Kernel<T> kernel = c.method == Method::PlainSums
                                 ? kPlainKernels<T>[static_cast<std::size_t>(idx)]
                                 : kGivenKernels<T>[static_cast<std::size_t>(idx)];
    if (!c.matrix) {
        kernel(i0, i1, c.ld, c.p, c.x, c.w, pc.acc, pc.a, pc.S);
        return;
    }
    // The matrix in blocks through rank updates: add back W m m' of the
    // previous centring, add the blocks' cross-products, centre on the new mean.
    const int p = static_cast<int>(c.p);
    const T* m0 = (c.method == Method::GivenMean && c.carried_mean) ? c.carried_mean : pc.a[0];
    syr(p, pc.acc->W, m0, pc.S);
    const int64_t block = block_length(c.p, sizeof(T), i1 - i0);
    Buffer<T> scratch;
    if (c.weighted && !scratch.allocate(static_cast<std::size_t>(block * c.p), false)) {
        c.status = SS_ERR_NO_MEMORY;
        return;
    }
    for (int64_t b = i0; b < i1; b += block) {
        const int64_t e = std::min(b + block, i1);
        const int k = static_cast<int>(e - b);
        kernel(b, e, c.ld, c.p, c.x, c.w, pc.acc, pc.a, pc.S);
        const int ld = static_cast<int>(c.ld);
        if (!c.weighted) {
            if (c.by_obs)
                syrk("N", p, k, c.x + b * c.ld, ld, pc.S);
            else
                syrk("T", p, k, c.x + b, ld, pc.S);
            continue;
        }
        T* s = scratch.get();
        if (c.by_obs) {
            for (int64_t i = b; i < e; ++i)
                for (int64_t j = 0; j < c.p; ++j) s[(i - b) * c.p + j] = c.w[i] * c.x[i * c.ld + j];
            gemm("N", "T", p, k, c.x + b * c.ld, ld, s, p, pc.S);
        } else {
            for (int64_t j = 0; j < c.p; ++j)
                for (int64_t i = b; i < e; ++i) s[j * k + (i - b)] = c.w[i] * c.x[j * c.ld + i];
            gemm("T", "N", p, k, c.x + b, ld, s, k, pc.S);
        }
    }
    const T* m1 = c.method == Method::GivenMean ? c.given_mean : pc.a[0];
    syr(p, -pc.acc->W, m1, pc.S);
}

// The planner: the arrays an estimate word needs under a method word, the
// path, and how deep the pass must go (the level fixes how many raw arrays,
// counting the mean, and central sums the pass maintains).
struct Plan {
    Method method;
    bool derived;   // no data pass: moments from sums, matrices from the cross-product
    uint32_t need;  // a bit per NeedIndex, and kRefused
    int level, nraw, ncen;
};

bool make_plan(uint64_t estimates, uint64_t method_word, Plan* plan) {
    const uint64_t direct_bits =
        method_word & (SS_METHOD_PLAIN_SUMS | SS_METHOD_RUNNING | SS_METHOD_GIVEN_MEAN);
    const bool from_sums = (method_word & (SS_METHOD_FROM_SUMS | SS_METHOD_FROM_SUMS_2)) != 0;
    const int ndirect = std::popcount(direct_bits);
    int table;  // 0 direct, 1 derived, 2 plain sums
    if (ndirect == 1)
        table = (method_word & SS_METHOD_PLAIN_SUMS) ? 2 : 0;
    else if (ndirect == 0 && from_sums)
        table = 1;
    else
        return false;
    const Method method = (method_word & SS_METHOD_PLAIN_SUMS)  ? Method::PlainSums
                          : (method_word & SS_METHOD_RUNNING) ? Method::Running
                                                              : Method::GivenMean;
    uint32_t need = 0;
    for (const Requirement& r : kRequirements)
        if (estimates & r.estimate)
            need |= table == 0 ? r.direct : table == 1 ? r.derived : r.plain_sums;
    // The caller's mean is the input of the given-mean pass.
    if (!from_sums && method == Method::GivenMean) need |= M;
    auto needs = [&](int k) { return (need & bit(k)) != 0; };
    int level = 0;
    if (method == Method::Running) {
        if (needs(kCs2) || needs(kC2)) level = 1;
        if (needs(kSum2) || needs(kRaw2)) level = 2;
        if (need & (bit(kSum3) | R3 | bit(kSum4) | R4 | bit(kCs3) | C3 | bit(kCs4) | C4)) level = 3;
    } else if (method == Method::PlainSums) {
        if (needs(kSum2) || needs(kRaw2)) level = 1;
        if (needs(kSum3) || needs(kRaw3)) level = 2;
        if (needs(kSum4) || needs(kRaw4)) level = 3;
    } else {
        if (needs(kCs3) || needs(kC3)) level = 1;
        if (needs(kCs4) || needs(kC4)) level = 2;
        if (need & (bit(kSum2) | R2 | bit(kSum3) | R3 | bit(kSum4) | R4)) level = 3;
    }
    plan->method = method;
    plan->derived = from_sums;
    plan->need = need;
    plan->level = level;
    plan->nraw = method == Method::Running    ? kRunningRaw[level]
                 : method == Method::PlainSums ? level + 1
                 : level == 3                  ? 4
                                               : 1;
    plan->ncen = method == Method::Running    ? kRunningCentral[level]
                 : method == Method::PlainSums ? 0
                                               : kGivenCentral[level];
    return true;
}

template <typename T>
int32_t basic(SsTask* task, uint64_t estimates, uint64_t method_word,
              const SsThreadingTable* threading) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;

    Plan plan;
    if (!make_plan(estimates, method_word, &plan)) return SS_ERR_METHOD;
    const Method method = plan.method;
    const bool derived_path = plan.derived;
    uint32_t need = plan.need;
    T* field[kNeedCount];
    for (int k = 0; k < kNeedCount; ++k) field[k] = view.real(kNeedField[k]);
    for (int k = 0; k < kNeedCount; ++k)
        if ((need & bit(k)) && !field[k]) return TaskView<T>::missing(kNeedField[k]);
    if (need & kRefused) return SS_ERR_METHOD;
    auto needs = [&](int k) { return (need & bit(k)) != 0; };

    const int is64 = task->int_is_64;
    // The creator checked p, but the caller owns it and may have changed it.
    const int64_t p = task->dimension ? read_int(task->dimension, is64) : 0;
    if (p < 1) return SS_ERR_DIMENSION;
    const Mask mask{task->indices, is64};
    T* accum = static_cast<T*>(task->accum_weights);
    const T* weights = static_cast<const T*>(task->weights);

    // Data checks of the chosen path.
    int64_t n = 0;
    if (!derived_path) {
        if (!task->observations || (n = read_int(task->observations, is64)) < 1)
            return SS_ERR_OBSERVATIONS;
        if (!task->data) return SS_ERR_NULL_DATA;
        if (!task->data_storage) return SS_ERR_STORAGE_WORD;
        const int64_t word = read_int(task->data_storage, is64);
        if (!(word & (SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION)))
            return SS_ERR_STORAGE_VALUE;
    } else if (!accum) {
        if (!task->observations || weights || (n = read_int(task->observations, is64)) < 1)
            return SS_ERR_ACCUM_WEIGHTS;
    }

    // Storage forms of the matrices asked for.
    auto form_of = [&](void* word_ptr, int32_t* form) {
        if (!word_ptr) return false;
        *form = static_cast<int32_t>(read_int(word_ptr, is64) & 3);
        if (*form == 3) *form = 2;
        return true;
    };
    int32_t cov_form = 0, cor_form = 0, cp_form = 0;
    if (needs(kCov) && !form_of(task->cov_storage, &cov_form)) return SS_ERR_STORAGE_WORD;
    if (needs(kCor) && !form_of(task->cor_storage, &cor_form)) return SS_ERR_STORAGE_WORD;
    if (needs(kCp) && !form_of(task->cross_product_storage, &cp_form)) return SS_ERR_STORAGE_WORD;
    // A direct bit beside a sums bit takes the direct table but the derived
    // path, which builds cov and cor from the cross-product all the same.
    const bool want_matrix = needs(kCov) || needs(kCor) || needs(kCp);
    if (derived_path && want_matrix && !needs(kCp)) {
        if (!field[kCp]) return SS_ERR_CROSS_PRODUCT;
        if (!form_of(task->cross_product_storage, &cp_form)) return SS_ERR_STORAGE_WORD;
    }

    // Sizes from the caller's counts: p reals, the p x p matrix, the n x p
    // data and the BLAS's 32-bit leading dimension.
    int64_t count = 0;
    if (!checked_count(p, 1, sizeof(T), &count)) return SS_ERR_NO_MEMORY;
    if (want_matrix && !checked_count(p, p, sizeof(T), &count)) return SS_ERR_NO_MEMORY;
    if (!derived_path) {
        if (!checked_count(n, p, sizeof(T), &count)) return SS_ERR_NO_MEMORY;
        if (want_matrix && method != Method::Running && n > INT32_MAX) return SS_ERR_NO_MEMORY;
    }

    T* const sum_arr[7] = {field[kSum1], field[kSum2], field[kSum3], field[kSum4],
                           field[kCs2], field[kCs3], field[kCs4]};
    T* const mom_arr[7] = {field[kMean], field[kRaw2], field[kRaw3], field[kRaw4],
                           field[kC2], field[kC3], field[kC4]};
    const int sum_need[7] = {kSum1, kSum2, kSum3, kSum4, kCs2, kCs3, kCs4};
    const int mom_need[7] = {kMean, kRaw2, kRaw3, kRaw4, kC2, kC3, kC4};

    T W = 0, W2 = 0;
    Buffer<T> s_buf;
    T* S = nullptr;

    // Working arrays of piece 0 and their owners.
    T* work[7] = {};
    Buffer<T> work_buf[7];
    Buffer<T> partial_buf;
    Buffer<Acc<T>> acc_buf;
    Buffer<Piece<T>> piece_buf;

    if (!derived_path) {
        const bool by_obs = p > 1 && !(read_int(task->data_storage, is64) & SS_STORAGE_BY_VARIABLE);
        const int64_t q = want_matrix ? p : 1;
        const int64_t maxthr = max_threads(threading);
        int64_t work_units = 0;  // saturates: only its comparison with the thread count matters
        if (__builtin_mul_overflow(q * p, n, &work_units)) work_units = INT64_MAX;
        int64_t npieces = std::min({maxthr, work_units >> 13, n >> 4});
        if (npieces < 1) npieces = 1;

        const int nraw = plan.nraw, ncen = plan.ncen, level = plan.level;
        auto in_level = [&](int k) { return k < 4 ? k < nraw : k - 4 < ncen; };

        // Accumulators.
        Acc<T> acc_stack{};
        Acc<T>* acc = &acc_stack;
        if (npieces > 1) {
            if (!acc_buf.allocate(static_cast<std::size_t>(npieces), true)) return SS_ERR_NO_MEMORY;
            acc = acc_buf.get();
        }
        if (accum) {
            acc[0].W = accum[0];
            acc[0].W2 = accum[1];
        }
        W = acc[0].W;
        W2 = acc[0].W2;

        // The matrix S and the undoing of the previous normalisation.
        if (want_matrix) {
            T* src = needs(kCp) ? field[kCp] : needs(kCov) ? field[kCov] : field[kCor];
            const int form = needs(kCp) ? cp_form : needs(kCov) ? cov_form : cor_form;
            if (form == 0 && !mask.indices) {
                S = src;
            } else {
                if (!s_buf.allocate(static_cast<std::size_t>(p * p), false)) return SS_ERR_NO_MEMORY;
                S = s_buf.get();
                unpack(src, form, p, S);
            }
            if (!needs(kCp)) {
                if (W > T(0)) {
                    const T f = W - W2 / W;
                    if (needs(kCov)) {
                        for (int64_t e = 0; e < p * p; ++e) S[e] *= f;
                    } else {
                        for (int64_t i = 0; i < p; ++i)
                            for (int64_t j = 0; j < p; ++j)
                                if (i != j)
                                    S[i * p + j] = tsqrt(S[j * p + j] * S[i * p + i]) * f * S[i * p + j];
                        for (int64_t i = 0; i < p; ++i) S[i * p + i] *= f;
                    }
                } else {
                    std::memset(S, 0, sizeof(T) * p * p);
                }
            }
        }

        // Partial results of pieces 1 .. T-1.
        const int raw_from = method == Method::GivenMean ? 1 : 0;
        const int64_t per_piece =
            (nraw - raw_from + ncen) * p + (want_matrix ? p * p : 0);
        if (npieces > 1) {
            int64_t partial = 0;
            if (!checked_count(npieces - 1, per_piece, sizeof(T), &partial) ||
                !partial_buf.allocate(static_cast<std::size_t>(partial), true))
                return SS_ERR_NO_MEMORY;
        }

        // Working arrays of piece 0.
        bool other[7] = {};
        for (int k = 0; k < 7; ++k) {
            if (!in_level(k)) continue;
            if (k == 0 && method == Method::GivenMean) {
                work[0] = field[kMean];
                continue;
            }
            T* const prev = sum_arr[k] ? sum_arr[k] : mom_arr[k];
            if (!mask.indices && prev) {
                work[k] = prev;
                other[k] = (k < 4) == (prev == sum_arr[k]);
            } else {
                if (!work_buf[k].allocate(static_cast<std::size_t>(p), true)) return SS_ERR_NO_MEMORY;
                work[k] = work_buf[k].get();
                if (W > T(0) && prev) {
                    std::memcpy(work[k], prev, sizeof(T) * p);
                    other[k] = (k < 4) == (prev == sum_arr[k]);
                }
            }
        }
        // Bring carried values to the pass's convention.
        if (W > T(0)) {
            const T g = T(1) / W;
            for (int k = 0; k < 7; ++k) {
                if (!work[k] || !other[k]) continue;
                const T f = k < 4 ? g : k == 4 ? (W * W - W2) / W : W;
                for (int64_t j = 0; j < p; ++j) work[k][j] *= f;
            }
        }
        // A first call starts from zero.
        if (W == T(0)) {
            for (int k = raw_from; k < 7; ++k)
                if (work[k]) std::memset(work[k], 0, sizeof(T) * p);
            if (S) std::memset(S, 0, sizeof(T) * p * p);
        }

        // The pieces.
        if (!piece_buf.allocate(static_cast<std::size_t>(npieces), true)) return SS_ERR_NO_MEMORY;
        Piece<T>* pieces = piece_buf.get();
        for (int k = 0; k < 7; ++k) pieces[0].a[k] = work[k];
        pieces[0].S = S;
        pieces[0].acc = &acc[0];
        T* cursor = partial_buf.get();
        for (int64_t t = 1; t < npieces; ++t) {
            Piece<T>& pc = pieces[t];
            pc.acc = &acc[t];
            for (int k = 0; k < 7; ++k) {
                if (!in_level(k)) continue;
                if (k == 0 && method == Method::GivenMean) {
                    pc.a[0] = work[0];
                    continue;
                }
                pc.a[k] = cursor;
                cursor += p;
            }
            if (want_matrix) {
                pc.S = cursor;
                cursor += p * p;
            }
        }
        Context<T> ctx{static_cast<const T*>(task->data), weights, n, p, by_obs ? p : n, by_obs,
                       weights != nullptr, want_matrix, method, level, pieces, field[kMean], static_cast<const T*>(task->carried_mean), 0};
        run_pieces(threading, static_cast<int>(npieces), &ctx, &run_piece<T>);

        // Merge pieces 1 .. T-1 into piece 0, in order.
        for (int64_t t = 1; t < npieces; ++t) {
            const Piece<T>& pc = pieces[t];
            const T Wa = acc[0].W, Wb = acc[t].W;
            if (Wb == T(0)) continue;
            const T inv = T(1) / (Wa + Wb);
            const bool shared_mean = method == Method::GivenMean;
            const T* ma = work[0];
            const T* mb = pc.a[0];
            if (want_matrix) {
                const T f = Wa == T(0) ? T(0) : Wa * Wb * inv;
                for (int64_t i = 0; i < p; ++i) {
                    const T di = shared_mean ? T(0) : mb[i] - ma[i];
                    for (int64_t j = 0; j <= i; ++j) {
                        const T dj = shared_mean ? T(0) : mb[j] - ma[j];
                        S[i * p + j] += pc.S[i * p + j] + f * di * dj;
                    }
                }
            }
            for (int64_t j = 0; j < p; ++j) {
                const T d = shared_mean ? T(0) : mb[j] - ma[j];
                const T d2 = d * d;
                if (ncen >= 3) {
                    work[6][j] += pc.a[6][j] + d * (T(4) * inv) * (Wa * pc.a[5][j] - Wb * work[5][j]) +
                                  d2 * inv * inv *
                                      (T(6) * (Wb * Wb * work[4][j] + Wa * Wa * pc.a[4][j]) +
                                       (Wa * Wa + Wb * Wb - Wa * Wb) * Wa * Wb * inv * d2);
                }
                if (ncen >= 2) {
                    const T di = d * inv;
                    work[5][j] += pc.a[5][j] + d * ((T(3) * inv) * (Wa * pc.a[4][j] - Wb * work[4][j]) +
                                                    di * di * (Wa - Wb) * Wa * Wb);
                }
                if (ncen >= 1) work[4][j] += pc.a[4][j] + d2 * Wa * Wb * inv;
                for (int k = raw_from; k < nraw; ++k)
                    work[k][j] = (pc.a[k][j] * Wb + work[k][j] * Wa) * inv;
            }
            acc[0].W = Wa + Wb;
            acc[0].W2 += acc[t].W2;
        }
        // A failure inside a piece.
        if (ctx.status) return ctx.status;
        W = acc[0].W;
        W2 = acc[0].W2;
    } else {
        // Derived path: no data pass.
        if (accum) {
            W = accum[0];
            W2 = accum[1];
        } else {
            W = W2 = static_cast<T>(n);
        }
        if (want_matrix) {  // the direct table may ask for the cross-product itself
            if (cp_form == 0) {
                S = field[kCp];
            } else {
                if (!s_buf.allocate(static_cast<std::size_t>(p * p), false)) return SS_ERR_NO_MEMORY;
                S = s_buf.get();
                unpack(field[kCp], cp_form, p, S);
            }
        }
        const T g = T(1) / W;
        for (int k = 0; k < 4; ++k) {
            if (!needs(mom_need[k]) || !sum_arr[k]) continue;
            for (int64_t j = 0; j < p; ++j)
                if (mask.admits(j)) mom_arr[k][j] = sum_arr[k][j] * g;
            need &= ~bit(sum_need[k]);
        }
        for (int k = 4; k < 7; ++k) {
            if (!needs(mom_need[k]) || !sum_arr[k]) continue;
            for (int64_t j = 0; j < p; ++j)
                if (mask.admits(j)) mom_arr[k][j] = sum_arr[k][j];
            need &= ~bit(sum_need[k]);
        }
    }

    // Correlation, with variances on its diagonal.
    const T h = W > T(0) ? T(1) / (W - W2 / W) : T(1);
    if (needs(kCor)) {
        Buffer<T> d;
        if (d.allocate(static_cast<std::size_t>(p), false)) {
            T* dv = d.get();
            for (int64_t j = 0; j < p; ++j) dv[j] = S[j * p + j];
            inv_sqrt(static_cast<int>(p), dv);
            write_matrix(field[kCor], cor_form, p, S, mask, [&](int64_t i, int64_t j, T s) {
                return i == j ? s * h : s * dv[i] * dv[j];
            });
        }
    }
    // Covariance and cross-product.
    if (needs(kCov))
        write_matrix(field[kCov], cov_form, p, S, mask, [&](int64_t, int64_t, T s) { return s * h; });
    if (needs(kCp))
        write_matrix(field[kCp], cp_form, p, S, mask, [&](int64_t, int64_t, T s) { return s; });
    s_buf.reset();

    // Results of the pass into the arrays asked for.
    if (!derived_path) {
        if (accum) {
            accum[0] = W;
            accum[1] = W2;
        }
        for (int k = 0; k < 7; ++k) {
            if (!work[k]) continue;
            T* const targets[2] = {needs(sum_need[k]) ? sum_arr[k] : nullptr,
                                   needs(mom_need[k]) ? mom_arr[k] : nullptr};
            for (T* dst : targets) {
                if (!dst || dst == work[k]) continue;
                for (int64_t j = 0; j < p; ++j)
                    if (mask.admits(j)) dst[j] = work[k][j];
            }
        }
    }
    // A central-moment array that served as working array without being asked
    // for is normalised all the same, so that a continuing call reads back the
    // convention it expects.
    if (!derived_path) {
        const T f[3] = {W / (W * W - W2), T(1) / W, T(1) / W};
        for (int k = 4; k < 7; ++k) {
            if (!work[k] || work[k] != mom_arr[k] || needs(mom_need[k])) continue;
            for (int64_t j = 0; j < p; ++j) work[k][j] *= f[k - 4];
        }
    }
    // Raw sums from raw moments (the derived path only reads sums).
    for (int k = 0; k < 4 && !derived_path; ++k) {
        if (!needs(sum_need[k])) continue;
        for (int64_t j = 0; j < p; ++j)
            if (mask.admits(j)) sum_arr[k][j] *= W;
    }
    // Central results from raw moments follow the method bit, on either path.
    const bool plain = (method_word & SS_METHOD_PLAIN_SUMS) != 0;
    T* const mean = field[kMean];
    T *const r2 = field[kRaw2], *const r3 = field[kRaw3], *const r4 = field[kRaw4];
    // Central sums from raw moments.
    if (plain) {
        for (int64_t j = 0; j < p; ++j) {
            if (!mask.admits(j)) continue;
            const T m = mean[j], m2 = m * m;
            if (needs(kCs2)) field[kCs2][j] = (r2[j] - m2) * W;
            if (needs(kCs3)) field[kCs3][j] = ((m2 + m2 - T(3) * r2[j]) * m + r3[j]) * W;
            if (needs(kCs4))
                field[kCs4][j] = (T(-4) * r3[j] * m + r4[j] + (T(-3) * m2 + T(6) * r2[j]) * m2) * W;
        }
    }
    // Central moments and the shape estimates.
    const T c2f = W / (W * W - W2), c2fp = W * W / (W * W - W2);
    for (int64_t j = 0; j < p; ++j) {
        if (!mask.admits(j)) continue;
        if (needs(kC2)) {
            T& c2 = field[kC2][j];
            c2 = plain ? (r2[j] - mean[j] * mean[j]) * c2fp : c2 * c2f;
        }
        if (needs(kC3)) {
            T& c3 = field[kC3][j];
            if (plain) {
                const T m = mean[j], m2 = m * m;
                c3 = (m2 + m2 - T(3) * r2[j]) * m + r3[j];
            } else {
                c3 = c3 / W;
            }
        }
        if (needs(kC4)) {
            T& c4 = field[kC4][j];
            if (plain) {
                const T m = mean[j], m2 = m * m;
                c4 = T(-4) * r3[j] * m + r4[j] + (T(-3) * m2 + T(6) * r2[j]) * m2;
            } else {
                c4 = c4 / W;
            }
        }
        if (needs(kKurt)) {
            const T c2 = field[kC2][j];
            field[kKurt][j] = field[kC4][j] / (c2 * c2) - T(3);
        }
        if (needs(kSkew)) {
            const T c2 = field[kC2][j];
            field[kSkew][j] = field[kC3][j] / tsqrt(c2 * c2 * c2);
        }
        if (needs(kVar)) field[kVar][j] = tsqrt(field[kC2][j]) / mean[j];
    }

    // Keep the mean that centred this call's matrix.
    if (!derived_path && method == Method::GivenMean) {
        if (!task->carried_mean) {
            task->carried_mean = orv_serv_allocate(sizeof(T) * static_cast<std::size_t>(p), orv::kAlignment);
            if (!task->carried_mean) return SS_ERR_NO_MEMORY;
        }
        std::memcpy(task->carried_mean, work[0], sizeof(T) * p);
    }
    return SS_OK;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSBasic(SsTask* task, uint64_t estimates, uint64_t method,
                                   const SsThreadingTable* threading) {
    return basic<double>(task, estimates, method, threading);
}

ORV_EXPORT int32_t _vstsSSBasic(SsTask* task, uint64_t estimates, uint64_t method,
                                   const SsThreadingTable* threading) {
    return basic<float>(task, estimates, method, threading);
}
