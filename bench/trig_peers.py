#!/usr/bin/env python3
"""numpy's sin, cos and tan ufuncs on the inputs of bench/bench_trig.cpp
(uniform on [-100, 100]), float32 and float64, n = 1024 and 10^5: CPU time
per call (time.process_time over repeated calls), printed as
<function>/numpy/<n> <M elements per second>, one line each, for
tools/bench_trig_table.py.

Usage: /usr/bin/python3 bench/trig_peers.py [repetitions]
"""
import sys
import time

import numpy as np


def rate(f, a, out):
    calls = max(1, int(2e6 // a.size))
    best = 0.0
    for _ in range(int(sys.argv[1]) if len(sys.argv) > 1 else 3):
        t0 = time.process_time()
        for _ in range(calls):
            f(a, out=out)
        dt = time.process_time() - t0
        best = max(best, calls * a.size / dt / 1e6)
    return best


def main():
    g = np.random.default_rng(42)
    for name, f in (("Sin", np.sin), ("Cos", np.cos), ("Tan", np.tan)):
        for t, dt in (("s", np.float32), ("d", np.float64)):
            for n in (1024, 100000):
                a = g.uniform(-100, 100, n).astype(dt)
                out = np.empty_like(a)
                print(f"{t}{name}/numpy/{n} {rate(f, a, out):.1f}")


if __name__ == "__main__":
    main()
