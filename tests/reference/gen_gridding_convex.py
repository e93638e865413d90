#!/usr/bin/python3
"""Writes gridding_convex_ref.inc: Delaunay triangles of points in convex position.

Oracle: scipy.spatial.Delaunay (the Qhull library through SciPy), independent of the
library, each result checked with exact rational arithmetic (fractions.Fraction on the
given doubles): every triangle counter-clockwise, every interior edge strictly Delaunay
(so the triangulation is the only Delaunay one), Euler's count 2 n - h - 2 with h the
points on the hull boundary. Qhull works in rounded arithmetic and fails that check on
dense points along a curve (nearly cocircular quadruples everywhere); for the parabolas,
whose points are all hull vertices, the triangles then come from the exact construction
of a convex polygon's Delaunay triangulation (below, in integers), which passes the same
check; the table's comment says which oracle each case used.
Cases:
  - y = x^2 / 128 and y = x^2 / 2^20 with x = 1 + j / 4096 for distinct random j in
    [0, 8192]: exactly on the curve, so in strictly convex position, and no four of them
    cocircular (four points of a parabola are cocircular only when their x sum to 0);
  - y = x^2 / 128 with exactly collinear runs on the hull: the top chord from (-1, 1/128)
    to (1, 1/128) and the chord from x = 1/4 to x = 1/2 replacing the curve there, with
    points on dyadic x so that they lie exactly on their lines.
Points are sorted by x (then y) so that indices equal the triangulation's node indices;
each triangle is written as its sorted vertex triple, the list sorted.
Run: /usr/bin/python3 tests/reference/gen_gridding_convex.py > tests/reference/gridding_convex_ref.inc
"""
from fractions import Fraction

import numpy as np
from scipy.spatial import Delaunay

rng = np.random.default_rng(20261124)


def orient(a, b, c):
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])


def incircle(a, b, c, d):
    rows = []
    for p in (a, b, c):
        dx, dy = p[0] - d[0], p[1] - d[1]
        rows.append((dx, dy, dx * dx + dy * dy))
    (a1, a2, a3), (b1, b2, b3), (c1, c2, c3) = rows
    return (a1 * (b2 * c3 - b3 * c2) - a2 * (b1 * c3 - b3 * c1) + a3 * (b1 * c2 - b2 * c1))


def check_exact(x, y, tris):
    pts = [(Fraction(float(u)), Fraction(float(v))) for u, v in zip(x, y)]
    third = {}
    for t in tris:
        a, b, c = t
        if orient(pts[a], pts[b], pts[c]) < 0:
            b, c = c, b
        assert orient(pts[a], pts[b], pts[c]) > 0, "degenerate triangle"
        for u, v, w in ((a, b, c), (b, c, a), (c, a, b)):
            assert (u, v) not in third, "edge used twice"
            third[(u, v)] = w
    hull = [e for e in third if (e[1], e[0]) not in third]
    for (u, v), w in third.items():
        if (v, u) in third and u < v:
            d = third[(v, u)]
            assert incircle(pts[u], pts[v], pts[w], pts[d]) < 0, "not strictly Delaunay"
    used = {v for t in tris for v in t}
    assert used == set(range(len(x))), "a point left out"
    assert len(tris) == 2 * len(x) - len(hull) - 2, "Euler count"


def arr(values, kind="d"):
    if kind == "d":
        return "{" + ", ".join(repr(float(v)) for v in values) + "}"
    return "{" + ", ".join(str(int(v)) for v in values) + "}"


def parabola(n, c):
    x = 1 + rng.choice(8193, size=n, replace=False) / 4096.0
    y = c * x * x
    assert all(Fraction(float(v)) == Fraction(c) * Fraction(float(u)) ** 2 for u, v in zip(x, y))
    return x, y


def convex_polygon_delaunay(x, y):
    """Delaunay triangles of points in strictly convex position sorted along the lower
    chain (x increasing, the closing edge from the last to the first): the triangle on
    edge (i, j) takes the k between them whose circle through i and j holds none of the
    others (the circles through i and j are ordered, so one pass finds it)."""
    scale = 2 ** 80
    pts = [(int(Fraction(float(u)) * scale), int(Fraction(float(v)) * scale)) for u, v in zip(x, y)]
    assert all(Fraction(float(u)) * scale == p[0] for u, p in zip(x, pts))
    assert all(Fraction(float(v)) * scale == p[1] for v, p in zip(y, pts))
    tris, stack = [], [(0, len(x) - 1)]
    while stack:
        i, j = stack.pop()
        if j - i < 2:
            continue
        # Counter-clockwise (i, k, j) for k between i and j on the lower chain.
        best = i + 1
        for k in range(i + 2, j):
            if incircle(pts[i], pts[best], pts[j], pts[k]) > 0:
                best = k
        tris.append(tuple(sorted((i, best, j))))
        stack += [(i, best), (best, j)]
    return sorted(tris)


def with_runs(n):
    c = 1.0 / 128
    x = 2 * rng.random(n) - 1
    x = x[(x <= 0.25) | (x >= 0.5)]
    y = c * x * x
    ends = np.array([-1.0, 0.25, 0.5, 1.0])
    top = -1 + np.arange(1, 128) / 64.0            # on y = 1/128, strictly inside the chord
    flat = 0.25 + np.arange(1, 64) / 256.0          # on the chord from x = 1/4 to 1/2
    flat_y = 2.0 ** -11 + 3 * np.arange(1, 64) * 2.0 ** -17
    px = np.concatenate([x, ends, top, flat])
    py = np.concatenate([y, c * ends * ends, np.full(top.size, c), flat_y])
    # The chord's line through the curve's points at 1/4 and 1/2, exactly.
    assert 2.0 ** -11 + 3 * 64 * 2.0 ** -17 == c * 0.25
    return px, py


cases = [("parabola x^2/128", *parabola(2000, 2.0 ** -7)),
         ("parabola x^2/2^20", *parabola(2000, 2.0 ** -20)),
         ("convex curve with collinear runs", *with_runs(1500))]
print("// Generated by tests/reference/gen_gridding_convex.py (SciPy or the exact construction, "
      "checked exactly); do not edit.")
print("struct ConvexReference { const char* name; std::vector<double> x, y; std::vector<int> tri; };")
lines = []
for name, x, y in cases:
    order = np.lexsort((y, x))
    x, y = x[order], y[order]
    keep = np.ones(x.size, dtype=bool)  # distinct points only
    keep[1:] = (x[1:] != x[:-1]) | (y[1:] != y[:-1])
    x, y = x[keep], y[keep]
    d = Delaunay(np.column_stack([x, y]))
    tris = sorted(tuple(sorted(int(v) for v in s)) for s in d.simplices)
    oracle = "scipy.spatial.Delaunay"
    try:
        assert len(d.coplanar) == 0  # every point a vertex
        check_exact(x, y, tris)
    except AssertionError:
        exact = convex_polygon_delaunay(x, y)
        oracle = (f"exact convex-polygon construction (SciPy: {len(set(tris) - set(exact))} "
                  f"of {len(tris)} triangles not Delaunay in exact arithmetic)")
        tris = exact
        check_exact(x, y, tris)
    print(f"// {name}: {len(x)} points, {oracle}.")
    lines.append(f'    {{"{name}", ' + ", ".join([arr(x), arr(y), arr([v for t in tris for v in t], "i")])
                 + "},")
print("const ConvexReference kConvexReference[] = {")
print("\n".join(lines))
print("};")
