#!/usr/bin/env python3
"""scipy's side of bench_datafit_eval: the same natural cubic spline of 10^5
breakpoints, 10^6 random and 10^6 sorted sites, value only and with two
derivatives, and 10^5 limit pairs spanning up to about 100 cells. The data are
drawn the same way, not bit for bit (numpy's generator). Times are CPU seconds
(time.process_time), best of the repetitions, printed in milliseconds.

  "warm":  CubicSpline built beforehand, evaluated (PPoly.__call__).
  "fresh": CubicSpline(x, y, bc_type='natural') built and evaluated once.
  Integration: PPoly.antiderivative() once, then F(hi) - F(lo) over all pairs
  (the vectorised way; PPoly.integrate takes one pair a call).

  bench_datafit_eval.py [repetitions]
"""
import sys
import time

import numpy as np
from scipy.interpolate import CubicSpline

NX, NSITES, NPAIRS = 100_000, 1_000_000, 100_000


def best(fn, reps):
    t = []
    for _ in range(reps):
        t0 = time.process_time()
        fn()
        t.append(time.process_time() - t0)
    return min(t) * 1e3


def main(reps):
    g = np.random.default_rng(42)
    x = np.concatenate(([0.0], np.cumsum(0.5 + g.random(NX - 1))))
    y = np.sin(0.01 * x) + 0.1 * g.random(NX)
    rnd = g.uniform(x[0], x[-1], NSITES)
    srt = np.sort(rnd)
    span = (x[-1] - x[0]) / 1000.0
    lo = g.uniform(x[0], x[-1] - span, NPAIRS)
    hi = lo + span * g.random(NPAIRS)
    cs = CubicSpline(x, y, bc_type="natural")

    def ev(spl, s, nd):
        if nd == 1:
            return spl(s)
        return spl(s), spl(s, 1), spl(s, 2)

    for name, s in (("random", rnd), ("sorted", srt)):
        for nd in (1, 3):
            warm = best(lambda: ev(cs, s, nd), reps)
            fresh = best(lambda: ev(CubicSpline(x, y, bc_type="natural"), s, nd), reps)
            print(f"scipy_eval {name} nd={nd} warm_ms={warm:.2f} fresh_ms={fresh:.2f}")
    anti = cs.antiderivative()
    warm = best(lambda: anti(hi) - anti(lo), reps)

    def fresh_integ():
        a = CubicSpline(x, y, bc_type="natural").antiderivative()
        return a(hi) - a(lo)

    print(f"scipy_integ warm_ms={warm:.2f} fresh_ms={best(fresh_integ, reps):.2f}")


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 5)
