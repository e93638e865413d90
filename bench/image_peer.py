#!/usr/bin/python3
"""SciPy peer of bench/image_bench.cpp: scipy.ndimage.percentile_filter (50%) and
scipy.ndimage.median_filter on the same 2048 x 2048 uint16 image sizes (uniform random
pixels) with square windows of side 3, 15 and 51, one run each (SciPy takes seconds
to minutes; 51 is timed on a 512 x 512 corner and scaled by 16). Reduction of 1e7 standard normal points by groups of 10 and 1000:
y.reshape(-1, g).mean / max / numpy.median along axis 1 (no missing-value handling).
Times are processor time (compare with the CPU column of image_bench).
"""
import statistics
import time

import numpy as np
import scipy
from scipy import ndimage


def timed(fn, repeat):
    times = []
    for _ in range(repeat):
        # Processor time of this process, as the C++ benchmark's CPU column: the ratio
        # stays meaningful on a machine shared with other work.
        t = time.process_time()
        fn()
        times.append(time.process_time() - t)
    return statistics.median(times) * 1e3


def reductions(rng):
    y = rng.standard_normal(10_000_000)
    for group in (10, 1000):
        r = y.reshape(-1, group)
        for name, fn in (("mean", lambda: r.mean(axis=1)), ("max", lambda: r.max(axis=1)),
                         ("median", lambda: np.median(r, axis=1))):
            ms = timed(fn, 3)
            print(f"numpy_reduce_{name}/{group:<8}{ms:>12.1f} ms")


def main():
    rng = np.random.default_rng(20241123)
    reductions(rng)
    image = rng.integers(0, 65536, size=(2048, 2048), dtype=np.uint16)
    print(f"SciPy {scipy.__version__}")
    for side in (3, 15, 51):
        # SciPy selects per window (cost ~ side^2): the 51 x 51 run is timed on the
        # 512 x 512 corner and scaled by the pixel count (x16).
        part, scale = (image, 1) if side < 51 else (image[:512, :512], 16)
        ms = timed(lambda: ndimage.percentile_filter(part, 50, size=side), 1) * scale
        print(f"scipy_percentile_filter/{side:<4}{ms:>12.1f} ms{'  (512x512 x16)' if scale > 1 else ''}")
        ms = timed(lambda: ndimage.median_filter(part, size=side), 1) * scale
        print(f"scipy_median_filter/{side:<8}{ms:>12.1f} ms{'  (512x512 x16)' if scale > 1 else ''}")


if __name__ == "__main__":
    main()
