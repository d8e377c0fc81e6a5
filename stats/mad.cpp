// _vstdSSMAD, _vstsSSMAD: median absolute deviation (median of |x - median|,
// unscaled) and mean absolute deviation (the weighted mean of |x - centre|)
// of each variable, result at index v. The median form finds the two middle
// ranks (the interpolation rule of _vstdSSQuantiles at 1/2) of the values
// and then of their absolute deviations, each within the histogram buckets
// that hold them (on a copy for short rows); the mean form
// works through _vstdSSBasic on a record made on the stack for one variable.
#include "stats/frame.h"
#include "stats/qsort.h"

#include <cmath>

namespace {

using namespace orv::ss;

template <typename T>
struct Context {
    const T* x;
    const void* weights;
    int64_t p, n;
    bool by_var;
    Mask mask;
    bool median;          // which form this round computes
    const T* given_mean;  // mean form about the caller's centres
    T* out;
    T* scratch;           // n elements for each thread
    int threads;
    int32_t status;       // a failure inside an item
};

// The median of the n values read by `value`, by the interpolation rule at
// order 1/2: the mean of the two middle ranks (one rank when n is odd).
// Long rows select within the histogram buckets holding those ranks; short
// ones (or values packed into a few buckets) on a copy in s.
template <typename T, typename V>
T median(V value, int64_t n, T* s, int64_t* work) {
    const int64_t lo = (n - 1) / 2, ranks[2] = {lo, n - 1 - lo};
    T at[2];
    if (n < kBucketMinimum || !bucket_select(value, n, ranks, 2, s, work, at)) {
        for (int64_t i = 0; i < n; ++i) s[i] = value(i);
        select_ranks(s, n, ranks, 2);
        at[0] = s[lo];
        at[1] = s[ranks[1]];
    }
    return n % 2 ? at[0] : static_cast<T>((at[1] - at[0]) * T(0.5) + at[0]);
}

template <typename T>
int32_t mean_entry(SsTask* t) {
    return sizeof(T) == 8 ? _vstdSSBasic(t, SS_EST_MEAN, SS_METHOD_PLAIN_SUMS, nullptr)
                          : _vstsSSBasic(t, SS_EST_MEAN, SS_METHOD_PLAIN_SUMS, nullptr);
}

template <typename T>
void item(int v, int thread, int, void* vctx) {
    auto& c = *static_cast<Context<T>*>(vctx);
    if (!c.mask.admits(v)) return;
    const int64_t n = c.n;
    Buffer<T> own;  // a table that reports a thread index beyond its count
    T* s = c.scratch + static_cast<int64_t>(thread) * n;
    if (thread < 0 || thread >= c.threads) {
        if (!own.allocate(static_cast<std::size_t>(n), false)) {
            c.status = SS_ERR_NO_MEMORY;
            return;
        }
        s = own.get();
    }
    const T* row = c.x + v * n;
    if (c.median) {
        // The median of the values, then of their absolute deviations,
        // read from the data without a copy where the buckets allow.
        Buffer<int64_t> work;
        if (!work.allocate(2 * kBuckets + 2, false)) {
            c.status = SS_ERR_NO_MEMORY;
            return;
        }
        const T* x = c.x;
        const int64_t p = c.p;
        auto at = [=](int64_t i) { return c.by_var ? row[i] : x[i * p + v]; };
        const T centre = median<T>(at, n, s, work.get());
        c.out[v] = median<T>([=](int64_t i) { return std::fabs(at(i) - centre); }, n, s, work.get());
        return;
    }
    if (!c.by_var) {
        for (int64_t i = 0; i < n; ++i) s[i] = c.x[i * c.p + v];
        row = s;
    }
    // One variable as a record of its own.
    int64_t one = 1, nn = n, storage = SS_STORAGE_BY_VARIABLE;
    T centre = 0, result = 0;
    SsTask t;
    std::memset(static_cast<void*>(&t), 0, sizeof t);
    t.int_is_64 = 1;
    t.dimension = &one;
    t.observations = &nn;
    t.data_storage = &storage;
    t.data = const_cast<T*>(row);
    t.weights = const_cast<void*>(c.weights);
    t.mean = &centre;
    int32_t rc = c.given_mean ? SS_OK : mean_entry<T>(&t);
    if (c.given_mean) centre = c.given_mean[v];
    if (rc != SS_OK) {
        c.status = rc;
        return;
    }
    for (int64_t i = 0; i < n; ++i) s[i] = std::fabs(row[i] - centre);
    t.data = s;
    t.mean = &result;
    rc = mean_entry<T>(&t);
    if (rc != SS_OK) {
        c.status = rc;
        return;
    }
    c.out[v] = result;
}

template <typename T>
int32_t run_form(Context<T>& ctx, const SsThreadingTable* threading) {
    Buffer<T> scratch;
    if (!scratch.allocate(static_cast<std::size_t>(ctx.n * ctx.threads), false))
        return SS_ERR_NO_MEMORY;
    ctx.scratch = scratch.get();
    ctx.status = SS_OK;
    run_items(threading, static_cast<int>(ctx.p), ctx.threads, &ctx, &item<T>);
    return ctx.status;
}

template <typename T>
int32_t mad(SsTask* task, uint64_t estimates, uint64_t method, const SsThreadingTable* threading) {
    if (!task) return SS_ERR_NULL_TASK;
    const TaskView<T> view{task};
    if (!view.precision_matches()) return SS_ERR_METHOD;
    const int64_t p = task->dimension ? view.integer(Field::dimension) : 0;
    if (p < 1) return SS_ERR_DIMENSION;
    const int64_t n = task->observations ? view.integer(Field::observations) : 0;
    if (n < 1) return SS_ERR_OBSERVATIONS;
    if (!task->data_storage) return SS_ERR_STORAGE_WORD;
    const int64_t word = view.integer(Field::data_storage);
    if (word != SS_STORAGE_BY_VARIABLE && word != SS_STORAGE_BY_OBSERVATION)
        return SS_ERR_STORAGE_VALUE;
    const T* const x = view.real(Field::data);
    int64_t elements = 0;
    if (!checked_count(n, p, sizeof(T), &elements) || p > INT32_MAX) return SS_ERR_NO_MEMORY;
    int64_t threads = std::min<int64_t>(max_threads(threading), p);
    if (!checked_count(n, threads, sizeof(T), &elements)) threads = 1;
    Context<T> ctx{x, task->weights, p, n, word == SS_STORAGE_BY_VARIABLE || p == 1, view.mask(),
                   true, nullptr, nullptr, nullptr, static_cast<int>(threads), SS_OK};

    int32_t status = SS_OK;
    if (estimates & SS_EST_MEDIAN_ABS_DEV) {
        T* const out = view.real(Field::median_abs_dev);
        if (!out)
            status = view.missing(Field::median_abs_dev);
        else if (!(method & SS_METHOD_PLAIN_SUMS))
            status = SS_ERR_METHOD;
        else if (!x)
            status = view.missing(Field::data);
        else {
            ctx.out = out;
            status = run_form(ctx, threading);
        }
    }
    if (estimates & SS_EST_MEAN_ABS_DEV) {
        T* const out = view.real(Field::mean_abs_dev);
        const T* const mean = view.real(Field::mean);
        if (!out)
            status = view.missing(Field::mean_abs_dev);
        else if (!(method & (SS_METHOD_PLAIN_SUMS | SS_METHOD_GIVEN_MEAN)))
            status = SS_ERR_METHOD;
        else if ((method & SS_METHOD_GIVEN_MEAN) && !mean)
            status = view.missing(Field::mean);
        else if (!x)
            status = view.missing(Field::data);
        else {
            ctx.out = out;
            ctx.median = false;
            ctx.given_mean = (method & SS_METHOD_GIVEN_MEAN) ? mean : nullptr;
            status = run_form(ctx, threading);
        }
    }
    return status;
}

}  // namespace

ORV_EXPORT int32_t _vstdSSMAD(SsTask* task, uint64_t estimates, uint64_t method,
                                 const SsThreadingTable* threading) {
    return mad<double>(task, estimates, method, threading);
}
ORV_EXPORT int32_t _vstsSSMAD(SsTask* task, uint64_t estimates, uint64_t method,
                                 const SsThreadingTable* threading) {
    return mad<float>(task, estimates, method, threading);
}
