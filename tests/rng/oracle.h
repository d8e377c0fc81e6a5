// Independent reference forms of the congruential recursions, written
// straight from their definitions with 128-bit arithmetic and % for every
// reduction. They share no code with the library.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace oracle {

using u128 = unsigned __int128;
using i128 = __int128;

inline uint64_t mod(i128 v, uint64_t m) {
    i128 r = v % static_cast<i128>(m);
    return static_cast<uint64_t>(r < 0 ? r + m : r);
}

// a^e mod m by square-and-multiply in 128 bits.
inline uint64_t pow_mod(uint64_t a, u128 e, uint64_t m) {
    u128 r = 1 % m, b = a % m;
    for (; e != 0; e >>= 1) {
        if (e & 1) r = r * b % m;
        b = b * b % m;
    }
    return static_cast<uint64_t>(r);
}

// x(n+1) = a x(n) mod m, output x(n).
struct Mcg {
    uint64_t x, a, m;
    uint64_t next() {
        const uint64_t out = x;
        x = static_cast<uint64_t>(static_cast<u128>(a) * x % m);
        return out;
    }
};

inline Mcg mcg31(uint64_t seed, bool seeded) {
    uint64_t x = seeded ? seed % 2147483647u : 1;
    return Mcg{x == 0 ? 1 : x, 1132489760u, 2147483647u};
}

inline Mcg mcg59(std::vector<uint32_t> seed) {
    uint64_t x = 1;
    if (seed.size() == 1) x = seed[0];
    if (seed.size() >= 2) x = (seed[0] + (uint64_t{seed[1]} << 32)) % (uint64_t{1} << 59);
    return Mcg{x == 0 ? 1 : x, 302875106592253ull, uint64_t{1} << 59};
}

struct Mrg {
    static constexpr uint64_t m1 = 4294967087ull, m2 = 4294944443ull;
    uint64_t x[3], y[3];
    explicit Mrg(std::vector<uint32_t> seed) {
        uint64_t w[6] = {1, 1, 1, 1, 1, 1};
        for (size_t i = 0; i < seed.size() && i < 6; ++i) w[i] = seed[i];
        for (int i = 0; i < 3; ++i) {
            x[i] = w[i] % m1;
            y[i] = w[i + 3] % m2;
        }
        if (x[0] + x[1] + x[2] == 0) x[0] = 1;
        if (y[0] + y[1] + y[2] == 0) y[0] = 1;
    }
    uint64_t next() {
        const uint64_t nx = mod(i128{1403580} * x[1] - i128{810728} * x[0], m1);
        const uint64_t ny = mod(i128{527612} * y[2] - i128{1370589} * y[0], m2);
        x[0] = x[1], x[1] = x[2], x[2] = nx;
        y[0] = y[1], y[1] = y[2], y[2] = ny;
        return mod(i128{nx} - i128{ny}, m1);
    }
};

struct Wh {
    uint64_t x[4], a[4], m[4];
    std::array<uint64_t, 4> next() {
        std::array<uint64_t, 4> out{x[0], x[1], x[2], x[3]};
        for (int i = 0; i < 4; ++i) x[i] = x[i] * a[i] % m[i];
        return out;
    }
};

// R250 as a plain history: x(t) = x(t-250) XOR x(t-147).
struct R250 {
    std::vector<uint32_t> hist;
    explicit R250(std::vector<uint32_t> seed) {
        if (seed.size() >= 250) {
            hist.assign(seed.begin(), seed.begin() + 250);
            return;
        }
        uint64_t s = seed.empty() || seed[0] == 0 ? 1 : seed[0];
        for (int k = 0; k < 250; ++k) {
            s = s * 69069 % (uint64_t{1} << 32);
            hist.push_back(static_cast<uint32_t>(s));
        }
        for (int k = 0; k < 32; ++k) {
            uint32_t& w = hist[3 + 7 * k];
            const int bit = 31 - k;
            w &= static_cast<uint32_t>((uint64_t{1} << bit) - 1);
            w |= uint32_t{1} << bit;
        }
    }
    uint32_t next() {
        const size_t t = hist.size();
        const uint32_t v = hist[t - 250] ^ hist[t - 147];
        hist.push_back(v);
        return v;
    }
};

}  // namespace oracle
