#!/usr/bin/env python3
"""Markdown tables of bench_datafit results.

Warm: construction time per breakpoint and function (CPU time, median of the
repetitions) for ours and the GSL peer side by side, the speed ratio (peer
time / our time), and our constructors that have no peer.
Built once: ours and the peer started afresh alternately (fresh_pair), CPU
time of the building thread with the ratio, and the wall-time ratio; then our
constructors alone (fresh).

  datafit_bench_table.py results.json [more.json ...]
"""
import json
import re
import sys

PAIRS = [("orv_natural", "gsl_cspline", "Natural, free end / cspline"),
         ("orv_natural_periodic", "gsl_cspline_periodic", "Natural, periodic / cspline_periodic"),
         ("orv_akima", "gsl_akima", "Akima / akima"),
         ("orv_hyman", "gsl_steffen", "Hyman / steffen")]
ALONE = ["linear", "quadratic", "natural", "natural_notaknot", "natural_periodic", "akima",
         "bessel", "hyman", "hermite", "default"]
SCALE = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}  # to microseconds


def main(paths):
    warm, pair, alone = {}, [], {}
    for path in paths:
        for b in json.load(open(path))["benchmarks"]:
            if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
                continue
            name = b.get("run_name", b["name"])
            us = SCALE[b["time_unit"]]
            m = re.match(r"warm/([^/]+)/(\d+)/(\d+)", name)
            if m:
                nx, ny = int(m.group(2)), int(m.group(3))
                warm[(m.group(1), nx, ny)] = b["cpu_time"] * us * 1e3 / (nx * ny)
                continue
            m = re.match(r"fresh_pair/orv_([^/]+)/([^/]+)/(\d+)/(\d+)", name)
            if m:
                pair.append((m.group(1), m.group(2), m.group(3), m.group(4), b["real_time"] * us,
                             b["peer_us"], b["speed_ratio"], b["wall_ratio"]))
                continue
            m = re.match(r"fresh/orv_([^/]+)/(\d+)/(\d+)", name)
            if m:
                alone[(m.group(1), int(m.group(2)), int(m.group(3)))] = b["real_time"] * us
    if warm:
        print("| warm | nx | ny | ours ns/(point*function) | GSL ns/(point*function) | speed ratio |")
        print("|---|---:|---:|---:|---:|---:|")
        for ours, peer, label in PAIRS:
            for ny in (1, 16):
                for nx in (1000, 100000, 1000000):
                    a, b = warm.get((ours, nx, ny)), warm.get((peer, nx, ny))
                    if a is not None and b is not None:
                        print(f"| {label} | {nx} | {ny} | {a:.2f} | {b:.2f} | {b / a:.2f} |")
        print()
        sizes = [(nx, ny) for ny in (1, 16) for nx in (1000, 100000, 1000000)]
        print("| warm, ns/(point*function) | " +
              " | ".join(f"nx {nx}, ny {ny}" for nx, ny in sizes) + " |")
        print("|---|" + "---:|" * len(sizes))
        for k in ALONE:
            row = [warm.get(("orv_" + k, nx, ny)) for nx, ny in sizes]
            if any(v is not None for v in row):
                print(f"| {k} | " + " | ".join("" if v is None else f"{v:.2f}" for v in row) + " |")
        print()
    if pair:
        print("| built once | nx | ny | ours µs | GSL µs | speed ratio | wall-time ratio |")
        print("|---|---:|---:|---:|---:|---:|---:|")
        for o, p, nx, ny, a, b, r, w in pair:
            print(f"| {o} / {p[4:]} | {nx} | {ny} | {a:.0f} | {b:.0f} | {r:.2f} | {w:.2f} |")
        print()
    if alone:
        sizes = sorted({(nx, ny) for _, nx, ny in alone}, key=lambda s: (s[1], s[0]))
        print("| built once, ours µs | " + " | ".join(f"nx {nx}, ny {ny}" for nx, ny in sizes) + " |")
        print("|---|" + "---:|" * len(sizes))
        for k in ALONE:
            row = [alone.get((k, nx, ny)) for nx, ny in sizes]
            if any(v is not None for v in row):
                print(f"| {k} | " + " | ".join("" if v is None else f"{v:.0f}" for v in row) + " |")


if __name__ == "__main__":
    main(sys.argv[1:])
