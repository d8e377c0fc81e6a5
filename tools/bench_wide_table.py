#!/usr/bin/env python3
"""Markdown table of our AVX2 and AVX-512 kernels against the peers of the
same width, from Google Benchmark JSON files (run with repetitions and
aggregates) of bench_trig, bench_atrig and bench_power, and numpy's figures.

usage: tools/bench_wide_table.py [--numpy FILE]... FILE.json...

A numpy file holds lines "<fn>/numpy/<n> <value> [ns/elem]": nanoseconds per
element when the unit is given, else millions of elements per second.
Ratios are peer time / our time (above 1: we are faster); each is the
median of the repetitions, CPU time. The last column is the largest
coefficient of variation among our three rows and the peers shown."""
import json
import sys

FUNCS = ["Sin", "Cos", "Tan", "Atan", "Asin", "Sinh", "Tanh", "Pow", "Cbrt", "Hypot"]
# The same-width peers, under the names each benchmark program uses.
PEERS = {
    "avx2": [("libmvec", ["libmvec_avx2", "libmvec_256"]),
             ("sleef 1-ulp", ["sleef_u10_avx2", "sleef_256"]),
             ("sleef 3.5-ulp", ["sleef_u35_avx2"])],
    "avx512": [("libmvec", ["libmvec_avx512", "libmvec_512"]),
               ("sleef 1-ulp", ["sleef_u10_avx512", "sleef_512"]),
               ("sleef 3.5-ulp", ["sleef_u35_avx512"])],
}


def load(paths, numpy_paths):
    ns, cv = {}, {}
    for p in paths:
        for b in json.load(open(p))["benchmarks"]:
            name = b.get("run_name", b["name"])
            n = int(name.rsplit("/", 1)[1])
            if b.get("aggregate_name") == "median":
                ns[name] = b["cpu_time"] / n
            elif b.get("aggregate_name") == "cv":
                cv[name] = b["cpu_time"]
    for p in numpy_paths:
        for line in open(p):
            f = line.split()
            if len(f) >= 2 and "/numpy/" in f[0]:
                v = float(f[1])
                ns[f[0]] = v if len(f) > 2 and f[2].startswith("ns") else 1e3 / v
    return ns, cv


def main():
    args, numpy_paths = sys.argv[1:], []
    while "--numpy" in args:
        i = args.index("--numpy")
        numpy_paths.append(args[i + 1])
        del args[i:i + 2]
    ns, cv = load(args, numpy_paths)
    head = ["function", "n", "sse2 M/s", "avx2 M/s", "avx512 M/s"]
    head += [f"avx2 vs {p}" for p, _ in PEERS["avx2"]] + [f"avx512 vs {p}" for p, _ in PEERS["avx512"]]
    head += ["avx512 vs numpy", "max cv"]
    print("| " + " | ".join(head) + " |")
    print("|" + "---|" * len(head))
    for fn in FUNCS:
        for t in "sd":
            for n in (1024, 100000):
                key = lambda impl: f"{t}{fn}/{impl}/{n}"
                base = ns.get(key("orv"))
                ours = {v: ns.get(key(f"orv_{v}")) for v in ("avx2", "avx512")}
                if ours["avx512"] is None:
                    continue
                row = [t + fn, str(n)]
                row += [f"{1e3 / x:.0f}" if x else "-" for x in (base, ours["avx2"], ours["avx512"])]
                cvs = [cv.get(key(i), 0) for i in ("orv", "orv_avx2", "orv_avx512")]
                for v in ("avx2", "avx512"):
                    for _, names in PEERS[v]:
                        found = [k for k in map(key, names) if k in ns]
                        row.append(f"{ns[found[0]] / ours[v]:.2f}" if found else "-")
                        cvs += [cv.get(k, 0) for k in found[:1]]
                npk = key("numpy")
                row.append(f"{ns[npk] / ours['avx512']:.2f}" if npk in ns else "-")
                row.append(f"{100 * max(cvs):.0f} %")
                print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main()
