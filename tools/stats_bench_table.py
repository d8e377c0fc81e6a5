#!/usr/bin/env python3
"""Markdown table of bench_stats results: wall and CPU time of each row and
its speed-up over GSL, over the naive two-pass loop and (CPU time) over
numpy's np.cov from bench/numpy_stats.py, of the same problem.

  stats_bench_table.py results.json [numpy.json]
"""
import json
import sys


def problem(name):
    # BM_<who>_<what>[_<method>]/<n>[/<p>][/<threads>]/real_time
    parts = name.split("/")
    what = "moments" if "moments" in parts[0] else "cov"
    n = parts[1]
    p = parts[2] if what == "cov" else "1"
    threads = "1"
    if parts[0].startswith("BM_orv"):
        threads = parts[3] if what == "cov" else parts[2]
    return what, n, p, threads


def main():
    data = json.load(open(sys.argv[1]))
    benches = list(data["benchmarks"])
    for extra in sys.argv[2:]:
        benches += json.load(open(extra))["benchmarks"]
    rows = []
    for b in benches:
        if b.get("run_type") == "aggregate":
            continue
        what, n, p, threads = problem(b["name"])
        scale = 1 if b["time_unit"] == "ms" else 1e-6
        rows.append((b["name"].split("/")[0], what, n, p, threads, b["real_time"] * scale,
                     b["cpu_time"] * scale))
    ref = {}
    for name, what, n, p, threads, ms, cpu in rows:
        if name.startswith("BM_gsl"):
            ref[(what, n, p, "gsl")] = ms
        if name.startswith("BM_two_pass"):
            ref[(what, n, p, "loop")] = ms
        if name.startswith("BM_numpy"):
            ref[(what, n, p, "numpy")] = cpu
    print("| problem | implementation | threads | wall (ms) | CPU (ms) | vs GSL | "
          "vs two-pass loop | vs numpy (CPU) |")
    print("|---|---|---|---|---|---|---|---|")
    for name, what, n, p, threads, ms, cpu in rows:
        g = ref.get((what, n, p, "gsl"))
        l = ref.get((what, n, p, "loop"))
        u = ref.get((what, n, p, "numpy"))
        vs_numpy = f"{u / cpu:.2f}x" if u and threads == "1" else "-"
        label = f"{what}, n = {n}, p = {p}"
        vs_gsl = f"{g / ms:.1f}x" if g else "-"
        vs_loop = f"{l / ms:.2f}x" if l else "-"
        print(f"| {label} | {name[3:]} | {threads} | {ms:.1f} | {cpu:.1f} | "
              f"{vs_gsl} | {vs_loop} | {vs_numpy} |")
    ctx = data.get("context", {})
    print(f"\nMachine: {ctx.get('num_cpus', '?')} CPUs at {ctx.get('mhz_per_cpu', '?')} MHz, "
          f"load average {ctx.get('load_avg', '?')}, run {ctx.get('date', '?')}.")


if __name__ == "__main__":
    main()
