#!/usr/bin/python3
"""Simulation check (not a table generator): the p-values of the library's AS 181 under
normality. For each n, 2000 standard normal samples in single precision: the fraction of
p-values below 0.05 and 0.10 and a Kolmogorov-Smirnov test of their uniformity, beside the
same for AS R94 (zemath_shapiro_wilk_test), and the mean and range of W(AS 181) - W(AS R94).
A p-value formula transcribed wrongly would show as a fraction far from 0.05 / 0.10.
Needs the release library: BUILD=build/release (default).
Run: /usr/bin/python3 tests/reference/check_as181_calibration.py
"""
import ctypes
import os

import numpy as np
from scipy import stats

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
lib = ctypes.CDLL(os.path.join(os.environ.get("BUILD", os.path.join(ROOT, "build", "release")),
                               "libzemath.so"))


class Result(ctypes.Structure):
    _fields_ = [("N", ctypes.c_int), ("W", ctypes.c_double), ("P", ctypes.c_double)]


as181 = lib.zemath_shapiro_wilk_test_AS181
as181.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.POINTER(ctypes.c_float),
                  ctypes.POINTER(ctypes.c_float), ctypes.POINTER(ctypes.c_int)]
r94 = lib.zemath_shapiro_wilk_test
r94.argtypes = [ctypes.c_uint, ctypes.c_void_p, ctypes.POINTER(Result), ctypes.c_int]

rng = np.random.default_rng(11)
for n in (20, 100, 250, 500, 1000, 2000):
    p181, p94, gap = [], [], []
    for _ in range(2000):
        x = rng.normal(0.0, 1.0, n).astype(np.float32)
        xd = x.astype(np.float64)
        w, p, fault = ctypes.c_float(), ctypes.c_float(), ctypes.c_int()
        as181(x.ctypes.data, n, ctypes.byref(w), ctypes.byref(p), ctypes.byref(fault))
        r = Result()
        r94(n, xd.ctypes.data, ctypes.byref(r), 0)
        p181.append(p.value)
        p94.append(r.P)
        gap.append(w.value - r.W)
    p181, p94, gap = map(np.array, (p181, p94, gap))
    print(f"n {n:5d}  AS 181: P<.05 {np.mean(p181 < .05):.3f} P<.10 {np.mean(p181 < .1):.3f} "
          f"KS p {stats.kstest(p181, 'uniform').pvalue:.3f} | AS R94: P<.05 "
          f"{np.mean(p94 < .05):.3f} P<.10 {np.mean(p94 < .1):.3f} KS p "
          f"{stats.kstest(p94, 'uniform').pvalue:.3f} | W181 - W94 mean {gap.mean():.4f} "
          f"min {gap.min():.4f} max {gap.max():.4f}", flush=True)
