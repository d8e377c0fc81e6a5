#!/usr/bin/env python3
"""Minimax fits of the pi- and degree-scaled sine and cosine kernels.

Sinpi, Cospi, Tanpi, SinCospi, Sind, Cosd and Tand reduce exactly to an
angle u = r K with |u| <= pi/4 (r = x - n/2 for the pi forms, r = x - 90 n
for degrees) and evaluate there

  sin u = u + u^3 P(u^2)                      (fits "sin*")
  cos u = 1 + u^2 C(u^2)                      (fits "cos*", C(0) = -1/2)
  cos u = 1 - u^2/2 + u^4 Q(u^2)              (fit "cosq", the double-double form)

P, C and Q are fitted by the Remez exchange (tools/fit_minimax.py) as
functions of z = u^2 on [0, Z], Z = (pi/4 (1 + 2^-10))^2 (a margin for the
rounded quotient of the degree reduction), rounded to double or to float, and
the relative error of the rounded formula against sin or cos (mpmath, 70
digits) is reported on a dense grid. Run without arguments: prints the C++
initialisers (highest coefficient first, the order of poly::horner) and the
error figures, which are the comments beside the tables in
vector/trig/trigpi_internal.h.

  sin, cosq:   double, P degree 6, Q degree 5 (double HA and LA)
  sin9, cos10: double, P degree 3, C degree 4 (single HA, in double; double EP)
  sinf, cosf:  float,  P degree 2, C degree 3 (single LA, in float)
  sine, cose:  float,  P degree 1, C degree 1 (single EP, in float)
"""
import os
import struct
import sys
from decimal import Decimal, getcontext

import mpmath

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from fit_minimax import remez  # noqa: E402

getcontext().prec = 60
mpmath.mp.dps = 70

U = mpmath.pi / 4 * (1 + mpmath.mpf(2) ** -10)


# The Taylor series in z, summed far past 70 digits on [0, Z] (no
# cancellation near z = 0).
def series(z, first, odd):
    s, t, k = mpmath.mpf(0), None, first
    for k in range(first, first + 40):
        fact = mpmath.factorial(2 * k + 1 if odd else 2 * k)
        s += (-1) ** k * z ** (k - first) / fact
    return s


def g_sin(z):
    return series(z, 1, True)


def g_cos(z):
    return series(z, 1, False)


def g_cosq(z):
    return series(z, 2, False)


def f_sin(u, p):
    return u + u ** 3 * p


def f_cos(u, p):
    return 1 + u * u * p


def f_cosq(u, p):
    return 1 - u * u / 2 + u ** 4 * p


FITS = [
    # name, g, formula, reference, degree, float coefficients
    ("sin", g_sin, f_sin, mpmath.sin, 6, False),
    ("cosq", g_cosq, f_cosq, mpmath.cos, 5, False),
    ("sin9", g_sin, f_sin, mpmath.sin, 3, False),
    ("cos10", g_cos, f_cos, mpmath.cos, 4, False),
    ("sinf", g_sin, f_sin, mpmath.sin, 2, True),
    ("cosf", g_cos, f_cos, mpmath.cos, 3, True),
    ("sine", g_sin, f_sin, mpmath.sin, 1, True),
    ("cose", g_cos, f_cos, mpmath.cos, 1, True),
]


def as_decimal(g):
    def h(z):
        z = mpmath.mpf(str(z))
        if z < mpmath.mpf("1e-30"):
            z = mpmath.mpf("1e-30")
        return Decimal(mpmath.nstr(g(z), 60))
    return h


def to_float(v):
    return struct.unpack("f", struct.pack("f", v))[0]


def main():
    zmax = Decimal(mpmath.nstr(U * U, 60))
    for name, g, formula, ref, deg, single in FITS:
        c = remez(as_decimal(g), Decimal("1e-40"), zmax, deg, grid=3000)
        cd = [float(v) for v in c]
        if single:
            cd = [to_float(v) for v in cd]
        worst = mpmath.mpf(0)
        for i in range(1, 4001):
            u = U * i / 4000
            p = mpmath.mpf(0)
            for v in reversed(cd):
                p = p * u * u + v
            e = abs((formula(u, p) - ref(u)) / ref(u))
            worst = max(worst, e)
        kind = "float" if single else "double"
        print(f"// {name}: degree {deg}, {kind}, |u| <= pi/4 (1 + 2^-10); relative error of the")
        print(f"// rounded formula {float(worst):.3g} = 2^{float(mpmath.log(worst, 2)):.1f}")
        suffix = "f" if single else ""
        vals = ", ".join((repr(v) + suffix) if single else repr(v) for v in reversed(cd))
        print(f"inline constexpr {kind} k{name[:1].upper() + name[1:]}[{deg + 1}] = {{{vals}}};")


if __name__ == "__main__":
    main()
