#!/usr/bin/env python3
"""Minimax fits of the inverse trigonometric and hyperbolic kernels.

Each odd function f is written f(x) = x + x^3 P(x^2); P is fitted by the
Remez exchange (tools/fit_minimax.py) to (f(x) - x) / x^3 as a function of
z = x^2 on [0, Z], rounded to double, and the relative error of the rounded
x + x^3 P(x^2) against f is reported on a dense grid. References by mpmath at
60 digits. Run without arguments: prints the C++ initialisers (highest
coefficient first, the order of poly::horner) and the error figures.

  atan:  |x| <= 7/16, P of degree 10 (the reduced argument of Atan/Atan2)
  asin:  |x| <= 1/2,  P of degree 14 (Asin, Acos: |x| <= 1/2 and sqrt((1-|x|)/2))
  tanh:  |x| <= 1/4,  P of degree 8  (double Tanh below the exponential form)
  sinh:  |x| <= 1,    P of degree 7  (double Sinh below the exponential form)
  atanf, asinf, tanhf: the same intervals at the lower degrees of the single
         kernels, which evaluate in double and round to float (a relative
         error near 2^-32 leaves the float result within 0.51 ULP)
"""
import os
import sys
from decimal import Decimal, getcontext

import mpmath

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from fit_minimax import remez, peval  # noqa: E402

getcontext().prec = 60
mpmath.mp.dps = 70

FITS = [
    ("atan", mpmath.atan, Decimal(7) / 16, 10),
    ("asin", mpmath.asin, Decimal(1) / 2, 14),
    ("tanh", mpmath.tanh, Decimal(1) / 4, 8),
    ("sinh", mpmath.sinh, Decimal(1), 7),
    ("atanf", mpmath.atan, Decimal(7) / 16, 5),
    ("asinf", mpmath.asin, Decimal(1) / 2, 6),
    ("tanhf", mpmath.tanh, Decimal(1) / 4, 3),
]


def g_of(f):
    def g(z):
        z = mpmath.mpf(str(z))
        if z < mpmath.mpf("1e-30"):
            z = mpmath.mpf("1e-30")
        x = mpmath.sqrt(z)
        return Decimal(mpmath.nstr((f(x) - x) / (x * x * x), 60))
    return g


def main():
    for name, f, xmax, deg in FITS:
        g = g_of(f)
        c = remez(g, Decimal("1e-40"), xmax * xmax, deg, grid=3000)
        cd = [float(v) for v in c]
        worst = mpmath.mpf(0)
        for i in range(1, 4001):
            x = mpmath.mpf(str(xmax)) * i / 4000
            z = x * x
            p = mpmath.mpf(0)
            for v in reversed(cd):
                p = p * z + v
            e = abs((x + x ** 3 * p - f(x)) / f(x))
            worst = max(worst, e)
        print(f"// {name}: x + x^3 P(x^2), |x| <= {xmax}, P degree {deg}; relative error of the")
        print(f"// rounded polynomial {float(worst):.3g} = 2^{float(mpmath.log(worst, 2)):.1f}")
        print(f"inline constexpr double k{name[:1].upper() + name[1:]}P[{deg + 1}] = {{" +
              ", ".join(repr(v) for v in reversed(cd)) + "};")


if __name__ == "__main__":
    main()
