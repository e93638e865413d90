#!/usr/bin/python3
"""Writes gridding_predicates_ref.inc: exact signs of the orientation and in-circle
determinants for point sets near the limits of the floating-point filters.

Oracle: exact rational arithmetic (Python's fractions on the doubles' exact values),
cross-checked with mpmath at 12000 bits (enough for any product of four differences of
doubles), independent of the library. For each row a, b, c, d: the sign of
(ax - cx)(by - cy) - (ay - cy)(bx - cx), and of the in-circle determinant
|adx ady adx^2+ady^2; bdx bdy ...; cdx cdy ...| with differences taken from d.
Shapes (nearly collinear, nearly cocircular by one ulp, exactly degenerate, random) are
scaled from 1e-310 to 1e300, so that products underflow, overflow, or leave permanents
just below and above the filters' cut-offs, and by powers of 2 on both sides of the
coordinate ranges in which the exact stages work in double (2^-215 and 2^250 for the
in-circle test, 2^-480 and 2^500 for the orientation). Dense-curve shapes (four close
points on parabolas y = c x^2 and on a circle, some a few ulps off, some straddling 0)
give exact or inexact coordinate differences and determinants far below the filter's
bound; exact grids and rectangles whose differences are exact, or not (coordinates of
mixed magnitudes, 1e9 plus small offsets, corners from 2^-1000 to 2^1000), give exact ties
and one-ulp neighbours of them.
Run: /usr/bin/python3 tests/reference/gen_gridding_predicates.py > tests/reference/gridding_predicates_ref.inc
"""
import math
from fractions import Fraction

import mpmath
import numpy as np

mpmath.mp.prec = 12000
rng = np.random.default_rng(20261124)


def sign(v):
    return (v > 0) - (v < 0)


def orient(a, b, c, num):
    acx, bcy = num(a[0]) - num(c[0]), num(b[1]) - num(c[1])
    acy, bcx = num(a[1]) - num(c[1]), num(b[0]) - num(c[0])
    return sign(acx * bcy - acy * bcx)


def incircle(a, b, c, d, num):
    adx, ady = num(a[0]) - num(d[0]), num(a[1]) - num(d[1])
    bdx, bdy = num(b[0]) - num(d[0]), num(b[1]) - num(d[1])
    cdx, cdy = num(c[0]) - num(d[0]), num(c[1]) - num(d[1])
    al, bl, cl = adx * adx + ady * ady, bdx * bdx + bdy * bdy, cdx * cdx + cdy * cdy
    return sign(al * (bdx * cdy - cdx * bdy) + bl * (cdx * ady - adx * cdy) + cl * (adx * bdy - bdx * ady))


def up(v, k=1):
    for _ in range(k):
        v = math.nextafter(v, math.inf)
    return v


shapes = [
    # nearly collinear c, nearly cocircular d (unit square corners, d one ulp off)
    ((0.0, 0.0), (1.0, 1.0), (0.5, up(0.5)), (0.0, up(1.0))),
    ((0.0, 0.0), (1.0, 0.0), (1.0, 1.0), (0.0, 1.0)),  # exactly cocircular
    ((0.0, 0.0), (1.0, 0.0), (1.0, 1.0), (up(0.0, 3), 1.0)),
    ((0.1, 0.1), (0.3, 0.3), (0.7, 0.7), (0.2, 0.9)),  # collinear in decimal, not in binary
    ((1.0, 2.0), (3.0, 6.0), (2.0, 4.0), (5.0, 1.0)),  # exactly collinear
    ((0.0, 0.0), (1.0, 0.0), (0.0, 1.0), (1.0, up(1.0))),
    ((0.0, 0.0), (2.0, 0.0), (1.0, 1e-17), (1.0, -1.0)),
]
for _ in range(6):
    p = rng.random((4, 2))
    shapes.append(tuple((float(u), float(v)) for u, v in p))
# a point one ulp inside and outside the circle through three random points on a circle
for k in range(3):
    t = rng.random(4) * 2 * np.pi
    pts = [(math.cos(s), math.sin(s)) for s in t]
    shapes.append(tuple(pts))
    shapes.append(tuple(pts[:3] + [(up(pts[3][0]), pts[3][1])]))


def down(v, k=1):
    for _ in range(k):
        v = math.nextafter(v, -math.inf)
    return v


curves = []
# four close points on a parabola, the last nudged by -1..1 ulp in y; some windows
# straddle x = 0, where the differences stop being exact
for c in (1e-2, 1e-6):
    for x0, w in ((0.5, 1e-6), (-0.75, 3e-6), (0.0, 2e-6), (1e-3, 1e-5), (-2e-7, 1e-6)):
        xs = sorted(x0 + w * float(t) for t in rng.random(4))
        for k in (-1, 0, 1):
            pts = [(x, c * x * x) for x in xs]
            pts[3] = (pts[3][0], up(pts[3][1], k) if k >= 0 else down(pts[3][1], -k))
            curves.append(tuple(pts[:2] + [pts[3], pts[2]]))
# four close points on the unit circle, near angles where sin or cos crosses 0
for t0 in (1.0, 1e-9, math.pi / 2, -3e-6):
    ts = sorted(t0 + 4e-6 * float(t) for t in rng.random(4))
    pts = [(math.cos(t), math.sin(t)) for t in ts]
    curves.append(tuple(pts))
    curves.append(tuple(pts[:3] + [(up(pts[3][0]), pts[3][1])]))
# exact grids (integers, offset integers, binary fractions): cocircular squares and
# their one-ulp neighbours
for base, h in ((0.0, 1.0), (1e6, 1.0), (2.0 ** 40, 3.0), (0.5, 2.0 ** -30), (-7.0, 0.25)):
    sq = [(base, base), (base + h, base), (base + h, base + h), (base, base + h)]
    curves.append(tuple(sq))
    curves.append(tuple(sq[:3] + [(up(sq[3][0]), sq[3][1])]))
    curves.append(tuple(sq[:3] + [(sq[3][0], down(sq[3][1]))]))
# rectangles (always cocircular) whose differences are not exact: mixed magnitudes,
# large values plus small offsets; and one-ulp neighbours
for u, v, p, q in ((-3 * 2.0 ** -60, 1 + 2.0 ** -52, 2.0 ** -70, 0.75 + 2.0 ** -53),
                   (1e9 + 0.1, 1e9 + 0.30000001, -1e-9, 0.2),
                   (1e9 + 0.1, -1e-7, 0.1, 1e9 + 0.7),
                   (-1e-300, 3.0, 1e-17, 1.0 + 2.0 ** -52)):
    rect = [(u, p), (v, p), (v, q), (u, q)]
    curves.append(tuple(rect))
    curves.append(tuple(rect[:3] + [(up(u), q)]))
    curves.append(tuple(rect[:3] + [(u, down(q))]))
    curves.append(tuple(rect[:2] + [(v, up(q)), (u, q)]))
# rectangles with a corner at the origin: exact differences spanning about 60, 100 and
# 150 bits (the in-circle test's integer evaluation in one limb, in two, and the
# expansions beyond), and one-ulp neighbours
for v, p in ((2.0 ** 20 + 1, 3 * 2.0 ** -40), (2.0 ** 40 + 1, -(2.0 ** -59 + 2.0 ** -111)),
             (-(2.0 ** 60 + 3), 2.0 ** -80 + 2.0 ** -100)):
    rect = [(0.0, p), (v, p), (v, 0.0), (0.0, 0.0)]
    curves.append(tuple(rect))
    curves.append(tuple([rect[0], (up(v), p)] + rect[2:]))
    curves.append(tuple([(0.0, up(p))] + rect[1:]))
# rectangles whose corners mix magnitudes far apart (within the double stages' range and
# beyond it): differences of two components many exponents apart, whose products give the
# longest expansions, cancelling exactly to 0 for the rectangle itself; and one-ulp
# neighbours
for u, v, p, q in ((2.0 ** 200, -(2.0 ** -200), 3 * 2.0 ** -190, -(2.0 ** 240 + 2.0 ** 188)),
                   (2.0 ** 240 + 2.0 ** 188, 2.0 ** -214, -(2.0 ** 230), 2.0 ** -100),
                   (1e300, -1e-300, 1e-200, -3e250),
                   (2.0 ** 1000 + 2.0 ** 948, -(2.0 ** -1000), 2.0 ** -1020, 2.0 ** 900),
                   (-1e-310, 1e308, 3e-320, -1.5e307)):
    rect = [(u, p), (v, p), (v, q), (u, q)]
    curves.append(tuple(rect))
    curves.append(tuple(rect[:3] + [(up(u), q)]))
    curves.append(tuple(rect[:3] + [(u, down(q))]))
    curves.append(tuple([rect[1], rect[3], rect[0], rect[2]]))

# points spread around the origin, c rounded onto the line ab and d onto the circle
# abc, so that both determinants are a few eps of their permanents and the differences
# are rarely exact: the cases between the filter's bound and the exact evaluation
borderline = []
for _ in range(60):
    a, b = [tuple(float(v) for v in p) for p in rng.uniform(-1, 1, (2, 2))]
    t = float(rng.uniform(-0.5, 1.5))
    c = (a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]))
    q = tuple(float(v) for v in rng.uniform(-1, 1, 2))
    # circumcentre of a, b, q in floating point, d on that circle
    d1 = 2 * (a[0] * (b[1] - q[1]) + b[0] * (q[1] - a[1]) + q[0] * (a[1] - b[1]))
    ux = ((a[0] ** 2 + a[1] ** 2) * (b[1] - q[1]) + (b[0] ** 2 + b[1] ** 2) * (q[1] - a[1]) +
          (q[0] ** 2 + q[1] ** 2) * (a[1] - b[1])) / d1
    uy = ((a[0] ** 2 + a[1] ** 2) * (q[0] - b[0]) + (b[0] ** 2 + b[1] ** 2) * (a[0] - q[0]) +
          (q[0] ** 2 + q[1] ** 2) * (b[0] - a[0])) / d1
    r = math.hypot(a[0] - ux, a[1] - uy)
    ang = float(rng.uniform(0, 2 * math.pi))
    d = (ux + r * math.cos(ang), uy + r * math.sin(ang))
    borderline.append((a, b, c, d) if _ % 2 else (a, b, q, d))

boundary = [2.0 ** -215, 2.0 ** -216, 2.0 ** 250, 2.0 ** 251,
            2.0 ** -480, 2.0 ** -481, 2.0 ** 500, 2.0 ** 501]
scales = [1.0, 1e-300, 1e-310, 2.0 ** -450, 2.0 ** -445, 2.0 ** -225, 2.0 ** -222, 1e150, 1e300]
rows = []
for shape, shape_scales in [(sh, scales + boundary) for sh in shapes] + \
        [(sh, [1.0, 2.0 ** -215, 2.0 ** -216, 2.0 ** 250, 2.0 ** 251]) for sh in curves] + \
        [(sh, [1.0, 2.0 ** -200]) for sh in borderline]:
    for s in shape_scales:
        pts = [(x * s, y * s) for x, y in shape]
        if any(not math.isfinite(v) for p in pts for v in p):
            continue
        a, b, c, d = pts
        o = orient(a, b, c, Fraction)
        ic = incircle(a, b, c, d, Fraction)
        assert o == orient(a, b, c, mpmath.mpf)
        assert ic == incircle(a, b, c, d, mpmath.mpf)
        rows.append((a, b, c, d, o, ic))

print("// Generated by tests/reference/gen_gridding_predicates.py (exact rationals); do not edit.")
print("struct PredicateReference { double ax, ay, bx, by, cx, cy, dx, dy; int orient, incircle; };")
print("const PredicateReference kPredicateReference[] = {")
for a, b, c, d, o, ic in rows:
    vals = ", ".join(repr(v) for p in (a, b, c, d) for v in p)
    print(f"    {{{vals}, {o}, {ic}}},")
print("};")
