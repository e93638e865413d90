"""1-D interpolation: uneven ascending x (steps uniform in [0.2, 1.5]), y = sin(x) + noise,
as many new x as points, uniform over the data's range; each call builds the interpolant
and evaluates it, on both sides. New x ascending (our one-sweep path) or in random order
(bisection) for the linear method; ascending for the others. Outputs compared.
  linear       np.interp                 spline natural   CubicSpline(bc_type='natural')
  not-a-knot   CubicSpline (default)     Akima            Akima1DInterpolator
  PCHIP        PchipInterpolator
Time budget: 1e7 only for the linear row with ascending new x.
"""
import numpy as np
from scipy.interpolate import Akima1DInterpolator, CubicSpline, PchipInterpolator

from runner import VP, Row, c_int, close, export, ptr, rng

FAMILY = "interpolation"
LINEAR, NATURAL, NOT_A_KNOT, AKIMA, PCHIP = 0, 1, 2, 3, 4
OUTSIDE_MISSING = 0


def rows():
    interpolate = export("zemath_interpolate", c_int, [VP, VP, c_int, VP, c_int, VP, c_int, c_int])
    g = rng(FAMILY)
    for n in (10_000, 1_000_000, 10_000_000):
        label = f"{n:.0e}".replace("+0", "")
        x = np.cumsum(g.uniform(0.2, 1.5, n))
        y = np.sin(x) + g.normal(0, 0.1, n)
        shuffled = x[0] + g.random(n) * (x[-1] - x[0])
        t = np.sort(shuffled)
        out = np.empty(n)
        px, py, pt, ps, po = ptr(x), ptr(y), ptr(t), ptr(shuffled), ptr(out)
        big = n >= 10_000_000
        rounds = 3 if big else 5

        def ours(method, targets=pt):
            return lambda: (interpolate(px, py, n, targets, n, po, method, OUTSIDE_MISSING), out)[1]

        yield Row(FAMILY, "linear, ascending new x", label, ours(LINEAR), lambda: np.interp(t, x, y),
                  "peer: np.interp", rounds=rounds, check=close(1e-12, atol=1e-14))
        if big:  # time budget: np.interp in random order takes a minute at 1e7
            continue
        yield Row(FAMILY, "linear, new x in random order", label, ours(LINEAR, ps),
                  lambda: np.interp(shuffled, x, y), "peer: np.interp", rounds=rounds,
                  check=close(1e-12, atol=1e-14))
        cases = (
            ("spline natural", NATURAL, lambda: CubicSpline(x, y, bc_type="natural")(t),
             "peer: CubicSpline(bc_type='natural')"),
            ("spline not-a-knot", NOT_A_KNOT, lambda: CubicSpline(x, y)(t),
             "peer: CubicSpline (not-a-knot)"),
            ("Akima", AKIMA, lambda: Akima1DInterpolator(x, y)(t), "peer: Akima1DInterpolator"),
            ("PCHIP", PCHIP, lambda: PchipInterpolator(x, y)(t), "peer: PchipInterpolator"),
        )
        for name, method, peer, note in cases:
            yield Row(FAMILY, name, label, ours(method), peer, note, rounds=rounds,
                      check=close(1e-9, atol=1e-12))
