#!/usr/bin/python3
"""Reference values where the double path of the incomplete beta takes its second side
directly (incomplete_beta.cpp):
  - one shape small (0.05 .. 5) beside a large one (16 .. 5000), the argument between 0.4
    times the switch point of the continued fraction and the switch point itself, where the
    side computed first lies above 0.9 and the other is taken by its own fraction;
  - the same for Student's t (df 30 .. 1e4, |t| near 1.2 .. 1.9) and F (one small and one large
    degree of freedom);
  - arguments near 1 where the upper beta tail lies below the normal double range but not
    below half the smallest subnormal, so that the lower tail is 1 (as rounded).

Writes distributions_beta_sides_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
The incomplete beta (continued fraction at 60 digits) and the t and F relations are those of
gen_distributions_central.py (imported; mpmath does the arithmetic).
Run: /usr/bin/python3 tests/reference/gen_distributions_beta_sides.py
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
    lower, upper = central.ibeta(a, b, x, 1 - MPF(x))
    for tail, v in ((2, lower), (1, upper)):
        central.add("betacdf", [x, a, b], tail, 0 if v < HALF_SUBNORMAL else v,
                    exact_zero=v < HALF_SUBNORMAL)


def add_t(t, df):
    tails = central.t_tails(t, df)
    for tail in (1, 2, 3, 4):
        central.add("tcdf", [t, df], tail, tails[tail])


def add_f(f, d1, d2):
    lower, upper = central.f_pair(f, d1, d2)
    for tail, v in ((2, lower), (1, upper)):
        central.add("fcdf", [f, d1, d2], tail, v)


def log_uniform(rng, lo, hi):
    return float(math.exp(rng.uniform(math.log(lo), math.log(hi))))


def gen_beta(rng):
    for _ in range(160):
        small, large = log_uniform(rng, 0.05, 5.0), log_uniform(rng, 16.0, 5000.0)
        position = rng.uniform(0.4, 1.0)
        if rng.random() < 0.5:  # x below the switch point (a + 1)/(a + b + 2)
            a, b = small, large
            x = position * (a + 1) / (a + b + 2)
        else:  # 1 - x below (b + 1)/(a + b + 2)
            a, b = large, small
            x = 1 - position * (b + 1) / (a + b + 2)
        add_beta(float(x), a, b)


def gen_t(rng):
    for _ in range(120):
        df = log_uniform(rng, 30.0, 1e4)
        b = df / 2
        x = rng.uniform(0.4, 1.0) * 1.5 / (b + 2.5)  # t^2 / (df + t^2) below the switch point
        t = math.sqrt(df * x / (1 - x))
        add_t(float(t if rng.random() < 0.5 else -t), df)


def gen_f(rng):
    for _ in range(80):
        d1, d2 = 2 * log_uniform(rng, 0.05, 5.0), 2 * log_uniform(rng, 16.0, 5000.0)
        if rng.random() < 0.5:
            d1, d2 = d2, d1
        a, b = d1 / 2, d2 / 2
        position = rng.uniform(0.4, 1.0)
        z = position * (a + 1) / (a + b + 2) if a < b else 1 - position * (b + 1) / (a + b + 2)
        add_f(float(d2 * z / (d1 * (1 - z))), d1, d2)


def gen_far_side():
    # b ln(1 - x) from -700 to -760: the upper tail from just inside the normal range to
    # below the subnormals; the lower tail is 1 to double precision throughout.
    for a, b in [(48.6944, 63.9604), (3.51397, 80.1356), (6.97977, 48.7047), (1.51932, 63.4743)]:
        for k in (690.0, 705.0, 720.0, 735.0, 745.0, 760.0):
            add_beta(float(-math.expm1(-k / b)), a, b)


def main():
    rng = np.random.default_rng(20261124)
    for gen in (gen_beta, gen_t, gen_f, gen_far_side):
        gen(rng) if gen.__code__.co_argcount else gen()
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    central.write_inc("gen_distributions_beta_sides.py", "distributions_beta_sides_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
