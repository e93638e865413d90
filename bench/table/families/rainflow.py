"""Rainflow counting of standard normal loads (no ties) by the four-point rule, residue as
half cycles, every per-cycle output (from, to, range, mean, count). No Debian package has a
rainflow counter, so the peer is the straightforward NumPy version: turning points by
sign changes of the differences, the four-point stack in a Python loop over them, ranges
and means with NumPy. Compared: the cycles' from/to indices.
"""
import ctypes

import numpy as np

from runner import VP, Row, c_double, c_int, equal, export, ptr, rng

FAMILY = "rainflow"


def turning_points(y):
    d = np.diff(y)
    keep = np.empty(len(y), dtype=bool)
    keep[0] = keep[-1] = True
    keep[1:-1] = d[:-1] * d[1:] < 0
    return np.flatnonzero(keep)


def rainflow(y):
    idx = turning_points(y)
    v = y[idx].tolist()
    stack, cf, ct = [], [], []
    for k in range(len(v)):
        stack.append(k)
        while len(stack) >= 4:
            a, b, c, d = v[stack[-4]], v[stack[-3]], v[stack[-2]], v[stack[-1]]
            if min(b, c) >= min(a, d) and max(b, c) <= max(a, d):
                cf.append(stack[-3])
                ct.append(stack[-2])
                del stack[-3:-1]
            else:
                break
    closed = len(cf)
    cf.extend(stack[:-1])
    ct.extend(stack[1:])
    f, t = idx[np.array(cf, dtype=np.int64)], idx[np.array(ct, dtype=np.int64)]
    count = np.where(np.arange(len(f)) < closed, 1.0, 0.5)
    return f, t, np.abs(y[t] - y[f]), 0.5 * (y[f] + y[t]), count


def rows():
    cycles = export("zemath_rainflow_cycles", c_int,
                    [VP, c_int, c_double, c_int, c_int, VP, VP, VP, VP, VP, VP, VP])
    g = rng(FAMILY)
    n_cycles, n_closed = c_int(), c_int()
    r_cycles, r_closed = ctypes.byref(n_cycles), ctypes.byref(n_closed)
    for n in (10_000, 100_000, 1_000_000):
        label = f"{n:.0e}".replace("+0", "")
        y = g.standard_normal(n)
        frm, to = np.empty(n, dtype=np.int32), np.empty(n, dtype=np.int32)
        rng_, mean, count = np.empty(n), np.empty(n), np.empty(n)
        args = [ptr(a) for a in (frm, to, rng_, mean, count)]
        py = ptr(y)

        def ours():
            cycles(py, n, 0.0, 0, n, *args, r_cycles, r_closed)
            k = n_cycles.value
            return np.concatenate([frm[:k], to[:k]])

        def peer():
            f, t, *_ = rainflow(y)
            return np.concatenate([f, t])

        yield Row(FAMILY, "rainflow_cycles", label, ours, peer,
                  "peer: NumPy turning points + four-point stack in a Python loop",
                  rounds=3 if n >= 1_000_000 else 5, check=equal())
