// Modular powers for the skip-ahead of the congruential generators, and the
// MRG32k3a power tables, computed by the compiler from their first entries.
#include "rng/congruential/modular.h"

#include "rng/brng_row.h"

namespace orv::rng {

constexpr MrgPowerTable kMrgPowersM1 = mrg_power_table(kMrgA1, kMrgM1);
constexpr MrgPowerTable kMrgPowersM2 = mrg_power_table(kMrgA2, kMrgM2);

namespace {

// Running product of the table entries for the set bits of a multi-word count.
Mat3 power_from_table(int32_t n, const uint64_t* e, const uint32_t* table, uint32_t m) {
    Mat3 p = mat3_identity();
    for (int32_t w = 0; w < n; ++w)
        for (int b = 0; b < 64; ++b) {
            const int k = w * 64 + b;
            if (k >= kMrgPowerEntries) return p;
            if ((e[w] >> b) & 1) {
                Mat3 entry;
                for (int i = 0; i < 9; ++i) entry[i] = table[k * 9 + i];
                p = mat3_mul(p, entry, m);
            }
        }
    return p;
}

}  // namespace
}  // namespace orv::rng

using namespace orv::rng;

// Right-to-left binary powering with 64-bit products.
ORV_EXPORT uint32_t __vstiPowMod(uint32_t a, uint64_t e, uint32_t m) {
    if (e == 0) return 1;
    if (m == 0) return 0;  // no residues modulo 0; defined instead of a division trap
    uint64_t r = 1 % m, b = a % m;
    while (e != 0) {
        if (e & 1) r = r * b % m;
        b = b * b % m;
        e >>= 1;
    }
    return static_cast<uint32_t>(r);
}

ORV_EXPORT uint32_t __vstiPowMod2P31M1(uint32_t a, uint64_t e) {
    uint32_t r = 1, b = reduce_m31(a);
    while (e != 0) {
        if (e & 1) r = reduce_m31(static_cast<uint64_t>(r) * b);
        b = reduce_m31(static_cast<uint64_t>(b) * b);
        e >>= 1;
    }
    return r;
}

ORV_EXPORT uint64_t __vstiPowMod2P59(uint64_t a, uint64_t e) {
    uint64_t r = 1, b = a & kMask59;
    while (e != 0) {
        if (e & 1) r = (r * b) & kMask59;
        b = (b * b) & kMask59;
        e >>= 1;
    }
    return r;
}

ORV_EXPORT int32_t __vstiVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t m,
                                         uint64_t e) {
    return __vstiVect3PowArrayMod(v, row, m, 1, &e);
}

ORV_EXPORT int32_t __vstiVect3PowArrayMod(uint32_t v[3], const uint32_t row[3], uint32_t m,
                                              int32_t n, const uint64_t* e) {
    if (m == 0) return 0;
    Mat3 p = mat3_identity();
    Mat3 b = companion(row);
    for (int i = 0; i < 9; ++i) b[i] %= m;
    for (int32_t w = 0; w < n; ++w) {
        uint64_t word = e[w];
        for (int bit = 0; bit < 64; ++bit) {
            if (word & 1) p = mat3_mul(p, b, m);
            word >>= 1;
            // No squaring past the highest set bit of the last word.
            if (word == 0 && w == n - 1) break;
            b = mat3_mul(b, b, m);
        }
    }
    mat3_apply(p, v, m);
    return 0;
}

ORV_EXPORT int32_t __vstiVect3PowArrayMod_M1(uint32_t v[3], int32_t n, const uint64_t* e,
                                                 const uint32_t* table) {
    mat3_apply(power_from_table(n, e, table, kMrgM1), v, kMrgM1);
    return 0;
}

ORV_EXPORT int32_t __vstiVect3PowArrayMod_M2(uint32_t v[3], int32_t n, const uint64_t* e,
                                                 const uint32_t* table) {
    mat3_apply(power_from_table(n, e, table, kMrgM2), v, kMrgM2);
    return 0;
}
