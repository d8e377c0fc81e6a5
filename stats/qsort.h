// In-place sorting and selection of reals: an iterative quicksort with a
// fixed stack and median-of-three partitioning (the partition of Sedgewick's
// quicksort as Numerical Recipes writes it), straight insertion for short
// ranges, and the same partition for selection of one rank.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace orv::ss {

// Elements `step` apart, so that one body serves rows and columns.
template <typename T>
struct Strided {
    T* a;
    int64_t step;
    T& operator[](int64_t i) const { return a[i * step]; }
};

// Median of a[l], a[l+1], a[r] into a[l+1] with a[l] <= a[l+1] <= a[r], then
// partition about it. Returns the pivot's final place j; *up is where the
// upward scan stopped. Both scans stop at the sentinels a[l+1] and a[r]
// whatever the values (a NaN stops a scan), so they never leave [l, r].
template <typename A>
int64_t partition(A a, int64_t l, int64_t r, int64_t* up) {
    using std::swap;
    swap(a[(l + r) / 2], a[l + 1]);
    if (a[l] > a[r]) swap(a[l], a[r]);
    if (a[l + 1] > a[r]) swap(a[l + 1], a[r]);
    if (a[l] > a[l + 1]) swap(a[l], a[l + 1]);
    int64_t i = l + 1, j = r;
    const auto pivot = a[l + 1];
    for (;;) {
        do ++i; while (a[i] < pivot);
        do --j; while (a[j] > pivot);
        if (j < i) break;
        swap(a[i], a[j]);
    }
    a[l + 1] = a[j];
    a[j] = pivot;
    *up = i;
    return j;
}

// Ranges shorter than this go to straight insertion.
inline constexpr int64_t kInsertionRange = 7;
// Pending ranges: the smaller side is always taken first, so the stack
// holds at most log2(n) ranges; 64 pairs cover any 64-bit length.
inline constexpr int kStackPairs = 64;

template <typename A>
void quicksort(A a, int64_t n) {
    int64_t stack[2 * kStackPairs];
    int top = 0;
    int64_t l = 0, r = n - 1;
    for (;;) {
        if (r - l < kInsertionRange) {
            for (int64_t j = l + 1; j <= r; ++j) {
                const auto v = a[j];
                int64_t i = j - 1;
                for (; i >= l && a[i] > v; --i) a[i + 1] = a[i];
                a[i + 1] = v;
            }
            if (top == 0) return;
            r = stack[--top];
            l = stack[--top];
            continue;
        }
        int64_t up;
        const int64_t j = partition(a, l, r, &up);
        // Push the larger side, go on with the smaller.
        if (r - up + 1 >= j - l) {
            stack[top++] = up;
            stack[top++] = r;
            r = j - 1;
        } else {
            stack[top++] = l;
            stack[top++] = j - 1;
            l = up;
        }
    }
}

// The element of rank k (0-based) within [l, r], when every element before
// l is no greater and every one after r no smaller than those inside; the
// range is left partially ordered about it.
template <typename A>
auto select_in(A a, int64_t l, int64_t r, int64_t k) {
    while (l + 1 < r) {
        int64_t up;
        const int64_t j = partition(a, l, r, &up);
        if (j >= k) r = j - 1;
        if (j <= k) l = up;
    }
    if (r == l + 1 && a[r] < a[l]) std::swap(a[l], a[r]);
    return a[k];
}

template <typename A>
auto select(A a, int64_t n, int64_t k) {
    return select_in(a, 0, n - 1, k);
}

// Puts the elements of the ascending ranks ks[0..m) in their places: the
// middle rank first over the whole range, then each half of the ranks within
// the part of the range on its side, so that every selection works on a
// shrinking bracket. Fixed stack: the ranks' halving depth is below 64.
template <typename A>
void select_ranks(A a, int64_t n, const int64_t* ks, int64_t m) {
    struct Span { int64_t l, r, i, j; };
    Span stack[64];
    int top = 0;
    stack[top++] = {0, n - 1, 0, m};
    while (top > 0) {
        const Span s = stack[--top];
        if (s.i >= s.j || s.l > s.r) continue;
        const int64_t mid = s.i + (s.j - s.i) / 2, k = ks[mid];
        if (k == s.l || k == s.r) {
            // The bracket's least or greatest element (the upper neighbour
            // of a rank just placed, mostly): one scan instead of partitions.
            int64_t best = s.l;
            for (int64_t e = s.l + 1; e <= s.r; ++e)
                if (k == s.l ? a[e] < a[best] : !(a[e] < a[best])) best = e;
            std::swap(a[best], a[k]);
        } else {
            select_in(a, s.l, s.r, k);
        }
        // Ranks equal to k are in place already.
        int64_t lo = mid, hi = mid + 1;
        while (lo > s.i && ks[lo - 1] == k) --lo;
        while (hi < s.j && ks[hi] == k) ++hi;
        stack[top++] = {s.l, k - 1, s.i, lo};
        stack[top++] = {k + 1, s.r, hi, s.j};
    }
}

// Order-preserving keys (as the radix sort's): sign clear, the sign bit
// set; sign set, every bit inverted. Bucket: the key's top 16 bits.
template <typename T>
inline uint32_t bucket_of(T v) {
    using K = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
    constexpr K sign = K(1) << (sizeof(K) * 8 - 1);
    K u;
    std::memcpy(&u, &v, sizeof u);
    u = (u & sign) ? ~u : (u | sign);
    return static_cast<uint32_t>(u >> (sizeof(K) * 8 - 16));
}

constexpr int kBuckets = 1 << 16;
// Below this many values a full copy costs less than the histogram.
constexpr int64_t kBucketMinimum = 1 << 15;

// The elements of ranks ks[0..m) (ascending) of the n values read by
// `value`, into out[0..m): a histogram of the keys' top 16 bits finds the
// bucket of each rank; a second pass gathers those buckets alone into s (in
// bucket order, so that they stay ordered among themselves) and selection
// within them places the ranks. False, with nothing written, when those
// buckets hold more than a quarter of the data (values packed into a narrow
// range of keys): the caller then selects on a full copy. work holds
// 2 * kBuckets + m integers.
template <typename T, typename V>
bool bucket_select(V value, int64_t n, const int64_t* ks, int64_t m, T* s, int64_t* work, T* out) {
    int64_t* const count = work;            // then: place in s of the next gathered element
    int64_t* const gather = work + kBuckets;  // 1 for a bucket holding a rank
    int64_t* const local = work + 2 * kBuckets;  // the ranks' places in s
    std::memset(count, 0, kBuckets * sizeof(int64_t));
    for (int64_t i = 0; i < n; ++i) ++count[bucket_of(value(i))];
    int64_t start = 0, gathered = 0, r = 0;
    for (int b = 0; b < kBuckets; ++b) {
        const int64_t c = count[b];
        gather[b] = 0;
        for (; r < m && ks[r] < start + c; ++r) {
            local[r] = gathered + ks[r] - start;
            gather[b] = 1;
        }
        count[b] = gathered;
        if (gather[b]) gathered += c;
        start += c;
    }
    if (gathered > n / 4 + 64) return false;
    for (int64_t i = 0; i < n; ++i) {
        const T v = value(i);
        const uint32_t b = bucket_of(v);
        if (gather[b]) s[count[b]++] = v;
    }
    select_ranks(s, gathered, local, m);
    for (int64_t j = 0; j < m; ++j) out[j] = s[local[j]];
    return true;
}

}  // namespace orv::ss
