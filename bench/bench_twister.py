#!/usr/bin/env python3
"""Runs bench_twister (ours, std::mt19937, GSL) and times numpy's MT19937 in
the same job, then prints the ratios as a Markdown table.

All figures are CPU time (the machine is shared), best of the repetitions,
with the spread (slowest / best) beside them. numpy is timed before and
after the C++ program, 10^7 values per call like the C++ side.

Usage: bench_twister.py BUILD/bench/bench_twister [REPETITIONS]
"""
import json
import os
import subprocess
import sys
import time

try:
    import numpy as np
except ImportError:  # Debian's numpy belongs to the system interpreter
    if os.path.exists("/usr/bin/python3") and sys.executable != "/usr/bin/python3":
        os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)
    raise

N = 10**7


def cpu_times(fn, reps):
    out = []
    for _ in range(reps):
        t = time.process_time()
        fn()
        out.append(time.process_time() - t)
    return out


def numpy_times(reps):
    bg = np.random.MT19937(12345)
    gen = np.random.Generator(np.random.MT19937(12345))
    return {
        "numpy_mt19937_random_raw": cpu_times(lambda: bg.random_raw(N), reps),
        "numpy_mt19937_random": cpu_times(lambda: gen.random(N), reps),
    }


def main():
    binary = sys.argv[1]
    reps = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    times = {k: v for k, v in numpy_times(reps).items()}
    runs = [[f"--benchmark_repetitions={reps}", "--benchmark_filter=-first"]]
    # A jump as the first call of a fresh process, one process each.
    runs += [["--benchmark_filter=first_" + g] for g in ("mt19937", "sfmt19937") for _ in range(reps)]
    for args in runs:
        res = subprocess.run([binary, "--benchmark_format=json"] + args, check=True, capture_output=True, text=True)
        for b in json.loads(res.stdout)["benchmarks"]:
            if b.get("run_type") != "iteration":
                continue
            unit = {"ms": 1e-3, "us": 1e-6, "ns": 1e-9}[b["time_unit"]]
            times.setdefault(b["run_name"].removeprefix("BM_").split("/")[0], []).append(b["cpu_time"] * unit)
    for k, v in numpy_times(reps).items():
        times[k] += v

    best = {k: min(v) for k, v in times.items()}
    spread = {k: max(v) / min(v) for k, v in times.items()}

    def row(name, per_call):
        t = best[name]
        return f"| {name} | {t * 1e3:.2f} ms | {t / per_call * 1e9:.3f} | {spread[name]:.2f} |"

    print("| run | CPU per call | ns per value | spread |")
    print("|---|---|---|---|")
    for name in sorted(best):
        if "jump" in name:
            print(f"| {name} | {best[name] * 1e6:.0f} us | | {spread[name]:.2f} |")
        elif "plain_skip" in name:
            print(row(name, 0xFFFFF))
        elif name.endswith("_1e4"):
            print(row(name, 10**4))
        else:
            print(row(name, N))

    print()
    print("| ratio | value | goal |")
    print("|---|---|---|")

    def ratio(label, slow, fast, goal=""):
        if slow in best and fast in best:
            print(f"| {label} | {best[slow] / best[fast]:.2f} | {goal} |")

    ratio("MT19937 words / numpy random_raw", "numpy_mt19937_random_raw", "orv_mt19937_words", ">= 2")
    ratio("MT19937 words / std::mt19937", "std_mt19937_words", "orv_mt19937_words", ">= 5")
    ratio("MT19937 words / GSL", "gsl_mt19937_words", "orv_mt19937_words")
    ratio("SFMT19937 words / our MT19937 words", "orv_mt19937_words", "orv_sfmt19937_words", ">= 1.5")
    ratio("SFMT19937 words / our MT19937 words, 10^4 per call (in cache)", "orv_mt19937_words_1e4",
          "orv_sfmt19937_words_1e4")
    ratio("MT19937 doubles / numpy random", "numpy_mt19937_random", "orv_mt19937_doubles")
    ratio("MT19937 doubles / std::mt19937 uniform_real_distribution", "std_mt19937_doubles",
          "orv_mt19937_doubles")
    ratio("MT19937 doubles / GSL gsl_rng_uniform", "gsl_mt19937_doubles", "orv_mt19937_doubles")
    ratio("SFMT19937 doubles / our MT19937 doubles", "orv_mt19937_doubles", "orv_sfmt19937_doubles")
    if "orv_mt19937_plain_skip_2p20" in best:
        per_word = best["orv_mt19937_plain_skip_2p20"] / 0xFFFFF
        plain = per_word * 1e12
        for g in ("mt19937", "sfmt19937"):
            for kind, key in (("warm", f"orv_{g}_jump_1e12"), ("first call of a process", f"first_{g}_jump_1e12")):
                if key in best:
                    print(f"| {g.upper()} jump of 10^12, {kind}: {best[key] * 1e3:.2f} ms; plain stepping "
                          f"(MT19937 rate, extrapolated) {plain:.0f} s | {plain / best[key]:.2e} | < 5 ms |")


if __name__ == "__main__":
    main()
