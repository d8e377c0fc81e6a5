#!/usr/bin/env python3
"""Markdown table of bench_datafit results: construction time per breakpoint
and function (CPU time, median of the repetitions) for ours and the GSL peer
side by side, and the speed ratio (peer time / our time).

  datafit_bench_table.py results.json
"""
import json
import sys

PAIRS = [("BM_orv_natural", "BM_gsl_cspline", "Natural, free end / cspline"),
         ("BM_orv_natural_periodic", "BM_gsl_cspline_periodic", "Natural, periodic / cspline_periodic"),
         ("BM_orv_akima", "BM_gsl_akima", "Akima / akima"),
         ("BM_orv_hyman", "BM_gsl_steffen", "Hyman / steffen")]


def main(path):
    data = json.load(open(path))
    ns = {}
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        base, nx, ny = name.split("/")[:3]
        scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
        ns[(base, int(nx), int(ny))] = b["cpu_time"] * scale / (int(nx) * int(ny))
    print("| construction | nx | ny | ours ns/(point*function) | GSL ns/(point*function) | speed ratio |")
    print("|---|---:|---:|---:|---:|---:|")
    for ours, peer, label in PAIRS:
        for ny in (1, 16):
            for nx in (1000, 100000, 1000000):
                a, b = ns.get((ours, nx, ny)), ns.get((peer, nx, ny))
                if a is None or b is None:
                    continue
                print(f"| {label} | {nx} | {ny} | {a:.2f} | {b:.2f} | {b / a:.2f} |")


if __name__ == "__main__":
    main(sys.argv[1])
