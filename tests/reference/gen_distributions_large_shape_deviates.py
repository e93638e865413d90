#!/usr/bin/python3
"""Reference values of the F and beta deviates at large degrees of freedom and shapes, where
their double path takes shapes above 5000 (g01_central.cpp) and starts from the normal form of
the F law's cube root from shapes 50 up:
  - finv at df1, df2 drawn log-uniform in [100, 1e5] (as the benchmark draws them), in [1e4,
    1e10] (shapes up to the F law's 5e9), and a small df1 in [0.5, 20] beside a df2 in [1e4,
    1e8]; p with its smaller tail log-uniform in [1e-12, 0.5] on either side, and the target
    tails 1e-50 .. 1e-300;
  - betainv at shapes drawn log-uniform in [50, 1e6] (the beta law's limit) and a small shape
    beside a large one, p likewise;
  - both on the two sides of the switch points: shapes 49.9 / 50 (the start), 5000 / 5001 (the
    classical path of the tails), 1e4 (the settling bound), and at the limits 1e6 (beta) and
    5e9 (F shapes).

Writes distributions_large_shape_deviates_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
with tail 0. The incomplete beta is gen_distributions_central.py's (imported: its continued
fraction at 60 digits, the small side evaluated directly). The deviate: the root u of the
smaller tail as a function of whichever of x and 1 - x lies below 1/2 at the root, by Newton on
log tail in log u from SciPy's deviate (SciPy only places the start), to 45 digits; the F
deviate is then (df2/df1) x / (1 - x) in mpmath.
Run: /usr/bin/python3 tests/reference/gen_distributions_large_shape_deviates.py
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
FAR_TAILS = [1e-50, 1e-100, 1e-200, 1e-300]


def log_uniform(rng, lo, hi):
    return float(math.exp(rng.uniform(math.log(lo), math.log(hi))))


def tail_p(rng):
    """p with its smaller tail log-uniform in [1e-12, 0.5], on either side."""
    t = 0.5 * 10.0 ** (-12 * rng.uniform())
    return t if rng.uniform() < 0.5 else 1 - t


def log_density(a, b, u, v):
    """log of the beta(a, b) density at x = u (v = 1 - u exactly)."""
    return ((a - 1) * mp.log(u) + (b - 1) * mp.log(v)
            - (mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)))


def beta_root(a, b, p, x0):
    """(x, 1 - x) with I_x(a, b) = p, p a double; the smaller of p and 1 - p is matched (both
    exact in mpmath). Newton on the log of the smaller tail in log u, u = x or 1 - x, whichever
    is below 1/2 at the start; a start outside (0, 1) is the mean."""
    a, b, p = MPF(a), MPF(b), MPF(p)
    q = 1 - p
    if not (x0 is not None and 0 < x0 < 1):
        x0 = float(a / (a + b))
    in_y = x0 > 0.5
    # the tail asked for as a function of u: in x, I_u(a, b) (or its complement); in y = 1 - x,
    # 1 - I_{1-u}(a, b) = I_u(b, a)
    al, be = (b, a) if in_y else (a, b)
    # the smaller of p and q taken as it stands (1 - q would lose a p below 1e-60)
    if in_y:
        lower_side = q <= MPF(0.5)
        target = q if lower_side else p
    else:
        lower_side = p <= MPF(0.5)
        target = p if lower_side else q
    log_target = mp.log(target)
    s = mp.log(MPF(1 - x0) if in_y else MPF(x0))
    sign = 1 if lower_side else -1
    lo, hi = -mp.inf, MPF(0)  # G = sign (log tail - log target) rises in s; G(0) > 0
    for _ in range(200):
        u = mp.exp(s)
        v = 1 - u
        lower, upper = central.ibeta(al, be, u, v)
        tail = lower if lower_side else upper
        if tail <= 0:
            g = -mp.inf * sign
        else:
            g = sign * (mp.log(tail) - log_target)
        if g < 0:
            lo = s
        else:
            hi = s
        if tail > 0:
            slope = mp.exp(log_density(al, be, u, v)) * u / tail
            new = s - g / slope
        else:
            new = s + sign
        if not (lo < new < hi):
            new = (lo + hi) / 2 if lo > -mp.inf else s - 1
        if abs(new - s) < MPF(10) ** -45 * max(1, abs(s)):
            u = mp.exp(new)
            return (1 - u, u) if in_y else (u, 1 - u)
        s = new
    raise RuntimeError("no convergence at %r" % ((a, b, p),))


def add_beta(a, b, p):
    with np.errstate(all="ignore"):
        x0 = central.finite_double(stats.beta.ppf(p, a, b))
    x, _ = beta_root(a, b, p, x0)
    central.add("betainv", [p, a, b], 0, x)


def add_f(d1, d2, p):
    with np.errstate(all="ignore"):
        f0 = central.finite_double(stats.f.ppf(p, d1, d2))
    x0 = d1 * f0 / (d1 * f0 + d2) if f0 is not None and 0 < f0 < 1e300 else None
    x, y = beta_root(d1 / 2, d2 / 2, p, x0)
    central.add("finv", [p, d1, d2], 0, MPF(d2) / MPF(d1) * (x / y))


def main():
    rng = np.random.default_rng(20261124)
    # The benchmark's draws, and the F law up to its limit.
    for _ in range(60):
        add_f(log_uniform(rng, 100, 1e5), log_uniform(rng, 100, 1e5), tail_p(rng))
    for _ in range(20):
        add_f(log_uniform(rng, 1e4, 1e10), log_uniform(rng, 1e4, 1e10), tail_p(rng))
    for _ in range(15):
        add_f(log_uniform(rng, 0.5, 20), log_uniform(rng, 1e4, 1e8), tail_p(rng))
    for _ in range(60):
        add_beta(log_uniform(rng, 50, 1e6), log_uniform(rng, 50, 1e6), tail_p(rng))
    for _ in range(15):
        small, large = log_uniform(rng, 0.5, 20), log_uniform(rng, 1e4, 1e6)
        add_beta(*((small, large) if rng.uniform() < 0.5 else (large, small)), tail_p(rng))
    print("random rows done", file=sys.stderr, flush=True)
    # Switch points and limits, at fixed tails in both directions.
    fixed = [1e-12, 1e-5, 0.05, 0.5, 1 - 1e-3, 1 - 1e-10]
    for d1, d2 in [(99.8, 99.8), (100.0, 100.0), (9998.0, 1e4), (10002.0, 300.0),
                   (2e4, 2e4), (1e10, 1e10), (1e10, 200.0), (3.0, 1e10)]:
        for p in fixed:
            add_f(d1, d2, p)
    for a, b in [(49.9, 60.0), (50.0, 60.0), (4999.0, 5000.0), (5001.0, 5001.0), (1e4, 2e4),
                 (1e6, 1e6), (1e6, 50.0), (3.5, 1e6)]:
        for p in fixed:
            add_beta(a, b, p)
    # Far tails: the start there is not the normal form.
    for p in FAR_TAILS:
        add_f(2e4, 3e4, p)
        add_f(300.0, 5e5, 1 - p if p >= 1e-16 else p)
        add_beta(2e4, 600.0, p)
        add_beta(7e3, 7e3, p)
    central.write_inc("gen_distributions_large_shape_deviates.py",
                      "distributions_large_shape_deviates_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
