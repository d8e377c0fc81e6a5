// Per-piece kernels of the basic statistics: one template per method,
// specialised by layout, weighting, level and (running method) matrix.
#pragma once

#include <array>
#include <cstdint>
#include <utility>

namespace orv::ss {

// Accumulator record of one piece: weight sum and squared weight sum.
template <typename T>
struct Acc {
    T W, W2;
};

// Working arrays: 0..3 raw moments of order 1..4 (normalised), 4..6 central
// sums of order 2..4 (not normalised). S: p x p, row >= column maintained.
template <typename T>
using Kernel = void (*)(int64_t i0, int64_t i1, int64_t ld, int64_t p, const T* x, const T* w,
                        Acc<T>* acc, T* const* a, T* S);

template <bool ByObs, typename T>
inline T at(const T* x, int64_t ld, int64_t i, int64_t j) {
    return ByObs ? x[i * ld + j] : x[j * ld + i];
}

// Raw arrays (counting the mean) and central sums kept at each level.
inline constexpr int kRunningRaw[4] = {1, 1, 2, 4};
inline constexpr int kRunningCentral[4] = {0, 1, 1, 3};
inline constexpr int kGivenCentral[4] = {1, 2, 3, 3};

// Running updates of means and central sums up to order 4, one weighted
// observation at a time (Welford; the higher-order terms after Pebay's
// one-point update). The matrix is updated by blocks around it.
template <typename T, bool ByObs, bool Weighted, int Level>
void running_kernel(int64_t i0, int64_t i1, int64_t ld, int64_t p, const T* x, const T* w,
                    Acc<T>* acc, T* const* a, T*) {
    constexpr int nraw = kRunningRaw[Level], ncen = kRunningCentral[Level];
    int64_t i = i0;
    if constexpr (Weighted) {
        while (i < i1 && w[i] == T(0)) ++i;
        if (i == i1) return;
    }
    T W = acc->W, W2 = acc->W2;
    T* mean = a[0];
    T *r2 = a[1], *r3 = a[2], *r4 = a[3], *S2 = a[4], *S3 = a[5], *S4 = a[6];
    for (; i < i1; ++i) {
        const T wi = Weighted ? w[i] : T(1);
        const T Wn = W + wi;
        const T inv = T(1) / Wn;
        const T ca = W * inv, cb = wi * inv, cc = wi * W * inv;
        T e4 = 0, e3 = 0, b6 = 0, b4 = 0, b3 = 0;
        if constexpr (ncen == 3) {
            e4 = ((W - wi) * W + wi * wi) * W * inv * inv * cb;
            e3 = cb * ca * (W - wi);
            b6 = T(6) * cb * cb;
            b4 = T(-4) * cb;
            b3 = T(-3) * cb;
        }
        for (int64_t j = 0; j < p; ++j) {
            const T xj = at<ByObs>(x, ld, i, j);
            const T d = xj - mean[j];
            if constexpr (ncen == 3) {
                const T d2 = d * d;
                S4[j] += d2 * d2 * e4 + d2 * S2[j] * b6 + d * S3[j] * b4;
                S3[j] += d2 * d * e3 + d * S2[j] * b3;
            }
            if constexpr (ncen >= 1) S2[j] += d * d * cc;
            mean[j] = inv * (wi * xj) + mean[j] * ca;
            if constexpr (nraw >= 2) {
                const T p2 = (wi * xj) * xj;
                r2[j] = inv * p2 + r2[j] * ca;
                if constexpr (nraw >= 4) {
                    const T p3 = p2 * xj, p4 = p3 * xj;
                    r3[j] = inv * p3 + r3[j] * ca;
                    r4[j] = inv * p4 + r4[j] * ca;
                }
            }
        }
        W = Wn;
        W2 += wi * wi;
    }
    acc->W = W;
    acc->W2 = W2;
}

// Plain power sums: raw moments are scaled back to sums by W, the block's
// powers added, and divided by the new W.
template <typename T, bool ByObs, bool Weighted, int Level>
void plain_kernel(int64_t i0, int64_t i1, int64_t ld, int64_t p, const T* x, const T* w,
                  Acc<T>* acc, T* const* a, T* S) {
    constexpr int nraw = Level + 1;
    int64_t i = i0;
    if constexpr (Weighted) {
        while (i < i1 && w[i] == T(0)) ++i;
        if (i == i1) return;
    }
    T W = acc->W, W2 = acc->W2;
    if (W > T(0))
        for (int r = 0; r < nraw; ++r)
            for (int64_t j = 0; j < p; ++j) a[r][j] *= W;
    T *s1 = a[0], *s2 = a[1], *s3 = a[2], *s4 = a[3];
    if constexpr (ByObs) {
        for (int64_t k = i; k < i1; ++k) {
            const T wk = Weighted ? w[k] : T(1);
            const T* row = x + k * ld;
            for (int64_t j = 0; j < p; ++j) {
                const T xj = row[j];
                const T t1 = Weighted ? wk * xj : xj;
                s1[j] += t1;
                if constexpr (nraw >= 2) {
                    const T t2 = t1 * xj;
                    s2[j] += t2;
                    if constexpr (nraw >= 3) {
                        const T t3 = t2 * xj;
                        s3[j] += t3;
                        if constexpr (nraw >= 4) s4[j] += t3 * xj;
                    }
                }
            }
        }
    } else {
        for (int64_t j = 0; j < p; ++j) {
            const T* col = x + j * ld;
            T u1 = s1[j], u2 = nraw >= 2 ? s2[j] : T(0), u3 = nraw >= 3 ? s3[j] : T(0),
              u4 = nraw >= 4 ? s4[j] : T(0);
            for (int64_t k = i; k < i1; ++k) {
                const T xk = col[k];
                const T t1 = Weighted ? w[k] * xk : xk;
                u1 += t1;
                if constexpr (nraw >= 2) {
                    const T t2 = t1 * xk;
                    u2 += t2;
                    if constexpr (nraw >= 3) {
                        const T t3 = t2 * xk;
                        u3 += t3;
                        if constexpr (nraw >= 4) u4 += t3 * xk;
                    }
                }
            }
            s1[j] = u1;
            if constexpr (nraw >= 2) s2[j] = u2;
            if constexpr (nraw >= 3) s3[j] = u3;
            if constexpr (nraw >= 4) s4[j] = u4;
        }
    }
    if constexpr (Weighted) {
        for (int64_t k = i; k < i1; ++k) {
            W += w[k];
            W2 += w[k] * w[k];
        }
    } else {
        W += T(i1 - i);
        W2 += T(i1 - i);
    }
    if (W > T(0)) {
        const T g = T(1) / W;
        for (int r = 0; r < nraw; ++r)
            for (int64_t j = 0; j < p; ++j) a[r][j] *= g;
    }
    acc->W = W;
    acc->W2 = W2;
}

// Central sums about the caller's mean (array 0, left alone); at level 3 the
// raw moments of order 2 to 4 as in plain_kernel.
template <typename T, bool ByObs, bool Weighted, int Level>
void given_mean_kernel(int64_t i0, int64_t i1, int64_t ld, int64_t p, const T* x, const T* w,
                       Acc<T>* acc, T* const* a, T* S) {
    constexpr int ncen = kGivenCentral[Level];
    constexpr bool raw = Level == 3;
    int64_t i = i0;
    if constexpr (Weighted) {
        while (i < i1 && w[i] == T(0)) ++i;
        if (i == i1) return;
    }
    T W = acc->W, W2 = acc->W2;
    if (raw && W > T(0))
        for (int r = 1; r < 4; ++r)
            for (int64_t j = 0; j < p; ++j) a[r][j] *= W;
    const T* mean = a[0];
    T *r2 = a[1], *r3 = a[2], *r4 = a[3], *S2 = a[4], *S3 = a[5], *S4 = a[6];
    auto one = [&](int64_t j, T wk, T xj) {
        const T d = xj - mean[j];
        const T d2 = d * d;
        S2[j] += wk * d2;
        if constexpr (ncen >= 2) S3[j] += wk * d2 * d;
        if constexpr (ncen >= 3) S4[j] += wk * d2 * d2;
        if constexpr (raw) {
            const T t2 = (wk * xj) * xj, t3 = t2 * xj;
            r2[j] += t2;
            r3[j] += t3;
            r4[j] += t3 * xj;
        }
    };
    if constexpr (ByObs) {
        for (int64_t k = i; k < i1; ++k) {
            const T wk = Weighted ? w[k] : T(1);
            for (int64_t j = 0; j < p; ++j) one(j, wk, x[k * ld + j]);
        }
    } else {
        for (int64_t j = 0; j < p; ++j)
            for (int64_t k = i; k < i1; ++k) one(j, Weighted ? w[k] : T(1), x[j * ld + k]);
    }
    if constexpr (Weighted) {
        for (int64_t k = i; k < i1; ++k) {
            W += w[k];
            W2 += w[k] * w[k];
        }
    } else {
        W += T(i1 - i);
        W2 += T(i1 - i);
    }
    if (raw && W > T(0)) {
        const T g = T(1) / W;
        for (int r = 1; r < 4; ++r)
            for (int64_t j = 0; j < p; ++j) a[r][j] *= g;
    }
    acc->W = W;
    acc->W2 = W2;
}

// Kernel tables, indexed as
//   8*by_observation + 4*weighted + level
template <typename T, int I>
constexpr Kernel<T> running_entry() {
    return &running_kernel<T, (I & 8) != 0, (I & 4) != 0, I & 3>;
}
template <typename T, int I>
constexpr Kernel<T> plain_entry() {
    return &plain_kernel<T, (I & 8) != 0, (I & 4) != 0, I & 3>;
}
template <typename T, int I>
constexpr Kernel<T> given_entry() {
    return &given_mean_kernel<T, (I & 8) != 0, (I & 4) != 0, I & 3>;
}

template <typename T, int... I>
constexpr auto make_running(std::integer_sequence<int, I...>) {
    return std::array<Kernel<T>, sizeof...(I)>{running_entry<T, I>()...};
}
template <typename T, int... I>
constexpr auto make_plain(std::integer_sequence<int, I...>) {
    return std::array<Kernel<T>, sizeof...(I)>{plain_entry<T, I>()...};
}
template <typename T, int... I>
constexpr auto make_given(std::integer_sequence<int, I...>) {
    return std::array<Kernel<T>, sizeof...(I)>{given_entry<T, I>()...};
}

template <typename T>
inline constexpr auto kRunningKernels = make_running<T>(std::make_integer_sequence<int, 16>{});
template <typename T>
inline constexpr auto kPlainKernels = make_plain<T>(std::make_integer_sequence<int, 16>{});
template <typename T>
inline constexpr auto kGivenKernels = make_given<T>(std::make_integer_sequence<int, 16>{});

}  // namespace orv::ss
