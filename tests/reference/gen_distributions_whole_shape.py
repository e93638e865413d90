#!/usr/bin/python3
"""Reference values for beta and F probabilities where one shape is a whole number from 2
to 12 and the other large and not whole (shapes above the double path's 1000), where the
extended evaluation takes the negative binomial sums: betacdf with either shape whole,
fcdf with df2 (or df1) twice a whole number, both tails, at the probability levels of
TARGETS and a few body points.

Writes distributions_whole_shape_ref.inc next to this script, in the X-macro form of
distributions_central_ref.inc:
    REF(fn, a0, a1, a2, tail, expected)
The incomplete beta is gen_distributions_central.py's (continued fraction at 60 digits,
DLMF 8.17.22; mpmath does the arithmetic, SciPy only places the evaluation points).
Run: /usr/bin/python3 tests/reference/gen_distributions_whole_shape.py
"""
import os
import warnings
import sys

import mpmath as mp
from scipy import stats

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_distributions_central as central  # noqa: E402

LARGE = [1000.5, 1050.5, 4321.25, 20000.5, 333333.3]
WHOLE = [2, 3, 6, 8, 12]


def gen_beta():
    for big in LARGE:
        for n in WHOLE:
            for a, b in ((big, float(n)), (float(n), big)):
                xs = central.points_from(lambda q: stats.beta.ppf(q, a, b),
                                         lambda q: stats.beta.isf(q, a, b), 0.0, 1.0)
                for x in xs:
                    lower, upper = central.ibeta(a, b, x)
                    central.add("betacdf", [x, a, b], 1, upper)
                    central.add("betacdf", [x, a, b], 2, lower)


def gen_f():
    for big in (2001.0, 2100.0, 8642.5):
        for n in (2, 6, 12):
            for d1, d2 in ((big, 2.0 * n), (2.0 * n, big)):
                xs = central.points_from(lambda q: stats.f.ppf(q, d1, d2),
                                         lambda q: stats.f.isf(q, d1, d2), 0.0)
                xs.append(0.5298)
                for x in xs:
                    lower, upper = central.f_pair(x, d1, d2)
                    central.add("fcdf", [x, d1, d2], 1, upper)
                    central.add("fcdf", [x, d1, d2], 2, lower)


def main():
    warnings.filterwarnings("ignore", category=RuntimeWarning)  # SciPy placing points
    for gen in (gen_beta, gen_f):
        gen()
    central.write_inc("gen_distributions_whole_shape.py", "distributions_whole_shape_ref.inc",
                      "REF(fn, a0, a1, a2, tail, expected)")


if __name__ == "__main__":
    main()
