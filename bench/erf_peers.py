#!/usr/bin/python3
"""Times scipy.special's erf, erfc, erfinv, ndtr, ndtri and erfcx ufuncs on the
inputs bench_erf uses (uniform on the same ranges, n = 1024 and 10^5), by
process CPU time, and prints items per nanosecond; with the JSON output of
bench_erf as argument, prints the ratios (ours over scipy, for each of our
three libraries) as a markdown table.

usage: bench/erf_peers.py [bench_erf.json]"""
import json
import sys
import time

import numpy as np
from scipy import special

CASES = [  # (our benchmark name, scipy ufunc, dtype, lo, hi)
    ("dErf", special.erf, np.float64, -5, 5),
    ("sErf", special.erf, np.float32, -4, 4),
    ("dErfc", special.erfc, np.float64, -5, 5),
    ("sErfc", special.erfc, np.float32, -4, 4),
    ("dCdfNorm", special.ndtr, np.float64, -8, 8),
    ("sCdfNorm", special.ndtr, np.float32, -8, 8),
    ("dErfInv", special.erfinv, np.float64, -0.999, 0.999),
    ("sErfInv", special.erfinv, np.float32, -0.999, 0.999),
    ("dCdfNormInv", special.ndtri, np.float64, 1e-6, 1 - 1e-6),
    ("sCdfNormInv", special.ndtri, np.float32, 1e-6, 1 - 1e-6),
    ("dErfcx", special.erfcx, np.float64, -5, 25),
    ("sErfcx", special.erfcx, np.float32, -5, 25),
]
ISAS = ("sse2", "avx2", "avx512")


def median_rate(fn, items, repeats=5, min_time=0.2):
    rates = []
    for _ in range(repeats):
        n, t0 = 0, time.process_time()
        while time.process_time() - t0 < min_time:
            fn()
            n += 1
        rates.append(n * items / ((time.process_time() - t0) * 1e9))
    rates.sort()
    return rates[len(rates) // 2], rates[0], rates[-1]


def main():
    ours = {}
    if len(sys.argv) > 1:
        for b in json.load(open(sys.argv[1]))["benchmarks"]:
            if b.get("aggregate_name", "median") == "median":
                ours[b["run_name"]] = b["items_per_second"] / 1e9
    print("| function | n | scipy items/ns (min-max) | " +
          " | ".join(f"orv {i} / scipy" for i in ISAS) + " |")
    print("|---|---|---|" + "---|" * len(ISAS))
    for name, fn, dt, lo, hi in CASES:
        for n in (1024, 100000):
            a = np.random.default_rng(42).uniform(lo, hi, n).astype(dt)
            out = np.empty_like(a)
            med, mn, mx = median_rate(lambda: fn(a, out=out), n)
            cells = []
            for isa in ISAS:
                o = ours.get(f"{name}/orv_{isa}/{n}")
                cells.append(f"{o / med:.2f}" if o else "-")
            print(f"| {name} | {n} | {med:.3f} ({mn:.3f}-{mx:.3f}) | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
