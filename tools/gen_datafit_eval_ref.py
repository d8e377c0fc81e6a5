#!/usr/bin/env python3
"""Reference values of interpolation and integration from scipy's PPoly, on
fixed random coefficients of orders 2, 3, 4 and 6 over a non-uniform partition:
values and derivatives 0..3 at sites inside, outside and on the breakpoints,
and integrals PPoly.integrate(a, b, extrapolate=True) over pairs reaching past
both ends. Writes tests/data/datafit/ppoly_reference.txt.

  /usr/bin/python3 tools/gen_datafit_eval_ref.py
"""
import os

import numpy as np
from scipy.interpolate import PPoly

OUT = os.path.join(os.path.dirname(__file__), "..", "tests", "data", "datafit", "ppoly_reference.txt")


def main():
    g = np.random.default_rng(2026)
    lines = ["# scipy.interpolate.PPoly (scipy %s) on the coefficients below; made by"
             " tools/gen_datafit_eval_ref.py" % __import__("scipy").__version__]
    nx = 9
    x = np.concatenate(([-1.25], -1.25 + np.cumsum(0.2 + g.random(nx - 1))))
    for order in (2, 3, 4, 6):
        rising = g.uniform(-2, 2, (nx - 1, order))        # cell c, coefficient j of t^j
        pp = PPoly(rising[:, ::-1].T.copy(), x, extrapolate=True)
        lines.append(f"case order {order} nx {nx}")
        lines.append("x " + " ".join(repr(float(v)) for v in x))
        lines.append("c " + " ".join(repr(float(v)) for v in rising.ravel()))
        sites = np.concatenate((x, g.uniform(x[0] - 1, x[-1] + 1, 25), [x[0] - 3, x[-1] + 3]))
        for s in sites:
            vals = [float(pp(s, nu)) for nu in range(4)]
            lines.append("site " + " ".join(repr(v) for v in [float(s)] + vals))
        pairs = [(x[0] - 1.5, x[-1] + 1.0), (x[-1] + 1.0, x[0] - 1.5), (x[2], x[2])]
        pairs += [tuple(g.uniform(x[0] - 1, x[-1] + 1, 2)) for _ in range(20)]
        for a, b in pairs:
            lines.append(f"integral {float(a)!r} {float(b)!r} {float(pp.integrate(a, b, extrapolate=True))!r}")
    open(OUT, "w").write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
