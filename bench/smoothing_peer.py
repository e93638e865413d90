#!/usr/bin/python3
"""SciPy/NumPy peer of bench/smoothing_bench.cpp: the same sizes and data recipe (a sine
plus standard normal noise), timed with timeit in process CPU time (median of the repeats; fewer repeats at
1e7 points, where one median filter of window 201 takes seconds).

  savgol_51_3_interp   scipy.signal.savgol_filter(x, 51, 3)            (mode 'interp')
  savgol_51_3_mirror   scipy.signal.savgol_filter(x, 51, 3, mode='nearest' is not a mirror;
                       'mirror' skips the end point, so ndimage.correlate1d with the
                       coefficients and mode 'reflect' is the like-for-like peer)
  uniform_51_reflect   scipy.ndimage.uniform_filter1d(x, 51, mode='reflect')
  median_W             scipy.ndimage.median_filter(x, size=W, mode='reflect'), W = 11, 51, 201
  rfft_lowpass         numpy.fft.rfft, zero the bins above a tenth of Nyquist, irfft
No local-regression peer is installed (statsmodels is not among the Debian packages in
use), so loess has no ratio.
"""
import statistics
import time
import timeit

import numpy as np
from scipy import ndimage, signal

SIZES = (10000, 1000000, 10000000)


def median_ms(fn, n, slow=False):
    repeat = (1 if slow else 3) if n >= 10000000 else (3 if slow else 7)
    number = max(1, int(2e6 // n)) if not slow else 1
    return statistics.median(timeit.repeat(fn, number=number, repeat=repeat, timer=time.process_time)) / number * 1e3


def lowpass(x):
    n = x.size
    spectrum = np.fft.rfft(x)
    freq = np.arange(spectrum.size) * (n - 1) / n
    spectrum[freq >= (n - 1) / 20.0] = 0.0
    return np.fft.irfft(spectrum, n)


def main():
    rng = np.random.default_rng(20261123)
    print(f"NumPy {np.__version__}, SciPy {__import__('scipy').__version__}")
    coeffs = signal.savgol_coeffs(51, 3, use="dot")
    cases = [
        ("savgol_51_3_interp", lambda a: signal.savgol_filter(a, 51, 3), False),
        ("savgol_51_3_correlate_reflect",
         lambda a: ndimage.correlate1d(a, coeffs, mode="reflect"), False),
        ("uniform_51_reflect", lambda a: ndimage.uniform_filter1d(a, 51, mode="reflect"), False),
        ("rfft_lowpass", lowpass, False),
        ("median_11", lambda a: ndimage.median_filter(a, size=11, mode="reflect"), False),
        ("median_51", lambda a: ndimage.median_filter(a, size=51, mode="reflect"), True),
        ("median_201", lambda a: ndimage.median_filter(a, size=201, mode="reflect"), True),
    ]
    data = {n: np.sin(np.arange(n) * 1e-3) + rng.standard_normal(n) for n in SIZES}
    print(f"{'Benchmark':<40}{'Time':>14}")
    for name, fn, slow in cases:
        for n in SIZES:
            a = data[n]
            ms = median_ms(lambda: fn(a), n, slow)
            print(f"{name + '/' + str(n):<40}{ms:>11.3f} ms", flush=True)


if __name__ == "__main__":
    main()
