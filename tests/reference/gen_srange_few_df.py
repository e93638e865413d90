#!/usr/bin/python3
"""Reference values of the studentized range law for many groups and few degrees of freedom
(v near 1), where the range law's step in the scale's log is many times narrower than the
scale's density: the outer integral's hardest shape.

Writes tests/reference/srange_few_df_ref.inc. Computed with mpmath at 25 digits,
independently of the library, from
    P(Q <= q) = integral f_Y(y) W(q e^y) dy,   Y = ln S, S = sqrt(chi2_v / v),
W the range law of r standard normals, taken as in gen_srange_many_groups.py (its Law: the
inner integrand's peak located by Newton's method, Gauss-Legendre panels about it until it
has fallen by e^-110). The outer integral: W's step is located first (the w where
-ln W(w) = 1, by the secant method in ln w, and the rate kappa = -d ln(-ln W) / d ln w there),
then Gauss-Legendre pieces take the line from 8 step widths 1/kappa below the step (W <
e^-2900 there) to where the scale's density has fallen by e^-300: one step width long from -8
to 3 widths, then cut at 5, 10, 20 and 40 widths and at the scale's mode y = 0, elsewhere at
most half a unit of y long, so that every piece is smooth on its own scale.
Convergence: each value is computed twice, with 30 points a piece and the finer inner panels
and with 20 points and the coarser ones; rows whose two values differ by more than 1e-13
relative are reported and refused (3e-14 at q = 50, v = 1, 2^31 - 1 groups).

Run: /usr/bin/python3 tests/reference/gen_srange_few_df.py [--jobs N]
"""
import math
import multiprocessing
import os
import sys

import mpmath as mp

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_srange_many_groups as many  # noqa: E402

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "srange_few_df_ref.inc")

CASES = [
    # the bulk at one degree of freedom and the largest group count
    (50.0, 1.0, 2147483647),
]


def step(law, r):
    """ln w where -ln W(w) = 1, and kappa there."""
    def g(x):
        return mp.log(-law.log_range(mp.exp(x)))

    x0 = mp.log(2 * mp.sqrt(2 * mp.log(r)))
    x1 = x0 + mp.mpf("0.01")
    g0, g1 = g(x0), g(x1)
    for _ in range(60):
        x2 = x1 - g1 * (x1 - x0) / (g1 - g0)
        x0, g0, x1, g1 = x1, g1, x2, g(x2)
        if abs(x1 - x0) < mp.mpf(10) ** -12:
            break
    d = mp.mpf(10) ** -6
    return x1, -(g(x1 + d) - g(x1 - d)) / (2 * d)


def probability(q, v, r, fine):
    gl = mp.calculus.quadrature.GaussLegendre(mp.mp)
    nodes = gl.calc_nodes(4 if fine else 3, mp.mp.prec)
    law = many.Law(q, v, r, nodes, 2 if fine else 1)
    log_w, kappa = step(law, r)
    yc = log_w - mp.log(q)
    # Below 8 step widths W < e^-2900; above y_top the scale's density has fallen by e^-300
    # from its mode (v (s^2 - 1 - 2y) / 2 = 300).
    y_top = mp.findroot(lambda y: v * (mp.exp(2 * y) - 1 - 2 * y) / 2 - 300, mp.mpf(3))
    cuts = {yc + k / kappa for k in (-8, -7, -6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 5, 10, 20, 40)}
    cuts = sorted(c for c in cuts | {mp.mpf(0), y_top} if c <= y_top)
    # Elsewhere pieces at most half a unit of y long.
    pieces = []
    for a, b in zip(cuts, cuts[1:]):
        n = int(mp.ceil((b - a) / mp.mpf("0.5")))
        pieces += [(a + (b - a) * i / n, a + (b - a) * (i + 1) / n) for i in range(n)]
    points = 30 if fine else 20
    # Gauss-Legendre nodes and weights by Newton's method on P_n.
    rule = []
    for i in range(points):
        x = mp.cos(mp.pi * (i + mp.mpf(3) / 4) / (points + mp.mpf(1) / 2))
        for _ in range(100):
            p0, p1 = mp.mpf(1), x
            for k in range(2, points + 1):
                p0, p1 = p1, ((2 * k - 1) * x * p1 - (k - 1) * p0) / k
            dp = points * (x * p1 - p0) / (x * x - 1)
            dx = p1 / dp
            x -= dx
            if abs(dx) < mp.mpf(10) ** (-mp.mp.dps):
                break
        rule.append((x, 2 / ((1 - x * x) * dp * dp)))

    def f(y):
        # W = 1 to far beyond the working precision where all r normals may lie within
        # +-w/2 with certainty to 1e-40: 1 - W(w) <= r erfc(w / (2 sqrt 2)). (Law's inner
        # peak search, which starts at -w/2 with unit steps, is not made for such w.)
        w = q * mp.exp(y)
        if r * mp.erfc(w / (2 * mp.sqrt(2))) < mp.mpf(10) ** -40:
            return mp.exp(law.log_density(y))
        return mp.exp(law.log_outer(y))

    return mp.fsum(many.gauss(f, a, b, rule) for a, b in pieces)


def computed(case):
    q, v, r = case
    mp.mp.dps = 25
    a = probability(q, v, r, True)
    b = probability(q, v, r, False)
    diff = abs(a - b) / a
    print("srange", q, v, r, mp.nstr(a, 20), "convergence", mp.nstr(diff, 3),
          file=sys.stderr, flush=True)
    if diff > mp.mpf(10) ** -13:
        print("  refused: not converged", file=sys.stderr)
        return None
    return float(a)


def main():
    jobs = int(sys.argv[sys.argv.index("--jobs") + 1]) if "--jobs" in sys.argv else 1
    cases = CASES
    if "--only" in sys.argv:
        cases = [CASES[int(sys.argv[sys.argv.index("--only") + 1])]]
    with multiprocessing.Pool(jobs) as pool:
        values = pool.map(computed, cases, 1)
    if "--only" in sys.argv:
        return
    rows = [(q, v, r, value) for (q, v, r), value in zip(cases, values) if value is not None]
    with open(OUT, "w") as out:
        out.write("// Generated by tests/reference/gen_srange_few_df.py; do not edit.\n")
        out.write("// Studentized range lower tail P(Q <= q; v, r), many groups and few degrees of\n")
        out.write("// freedom, mpmath 25 digits.\n")
        out.write("#pragma once\nnamespace ref_srange_few_df {\n")
        out.write("struct Row { double q; double v; int r; double value; };\n")
        out.write("inline constexpr Row kRows[] = {\n")
        for q, v, r, value in rows:
            out.write("    {%r, %r, %d, %s},\n" % (q, float(v), r, repr(value)))
        out.write("};\n}  // namespace ref_srange_few_df\n")


if __name__ == "__main__":
    main()
