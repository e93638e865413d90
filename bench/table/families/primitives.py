"""Streaming primitives over float64 standard normal data (no missing values, no NaN).

Against NumPy producing the same outputs at 1e5..1e7, and at 1e8 (800 MB, far beyond any
cache) against the plain streaming read of bench/table/loops.c (the cumulative sum, which
reads and writes, against a plain copy), giving our share of the plain bandwidth.
"""
import ctypes

import numpy as np

from runner import (VP, Row, c_double, c_int, c_uint, close, equal, export, loops, ptr, rng)

FAMILY = "primitives"
SIZES = (100_000, 1_000_000, 10_000_000)
BIG = 100_000_000


def size_label(n):
    return f"{n:.0e}".replace("+0", "").replace("+", "")


def rows():
    d_sum = export("zemath_d_sum", c_double, [VP, c_int, VP, VP, VP, VP, VP])
    d_minmax = export("zemath_d_minmax", c_int, [VP, c_int, c_int, VP, VP])
    d_mean_variance = export("zemath_d_mean_variance", c_double, [VP, c_int, VP, VP])
    d_cumsum = export("zemath_d_cumulative_sum", c_int, [VP, c_uint, c_uint, VP, VP])
    lo, hi, imin, imax, count, var = (c_double(), c_double(), c_int(), c_int(), c_int(),
                                      c_double())
    r_lo, r_hi, r_imin, r_imax, r_count, r_var = map(ctypes.byref, (lo, hi, imin, imax, count,
                                                                      var))
    g = rng(FAMILY)

    def sum_rows(a, n, label):
        p = ptr(a)
        out = np.empty(n)
        q = ptr(out)

        def ours_sum():
            s = d_sum(p, n, r_lo, r_hi, r_imin, r_imax, r_count)
            return np.array([s, lo.value, hi.value, imin.value, imax.value, count.value])

        def peer_sum():
            i, j = int(np.argmin(a)), int(np.argmax(a))
            return np.array([np.sum(a), a[i], a[j], i, j, n])

        def ours_minmax():
            d_minmax(p, 0, n - 1, r_imin, r_imax)
            return np.array([imin.value, imax.value])

        def ours_mv():
            m = d_mean_variance(p, n, r_var, r_count)
            return np.array([m, var.value, count.value])

        def ours_cumsum():
            d_cumsum(p, 0, n, q, None)
            return out

        yield Row(FAMILY, "d_sum (+min, max, their indices)", label, ours_sum, peer_sum,
                  "peer: np.sum + np.argmin + np.argmax (3 passes); ours also skips NANUM",
                  rounds=7, check=close(1e-12))
        yield Row(FAMILY, "d_minmax (indices)", label, ours_minmax,
                  lambda: np.array([np.argmin(a), np.argmax(a)]),
                  "peer: np.argmin + np.argmax (2 passes); ours also skips NANUM", rounds=7,
                  check=equal())
        yield Row(FAMILY, "d_mean_variance", label, ours_mv,
                  lambda: np.array([np.mean(a), np.var(a, ddof=1), n]),
                  "peer: np.mean + np.var(ddof=1) (var makes a temporary); ours also skips NANUM",
                  rounds=7, check=close(1e-10))
        yield Row(FAMILY, "d_cumulative_sum", label, ours_cumsum,
                  lambda: np.cumsum(a, out=out),
                  "peer: np.cumsum(out=) into the same buffer", rounds=7, check=close(1e-12))

    for n in SIZES:
        yield from sum_rows(g.standard_normal(n), n, size_label(n))

    # 1e8 beside the plain streaming read / copy: our bandwidth as a share of it.
    a = g.standard_normal(BIG)
    p = ptr(a)
    out = np.empty(BIG)
    q = ptr(out)
    plain_read = lambda: loops().bench_read(p, BIG)  # noqa: E731
    plain_copy = lambda: loops().bench_copy(p, q, BIG)  # noqa: E731
    label = size_label(BIG)
    note = "peer column: plain streaming read (xor of every word, bench/table/loops.c)"
    yield Row(FAMILY, "d_sum vs plain read", label,
              lambda: d_sum(p, BIG, r_lo, r_hi, r_imin, r_imax, r_count), plain_read, note,
              rounds=5, bytes_moved=(8 * BIG, 8 * BIG))
    yield Row(FAMILY, "d_minmax vs plain read", label,
              lambda: d_minmax(p, 0, BIG - 1, r_imin, r_imax), plain_read, note, rounds=5,
              bytes_moved=(8 * BIG, 8 * BIG))
    yield Row(FAMILY, "d_mean_variance vs plain read", label,
              lambda: d_mean_variance(p, BIG, r_var, r_count), plain_read, note, rounds=5,
              bytes_moved=(8 * BIG, 8 * BIG))
    yield Row(FAMILY, "d_cumulative_sum vs plain copy", label,
              lambda: d_cumsum(p, 0, BIG, q, None), plain_copy,
              "peer column: plain copy (memcpy, read + write); bytes = 16 per value both sides",
              rounds=5, bytes_moved=(16 * BIG, 16 * BIG))
