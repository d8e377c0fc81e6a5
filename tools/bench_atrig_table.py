#!/usr/bin/env python3
"""Table of bench/bench_atrig.cpp results (Google Benchmark JSON, medians of
the repetitions) with the numpy figures of bench/atrig_peers.py: our
throughput and its ratio to each peer (ours / peer, above 1 is faster).

  tools/bench_atrig_table.py numpy.txt r.json [more.json ...]

A later JSON file replaces the figures of the benchmarks it repeats.
"""
import json
import re
import sys

PEERS = ["glibc", "libmvec_sse", "sleef_u10_sse2", "sleef_u35_sse2", "libmvec_avx2",
         "sleef_u10_avx2", "sleef_u35_avx2", "libmvec_avx512", "sleef_u10_avx512",
         "sleef_u35_avx512", "numpy"]


def main():
    rate = {}
    for path in sys.argv[2:]:
        for b in json.load(open(path))["benchmarks"]:
            if b.get("aggregate_name", "median") != "median":
                continue
            m = re.match(r"(\w+)/(\w+)/(\d+)", b["run_name"] if "run_name" in b else b["name"])
            rate[(m.group(1), m.group(2), int(m.group(3)))] = b["items_per_second"]
    for line in open(sys.argv[1]):
        m = re.match(r"(\w+)/numpy/(\d+) ([\d.]+) ns", line)
        if m:
            rate[(m.group(1), "numpy", int(m.group(2)))] = 1e9 / float(m.group(3))
    fns = []
    for (f, impl, n) in rate:
        if impl == "orv" and (f, n) not in fns:
            fns.append((f, n))
    short = {"glibc": "glibc", "libmvec_sse": "mvec SSE", "sleef_u10_sse2": "SLEEF u10 SSE2",
             "sleef_u35_sse2": "SLEEF u35 SSE2", "libmvec_avx2": "mvec AVX2",
             "sleef_u10_avx2": "SLEEF u10 AVX2", "sleef_u35_avx2": "SLEEF u35 AVX2",
             "libmvec_avx512": "mvec AVX-512", "sleef_u10_avx512": "SLEEF u10 AVX-512",
             "sleef_u35_avx512": "SLEEF u35 AVX-512", "numpy": "numpy"}
    print("| function | n | orv (M/s) | " + " | ".join(short[p] for p in PEERS) + " |")
    print("|---|---|---|" + "---|" * len(PEERS))
    order = {f: i for i, f in enumerate(["Atan", "Atan2", "Asin", "Acos", "Sinh", "Cosh", "Tanh", "Asinh",
                                         "Acosh", "Atanh", "Atanpi", "Atan2pi", "Asinpi", "Acospi"])}
    fns.sort(key=lambda k: (order.get(k[0][1:], 99), k[0][0] == "d", k[1]))
    for f, n in fns:
        ours = rate[(f, "orv", n)]
        cells = []
        for p in PEERS:
            r = rate.get((f, p, n))
            cells.append(f"{ours / r:.2f}" if r else "-")
        print(f"| {f} | {n} | {ours / 1e6:.0f} | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
