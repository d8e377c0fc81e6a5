#!/usr/bin/env python3
"""Coefficient tables of the error-function family (vector/erf/erf_tables.h).

Chebyshev interpolation at 50 digits (mpmath.chebyfit), coefficients rounded
to double, each fit's rounded coefficients checked on a dense grid against
mpmath; the degree is the lowest that meets the target. Run without
arguments: writes the header to stdout and the error figures to stderr.

  small: erf(x) = x + x P(x^2) on |x| < 1/2; target |P error| < 2^-56 (the rounding of its constant).
  rows:  erfcx(x) = exp(x^2) erfc(x) on [1/2, 12) in 92 rows of width 1/8,
         erfcx(c + s) = (c0 + c0lo) + s Q(s), |s| <= 1/16, c the row's
         centre; c0 in two doubles, target 2^-58 relative.
  asym:  erfcx(x) = (1 + t H(t)) / (x sqrt(pi)), t = 1/x^2 <= 1/144;
         target 2^-58 relative.
  inverse guesses: erfinv(y) = y P(y^2) on |y| <= 1/2; for q = 1 - |y| in
         (0, 1/2], erfinv = R(s), s = sqrt(-ln q), in pieces of s, each R a
         polynomial in (s - m) / h over the piece. Three targets: full
         (2^-34 relative, refined by one Halley step or rounded to single),
         la (2^-24) and ep (2^-14).
"""
import sys
import mpmath as mp

mp.mp.dps = 50


def erfcx(x):
    x = mp.mpf(x)
    return mp.erfc(x) * mp.exp(x * x)


def horner(c, x):  # c highest first, exact in mpmath: the fit's own error
    p = mp.mpf(0)
    for v in c:
        p = p * x + v
    return p


def fit(f, a, b, target, maxdeg=30, check=None, n_check=600):
    """Lowest degree polynomial (highest first) on [a, b] whose double
    evaluation meets target by check(c, x) -> error."""
    for deg in range(1, maxdeg + 1):
        c, _ = mp.chebyfit(f, [a, b], deg + 1, error=True)
        c = [float(v) for v in c]
        worst = 0.0
        for i in range(n_check + 1):
            x = mp.mpf(a) + (mp.mpf(b) - a) * i / n_check
            worst = max(worst, check(c, x))
        if worst < target:
            return c, worst
    raise SystemExit(f"no fit on [{a}, {b}]: {float(worst):.3g}")


def emit(name, rows, out, per_line=3):
    out.append(f"alignas(16) inline constexpr double {name}[{len(rows)}][{len(rows[0])}] = {{")
    for r in rows:
        out.append("    {" + ", ".join(repr(v) for v in r) + "},")
    out.append("};")


def main():
    out = ["// Made by tools/gen_erf_tables.py (mpmath Chebyshev fits, checked after rounding);",
           "// do not edit by hand. Rows and variables are described in that script.",
           "#pragma once", "", "namespace orv::erfk {", ""]
    log = sys.stderr

    # erf on |x| < 1/2: P(u) = (erf(sqrt u)/sqrt u - 1), u = x^2.
    def p_small(u):
        if u == 0:
            return 2 / mp.sqrt(mp.pi) - 1
        r = mp.sqrt(u)
        return mp.erf(r) / r - 1
    c, e = fit(p_small, 0, 0.25, 2.0 ** -56,
               check=lambda c, u: abs(horner(c, u) - p_small(u)))
    print(f"small: degree {len(c) - 1}, error {float(e):.3g}", file=log)
    out.append(f"inline constexpr double kErfSmall[{len(c)}] = {{" + ", ".join(map(repr, c)) + "};")

    # erfcx rows.
    rows, deg_max = [], 0
    per_row = []
    for j in range(92):
        cen = mp.mpf(0.5) + (j + mp.mpf(0.5)) / 8
        c0 = erfcx(cen)
        c0h = float(c0)
        c0l = float(c0 - c0h)
        q = lambda s, cen=cen, c0=c0: (erfcx(cen + s) - c0) / s if s != 0 else mp.diff(erfcx, cen)
        def chk(cq, s, cen=cen, c0h=c0h, c0l=c0l):
            v = c0h + (c0l + s * horner(cq, s))
            return abs(v - erfcx(cen + s)) / erfcx(cen + s)
        cq, e = fit(q, -1.0 / 16, 1.0 / 16, 2.0 ** -58, check=chk, n_check=120)
        per_row.append((c0h, c0l, cq))
        deg_max = max(deg_max, len(cq))
        print(f"row {j}: Q degree {len(cq) - 1}, error {float(e):.3g}", file=log)
    # One degree for all rows (a vector gather needs a fixed row length):
    # refit each row at the largest degree found.
    for j in range(92):
        cen = mp.mpf(0.5) + (j + mp.mpf(0.5)) / 8
        c0 = erfcx(cen)
        q = lambda s, cen=cen, c0=c0: (erfcx(cen + s) - c0) / s if s != 0 else mp.diff(erfcx, cen)
        cq, _ = mp.chebyfit(q, [-1.0 / 16, 1.0 / 16], deg_max, error=True)
        c0h, c0l, _ = per_row[j]
        rows.append([c0h, c0l] + [float(v) for v in cq])
    print(f"rows: Q degree {deg_max - 1}", file=log)
    emit("kErfcxRows", rows, out)

    # Asymptotic form on x >= 12.
    def h_asym(t):
        if t == 0:
            return mp.mpf(-0.5)
        x = 1 / mp.sqrt(t)
        return (erfcx(x) * x * mp.sqrt(mp.pi) - 1) / t
    c, e = fit(h_asym, 0, 1.0 / 144, 2.0 ** -58,
               check=lambda c, t: abs(t * (horner(c, t) - h_asym(t))))
    print(f"asym: degree {len(c) - 1}, error {float(e):.3g}", file=log)
    out.append(f"inline constexpr double kErfcxAsym[{len(c)}] = {{" + ", ".join(map(repr, c)) + "};")

    # Inverse guesses.
    pieces = [(0.8, 2.0), (2.0, 4.0), (4.0, 8.0), (8.0, 27.5)]
    for tag, target in (("Full", 2.0 ** -34), ("La", 2.0 ** -24), ("Ep", 2.0 ** -14)):
        def pc(u):
            if u == 0:
                return mp.sqrt(mp.pi) / 2
            y = mp.sqrt(u)
            return mp.erfinv(y) / y
        c, e = fit(pc, 0, 0.25, target,
                   check=lambda c, u: abs(horner(c, u) / pc(u) - 1))
        print(f"inv central {tag}: degree {len(c) - 1}, error {float(e):.3g}", file=log)
        out.append(f"inline constexpr double kInvCentral{tag}[{len(c)}] = {{" +
                   ", ".join(map(repr, c)) + "};")
        for k, (a, b) in enumerate(pieces):
            m, h = (a + b) / 2, (b - a) / 2
            def rs(t, m=m, h=h):
                s = m + h * t
                return mp.erfinv(1 - mp.exp(-s * s)) if s < 6 else erfcinv_big(mp.exp(-s * s))
            c, e = fit(rs, -1, 1, target,
                       check=lambda c, t: abs(horner(c, t) / rs(t) - 1), n_check=300)
            print(f"inv tail {tag} [{a}, {b}]: degree {len(c) - 1}, error {float(e):.3g}",
                  file=log)
            out.append(f"inline constexpr double kInvTail{tag}{k}[{len(c)}] = {{" +
                       ", ".join(map(repr, c)) + "};")
    out.append(f"inline constexpr double kInvTailEdge[{len(pieces)}][2] = {{" +
               ", ".join(f"{{{(a + b) / 2!r}, {2 / (b - a)!r}}}" for a, b in pieces) + "};")
    out += ["", "}  // namespace orv::erfk", ""]
    print("\n".join(out))


def erfcinv_big(q):
    """erfc^-1(q) for tiny q by Newton on erfc at 50 digits."""
    x = mp.sqrt(-mp.log(q))
    for _ in range(100):
        f = mp.erfc(x) - q
        dx = f / (2 / mp.sqrt(mp.pi) * mp.exp(-x * x))
        x += dx
        if abs(dx) < x * mp.mpf(10) ** -40:
            break
    return x


if __name__ == "__main__":
    main()
