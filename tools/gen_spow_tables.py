#!/usr/bin/env python3
"""Tables and coefficients of the single-precision pow step
(vector/power/spow_tables.h). Run without arguments: writes the header to
stdout and the error figures to stderr.

The step, all in double, with S = 32:
  x = 2^k z, z in [0x1.65p-1, 0x1.65p0) (bits of x less OFF, the bits of
  0x1.65p-1: k is the exponent field, i the next 7 bits), row i of 128
  gives invc (1/c rounded to 24 bits, so that it is a float and z invc is
  exact; 1 for the row that holds 1, which is centred on it) and
  logc = -S log2(invc) rounded to 48 bits (so that it is the exact sum of
  two floats: the AVX-512 lookup reads float columns); r = z invc - 1
  exactly, |r| <= H, and
    S log2 x = (S k + logc) + r Q(r),
  Q of degree 3 fitted by the Remez exchange (tools/fit_minimax.py) to
  S log2(1 + r) / r on [-H, H] (the factor S is a power of two: the
  step's products are those of log2 x, scaled exactly).
  t = y log2 x; S t = m + u with m an integer, |u| <= 1/2;
    2^t = 2^(m / S) (1 + u P(u)),
  P of degree 2 fitted to (2^(u / S) - 1) / u on [-1/2, 1/2] (the
  cheaper Powx tiers: LA Q 3 and P 1, EP Q 2 and P 1); 2^(j / S) for
  j = m mod S comes from a table of S rows whose entries have j 2^47
  subtracted from their bits, so that adding m 2^47 to the bits of the
  entry gives 2^(m / S) whatever m's sign.
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

ROW_BITS = 7  # 128 log rows
EXP_BITS = 5  # 32 exp rows
S = 1 << EXP_BITS
SHIFT = 23 - ROW_BITS  # the row is bits SHIFT .. 22 of bits(x) - OFF
# 0x1.66p-1 less half a row, so that the row holding 1 is centred on it
OFF = 0x3F330000 - (1 << (SHIFT - 1))


def f32(bits):
    return Fraction(struct.unpack("<f", struct.pack("<I", bits))[0])


def dbits(v):
    return struct.unpack("<Q", struct.pack("<d", v))[0]


def dval(b):
    return struct.unpack("<d", struct.pack("<Q", b & 0xFFFFFFFFFFFFFFFF))[0]


def log_rows():
    rows, rmax = [], Fraction(0)
    for i in range(1 << ROW_BITS):
        a = f32(OFF + (i << SHIFT))
        b = f32(OFF + ((i + 1) << SHIFT))
        if a <= 1 < b:
            invc = Fraction(1)
        else:
            invc = round_bits(2 / (a + b), 24)
        rmax = max(rmax, abs(a * invc - 1), abs(b * invc - 1))
        logc = -S * mp.log(mp.mpf(invc.numerator) / invc.denominator, 2)
        logc = round_bits(Fraction(mp.nstr(logc, 50)), 48)
        rows.append((float(invc), float(logc)))
        assert Fraction(float(invc)) == invc and Fraction(float(logc)) == logc
        hi = Fraction(struct.unpack("<f", struct.pack("<f", float(logc)))[0])
        assert Fraction(struct.unpack("<f", struct.pack("<f", float(logc - hi)))[0]) == logc - hi
    return rows, rmax


def exp_rows():
    rows = []
    for j in range(S):
        v = float(mp.power(2, mp.mpf(j) / S))
        rows.append(dval(dbits(v) - (j << (52 - EXP_BITS))))
    return rows


def q_log(r):
    r = Decimal(r)
    if abs(r) < Decimal("1e-30"):
        return S / Decimal(2).ln()
    return S * (1 + r).ln() / Decimal(2).ln() / r


def p_exp(u):
    u = Decimal(u)
    a = Decimal(2).ln() / S
    if abs(u) < Decimal("1e-30"):
        return a
    return ((u * a).exp() - 1) / u


def main():
    rows, rmax = log_rows()
    H = Decimal(float(rmax)) * (1 + Decimal("1e-6"))
    lg = lambda e: float(e.ln() / Decimal(2).ln())  # noqa: E731
    two = Decimal(2)

    def fit_q(deg):
        c = [float(v) for v in fm.remez(q_log, -H, H, deg)]
        # |r Q(r) - S log2(1 + r)| <= |r| e_q, and S log2(1 + r) >= S |r| / (ln 2 (1 + H)).
        e = fm.max_error(q_log, [Decimal(v) for v in c], -H, H, lambda r: 1)
        return c, e / S * two.ln() * (1 + H)

    def fit_p(deg):
        c = [float(v) for v in fm.remez(p_exp, Decimal(-0.5), Decimal(0.5), deg)]
        e = fm.max_error(p_exp, [Decimal(v) for v in c], Decimal(-0.5), Decimal(0.5), lambda u: u)
        return c, e / two ** (Decimal(-1) / (2 * S))

    # HA: Q of degree 3, P of degree 2; the cheaper Powx tiers: LA Q 3, P 1;
    # EP Q 2, P 1.
    qfits = {d: fit_q(d) for d in (3, 2)}
    pfits = {d: fit_p(d) for d in (2, 1)}
    print(f"max |r| {float(rmax):.6f}; " + ", ".join(f"Q{d} 2^{lg(e):.1f}" for d, (_, e) in qfits.items()) +
          "; " + ", ".join(f"P{d} 2^{lg(e):.1f}" for d, (_, e) in pfits.items()), file=sys.stderr)

    out = []
    out.append("// Made by tools/gen_spow_tables.py (do not edit): the tables and")
    out.append("// coefficients of the single-precision pow step; the script's notes say")
    out.append("// how each is fitted.")
    out.append("#pragma once")
    out.append("")
    out.append("namespace orv::power {")
    out.append("")
    out.append(f"inline constexpr unsigned kSpowOff = 0x{OFF:08X};  // bits of x less these: exponent k, row")
    out.append(f"inline constexpr int kSpowRowShift = {SHIFT};  // the row: bits {SHIFT}..22")
    out.append(f"inline constexpr int kSpowScale = {S};  // S: the step works with S log2 x")
    out.append("")
    out.append(f"// {{1/c rounded to 24 bits, -{S} log2(1/c) rounded to 48 bits}}; x = 2^k z,")
    out.append(f"// |z/c - 1| <= {float(rmax):.6f}.")
    out.append(f"alignas(64) inline constexpr double kSpowLog[{1 << ROW_BITS}][2] = {{")
    for a, b in rows:
        out.append(f"    {{{a.hex()}, {b.hex()}}},")
    out.append("};")
    out.append("")
    out.append(f"// 2^(j/{S}) with j 2^{52 - EXP_BITS} subtracted from its bits.")
    out.append(f"alignas(64) inline constexpr double kSpowExp2[{S}] = {{")
    for a in rows_e:
        out.append(f"    {a.hex()},")
    out.append("};")
    out.append("")
    for d, (c, e) in qfits.items():
        out.append(f"// {S} log2(1 + r) = r Q(r), |r| <= {float(rmax):.6f}, Q of degree {d} (Remez on {S} log2(1 + r) / r);")
        out.append(f"// relative error of the rounded polynomial 2^{lg(e):.1f}; highest degree first.")
        out.append(f"inline constexpr double kSpowQ{d}[{d + 1}] = {{" + ", ".join(v.hex() for v in reversed(c)) + "};")
    for d, (c, e) in pfits.items():
        out.append(f"// 2^(u/{S}) = 1 + u P(u), |u| <= 1/2, P of degree {d} (Remez on (2^(u/{S}) - 1) / u);")
        out.append(f"// relative error of the rounded polynomial 2^{lg(e):.1f}; highest degree first.")
        out.append(f"inline constexpr double kSpowP{d}[{d + 1}] = {{" + ", ".join(v.hex() for v in reversed(c)) + "};")
    out.append("")
    out.append("}  // namespace orv::power")
    print("\n".join(out))


rows_e = exp_rows()

if __name__ == "__main__":
    main()
