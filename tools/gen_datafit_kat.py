#!/usr/bin/env python3
"""Known answers for spline construction, in exact rational arithmetic.

Each spline is found by writing down its defining conditions (interpolation,
continuity, end conditions) as a dense linear system in the polynomial
coefficients and solving it with fractions.Fraction, so that no recurrence of
the library is repeated here. Akima's interior derivatives are taken from the
weights of Akima (1970). Output: tests/data/datafit/known_answers.txt.

Line format: name | constructor | bc_type | stype | x | y | bc | ic | coefficients
with space-separated numbers; an empty field is '-'.
"""
from fractions import Fraction as F
import sys


def solve(a, b):
    """Gauss-Jordan elimination with exact pivots."""
    n = len(a)
    m = [row[:] + [rhs] for row, rhs in zip(a, b)]
    for c in range(n):
        p = next(r for r in range(c, n) if m[r][c] != 0)
        m[c], m[p] = m[p], m[c]
        for r in range(n):
            if r != c and m[r][c] != 0:
                f = m[r][c] / m[c][c]
                m[r] = [u - f * v for u, v in zip(m[r], m[c])]
    return [m[i][n] / m[i][i] for i in range(n)]


def poly_row(deg, t, der, ncoef):
    """Row of d^der/dt^der of sum c_j t^j evaluated at t."""
    row = []
    for j in range(ncoef):
        if j < der:
            row.append(F(0))
        else:
            f = F(1)
            for q in range(der):
                f *= j - q
            row.append(f * t ** (j - der))
    return row


def piecewise(x, y, order, extra):
    """Cells of `order` coefficients in t = site - x[c]; interpolation at both
    ends of every cell, continuity of derivatives 1..order-2 at interior
    breakpoints, plus `extra` conditions (cell, t, derivative, value) or
    ('join', der) for periodic matching."""
    n = len(x)
    cells = n - 1
    N = cells * order
    A, B = [], []

    def cond(c, t, der):
        r = [F(0)] * N
        r[c * order:(c + 1) * order] = poly_row(order - 1, t, der, order)
        return r

    for c in range(cells):
        h = x[c + 1] - x[c]
        A.append(cond(c, F(0), 0)); B.append(y[c])
        A.append(cond(c, h, 0)); B.append(y[c + 1])
    for c in range(1, cells):
        h = x[c] - x[c - 1]
        for der in range(1, order - 1):
            r = [a - b for a, b in zip(cond(c - 1, h, der), cond(c, F(0), der))]
            A.append(r); B.append(F(0))
    for e in extra:
        if e[0] == 'join':  # derivative e[1] equal at both ends of the period
            der = e[1]
            h = x[-1] - x[-2]
            r = [a - b for a, b in zip(cond(0, F(0), der), cond(cells - 1, h, der))]
            A.append(r); B.append(F(0))
        elif e[0] == 'same':  # cells e[1] and e[1]+1 one cubic: third derivative equal
            c = e[1]
            h = x[c + 1] - x[c]
            r = [a - b for a, b in zip(cond(c, h, 3), cond(c + 1, F(0), 3))]
            A.append(r); B.append(F(0))
        else:
            c, t, der, val = e
            A.append(cond(c, t, der)); B.append(val)
    return solve(A, B)


def cubic_natural(x, y, bc_type, bc):
    n = len(x)
    hl = x[-1] - x[-2]
    extra = []
    left = {0x01: 'nak', 0x02: 'free', 0x0C: 1, 0x24: 1, 0x18: 2, 0x30: 2, 0x40: 'per'}[bc_type]
    right = {0x01: 'nak', 0x02: 'free', 0x0C: 1, 0x24: 2, 0x18: 1, 0x30: 2, 0x40: 'per'}[bc_type]
    if left == 'per':
        extra = [('join', 1), ('join', 2)]
    else:
        if left == 'nak': extra.append(('same', 0))
        if left == 'free': extra.append((0, F(0), 2, F(0)))
        if left in (1, 2): extra.append((0, F(0), left, bc[0]))
        if right == 'nak': extra.append(('same', n - 3))
        if right == 'free': extra.append((n - 2, hl, 2, F(0)))
        if right in (1, 2): extra.append((n - 2, hl, right, bc[1]))
    return piecewise(x, y, 4, extra)


def cubic_nak3(x, y):
    """n = 3 not-a-knot: one cubic through the points with zero slope at x[1]."""
    A = [poly_row(3, xi - x[0], 0, 4) for xi in x] + [poly_row(3, x[1] - x[0], 1, 4)]
    p = solve(A, list(y) + [F(0)])
    out = p[:]
    # Cell 1 is the same cubic re-expanded about x[1].
    t = x[1] - x[0]
    out += [sum(p[j] * t ** j for j in range(4)),
            sum(j * p[j] * t ** (j - 1) for j in range(1, 4)),
            sum(F(j * (j - 1), 2) * p[j] * t ** (j - 2) for j in range(2, 4)),
            p[3]]
    return out


def hermite_cells(x, y, d):
    out = []
    for c in range(len(x) - 1):
        h = x[c + 1] - x[c]
        s = (y[c + 1] - y[c]) / h
        out += [y[c], d[c], (3 * s - 2 * d[c] - d[c + 1]) / h, (d[c] + d[c + 1] - 2 * s) / h / h]
    return out


def akima_clamped(x, y, bc):
    n = len(x)
    s = [(y[i + 1] - y[i]) / (x[i + 1] - x[i]) for i in range(n - 1)]
    # Slopes extended by the nearest difference at both ends.
    d = [bc[0]] + [F(0)] * (n - 2) + [bc[1]]
    for i in range(1, n - 1):
        wr = abs(s[i + 1] - s[i]) if i + 1 <= n - 2 else abs(s[n - 2] - s[n - 3])
        wl = abs(s[i - 1] - s[i - 2]) if i >= 2 else abs(s[1] - s[0])
        d[i] = (wr * s[i - 1] + wl * s[i]) / (wr + wl) if wr + wl != 0 else (s[i] + s[i - 1]) / 2
    return hermite_cells(x, y, d)


def quadratic_midpoint(x, y, m1):
    h0 = x[1] - x[0]
    return piecewise(x, y, 3, [(0, h0 / 2, 0, m1)])


def quadratic_knots(x, y, t, bc_type, bc):
    """Parabolas around each x[k] on [t[k], t[k+1]], C1 at the knots."""
    n = len(x)
    N = 2 * n  # per k: v[k], a[k]
    A, B = [], []

    def val(k, site, der):
        r = [F(0)] * N
        u = site - x[k]
        if der == 0: r[2 * k], r[2 * k + 1] = u, u * u
        if der == 1: r[2 * k], r[2 * k + 1] = F(1), 2 * u
        if der == 2: r[2 * k + 1] = F(2)
        return r, (y[k] if der == 0 else F(0))

    for k in range(1, n):
        for der in (0, 1):
            (r1, c1), (r2, c2) = val(k - 1, t[k], der), val(k, t[k], der)
            A.append([a - b for a, b in zip(r1, r2)]); B.append(c2 - c1)
    left = {0x02: (2, F(0)), 0x0C: (1, None), 0x24: (1, None), 0x18: (2, None), 0x30: (2, None)}
    right = {0x02: (2, F(0)), 0x0C: (1, None), 0x24: (2, None), 0x18: (1, None), 0x30: (2, None)}
    for (k, side, tab) in ((0, 0, left), (n - 1, 1, right)):
        der, v = tab[bc_type]
        r, c = val(k, x[k], der)
        A.append(r); B.append((bc[side] if v is None else v) - c)
    sol = solve(A, B)
    out = []
    for k in range(n):
        out += [y[k], sol[2 * k], sol[2 * k + 1]]
    return out


def fmt(v):
    return repr(float(v))


def line(name, ctor, bc_type, stype, x, y, bc, ic, coef):
    def field(vals):
        return ' '.join(fmt(v) for v in vals) if vals else '-'
    return ' | '.join([name, ctor, hex(bc_type), str(stype), field(x), field(y), field(bc),
                       field(ic), field(coef)])


def main(out):
    X5 = [F(0), F(1), F(5, 2), F(3), F(9, 2)]
    Y5 = [F(1), F(3), F(2), F(-1), F(1, 2)]
    lines = []
    for bct, bc in ((0x01, []), (0x02, []), (0x0C, [F(1, 2), F(-2)]), (0x24, [F(1), F(3)]),
                    (0x18, [F(-1), F(1, 4)]), (0x30, [F(2), F(-3, 2)])):
        lines.append(line('natural5_%x' % bct, 'natural', bct, 0, X5, Y5, bc, [],
                          cubic_natural(X5, Y5, bct, bc)))
    Yp = [F(1), F(3), F(2), F(-1), F(1)]
    # Periodic without bc values: stype 2, as a null bc with stype 0 is refused.
    lines.append(line('natural5_periodic', 'natural', 0x40, 2, X5, Yp, [], [],
                      cubic_natural(X5, Yp, 0x40, [])))
    X3, Y3 = [F(0), F(1), F(3)], [F(0), F(1), F(-2)]
    lines.append(line('natural3_nak', 'natural', 0x01, 0, X3, Y3, [], [], cubic_nak3(X3, Y3)))
    lines.append(line('natural3_free', 'natural', 0x02, 0, X3, Y3, [], [],
                      cubic_natural(X3, Y3, 0x02, [])))
    X6 = [F(0), F(1, 2), F(2), F(3), F(7, 2), F(5)]
    Y6 = [F(0), F(1), F(1), F(3), F(-1), F(2)]
    lines.append(line('akima6_first', 'akima', 0x0C, 0, X6, Y6, [F(1), F(-1)], [],
                      akima_clamped(X6, Y6, [F(1), F(-1)])))
    X4, Y4 = [F(0), F(1), F(3), F(4)], [F(1), F(2), F(0), F(1)]
    lines.append(line('quadratic4_mid', 'quadratic', 0x80, 0, X4, Y4, [F(7, 4)], [],
                      quadratic_midpoint(X4, Y4, F(7, 4))))
    T4 = [F(0), F(1, 4), F(5, 2), F(15, 4), F(4)]  # no knot at a midpoint
    for bct, bc in ((0x02, []), (0x0C, [F(1), F(-1)]), (0x24, [F(1), F(2)]),
                    (0x18, [F(-1), F(1, 2)]), (0x30, [F(1, 2), F(-1)])):
        lines.append(line('quadratic4_knots_%x' % bct, 'quadratic', bct, 1, X4, Y4, bc, T4,
                          quadratic_knots(X4, Y4, T4, bct, bc)))
    with open(out, 'w') as f:
        f.write('# Exact rational solutions of the defining conditions of each spline '
                '(tools/gen_datafit_kat.py, Python fractions), rounded once to double.\n')
        for l in lines:
            f.write(l + '\n')


if __name__ == '__main__':
    main(sys.argv[1] if len(sys.argv) > 1 else 'tests/data/datafit/known_answers.txt')
