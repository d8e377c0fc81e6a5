#!/usr/bin/env python3
"""Writes the characteristic polynomials of MT19937 (word step) and SFMT19937
(128-bit block step) as ascending exponent lists for the jump-ahead.

Each polynomial is found by Berlekamp-Massey over GF(2) on a bit sequence
read from the generator run from a state of random words (no seeding, no period
certification, so that every invariant part of the state contributes): the
linear complexity of that bit sequence is the degree of the minimal
polynomial of the one-step map. The generators here are written from the
published recursions, independently of the library, and checked against the
known-answer files before they are used.

Usage: gen_twister_polys.py OUTPUT.inc [SHARED_DATA_DIR]
"""
import os
import random
import sys

M32 = 0xFFFFFFFF


# --- MT19937 ---------------------------------------------------------------

def mt_init_by_array(key):
    n = 624
    mt = [0] * n
    mt[0] = 19650218
    for i in range(1, n):
        mt[i] = (1812433253 * (mt[i - 1] ^ (mt[i - 1] >> 30)) + i) & M32
    if not key:
        key = [1]
    i, j = 1, 0
    for _ in range(max(n, len(key))):
        mt[i] = ((mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525)) + key[j] + j) & M32
        i += 1
        j += 1
        if i >= n:
            mt[0] = mt[n - 1]
            i = 1
        if j >= len(key):
            j = 0
    for _ in range(n - 1):
        mt[i] = ((mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941)) - i) & M32
        i += 1
        if i >= n:
            mt[0] = mt[n - 1]
            i = 1
    mt[0] = 0x80000000
    return mt


def mt_words(mt):
    """Yields untempered words forever, regenerating in place."""
    n = 624
    while True:
        for k in range(n):
            y = (mt[k] & 0x80000000) | (mt[(k + 1) % n] & 0x7FFFFFFF)
            mt[k] = mt[(k + 397) % n] ^ (y >> 1) ^ (0x9908B0DF if y & 1 else 0)
        yield from mt


def mt_temper(y):
    y ^= y >> 11
    y ^= (y << 7) & 0x9D2C5680
    y ^= (y << 15) & 0xEFC60000
    return y ^ (y >> 18)


# --- SFMT19937 -------------------------------------------------------------

SFMT_MASK = [0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6]


def sfmt_init_by_array(key):
    n, mid, lag = 624, 306, 11
    if not key:
        key = [1]
    w = [0x8B8B8B8B] * n

    def f1(x):
        return ((x ^ (x >> 27)) * 1664525) & M32

    def f2(x):
        return ((x ^ (x >> 27)) * 1566083941) & M32

    count = max(len(key) + 1, n)
    r = f1(w[0] ^ w[mid] ^ w[n - 1])
    w[mid] = (w[mid] + r) & M32
    r = (r + len(key)) & M32
    w[mid + lag] = (w[mid + lag] + r) & M32
    w[0] = r
    i = 1
    for j in range(count - 1):
        r = f1(w[i] ^ w[(i + mid) % n] ^ w[(i + n - 1) % n])
        w[(i + mid) % n] = (w[(i + mid) % n] + r) & M32
        r = (r + (key[j] if j < len(key) else 0) + i) & M32
        w[(i + mid + lag) % n] = (w[(i + mid + lag) % n] + r) & M32
        w[i] = r
        i = (i + 1) % n
    for _ in range(n):
        r = f2((w[i] + w[(i + mid) % n] + w[(i + n - 1) % n]) & M32)
        w[(i + mid) % n] ^= r
        r = (r - i) & M32
        w[(i + mid + lag) % n] ^= r
        w[i] = r
        i = (i + 1) % n
    inner = (w[0] & 1) ^ (w[3] & 0x13C9E684)
    if bin(inner).count("1") % 2 == 0:
        w[0] ^= 1
    # 128-bit blocks, word 0 lowest.
    return [w[4 * b] | w[4 * b + 1] << 32 | w[4 * b + 2] << 64 | w[4 * b + 3] << 96 for b in range(156)]


def sfmt_recursion(a, b, c, d):
    m128 = (1 << 128) - 1
    bm = 0
    dm = 0
    for k in range(4):
        bw = (b >> (32 * k)) & M32
        dw = (d >> (32 * k)) & M32
        bm |= ((bw >> 11) & SFMT_MASK[k]) << (32 * k)
        dm |= ((dw << 18) & M32) << (32 * k)
    return a ^ ((a << 8) & m128) ^ bm ^ (c >> 8) ^ dm


def sfmt_blocks(st):
    """Yields 128-bit blocks forever, regenerating in place."""
    n = 156
    while True:
        for i in range(n):
            st[i] = sfmt_recursion(st[i], st[(i + 122) % n], st[(i + 154) % n], st[(i + 155) % n])
        yield from st


def sfmt_words(st):
    for blk in sfmt_blocks(st):
        for k in range(4):
            yield (blk >> (32 * k)) & M32


# --- Berlekamp-Massey over GF(2) -------------------------------------------

def berlekamp_massey(bits):
    """Connection polynomial C (bit i = c_i, c_0 = 1) and its length L."""
    c, b = 1, 1
    length, m = 0, 1
    window = 0  # bit i = s_{n-i}
    for n, s in enumerate(bits):
        window = (window << 1) | s
        d = (c & window).bit_count() & 1
        if d == 0:
            m += 1
        elif 2 * length <= n:
            t = c
            c ^= b << m
            length, b, m = n + 1 - length, t, 1
        else:
            c ^= b << m
            m += 1
    return c, length


def characteristic_exponents(bits):
    c, length = berlekamp_massey(bits)
    # P(x) = x^L C(1/x): coefficient of x^e is c_{L-e}.
    return [e for e in range(length + 1) if (c >> (length - e)) & 1]


def read_kat(path):
    with open(path) as f:
        return [int(line) for line in f if line.strip() and not line.startswith("#")]


def main():
    out = sys.argv[1]
    data = sys.argv[2] if len(sys.argv) > 2 else os.path.join(os.path.dirname(__file__), "../../shared/data")
    kat_mt = os.path.join(data, "kat_mt19937_key_123_234_345_456.txt")
    kat_sfmt = os.path.join(data, "kat_sfmt19937_key_1234_5678_9abc_def0.txt")
    if os.path.exists(kat_mt):
        g = mt_words(mt_init_by_array([0x123, 0x234, 0x345, 0x456]))
        assert [mt_temper(next(g)) for _ in range(1000)] == read_kat(kat_mt), "MT19937 oracle"
    if os.path.exists(kat_sfmt):
        g = sfmt_words(sfmt_init_by_array([0x1234, 0x5678, 0x9ABC, 0xDEF0]))
        assert [next(g) for _ in range(1000)] == read_kat(kat_sfmt), "SFMT19937 oracle"

    rnd = random.Random(20261122)
    g = mt_words([rnd.getrandbits(32) for _ in range(624)])
    mt = characteristic_exponents([next(g) & 1 for _ in range(2 * 19937 + 64)])
    # The block step has a small invariant part on which a random start
    # reaches the full order only with probability about one half; the
    # longest of a few runs (random state, parity of a random mask over the
    # block) is the minimal polynomial of the map.
    sfmt = []
    for _ in range(8):
        g = sfmt_blocks([rnd.getrandbits(128) for _ in range(156)])
        mask = rnd.getrandbits(128)
        e = characteristic_exponents([(next(g) & mask).bit_count() & 1 for _ in range(2 * 19968 + 64)])
        if e[-1] > (sfmt[-1] if sfmt else 0):
            sfmt = e
        if sfmt[-1] == 19968:
            break
    assert mt[-1] == 19937 and len(mt) == 135, (mt[-1], len(mt))
    assert sfmt[-1] == 19968 and len(sfmt) == 6711, (sfmt[-1], len(sfmt))

    with open(out, "w") as f:
        f.write("// Characteristic polynomials of the MT19937 word step and the SFMT19937\n")
        f.write("// block step: ascending exponents with coefficient 1. Written by\n")
        f.write("// tools/gen_twister_polys.py (Berlekamp-Massey over GF(2)).\n")
        for name, e in (("kMt19937Poly", mt), ("kSfmt19937Poly", sfmt)):
            f.write(f"constexpr uint32_t {name}[{len(e)}] = {{\n")
            for i in range(0, len(e), 12):
                f.write("    " + ", ".join(str(v) for v in e[i:i + 12]) + ",\n")
            f.write("};\n")


if __name__ == "__main__":
    main()
