#!/usr/bin/python3
"""NumPy peer of sort_bench: numpy.argsort(kind='stable') of uniform random doubles, and
numpy.searchsorted of 1e6 random targets into sorted arrays of 1e6 and 1e7 doubles.
Best of several runs, milliseconds of wall time and of process CPU time (the latter is
what to compare with Google Benchmark's CPU column on a shared machine)."""
import time

import numpy as np


def best(fn, repeats):
    wall, cpu = [], []
    for _ in range(repeats):
        start, start_cpu = time.perf_counter(), time.process_time()
        fn()
        wall.append(time.perf_counter() - start)
        cpu.append(time.process_time() - start_cpu)
    return "%10.2f ms wall %10.2f ms cpu" % (min(wall) * 1e3, min(cpu) * 1e3)


rng = np.random.default_rng(42)
print("numpy", np.__version__)
for n in (10_000, 100_000, 1_000_000, 10_000_000):
    x = rng.random(n)
    print(f"argsort_stable/{n:<10d} " + best(lambda: np.argsort(x, kind="stable"),
                                              3 if n >= 10_000_000 else 7))
targets = rng.random(1_000_000)
for n in (1_000_000, 10_000_000):
    x = np.sort(rng.random(n))
    print(f"searchsorted/{n:<10d}   " + best(lambda: np.searchsorted(x, targets, side="right"), 5)
          + "  (1e6 targets)")
