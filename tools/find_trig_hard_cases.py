#!/usr/bin/env python3
"""Find the floating-point numbers closest to multiples of pi/2.

For each binade [2^e, 2^(e+1)) of a format with p significant bits, the
distance from k pi/2 to the nearest number of the binade is ulp ||k g||,
g = (pi/2) / ulp, ||.|| the distance to the nearest integer. The small
values of ||k g|| come from the continued fraction of g: with convergent
denominators q_i, the candidates are k = c q_i + d q_(i-1), d in {-1, 0, 1},
c at the ends of the binade's range of k and where c delta_i + d delta_(i-1)
(delta_i = q_i g - p_i) changes sign. Every candidate's distance is then
computed exactly (mpmath at 4000 bits) and the closest are kept.

Writes the list for single (p = 24) and double (p = 53), closest first:
  <format> <x as a hex float> <log2 of |x - k pi/2|>

Usage: find_trig_hard_cases.py OUT.txt [count]
"""
import sys

import mpmath

mpmath.mp.prec = 4000
HALF_PI = mpmath.pi / 2


def convergents(g, qmax):
    a = int(mpmath.floor(g))
    x = g - a
    pp, p, qp, q = 1, a, 0, 1
    out = [(p, q)]
    while q <= qmax and x != 0:
        x = 1 / x
        a = int(mpmath.floor(x))
        x -= a
        pp, p = p, a * p + pp
        qp, q = q, a * q + qp
        out.append((p, q))
    return out


def binade(e, prec):
    """Candidates (distance, mantissa, exponent of the ulp) in [2^e, 2^(e+1))."""
    ulp_e = e - prec + 1
    g = HALF_PI * mpmath.mpf(2) ** (-ulp_e)
    klo = int(mpmath.ceil(mpmath.mpf(2) ** (prec - 1) / g))
    khi = int(mpmath.floor(mpmath.mpf(2) ** prec / g))
    if khi < max(klo, 1):
        return []
    conv = convergents(g, khi)

    def delta(k):
        v = k * g
        return v - mpmath.nint(v)

    ks = set()
    for i in range(1, len(conv)):
        qi, qm = conv[i][1], conv[i - 1][1]
        di, dm = delta(qi), delta(qm)
        for d in (-1, 0, 1):
            clo = -(-(klo - d * qm) // qi)
            chi = (khi - d * qm) // qi
            if chi < clo:
                continue
            cs = {clo, clo + 1, chi, chi - 1}
            if di != 0:
                c0 = int(mpmath.nint(-d * dm / di))
                cs |= {c0 - 1, c0, c0 + 1}
            ks |= {c * qi + d * qm for c in cs if clo <= c <= chi}
    out = []
    for k in ks:
        if not (klo <= k <= khi) or k <= 0:
            continue
        v = k * g
        m = int(mpmath.nint(v))
        if 2 ** (prec - 1) <= m < 2 ** prec:
            out.append((abs(v - m) * mpmath.mpf(2) ** ulp_e, m, ulp_e))
    return out


def main():
    path = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 24
    lines = ["# The numbers closest to multiples of pi/2, per format, closest first:",
             "# format, x, log2 |x - k pi/2|. Made by tools/find_trig_hard_cases.py",
             "# (continued fractions of (pi/2)/ulp per binade, distances checked at",
             "# 4000 bits)."]
    for name, prec, emax in (("s", 24, 127), ("d", 53, 1023)):
        cands = []
        for e in range(0, emax + 1):
            cands += binade(e, prec)
        cands.sort()
        for dist, m, ue in cands[:count]:
            x = float(mpmath.ldexp(m, ue)) if name == "d" else mpmath.ldexp(m, ue)
            lines.append(f"{name} {float(x).hex()} {float(mpmath.log(dist, 2)):.2f}")
    open(path, "w").write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
