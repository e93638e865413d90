"""Image rank filter and XY reduction.

Rank filter of a uniform random 16-bit 2048 x 2048 image in place (restored before each
call of either side, untimed) with square windows of side 3, 15 and 51, at the median rank
m // 2 of the m window cells: ours at the percent giving that rank (our rank is k - 1 with
k = trunc(percent / 100 m), kept deliberately, so the percent is 100 (m // 2 + 1.5) / m),
the peers scipy.ndimage.percentile_filter(50) and median_filter, which take the same rank.
Borders differ by design (ours: clipped windows; the peers reflect), so the check compares
the interior. SciPy sorts each window: about 15 s per call at 15 x 15 and minutes at
51 x 51, so those rows time one call of each side.

Reduction of 1e7 standard normal points by groups of 10 and 1000: mean, maximum, median;
peer: reshape(-1, group) and mean / max / np.median along the rows (no NANUM skipping).
"""
import numpy as np
from scipy import ndimage

from runner import VP, Row, c_double, c_int, c_uint, close, equal, export, ptr, rng

FAMILY = "image"


def rows():
    percentile = export("zemath_us_percentile_filter", c_int,
                        [VP, c_int, c_int, c_double, c_int, c_int, c_int, c_double, c_int, c_int,
                         c_int, c_int])
    reduce = export("zemath_reducexy_n_points", c_int, [VP, VP, c_uint, c_uint, c_int])
    g = rng(FAMILY)
    side = 2048
    original = g.integers(0, 65536, size=(side, side), dtype=np.uint16)
    ours_img, peer_img = original.copy(), original.copy()
    p = ptr(ours_img)

    def restore():
        ours_img[...] = original
        peer_img[...] = original

    for window in (3, 15, 51):
        m = window * window
        percent = 100.0 * (m // 2 + 1.5) / m
        h = window // 2

        def ours(window=window, percent=percent, h=h):
            percentile(p, side, side, percent, window, window, 0, 0.0, 0, 0, -1, -1)
            return ours_img[h:-h, h:-h]

        peers = (("percentile_filter(50)",
                  lambda window=window: ndimage.percentile_filter(peer_img, 50, size=window,
                                                                  output=peer_img)),
                 ("median_filter", lambda window=window: ndimage.median_filter(
                     peer_img, size=window, output=peer_img)))
        for name, run_peer in peers:
            def peer(run_peer=run_peer, h=h):
                run_peer()
                return peer_img[h:-h, h:-h]

            yield Row(FAMILY, f"us_percentile_filter median, {window}x{window}", f"{side}^2",
                      ours, peer, f"peer: ndimage.{name} in place; interior compared",
                      rounds=3, single=window > 3, setup=restore, check=equal())

    n = 10_000_000
    y = g.standard_normal(n)
    py = ptr(y)
    for group in (10, 1000):
        out = np.empty(n // group)
        po = ptr(out)
        r = y.reshape(-1, group)
        for method, name, peer in ((0, "mean", lambda r=r: r.mean(axis=1)),
                                   (2, "max", lambda r=r: r.max(axis=1)),
                                   (3, "median", lambda r=r: np.median(r, axis=1))):
            yield Row(FAMILY, f"reducexy_n_points {name}, by {group}", "1e7",
                      lambda method=method, group=group, po=po, out=out: (
                          reduce(py, po, n, group, method), out)[1],
                      peer, f"peer: reshape + {'np.median' if method == 3 else name}(axis=1)",
                      rounds=3, check=close(1e-10, atol=1e-14))
