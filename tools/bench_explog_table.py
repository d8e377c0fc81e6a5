#!/usr/bin/env python3
"""Markdown table of bench_exp_log results: for each function and size,
our throughput and its ratio to each peer (ours / peer, above 1 = faster).

  bench_explog_table.py results.json
"""
import json
import sys
from collections import OrderedDict

PEERS = ["glibc", "libmvec", "sleef_u10", "sleef_u35"]


def main():
    data = json.load(open(sys.argv[1]))
    rates = OrderedDict()
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        fn, impl, size = name.split("/")
        rates.setdefault((fn, size), {})[impl] = b["items_per_second"]
    print("| function | n | orv (M/s) | " + " | ".join(f"vs {p}" for p in PEERS) + " | fastest peer |")
    print("|---|---|---|" + "---|" * len(PEERS) + "---|")
    for (fn, size), r in rates.items():
        ours = r.get("orv")
        if not ours:
            continue
        cells = []
        for p in PEERS:
            cells.append(f"{ours / r[p]:.2f}" if p in r else "-")
        peers = {p: v for p, v in r.items() if p != "orv"}
        best = max(peers, key=peers.get) if peers else "-"
        best_ratio = f"{best} ({ours / peers[best]:.2f})" if peers else "-"
        print(f"| {fn} | {size} | {ours / 1e6:.0f} | " + " | ".join(cells) + f" | {best_ratio} |")
    ctx = data.get("context", {})
    print(f"\nMachine: {ctx.get('num_cpus', '?')} CPUs at {ctx.get('mhz_per_cpu', '?')} MHz, "
          f"run {ctx.get('date', '?')}; medians of the repetitions.")


if __name__ == "__main__":
    main()
