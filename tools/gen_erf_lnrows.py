#!/usr/bin/env python3
"""Rows of ln erfcx for the double Erf and Erfc kernels (vector/erf/erf_lnrows.h).

  erfc(x) = exp(-x^2 + L(x)),  L(x) = ln erfcx(x) = ln erfc(x) + x^2.

L is smooth on x > 0 (the nearest zeros of erfc are near -1.35 +- 1.99i) and
falls like -ln x, so rows of a fixed relative width serve the whole range:
16 rows a binade on [1/2, 32), row j = (bits(x) >> 48) - 0x3FE0, centred at
c (the top 4 mantissa bits of x followed by a one), s = x - c exact,
|s| <= c/32 about:

  L(c + s) = (c0 + c0lo) + s Q(s),  c0 = L(c) in two doubles,

Q fitted by Chebyshev interpolation at 40 digits (mpmath.chebyfit), its
coefficients rounded to double. One degree for all rows (a row is loaded
whole): the lowest whose rounded rows all keep |L error| below 2^-58 on a
dense grid (the rounding of Q's constant alone reaches 2^-59). A row holds c0, c0lo, then Q from its highest coefficient down,
padded with zeros to a multiple of 4 doubles (the
row loads move 4 at a time).

Run without arguments: writes the header to stdout, the fit figures to stderr.
"""
import sys
import mpmath as mp

mp.mp.dps = 40
ROWS = 96          # 6 binades of 16 rows: [1/2, 32)
MAX_WIDTH = 16     # doubles a row at most
TARGET = mp.mpf(2) ** -58


def L(x):
    x = mp.mpf(x)
    return mp.log(mp.erfc(x)) + x * x


def centre(j):
    e, i = j // 16 - 1, j % 16
    return mp.ldexp(1 + (mp.mpf(i) + mp.mpf(0.5)) / 16, e)


def horner(c, x):  # exact in mpmath: the error of the rounded fit alone
    p = mp.mpf(0)
    for v in c:
        p = p * x + v
    return p


def row(j, terms, n_check=64):
    c = centre(j)
    h = c / 32
    l0 = L(c)
    c0 = float(l0)
    c0lo = float(l0 - c0)
    q = lambda s: (L(c + s) - l0) / s if s != 0 else mp.diff(L, c)
    cq = [float(v) for v in mp.chebyfit(q, [-h, h], terms)]
    worst = mp.mpf(0)
    for i in range(n_check + 1):
        s = -h + 2 * h * i / n_check
        worst = max(worst, abs(c0 + (c0lo + s * horner(cq, s)) - L(c + s)))
    return [c0, c0lo] + cq, worst


def main():
    log = sys.stderr
    terms = 4
    while True:
        rows, worst = [], mp.mpf(0)
        for j in range(ROWS):
            r, e = row(j, terms)
            rows.append(r)
            worst = max(worst, e)
            if worst >= TARGET:
                break
        print(f"Q with {terms} coefficients: worst |L error| {float(worst):.3g}", file=log)
        if worst < TARGET:
            break
        terms += 1
        if 2 + terms > MAX_WIDTH:
            raise SystemExit("no fit within a row")
    width = (2 + terms + 3) // 4 * 4
    out = ["// Made by tools/gen_erf_lnrows.py (mpmath Chebyshev fits of ln erfcx, checked after",
           "// rounding); do not edit by hand. Rows and variables are described in that script.",
           "#pragma once", "", "namespace orv::erfk {", "",
           f"// |L error| below {float(worst):.3g} in every row.",
           f"inline constexpr int kLnRowTerms = {terms}, kLnRowWidth = {width};",
           f"alignas(64) inline constexpr double kErfcLnRows[{ROWS}][{width}] = {{"]
    for r in rows:
        r = r + [0.0] * (width - len(r))
        out.append("    {" + ", ".join(repr(v) for v in r) + "},")
    out += ["};", "", "}  // namespace orv::erfk", ""]
    print("\n".join(out))


if __name__ == "__main__":
    main()
