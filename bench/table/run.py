#!/usr/bin/python3
"""The benchmark table: our exports (libzemath through ctypes) beside NumPy/SciPy peers,
in one process, taking turns. One module per family (families/<family>.py) supplies its rows.

    /usr/bin/python3 bench/table/run.py [family ...]

Columns: our wall time (minimum and median over the rounds) and CPU time (median), the
same for the peer, then the ratios ours / peer of the wall minima, of the wall medians and
of the CPU medians (below 1: we are faster), and a note saying what the peer does
differently when its work is not the same as ours.
"""
import ctypes
import datetime
import importlib
import os
import platform
import sys
import time

import numpy as np
import scipy

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import runner  # noqa: E402

FAMILIES = ("primitives", "sort", "search", "random", "distributions", "statistics",
            "smoothing", "peaks", "interpolation", "rainflow", "emd", "gridding", "image",
            "quadrature",
            "special")


def call_overhead():
    """Wall time of one ctypes call into the library that does no work (zemath_d_sum with
    n = 0), with arguments formed as the rows form them."""
    f = runner.export("zemath_d_sum", ctypes.c_double, [runner.VP, ctypes.c_int] + [runner.VP] * 5)
    a = np.zeros(1)
    p = runner.ptr(a)
    best = float("inf")
    for _ in range(5):
        t = time.perf_counter()
        for _ in range(10000):
            f(p, 0, None, None, None, None, None)
        best = min(best, (time.perf_counter() - t) / 10000)
    return best


def main():
    chosen = sys.argv[1:] or FAMILIES
    unknown = [f for f in chosen if f not in FAMILIES]
    if unknown:
        sys.exit(f"unknown family: {', '.join(unknown)} (known: {', '.join(FAMILIES)})")
    start = time.perf_counter()
    with open("/proc/loadavg") as f:
        load_before = f.read().split()[:3]
    print(f"zeMath benchmark table, {datetime.datetime.now(datetime.timezone.utc):%Y-%m-%d %H:%M} UTC, "
          f"{platform.processor() or platform.machine()}, {os.cpu_count()} cpus; "
          f"NumPy {np.__version__}, SciPy {scipy.__version__}")
    print(f"load average before: {' '.join(load_before)}; ctypes call overhead "
          f"{call_overhead() * 1e6:.2f} us per call (included in our times)")
    print("ratios are ours / peer (< 1: we are faster): min = of the wall minima, "
          "med = of the wall medians, cpu = of the CPU medians")
    print(runner.HEADER)
    for family in chosen:
        module = importlib.import_module(f"families.{family}")
        runner.run_family(family, module.rows)
    with open("/proc/loadavg") as f:
        load_after = f.read().split()[:3]
    print(f"load average after: {' '.join(load_after)}; "
          f"total {time.perf_counter() - start:.0f} s")


if __name__ == "__main__":
    main()
