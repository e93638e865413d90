#!/usr/bin/python3
"""Reference values of the beta and F deviates where their double path starts from the
smaller tail's series about its end or from the normal form of the F law's cube root at
small shapes (g01_central.cpp, beta_start_any):
  - betainv at both shapes drawn log-uniform in [1e-3, 50], and finv at both degrees of
    freedom in [0.5, 100], p with its smaller tail log-uniform in [1e-12, 0.5] on either
    side, and at the far tails 1e-30 .. 1e-300;
  - a small shape in [0.05, 2] beside a large one in [1e3, 1e6] (betainv) or a small df
    in [0.2, 4] beside one in [2e3, 2e6] (finv): the root's sensitivity to its tail is
    smallest there;
  - p at the tails of x = c times the mean, c = 0.3 .. 0.7 (and the same in 1 - x): the
    series start is kept below half the mean, the normal form (or Boost's inverse) above.

Writes distributions_deviate_starts_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
with tail 0. The incomplete beta is gen_distributions_central.py's (its continued fraction at
60 digits) and the root is gen_distributions_large_shape_deviates.py's (Newton on the log of
the smaller tail in log u, to 45 digits) from SciPy's deviate, or where SciPy's is 0 or 1 from
the smaller tail's leading term in mpmath (the start only places the root). Roots that are 0
or 1 in double, or below the normal range, are left out.
Run: /usr/bin/python3 tests/reference/gen_distributions_deviate_starts.py
"""
import math
import os
import sys

import mpmath as mp
import numpy as np
from scipy import stats

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402
import gen_distributions_large_shape_deviates as deviates  # noqa: E402

MPF = mp.mpf
FAR_TAILS = [1e-30, 1e-100, 1e-200, 1e-300]


def log_uniform(rng, lo, hi):
    return deviates.log_uniform(rng, lo, hi)


def either_side(rng, t):
    return t if rng.uniform() < 0.5 else 1 - t


def far_p(rng, t):
    """The far tail t as a lower-tail p, or as an upper one where 1 - t is a double apart
    from 1."""
    return t if t < 1e-16 or rng.uniform() < 0.5 else 1 - t


def tails_at(a, b, x, y):
    """Both tails of I_x(a, b), y = 1 - x given exactly."""
    return central.ibeta(MPF(a), MPF(b), MPF(x), MPF(y))


def start(a, b, p):
    """A start for the root of I_x(a, b) = p: SciPy's deviate where it is a double inside
    (0, 1) away from 1, else the smaller tail's leading term x^a / (a B(a, b)) (or the same
    in 1 - x) in mpmath; None where the root is 0 or 1 in double (no case is written)."""
    with np.errstate(all="ignore"):
        x0 = central.finite_double(stats.beta.ppf(p, a, b))
    if x0 is not None and 1e-300 < x0 < 0.5:
        return x0
    a, b, p = MPF(a), MPF(b), MPF(p)
    if p <= 0.5:
        x = (p * a * mp.beta(a, b)) ** (1 / a)
        return x if x < 0.5 else x0
    y = ((1 - p) * b * mp.beta(a, b)) ** (1 / b)
    if y < MPF(2) ** -53:  # the root rounds to 1; its 1 - x is not what the export returns
        return None
    return 1 - y if y < 0.5 else x0


def add_beta(a, b, p):
    x0 = start(a, b, p)
    if x0 is None:
        return
    x, _ = deviates.beta_root(a, b, p, x0)
    central.add("betainv", [p, a, b], 0, x)


def add_f(d1, d2, p):
    x0 = start(d1 / 2, d2 / 2, p)
    if x0 is None:
        return
    x, y = deviates.beta_root(d1 / 2, d2 / 2, p, x0)
    central.add("finv", [p, d1, d2], 0, MPF(d2) / MPF(d1) * (x / y))


def main():
    rng = np.random.default_rng(20261125)
    for _ in range(50):
        add_beta(log_uniform(rng, 1e-3, 50), log_uniform(rng, 1e-3, 50),
                          deviates.tail_p(rng))
    for _ in range(40):
        add_f(log_uniform(rng, 0.5, 100), log_uniform(rng, 0.5, 100),
                       deviates.tail_p(rng))
    for t in FAR_TAILS:
        for _ in range(4):
            add_beta(log_uniform(rng, 1e-2, 50), log_uniform(rng, 1e-2, 50),
                              far_p(rng, t))
            add_f(log_uniform(rng, 0.5, 100), log_uniform(rng, 0.5, 100),
                           far_p(rng, t))
    print("random rows done", file=sys.stderr, flush=True)
    for _ in range(20):
        small, large = log_uniform(rng, 0.05, 2), log_uniform(rng, 1e3, 1e6)
        a, b = (small, large) if rng.uniform() < 0.5 else (large, small)
        add_beta(a, b, deviates.tail_p(rng))
        small, large = log_uniform(rng, 0.2, 4), log_uniform(rng, 2e3, 2e6)
        d1, d2 = (small, large) if rng.uniform() < 0.5 else (large, small)
        add_f(d1, d2, deviates.tail_p(rng))
    # Around the series start's limit, half the mean of x (or of 1 - x for the upper side).
    for a, b in [(0.3, 2.0), (2.5, 7.0), (12.0, 0.8), (40.0, 45.0)]:
        mean = MPF(a) / (MPF(a) + MPF(b))
        for c in (0.3, 0.45, 0.55, 0.7):
            x = c * mean
            add_beta(a, b, float(tails_at(a, b, x, 1 - x)[0]))
            y = c * (1 - mean)
            q = tails_at(a, b, 1 - y, y)[1]
            if q > 1e-16:
                add_beta(a, b, 1 - float(q))
    central.write_inc("gen_distributions_deviate_starts.py",
                      "distributions_deviate_starts_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
