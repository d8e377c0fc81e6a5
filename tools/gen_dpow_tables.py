#!/usr/bin/env python3
"""Tables and coefficients of the double-precision pow step
(vector/power/dpow_tables.h). Run without arguments: writes the header to
stdout and the error figures to stderr.

The step (vector/power/dpow_step.h):
  ln x in double-double. x = 2^k z with z in [OFF, 2 OFF) (bits of x less
  OFF: k is the exponent field, i the next 7 bits), row i of 128 gives
  invc (1/c for c the middle of the row, rounded to a multiple of 2^-12;
  exactly 1 for the row that holds 1, whose middle is 1), logc = -ln(invc)
  rounded to a multiple of 2^-43 (so k ln2_hi + logc is exact) and
  logctail, the rest of -ln(invc) rounded to double. z is cut into zhi (its
  bits with the low 32 cleared, 21 significant bits) and zlo = z - zhi;
  rhi = zhi invc - 1 is exact and has at most 26 significant bits, so that
  rhi^2 / 2 is exact too (the script checks both on every row);
  rlo = zlo invc. With r = z invc - 1:
    ln x = k ln2 + logc + logctail + ln(1 + r),
    ln(1 + r) = r - r^2/2 + r^3 Q(r),
  Q of degree 5 fitted by the Remez exchange (tools/fit_minimax.py) to
  (ln(1 + r) - r + r^2/2) / r^3 on [-H, H], H the largest |r| of the rows
  (and of degree 4 for the cheaper LA step).
  exp in double: h = m ln2/128 + r, |r| <= ln2/256 (plus the low part of h),
    exp(h) = 2^(m/128) (1 + tail_j + r + r^2 P(r)),
  P of degree 3 fitted to (e^r - 1 - r) / r^2 on |r| <= ln2/256 (the low
  part of y ln x, up to about 2^-18.5 |y ln x|, carries r to about 0.0043,
  where the fitted polynomial's error grows to 2^-57.4 relative, well
  inside what a 1-ulp result can spend); row j = m mod 128 gives
  tail_j = (2^(j/128) - T_j) / T_j, T_j = 2^(j/128) rounded, and the bits
  of T_j less j 2^45, so that adding m 2^45 to them gives the bits of
  2^(m/128) rounded, whatever the sign of m.
"""
import struct
import sys
from decimal import Decimal, getcontext
from fractions import Fraction

import mpmath as mp

sys.path.insert(0, __import__("os").path.dirname(__file__))
import fit_minimax as fm  # noqa: E402

getcontext().prec = 60
mp.mp.dps = 60

N_LOG = 128
N_EXP = 128
INVC_STEP = 12  # invc is a multiple of 2^-12
ONE = 0x3FF0000000000000
# The row holding 1 has two thirds of its bit patterns below 1 (ulp 2^-53)
# and one third above (ulp 2^-52): its middle is 1, and 75 rows lie below 1
# and 53 above, so that z runs over about [1/sqrt 2, sqrt 2).
OFF = ONE - (74 << 45) - ((2 << 45) + 1) // 3
OFF &= ~0xFFFFFFFF  # keep the low word of the offset clear


def dval(b):
    return struct.unpack("<d", struct.pack("<Q", b & 0xFFFFFFFFFFFFFFFF))[0]


def dbits(v):
    return struct.unpack("<Q", struct.pack("<d", v))[0]


def mpf(q):
    return mp.mpf(q.numerator) / q.denominator



def round_to(v, step_log2):
    """v (mpf) rounded to the nearest multiple of 2^-step_log2, as a Fraction."""
    s = mp.mpf(2) ** step_log2
    return Fraction(int(mp.nint(v * s)), 2 ** step_log2)


def log_rows():
    rows, rmax = [], Fraction(0)
    for i in range(N_LOG):
        a_bits, b_bits = OFF + (i << 45), OFF + ((i + 1) << 45)
        a, b = Fraction(dval(a_bits)), Fraction(dval(b_bits))
        if a <= 1 < b:
            invc = Fraction(1)
        else:
            invc = Fraction(round(2 / (a + b) * 2 ** INVC_STEP), 2 ** INVC_STEP)
        # |r| over the row, and the exactness of rhi and of rhi^2 / 2.
        last = Fraction(dval(b_bits - 1))
        rmax = max(rmax, abs(a * invc - 1), abs(last * invc - 1))
        zh_lo = Fraction(dval(a_bits & ~0xFFFFFFFF))
        for zh in (zh_lo, Fraction(dval((b_bits - 1) & ~0xFFFFFFFF))):
            gz = Fraction(1, 2 ** 21) if zh < 1 else Fraction(1, 2 ** 20)
            assert (zh / gz).denominator == 1
            rhi = zh * invc - 1
            assert Fraction(float(zh * invc)) == zh * invc and Fraction(float(rhi)) == rhi
            assert abs(rhi) / (gz / 2 ** INVC_STEP) < 2 ** 26, (i, float(rhi))
        lninv = -mp.log(mpf(invc))
        logc = round_to(lninv, 43)
        tail = float(lninv - mpf(logc))
        assert Fraction(float(logc)) == logc and Fraction(float(invc)) == invc
        rows.append((float(invc), float(logc), tail))
    return rows, rmax


def exp_rows():
    rows = []
    for j in range(N_EXP):
        v = mp.power(2, mp.mpf(j) / N_EXP)
        t = float(v)
        tail = float((v - t) / t)
        rows.append((tail, dval(dbits(t) - (j << 45))))
    return rows


def f_log(r):
    """(ln(1 + r) - r + r^2/2) / r^3."""
    r = Decimal(r)
    if abs(r) < Decimal("1e-12"):
        return Decimal(1) / 3 - r / 4 + r * r / 5
    return ((1 + r).ln() - r + r * r / 2) / (r * r * r)


def f_exp(r):
    """(e^r - 1 - r) / r^2."""
    r = Decimal(r)
    if abs(r) < Decimal("1e-12"):
        return Decimal(1) / 2 + r / 6 + r * r / 24
    return (r.exp() - 1 - r) / (r * r)


def main():
    rows, rmax = log_rows()
    hl = Decimal(float(rmax)) * (1 + Decimal(2) ** -20)
    cl = [float(v) for v in fm.remez(f_log, -hl, hl, 5)]
    # r^3 (Q(r) - f(r)) against ln(1 + r): weight r^3 / ln(1 + r).
    el = fm.max_error(f_log, [Decimal(v) for v in cl], -hl, hl,
                      lambda r: abs(r ** 3 / (1 + r).ln()) if r != 0 else Decimal(0))
    cl4 = [float(v) for v in fm.remez(f_log, -hl, hl, 4)]  # the LA tier's
    el4 = fm.max_error(f_log, [Decimal(v) for v in cl4], -hl, hl,
                       lambda r: abs(r ** 3 / (1 + r).ln()) if r != 0 else Decimal(0))
    ln2 = mp.log(2)
    he = Decimal(float(ln2 / 256)) * (1 + Decimal(2) ** -7)
    ce = [float(v) for v in fm.remez(f_exp, -he, he, 3)]
    ee = fm.max_error(f_exp, [Decimal(v) for v in ce], -he, he, lambda r: r * r / r.exp())
    lg = lambda e: float(e.ln() / Decimal(2).ln())  # noqa: E731
    print(f"OFF 0x{OFF:016X}; max |r| {float(rmax):.6f}; log poly 2^{lg(el):.1f} (LA 2^{lg(el4):.1f}), "
          f"exp poly 2^{lg(ee):.1f} "
          "relative", file=sys.stderr)

    ln2hi = round_to(ln2, 43)
    ln2lo = float(ln2 - mpf(ln2hi))
    l2n = round_to(ln2 / N_EXP, 42)
    assert Fraction(float(l2n)) == l2n and l2n.numerator < 2 ** 35
    l2nlo = float(ln2 / N_EXP - mpf(l2n))

    o = []
    o.append("// Made by tools/gen_dpow_tables.py (do not edit): the tables and")
    o.append("// coefficients of the double-precision pow step; the script's notes say")
    o.append("// how each is chosen and fitted.")
    o.append("#pragma once")
    o.append("")
    o.append("#include <cstdint>")
    o.append("")
    o.append("namespace orv::power {")
    o.append("")
    o.append(f"inline constexpr uint64_t kDpowOff = 0x{OFF:016X}ull;")
    o.append(f"inline constexpr double kDpowLn2Hi = {float(ln2hi).hex()};  // a multiple of 2^-43")
    o.append(f"inline constexpr double kDpowLn2Lo = {ln2lo.hex()};")
    o.append(f"inline constexpr double kDpowInvLn2N = {float(N_EXP / ln2).hex()};  // 128 / ln 2")
    o.append(f"inline constexpr double kDpowNegLn2HiN = {(-float(l2n)).hex()};  // 35 bits")
    o.append(f"inline constexpr double kDpowNegLn2LoN = {(-l2nlo).hex()};")
    o.append("")
    o.append(f"// ln(1 + r) = r - r^2/2 + r^3 Q(r), |r| <= {float(hl):.6f}; relative error of the")
    o.append(f"// rounded polynomial 2^{lg(el):.1f}; highest degree first.")
    o.append("inline constexpr double kDpowLogQ[6] = {" + ", ".join(v.hex() for v in reversed(cl)) + "};")
    o.append(f"// The same with Q of degree 4, for the LA tier: 2^{lg(el4):.1f}.")
    o.append("inline constexpr double kDpowLogQ4[5] = {" + ", ".join(v.hex() for v in reversed(cl4)) + "};")
    o.append(f"// e^r = 1 + r + r^2 P(r), |r| <= {float(he):.6f}; relative error of the rounded")
    o.append(f"// polynomial 2^{lg(ee):.1f}; highest degree first.")
    o.append("inline constexpr double kDpowExpP[4] = {" + ", ".join(v.hex() for v in reversed(ce)) + "};")
    o.append("")
    o.append(f"// {{invc, logc, logctail}}; row i = bits 45..51 of bits(x) - kDpowOff; |z invc - 1| <= {float(rmax):.6f}.")
    o.append("alignas(64) inline constexpr double kDpowLog[128][3] = {")
    for a, b, c in rows:
        o.append(f"    {{{a.hex()}, {b.hex()}, {c.hex()}}},")
    o.append("};")
    o.append("")
    o.append("// {(2^(j/128) - T_j) / T_j, T_j with j 2^45 subtracted from its bits}.")
    o.append("alignas(64) inline constexpr double kDpowExp[128][2] = {")
    for a, b in exp_rows():
        o.append(f"    {{{a.hex()}, {b.hex()}}},")
    o.append("};")
    o.append("")
    o.append("}  // namespace orv::power")
    print("\n".join(o))


if __name__ == "__main__":
    main()
