"""Smoothing filters over a sine plus standard normal noise, against the SciPy/NumPy call
that gives the same output (compared after the warm-up):

  Savitzky-Golay 51/3, end fits (mode 0)   scipy.signal.savgol_filter(x, 51, 3) ('interp')
  Savitzky-Golay 51/3, mirror (mode 1)     ndimage.correlate1d with the savgol coefficients,
                                           mode 'reflect' (x[-1-k] = x[k], our mirror)
  adjacent average 51, mirror              ndimage.uniform_filter1d(51, mode='reflect')
  median 11 / 51 / 201, mirror             ndimage.median_filter(size, mode='reflect')
  binomial, 10 passes, end value           10 x ndimage.correlate1d([1, 2, 1] / 4, 'nearest')
  FFT low-pass near a tenth of Nyquist     numpy.fft.rfft, zero the bins at and above the
                                           cutoff, irfft
  loess, degree 1, robust (method 2)       statsmodels lowess(frac, it=3, delta=0): the
                                           same neighbourhood of frac n nearest points,
                                           tricube and three bisquare iterations
Time budget: the loess rows at 1e4 and 1e5 only, with 1000-point neighbourhoods (lowess
takes about half a minute per call at 1e5 and would take many minutes at 1e6, so that row
is timed by one call per side); at 1e7 only the Savitzky-Golay and adjacent-average rows; the median filter
at window 201 only at 1e4 (SciPy's per-window selection takes seconds per call beyond).
"""
import ctypes

import numpy as np
from scipy import ndimage, signal
from statsmodels.nonparametric.smoothers_lowess import lowess

from runner import VP, Row, c_bool, c_double, c_int, close, export, ptr, rng

FAMILY = "smoothing"


def cutoff(n):
    """Halfway between two bins near a tenth of Nyquist, so that rounding cannot put the
    edge bin on different sides: bin k is k (n - 1) / n cycles per unit (step 1 / (n - 1))."""
    return (n // 20 + 0.5) * (n - 1) / n


def lowpass(x):
    n = x.size
    spectrum = np.fft.rfft(x)
    freq = np.arange(spectrum.size) * (n - 1) / n
    spectrum[freq >= cutoff(n)] = 0.0
    return np.fft.irfft(spectrum, n)


def rows():
    savgol = export("zemath_savitsky_golay", c_int, [VP, VP, c_int] + [c_int] * 5)
    adjave = export("zemath_adjave_smooth", c_int, [VP, VP, c_int, c_int, c_int, c_bool])
    median = export("zemath_median_filter", c_int,
                    [c_int, VP, VP, c_int, c_double, c_int, c_bool])
    binomial = export("zemath_binomial_smooth", c_int, [c_int, VP, VP, c_int, c_int])
    fft_lowpass = export("zemsp_fft_filter_smoothing", c_int, [c_int, VP, VP, c_double])
    loess = export("zemath_loess_xUnevenly", c_int,
                   [c_int, c_int, c_int, VP, VP, VP, VP, c_bool])
    coeffs = signal.savgol_coeffs(51, 3, use="dot")
    kernel = np.array([0.25, 0.5, 0.25])
    g = rng(FAMILY)
    for n in (10_000, 1_000_000, 10_000_000):
        label = f"{n:.0e}".replace("+0", "")
        x = np.sin(np.arange(n) * 1e-3) + g.standard_normal(n)
        out = np.empty(n)
        p, q = ptr(x), ptr(out)
        big = n >= 10_000_000
        rounds = 3 if big else 5

        def binomial_peer():
            y = x
            for _ in range(10):
                y = ndimage.correlate1d(y, kernel, mode="nearest")
            return y

        yield Row(FAMILY, "savitsky_golay 51/3 end fits", label,
                  lambda: (savgol(p, q, n, 25, 25, 3, 0, 0), out)[1],
                  lambda: signal.savgol_filter(x, 51, 3), "peer: savgol_filter (mode 'interp')",
                  rounds=rounds, check=close(1e-9, atol=1e-12))
        yield Row(FAMILY, "savitsky_golay 51/3 mirror", label,
                  lambda: (savgol(p, q, n, 25, 25, 3, 0, 1), out)[1],
                  lambda: ndimage.correlate1d(x, coeffs, mode="reflect"),
                  "peer: correlate1d(savgol_coeffs, 'reflect')", rounds=rounds,
                  check=close(1e-9, atol=1e-12))
        yield Row(FAMILY, "adjave_smooth 51 mirror", label,
                  lambda: (adjave(p, q, n, 25, 1, False), out)[1],
                  lambda: ndimage.uniform_filter1d(x, 51, mode="reflect"),
                  "peer: uniform_filter1d('reflect'); ours also skips NANUM", rounds=rounds,
                  check=close(1e-9, atol=1e-12))
        if big:
            continue
        yield Row(FAMILY, "binomial_smooth 10 passes", label,
                  lambda: (binomial(n, p, q, 2, 10), out)[1], binomial_peer,
                  "peer: 10 x correlate1d([1,2,1]/4, 'nearest')", rounds=rounds,
                  check=close(1e-9, atol=1e-12))
        yield Row(FAMILY, "fft_filter_smoothing (low-pass)", label,
                  lambda: (fft_lowpass(n, p, q, cutoff(n)), out)[1], lambda: lowpass(x),
                  "peer: np.fft.rfft, zero bins, irfft", rounds=rounds,
                  check=close(1e-6, atol=1e-9))
        for half in (5, 25, 100) if n < 1_000_000 else (5, 25):
            yield Row(FAMILY, f"median_filter {2 * half + 1} mirror", label,
                      lambda half=half: (median(n, p, q, half, 50.0, 1, False), out)[1],
                      lambda half=half: ndimage.median_filter(x, size=2 * half + 1,
                                                              mode="reflect"),
                      "peer: ndimage.median_filter('reflect'); ours also skips NANUM",
                      rounds=3 if n >= 1_000_000 else 5, check=close(1e-12))
    for n in (10_000, 100_000):
        label = f"{n:.0e}".replace("+0", "")
        x = np.sort(g.uniform(0.0, 10.0, n))
        y = np.sin(x) + 0.3 * g.standard_normal(n)
        out = np.empty(n)
        frac = 1000 / n  # frac n is whole: both sides take the same 1000 points
        span = c_double(frac)

        def ours(x=x, y=y, out=out, n=n, frac=frac, span=span):
            span.value = frac
            loess(n, 2, 0, ctypes.byref(span), ptr(x), ptr(y), ptr(out), False)
            return out

        yield Row(FAMILY, "loess degree 1 robust, 1000 points", label, ours,
                  lambda x=x, y=y, frac=frac: lowess(y, x, frac=frac, it=3, delta=0.0,
                                                     is_sorted=True, return_sorted=False),
                  "peer: statsmodels lowess(it=3, delta=0)", rounds=3,
                  single=n >= 100_000, check=close(1e-9, atol=1e-12))
