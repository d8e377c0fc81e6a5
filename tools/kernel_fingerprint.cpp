// Fingerprints of the vector kernels, for checking that a rewrite keeps
// every output bit: for each present function of the unary, binary and
// two-result shapes and each tier slot, random bits, special values and
// values of moderate size go through the kernel in calls of up to 10^5
// elements (plain forms at unit stride, strided ones at increment 2), and a
// hash of the results, the error records and the status is printed. Run
// against two builds and compare:
//
//   g++ -O2 -std=c++20 -Iinclude -Ibuild/gen tools/kernel_fingerprint.cpp -Lbuild -lorv_kernel -o kfp
//   LD_LIBRARY_PATH=old ./kfp 10000000 [names...] > old.txt
//   LD_LIBRARY_PATH=new ./kfp 10000000 [names...] > new.txt; cmp old.txt new.txt
//
// With ORV_FP_LIB naming a wider kernel library (liborv_kernel_avx512.so),
// its tables are fingerprinted instead, for comparing it with the baseline.
#include <dlfcn.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>

namespace {

struct Row {
    const char* name;
    char type;
    bool strided;
    const char* shape;
};
const Row kRows[] = {
#define X(NAME, BASE, TYPE, STRIDED, FAMILY, SHAPE, B0, B1, B2) {#NAME, TYPE, STRIDED, #SHAPE},
#include "vtm_rows.inc"
#undef X
};

uint64_t g_hash;
void mix(const void* data, size_t bytes) {
    const auto* b = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < bytes; ++i) g_hash = (g_hash ^ b[i]) * 0x100000001b3ULL;
}
int32_t record(VtmErrorContext* c) {
    mix(&c->code, 8);       // code, index
    mix(&c->arg1, 32);      // arg1, arg2, res1, res2
    mix(c->functionName, size_t(c->functionNameLength));
    return 0;
}

template <typename T>
void fill(std::mt19937_64& gen, std::vector<T>& v) {
    static const double special[] = {0.0, -0.0, INFINITY, -INFINITY, NAN, -NAN, 1.0, -1.0, 0.5,
                                     1e-310, -1e-310, 1e-40, 710.0, -746.0, 89.0, -104.0, 1e300,
                                     2.5, -2.5, 8388609.0, 1.4e-45, 0x1p52, 0x1p23};
    for (auto& x : v) {
        const uint64_t r = gen();
        switch (r & 3) {
            case 0: x = T(special[(r >> 2) % std::size(special)]); break;
            case 1: x = T(std::ldexp(double(int64_t(r >> 11)) * 0x1p-52, int((r >> 2) % 41) - 20)); break;
            default: std::memcpy(&x, &r, sizeof(T));
        }
    }
}

template <typename T>
void run(const Row& row, void* f, long total) {
    constexpr long kChunk = 100000;
    const int inc = row.strided ? 2 : 1;
    std::mt19937_64 gen(std::hash<std::string>{}(row.name));
    std::vector<T> a(kChunk * inc), b(kChunk * inc), r(kChunk * inc), q(kChunk * inc);
    for (long done = 0; done < total; done += kChunk) {
        const int n = int(total - done < kChunk ? total - done : kChunk);
        fill(gen, a);
        fill(gen, b);
        const std::string shape = row.shape;
        if (shape == "unary") {
            if (row.strided)
                reinterpret_cast<void (*)(int, const T*, int, T*, int)>(f)(n, a.data(), inc, r.data(), inc);
            else
                reinterpret_cast<void (*)(int, const T*, T*)>(f)(n, a.data(), r.data());
        } else if (shape == "binary") {
            if (row.strided)
                reinterpret_cast<void (*)(int, const T*, int, const T*, int, T*, int)>(f)(
                    n, a.data(), inc, b.data(), inc, r.data(), inc);
            else
                reinterpret_cast<void (*)(int, const T*, const T*, T*)>(f)(n, a.data(), b.data(), r.data());
        } else {
            if (row.strided)
                reinterpret_cast<void (*)(int, const T*, int, T*, int, T*, int)>(f)(
                    n, a.data(), inc, r.data(), inc, q.data(), inc);
            else
                reinterpret_cast<void (*)(int, const T*, T*, T*)>(f)(n, a.data(), r.data(), q.data());
        }
        mix(r.data(), size_t(n) * inc * sizeof(T));
        if (shape == "two_results") mix(q.data(), size_t(n) * inc * sizeof(T));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const long total = argc > 1 ? std::atol(argv[1]) : 1000000;
    _vtmSetMode(VTM_ERRMODE_CALLBACK | VTM_FTZDAZ_OFF);
    _vtmSetErrorCallBack(record);
    void* lib = RTLD_DEFAULT;
    if (const char* path = std::getenv("ORV_FP_LIB")) {
        lib = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (!lib) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
    }
    for (const Row& row : kRows) {
        const std::string shape = row.shape;
        if (shape != "unary" && shape != "binary" && shape != "two_results") continue;
        if (row.type != 's' && row.type != 'd') continue;
        bool wanted = argc <= 2;
        for (int i = 2; i < argc; ++i) wanted |= std::strcmp(argv[i], row.name) == 0;
        if (!wanted) continue;
        auto* const* tab = static_cast<void* const*>(
            dlsym(lib, ("orv_vtm_kernel_" + std::string(row.name) + "_ttab").c_str()));
        if (!tab) continue;
        for (int slot = 0; slot < 3; ++slot) {
            g_hash = 0xcbf29ce484222325ULL;
            _vtmClearErrStatus();
            if (row.type == 's')
                run<float>(row, tab[slot], total);
            else
                run<double>(row, tab[slot], total);
            const int32_t status = _vtmGetErrStatus();
            mix(&status, 4);
            std::printf("%s %d %016llx\n", row.name, slot, static_cast<unsigned long long>(g_hash));
        }
    }
    return 0;
}
