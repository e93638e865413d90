#!/usr/bin/python3
"""Reference values of the beta, F and binomial cdfs at large shapes, where the double path of
the incomplete beta takes shapes above 5000 (incomplete_beta.cpp):
  - betacdf at shape pairs drawn log-uniform in [5e3, 1e6] (both large), one shape in
    [0.05, 16] beside one in [5e3, 1e6], and fixed pairs on both sides of the switch points
    (5000, 6700, 1e5, and 1000 beside a shape above 5000), at the target probabilities of both tails (down to 1e-300), at the
    mean and at points drawn as the benchmark draws them (the body, a few standard deviations
    out);
  - fcdf at degrees of freedom log-uniform in [1e4, 1e10] (shapes up to 5e9) likewise;
  - binocdf with n log-uniform in [1e4, 2^31 - 1], p with its smaller tail log-uniform in
    [1e-9, 0.5] on either side, k at the target probabilities and in the body.

Writes distributions_beta_large_shapes_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
tail 1 is the upper tail, 2 the lower. The incomplete beta is gen_distributions_central.py's
(imported: mpmath's continued fraction at 60 digits, the small side evaluated directly);
SciPy only places the points.
Run: /usr/bin/python3 tests/reference/gen_distributions_beta_large_shapes.py
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
TARGETS = central.TARGETS
INT_MAX = 2 ** 31 - 1


def log_uniform(rng, lo, hi):
    return float(math.exp(rng.uniform(math.log(lo), math.log(hi))))


def beta_points(a, b, rng, body=4):
    """x at the target tail probabilities, at the mean and a few standard deviations out."""
    pts = set(central.points_from(lambda q: stats.beta.ppf(q, a, b),
                                  lambda q: stats.beta.isf(q, a, b), lo=0.0, hi=1.0))
    mean = a / (a + b)
    sd = math.sqrt(a * b / ((a + b) ** 2 * (a + b + 1)))
    pts.add(mean)
    for _ in range(body):
        x = mean + float(rng.uniform(-8, 8)) * sd
        if 0 < x < 1:
            pts.add(x)
    return sorted(p for p in pts if 0 < p < 1)


def add_beta(a, b, rng, body=4):
    for x in beta_points(a, b, rng, body):
        lower, upper = central.ibeta(a, b, x)
        central.add("betacdf", [x, a, b], 1, upper)
        central.add("betacdf", [x, a, b], 2, lower)


def add_f(d1, d2, rng, body=3):
    pts = set(central.points_from(lambda q: stats.f.ppf(q, d1, d2),
                                  lambda q: stats.f.isf(q, d1, d2), lo=0.0))
    sd = math.sqrt(2.0 / d1 + 2.0 / d2)
    for _ in range(body):
        pts.add(float(math.exp(rng.uniform(-8, 8) * sd)))
    for f in sorted(pts):
        if not (0 < f < 1e300):
            continue
        # z = d1 f / (d1 f + d2), 1 - z = d2 / (d1 f + d2), exactly in mpmath.
        num = MPF(d1) * MPF(f)
        den = num + MPF(d2)
        lower, upper = central.ibeta(MPF(d1) / 2, MPF(d2) / 2, num / den, MPF(d2) / den)
        central.add("fcdf", [f, d1, d2], 1, upper)
        central.add("fcdf", [f, d1, d2], 2, lower)


def add_binomial(n, p, rng, body=3):
    ks = set()
    with np.errstate(all="ignore"):
        for t in TARGETS:
            for v in (stats.binom.ppf(t, n, p), stats.binom.isf(t, n, p)):
                if math.isfinite(v):
                    ks.add(int(v))
    mean, sd = n * p, math.sqrt(n * p * (1 - p))
    for _ in range(body):
        ks.add(int(round(mean + float(rng.uniform(-8, 8)) * sd)))
    for k in sorted(ks):
        if not (0 <= k < n):
            continue
        # P(X <= k) = I_(1-p)(n - k, k + 1), with 1 - p exact in mpmath.
        lower, upper = central.ibeta(n - k, k + 1, 1 - MPF(p), MPF(p))
        central.add("binocdf", [k, n, p], 2, lower)
        central.add("binocdf", [k, n, p], 1, upper)


def gen_beta(rng):
    fixed = [(4999.0, 4999.0), (5001.0, 5001.0), (5000.5, 16.5), (6699.0, 6701.0),
             (6701.0, 2e4), (16379.0, 56983.0), (99999.0, 100001.0), (1e5, 3.0),
             (1e6, 1e6), (1e6, 0.5), (1e6, 15.5), (1e6, 16.0),
             (999.0, 1e5), (1000.0, 1e5), (1001.0, 7e5), (999.5, 5000.5)]
    for a, b in fixed:
        add_beta(a, b, rng)
        add_beta(b, a, rng)
    for _ in range(60):
        add_beta(log_uniform(rng, 5e3, 1e6), log_uniform(rng, 5e3, 1e6), rng)
    for _ in range(30):
        small, large = log_uniform(rng, 0.05, 16.0), log_uniform(rng, 5e3, 1e6)
        add_beta(*((small, large) if rng.random() < 0.5 else (large, small)), rng)


def gen_f(rng):
    for _ in range(45):
        add_f(log_uniform(rng, 1e4, 1e10), log_uniform(rng, 1e4, 1e10), rng)
    for _ in range(10):
        add_f(log_uniform(rng, 0.1, 32.0), log_uniform(rng, 1e4, 1e10), rng)
        add_f(log_uniform(rng, 1e4, 1e10), log_uniform(rng, 0.1, 32.0), rng)


def gen_binomial(rng):
    for _ in range(50):
        n = int(log_uniform(rng, 1e4, INT_MAX))
        tail = float(0.5 * 10.0 ** (-rng.uniform(0, 9)))
        add_binomial(n, tail if rng.random() < 0.5 else 1 - tail, rng)
    for n, p in [(INT_MAX, 0.5), (INT_MAX, 1e-6), (10001, 0.5), (1 << 30, 0.25)]:
        add_binomial(n, p, rng)
    # k + 1 on both sides of 1000 beside n - k far above 5000.
    for n, p in [(200000, 999.0 / 200000), (200000, 1000.0 / 200000), (3000000, 1 - 1000.0 / 3e6)]:
        add_binomial(n, p, rng)


def main():
    rng = np.random.default_rng(20261124)
    for gen in (gen_beta, gen_f, gen_binomial):
        gen(rng)
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    central.write_inc("gen_distributions_beta_large_shapes.py",
                      "distributions_beta_large_shapes_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
