// The AVX2 and AVX-512 kernel libraries against the SSE2 baseline: exactly
// their documented exports, and for every present function (from the
// generated list), every tier slot, plain and strided, bitwise the same
// results, statuses and error records on random bits and special values;
// and the generator fills they copy, bitwise the baseline's.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <orv/rng.h>
#include <orv/vtm.h>

#include "../frame/dynamic_symbols.h"

namespace {

struct Row { const char* name; char type; bool strided; std::string shape; };
const Row kRows[] = {
#define X(NAME, BASE, TYPE, STRIDED, FAMILY, SHAPE, B0, B1, B2) {#NAME, TYPE, STRIDED, #SHAPE},
#include "vtm_rows.inc"
#undef X
};

struct Variant { const char* path; int version; bool runs; };
const Variant kVariants[] = {
    {ORV_KERNEL_AVX2_SO, 1, __builtin_cpu_supports("avx2") != 0},
    {ORV_KERNEL_AVX512_SO, 2,
     __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw")},
};

// Every error record in order, as bits.
std::vector<uint64_t> g_records;
int32_t record(VtmErrorContext* c) {
    uint64_t v[4];
    std::memcpy(v, &c->arg1, sizeof v);  // arg1, arg2, res1, res2
    g_records.insert(g_records.end(), {uint64_t(uint32_t(c->code)), uint64_t(uint32_t(c->index)),
                                       v[0], v[1], v[2], v[3], std::hash<std::string>{}(c->functionName)});
    return 0;
}

template <typename T>
std::vector<T> inputs(std::mt19937_64& gen, size_t n) {
    static const double special[] = {0.0,  -0.0,   INFINITY, -INFINITY, NAN,     -NAN,    1.0,
                                     -1.0, 0.5,    1e-310,   -1e-310,   1e-40,   710.0,   -746.0,
                                     89.0, -104.0, 1e300,    2.5,       -2.5,    8388609.0, 1.4e-45};
    std::vector<T> v(n);
    for (size_t i = 0; i < n; ++i) {
        const uint64_t r = gen();
        if (i % 4 == 1) {
            v[i] = T(special[r % std::size(special)]);
        } else if (i % 4 == 2) {
            v[i] = T(std::ldexp(double(int64_t(r >> 11)) * 0x1p-52, int(r % 21) - 10));
        } else {
            std::memcpy(&v[i], &r, sizeof(T));
        }
    }
    return v;
}

// Output arrays and the records of one call of slot k of fn's table in lib.
template <typename T>
std::vector<uint64_t> run(void* lib, const Row& row, int slot, int n, const std::vector<T>& a,
                          const std::vector<T>& b) {
    void* const* tab = static_cast<void* const*>(
        dlsym(lib, ("orv_vtm_kernel_" + std::string(row.name) + "_ttab").c_str()));
    if (!tab) return {~0ull};
    void* f = tab[slot];
    const int inc = row.strided ? 2 : 1;
    std::vector<T> r(size_t(n) * inc + 1, T(-7)), q(size_t(n) * inc + 1, T(-7));
    g_records.clear();
    _vtmClearErrStatus();
    if (row.shape == "unary") {
        if (row.strided)
            reinterpret_cast<void (*)(int, const T*, int, T*, int)>(f)(n, a.data(), inc, r.data(), inc);
        else
            reinterpret_cast<void (*)(int, const T*, T*)>(f)(n, a.data(), r.data());
    } else if (row.shape == "binary") {
        if (row.strided)
            reinterpret_cast<void (*)(int, const T*, int, const T*, int, T*, int)>(f)(
                n, a.data(), inc, b.data(), inc, r.data(), inc);
        else
            reinterpret_cast<void (*)(int, const T*, const T*, T*)>(f)(n, a.data(), b.data(), r.data());
    } else if (row.shape == "scalar_param") {  // one exponent for the vector: b[0]
        if (row.strided)
            reinterpret_cast<void (*)(int, const T*, int, T, T*, int)>(f)(n, a.data(), inc, b[0], r.data(), inc);
        else
            reinterpret_cast<void (*)(int, const T*, T, T*)>(f)(n, a.data(), b[0], r.data());
    } else {  // two results
        if (row.strided)
            reinterpret_cast<void (*)(int, const T*, int, T*, int, T*, int)>(f)(
                n, a.data(), inc, r.data(), inc, q.data(), inc);
        else
            reinterpret_cast<void (*)(int, const T*, T*, T*)>(f)(n, a.data(), r.data(), q.data());
    }
    std::vector<uint64_t> out = g_records;
    out.push_back(uint64_t(uint32_t(_vtmGetErrStatus())));
    for (const std::vector<T>* v : {&r, &q})
        for (T x : *v) {
            uint64_t bits = 0;
            std::memcpy(&bits, &x, sizeof x);
            out.push_back(bits);
        }
    return out;
}

TEST(Variants, ExportExactlyTheTablesStubsAndVersion) {
    const std::set<std::string> want = read_lines(ORV_VARIANT_EXPORTS);
    ASSERT_GT(want.size(), 1u);
    for (const Variant& v : kVariants) EXPECT_EQ(dynamic_symbols(v.path), want) << v.path;
}

TEST(Variants, SameBitsStatusesAndRecordsAsTheBaseline) {
    void* base = dlopen(ORV_KERNEL_SO, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(base, nullptr);
    const uint32_t mode = _vtmGetMode();
    const VtmErrorCallBack cb = _vtmSetErrorCallBack(record);
    int ran = 0, compared = 0;
    for (const Variant& v : kVariants) {
        void* lib = dlopen(v.path, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(lib, nullptr) << dlerror();
        auto version = reinterpret_cast<int32_t (*)()>(dlsym(lib, "dll_cpu_version"));
        ASSERT_NE(version, nullptr);
        EXPECT_EQ(version(), v.version);
        if (!v.runs) {
            dlclose(lib);
            continue;
        }
        ++ran;
        for (const Row& row : kRows) {
            if (row.shape != "unary" && row.shape != "binary" && row.shape != "two_results" &&
                row.shape != "scalar_param")
                continue;
            // A family not yet on the width-generic vocabulary is absent from the
            // variant (the front end runs the baseline's table for it).
            if (!dlsym(lib, ("orv_vtm_kernel_" + std::string(row.name) + "_ttab").c_str())) continue;
            ++compared;
            std::mt19937_64 gen(std::hash<std::string>{}(row.name));
            auto compare = [&](auto type, int n, int slot) {
                const auto a = inputs<decltype(type)>(gen, 2 * n + 1), b = inputs<decltype(type)>(gen, 2 * n + 1);
                EXPECT_EQ(run(lib, row, slot, n, a, b), run(base, row, slot, n, a, b))
                    << row.name << " n=" << n << " slot " << slot << " in " << v.path;
            };
            for (int n : {1, 3, 13, 37, 1000})
                for (int slot = 0; slot < 3; ++slot) row.type == 's' ? compare(0.0f, n, slot) : compare(0.0, n, slot);
        }
        dlclose(lib);
    }
    _vtmSetErrorCallBack(cb);
    _vtmSetMode(mode);
    dlclose(base);
    if (ran == 0) GTEST_SKIP() << "this processor runs neither wider variant";
    EXPECT_GT(compared, 0);
}

// The copies of the baseline's MCG59 fills: the same values over block
// edges and remainders, and the same stream state after (the next values).
TEST(Variants, GeneratorFillsAsTheBaseline) {
    const uint32_t seed = 12345;
    for (const Variant& v : kVariants) {
        if (!v.runs) continue;
        void* lib = dlopen(v.path, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(lib, nullptr) << dlerror();
        auto compare = [&](auto type, const char* name, auto base_fill) {
            using T = decltype(type);
            auto fill = reinterpret_cast<decltype(base_fill)>(dlsym(lib, name));
            ASSERT_NE(fill, nullptr) << name;
            void *s1 = nullptr, *s2 = nullptr;
            ASSERT_EQ(__vstNewStreamEx(&s1, ORV_BRNG_MCG59, 1, &seed), 0);
            ASSERT_EQ(__vstNewStreamEx(&s2, ORV_BRNG_MCG59, 1, &seed), 0);
            for (int n : {0, 5, 16, 37, 1000, 1}) {
                std::vector<T> x(n + 1, T(7)), y(n + 1, T(7));
                EXPECT_EQ(fill(s1, n, x.data(), T(-2), T(3)), 0);
                EXPECT_EQ(base_fill(s2, n, y.data(), T(-2), T(3)), 0);
                EXPECT_EQ(std::memcmp(x.data(), y.data(), x.size() * sizeof(T)), 0) << name << " n=" << n;
            }
            __vstDeleteStream(&s1);
            __vstDeleteStream(&s2);
        };
        compare(0.0, "orv_rng_kernel_dBRngMCG59", &__vstdBRngMCG59);
        compare(0.0f, "orv_rng_kernel_sBRngMCG59", &__vstsBRngMCG59);
        dlclose(lib);
    }
}

}  // namespace
