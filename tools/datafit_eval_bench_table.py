#!/usr/bin/env python3
"""Markdown table of bench_datafit_eval (Google Benchmark JSON, CPU time of the
median or only run) beside the scipy timings printed by bench/bench_datafit_eval.py,
with speed ratios (peer time / our time).

  datafit_eval_bench_table.py results.json scipy.txt
"""
import json
import sys


def load(path):
    ms = {}
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
        ms[b.get("run_name", b["name"])] = b["cpu_time"] * scale
    return ms


def load_scipy(path):
    out = {}
    for line in open(path):
        f = line.split()
        if not f:
            continue
        kv = dict(x.split("=") for x in f[1:] if "=" in x)
        key = (f[0], f[1] if f[0] == "scipy_eval" else "", kv.get("nd", ""))
        out[key] = (float(kv["warm_ms"]), float(kv["fresh_ms"]))
    return out


def main(jpath, spath):
    ms, sp = load(jpath), load_scipy(spath)
    print("| case | mode | ours ms | GSL ms | GSL+accel ms | scipy ms | GSL/ours | GSL+accel/ours | scipy/ours |")
    print("|---|---|---:|---:|---:|---:|---:|---:|---:|")
    fmt = lambda v: "-" if v is None else f"{v:.1f}"
    rat = lambda p, o: "-" if p is None or o is None else f"{p / o:.2f}"
    for sorted_ in (0, 1):
        for nd in (1, 3):
            label = f"{'sorted' if sorted_ else 'random'} sites, {'value' if nd == 1 else 'value + 2 derivatives'}"
            for mode, i in (("warm", 0), ("fresh", 1)):
                o = ms.get(f"BM_orv_eval_{mode}/{sorted_}/{nd}")
                g = ms.get(f"BM_gsl_eval_{mode}/{sorted_}/{nd}/0")
                ga = ms.get(f"BM_gsl_eval_{mode}/{sorted_}/{nd}/1")
                s = sp.get(("scipy_eval", "sorted" if sorted_ else "random", str(nd)))
                s = s[i] if s else None
                print(f"| {label} | {mode} | {fmt(o)} | {fmt(g)} | {fmt(ga)} | {fmt(s)} | {rat(g, o)} | {rat(ga, o)} | {rat(s, o)} |")
    for mode, i in (("warm", 0), ("fresh", 1)):
        o, ga = ms.get(f"BM_orv_integ_{mode}"), ms.get(f"BM_gsl_integ_{mode}")
        s = sp.get(("scipy_integ", "", ""))
        s = s[i] if s else None
        print(f"| 10^5 integrals | {mode} | {fmt(o)} | - | {fmt(ga)} | {fmt(s)} | - | {rat(ga, o)} | {rat(s, o)} |")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
