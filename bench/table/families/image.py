"""Image rank filter and XY reduction.

Rank filter of a uniform random 16-bit image in place (restored before each call of either
side, untimed) with square windows of side 3 on 1024 x 1024, 15 on 512 x 512 and 51 on 128 x 128 (SciPy
takes tens of seconds for the larger windows on larger images),
at 50%. Our filter takes the value of rank k - 1 (0-based) with k = trunc(m / 2) for m
window cells (kept deliberately: 3 x 3 at 50% gives rank 3, not the median 4), so the peer
is scipy.ndimage.rank_filter at that same rank; borders differ by design (ours: clipped
windows; the peer reflects), so the check compares the interior.

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
    for side, window in ((1024, 3), (512, 15), (128, 51)):
        original = g.integers(0, 65536, size=(side, side), dtype=np.uint16)
        ours_img, peer_img = original.copy(), original.copy()
        p = ptr(ours_img)
        rank = (window * window) // 2 - 1
        h = window // 2

        def restore(ours_img=ours_img, peer_img=peer_img, original=original):
            ours_img[...] = original
            peer_img[...] = original

        def ours(p=p, side=side, window=window, ours_img=ours_img, h=h):
            percentile(p, side, side, 50.0, window, window, 0, 0.0, 0, 0, -1, -1)
            return ours_img[h:-h, h:-h]

        def peer(peer_img=peer_img, rank=rank, window=window, h=h):
            ndimage.rank_filter(peer_img, rank, size=window, output=peer_img)
            return peer_img[h:-h, h:-h]

        yield Row(FAMILY, f"us_percentile_filter 50%, {window}x{window}", f"{side}^2", ours,
                  peer, f"peer: ndimage.rank_filter(rank {rank}) in place; interior compared",
                  rounds=3, setup=restore, check=equal())

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
