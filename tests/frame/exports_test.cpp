// The kernel library exports exactly the generated names, the stubs reach
// their slots, and the tables have the 48-byte layout.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstring>
#include <string>

#include <orv/vtm.h>

#include "dynamic_symbols.h"

namespace {

TEST(Exports, DynamicSymbolTableIsExactlyTheGeneratedList) {
    const auto want = read_lines(ORV_KERNEL_EXPORTS);
    ASSERT_FALSE(want.empty());
    EXPECT_EQ(dynamic_symbols(ORV_KERNEL_SO), want);
}

TEST(Exports, EveryListedFunctionHasFourNamesAndTwoTables) {
    const auto want = read_lines(ORV_KERNEL_EXPORTS);
    std::set<std::string> fns;
    for (const auto& s : want)
        if (s.size() > 5 && s.compare(s.size() - 5, 5, "_ttab") == 0)
            fns.insert(s.substr(15, s.size() - 20));  // orv_vtm_kernel_<fn>_ttab
    EXPECT_EQ(static_cast<int>(fns.size()), ORV_VTM_FUNCTIONS_PRESENT);
    void* lib = dlopen(ORV_KERNEL_SO, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(lib, nullptr);
    for (const auto& fn : fns) {
        const bool dbl = fn[0] == 'd' || fn[0] == 'z';
        const std::string base = "_vtm" + fn;
        void* plain = dlsym(lib, base.c_str());
        void* ha = dlsym(lib, (base + "_HA").c_str());
        void* la = dlsym(lib, (base + (dbl ? "_50" : "_21")).c_str());
        void* ep = dlsym(lib, (base + (dbl ? "_26" : "_11")).c_str());
        auto* ttab = static_cast<const unsigned char*>(dlsym(lib, ("orv_vtm_kernel_" + fn + "_ttab").c_str()));
        auto* ctab = static_cast<const unsigned char*>(dlsym(lib, ("orv_vtm_kernel_" + fn + "_ctab").c_str()));
        ASSERT_TRUE(plain && ha && la && ep && ttab && ctab) << fn;
        EXPECT_EQ(plain, ha) << fn << ": the plain name and _HA are one stub";
        EXPECT_NE(la, ha);
        EXPECT_EQ(ctab, ttab + 24) << fn;
        const unsigned char zero[12] = {};
        EXPECT_EQ(std::memcmp(ttab + 36, zero, 12), 0) << fn;
        float cost[3];
        std::memcpy(cost, ctab, sizeof cost);
        void* slots[3];
        std::memcpy(slots, ttab, sizeof slots);
        for (int k = 0; k < 3; ++k) EXPECT_GT(cost[k], 0.0f) << fn;
        if (slots[0] == slots[1] && slots[1] == slots[2]) {
            EXPECT_TRUE(cost[0] == cost[1] && cost[1] == cost[2]) << fn;
        }
    }
    dlclose(lib);
}

TEST(Exports, TablesStandInOneBlock) {
    // dAdd, dAddI, dSub ... follow each other in the list's order, 48 bytes
    // apart. Looked up in the library itself: a program that names a table
    // directly may hold a relocated copy of it.
    void* lib = dlopen(ORV_KERNEL_SO, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(lib, nullptr);
    auto at = [lib](const char* s) { return static_cast<const unsigned char*>(dlsym(lib, s)); };
    const auto* add = at("orv_vtm_kernel_dAdd_ttab");
    EXPECT_EQ(at("orv_vtm_kernel_dAddI_ttab") - add, 48);
    EXPECT_EQ(at("orv_vtm_kernel_dSub_ttab") - add, 96);
    EXPECT_FLOAT_EQ(orv_vtm_kernel_dAdd_ctab[1], 1.79f);
    dlclose(lib);
}

TEST(Exports, CpuVersionIsTheBaseline) { EXPECT_EQ(dll_cpu_version(), 0); }

}  // namespace
