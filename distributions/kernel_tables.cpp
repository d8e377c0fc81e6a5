// Which kernel tables the distributions call. The wider kernel libraries
// (AVX2, AVX-512) give bitwise the results of the baseline's kernels, faster;
// the front end loads one at start. The distributions take the table of the
// same name from the one already in the process, found once, at first use:
// nothing is loaded here (RTLD_NOLOAD), so a process without the front end,
// or with ORV_ISA=sse2, keeps the baseline's tables. The same holds for the
// generator fills the wider libraries copy (MCG59's).
#include <dlfcn.h>

#include <cstdint>
#include <string>

#include "distributions/draw.h"

extern "C" int32_t dll_cpu_version(void);

namespace orv::dist {
namespace {

// The widest variant already loaded from the baseline's folder, or null. Its
// handle is kept open, so its tables stay mapped for the life of the process.
void* loaded_variant() {
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(&dll_cpu_version), &info) || info.dli_fname == nullptr) return nullptr;
    std::string dir = info.dli_fname;
    dir.erase(dir.rfind('/') + 1);  // npos + 1 == 0: a bare name keeps no folder
    static const char* const kFiles[] = {"liborv_kernel_avx512.so.0", "liborv_kernel_avx2.so.0"};
    for (const char* file : kFiles) {
        void* h = dlopen((dir + file).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
        if (h == nullptr) continue;
        auto version = reinterpret_cast<int32_t (*)()>(dlsym(h, "dll_cpu_version"));
        if (version != nullptr && version() > 0) return h;
        dlclose(h);
    }
    return nullptr;
}

}  // namespace

const void* loaded_table(const void* base, const char* name) {
    static void* const variant = loaded_variant();  // thread-safe first use
    if (variant != nullptr)
        if (const void* t = dlsym(variant, name)) return t;
    return base;
}

// The generator fills the wider libraries hold: the baseline's and the
// name of its copy, each looked up once.
template <typename Fill>
Fill wider_copy(Fill base, const char* name) {
    return reinterpret_cast<Fill>(const_cast<void*>(loaded_table(reinterpret_cast<const void*>(base), name)));
}

OrvFloatFillFn loaded_fill(OrvFloatFillFn fill) {
    static const OrvFloatFillFn mcg59 = wider_copy(&__vstsBRngMCG59, "orv_rng_kernel_sBRngMCG59");
    return fill == &__vstsBRngMCG59 ? mcg59 : fill;
}

OrvDoubleFillFn loaded_fill(OrvDoubleFillFn fill) {
    static const OrvDoubleFillFn mcg59 = wider_copy(&__vstdBRngMCG59, "orv_rng_kernel_dBRngMCG59");
    return fill == &__vstdBRngMCG59 ? mcg59 : fill;
}

}  // namespace orv::dist
