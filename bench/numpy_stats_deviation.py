#!/usr/bin/env python3
"""numpy's and scipy's peers of bench_stats_deviation, timed in the same job:
scipy.stats.median_abs_deviation and numpy's mean absolute deviation
(np.mean(np.abs(x - x.mean()))) of 10^7 normal values, one variable and two
(variables in rows). Writes Google Benchmark JSON.

  /usr/bin/python3 bench/numpy_stats_deviation.py numpy_dev.json
"""
import json
import statistics
import sys
import time

import numpy as np
from scipy.stats import median_abs_deviation


def timed(fn, reps):
    wall, cpu = [], []
    fn()  # warm
    for _ in range(reps):
        w0, c0 = time.perf_counter(), time.process_time()
        fn()
        wall.append((time.perf_counter() - w0) * 1e3)
        cpu.append((time.process_time() - c0) * 1e3)
    return statistics.median(wall), statistics.median(cpu)


def main():
    rng = np.random.default_rng(42)
    rows = []
    n = 10000000
    for p in (1, 2):
        x = 3.0 + rng.standard_normal((p, n))
        for name, fn in (("median_abs_dev", lambda: median_abs_deviation(x, axis=1)),
                         ("mean_abs_dev",
                          lambda: np.mean(np.abs(x - x.mean(axis=1, keepdims=True)), axis=1))):
            wall, cpu = timed(fn, 5)
            rows.append({"name": f"BM_numpy_{name}/{n}/{p}/real_time", "run_type": "iteration",
                         "real_time": wall, "cpu_time": cpu, "time_unit": "ms"})
    json.dump({"context": {"numpy": np.__version__}, "benchmarks": rows},
              open(sys.argv[1], "w"), indent=1)


if __name__ == "__main__":
    main()
