#!/usr/bin/python3
"""SciPy peer of bench/peaks_bench.cpp: the same sizes and curve (evenly spaced x,
y = sin(x/7) + 0.5 sin(x/53) + noise). scipy.signal.argrelmax with order 5 and 50 against
the local-maximum detector; scipy.signal.find_peaks with distance 11 and 101 against the
search-window detector. Timed with timeit, median of the repeats (one run at 1e7 points).
"""
import statistics
import timeit

import numpy as np
import scipy
from scipy.signal import argrelmax, find_peaks

SIZES = (10000, 1000000, 10000000)


def main():
    print(f"SciPy {scipy.__version__}")
    print(f"{'Benchmark':<44}{'Time':>14}{'items_per_second':>20}")
    for n in SIZES:
        rng = np.random.default_rng(20261123)
        i = np.arange(n, dtype=float)
        y = np.sin(i / 7.0) + 0.5 * np.sin(i / 53.0) + rng.normal(0, 0.1, n)
        cases = [
            ("argrelmax_order5", lambda: argrelmax(y, order=5)),
            ("argrelmax_order50", lambda: argrelmax(y, order=50)),
            ("find_peaks_distance11", lambda: find_peaks(y, distance=11)),
            ("find_peaks_distance101", lambda: find_peaks(y, distance=101)),
        ]
        repeat = 1 if n >= 10000000 else 5
        for name, fn in cases:
            sec = statistics.median(timeit.repeat(fn, number=1, repeat=repeat))
            print(f"{name + '/' + str(n):<44}{sec * 1e3:>11.2f} ms{n / sec / 1e6:>15.2f} M/s")


if __name__ == "__main__":
    main()
