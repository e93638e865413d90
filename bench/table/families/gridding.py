"""Gridding: Delaunay triangulation of 1e5 and 1e6 points (uniform in the unit square, and
a sqrt(n) grid perturbed by 1e-3 of a cell; the built-in method, and the engine build on
the uniform points at 1e5), duplicate merging of 1e6 points, kriging onto a 64 x 64 grid
from 1e4 scattered points. Time budget: the 1e6 triangulations take seconds per SciPy
call, so they run two rounds; the engine at 1e6 and RBF on larger grids are left out.
  triangulation      scipy.spatial.Delaunay (Qhull) on the (n, 2) array of the points
                     (formed once, untimed); ours also sorts the nodes, checks for missing
                     values and duplicates and builds the edge, boundary and neighbour
                     tables. Triangle counts compared.
  triangulation,     1e5 points on y = 1e-2 x^2, x uniform in [-1, 1]: every point a hull
  parabola           vertex. SciPy's call takes about a minute (measured once per side) and
                     leaves points out as coplanar in its rounded arithmetic (about 1.4 %
                     here; ours merges the points closer than 1e-8 of the range), so the
                     check reports the nodes each side triangulated.
  duplicates         every point twice on a lattice: NumPy lexsort by (x, y), a mask of
                     the first of each run, np.add.reduceat for the mean z; ours merges
                     within a tolerance (1e-8 of the range) in place (arrays restored
                     before each call, untimed). Merged points compared.
  kriging            no kriging in SciPy: RBFInterpolator(neighbors=64, thin-plate
                     spline) is the nearest peer (64-neighbour local systems both); not the
                     same estimator, so outputs are not compared.
"""
import ctypes

import numpy as np
from scipy.interpolate import RBFInterpolator
from scipy.spatial import Delaunay

from runner import VP, Row, c_double, c_int, c_uint, close, equal, export, ptr, rng

FAMILY = "gridding"
ENGINE = 0x100000


class Triangulation(ctypes.Structure):
    _fields_ = [("valid", ctypes.c_int), ("x", ctypes.c_void_p), ("y", ctypes.c_void_p),
                ("z", ctypes.c_void_p), ("nodes", ctypes.c_int), ("triangles", ctypes.c_int),
                ("tri", ctypes.c_void_p), ("edges", ctypes.c_int), ("edge", ctypes.c_void_p),
                ("boundaryCount", ctypes.c_int), ("boundary", ctypes.c_void_p),
                ("holeCount", ctypes.c_int), ("holeIndex", ctypes.c_void_p),
                ("holeValue", ctypes.c_void_p), ("neighbor", ctypes.c_void_p)]


def cloud(g, n, perturbed):
    if not perturbed:
        return g.random(n), g.random(n)
    side = int(np.sqrt(n))
    i = np.arange(n)
    x = ((i % side) + 1e-3 * (g.random(n) - 0.5)) / side
    y = ((i // side) + 1e-3 * (g.random(n) - 0.5)) / side
    return x, y


def rows():
    tri_p = ctypes.POINTER(Triangulation)
    triangulate = export("zemath_triangulation", c_int, [c_int, VP, VP, VP, tri_p, c_uint])
    init = export("zemath_triangulation_init", None, [tri_p])
    free = export("zemath_triangulation_free", None, [tri_p])
    merge = export("zemath_xyz_remove_duplicates", c_int,
                   [c_int, VP, VP, VP, c_int, c_double, c_double, c_int])
    kriging = export("zemath_2d_kriging_grid", c_int,
                     [c_int, VP, VP, VP, c_int, c_double, c_double, c_int, VP, c_int, VP, VP,
                      c_int])
    g = rng(FAMILY)
    record = Triangulation()
    init(ctypes.byref(record))
    r_record = ctypes.byref(record)
    for n, perturbed, options in ((100_000, False, 0), (100_000, True, 0),
                                  (100_000, False, ENGINE), (1_000_000, False, 0),
                                  (1_000_000, True, 0)):
        x, y = cloud(g, n, perturbed)
        z = np.sin(6 * x) * np.cos(4 * y)
        points = np.column_stack([x, y])
        px, py, pz = ptr(x), ptr(y), ptr(z)
        label = f"{n:.0e}".replace("+0", "")
        what = ("perturbed grid" if perturbed else "uniform") + (", engine" if options else "")

        def ours(px=px, py=py, pz=pz, n=n, options=options):
            triangulate(n, px, py, pz, r_record, options)
            return record.triangles

        yield Row(FAMILY, f"triangulation, {what}", label, ours,
                  lambda points=points: len(Delaunay(points).simplices),
                  "peer: scipy.spatial.Delaunay (Qhull); ours also builds edges, boundary, "
                  "neighbours", rounds=3 if n <= 100_000 else 2, check=equal())
    n = 100_000
    x = 2 * g.random(n) - 1
    y = 1e-2 * x * x
    z = x + y
    points = np.column_stack([x, y])
    px, py, pz = ptr(x), ptr(y), ptr(z)

    def ours_convex():
        triangulate(n, px, py, pz, r_record, 0)
        return record.nodes  # after merging points within 1e-8 of the range

    def peer_convex():
        d = Delaunay(points)
        return n - len(d.coplanar)

    yield Row(FAMILY, "triangulation, parabola y = 1e-2 x^2", "1e5", ours_convex, peer_convex,
              "peer: scipy.spatial.Delaunay (Qhull); every point on the hull", single=True,
              check=lambda ours, peer: f"nodes triangulated: ours {ours}, SciPy {peer}")
    free(r_record)

    n = 1_000_000
    i = np.arange(n)
    x0 = ((i // 2) % 1000).astype(float)
    y0 = ((i // 2) // 1000).astype(float)
    z0 = i.astype(float)
    x, y, z = x0.copy(), y0.copy(), z0.copy()
    px, py, pz = ptr(x), ptr(y), ptr(z)

    def restore():
        x[:] = x0
        y[:] = y0
        z[:] = z0

    def ours_merge():
        k = merge(n, px, py, pz, 0, 1e-8, 1e-8, 1)
        return np.concatenate([x[:k], y[:k], z[:k]])

    def peer_merge():
        order = np.lexsort((y0, x0))
        xs, ys, zs = x0[order], y0[order], z0[order]
        first = np.empty(n, dtype=bool)
        first[0] = True
        first[1:] = (xs[1:] != xs[:-1]) | (ys[1:] != ys[:-1])
        starts = np.flatnonzero(first)
        counts = np.diff(np.append(starts, n))
        return np.concatenate([xs[starts], ys[starts], np.add.reduceat(zs, starts) / counts])

    yield Row(FAMILY, "xyz_remove_duplicates (mean z)", "1e6", ours_merge, peer_merge,
              "peer: lexsort + first-of-run mask + add.reduceat (exact duplicates only)",
              rounds=3, setup=restore, check=close(1e-12))

    m, side = 10_000, 64
    x, y = g.random(m), g.random(m)
    z = np.sin(6 * x) * np.cos(4 * y)
    grid = (np.arange(side) + 0.5) / side
    gz = np.empty(side * side)
    px, py, pz, pg, pgz = ptr(x), ptr(y), ptr(z), ptr(grid), ptr(gz)
    gx, gy = np.meshgrid(grid, grid)
    targets = np.column_stack([gx.ravel(), gy.ravel()])
    rbf = RBFInterpolator(np.column_stack([x, y]), z, neighbors=64)
    yield Row(FAMILY, "2d_kriging_grid, 64 neighbours", f"1e4>{side}^2",
              lambda: kriging(m, px, py, pz, 4, 1.0, 1.5, side, pg, side, pg, pgz, 64),
              lambda: rbf(targets),
              "peer: RBFInterpolator(neighbors=64) evaluation (fitted once, untimed): not "
              "the same estimator", rounds=3)
