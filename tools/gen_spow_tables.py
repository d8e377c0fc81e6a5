#!/usr/bin/env python3
"""Tables and coefficients of the single-precision pow step
(vector/power/spow_tables.h). Run without arguments: writes the header to
stdout and the error figures to stderr.

The step, all in double:
  x = 2^k z, z in [0x1.66p-1, 0x1.66p0) (bits of x less those of
  0x1.66p-1: k is the exponent field, i the next 4 bits), row i of 16 gives
  invc (1/c rounded to 28 bits, so z invc is exact; 1 for the row that
  holds 1) and logc = -16 log2(invc) rounded to double; r = z invc - 1
  exactly, |r| <= H = 0.0297, and
    16 log2 x = (16 k + logc) + r Q(r),
  Q of degree 5 fitted by the Remez exchange (tools/fit_minimax.py) to
  16 log2(1 + r) / r on [-H, H] (the factor 16 is a power of two: the
  step's products are those of log2 x, scaled exactly).
  t = y log2 x; 16 t = m + u with m an integer, |u| <= 1/2;
    2^t = 2^(m / 16) (1 + u P(u)),
  P of degree 3 fitted to (2^(u / 16) - 1) / u on [-1/2, 1/2] (the
  cheaper Powx tiers: Q of degree 4 (LA) or 3 (EP), P of degree 2); 2^(j / 16)
  for j = m mod 16 comes from a table of 16 rows whose entries have j 2^48
  subtracted from their bits, so that adding m 2^48 to the bits of the
  entry gives 2^(m / 16) whatever m's sign.
"""
import sys
import struct
from decimal import Decimal, getcontext
from fractions import Fraction

import mpmath as mp

sys.path.insert(0, __import__("os").path.dirname(__file__))
import fit_minimax as fm  # noqa: E402
from gen_explog_tables import round_bits  # noqa: E402

getcontext().prec = 60
mp.mp.dps = 60

OFF = 0x3F330000  # bits of 0x1.66p-1 as a float
H = Decimal("0.0297")


def f32(bits):
    return Fraction(struct.unpack("<f", struct.pack("<I", bits))[0])


def dbits(v):
    return struct.unpack("<Q", struct.pack("<d", v))[0]


def dval(b):
    return struct.unpack("<d", struct.pack("<Q", b & 0xFFFFFFFFFFFFFFFF))[0]


def log_rows():
    rows, rmax = [], Fraction(0)
    for i in range(16):
        a = f32(OFF + (i << 19))
        b = f32(OFF + ((i + 1) << 19))
        if a <= 1 < b:
            invc = Fraction(1)
        else:
            invc = round_bits(2 / (a + b), 28)
        rmax = max(rmax, abs(a * invc - 1), abs(b * invc - 1))
        logc = -16 * mp.log(mp.mpf(invc.numerator) / invc.denominator, 2)
        rows.append((float(invc), float(logc)))
        assert Fraction(float(invc)) == invc
    return rows, rmax


def exp_rows():
    rows = []
    for j in range(16):
        v = float(mp.power(2, mp.mpf(j) / 16))
        rows.append(dval(dbits(v) - (j << 48)))
    return rows


def q_log(r):
    r = Decimal(r)
    if abs(r) < Decimal("1e-30"):
        return 16 / Decimal(2).ln()
    return 16 * (1 + r).ln() / Decimal(2).ln() / r


def p_exp(u):
    u = Decimal(u)
    a = Decimal(2).ln() / 16
    if abs(u) < Decimal("1e-30"):
        return a
    return ((u * a).exp() - 1) / u


def main():
    rows, rmax = log_rows()
    assert rmax <= Fraction(str(H)), float(rmax)
    lg = lambda e: float(e.ln() / Decimal(2).ln())  # noqa: E731
    two = Decimal(2)

    def fit_q(deg):
        c = [float(v) for v in fm.remez(q_log, -H, H, deg)]
        # |r Q(r) - 16 log2(1 + r)| <= |r| e_q, and 16 log2(1 + r) >= 16 |r| / (ln 2 (1 + H)).
        e = fm.max_error(q_log, [Decimal(v) for v in c], -H, H, lambda r: 1)
        return c, e / 16 * two.ln() * (1 + H)

    def fit_p(deg):
        c = [float(v) for v in fm.remez(p_exp, Decimal(-0.5), Decimal(0.5), deg)]
        e = fm.max_error(p_exp, [Decimal(v) for v in c], Decimal(-0.5), Decimal(0.5), lambda u: u)
        return c, e / two ** (Decimal(-1) / 32)

    # HA: Q of degree 5, P of degree 3; the cheaper Powx tiers: LA Q 4, P 2;
    # EP Q 3, P 2.
    qfits = {d: fit_q(d) for d in (5, 4, 3)}
    pfits = {d: fit_p(d) for d in (3, 2)}
    print(f"max |r| {float(rmax):.5f}; " + ", ".join(f"Q{d} 2^{lg(e):.1f}" for d, (_, e) in qfits.items()) +
          "; " + ", ".join(f"P{d} 2^{lg(e):.1f}" for d, (_, e) in pfits.items()), file=sys.stderr)

    out = []
    out.append("// Made by tools/gen_spow_tables.py (do not edit): the tables and")
    out.append("// coefficients of the single-precision pow step; the script's notes say")
    out.append("// how each is fitted.")
    out.append("#pragma once")
    out.append("")
    out.append("namespace orv::power {")
    out.append("")
    out.append(f"// {{1/c rounded to 28 bits, -16 log2(1/c)}}; x = 2^k z, row i = bits 19..22 of")
    out.append(f"// bits(x) - 0x{OFF:08X}; |z/c - 1| <= {float(rmax):.5f}.")
    out.append("alignas(64) inline constexpr double kSpowLog[16][2] = {")
    for a, b in rows:
        out.append(f"    {{{a.hex()}, {b.hex()}}},")
    out.append("};")
    out.append("")
    out.append("// 2^(j/16) with j 2^48 subtracted from its bits.")
    out.append("alignas(64) inline constexpr double kSpowExp2[16] = {")
    for a in rows_e:
        out.append(f"    {a.hex()},")
    out.append("};")
    out.append("")
    for d, (c, e) in qfits.items():
        out.append(f"// 16 log2(1 + r) = r Q(r), |r| <= {H}, Q of degree {d} (Remez on 16 log2(1 + r) / r);")
        out.append(f"// relative error of the rounded polynomial 2^{lg(e):.1f}; highest degree first.")
        out.append(f"inline constexpr double kSpowQ{d}[{d + 1}] = {{" + ", ".join(v.hex() for v in reversed(c)) + "};")
    for d, (c, e) in pfits.items():
        out.append(f"// 2^(u/16) = 1 + u P(u), |u| <= 1/2, P of degree {d} (Remez on (2^(u/16) - 1) / u);")
        out.append(f"// relative error of the rounded polynomial 2^{lg(e):.1f}; highest degree first.")
        out.append(f"inline constexpr double kSpowP{d}[{d + 1}] = {{" + ", ".join(v.hex() for v in reversed(c)) + "};")
    out.append("")
    out.append("}  // namespace orv::power")
    print("\n".join(out))


rows_e = exp_rows()

if __name__ == "__main__":
    main()
