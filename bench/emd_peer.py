#!/usr/bin/python3
"""NumPy/SciPy peer of bench/emd_bench.cpp: the same four tones at 1e5 and 1e6 points
and the same sifting (extremes over three-point windows, the two nearest extremes
mirrored about each end, scipy.interpolate.CubicSpline not-a-knot envelopes, the
two-threshold stopping test against the average amplitude, at most ten subtractions,
at most 10 IMFs). Prints the total time, the IMFs found and the time per IMF (median of
three runs at 1e5, one run at 1e6), in CPU time of the process (time.process_time), as
the benchmark's own CPU column. No Debian package offers a decomposition.
"""
import statistics
import time
import timeit

import numpy as np
import scipy
from scipy.interpolate import CubicSpline

SIZES = (100000, 1000000)


def four_tones(n):
    i = np.arange(n, dtype=float)
    y = np.zeros(n)
    for k, (p, a) in enumerate(((40, 1.0), (370, 0.8), (3100, 0.6), (29000, 0.5))):
        y += a * np.sin(2 * np.pi * i / p + 0.5 * k)
    return y


def extremes(y):
    left, mid, right = y[:-2], y[1:-1], y[2:]
    return (np.flatnonzero((mid > left) & (mid >= right)) + 1,
            np.flatnonzero((mid < left) & (mid <= right)) + 1)


def envelope(x, y, idx):
    k = min(len(idx), 2)
    head, tail = idx[:k], idx[::-1][:k]
    nx = np.concatenate((2 * x[0] - x[head][::-1], x[idx], 2 * x[-1] - x[tail]))
    ny = np.concatenate((y[head][::-1], y[idx], y[tail]))
    return CubicSpline(nx, ny)(x)


def sift(x, y, t1, t2, tol):
    h = y.copy()
    for subtraction in range(11):
        mx, mn = extremes(h)
        if len(mx) == 0 or len(mn) == 0:
            return None
        upper, lower = envelope(x, h, mx), envelope(x, h, mn)
        mean, amp = 0.5 * (upper + lower), 0.5 * (upper - lower)
        s = np.sign(h)
        nzero = np.count_nonzero(s == 0) + np.count_nonzero(s[:-1] * s[1:] < 0)
        sigma = np.abs(mean) / np.mean(np.abs(amp))
        done = (not np.any(sigma > t2) and abs(len(mx) + len(mn) - nzero) < 2
                and np.count_nonzero(sigma > t1) / len(y) <= tol)
        if done or subtraction == 10:
            return h
        h = h - mean


def decompose(x, y, max_imf=10):
    r = y.copy()
    imfs = []
    while np.max(np.abs(r)) >= 1e-10 and len(imfs) < max_imf:
        mx, mn = extremes(r)
        if len(mx) < 2 or len(mn) < 2:
            break
        imf = sift(x, r, 0.05, 0.5, 0.05)
        if imf is None:
            break
        imfs.append(imf)
        r = r - imf
    return imfs, r


def main():
    print(f"NumPy {np.__version__}, SciPy {scipy.__version__}")
    print(f"{'Benchmark':<44}{'Time':>12}{'IMFs':>6}{'per IMF':>14}")
    for n in SIZES:
        x = np.arange(n, dtype=float)
        y = four_tones(n)
        count = len(decompose(x, y)[0])
        repeat = 1 if n >= 1000000 else 3
        t = statistics.median(timeit.repeat(lambda: decompose(x, y), number=1, repeat=repeat,
                                            timer=time.process_time))
        print(f"{'numpy_empirical_mode_decomposition/' + str(n):<44}{t * 1e3:>9.0f} ms"
              f"{count:>6}{t / count * 1e3:>11.1f} ms")


if __name__ == "__main__":
    main()
