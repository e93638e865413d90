"""Empirical mode decomposition of four tones (periods 40, 370, 3100 and 29000 points),
not-a-knot spline envelopes, at most 10 IMFs. No Debian package offers a decomposition,
so the peer is the same sifting in NumPy/SciPy: extremes over three-point windows, the
two nearest extremes mirrored about each end, scipy.interpolate.CubicSpline envelopes,
the two-threshold stopping test against the average amplitude, at most ten
subtractions. Compared: the IMFs and the residue (to 1e-9: both sides sum in their own
order over up to ten subtractions).
"""
import ctypes

import numpy as np
from scipy.interpolate import CubicSpline

from runner import VP, Row, c_double, c_int, close, export, ptr

FAMILY = "emd"


def four_tones(n):
    i = np.arange(n, dtype=float)
    y = np.zeros(n)
    for k, (p, a) in enumerate(((40, 1.0), (370, 0.8), (3100, 0.6), (29000, 0.5))):
        y += a * np.sin(2 * np.pi * i / p + 0.5 * k)
    return y


def extremes(y):
    left, mid, right = y[:-2], y[1:-1], y[2:]
    return (np.flatnonzero((mid > left) & (mid >= right)) + 1,
            np.flatnonzero((mid < left) & (mid <= right)) + 1)


def envelope(x, y, idx):
    k = min(len(idx), 2)
    head, tail = idx[:k], idx[::-1][:k]
    nx = np.concatenate((2 * x[0] - x[head][::-1], x[idx], 2 * x[-1] - x[tail]))
    ny = np.concatenate((y[head][::-1], y[idx], y[tail]))
    return CubicSpline(nx, ny)(x)


def sift(x, y, t1, t2, tol):
    h = y.copy()
    for subtraction in range(11):
        mx, mn = extremes(h)
        if len(mx) == 0 or len(mn) == 0:
            return None
        upper, lower = envelope(x, h, mx), envelope(x, h, mn)
        mean, amp = 0.5 * (upper + lower), 0.5 * (upper - lower)
        s = np.sign(h)
        nzero = np.count_nonzero(s == 0) + np.count_nonzero(s[:-1] * s[1:] < 0)
        sigma = np.abs(mean) / np.mean(np.abs(amp))
        done = (not np.any(sigma > t2) and abs(len(mx) + len(mn) - nzero) < 2
                and np.count_nonzero(sigma > t1) / len(y) <= tol)
        if done or subtraction == 10:
            return h
        h = h - mean


def decompose(x, y, max_imf=10):
    r = y.copy()
    imfs = []
    while np.max(np.abs(r)) >= 1e-10 and len(imfs) < max_imf:
        mx, mn = extremes(r)
        if len(mx) < 2 or len(mn) < 2:
            break
        imf = sift(x, r, 0.05, 0.5, 0.05)
        if imf is None:
            break
        imfs.append(imf)
        r = r - imf
    return imfs, r


def rows():
    emd = export("zemath_empirical_mode_decomposition", c_int,
                 [c_int, VP, VP, c_double, c_double, c_double, VP, c_int, VP, VP, c_int])
    count = c_int()
    for n in (100_000, 1_000_000):
        label = f"{n:.0e}".replace("+0", "")
        x = np.arange(n, dtype=float)
        y = four_tones(n)
        imfs, residue = np.empty(10 * n), np.empty(n)

        def ours():
            emd(n, ptr(x), ptr(y), 0.05, 0.5, 0.05, ptr(imfs), 10, ctypes.byref(count),
                ptr(residue), 2)
            return np.concatenate([imfs[:count.value * n], residue])

        def peer():
            parts, r = decompose(x, y)
            return np.concatenate(parts + [r])

        yield Row(FAMILY, "decomposition, 4 tones, <= 10 IMFs", label, ours, peer,
                  "peer: the same sifting in NumPy + CubicSpline envelopes",
                  rounds=3, check=close(rtol=1e-9, atol=1e-9))
