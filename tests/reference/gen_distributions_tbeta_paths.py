#!/usr/bin/python3
"""Reference values for Student's t, F and beta probabilities and deviates at the switch
points of their double-precision paths (shapes 16, 128, 500 and 1000; the deviates'
sensitivity test), and on arguments drawn at random the way the distribution benchmark draws them.

Writes distributions_tbeta_paths_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
The incomplete beta (continued fraction at 60 digits, DLMF 8.17.22), the t and F relations
and the bracketed Newton solver of the deviates are those of gen_distributions_central.py
(imported; mpmath does the arithmetic, SciPy only places the evaluation points).
Run: /usr/bin/python3 tests/reference/gen_distributions_tbeta_paths.py
"""
import math
import os
import sys

import mpmath as mp
import numpy as np
from scipy import stats

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402

MPF = mp.mpf
TARGETS = [1e-300, 1e-100, 1e-20, 1e-5, 0.05, 0.5]
P_DEV = [1e-300, 1e-50, 1e-8, 0.01, 0.3, 0.7, 1 - 1e-6]


def gen_t():
    # df 255 .. 257: shape 128; 999 .. 1001: shape 500; 1999 .. 2001: shape 1000
    for df in [255.0, 256.0, 257.0, 600.0, 999.0, 1000.0, 1001.0, 1999.0, 2000.0, 2001.0,
               5000.0]:
        xs = central.points_from(lambda q: stats.t.ppf(q, df), lambda q: stats.t.isf(q, df),
                                 extra=[0.01, 1.0, -2.0, 1.7, -1.7])
        xs = [x for x in xs if abs(x) >= 1e-3 or x == 0.01]
        for x in xs:
            tails = central.t_tails(x, df)
            for tail in (1, 2):
                central.add("tcdf", [x, df], tail, tails[tail])
            if x > 0:
                for tail in (3, 4):
                    central.add("tcdf", [x, df], tail, tails[tail])
        for p in P_DEV:
            central.add("tinv", [p, df], 2, central.t_deviate(p, df, 2))
        for p in [1e-200, 0.02, 0.6]:
            central.add("tinv", [p, df], 3, central.t_deviate(p, df, 3))
        for p in [1e-12, 0.4]:
            central.add("tinv", [p, df], 4, central.t_deviate(p, df, 4))


F_PAIRS = [(255.0, 258.0), (258.0, 7.0), (3.0, 600.0), (1000.0, 1000.0), (999.0, 1001.0),
           (1001.0, 20.0), (0.3, 999.0), (1999.0, 2001.0), (2001.0, 40.0), (0.3, 1999.0),
           (20.0, 0.25)]


def gen_f():
    for d1, d2 in F_PAIRS:
        xs = central.points_from(lambda q: stats.f.ppf(q, d1, d2),
                                 lambda q: stats.f.isf(q, d1, d2), lo=0.0, extra=[1.0])
        for x in xs:
            lower, upper = central.f_pair(x, d1, d2)
            central.add("fcdf", [x, d1, d2], 1, upper)
            central.add("fcdf", [x, d1, d2], 2, lower)
        pair = lambda x: central.f_pair(x, d1, d2)
        dens = lambda x: central.f_density(x, d1, d2)
        for p in P_DEV:
            with np.errstate(all="ignore"):
                x0 = central.finite_double(stats.f.ppf(p, d1, d2))
            central.add("finv", [p, d1, d2], 0, central.quantile_positive(pair, dens, p, x0))


# Small shapes on one side: the deviates' sensitivity x f(x) / F(x) tends to the shape in
# the lower tail, so these sit on both sides of the double path's threshold.
BETA_PAIRS = [(127.5, 129.0), (129.0, 2.0), (0.5, 600.0), (499.5, 500.5), (500.5, 2.0),
              (0.2, 499.0), (999.5, 1000.5), (1001.0, 0.7),
              (0.09, 5.0), (0.11, 5.0), (0.3, 40.0), (7.0, 0.2), (20.0, 0.45), (0.6, 0.6)]


def beta_deviate(p, a, b):
    p = MPF(p)
    lower_at_half = central.ibeta(a, b, 0.5)[0]
    lower = lambda v: central.ibeta(a, b, v)[0]
    upper = lambda v: central.ibeta(a, b, v)[1]
    dens = lambda v: central.beta_density(a, b, v)
    if p <= lower_at_half:
        return (central.solve_positive(lower, dens, p, True) if p <= 0.5
                else central.solve_positive(upper, dens, 1 - p, False))
    y_lower = lambda v: central.ibeta(a, b, 1 - v, v)[1]
    y_upper = lambda v: central.ibeta(a, b, 1 - v, v)[0]
    y_dens = lambda v: central.beta_density(a, b, 1 - v, v)
    y = (central.solve_positive(y_lower, y_dens, 1 - p, True) if p > 0.5
         else central.solve_positive(y_upper, y_dens, p, False))
    return 1 - y


def gen_beta():
    for a, b in BETA_PAIRS:
        xs = central.points_from(lambda q: stats.beta.ppf(q, a, b),
                                 lambda q: stats.beta.isf(q, a, b), lo=0.0, hi=1.0,
                                 extra=[a / (a + b)])
        for x in xs:
            lower, upper = central.ibeta(a, b, x)
            central.add("betacdf", [x, a, b], 1, upper)
            central.add("betacdf", [x, a, b], 2, lower)
        for p in P_DEV:
            central.add("betainv", [p, a, b], 0, beta_deviate(p, a, b))


def gen_random():
    """Arguments drawn as the benchmark draws them (another seed): x uniform in [-8, 8], the
    smaller tail of p log-uniform in [1e-12, 0.5], df log-uniform in [1, 1000], shapes
    log-uniform in [0.1, 100] (ten times that for F)."""
    rng = np.random.default_rng(20261124)
    for i in range(60):
        x = float(-8 + 16 * rng.random())
        small = float(0.5 * 10.0 ** (-12 * rng.random()))
        p = small if i % 2 else 1 - small
        df = float(10.0 ** (3 * rng.random()))
        a = float(10.0 ** (-1 + 3 * rng.random()))
        b = float(10.0 ** (-1 + 3 * rng.random()))
        tails = central.t_tails(x, df)
        central.add("tcdf", [x, df], 2, tails[2])
        central.add("tinv", [p, df], 2, central.t_deviate(p, df, 2))
        central.add("betacdf", [p, a, b], 2, central.ibeta(a, b, p)[0])
        central.add("betainv", [p, a, b], 0, beta_deviate(p, a, b))
        f = math.exp(x / 2)
        central.add("fcdf", [f, 10 * a, 10 * b], 2, central.f_pair(f, 10 * a, 10 * b)[0])
        pair = lambda v: central.f_pair(v, 10 * a, 10 * b)
        dens = lambda v: central.f_density(v, 10 * a, 10 * b)
        with np.errstate(all="ignore"):
            x0 = central.finite_double(stats.f.ppf(p, 10 * a, 10 * b))
        central.add("finv", [p, 10 * a, 10 * b], 0, central.quantile_positive(pair, dens, p, x0))


def main():
    for gen in (gen_t, gen_f, gen_beta, gen_random):
        gen()
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    central.write_inc("gen_distributions_tbeta_paths.py", "distributions_tbeta_paths_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
