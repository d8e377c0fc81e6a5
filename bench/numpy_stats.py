#!/usr/bin/env python3
"""numpy's peers of bench_stats, timed in the same job: np.cov of the same
problems (variables in rows, the layout by variable), on one BLAS thread;
np.sort, np.quantile (5 orders) and min plus max of 10^7 values; scipy's
median_abs_deviation and numpy's mean absolute deviation
(np.mean(np.abs(x - x.mean()))) of 10^7 values, one variable and two; np.sort
and np.quantile of two variables of 10^7. With --once: one np.sort of 10^7
values in a fresh process.
Writes Google Benchmark JSON for tools/stats_bench_table.py.

  OPENBLAS_NUM_THREADS=1 /usr/bin/python3 bench/numpy_stats.py numpy.json
  /usr/bin/python3 bench/numpy_stats.py --once once.json
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


def once(path):
    """One np.sort of 10^7 values in this fresh process (the first call)."""
    x = 3.0 + np.random.default_rng(1).standard_normal(10000000)
    w0, c0 = time.perf_counter(), time.process_time()
    np.sort(x)
    row = {"name": "BM_numpy_sort_once/10000000/real_time", "run_type": "iteration",
           "real_time": (time.perf_counter() - w0) * 1e3,
           "cpu_time": (time.process_time() - c0) * 1e3, "time_unit": "ms"}
    json.dump({"context": {"numpy": np.__version__}, "benchmarks": [row]}, open(path, "w"), indent=1)


def main():
    if sys.argv[1] == "--once":
        once(sys.argv[2])
        return
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
    x2 = 3.0 + rng.standard_normal((2, 10000000))
    for name, fn in (("sort_2vars", lambda: np.sort(x2, axis=1)),
                     ("quantiles_2vars", lambda: np.quantile(x2, orders, axis=1))):
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
