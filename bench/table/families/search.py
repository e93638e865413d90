"""Batch search: the position of each of 1e6 random targets (uniform over the data's
range, in random order) in a sorted array of uniform doubles, i.e. the last index whose
value does not exceed the target (-1 below the first), as zemath_array_find_indices
writes it. Peers: np.searchsorted(side='right') - 1 on the targets as they come, and the
same after sorting the targets (argsort, search, scatter back), which is what the
library's sweep does internally; and both sides given targets already in order.
"""
import numpy as np

from runner import VP, Row, c_int, equal, export, ptr, rng

FAMILY = "search"
TARGETS = 1_000_000


def rows():
    find = export("zemath_array_find_indices", c_int, [VP, c_int, VP, c_int, VP])
    g = rng(FAMILY)
    for n in (1_000_000, 10_000_000):
        label = f"{n:.0e}".replace("+0", "") + "/1e6"
        x = np.sort(g.random(n))
        targets = g.random(TARGETS)
        ascending = np.sort(targets)
        out = np.empty(TARGETS, dtype=np.int32)
        px, pt, pa, po = ptr(x), ptr(targets), ptr(ascending), ptr(out)

        def ours(p):
            return lambda: (find(px, n, p, TARGETS, po), out)[1]

        def peer_sorting_first():
            order = np.argsort(targets)
            result = np.empty(TARGETS, dtype=np.intp)
            result[order] = np.searchsorted(x, targets[order], side="right") - 1
            return result

        yield Row(FAMILY, "find_indices, random targets", label, ours(pt),
                  lambda: np.searchsorted(x, targets, side="right") - 1,
                  "peer: np.searchsorted as the targets come (int64 out, plus the - 1 pass)",
                  rounds=3, check=equal())
        yield Row(FAMILY, "find_indices, random targets", label, ours(pt), peer_sorting_first,
                  "peer sorts the targets first: argsort + searchsorted + scatter",
                  rounds=3, check=equal())
        yield Row(FAMILY, "find_indices, ascending targets", label, ours(pa),
                  lambda: np.searchsorted(x, ascending, side="right") - 1,
                  "both given ascending targets; peer: np.searchsorted", rounds=3, check=equal())
