#!/usr/bin/python3
"""NumPy peer of bench/random_bench.cpp: numpy.random.default_rng() (PCG64) drawing the
same laws with the same parameters at 1e7 samples; prints samples per CPU second (as the
benchmark reports), best of a few repeats.

    normal(0, 1); gamma(shape 2.5 and 0.5, scale 1); binomial(20 and 1000 trials, p 0.3)

Normal and gamma write into a preallocated array (out=), as the library writes into the
caller's buffer; binomial has no out= form and allocates its result.
"""
import time

import numpy as np

COUNT = 10_000_000
REPEATS = 5


def best_rate(draw):
    best = float("inf")
    for _ in range(REPEATS):
        start = time.process_time()
        draw()
        best = min(best, time.process_time() - start)
    return COUNT / best


def main():
    rng = np.random.default_rng()
    out = np.empty(COUNT)
    cases = [
        ("normal(0, 1)", lambda: rng.standard_normal(COUNT, out=out)),
        ("gamma(2.5, 1)", lambda: rng.standard_gamma(2.5, COUNT, out=out)),
        ("gamma(0.5, 1)", lambda: rng.standard_gamma(0.5, COUNT, out=out)),
        ("binomial(20, 0.3)", lambda: rng.binomial(20, 0.3, COUNT)),
        ("binomial(1000, 0.3)", lambda: rng.binomial(1000, 0.3, COUNT)),
    ]
    print(f"numpy {np.__version__}, default_rng, {COUNT:.0e} samples, best of {REPEATS}")
    for name, draw in cases:
        print(f"{name:22s} {best_rate(draw) / 1e6:8.1f} M samples/s")


if __name__ == "__main__":
    main()
