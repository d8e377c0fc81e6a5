#!/usr/bin/env python3
"""Runs bench_dist (ours on four streams, the C++ standard library's
distributions over std::mt19937_64) and times numpy's Generator (PCG64) in the
same job, then prints the figures and the ratios as Markdown tables.

All figures are CPU time (the machine may be shared), best of the
repetitions, with the spread (slowest / best) beside them. numpy is timed
before and after the C++ program, 10^7 draws per call like the C++ side.

numpy is timed in two forms. The calls named by the comparison (g.random(N),
g.exponential(1.0, N), g.normal(0.0, 1.0, N), ...) return a fresh array of
10^7 doubles each time, so their time includes allocating 80 MB and its page
faults. Our benchmark, like the standard library's, writes into one array
allocated before the timing loop. Where numpy has an out= form (random,
standard_exponential, standard_normal), it is also timed into one
preallocated array, the like-for-like figure ("numpy out=" below); the
benchmark's parameters are the standard ones (scale 1, mean 0), so no
scaling pass is added to it.

Usage: dist_peers.py BUILD/bench/bench_dist [REPETITIONS]
"""
import json
import os
import subprocess
import sys
import time

try:
    import numpy as np
except ImportError:  # Debian's numpy belongs to the system interpreter
    if os.path.exists("/usr/bin/python3") and sys.executable != "/usr/bin/python3":
        os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)
    raise

N = 10**7
DISTS = ("uniform", "integers", "exponential", "laplace", "gumbel", "rayleigh", "cauchy", "weibull",
         "normal_bm", "normal_bm2", "normal_icdf", "lognormal", "multivariate_normal")
# Our three Gaussian methods all stand against the peers' one normal.
PEER_NAME = {"normal_bm": "normal", "normal_bm2": "normal", "normal_icdf": "normal"}
MV_DIMEN = 4
STREAMS = ("mcg59", "mrg32k3a", "mt19937", "sfmt19937")


def cpu_times(fn, reps):
    out = []
    for _ in range(reps):
        t = time.process_time()
        fn()
        out.append(time.process_time() - t)
    return out


MV_MEAN = np.arange(MV_DIMEN, dtype=float)
_L = np.array([[2.0 ** -(i - j) if j <= i else 0.0 for j in range(MV_DIMEN)] for i in range(MV_DIMEN)])
MV_COV = _L @ _L.T


def numpy_times(reps):
    g = np.random.Generator(np.random.PCG64(12345))
    calls = {
        "uniform": lambda: g.random(N),
        "integers": lambda: g.integers(0, 1000, N, dtype=np.int32),
        "exponential": lambda: g.exponential(1.0, N),
        "laplace": lambda: g.laplace(0.0, 1.0, N),
        "gumbel": lambda: g.gumbel(0.0, 1.0, N),
        "rayleigh": lambda: g.rayleigh(1.0, N),
        "cauchy": lambda: g.standard_cauchy(N),
        "weibull": lambda: g.weibull(1.5, N),
        "normal": lambda: g.normal(0.0, 1.0, N),
        "lognormal": lambda: g.lognormal(0.0, 1.0, N),
        # 2.5 10^6 vectors of 4, the covariance L L^T of the C++ side's factor.
        "multivariate_normal": lambda: g.multivariate_normal(MV_MEAN, MV_COV, N // MV_DIMEN),
    }
    o = np.empty(N)
    calls_out = {
        "uniform": lambda: g.random(N, out=o),
        "exponential": lambda: g.standard_exponential(N, out=o),
        "normal": lambda: g.standard_normal(N, out=o),
    }
    times = {f"numpy_{k}": cpu_times(f, reps) for k, f in calls.items()}
    times.update({f"numpyout_{k}": cpu_times(f, reps) for k, f in calls_out.items()})
    return times


def main():
    binary = sys.argv[1]
    reps = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    times = numpy_times(reps)
    res = subprocess.run([binary, "--benchmark_format=json", f"--benchmark_repetitions={reps}"],
                         check=True, capture_output=True, text=True)
    for b in json.loads(res.stdout)["benchmarks"]:
        if b.get("run_type") != "iteration":
            continue
        unit = {"ms": 1e-3, "us": 1e-6, "ns": 1e-9}[b["time_unit"]]
        name = b["run_name"].removeprefix("BM_").replace("/", "_")
        times.setdefault(name, []).append(b["cpu_time"] * unit)
    for k, v in numpy_times(reps).items():
        times[k] += v

    best = {k: min(v) for k, v in times.items()}
    spread = {k: max(v) / min(v) for k, v in times.items()}

    print("| draws of 10^7 | numpy PCG64 | numpy PCG64 out= | std::mt19937_64 | "
          + " | ".join(f"orv {s}" for s in STREAMS) + " |")
    print("|---|" + "---|" * (3 + len(STREAMS)))

    def cell(key):
        return f"{best[key] * 1e3:.1f} ms ({spread[key]:.2f})" if key in best else "-"

    def peer(d):
        return PEER_NAME.get(d, d)

    for d in DISTS:
        print(f"| {d} | {cell('numpy_' + peer(d))} | {cell('numpyout_' + peer(d))} | {cell('std_' + peer(d))} | "
              + " | ".join(cell(f"orv_{d}_{s}") for s in STREAMS) + " |")

    print()
    print("numpy: the allocating call; numpyout: the same draws into a preallocated array (out=).")
    print()
    print("| ratio (peer time / ours) | " + " | ".join(STREAMS) + " | goal |")
    print("|---|" + "---|" * (len(STREAMS) + 1))
    goals = {"uniform": ">= 2 on mcg59 and sfmt19937", "exponential": ">= 3",
             "normal_bm2": ">= 3 (fastest method)"}
    for who in ("numpy", "numpyout", "std"):
        for d in DISTS:
            key = f"{who}_{peer(d)}"
            if key not in best:
                continue
            ratios = [f"{best[key] / best[f'orv_{d}_{s}']:.2f}" for s in STREAMS]
            goal = goals.get(d, "") if who != "std" else ""
            print(f"| {d} / {who} | " + " | ".join(ratios) + f" | {goal} |")


if __name__ == "__main__":
    main()
