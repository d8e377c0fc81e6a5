#!/usr/bin/env python3
"""Turn a Google Benchmark JSON file into a markdown table of ratios.

Rows are benchmarks (name without the size argument), columns are sizes.
Each cell shows the metric and its ratio to the baseline row of the same size
(metric / baseline metric, so above 1 means more of the metric).

  bench_table.py results.json --baseline BM_copy --metric bytes_per_second
"""
import argparse
import json
from collections import OrderedDict


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("json")
    ap.add_argument("--baseline", required=True, help="row name the ratios are taken against")
    ap.add_argument("--metric", default="items_per_second")
    ap.add_argument("--scale", type=float, default=1e-9, help="factor applied to the metric")
    ap.add_argument("--unit", default="G/s")
    a = ap.parse_args()
    data = json.load(open(a.json))
    rows = OrderedDict()
    sizes = []
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        base, _, size = name.rpartition("/")
        if size not in sizes:
            sizes.append(size)
        rows.setdefault(base, {})[size] = b[a.metric]
    print("| benchmark | " + " | ".join(f"n = {s}" for s in sizes) + " |")
    print("|---|" + "---|" * len(sizes))
    ref = rows.get(a.baseline, {})
    for name, cells in rows.items():
        out = []
        for s in sizes:
            v = cells.get(s)
            if v is None:
                out.append("")
                continue
            r = f" ({v / ref[s]:.2f}x)" if s in ref and ref[s] else ""
            out.append(f"{v * a.scale:.3g} {a.unit}{r}")
        print(f"| {name} | " + " | ".join(out) + " |")
    ctx = data.get("context", {})
    print(f"\nMachine: {ctx.get('num_cpus', '?')} CPUs at {ctx.get('mhz_per_cpu', '?')} MHz, "
          f"run {ctx.get('date', '?')}; medians of the repetitions.")


if __name__ == "__main__":
    main()
