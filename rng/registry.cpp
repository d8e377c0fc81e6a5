// The generator registry: the two row tables, generator numbers, validity,
// properties and run-time registration; and the processor tests.
#include <cpuid.h>

#include <cstring>

#include <orv/orv_core.h>

#include "rng/abstract.h"
#include "rng/brng_row.h"
#include "rng/stream.h"
#include <orv/rng_twister.h>

namespace {

using orv::rng::g_sub_generators;

// The abstract rows keep a slot of this kind for each fill form they lack.
int32_t abstract_float_missing(void*, int32_t, float*, float, float) {
    return ORV_RNG_ERROR_ABSTRACT_FORM;
}
int32_t abstract_double_missing(void*, int32_t, double*, double, double) {
    return ORV_RNG_ERROR_ABSTRACT_FORM;
}
int32_t abstract_word_missing(void*, int32_t, uint32_t*) { return ORV_RNG_ERROR_ABSTRACT_FORM; }

constexpr BrngRow sizes(int32_t streamBytes, int32_t seedCount, int32_t zeroIncluded,
                        int32_t wordBytes, int32_t valueBits) {
    return BrngRow{streamBytes, seedCount, zeroIncluded, wordBytes, valueBits, 0,
                   nullptr,     nullptr,   nullptr,      nullptr};
}

#define ORV_ROW(G, streamBytes, seedCount, zeroIncluded, wordBytes, valueBits)               \
    BrngRow {                                                                                  \
        streamBytes, seedCount, zeroIncluded, wordBytes, valueBits, 0,                         \
            &__vstBRng##G##InitStream, &__vstsBRng##G, &__vstdBRng##G, &__vstiBRng##G          \
    }

// The sixteen built-in rows, in the order of the second numbering. Rows whose
// generators are not in this library yet carry their sizes and no functions.
constexpr BrngRow kMcg31m1 = ORV_ROW(MCG31M1, 24, 1, 0, 4, 31);
constexpr BrngRow kR250 = ORV_ROW(R250, 1024, 252, 1, 4, 32);
constexpr BrngRow kMrg32k3a = ORV_ROW(MRG32K3A, 40, 6, 1, 4, 32);
constexpr BrngRow kMcg59 = ORV_ROW(MCG59, 32, 1, 0, 8, 59);
constexpr BrngRow kWh = ORV_ROW(WH, 48, 4, 1, 16, 24);
constexpr BrngRow kSobol = ORV_ROW(Sobol, 11712, 2900, 0, 4, 32);
constexpr BrngRow kNiederr = ORV_ROW(Niederr, 84288, 21056, 0, 4, 32);
constexpr BrngRow kMt19937 = ORV_ROW(MT19937, 2520, 625, 1, 4, 32);
constexpr BrngRow kMt2203 = sizes(312, 70, 1, 4, 32);
namespace ab = orv::rng::abstract;
constexpr BrngRow kIAbstract = {48, 0, 1, 4, 32, 0, &ab::init, &abstract_float_missing,
                                &abstract_double_missing, &ab::word_fill};
constexpr BrngRow kDAbstract = {64, 0, 1, 4, 32, 0, &ab::init, &abstract_float_missing, &ab::double_fill,
                                &abstract_word_missing};
constexpr BrngRow kSAbstract = {56, 0, 1, 4, 32, 0, &ab::init, &ab::float_fill, &abstract_double_missing,
                                &abstract_word_missing};
constexpr BrngRow kSfmt19937 = ORV_ROW(SFMT19937, 2536, 625, 1, 4, 32);
constexpr BrngRow kTrng = ORV_ROW(TRNG, 24, 1, 1, 4, 32);
constexpr BrngRow kArs5 = ORV_ROW(ARS5, 72, 13, 1, 4, 32);
constexpr BrngRow kPhilox = ORV_ROW(PHILOX4X32X10, 64, 11, 1, 4, 32);

// Rows 4 to 276 of the first numbering all repeat the WH row.
#define ORV_WH1 kWh
#define ORV_WH2 ORV_WH1, ORV_WH1
#define ORV_WH4 ORV_WH2, ORV_WH2
#define ORV_WH8 ORV_WH4, ORV_WH4
#define ORV_WH16 ORV_WH8, ORV_WH8
#define ORV_WH32 ORV_WH16, ORV_WH16
#define ORV_WH64 ORV_WH32, ORV_WH32
#define ORV_WH128 ORV_WH64, ORV_WH64
#define ORV_WH256 ORV_WH128, ORV_WH128

}  // namespace

// The first numbering: 281 live rows; rows 279 and 280 are all zero.
const BrngRow __RegBrngs[ORV_BRNG_TABLE_ROWS] = {
    kMcg31m1, kR250, kMrg32k3a, kMcg59, ORV_WH256, ORV_WH16, ORV_WH1, kSobol, kNiederr};

// The second numbering: 16 built-in rows, the rest free for registration.
BrngRow __RegBrngsNew[ORV_BRNG_TABLE_ROWS] = {
    kMcg31m1, kR250,      kMrg32k3a,  kMcg59,     kWh,        kSobol, kNiederr, kMt19937,
    kMt2203,  kIAbstract, kDAbstract, kSAbstract, kSfmt19937, kTrng,  kArs5,    kPhilox};

namespace orv::rng {

int32_t g_sub_generators[ORV_BRNG_TABLE_ROWS] = {1, 1, 1, 1, ORV_WH_SETS, 1, 1, 1, 6024,
                                                 1, 1, 1, 1, 1,           1, 1};

int32_t& registered_rows() {
    static int32_t count = ORV_BRNG_BUILT_IN;
    return count;
}

const BrngRow* find_row(uint32_t id, uint32_t* sub) {
    uint32_t row = 0, s = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(id, &row, &s);
    if (__vstIsBrngValid(table, static_cast<int32_t>(row), static_cast<int32_t>(s)) != 0)
        return nullptr;
    const BrngRow* r = &table[row];
    if (r->initStream == nullptr || r->floatFill == nullptr || r->doubleFill == nullptr ||
        r->wordFill == nullptr)
        return nullptr;
    if (sub != nullptr) *sub = s;
    return r;
}

}  // namespace orv::rng

ORV_EXPORT const BrngRow* __vstGetBrngBaseOffset(uint32_t id, uint32_t* row, uint32_t* sub) {
    if (static_cast<int32_t>(id) >= 0x100000) {
        *row = ((id >> 20) & 0xFFF) - 1;
        *sub = id & 0xFFFFF;
        return __RegBrngsNew;
    }
    if (id >= 4 && id <= 276) {
        *row = 4;
        *sub = id - 4;
        return __RegBrngs;
    }
    *row = id;
    *sub = 0;
    return __RegBrngs;
}

// Rows are compared as unsigned, so that a negative generator number (which
// maps to a row above 2^31) is refused instead of indexing before the table.
ORV_EXPORT int32_t __vstIsBrngValid(const BrngRow* table, int32_t row, int32_t sub) {
    if (table == __RegBrngs)
        return static_cast<uint32_t>(row) < ORV_BRNG_FIRST_LIVE_ROWS ? 0 : ORV_RNG_ERROR_INVALID_BRNG;
    const int32_t used = orv::rng::registered_rows();
    if (static_cast<uint32_t>(row) >= static_cast<uint32_t>(used)) return ORV_RNG_ERROR_INVALID_BRNG;
    if (static_cast<uint32_t>(sub) >= static_cast<uint32_t>(g_sub_generators[row]))
        return ORV_RNG_ERROR_INVALID_BRNG;
    return 0;
}

ORV_EXPORT int32_t __vstGetBrngProperties(int32_t id, BrngRow* out) {
    uint32_t row = 0, sub = 0;
    const BrngRow* table = __vstGetBrngBaseOffset(static_cast<uint32_t>(id), &row, &sub);
    if (table == __RegBrngs) {
        if (row >= ORV_BRNG_FIRST_LIVE_ROWS) return ORV_RNG_ERROR_INVALID_BRNG;
    } else if (row >= static_cast<uint32_t>(orv::rng::registered_rows()) ||
               sub >= static_cast<uint32_t>(g_sub_generators[row])) {
        return ORV_RNG_ERROR_INVALID_BRNG;
    }
    std::memcpy(out, &table[row], sizeof(BrngRow));
    return 0;
}

ORV_EXPORT int32_t __vstGetNumRegBrngs(void) { return orv::rng::registered_rows(); }

// Appends a row to the second table. Not safe against concurrent callers.
// A full table (512 rows) refuses further rows instead of writing past it.
ORV_EXPORT int32_t __vstRegisterBrng(const BrngRow* row) {
    if (row->streamBytes < 0) return ORV_RNG_ERROR_BRNG_TABLE_FULL_SIZE;
    if (row->wordBytes != 4 && row->wordBytes != 8 && row->wordBytes != 16)
        return ORV_RNG_ERROR_BAD_WORD_SIZE;
    if (row->seedCount < 1) return ORV_RNG_ERROR_BAD_NSEEDS;
    if (row->valueBits < 1) return ORV_RNG_ERROR_BAD_NBITS;
    if (row->initStream == nullptr || row->floatFill == nullptr || row->doubleFill == nullptr ||
        row->wordFill == nullptr)
        return ORV_RNG_ERROR_NULL_PTR;
    int32_t& count = orv::rng::registered_rows();
    if (count >= ORV_BRNG_TABLE_ROWS) return ORV_RNG_ERROR_INVALID_BRNG;
    __RegBrngsNew[count] = *row;
    __RegBrngsNew[count].reserved = 0;
    g_sub_generators[count] = 1;
    ++count;
    return count << 20;
}

ORV_EXPORT uint32_t __vstGetStreamStateBrng(const void* stream) {
    return orv::rng::header(stream)->brngId;
}

namespace {
uint32_t cpuid1_ecx() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return 0;
    return ecx;
}
}  // namespace

ORV_EXPORT int32_t __vstCPUisAES(void) { return (cpuid1_ecx() >> 25) & 1; }
ORV_EXPORT int32_t __vstCPUisRDRAND(void) { return (cpuid1_ecx() >> 30) & 1; }
ORV_EXPORT int32_t __vstCPUisVAES(void) { return orv_serv_cpuisicx(); }
