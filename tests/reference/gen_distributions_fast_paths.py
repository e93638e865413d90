#!/usr/bin/python3
"""Reference values at the switch points of the double-precision paths of the normal, beta,
Student's t and F probabilities (g01_central.cpp, incomplete_beta.cpp, normal.hpp):
  - both beta shapes below 16, real and drawn at random, so that a + b is not a double
    (the rounding of the sum fed back through psi), and a + b on both sides of 17;
  - tails whose exact value lies below half the smallest subnormal (they round to 0, the
    other tail to 1), beside ones just inside the normal range;
  - the normal tails on both sides of |x| = 2 and up to where they underflow;
  - Student's t with df from 100 to 2000 and F/beta with one small and one large shape
    (the longest continued fractions), drawn at random;
  - shapes on both sides of 5000 (df 1e4), the largest the double path takes.

Writes distributions_fast_paths_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
The incomplete beta (continued fraction at 60 digits), the t and F relations and the normal
tails are those of gen_distributions_central.py (imported; mpmath does the arithmetic).
Run: /usr/bin/python3 tests/reference/gen_distributions_fast_paths.py
"""
import math
import os
import sys

import mpmath as mp
import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402

MPF = mp.mpf
HALF_SUBNORMAL = MPF(2) ** -1075


def add_beta(x, a, b):
    """Both tails of I_x(a, b); a tail below half the smallest subnormal is an exact 0."""
    y = 1 - MPF(x)
    lower, upper = central.ibeta(a, b, x, y)
    central.add("betacdf", [x, a, b], 2, 0 if lower < HALF_SUBNORMAL else lower,
                exact_zero=lower < HALF_SUBNORMAL)
    central.add("betacdf", [x, a, b], 1, 0 if upper < HALF_SUBNORMAL else upper,
                exact_zero=upper < HALF_SUBNORMAL)


def add_t(t, df):
    tails = central.t_tails(t, df)
    for tail in (1, 2):
        v = tails[tail]
        central.add("tcdf", [t, df], tail, 0 if v < HALF_SUBNORMAL else v,
                    exact_zero=v < HALF_SUBNORMAL)


def add_f(f, d1, d2):
    lower, upper = central.f_pair(f, d1, d2)
    for tail, v in ((2, lower), (1, upper)):
        central.add("fcdf", [f, d1, d2], tail, 0 if v < HALF_SUBNORMAL else v,
                    exact_zero=v < HALF_SUBNORMAL)


def tail_point(rng):
    """x with its smaller side log-uniform in [1e-12, 0.5], on either side of 1/2."""
    small = float(0.5 * 10.0 ** (-12 * rng.random()))
    return small if rng.random() < 0.5 else 1 - small


def gen_small_shapes(rng):
    for _ in range(150):
        a = float(math.exp(rng.uniform(math.log(0.05), math.log(16))))
        b = float(math.exp(rng.uniform(math.log(0.05), math.log(16))))
        add_beta(tail_point(rng), a, b)
    # a + b on both sides of 17 and near 32 (the shifted Gamma of the sum is not shifted).
    for a, b in [(8.3, 8.69), (8.3, 8.71), (9.37, 7.6400000000000006), (15.9, 15.95),
                 (0.7, 15.3), (12.25, 4.76)]:
        for x in (1e-9, 0.2, a / (a + b), 0.8, 1 - 1e-7):
            add_beta(x, a, b)


def gen_underflow():
    # The upper tail near 1 ~ y^b: from inside the normal range to far below the subnormals.
    for a, b in [(2.5, 60.0), (35.5775, 58.1384), (0.3, 93.3)]:
        for k in (4.0, 4.8, 5.0, 5.3, 5.6, 6.0, 8.0, 12.0):
            add_beta(1 - 10.0 ** -k, a, b)
    # The lower tail near 0 ~ x^a.
    for a, b in [(40.0, 3.0), (91.0652, 0.467414), (120.5, 9.75)]:
        for k in (6.0, 7.0, 7.4, 7.9, 8.2, 9.0, 12.0):
            add_beta(10.0 ** -k, a, b)
    for t, df in [(-1e10, 40.0), (1e10, 40.0), (-3e7, 45.5), (-1e60, 30.0), (-1e5, 61.0)]:
        add_t(t, df)
    for f, d1, d2 in [(1e-30, 40.0, 3.0), (1e-17, 90.0, 7.5), (3e16, 5.0, 95.0)]:
        add_f(f, d1, d2)


def gen_normal():
    for x in (1.9999999999999998, 2.0, 2.0000000000000004, 2.1, 2.8284271247461903, 3.7,
              6.5, 12.25, 26.0, 37.5, 38.4, 38.9):
        for s in (-x, x):
            tails = central.normal_tails(s)
            for tail in (1, 2, 3, 4):
                central.add("normcdf", [s], tail, tails[tail])


def gen_long_fractions(rng):
    # Student's t at df 1000 .. 2000 near |t| = 2, where the fraction in its classical form lost
    # up to 1.2e-13 (points drawn by the benchmark table).
    for t, df in [(-2.088141664385922, 1781.850136485994), (-2.0308596237955707, 1579.2225071367923),
                  (-1.8971840746446167, 1705.7903637906616), (-1.7419815579500035, 1130.735588858061),
                  (-1.9320143811987318, 1046.7954946475197), (-2.1908409280751675, 1598.6888243500275)]:
        add_t(t, df)
        add_t(-t, df)
    for df in (1400.0, 1999.0):
        for t in np.arange(1.4, 2.6, 0.1):
            add_t(float(-t), df)
    for _ in range(120):
        df = float(math.exp(rng.uniform(math.log(100), math.log(2000))))
        add_t(float(rng.uniform(-6, 6)), df)
    for _ in range(60):
        small = float(math.exp(rng.uniform(math.log(0.1), math.log(16))))
        large = float(math.exp(rng.uniform(math.log(16), math.log(1000))))
        a, b = (small, large) if rng.random() < 0.5 else (large, small)
        x = float(rng.beta(a, b)) if rng.random() < 0.5 else tail_point(rng)
        if 0 < x < 1:
            add_beta(x, a, b)
        f = float(math.exp(rng.uniform(-3, 3)))
        add_f(f, 2 * a, 2 * b)


def gen_shape_limit():
    """Shapes on both sides of 5000 (df 1e4), the largest the double path takes."""
    from scipy import stats
    for df in (9999.0, 10000.0, 10001.0):
        for x in central.points_from(lambda q: stats.t.ppf(q, df), lambda q: stats.t.isf(q, df),
                                     extra=[1.0, -2.0]):
            if abs(x) >= 1e-3:
                add_t(x, df)
    for a, b in [(4999.5, 5000.5), (5000.0, 3.25), (0.4, 4999.0), (5001.0, 2.5)]:
        for x in central.points_from(lambda q: stats.beta.ppf(q, a, b),
                                     lambda q: stats.beta.isf(q, a, b), lo=0.0, hi=1.0,
                                     extra=[a / (a + b)]):
            if 0 < x < 1:
                add_beta(x, a, b)
    for d1, d2 in [(9999.0, 10001.0), (3.5, 9999.0)]:
        for x in central.points_from(lambda q: stats.f.ppf(q, d1, d2),
                                     lambda q: stats.f.isf(q, d1, d2), lo=0.0, extra=[1.0]):
            if x > 0:
                add_f(x, d1, d2)


def main():
    rng = np.random.default_rng(20261124)
    for gen in (gen_small_shapes, gen_underflow, gen_normal, gen_long_fractions, gen_shape_limit):
        gen(rng) if gen.__code__.co_argcount else gen()
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    central.write_inc("gen_distributions_fast_paths.py", "distributions_fast_paths_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
