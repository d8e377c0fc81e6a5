#!/usr/bin/python3
"""numpy's ufuncs for the inverse trigonometric and hyperbolic functions, at
n = 1024 and 10^5, float32 and float64, into a preallocated output; the same
input ranges as bench/bench_atrig.cpp. Prints ns per element, the best of
7 repeats of a timed loop (CPU time, process_time)."""
import time

import numpy as np

FUNCS = [
    ("Atan", np.arctan, -10, 10), ("Asin", np.arcsin, -1, 1), ("Acos", np.arccos, -1, 1),
    ("Sinh", np.sinh, -20, 20), ("Cosh", np.cosh, -20, 20), ("Tanh", np.tanh, -5, 5),
    ("Asinh", np.arcsinh, -100, 100), ("Acosh", np.arccosh, 1, 100),
    ("Atanh", np.arctanh, -0.99, 0.99), ("Atan2", np.arctan2, -10, 10),
]


def bench(f, args, out, n):
    reps = max(1, int(2e6 // n))
    best = float("inf")
    for _ in range(7):
        t0 = time.process_time()
        for _ in range(reps):
            f(*args, out=out)
        best = min(best, (time.process_time() - t0) / (reps * n))
    return best * 1e9


def main():
    rng = np.random.default_rng(42)
    print(f"numpy {np.__version__}")
    for name, f, lo, hi in FUNCS:
        for t, dt in (("s", np.float32), ("d", np.float64)):
            for n in (1024, 100000):
                a = rng.uniform(lo, hi, n).astype(dt)
                args = (a, rng.uniform(lo, hi, n).astype(dt)) if name == "Atan2" else (a,)
                out = np.empty(n, dt)
                print(f"{t}{name}/numpy/{n} {bench(f, args, out, n):.3f} ns/elem")


if __name__ == "__main__":
    main()
