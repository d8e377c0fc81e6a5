"""numpy's ufuncs for the rows of bench_variants.cpp: exp, log, sqrt,
1/sqrt and add in single and double at n = 10^3, 10^5, 10^6, with the same
input ranges. Prints CPU-time rates (million elements per second) of the
best of 3 repeats, as: <function>/numpy/<n> <Melem/s>."""
import time

import numpy as np

CASES = [
    ("dExp", np.float64, -700, 700, lambda a, b, r: np.exp(a, out=r)),
    ("sExp", np.float32, -80, 80, lambda a, b, r: np.exp(a, out=r)),
    ("dLn", np.float64, 1e-3, 1e3, lambda a, b, r: np.log(a, out=r)),
    ("sLn", np.float32, 1e-3, 1e3, lambda a, b, r: np.log(a, out=r)),
    ("dSqrt", np.float64, 1e-3, 1e3, lambda a, b, r: np.sqrt(a, out=r)),
    # 1/sqrt as numpy writes it: two ufuncs, the second in place.
    ("dInvSqrt", np.float64, 1e-3, 1e3, lambda a, b, r: np.divide(1.0, np.sqrt(a, out=r), out=r)),
    ("sInvSqrt", np.float32, 1e-3, 1e3, lambda a, b, r: np.divide(np.float32(1), np.sqrt(a, out=r), out=r)),
    ("dAdd", np.float64, -1e3, 1e3, lambda a, b, r: np.add(a, b, out=r)),
]


def rate(fn, a, b, r, n):
    reps = max(1, int(2e7 // n))
    best = float("inf")
    for _ in range(3):
        t0 = time.process_time()
        for _ in range(reps):
            fn(a, b, r)
        best = min(best, (time.process_time() - t0) / reps)
    return n / best / 1e6


def main():
    rng = np.random.default_rng(42)
    print("numpy", np.__version__)
    for name, ty, lo, hi, fn in CASES:
        for n in (1000, 100000, 1000000):
            a = rng.uniform(lo, hi, n).astype(ty)
            b = rng.uniform(lo, hi, n).astype(ty)
            r = np.empty(n, ty)
            print(f"{name}/numpy/{n} {rate(fn, a, b, r, n):.1f}")


if __name__ == "__main__":
    main()
