"""Adaptive quadrature: integralKS (adaptive Gauss-Kronrod with extrapolation, relative
accuracy 1e-10, at most 500 subintervals) beside scipy.integrate.quad with the same
tolerances (epsabs 1e-300, epsrel 1e-10, limit 500) on the same integrand: one C
function from the benchmark loops, called through the host callback on our side and as a
low-level callable on the peer's, so neither side pays for Python calls per point. The
integrands: smooth, two end-point singularities, an oscillating one, a slowly decaying
tail with a singular bound, and the Gaussian over the whole line. Each row is one
integral; the note gives both sides' evaluations of the integrand.
"""
import ctypes
import math

import numpy as np
import scipy.integrate
from scipy import LowLevelCallable

from runner import VP, Row, c_double, close, export, loops

FAMILY = "quadrature"
NANUM = -1.23456789e-300  # the library's missing-value code (zemath/types.h)
INF = math.inf

# name, label, x1, x2 (None: infinite)
CASES = [
    ("smooth", "x^2 e^-x on [0, 5]", 0.0, 5.0),
    ("power", "x^-0.9 on (0, 1]", 0.0, 1.0),
    ("log_sqrt", "log(x)/sqrt(x) on (0, 1]", 0.0, 1.0),
    ("oscillating", "cos(100 sin x) on [0, pi]", 0.0, math.pi),
    ("slow_tail", "1/((1+x) sqrt x) on (0, inf)", 0.0, None),
    ("gauss", "e^-x^2 on the line", None, None),
]


class KSFInfo(ctypes.Structure):
    _fields_ = [("function", VP), ("context", VP)]


class Counted(ctypes.Structure):  # BenchCounted of the benchmark loops
    _fields_ = [("f", VP), ("count", ctypes.c_long)]


def rows():
    integral = export("integralKS", c_double, [VP, c_double, c_double])
    lib = loops()
    for name, label, x1, x2 in CASES:
        host = ctypes.cast(getattr(lib, f"bench_quad_host_{name}"), VP).value
        plain = getattr(lib, f"bench_quad_{name}")
        plain.restype = c_double
        plain.argtypes = [c_double]
        callable_ = LowLevelCallable(ctypes.cast(plain, ctypes.CFUNCTYPE(c_double, c_double)))
        info = KSFInfo(host, None)
        pinfo = ctypes.pointer(info)
        a = NANUM if x1 is None else x1
        b = NANUM if x2 is None else x2
        lo = -INF if x1 is None else x1
        hi = INF if x2 is None else x2
        _, _, out = scipy.integrate.quad(callable_, lo, hi, epsabs=1e-300, epsrel=1e-10,
                                         limit=500, full_output=1)
        peer_evals = out["neval"]
        counted = Counted(ctypes.cast(plain, VP).value, 0)
        counting = KSFInfo(ctypes.cast(lib.bench_quad_host_counted, VP).value,
                           ctypes.cast(ctypes.pointer(counted), VP).value)
        integral(ctypes.pointer(counting), a, b)

        def ours(pinfo=pinfo, a=a, b=b):
            return integral(pinfo, a, b)

        def peer(callable_=callable_, lo=lo, hi=hi):
            return scipy.integrate.quad(callable_, lo, hi, epsabs=1e-300, epsrel=1e-10,
                                        limit=500)[0]

        yield Row(FAMILY, f"integralKS {label}", "1", ours, peer,
                  f"evaluations: ours {counted.count}, peer {peer_evals}", check=close(rtol=1e-9))
