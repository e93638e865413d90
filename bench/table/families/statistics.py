"""Descriptive statistics of normal data (mean 3, sd 2, no missing values): the moments
(mean, SD, skewness, kurtosis), the full descriptive record at 1e7 (beside the NumPy/SciPy
moments, minimum, maximum and sum, and once more with scipy.stats.mode added), percentiles by the rule aimed at n p (NumPy's
'interpolated_inverted_cdf') with 3 and 100 percents (3 only at 1e7), and the Shapiro-Wilk test at 5000.
"""
import ctypes

import numpy as np
from scipy import stats

from runner import VP, Row, c_double, c_int, c_uint, close, export, ptr, rng

FAMILY = "statistics"


class DescStatResults(ctypes.Structure):
    _fields_ = [("N", ctypes.c_int), ("Missing", ctypes.c_int)] + [
        (name, ctypes.c_double) for name in (
            "Mean", "SD", "SEM", "LCL", "UCL", "Variance", "Sum", "Skewness", "Kurtosis",
            "UncorSumSq", "CorSumSq", "COV", "MAD", "SDx2", "SDx3", "GeoMean", "GeoSD", "Mode",
            "WeightSum")]


class ShapiroWilkResults(ctypes.Structure):
    _fields_ = [("N", ctypes.c_int), ("W", ctypes.c_double), ("P", ctypes.c_double)]


def rows():
    summary = export("zemath_basic_summary_stats", c_int, [c_int, VP] + [VP] * 15 + [c_int, VP])
    desc = export("zemath_desc_stats", c_int,
                  [VP, c_uint, ctypes.POINTER(DescStatResults), VP, c_double, c_int])
    percentiles = export("zemath_percentiles", c_int, [VP, c_int, VP, c_int, VP, c_int, VP])
    shapiro = export("zemath_shapiro_wilk_test", c_int,
                     [c_uint, VP, ctypes.POINTER(ShapiroWilkResults), c_int])
    g = rng(FAMILY)
    mean, sd, skew, kurt = c_double(), c_double(), c_double(), c_double()
    r_mean, r_sd, r_skew, r_kurt = map(ctypes.byref, (mean, sd, skew, kurt))
    for n in (10_000, 1_000_000, 10_000_000):
        label = f"{n:.0e}".replace("+0", "")
        a = g.normal(3.0, 2.0, n)
        p = ptr(a)

        def ours_moments():
            summary(n, p, None, r_mean, r_sd, None, None, None, r_skew, r_kurt, None, None,
                    None, None, None, None, None, 0, None)
            return np.array([mean.value, sd.value, skew.value, kurt.value])

        def peer_moments():
            return np.array([np.mean(a), np.std(a, ddof=1), stats.skew(a, bias=False),
                             stats.kurtosis(a, bias=False)])

        yield Row(FAMILY, "basic_summary_stats (4 moments)", label, ours_moments, peer_moments,
                  "peer: np.mean + np.std(ddof=1) + scipy.stats.skew + kurtosis (bias=False), "
                  "each its own passes", rounds=5, check=close(1e-9, atol=1e-12))
        if n == 10_000_000:
            record = DescStatResults()
            r_record = ctypes.byref(record)

            def ours_record():
                desc(p, n, r_record, None, 0.95, 0)
                return np.array([record.Mean, record.SD, record.Skewness, record.Kurtosis,
                                 record.Sum])

            def peer_record():
                lo, hi = a.min(), a.max()  # noqa: F841 (timed: part of the peer's work)
                return np.array([np.mean(a), np.std(a, ddof=1), stats.skew(a, bias=False),
                                 stats.kurtosis(a, bias=False), a.sum()])

            def peer_record_mode():
                out = peer_record()
                stats.mode(a, keepdims=False)
                return out

            yield Row(FAMILY, "desc_stats (full record)", label, ours_record, peer_record,
                      "peer: np.mean + std(ddof=1) + scipy.stats.skew + kurtosis (bias=False) "
                      "+ min + max + sum; ours also gives SEM, confidence limits, MAD, sums "
                      "of squares, geometric mean and SD, and the mode (which groups equal "
                      "values: most of our time); compared: mean, SD, skewness, kurtosis, sum",
                      rounds=3, check=close(1e-9, atol=1e-12))
            yield Row(FAMILY, "desc_stats (full record)", f"{label} +mode", ours_record,
                      peer_record_mode, "the same, the peer adding scipy.stats.mode (a sort)",
                      rounds=3, check=close(1e-9, atol=1e-12))
        for count in (3, 100):
            pct = np.array([25.0, 50.0, 75.0]) if count == 3 else np.arange(100) + 0.5
            res = np.empty(count)
            pp, pr = ptr(pct), ptr(res)
            yield Row(FAMILY, f"percentiles ({count} percents)", label,
                      lambda pp=pp, pr=pr, res=res, count=count: (
                          percentiles(p, n, pp, count, pr, 4, None), res)[1],
                      lambda pct=pct: np.percentile(a, pct, method="interpolated_inverted_cdf"),
                      "peer: np.percentile(method='interpolated_inverted_cdf'), one partition "
                      "for all percents; ours also skips NANUM", rounds=5 if n < 10_000_000 else 3,
                      check=close(1e-12))
    x = g.normal(3.0, 2.0, 5000)
    px = ptr(x)
    res = ShapiroWilkResults()
    r_res = ctypes.byref(res)
    yield Row(FAMILY, "shapiro_wilk_test", "5e3",
              lambda: (shapiro(5000, px, r_res, 0), res.W)[1],
              lambda: stats.shapiro(x)[0],
              "peer: scipy.stats.shapiro, the same algorithm (AS R94) in single precision: W "
              "compared to 1e-5; its p-value differs in the second digit", rounds=7,
              check=close(1e-5))
