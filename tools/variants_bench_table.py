"""Table of bench_variants (Google Benchmark JSON, one or more runs) and
bench/variants_peers.py output (numpy, one or more runs): CPU-time rates in
Gelem/s, median over repetitions and runs, and the spread (min-max) of
ours. Usage: variants_bench_table.py run1.json [run2.json ...] -- np1.txt [np2.txt ...]"""
import json
import statistics
import sys
from collections import defaultdict


def main():
    args = sys.argv[1:]
    cut = args.index("--") if "--" in args else len(args)
    rates = defaultdict(list)
    for path in args[:cut]:
        for b in json.load(open(path))["benchmarks"]:
            if b.get("run_type") != "iteration" or "items_per_second" not in b:
                continue
            # items_per_second is over CPU time (no real-time option is set).
            rates[b["run_name"]].append(b["items_per_second"] / 1e9)
    for path in args[cut + 1:]:
        for line in open(path):
            parts = line.split()
            if len(parts) == 2 and "/numpy/" in parts[0]:
                rates[parts[0]].append(float(parts[1]) / 1e3)
    fns = ["dExp", "sExp", "dLn", "sLn", "dSqrt", "dInvSqrt", "sInvSqrt", "dAdd"]
    impls = ["orv_sse2", "orv_avx2", "orv_avx512", "numpy", "sleef_avx2", "sleef_avx512",
             "libmvec_avx2", "libmvec_avx512", "loop_1_over_sqrt"]
    print("| Function | n | " + " | ".join(impls) + " | avx512 / numpy |")
    print("|---|---|" + "---|" * (len(impls) + 1))
    for fn in fns:
        for n in (1000, 100000, 1000000):
            cells = []
            med = {}
            for im in impls:
                v = rates.get(f"{fn}/{im}/{n}")
                if not v:
                    cells.append("-")
                    continue
                med[im] = statistics.median(v)
                cell = f"{med[im]:.3f}"
                if im.startswith("orv") and len(v) > 1:
                    cell += f" ({min(v):.2f}-{max(v):.2f})"
                cells.append(cell)
            ratio = f"{med['orv_avx512'] / med['numpy']:.2f}" if "orv_avx512" in med and "numpy" in med else "-"
            print(f"| {fn} | {n:,} | " + " | ".join(cells) + f" | {ratio} |")


if __name__ == "__main__":
    main()
