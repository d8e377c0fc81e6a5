#!/usr/bin/env python3
"""numpy's peers of bench_stats, timed in the same job: np.cov of the same
problems (variables in rows, the layout by variable), on one BLAS thread;
np.sort, np.quantile (5 orders) and min plus max of 10^7 values; scipy's
median_abs_deviation and numpy's mean absolute deviation
(np.mean(np.abs(x - x.mean()))) of 10^7 values, one variable and two.
Writes Google Benchmark JSON for tools/stats_bench_table.py.

  OPENBLAS_NUM_THREADS=1 /usr/bin/python3 bench/numpy_stats.py numpy.json
"""
import json
import os
import statistics
import sys
import time

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")
import numpy as np  # noqa: E402


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
    for n, p in ((1000000, 10), (100000, 100)):
        x = 3.0 + rng.standard_normal((p, n))
        wall, cpu = timed(lambda: np.cov(x), 7)
        rows.append({"name": f"BM_numpy_cov/{n}/{p}/real_time", "run_type": "iteration",
                     "real_time": wall, "cpu_time": cpu, "time_unit": "ms"})
    x = 3.0 + rng.standard_normal(10000000)
    orders = [0.01, 0.25, 0.5, 0.75, 0.99]
    for name, fn in (("sort", lambda: np.sort(x)),
                     ("quantiles", lambda: np.quantile(x, orders)),
                     ("minmax", lambda: (x.min(), x.max()))):
        wall, cpu = timed(fn, 5)
        rows.append({"name": f"BM_numpy_{name}/10000000/real_time", "run_type": "iteration",
                     "real_time": wall, "cpu_time": cpu, "time_unit": "ms"})
    from scipy.stats import median_abs_deviation
    for p in (1, 2):
        x = 3.0 + rng.standard_normal((p, 10000000))
        for name, fn in (("median_abs_dev", lambda: median_abs_deviation(x, axis=1)),
                         ("mean_abs_dev",
                          lambda: np.mean(np.abs(x - x.mean(axis=1, keepdims=True)), axis=1))):
            wall, cpu = timed(fn, 5)
            rows.append({"name": f"BM_numpy_{name}/10000000/{p}/real_time", "run_type": "iteration",
                         "real_time": wall, "cpu_time": cpu, "time_unit": "ms"})
    json.dump({"context": {"numpy": np.__version__}, "benchmarks": rows},
              open(sys.argv[1], "w"), indent=1)


if __name__ == "__main__":
    main()
