"""Peak detection on evenly spaced x, y = sin(x/7) + 0.5 sin(x/53) + noise (sd 0.1):
maxima that are the largest value of their centred window. Ours: the local-maximum
detector (half windows 5 and 50, maxima, no sign rule) and the search-window detector
(windows of 11 and 101 points, maxima, no height limit), each writing x, y and index of
every peak. Peer: scipy.signal.argrelmax(order = half window), which returns indices only.
Away from the ends the rules pick the same points, and the check compares the peak
indices there (1e7 left out: argrelmax with order 50 takes
seconds per call); near the ends they differ by design (ours: the local-maximum detector
reports nothing within a half window of an end, the search-window one shrinks its window
there; argrelmax compares against clipped neighbours).
"""
import ctypes

import numpy as np
from scipy.signal import argrelmax

from runner import VP, Row, c_double, c_int, export, ptr, rng

FAMILY = "peaks"


def interior_check(half, n):
    def check(ours, peer):
        a = ours[(ours >= half) & (ours <= n - 1 - half)]
        b = peer[(peer >= half) & (peer <= n - 1 - half)]
        if a.shape != b.shape or not np.array_equal(a, b):
            return f"{len(np.setxor1d(a, b))} interior peaks differ ({len(a)} vs {len(b)})"
        return None
    return check


def rows():
    local = export("zemath_find_peaks_by_local_maximum", c_int,
                   [VP, VP, VP, VP, VP, VP, c_int, c_int])
    window = export("zemath_find_peaks_by_search_window", c_int,
                    [VP, VP, VP, VP, VP, VP, c_int, c_double, c_double])
    g = rng(FAMILY)
    count = c_int()
    r_count = ctypes.byref(count)
    for n in (10_000, 1_000_000):
        label = f"{n:.0e}".replace("+0", "")
        i = np.arange(n, dtype=float)
        y = np.sin(i / 7.0) + 0.5 * np.sin(i / 53.0) + g.normal(0, 0.1, n)
        px, py = ptr(i), ptr(y)
        peak_x, peak_y = np.empty(n), np.empty(n)
        index = np.empty(n, dtype=np.int32)
        ppx, ppy, pidx = ptr(peak_x), ptr(peak_y), ptr(index)
        rounds = 3 if n >= 1_000_000 else 5

        def ours_local(half):
            count.value = n
            local(r_count, px, py, ppx, ppy, pidx, 1 | 4, half)
            return index[:count.value]

        def ours_window(points):
            count.value = n
            window(r_count, px, py, ppx, ppy, pidx, 1 | 4, float(points), -1.0)
            return index[:count.value]

        for half in (5, 50):
            yield Row(FAMILY, f"local_maximum, half window {half}", label,
                      lambda half=half: ours_local(half),
                      lambda half=half: argrelmax(y, order=half)[0],
                      "peer: argrelmax (indices only); interior peaks compared", rounds=rounds,
                      check=interior_check(half, n))
        for points in (11, 101):
            yield Row(FAMILY, f"search_window, {points} points", label,
                      lambda points=points: ours_window(points),
                      lambda points=points: argrelmax(y, order=points // 2)[0],
                      "peer: argrelmax(order = window / 2) (indices only); interior peaks "
                      "compared", rounds=rounds, check=interior_check(points // 2, n))
