#!/usr/bin/python3
"""NumPy/SciPy peer of bench/statistics_bench.cpp on the same kind of data (normal, mean
3, sd 2, no missing values), timed with timeit (median of 5 repeats):

  desc_stats       np.mean + np.std(ddof=1) + scipy.stats.skew + scipy.stats.kurtosis
  percentiles_3    np.percentile(a, [25, 50, 75], method='interpolated_inverted_cdf')
  percentiles_100  the same with 100 percents
  shapiro_wilk     scipy.stats.shapiro at n = 5000
"""
import statistics
import time
import timeit

import numpy as np
from scipy import stats

SIZES = (1000, 100000, 10000000)


def median_us(fn, n):
    number = max(1, int(2e6 // n))
    return statistics.median(timeit.repeat(fn, number=number, repeat=5, timer=time.process_time)) / number * 1e6


def main():
    rng = np.random.default_rng(20261123)
    data = {n: rng.normal(3.0, 2.0, n) for n in SIZES}
    p100 = np.arange(100) + 0.5
    cases = [
        ("desc_stats(mean+std+skew+kurtosis)",
         lambda a: (np.mean(a), np.std(a, ddof=1), stats.skew(a, bias=False), stats.kurtosis(a, bias=False))),
        ("percentiles_3", lambda a: np.percentile(a, [25, 50, 75], method="interpolated_inverted_cdf")),
        ("percentiles_100", lambda a: np.percentile(a, p100, method="interpolated_inverted_cdf")),
    ]
    print(f"NumPy {np.__version__}, SciPy {__import__('scipy').__version__}")
    for name, fn in cases:
        for n in SIZES:
            a = data[n]
            print(f"{name + '/' + str(n):<48}{median_us(lambda: fn(a), n):>12.1f} us")
    x = rng.normal(3.0, 2.0, 5000)
    print(f"{'shapiro_wilk/5000':<48}{median_us(lambda: stats.shapiro(x), 5000):>12.1f} us")


if __name__ == "__main__":
    main()
