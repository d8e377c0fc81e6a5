#!/usr/bin/env python3
"""Writes the built-in tables of the quasi-random generators:
rng/quasi/sobol_table.inc from the published Sobol initial numbers (Bratley and Fox, ACM TOMS 659),
and rng/quasi/niederr_polynomials.inc, the first 318 irreducible polynomials over GF(2) in
ascending order of their bit patterns, found by trial division.

usage: tools/gen_qrng_tables.py /path/to/sobol_initial_numbers.txt"""
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def gf2_mod(a, b):
    db = b.bit_length()
    while a.bit_length() >= db:
        a ^= b << (a.bit_length() - db)
    return a


def irreducible(p):
    d = p.bit_length() - 1
    if d < 1:
        return False
    for q in range(2, 1 << (d // 2 + 1)):
        if (q.bit_length() - 1) <= d // 2 and gf2_mod(p, q) == 0:
            return False
    return True


def niederr(count=318):
    out, p = [], 2
    while len(out) < count:
        if irreducible(p):
            out.append(p)
        p += 1
    return out


def main():
    rows = []
    for line in open(sys.argv[1]):
        if line.startswith('#') or not line.strip():
            continue
        w = [int(t) for t in line.split()]
        d, s, poly, m = w[0], w[1], w[2], w[3:]
        assert len(m) == s and poly.bit_length() - 1 == s
        rows.append((d, s, poly, m))
    with open(ROOT / 'rng/quasi/sobol_table.inc', 'w') as f:
        f.write('// Sobol dimensions 1 to 39: degree, primitive polynomial (lowest and highest bit\n'
                '// included) and initial odd numbers m_1..m_s, from the published table of Bratley\n'
                '// and Fox (ACM TOMS algorithm 659). Written by tools/gen_qrng_tables.py.\n')
        for d, s, poly, m in rows:
            f.write('    {%d, %d, {%s}},\n' % (s, poly, ', '.join(map(str, m + [0] * (8 - len(m))))))
    polys = niederr()
    with open(ROOT / 'rng/quasi/niederr_polynomials.inc', 'w') as f:
        f.write('// The first 318 irreducible polynomials over GF(2), as bit patterns in ascending\n'
                '// order. Written by tools/gen_qrng_tables.py (trial division).\n')
        for i in range(0, len(polys), 12):
            f.write('    ' + ', '.join(map(str, polys[i:i + 12])) + ',\n')


if __name__ == '__main__':
    main()
