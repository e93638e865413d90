#!/usr/bin/python3
"""NumPy peer of bench/primitives_bench.cpp: the same sizes and element type (float64
standard normal data, no missing values), timed with timeit (median of 7 repeats, as the
C++ benchmark reports the median of 7 repetitions). Bytes processed = 8 per point per
call, as in the C++ benchmark.

  minmax        np.argmin + np.argmax (indices, as zemath_d_minmax), and
                np.nanmin + np.nanmax (values, NaN-skipping)
  sum           np.nansum + np.nanargmin + np.nanargmax (sum, min and max positions)
  mean_variance np.mean + np.var(ddof=1)
"""
import statistics
import timeit

import numpy as np

SIZES = (1000, 100000, 10000000)


def median_ns(fn, n):
    number = max(1, int(2e7 // n))
    return statistics.median(timeit.repeat(fn, number=number, repeat=7)) / number * 1e9


def main():
    rng = np.random.default_rng(20240611)
    print(f"NumPy {np.__version__}")
    print(f"{'Benchmark':<46}{'Time':>14}{'bytes_per_second':>20}")
    cases = [
        ("numpy_minmax(argmin+argmax)", lambda a: (np.argmin(a), np.argmax(a))),
        ("numpy_minmax(nanmin+nanmax)", lambda a: (np.nanmin(a), np.nanmax(a))),
        ("numpy_sum(nansum+nanargmin+nanargmax)",
         lambda a: (np.nansum(a), np.nanargmin(a), np.nanargmax(a))),
        ("numpy_mean_variance(mean+var ddof=1)", lambda a: (np.mean(a), np.var(a, ddof=1))),
    ]
    data = {n: rng.standard_normal(n) for n in SIZES}
    for name, fn in cases:
        for n in SIZES:
            a = data[n]
            ns = median_ns(lambda: fn(a), n)
            print(f"{name + '/' + str(n):<46}{ns:>11.0f} ns{n * 8 / ns:>15.2f} GB/s")


if __name__ == "__main__":
    main()
