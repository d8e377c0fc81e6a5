#!/usr/bin/env python3
"""Markdown table of bench_stats results: wall time of each row and its
speed-up over GSL and over the naive two-pass loop of the same problem.

  stats_bench_table.py results.json
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
    rows = []
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate":
            continue
        what, n, p, threads = problem(b["name"])
        ms = b["real_time"] if b["time_unit"] == "ms" else b["real_time"] / 1e6
        rows.append((b["name"].split("/")[0], what, n, p, threads, ms))
    ref = {}
    for name, what, n, p, threads, ms in rows:
        if name.startswith("BM_gsl"):
            ref[(what, n, p, "gsl")] = ms
        if name.startswith("BM_two_pass"):
            ref[(what, n, p, "loop")] = ms
    print("| problem | implementation | threads | time (ms) | vs GSL | vs two-pass loop |")
    print("|---|---|---|---|---|---|")
    for name, what, n, p, threads, ms in rows:
        g = ref.get((what, n, p, "gsl"))
        l = ref.get((what, n, p, "loop"))
        label = f"{what}, n = {n}, p = {p}"
        print(f"| {label} | {name[3:]} | {threads} | {ms:.1f} | "
              f"{g / ms:.1f}x | {l / ms:.2f}x |")
    ctx = data.get("context", {})
    print(f"\nMachine: {ctx.get('num_cpus', '?')} CPUs at {ctx.get('mhz_per_cpu', '?')} MHz, "
          f"load average {ctx.get('load_avg', '?')}, run {ctx.get('date', '?')}.")


if __name__ == "__main__":
    main()
