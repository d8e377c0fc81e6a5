// Serial and OpenMP-backed tables of threading operations.
#include <orv/threading.h>

#include <omp.h>

#include <atomic>

namespace {

std::atomic<int> g_threads{0};  // 0: OpenMP's default

int current_threads() {
    int n = g_threads.load(std::memory_order_relaxed);
    return n > 0 ? n : omp_get_max_threads();
}

// Serial table.
void serial_items(int count, int, void* ctx, SsItemFn fn) {
    for (int i = 0; i < count; ++i) fn(i, 0, 1, ctx);
}
void serial_parallel(int, void* ctx, SsItemFn fn) { fn(0, 0, 1, ctx); }
void serial_pieces(int npieces, void* ctx, SsPieceFn fn) {
    for (int p = 0; p < npieces; ++p) fn(p, 0, npieces, ctx);
}
int serial_max() { return 1; }
void serial_run(int nteams, int, void* args, DFBodyFn body) {
    for (int t = 0; t < nteams; ++t) body(t, nteams, nullptr, args);
}

// OpenMP table. Items are spread dynamically; each call gets at most the
// requested number of threads and never more than the caller's setting.
void omp_items(int count, int nthreads, void* ctx, SsItemFn fn) {
    if (count <= 0) return;
    int t = nthreads < 1 ? 1 : nthreads;
    if (t > count) t = count;
#pragma omp parallel num_threads(t)
    {
        const int me = omp_get_thread_num(), nt = omp_get_num_threads();
#pragma omp for schedule(dynamic)
        for (int i = 0; i < count; ++i) fn(i, me, nt, ctx);
    }
}
void omp_parallel(int nthreads, void* ctx, SsItemFn fn) {
    int t = nthreads < 1 ? 1 : nthreads;
#pragma omp parallel num_threads(t)
    fn(omp_get_thread_num(), omp_get_thread_num(), omp_get_num_threads(), ctx);
}
void omp_pieces(int npieces, void* ctx, SsPieceFn fn) {
    if (npieces <= 0) return;
#pragma omp parallel for num_threads(npieces) schedule(static, 1)
    for (int p = 0; p < npieces; ++p) fn(p, 0, npieces, ctx);
}
void omp_run(int nteams, int, void* args, DFBodyFn body) {
    if (nteams <= 0) return;
#pragma omp parallel for num_threads(nteams) schedule(static, 1)
    for (int t = 0; t < nteams; ++t) body(t, nteams, nullptr, args);
}

const SsThreadingTable kSsSerial = {serial_items, serial_parallel, serial_pieces, nullptr, serial_max};
const SsThreadingTable kSsOmp = {omp_items, omp_parallel, omp_pieces, nullptr, current_threads};
const DFThreadOps kDfSerial = {serial_run, nullptr, nullptr, nullptr, serial_max};
const DFThreadOps kDfOmp = {omp_run, nullptr, nullptr, nullptr, current_threads};

}  // namespace

extern "C" {
const SsThreadingTable* orv_ss_threading_serial(void) { return &kSsSerial; }
const SsThreadingTable* orv_ss_threading_openmp(void) { return &kSsOmp; }
const DFThreadOps* orv_df_thread_ops_serial(void) { return &kDfSerial; }
const DFThreadOps* orv_df_thread_ops_openmp(void) { return &kDfOmp; }
void orv_set_num_threads(int n) { g_threads.store(n > 0 ? n : 0, std::memory_order_relaxed); }
int orv_get_num_threads(void) { return current_threads(); }
}
