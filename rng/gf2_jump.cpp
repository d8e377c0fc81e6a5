// Jump-ahead for linear generators over GF(2): T^n s = p(T) s with
// p = x^n mod P, P the characteristic polynomial of the step T. The
// remainder comes from square-and-multiply with a sparse reduction; p(T) s
// by Horner's rule or by an 8-bit sliding window over 128 precomputed states.
#include "rng/gf2_jump.h"

#include <algorithm>
#include <cstring>

#include <orv/orv_core.h>

#include "rng/brng_row.h"
#include "rng/stream.h"

namespace orv::rng {

void xor_ring(uint32_t* a, int32_t pa, const uint32_t* b, int32_t pb, int32_t n) {
    int32_t i = 0;
    while (i < n) {
        const int32_t ia = (pa + i) % n, ib = (pb + i) % n;
        const int32_t len = std::min({n - i, n - ia, n - ib});
        uint32_t* x = a + ia;
        const uint32_t* y = b + ib;
        for (int32_t j = 0; j < len; ++j) x[j] ^= y[j];
        i += len;
    }
}

void rotate_ring(uint32_t* dst, const uint32_t* src, int32_t ps, int32_t n) {
    std::memcpy(dst, src + ps, sizeof(uint32_t) * static_cast<size_t>(n - ps));
    std::memcpy(dst + (n - ps), src, sizeof(uint32_t) * static_cast<size_t>(ps));
}

}  // namespace orv::rng

namespace {

using orv::rng::allocate_block;

// Bits [q, q + w) of a, w <= 64; a has a spare word past the last bit read.
inline uint64_t get_bits(const uint64_t* a, int32_t q, int32_t w) {
    const int32_t i = q >> 6, s = q & 63;
    uint64_t v = a[i] >> s;
    if (s != 0) v |= a[i + 1] << (64 - s);
    return w == 64 ? v : v & ((uint64_t{1} << w) - 1);
}

inline void xor_bits(uint64_t* a, int32_t q, uint64_t v) {
    const int32_t i = q >> 6, s = q & 63;
    a[i] ^= v << s;
    if (s != 0) a[i + 1] ^= v >> (64 - s);
}

// Interleaves a zero above each bit: the square of a GF(2) polynomial.
inline uint64_t spread(uint64_t x) {
    x = (x | x << 16) & 0x0000FFFF0000FFFFull;
    x = (x | x << 8) & 0x00FF00FF00FF00FFull;
    x = (x | x << 4) & 0x0F0F0F0F0F0F0F0Full;
    x = (x | x << 2) & 0x3333333333333333ull;
    return (x | x << 1) & 0x5555555555555555ull;
}

// P = x^degree + L(x). A sparse P is reduced 64 bits at a time, one shifted
// XOR per term. A dense P runs a byte at a time from the top with a table of
// the 256 multiples v(x) x^pad L(x), where pad lifts the degree to a multiple
// of 8 so that every table row lands at a whole byte offset; the few bits
// between the degree and that multiple go one at a time.
struct Poly {
    int32_t degree;
    int32_t lows;  // exponents below the degree
    const uint32_t* exponents;
    int32_t chunk;      // sparse: bits reduced at once, the gap under the leading term, at most 64
    int32_t pad;        // dense: (8 - degree % 8) % 8
    int32_t row_bytes;  // dense: bytes of a table row
    const unsigned char* table;  // null for a sparse P
};

// x^(q+j) for q >= degree is x^(q+j-degree) L(x), which lands below q since
// the chunk is no wider than the gap under the leading term.
void reduce_sparse(uint64_t* a, int32_t top, const Poly& p) {
    const int32_t d = p.degree;
    for (int32_t q = std::max(d, top - p.chunk + 1);; q = std::max(d, q - p.chunk)) {
        const uint64_t c = get_bits(a, q, p.chunk);
        if (c != 0) {
            xor_bits(a, q, c);
            for (int32_t k = 0; k < p.lows; ++k) xor_bits(a, q - d + static_cast<int32_t>(p.exponents[k]), c);
        }
        if (q == d) break;
    }
}

// Bytes of a table row and of the table, for a polynomial.
int32_t row_bytes_of(int32_t pad, uint32_t max_low) { return static_cast<int32_t>((pad + 7 + max_low) / 8 + 1); }

void build_table(unsigned char* table, int32_t row_bytes, int32_t pad, int32_t lows, const uint32_t* exponents) {
    std::memset(table, 0, static_cast<size_t>(row_bytes) * 256);
    for (int32_t j = 0; j < 8; ++j) {
        unsigned char* row = table + static_cast<size_t>(row_bytes) * (1u << j);
        for (int32_t k = 0; k < lows; ++k) {
            const uint32_t b = exponents[k] + static_cast<uint32_t>(pad + j);
            row[b >> 3] ^= static_cast<unsigned char>(1u << (b & 7));
        }
    }
    for (int32_t v = 3; v < 256; ++v) {
        if ((v & (v - 1)) == 0) continue;
        unsigned char* row = table + static_cast<size_t>(row_bytes) * v;
        const unsigned char* a = table + static_cast<size_t>(row_bytes) * (v & (v - 1));
        const unsigned char* b = table + static_cast<size_t>(row_bytes) * (v & -v);
        for (int32_t i = 0; i < row_bytes; ++i) row[i] = a[i] ^ b[i];
    }
}

// Reduces a (bits up to top) modulo P. A byte at b stands for x^(8b - D')
// x^pad x^degree v(x) with D' = degree + pad, and its row lands below byte b
// because the gap under the leading term exceeds 7 bits.
void reduce(unsigned char* a, int32_t top, const Poly& p) {
    const int32_t d = p.degree, lifted = (d + p.pad) / 8;
    for (int32_t b = top / 8; b >= lifted; --b) {
        const unsigned v = a[b];
        if (v == 0) continue;
        a[b] = 0;
        const unsigned char* row = p.table + static_cast<size_t>(p.row_bytes) * v;
        unsigned char* dst = a + (b - lifted);
        for (int32_t i = 0; i < p.row_bytes; ++i) dst[i] ^= row[i];
    }
    for (int32_t i = d + p.pad - 1; i >= d; --i) {
        if (((a[i >> 3] >> (i & 7)) & 1) == 0) continue;
        a[i >> 3] ^= static_cast<unsigned char>(1u << (i & 7));
        for (int32_t k = 0; k < p.lows; ++k) {
            const uint32_t x = p.exponents[k] + static_cast<uint32_t>(i - d);
            a[x >> 3] ^= static_cast<unsigned char>(1u << (x & 7));
        }
    }
}

// x^e mod P into r (nw + 1 words); sq holds 2 nw + 2 words plus a table row.
void power_of_x(uint64_t e, const Poly& p, uint64_t* r, uint64_t* sq, int32_t nw) {
    const int32_t d = p.degree;
    int32_t s = 0;
    while ((e >> s) >= static_cast<uint64_t>(d)) ++s;
    std::memset(r, 0, sizeof(uint64_t) * static_cast<size_t>(nw + 1));
    const uint64_t start = e >> s;
    r[start >> 6] = uint64_t{1} << (start & 63);
    for (int32_t k = s - 1; k >= 0; --k) {
        std::memset(sq, 0, sizeof(uint64_t) * static_cast<size_t>(2 * nw + 2));
        for (int32_t i = 0; i < nw; ++i) {
            sq[2 * i] = spread(r[i] & 0xFFFFFFFFu);
            sq[2 * i + 1] = spread(r[i] >> 32);
        }
        if (p.table != nullptr)
            reduce(reinterpret_cast<unsigned char*>(sq), 2 * (d - 1), p);
        else
            reduce_sparse(sq, 2 * (d - 1), p);
        std::memcpy(r, sq, sizeof(uint64_t) * static_cast<size_t>(nw));
        r[nw] = 0;
        if ((e >> k) & 1) {
            uint64_t carry = 0;
            for (int32_t i = 0; i <= nw; ++i) {
                const uint64_t next = r[i] >> 63;
                r[i] = r[i] << 1 | carry;
                carry = next;
            }
            if ((r[d >> 6] >> (d & 63)) & 1) {
                r[d >> 6] ^= uint64_t{1} << (d & 63);
                for (int32_t j = 0; j < p.lows; ++j) {
                    const uint32_t x = p.exponents[j];
                    r[x >> 6] ^= uint64_t{1} << (x & 63);
                }
            }
        }
    }
}

bool usable(int32_t words, int32_t degree, int32_t terms, const uint32_t* exponents) {
    return exponents != nullptr && degree >= 1 && terms >= 1 && words >= 1 &&
           int64_t{words} * 64 >= degree && exponents[terms - 1] == static_cast<uint32_t>(degree) &&
           (terms == 1 || exponents[terms - 2] + 8 <= static_cast<uint32_t>(degree));
}

int32_t highest_bit(const uint64_t* rem, int32_t words) {
    for (int32_t i = words - 1; i >= 0; --i)
        if (rem[i] != 0) return i * 64 + 63 - __builtin_clzll(rem[i]);
    return -1;
}

inline bool bit(const uint64_t* rem, int32_t i) { return (rem[i >> 6] >> (i & 63)) & 1; }

struct Scratch {
    void* blocks[2] = {nullptr, nullptr};
    ~Scratch() {
        for (void* b : blocks)
            if (b != nullptr) orv_serv_deallocate(b);
    }
};

}  // namespace

ORV_EXPORT int32_t __vstPolyRem(uint64_t e, int32_t degree, int32_t terms, const uint32_t* exponents,
                                    int32_t words, uint32_t* rem) {
    if (!usable(words, degree, terms, exponents)) return ORV_RNG_ERROR_MEM_FAILURE;
    std::memset(rem, 0, sizeof(uint64_t) * static_cast<size_t>(words));
    if (e < static_cast<uint64_t>(degree)) {
        rem[e >> 5] = uint32_t{1} << (e & 31);
        return 0;
    }
    const int32_t nw = (degree + 63) / 64;
    const int32_t lows = terms - 1;
    const int32_t pad = (8 - degree % 8) % 8;
    const uint32_t max_low = lows > 0 ? exponents[lows - 1] : 0;
    const int32_t row = row_bytes_of(pad, max_low);
    // Rows of table XOR against one shifted XOR per term and 64 bits.
    const bool dense = int64_t{lows} * 16 > row;
    // r, the square with room for a row landing at its top, and the table.
    const size_t words_r = static_cast<size_t>(nw + 1), words_sq = static_cast<size_t>(2 * nw + 2) + row / 8 + 1;
    const size_t bytes = sizeof(uint64_t) * (words_r + words_sq) + (dense ? static_cast<size_t>(row) * 256 : 0);
    Scratch scratch;
    auto* r = static_cast<uint64_t*>(allocate_block(bytes));
    if (r == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    scratch.blocks[0] = r;
    uint64_t* sq = r + words_r;
    auto* table = reinterpret_cast<unsigned char*>(sq + words_sq);
    if (dense) build_table(table, row, pad, lows, exponents);
    const Poly p{degree, lows, exponents, std::min<int32_t>(64, degree - static_cast<int32_t>(max_low)), pad, row,
                 dense ? table : nullptr};
    std::memset(sq, 0, sizeof(uint64_t) * words_sq);
    power_of_x(e, p, r, sq, nw);
    std::memcpy(rem, r, sizeof(uint64_t) * static_cast<size_t>(nw));
    return 0;
}

namespace {

// Shared start of both evaluations: prepare, then the remainder. Returns 1
// with rem filled when a polynomial evaluation is needed, else a status.
int32_t start_jump(void* state, OrvJumpPrepareFn prepare, uint64_t* nskip, int32_t* carry, int32_t words,
                   int32_t degree, int32_t terms, const uint32_t* exponents, uint64_t** rem, Scratch& s) {
    if (!usable(words, degree, terms, exponents)) return ORV_RNG_ERROR_MEM_FAILURE;
    if (*nskip == 0) return 0;
    if (prepare(state, nskip, carry) == 0) return 0;
    *rem = static_cast<uint64_t*>(allocate_block(sizeof(uint64_t) * static_cast<size_t>(words)));
    if (*rem == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    s.blocks[0] = *rem;
    if (__vstPolyRem(*nskip, degree, terms, exponents, words, reinterpret_cast<uint32_t*>(*rem)) != 0)
        return ORV_RNG_ERROR_MEM_FAILURE;
    return 1;
}

}  // namespace

ORV_EXPORT int32_t __vst_SkipAheadHorner(void* state, OrvJumpZeroFn zero, OrvJumpAddFn add,
                                             OrvJumpCopyFn copy, OrvJumpStepFn step, OrvJumpFinishFn finish,
                                             OrvJumpPrepareFn prepare, uint64_t nskip, int32_t words,
                                             int32_t degree, int32_t stateBytes, int32_t terms,
                                             const uint32_t* exponents) {
    Scratch scratch;
    int32_t carry = 0;
    uint64_t* rem = nullptr;
    const int32_t started =
        start_jump(state, prepare, &nskip, &carry, words, degree, terms, exponents, &rem, scratch);
    if (started != 1) return started;
    void* work = allocate_block(static_cast<size_t>(stateBytes));
    if (work == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    scratch.blocks[1] = work;
    const int32_t t = highest_bit(rem, words);
    copy(work, state);
    if (t >= 1) {
        step(work);
        for (int32_t i = t - 1; i >= 1; --i) {
            if (bit(rem, i)) add(work, state, 0);
            step(work);
        }
        if (bit(rem, 0)) add(work, state, 0);
    }
    finish(state, work, carry);
    return 0;
}

ORV_EXPORT int32_t __vst_SkipAheadSWin(void* state, OrvJumpZeroFn zero, OrvJumpAddFn add,
                                           OrvJumpCopyFn copy, OrvJumpStepFn step, OrvJumpFinishFn finish,
                                           OrvJumpPrepareFn prepare, uint64_t nskip, int32_t words,
                                           int32_t degree, int32_t stateBytes, int32_t terms,
                                           const uint32_t* exponents) {
    constexpr int32_t kWindow = 7, kTable = 1 << kWindow;
    Scratch scratch;
    int32_t carry = 0;
    uint64_t* rem = nullptr;
    const int32_t started =
        start_jump(state, prepare, &nskip, &carry, words, degree, terms, exponents, &rem, scratch);
    if (started != 1) return started;
    // The table, the powers T^k s for k below 7, and the result, in one
    // block, each state at the alignment of a stream.
    const size_t bytes = (static_cast<size_t>(stateBytes) + 127) & ~size_t{127};
    auto* block = static_cast<unsigned char*>(allocate_block(bytes * (kTable + kWindow + 1)));
    if (block == nullptr) return ORV_RNG_ERROR_MEM_FAILURE;
    scratch.blocks[1] = block;
    auto table = [&](int32_t p) -> void* { return block + bytes * static_cast<size_t>(p); };
    auto power = [&](int32_t k) -> void* { return block + bytes * static_cast<size_t>(kTable + k); };
    void* result = block + bytes * (kTable + kWindow);

    copy(power(0), state);
    for (int32_t k = 1; k < kWindow; ++k) {
        copy(power(k), power(k - 1));
        step(power(k));
    }
    copy(table(0), power(kWindow - 1));
    step(table(0));
    // Gray-code order: each entry is the previous one plus a single x^k s.
    for (int32_t i = 1; i < kTable; ++i) {
        const int32_t g = i ^ (i >> 1), prev = (i - 1) ^ ((i - 1) >> 1);
        copy(table(g), table(prev));
        add(table(g), power(__builtin_ctz(static_cast<unsigned>(g ^ prev))), 0);
    }

    zero(result);
    int32_t i = highest_bit(rem, words);
    while (i > kWindow - 1) {
        step(result);
        if (bit(rem, i)) {
            for (int32_t k = 0; k < kWindow; ++k) step(result);
            int32_t p = 0;
            for (int32_t k = 1; k <= kWindow; ++k) p = p << 1 | static_cast<int32_t>(bit(rem, i - k));
            add(result, table(p), 0);
            i -= kWindow + 1;
        } else {
            i -= 1;
        }
    }
    for (; i >= 0; --i) {
        step(result);
        if (bit(rem, i)) add(result, state, 0);
    }
    finish(state, result, carry);
    return 0;
}
