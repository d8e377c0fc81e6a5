#!/usr/bin/python3
"""Runs bench_qrng (ours, GSL, Random123) and, in the same job, times scipy's
Sobol engine (random_base2, points per call as in bench_qrng) and numpy's
Philox (random_raw words and random doubles); prints items per nanosecond
and the ratios as a markdown table.

usage: bench/bench_qrng_peers.py build-bench/bench/bench_qrng [benchmark flags]"""
import json
import subprocess
import sys
import time

import numpy as np
from scipy.stats import qmc

POINTS_LOG2 = 12  # 4096 points a call, as bench_qrng
WORDS = 1 << 16


# Process CPU time, as Google Benchmark reports its rates, so that the load of
# a shared machine counts the same on both sides.
def median_rate(fn, items, repeats=5, min_time=0.3):
    rates = []
    for _ in range(repeats):
        n, t0 = 0, time.process_time()
        while time.process_time() - t0 < min_time:
            fn()
            n += 1
        rates.append(n * items / ((time.process_time() - t0) * 1e9))
    rates.sort()
    return rates[len(rates) // 2]  # median


def python_peers():
    out = {}
    for d in (1, 8, 40):
        eng = qmc.Sobol(d, scramble=False)

        def draw():
            eng.reset()
            eng.random_base2(POINTS_LOG2)
        out[f'sobol/scipy/{d}'] = median_rate(draw, 1 << POINTS_LOG2)
    bg = np.random.Generator(np.random.Philox(12345))
    out['philox_words/numpy'] = median_rate(lambda: bg.bit_generator.random_raw(WORDS // 2), WORDS)  # 64-bit raw = 2 words
    out['philox_doubles/numpy'] = median_rate(lambda: bg.random(WORDS), WORDS)
    return out


def main():
    cmd = [sys.argv[1], '--benchmark_format=json', '--benchmark_repetitions=5',
           '--benchmark_report_aggregates_only=true'] + sys.argv[2:]
    data = json.loads(subprocess.run(cmd, check=True, capture_output=True, text=True).stdout)
    rate = {}
    for b in data['benchmarks']:
        if b.get('aggregate_name') == 'median':
            rate[b['run_name']] = b['items_per_second'] / 1e9
    rate.update(python_peers())
    print('| benchmark | items per ns |\n|---|---|')
    for k in sorted(rate):
        print(f'| {k} | {rate[k]:.4f} |')
    print()
    print('| ours | peer | ratio |\n|---|---|---|')
    pairs = []
    for d in (1, 8, 40):
        pairs += [(f'sobol/orv/{d}', f'sobol/gsl/{d}'), (f'sobol/orv/{d}', f'sobol/scipy/{d}')]
    for d in (1, 8, 12):
        pairs.append((f'niederr/orv/{d}', f'niederr/gsl/{d}'))
    for kind in ('words', 'doubles'):
        pairs += [(f'philox_{kind}/orv', f'philox_{kind}/random123'), (f'philox_{kind}/orv', f'philox_{kind}/numpy')]
    for a, b in pairs:
        if a in rate and b in rate:
            print(f'| {a} | {b} | {rate[a] / rate[b]:.1f} |')


if __name__ == '__main__':
    main()
