#!/usr/bin/python3
"""NumPy peer of sort_bench: numpy.argsort(kind='stable') of uniform random doubles, and
numpy.searchsorted of 1e6 random targets into sorted arrays of 1e6 and 1e7 doubles.
Best of several runs, milliseconds."""
import time

import numpy as np


def best(fn, repeats):
    times = []
    for _ in range(repeats):
        start = time.perf_counter()
        fn()
        times.append(time.perf_counter() - start)
    return min(times) * 1e3


rng = np.random.default_rng(42)
print("numpy", np.__version__)
for n in (10_000, 100_000, 1_000_000, 10_000_000):
    x = rng.random(n)
    ms = best(lambda: np.argsort(x, kind="stable"), 3 if n >= 10_000_000 else 7)
    print(f"argsort_stable/{n:<10d} {ms:10.2f} ms")
targets = rng.random(1_000_000)
for n in (1_000_000, 10_000_000):
    x = np.sort(rng.random(n))
    ms = best(lambda: np.searchsorted(x, targets, side="right"), 5)
    print(f"searchsorted/{n:<10d}   {ms:10.2f} ms  (1e6 targets)")
