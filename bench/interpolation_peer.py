#!/usr/bin/python3
"""SciPy/NumPy peer of bench/interpolation_bench.cpp: the same sizes and data (uneven
ascending x, y = sin(x) + noise, as many new x as points, uniform over the range; sorted,
and shuffled for numpy.interp). Each timing builds the interpolant and evaluates it.
Timed with timeit, median of the repeats (one run at 1e7 points).
"""
import statistics
import timeit

import numpy as np
from scipy.interpolate import Akima1DInterpolator, CubicSpline, PchipInterpolator

SIZES = (10000, 1000000, 10000000)


def main():
    print(f"NumPy {np.__version__}")
    print(f"{'Benchmark':<44}{'Time':>14}{'items_per_second':>20}")
    for n in SIZES:
        rng = np.random.default_rng(20261123)
        x = np.cumsum(rng.uniform(0.2, 1.5, n))
        y = np.sin(x) + rng.normal(0, 0.1, n)
        shuffled = x[0] + rng.uniform(0, 1, n) * (x[-1] - x[0])
        t = np.sort(shuffled)
        cases = [
            ("numpy_interp", lambda: np.interp(t, x, y)),
            ("numpy_interp_unsorted", lambda: np.interp(shuffled, x, y)),
            ("CubicSpline_natural", lambda: CubicSpline(x, y, bc_type="natural")(t)),
            ("CubicSpline_not_a_knot", lambda: CubicSpline(x, y, bc_type="not-a-knot")(t)),
            ("Akima1DInterpolator", lambda: Akima1DInterpolator(x, y)(t)),
            ("PchipInterpolator", lambda: PchipInterpolator(x, y)(t)),
        ]
        repeat = 1 if n >= 10000000 else 5
        for name, fn in cases:
            sec = statistics.median(timeit.repeat(fn, number=1, repeat=repeat))
            print(f"{name + '/' + str(n):<44}{sec * 1e3:>11.2f} ms{n / sec / 1e6:>15.2f} M/s")


if __name__ == "__main__":
    main()
