#!/usr/bin/python3
"""Reference values of Student's t at large degrees of freedom, where the double path of the
incomplete beta takes I_x(1/2, df/2) up to df = 2e6 (incomplete_beta.cpp, g01_central.cpp):
  - the probability at df drawn log-uniform in [5e3, 2e6] and t uniform in [-12, 12], and at
    the target probabilities of both tails (down to 1e-300) at df 1e4, 3e4, 1e5, 1e6 and on
    both sides of the switch point 2e6;
  - the deviate at df drawn likewise and p with its smaller tail log-uniform in [1e-300, 0.5],
    and at the target probabilities at the same fixed df.

Writes distributions_t_large_df_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
The t tails and deviates are those of gen_distributions_central.py (imported; mpmath does the
arithmetic, SciPy places the points).
Run: /usr/bin/python3 tests/reference/gen_distributions_t_large_df.py
"""
import math
import os
import sys

import numpy as np
from scipy import stats

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402

FIXED_DF = [1e4, 3e4, 1e5, 1e6, 1999999.0, 2000000.0, 2000001.0]


def add_t(t, df):
    tails = central.t_tails(t, df)
    for tail in (1, 2, 3, 4):
        central.add("tcdf", [t, df], tail, tails[tail])


def add_tinv(p, df):
    for tail in (1, 2):
        central.add("tinv", [p, df], tail, central.t_deviate(p, df, tail))


def gen_probabilities(rng):
    for _ in range(150):
        df = float(math.exp(rng.uniform(math.log(5e3), math.log(2e6))))
        add_t(float(rng.uniform(-12, 12)), df)
    for df in FIXED_DF:
        for t in central.points_from(lambda q: stats.t.ppf(q, df), lambda q: stats.t.isf(q, df),
                                     extra=[1.0, -1.7, 2.0]):
            if abs(t) >= 1e-3:
                add_t(t, df)


def gen_deviates(rng):
    for _ in range(60):
        df = float(math.exp(rng.uniform(math.log(5e3), math.log(2e6))))
        small = float(0.5 * 10.0 ** (-300 * rng.random() ** 3))
        add_tinv(small if rng.random() < 0.5 else 1 - small, df)
    for df in (1e4, 1e5, 1e6, 1999999.0, 2000001.0):
        for p in central.TARGETS[1:] + central.NEAR_ONE:
            add_tinv(p, df)


def main():
    rng = np.random.default_rng(20261124)
    for gen in (gen_probabilities, gen_deviates):
        gen(rng)
        print(gen.__name__, "done", file=sys.stderr, flush=True)
    central.write_inc("gen_distributions_t_large_df.py", "distributions_t_large_df_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
