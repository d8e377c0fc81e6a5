#!/usr/bin/env python3
"""Markdown table of the pi- and degree-scaled rows of bench_trig (run with
--benchmark_format=csv --benchmark_repetitions=3): per function and size our
HA throughput (median CPU time), the spread of the repetitions ((max - min) / median of the CPU times), the LA and
EP kernels against HA, and HA against SLEEF's 0.5-ULP sinpi and cospi at
each width (ours / peer, above 1 = ours faster).

  bench_trigpi_table.py results.csv
"""
import csv
import sys
from collections import OrderedDict

PEERS = ["sleef_u05_sse", "sleef_u05_avx2", "sleef_u05_avx512"]


def main():
    runs = OrderedDict()
    for row in csv.DictReader(open(sys.argv[1])):
        fn, impl, size = row["name"].split("/")
        if "_" in size:  # the aggregates: taken from the runs below
            continue
        runs.setdefault((fn, size), {}).setdefault(impl, []).append(float(row["cpu_time"]))
    med, cv = OrderedDict(), {}
    for key, impls in runs.items():
        for impl, v in impls.items():
            v = sorted(v)
            med.setdefault(key, {})[impl] = v[len(v) // 2]
            cv.setdefault(key, {})[impl] = (v[-1] - v[0]) / v[len(v) // 2]
    print("| function | n | orv HA (M/s) | spread | LA / HA | EP / HA | "
          + " | ".join(f"vs {p}" for p in PEERS) + " |")
    print("|---|---|---|---|---|---|" + "---|" * len(PEERS))
    for (fn, size), t in med.items():
        if "orv" not in t:
            continue
        n = float(size)
        ours = t["orv"]
        c = cv.get((fn, size), {}).get("orv")
        spread = f"{c * 100:.0f}%" if c is not None else "-"
        la = f"{ours / t['orv_la']:.2f}" if "orv_la" in t else "-"
        ep = f"{ours / t['orv_ep']:.2f}" if "orv_ep" in t else "-"
        cells = [f"{t[p] / ours:.2f}" if p in t else "-" for p in PEERS]
        print(f"| {fn} | {size} | {n / ours * 1e3:.0f} | {spread} | {la} | {ep} | "
              + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
