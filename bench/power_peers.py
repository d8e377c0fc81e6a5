#!/usr/bin/python3
"""Runs bench_power (ours, glibc, libmvec and SLEEF at 128, 256 and 512 bits)
and, in the same job, times numpy's power, cbrt and hypot on the same input
ranges at n = 1024 and 10^5; prints nanoseconds per element (CPU time) for
every implementation and the ratio of each peer to ours.

usage: bench/power_peers.py build-bench/bench/bench_power [benchmark flags]"""
import json
import subprocess
import sys
import time

import numpy as np


# Process CPU time, as Google Benchmark reports, so that the load of a shared
# machine counts the same on both sides.
def median_ns(fn, n, repeats=5, min_time=0.2):
    per = []
    for _ in range(repeats):
        k, t0 = 0, time.process_time()
        while time.process_time() - t0 < min_time:
            fn()
            k += 1
        per.append((time.process_time() - t0) * 1e9 / (k * n))
    per.sort()
    return per[len(per) // 2]


def numpy_peers():
    rng = np.random.default_rng(42)
    out = {}
    for t, dt in (("s", np.float32), ("d", np.float64)):
        for n in (1024, 100000):
            a = rng.uniform(0.1, 10, n).astype(dt)
            b = rng.uniform(-20, 20, n).astype(dt)
            c = rng.uniform(-1e3, 1e3, n).astype(dt)
            e = rng.uniform(-1e3, 1e3, n).astype(dt)
            r = np.empty(n, dt)
            out[f"{t}Pow/numpy/{n}"] = median_ns(lambda: np.power(a, b, out=r), n)
            out[f"{t}Cbrt/numpy/{n}"] = median_ns(lambda: np.cbrt(c, out=r), n)
            out[f"{t}Hypot/numpy/{n}"] = median_ns(lambda: np.hypot(c, e, out=r), n)
    return out


def main():
    cmd = [sys.argv[1], "--benchmark_format=json"] + sys.argv[2:]
    res = json.loads(subprocess.run(cmd, check=True, capture_output=True, text=True).stdout)
    ns = {}
    for b in res["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b["run_name"] if "run_name" in b else b["name"]
        ns[name] = b["cpu_time"] / int(name.rsplit("/", 1)[1])
    ns.update(numpy_peers())
    print("| Function | n | ours ns/elem | peer | peer ns/elem | peer / ours |")
    print("|---|---|---|---|---|---|")
    for key in sorted(k for k in ns if "/orv/" in k):
        fn, _, n = key.split("/")
        for peer in sorted(k for k in ns if k.startswith(fn + "/") and k.endswith("/" + n) and k != key):
            print(f"| {fn} | {n} | {ns[key]:.2f} | {peer.split('/')[1]} | {ns[peer]:.2f} | "
                  f"{ns[peer] / ns[key]:.2f} |")


if __name__ == "__main__":
    main()
