#!/usr/bin/python3
"""SciPy peer of bench/gridding_bench.cpp, on the same kinds of data (its own random
draws; uniform points in the unit square and a sqrt(n) grid perturbed by 1e-3 of a
cell), timed with timeit on process CPU time (median of repeats, one call per repeat).

  triangulation   scipy.spatial.Delaunay (Qhull, "Qbb Qc Qz Q12 Qt")
  examine         numpy.unique over x, over y and over the (x, y) rows: the distinct
                  values and points an examination starts from (a lower bound of the
                  work; NumPy has no grid examination)
  duplicates      numpy.unique(rows, return_inverse) + numpy.bincount mean of z
  kriging         scipy.interpolate.RBFInterpolator (neighbors=64, kernel
                  "thin_plate_spline") from 1e4 points onto a 500 x 500 grid; the
                  nearest comparable peer (SciPy has no kriging)
"""
import statistics
import sys
import time
import timeit

import numpy as np
from scipy.interpolate import RBFInterpolator
from scipy.spatial import Delaunay


def cloud(n, kind, rng):
    if kind == 0:
        return rng.random(n), rng.random(n)
    side = int(np.sqrt(n))
    i = np.arange(n)
    x = ((i % side) + 1e-3 * (rng.random(n) - 0.5)) / side
    y = ((i // side) + 1e-3 * (rng.random(n) - 0.5)) / side
    return x, y


def median_ms(fn, repeat):
    # CPU time of the process, comparable with Google Benchmark's CPU column on a shared
    # machine where wall time depends on the other jobs.
    timer = timeit.Timer(fn, timer=time.process_time)
    return statistics.median(timer.repeat(number=1, repeat=repeat)) * 1e3


def main():
    rng = np.random.default_rng(20261123)
    quick = "--quick" in sys.argv
    print(f"SciPy peer (NumPy {np.__version__})")
    print(f"{'Benchmark':<58}{'Time ms':>12}{'items/s':>14}")
    for n in (100000, 1000000):
        for kind in (0, 1):
            x, y = cloud(n, kind, rng)
            pts = np.column_stack([x, y])
            ms = median_ms(lambda: Delaunay(pts), 1 if n > 100000 else 3)
            print(f"{'scipy_delaunay/n:%d/perturbed_grid:%d' % (n, kind):<58}{ms:>12.1f}{n / ms * 1e3:>14.4g}")
    n = 1000000
    x, y = cloud(n, 1, rng)
    z = np.sin(6 * x) * np.cos(4 * y)
    ms = median_ms(lambda: (np.unique(x), np.unique(y), np.unique(np.column_stack([x, y]), axis=0)), 3)
    print(f"{'numpy_examine(unique x, y, rows)/1000000':<58}{ms:>12.1f}{n / ms * 1e3:>14.4g}")
    i = np.arange(n)
    dx, dy, dz = ((i // 2) % 1000).astype(float), ((i // 2) // 1000).astype(float), i.astype(float)

    def merge():
        rows, inverse = np.unique(np.column_stack([dx, dy]), axis=0, return_inverse=True)
        inverse = inverse.reshape(-1)
        return rows, np.bincount(inverse, dz) / np.bincount(inverse)

    ms = median_ms(merge, 3)
    print(f"{'numpy_remove_duplicates(unique rows + bincount)/1000000':<58}{ms:>12.1f}{n / ms * 1e3:>14.4g}")
    if not quick:
        x, y = rng.random(10000), rng.random(10000)
        z = np.sin(6 * x) * np.cos(4 * y)
        g = (np.arange(500) + 0.5) / 500
        gx, gy = np.meshgrid(g, g)
        targets = np.column_stack([gx.ravel(), gy.ravel()])
        rbf = RBFInterpolator(np.column_stack([x, y]), z, neighbors=64)
        ms = median_ms(lambda: rbf(targets), 1)
        print(f"{'scipy_rbf(neighbors=64) 500x500 from 1e4':<58}{ms:>12.1f}{250000 / ms * 1e3:>14.4g}")


if __name__ == "__main__":
    main()
