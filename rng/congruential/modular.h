// Modular arithmetic shared by the congruential generators: reductions,
// 3 by 3 matrices over Z/m, and the MRG32k3a power tables.
#pragma once

#include <array>
#include <cstdint>

namespace orv::rng {

inline constexpr uint32_t kM31 = 0x7FFFFFFFu;
inline constexpr uint64_t kMask59 = 0x7FFFFFFFFFFFFFFull;
inline constexpr uint32_t kMrgM1 = 4294967087u;  // 2^32 - 209
inline constexpr uint32_t kMrgM2 = 4294944443u;  // 2^32 - 22853

// Residue of a product below 2^62 modulo 2^31 - 1 (Mersenne folding).
inline uint32_t reduce_m31(uint64_t p) {
    uint64_t t = (p >> 31) + (p & kM31);
    if (t >= kM31) t -= kM31;
    return static_cast<uint32_t>(t);
}

using Mat3 = std::array<uint32_t, 9>;  // row order

constexpr uint32_t mulmod(uint32_t a, uint32_t b, uint32_t m) {
    return static_cast<uint32_t>(static_cast<uint64_t>(a) * b % m);
}

constexpr Mat3 mat3_mul(const Mat3& a, const Mat3& b, uint32_t m) {
    Mat3 c{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            uint64_t s = 0;
            for (int k = 0; k < 3; ++k) s += mulmod(a[i * 3 + k], b[k * 3 + j], m);
            c[i * 3 + j] = static_cast<uint32_t>(s % m);
        }
    return c;
}

constexpr Mat3 mat3_identity() { return Mat3{1, 0, 0, 0, 1, 0, 0, 0, 1}; }

// Companion matrix of x(n) = row[2] x(n-3) + row[1] x(n-2) + row[0] x(n-1).
constexpr Mat3 companion(const uint32_t row[3]) {
    return Mat3{0, 1, 0, 0, 0, 1, row[2], row[1], row[0]};
}

// v = M v mod m.
inline void mat3_apply(const Mat3& a, uint32_t v[3], uint32_t m) {
    uint32_t r[3];
    for (int i = 0; i < 3; ++i) {
        uint64_t s = 0;
        for (int k = 0; k < 3; ++k) s += mulmod(a[i * 3 + k], v[k], m);
        r[i] = static_cast<uint32_t>(s % m);
    }
    v[0] = r[0];
    v[1] = r[1];
    v[2] = r[2];
}

inline constexpr int kMrgPowerEntries = 193;
using MrgPowerTable = std::array<Mat3, kMrgPowerEntries>;

// Entry k is A^(2^k) mod m, each entry the square of the one before.
constexpr MrgPowerTable mrg_power_table(const Mat3& first, uint32_t m) {
    MrgPowerTable t{};
    t[0] = first;
    for (int k = 1; k < kMrgPowerEntries; ++k) t[k] = mat3_mul(t[k - 1], t[k - 1], m);
    return t;
}

// The two recursions of L'Ecuyer's MRG32k3a as companion matrices.
inline constexpr Mat3 kMrgA1{0, 1, 0, 0, 0, 1, 4294156359u, 1403580u, 0};
inline constexpr Mat3 kMrgA2{0, 1, 0, 0, 0, 1, 4293573854u, 0, 527612u};

extern const MrgPowerTable kMrgPowersM1;
extern const MrgPowerTable kMrgPowersM2;

}  // namespace orv::rng
