#!/usr/bin/python3
"""NumPy peer of bench/rainflow_bench.cpp: the same sizes and load distribution
(standard normal, no ties), the same four-point rule. Turning points are found with
NumPy (sign changes of the differences); the four-point stack runs over them in Python,
the residue steps become half cycles, and ranges and means are formed with NumPy.
No Debian package offers a rainflow counter, so this is the peer. Timed with timeit
(median of the repeats; a single run at 1e7 points).
"""
import statistics
import timeit

import numpy as np

SIZES = (1000, 10000, 100000, 1000000, 10000000)


def turning_points(y):
    d = np.diff(y)
    keep = np.empty(len(y), dtype=bool)
    keep[0] = keep[-1] = True
    keep[1:-1] = d[:-1] * d[1:] < 0
    return np.flatnonzero(keep)


def rainflow(y):
    idx = turning_points(y)
    v = y[idx].tolist()
    stack, cf, ct = [], [], []
    for k, x in enumerate(v):
        stack.append(k)
        while len(stack) >= 4:
            a, b, c, d = v[stack[-4]], v[stack[-3]], v[stack[-2]], v[stack[-1]]
            if min(b, c) >= min(a, d) and max(b, c) <= max(a, d):
                cf.append(stack[-3])
                ct.append(stack[-2])
                del stack[-3:-1]
            else:
                break
    closed = len(cf)
    cf.extend(stack[:-1])
    ct.extend(stack[1:])
    f, t = idx[np.array(cf, dtype=np.int64)], idx[np.array(ct, dtype=np.int64)]
    count = np.where(np.arange(len(f)) < closed, 1.0, 0.5)
    return f, t, np.abs(y[t] - y[f]), 0.5 * (y[f] + y[t]), count


def main():
    print(f"NumPy {np.__version__}")
    print(f"{'Benchmark':<40}{'Time':>14}{'items_per_second':>20}")
    for n in SIZES:
        y = np.random.default_rng(20261123).standard_normal(n)
        repeat = 1 if n >= 10000000 else 5
        number = max(1, int(1e5 // n))
        t = statistics.median(timeit.repeat(lambda: rainflow(y), number=number,
                                            repeat=repeat)) / number
        print(f"{'numpy_rainflow_cycles/' + str(n):<40}{t * 1e3:>11.2f} ms{n / t / 1e6:>15.2f} M/s")


if __name__ == "__main__":
    main()
