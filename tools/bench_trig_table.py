#!/usr/bin/env python3
"""Markdown table of bench_trig results: for each function and size, our
throughput (CPU time) and its ratio to each peer (ours / peer, above 1 =
ours faster), with numpy's figures from bench/trig_peers.py.

  bench_trig_table.py results.json [numpy.txt]
"""
import json
import sys
from collections import OrderedDict

PEERS = ["glibc", "libmvec_sse", "sleef_u10_sse", "sleef_u35_sse",
         "libmvec_avx2", "sleef_u10_avx2", "libmvec_avx512", "sleef_u10_avx512", "numpy"]


def main():
    data = json.load(open(sys.argv[1]))
    rates = OrderedDict()
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        fn, impl, size = name.split("/")
        rates.setdefault((fn, size), {})[impl] = b["items_per_second"]
    if len(sys.argv) > 2:
        for line in open(sys.argv[2]):
            key, v = line.split()
            fn, impl, size = key.split("/")
            rates.setdefault((fn, size), {})[impl] = float(v) * 1e6
    print("| function | n | orv (M/s) | " + " | ".join(f"vs {p}" for p in PEERS) + " |")
    print("|---|---|---|" + "---|" * len(PEERS))
    for (fn, size), r in rates.items():
        ours = r.get("orv")
        if not ours:
            continue
        cells = [f"{ours / r[p]:.2f}" if p in r else "-" for p in PEERS]
        print(f"| {fn} | {size} | {ours / 1e6:.0f} | " + " | ".join(cells) + " |")
    ctx = data.get("context", {})
    print(f"\nMachine: {ctx.get('num_cpus', '?')} CPUs at {ctx.get('mhz_per_cpu', '?')} MHz, "
          f"run {ctx.get('date', '?')}; medians of the repetitions.")


if __name__ == "__main__":
    main()
