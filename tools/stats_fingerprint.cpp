// Fingerprints of _vstdSSBasic and _vstsSSBasic over random cases, for
// checking that a rewrite keeps every result bit for bit. Each line holds the
// case number, the status, a hash of the vector results and accumulated
// weights, and a hash of the matrices. Run against two builds and compare:
//
//   g++ -O2 -std=c++20 -Iinclude tools/stats_fingerprint.cpp -Lbuild -lorv_kernel -o fp
//   LD_LIBRARY_PATH=old ./fp 1000000 > old.txt; LD_LIBRARY_PATH=new ./fp 1000000 > new.txt
//   cmp old.txt new.txt
#include <orv/stats.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <random>
#include <vector>

namespace {

int g_threads = 1;
void serial_pieces(int npieces, void* ctx, SsPieceFn fn) {
    for (int t = 0; t < npieces; ++t) fn(t, 0, npieces, ctx);
}
int threads() { return g_threads; }
const SsThreadingTable kTable = {nullptr, nullptr, serial_pieces, nullptr, threads};

uint64_t fnv(uint64_t h, const void* data, std::size_t bytes) {
    const auto* b = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < bytes; ++i) h = (h ^ b[i]) * 0x100000001b3ULL;
    return h;
}

constexpr uint64_t kEstimates[] = {
    SS_EST_MEAN, SS_EST_RAW2, SS_EST_RAW3, SS_EST_RAW4, SS_EST_CENTRAL2, SS_EST_CENTRAL3,
    SS_EST_CENTRAL4, SS_EST_KURTOSIS, SS_EST_SKEWNESS, SS_EST_VARIATION, SS_EST_COV, SS_EST_COR,
    SS_EST_SUM1, SS_EST_SUM2, SS_EST_SUM3, SS_EST_SUM4, SS_EST_CENTRAL_SUM2,
    SS_EST_CENTRAL_SUM3, SS_EST_CENTRAL_SUM4, SS_EST_CROSS_PRODUCT};
constexpr uint64_t kMethods[] = {SS_METHOD_RUNNING, SS_METHOD_PLAIN_SUMS, SS_METHOD_GIVEN_MEAN,
                                 SS_METHOD_FROM_SUMS, 0x201, 0x202, 0x3};

template <typename T>
void one_case(long id, std::mt19937_64& g) {
    auto pick = [&](int64_t lo, int64_t hi) {
        return std::uniform_int_distribution<int64_t>(lo, hi)(g);
    };
    const int64_t p = pick(1, 9), n = pick(1, 400), blocks = std::min<int64_t>(n, pick(1, 3));
    const int64_t storage = pick(0, 1) ? SS_STORAGE_BY_OBSERVATION : SS_STORAGE_BY_VARIABLE;
    const int64_t form = pick(0, 2);
    const uint64_t method = kMethods[pick(0, 6)];
    uint64_t est = 0;
    for (uint64_t e : kEstimates)
        if (pick(0, 3) == 0) est |= e;
    const bool weighted = pick(0, 1), masked = pick(0, 3) == 0;
    g_threads = static_cast<int>(pick(1, 4));
    std::normal_distribution<double> nd(2.0, 1.5);
    std::vector<T> x(n * p), w(n), accum(2, T(0));
    for (auto& v : x) v = static_cast<T>(nd(g));
    for (auto& v : w) v = static_cast<T>(pick(0, 5) == 0 ? 0.0 : 0.5 + (nd(g) > 2.0));
    std::vector<int64_t> mask(p);
    for (auto& v : mask) v = pick(0, 2) != 0;
    std::vector<std::vector<T>> a(20, std::vector<T>(p * p, T(0.5)));
    for (auto& v : a[0]) v = static_cast<T>(nd(g));  // the mean is the given-mean input
    const int64_t nb = n / blocks;
    SsTask* task = nullptr;
    int64_t nblock = nb;
    if (sizeof(T) == 8)
        __vstdSSNewTask(&task, &p, &nblock, &storage, x.data(), weighted ? w.data() : nullptr,
                        masked ? mask.data() : nullptr, 1);
    else
        __vstsSSNewTask(&task, &p, &nblock, &storage, x.data(), weighted ? w.data() : nullptr,
                        masked ? mask.data() : nullptr, 1);
    __vstdSSEditMoments(task, a[0].data(), a[1].data(), a[2].data(), a[3].data(), a[4].data(),
                        a[5].data(), a[6].data());
    __vstdSSEditSums(task, a[7].data(), a[8].data(), a[9].data(), a[10].data(), a[11].data(),
                     a[12].data(), a[13].data());
    __vstdSSEditCovCor(task, nullptr, a[14].data(), &form, a[15].data(), &form);
    __vstdSSEditCP(task, nullptr, nullptr, a[16].data(), &form);
    __vstdSSEditTask(task, SS_ED_kurtosis, a[17].data());
    __vstdSSEditTask(task, SS_ED_skewness, a[18].data());
    __vstdSSEditTask(task, SS_ED_variation, a[19].data());
    __vstdSSEditTask(task, SS_ED_accum_weights, accum.data());
    int32_t status = 0;
    for (int64_t b = 0; b < blocks && status == 0; ++b) {
        // Each block is the next nb observations, in the task's layout.
        nblock = b == blocks - 1 ? n - b * nb : nb;
        std::vector<T> xb(nblock * p);
        for (int64_t i = 0; i < nblock; ++i)
            for (int64_t j = 0; j < p; ++j)
                xb[storage == SS_STORAGE_BY_OBSERVATION ? i * p + j : j * nblock + i] =
                    x[(b * nb + i) * p + j];
        task->data = xb.data();
        task->weights = weighted ? w.data() + b * nb : nullptr;
        status = sizeof(T) == 8 ? _vstdSSBasic(task, est, method, &kTable)
                                : _vstsSSBasic(task, est, method, &kTable);
    }
    uint64_t hv = fnv(0xcbf29ce484222325ULL, accum.data(), 2 * sizeof(T)), hm = 0xcbf29ce484222325ULL;
    for (int k = 0; k < 20; ++k) {
        const bool matrix = k >= 14 && k <= 16;
        uint64_t& h = matrix ? hm : hv;
        h = fnv(h, a[k].data(), (matrix ? p * p : p) * sizeof(T));
    }
    __vstSSDeleteTask(&task);
    std::printf("%ld %d %016llx %016llx\n", id, status, (unsigned long long)hv,
                (unsigned long long)hm);
}

}  // namespace

int main(int argc, char** argv) {
    const long cases = argc > 1 ? std::atol(argv[1]) : 100000;
    std::mt19937_64 g(20261122);
    for (long id = 0; id < cases; ++id) {
        if (id % 2 == 0)
            one_case<double>(id, g);
        else
            one_case<float>(id, g);
    }
}
