#!/usr/bin/env python3
"""Minimax fits of the single-precision error-function kernels.

The single Erf, Erfc, CdfNorm (and Erfcx) kernels evaluate in plain double and
round once to float; a relative error near 2^-30 in double leaves the float
result within about 0.52 ULP. The pieces (a = |z|):

  erf_small: erf(z) = z P(z^2) for |z| < 3/4; P fitted to erf(sqrt u)/sqrt u
             on u in [0, 9/16] (values 0.90 to 1.13, so the absolute fit is
             a relative one).
  erfcx:     erfcx(a) = t G(t), t = 2/(2 + a), for 3/4 <= a <= 9 (t in
             [2/11, 8/11]); G fitted to erfcx(2/t - 2)/t (values 0.34 to 0.64).
  erfcx4, exp6: G on t in [1/3, 8/11] (3/4 <= a <= 4) and exp(r) at lower
             degrees for Erf, which needs erfc(a) only to 2^-28 relative at
             a = 3/4 and less beyond (its error is absolute against erf).
  erfcx_all: the same G on t in [1e-9, 8/11], 3/4 <= a <= 2 10^9 (Erfcx to
             the largest argument: G is smooth at t = 0, where it is
             1/(2 sqrt pi); below t = 1e-9 G and the polynomial each move by
             under 1e-9 of their value).
  exp:       exp(r) for |r| <= ln2/2 (exp(-a^2) = 2^-k exp(r),
             r = k ln2 - a^2, k = round(a^2/ln2)).

Each comes at the HA degrees (about 2^-30) and the EP degrees (2^-18 for
erf_small, whose error 1 - z P(z^2) can magnify 2.4 times; about 2^-15 for the
others: the EP tier's 2^-11 bound with room to spare). Fitted by the
Remez exchange (tools/fit_minimax.py) on mpmath values at 60 digits, rounded
to double; the relative error of the rounded polynomial is measured on a dense
grid. Run without arguments: prints the C++ initialisers (highest coefficient
first, the order of poly::horner) and the error figures.
"""
import os
import sys
from decimal import Decimal, getcontext

import mpmath

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from fit_minimax import remez, peval  # noqa: E402

getcontext().prec = 60
mpmath.mp.dps = 60


def dec(v):
    return Decimal(mpmath.nstr(v, 60))


def mp(x):
    return mpmath.mpf(str(x))


def erf_small(u):
    u = mp(u)
    if u < mpmath.mpf("1e-40"):
        return dec(2 / mpmath.sqrt(mpmath.pi))
    s = mpmath.sqrt(u)
    return dec(mpmath.erf(s) / s)


def erfcx_g(t):
    t = mp(t)
    a = 2 / t - 2
    return dec(mpmath.erfc(a) * mpmath.exp(a * a) / t)


def exp_r(r):
    return dec(mpmath.exp(mp(r)))


LN2_2 = dec(mpmath.log(2) / 2)
FITS = [
    # name, function, interval, degree
    ("kErfSmallS", erf_small, (Decimal("1e-40"), Decimal(9) / 16), 5),
    ("kErfcxGS", erfcx_g, (Decimal(2) / 11, Decimal(8) / 11), 9),
    ("kExpS", exp_r, (-LN2_2, LN2_2), 7),
    ("kErfcxG4S", erfcx_g, (Decimal(1) / 3, Decimal(8) / 11), 7),
    ("kExpS6", exp_r, (-LN2_2, LN2_2), 6),
    ("kErfcxAllS", erfcx_g, (Decimal("1e-9"), Decimal(8) / 11), 11),
    ("kErfSmallSEp", erf_small, (Decimal("1e-40"), Decimal(9) / 16), 3),
    ("kErfcxGSEp", erfcx_g, (Decimal(2) / 11, Decimal(8) / 11), 4),
    ("kExpSEp", exp_r, (-LN2_2, LN2_2), 4),
]


def main():
    print("// Made by tools/fit_erf_single.py (see its header for what each fit is).")
    print("#pragma once")
    print("namespace orv::erfk::single {")
    for name, f, (lo, hi), deg in FITS:
        c = remez(f, lo, hi, deg, grid=2000)
        cd = [float(v) for v in c]
        cdd = [Decimal(v) for v in cd]
        worst = Decimal(0)
        n = 6000
        for i in range(n + 1):
            x = lo + (hi - lo) * i / n
            y = f(x)
            worst = max(worst, abs((peval(cdd, x) - y) / y))
        e = float(worst)
        print(f"// {name}: degree {deg} on [{float(lo):.6g}, {float(hi):.6g}], relative error "
              f"{e:.3g} = 2^{float(worst.ln() / Decimal(2).ln()):.1f}")
        print(f"inline constexpr double {name}[{deg + 1}] = {{"
              + ", ".join(repr(v) for v in reversed(cd)) + "};")
    print("}  // namespace orv::erfk::single")


if __name__ == "__main__":
    main()
