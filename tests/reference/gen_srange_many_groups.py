#!/usr/bin/python3
"""Reference values of the studentized range law for many groups (r from 1e3 to 2^31 - 1),
including the far lower tail where P is of order 1e-70 to 1e-300.

Writes tests/reference/srange_many_groups_ref.inc. Computed with mpmath at 40 digits,
independently of the library, from
    P(Q <= q) = integral f_Y(y) W(q e^y) dy,   Y = ln S, S = sqrt(chi2_v / v),
    W(w) = r integral phi(z) [Phi(z + w) - Phi(z)]^(r-1) dz   (range of r standard normals),
both integrals taken in log space. For huge r each integrand is a sharp peak: the inner
one's peak (of ln phi(z) + (r-1) ln(Phi(z + w) - Phi(z))) is located by Newton's method
with its analytic first and second derivatives, the outer one's (of ln f_Y + ln W) by a
bracketed Newton iteration on finite differences of ln W. Each integral is then a sum of
Gauss-Legendre panels (mpmath nodes) at the peak +- 1/2, 1, 2, 4, ... of its width
(1/sqrt of the curvature), extended until the integrand has fallen by e^-110 on both
sides; the outer integral's panels are bisected until their halves agree to 1e-18 (at few
degrees of freedom the range law's step lies inside a panel: without the bisection the
bulk at 2^31 - 1 groups and v = 10, or 5000 groups and v = 2, did not converge). Convergence: every value is recomputed with
every panel halved and twice the nodes per panel; rows whose two values differ by more than
1e-12 relative are reported and refused (they agree to 5e-13 or better, mostly 1e-14).
v = infinity is W(q) itself. The range's integrand falls double-exponentially on both
sides of its peak at many groups ((r - 1) ln(Phi(z + w) - Phi(z)) goes like -r Phi(z)): its
panels are halved while it falls by more than e^-DROP across one (before, one panel across
the fall left W(11) at 1.2e6 groups 9e-11 apart between the resolutions, and P(60; 6,
1168028) 1.9e-12; with the cap W agrees to 4e-22 there, at five times the cost, so rows of
that kind - many groups at few degrees of freedom - are taken range-first in
gen_srange_tails.py, whose outer integrand is smooth).

Run: /usr/bin/python3 tests/reference/gen_srange_many_groups.py [--all] [--jobs N]
Rows already in the table are kept (each takes minutes, the bisected ones up to half an
hour); --all recomputes every row.
"""
import math
import multiprocessing
import os
import re
import sys

import mpmath as mp

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "srange_many_groups_ref.inc")
mp.mp.dps = 40
FALL = 110  # integrands are followed until they fell by e^-FALL
DROP = 6  # the range's integrand falls by at most e^-DROP across one panel


def ncdf(z):
    return mp.erfc(-z / mp.sqrt(2)) / 2


def log_npdf(z):
    return -z * z / 2 - mp.log(2 * mp.pi) / 2


def log_between(z, w):
    """ln(Phi(z + w) - Phi(z)), accurate also where the difference is close to 1."""
    outside = ncdf(z) + ncdf(-(z + w))
    if outside < mp.mpf("0.5"):
        return mp.log1p(-outside)
    return mp.log(ncdf(z + w) - ncdf(z))


def gauss(f, a, b, nodes):
    c, h = (a + b) / 2, (b - a) / 2
    return abs(h) * mp.fsum(wt * f(c + h * x) for x, wt in nodes)


def adaptive(f, a, b, nodes, whole, scale, depth=0):
    """Integral of f over [a, b] (whole: its one-panel value), bisected until the halves
    agree with the whole to 1e-18 of scale: a step of the integrand inside a panel (the
    range law's in the outer integrand's tail, at few degrees of freedom) is followed."""
    m = (a + b) / 2
    left, right = gauss(f, a, m, nodes), gauss(f, m, b, nodes)
    if abs(left + right - whole) <= mp.mpf(10) ** -18 * scale or depth > 12:
        return left + right
    return (adaptive(f, a, m, nodes, left, scale, depth + 1)
            + adaptive(f, m, b, nodes, right, scale, depth + 1))


def panels(logf, peak, width, nodes, bisect=False, drop=None):
    """Integral of exp(logf(x) - logf(peak)) over the line: Gauss-Legendre panels with ends
    at peak +- width * (1/2, 1, 2, 4, ...), extended while the integrand has not fallen by
    e^-FALL (logf concave); with bisect, each panel bisected until it has converged; with
    drop, each panel halved while logf falls by more than drop across it. The range's
    integrand needs the cap at many groups: (r - 1) ln(Phi(z + w) - Phi(z)) falls like
    -r Phi(z) below its peak, double-exponentially, and one panel across that fall left the
    two resolutions of W(11) at 1.2e6 groups 9e-11 apart (and the outer integral of that row
    1.9e-12)."""
    top = logf(peak)
    total = mp.mpf(0)

    def f(x):
        return mp.exp(logf(x) - top)

    for direction in (1, -1):
        a, at_a, step, k = peak, top, width / 2, 0
        while True:
            b = a + direction * step
            at_b = logf(b)
            capped = False
            while drop is not None and at_a - at_b > drop:
                b, capped = a + (b - a) / 2, True
                at_b = logf(b)
            piece = gauss(f, a, b, nodes)
            if bisect:
                piece = adaptive(f, a, b, nodes, piece, max(abs(total), width))
            total += piece
            k += 1
            if at_b - top < -FALL:
                break
            if k > 400:
                raise RuntimeError("integrand does not fall")
            step = abs(b - a) if capped else max(abs(b - peak), step)
            a, at_a = b, at_b
    return top, total


class Law:
    def __init__(self, q, v, r, nodes, split):
        self.q, self.v, self.r = mp.mpf(q), (mp.inf if v == math.inf else mp.mpf(v)), r
        self.nodes, self.split = nodes, split

    def log_range(self, w):
        """ln W(w)."""
        r = self.r

        def logg(z):
            return log_npdf(z) + (r - 1) * log_between(z, w)

        # Newton on d/dz ln g = -z + (r-1) (phi(z+w) - phi(z)) / D from z = -w/2.
        z = -w / 2
        for _ in range(200):
            D = ncdf(z + w) - ncdf(z)
            a, b = mp.npdf(z + w), mp.npdf(z)
            g1 = -z + (r - 1) * (a - b) / D
            g2 = -1 + (r - 1) * ((-(z + w) * a + z * b) / D - ((a - b) / D) ** 2)
            step = -g1 / g2
            step = max(min(step, mp.mpf(1)), mp.mpf(-1))
            z += step
            if abs(step) < mp.mpf(10) ** -30 * (1 + abs(z)):
                break
        width = 1 / mp.sqrt(-g2) / self.split
        top, integral = panels(logg, z, width, self.nodes, drop=DROP)
        return mp.log(r) + top + mp.log(integral)

    def log_density(self, y):
        v = self.v
        return (mp.log(2) + (v / 2) * mp.log(v / 2) - mp.loggamma(v / 2) + v * y
                - v * mp.exp(2 * y) / 2)

    def log_outer(self, y):
        return self.log_density(y) + self.log_range(self.q * mp.exp(y))

    def log_p(self):
        if self.v == mp.inf:
            return self.log_range(self.q)
        v, r = self.v, self.r
        # Mode of the outer integrand in [lo, hi] (its slope changes sign there; the range
        # part's elasticity lies in [0, r-1]).
        lo, hi = mp.mpf(-3), mp.log1p((r - 1) / v) / 2 + 1
        h = mp.mpf(10) ** -8

        def slope_curv(y):
            a, b, c = self.log_outer(y - h), self.log_outer(y), self.log_outer(y + h)
            return (c - a) / (2 * h), (c - 2 * b + a) / (h * h)

        y = (lo + hi) / 2
        for _ in range(200):
            s, c = slope_curv(y)
            if s > 0:
                lo = y
            else:
                hi = y
            nxt = y - s / c if c < 0 else (lo + hi) / 2
            if not (lo < nxt < hi):
                nxt = (lo + hi) / 2
            if abs(nxt - y) < mp.mpf(10) ** -12 or hi - lo < mp.mpf(10) ** -12:
                y = nxt
                break
            y = nxt
        s, c = slope_curv(y)
        width = 1 / mp.sqrt(-c) / self.split
        top, integral = panels(self.log_outer, y, width, self.nodes, bisect=True)
        return top + mp.log(integral)


def probability(q, v, r):
    """P at two resolutions; returns the finer value and their relative difference."""
    coarse = mp.calculus.quadrature.GaussLegendre(mp.mp).calc_nodes(3, mp.mp.prec)
    fine = mp.calculus.quadrature.GaussLegendre(mp.mp).calc_nodes(4, mp.mp.prec)
    a = Law(q, v, r, coarse, 1).log_p()
    b = Law(q, v, r, fine, 2).log_p()
    return mp.exp(b), abs(mp.expm1(a - b))


CASES = [
    # far lower tail of huge group counts
    (1.0, 3.0, 50000000), (0.8834, 5.0, 120000000), (0.9, 5.0, 120000000),
    (0.8, 5.0, 122651915), (1.5, 10.0, 10000000), (2.5, 10.0, 2147483646),
    # moderate tails
    (3.0, 10.0, 1000), (5.0, 10.0, 1000), (7.0, 20.0, 1000),
    (4.0, 10.0, 100000), (6.0, 30.0, 100000), (8.0, 5.0, 100000),
    (5.0, 10.0, 10000000), (7.0, 50.0, 10000000), (9.0, 10.0, 10000000),
    (11.0, 1e6, 2147483647),
    # the bulk and the upper tail, where P is close to 1 (its complement down to 2e-9)
    (12.0, 10.0, 2147483647), (8.0, 2.0, 5000), (18.0, 100.0, 10000000),
    (13.0, 1e4, 1000000),
    # the v = infinity limit
    (3.0, math.inf, 1000), (6.0, math.inf, 1000), (5.0, math.inf, 100000),
    (7.0, math.inf, 10000000), (1.0, math.inf, 50000000), (11.0, math.inf, 2147483647),
    (15.0, math.inf, 2147483647),
]


def computed(case):
    q, v, r = case
    value, diff = probability(q, v, r)
    print("srange", q, v, r, mp.nstr(value, 20), "convergence", mp.nstr(diff, 3),
          file=sys.stderr, flush=True)
    if diff > mp.mpf(10) ** -12:
        print("  refused: not converged", file=sys.stderr)
        return None
    if value < mp.mpf("2.2250738585072014e-308"):
        return None
    return float(value)


def kept_rows():
    """The table's rows by (q, v, r), as written by this script."""
    rows = {}
    if os.path.exists(OUT):
        pattern = re.compile(r"\{([^,{}]+), ([^,{}]+), (\d+), ([^,{}]+)\},")
        for line in open(OUT):
            m = pattern.search(line)
            if m:
                v = math.inf if m.group(2) == "INFINITY" else float(m.group(2))
                rows[(float(m.group(1)), v, int(m.group(3)))] = float(m.group(4))
    return rows


def main():
    kept = {} if "--all" in sys.argv else kept_rows()
    jobs = int(sys.argv[sys.argv.index("--jobs") + 1]) if "--jobs" in sys.argv else 1
    todo = [case for case in CASES if case not in kept]
    with multiprocessing.Pool(jobs) as pool:
        kept.update((case, value) for case, value in zip(todo, pool.map(computed, todo, 1))
                    if value is not None)
    rows = [(q, v, r, kept[(q, v, r)]) for q, v, r in CASES if (q, v, r) in kept]
    with open(OUT, "w") as out:
        out.write("// Generated by tests/reference/gen_srange_many_groups.py; do not edit.\n")
        out.write("// Studentized range lower tail P(Q <= q; v, r) for many groups, mpmath 40 digits.\n")
        out.write("#pragma once\nnamespace ref_srange_many {\n")
        out.write("struct Row { double q; double v; int r; double value; };\n")
        out.write("inline constexpr Row kRows[] = {\n")
        for q, v, r, value in rows:
            vs = "INFINITY" if v == math.inf else repr(float(v))
            out.write("    {%r, %s, %d, %s},\n" % (q, vs, r, repr(value)))
        out.write("};\n}  // namespace ref_srange_many\n")


if __name__ == "__main__":
    main()
