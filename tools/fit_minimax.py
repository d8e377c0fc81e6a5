#!/usr/bin/env python3
"""Minimax polynomial fits by the Remez exchange, in 60-digit decimals.

Fits the polynomial parts of the exponential and logarithm kernels whose
coefficients are ours to choose, rounds them to double, and reports the
largest error of the rounded polynomial on a dense grid. Run without
arguments; prints C++ initialisers and the error figures.

  lnf: ln(1 + r) = r + r^2 P(r), P of degree 8, r in [-1/3, 1/3]: the
       integer reduction to [2/3, 4/3) of the single Log2 and Log10 kernels,
       evaluated in double and rounded to float at the end.
  ln:  ln(1 + r) = r + r^2 P(r), P of degree 5, |r| <= H, H = 2^-8 plus the
       slack of the 21-bit reciprocals (the reduction of the double
       logarithm kernels). P approximates (ln(1 + r) - r) / r^2.
"""
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 60


def f_ln2(r):
    """(ln(1 + r) - r) / r^2, by its series near 0."""
    r = Decimal(r)
    if abs(r) < Decimal("1e-12"):
        return Decimal(-1) / 2 + r / 3
    return ((1 + r).ln() - r) / (r * r)


def solve(a, b):
    """Gaussian elimination with partial pivoting on Decimals."""
    n = len(b)
    m = [row[:] + [b[i]] for i, row in enumerate(a)]
    for c in range(n):
        p = max(range(c, n), key=lambda i: abs(m[i][c]))
        m[c], m[p] = m[p], m[c]
        for i in range(c + 1, n):
            f = m[i][c] / m[c][c]
            for j in range(c, n + 1):
                m[i][j] -= f * m[c][j]
    x = [Decimal(0)] * n
    for i in reversed(range(n)):
        s = m[i][n] - sum(m[i][j] * x[j] for j in range(i + 1, n))
        x[i] = s / m[i][i]
    return x


def peval(c, x):
    s = Decimal(0)
    for v in reversed(c):
        s = s * x + v
    return s


def remez(f, lo, hi, deg, iters=12, grid=4000):
    lo, hi = Decimal(lo), Decimal(hi)
    n = deg + 2
    pi = Decimal("3.14159265358979323846264338327950288419716939937510582097494")
    import math
    nodes = [(lo + hi) / 2 - (hi - lo) / 2 * Decimal(math.cos(math.pi * i / (n - 1))) for i in range(n)]
    c = None
    for _ in range(iters):
        a = [[x ** j for j in range(deg + 1)] + [Decimal((-1) ** i)] for i, x in enumerate(nodes)]
        sol = solve(a, [f(x) for x in nodes])
        c, e = sol[:-1], sol[-1]
        # New extrema of the error on a grid, one per sign run.
        xs = [lo + (hi - lo) * i / grid for i in range(grid + 1)]
        err = [peval(c, x) - f(x) for x in xs]
        runs = []
        cur = [0]
        for i in range(1, len(xs)):
            if (err[i] >= 0) == (err[cur[0]] >= 0):
                cur.append(i)
            else:
                runs.append(cur)
                cur = [i]
        runs.append(cur)
        ext = [max(r, key=lambda i: abs(err[i])) for r in runs]
        while len(ext) > n:  # drop the smallest end
            if abs(err[ext[0]]) < abs(err[ext[-1]]):
                ext.pop(0)
            else:
                ext.pop()
        if len(ext) < n:
            break
        nodes = [xs[i] for i in ext]
    return c


def max_error(f, c, lo, hi, weight, grid=20000):
    lo, hi = Decimal(lo), Decimal(hi)
    w = 0
    for i in range(grid + 1):
        x = lo + (hi - lo) * i / grid
        e = abs((peval(c, x) - f(x)) * weight(x))
        w = max(w, e)
    return w


def main():
    h = Decimal(2) ** -8 * (1 + Decimal(2) ** -11)
    c = remez(f_ln2, -h, h, 5)
    cd = [float(v) for v in c]
    cdd = [Decimal(v) for v in cd]
    # Error of r + r^2 P(r) against ln(1 + r), relative to ln(1 + r).
    e = max_error(f_ln2, cdd, -h, h, lambda r: r * r / abs((1 + r).ln()) if r != 0 else Decimal(0))
    print("// ln(1 + r) = r + r^2 P(r), |r| <= 2^-8 (1 + 2^-11); relative error of the")
    print(f"// rounded polynomial {float(e):.3g} = 2^{float(e.ln() / Decimal(2).ln()):.1f}")
    print("{" + ", ".join(repr(v) for v in cd) + "}")

    third = Decimal(1) / 3
    c = remez(f_ln2, -third, third, 8, grid=3000)
    cd = [float(v) for v in c]
    cdd = [Decimal(v) for v in cd]
    e = max_error(f_ln2, cdd, -third, third, lambda r: r * r / abs((1 + r).ln()) if r != 0 else Decimal(0),
                  grid=6000)
    print("// ln(1 + r) = r + r^2 P(r), |r| <= 1/3; relative error of the")
    print(f"// rounded polynomial {float(e):.3g} = 2^{float(e.ln() / Decimal(2).ln()):.1f}")
    print("{" + ", ".join(repr(v) for v in cd) + "}")


if __name__ == "__main__":
    main()
