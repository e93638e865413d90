"""Sorting uniform random doubles in place (the array is restored before every call of
either side, untimed): the stable merge sort and the quick sort, each with the library's
double comparison function, against NumPy's in-place sort of the same kind; and records
of (double key, int index), 12 bytes, by the stable merge sort against np.argsort(stable).
"""
import numpy as np

from runner import VP, Row, c_int, equal, export, ptr, rng

FAMILY = "sort"
SIZES = (100_000, 1_000_000, 10_000_000)


def rows():
    merge = export("theMergeSort", c_int, [VP, c_int, c_int, c_int, VP])
    quick = export("theQuickSort", c_int, [VP, c_int, c_int, c_int, VP])
    ascend = export("GetAppropriateCompareAscend", VP, [c_int])
    compare_double = VP(ascend(11))
    g = rng(FAMILY)
    for n in SIZES:
        label = f"{n:.0e}".replace("+0", "")
        x = g.random(n)
        ours_buf, peer_buf = np.empty(n), np.empty(n)
        p = ptr(ours_buf)

        def restore():
            ours_buf[:] = x
            peer_buf[:] = x

        rounds = 3 if n >= 10_000_000 else 5
        big = n >= 10_000_000  # at 1e7 only the stable sort of doubles (time budget)
        yield Row(FAMILY, "theMergeSort doubles", label,
                  lambda: (merge(p, 0, n - 1, 8, compare_double), ours_buf)[1],
                  lambda: (peer_buf.sort(kind="stable"), peer_buf)[1],
                  "peer: ndarray.sort(kind='stable') in place, typed compare (ours: compare "
                  "through a function pointer)", rounds=rounds, setup=restore, check=equal())
        if big:
            continue
        yield Row(FAMILY, "theQuickSort doubles", label,
                  lambda: (quick(p, 0, n - 1, 8, compare_double), ours_buf)[1],
                  lambda: (peer_buf.sort(kind="quicksort"), peer_buf)[1],
                  "peer: ndarray.sort(kind='quicksort') (introsort) in place", rounds=rounds,
                  setup=restore, check=equal())
        records = np.empty(n, dtype=np.dtype([("key", "<f8"), ("index", "<i4")], align=False))
        original = records.copy()
        original["key"] = x
        original["index"] = np.arange(n, dtype=np.int32)
        q = ptr(records)

        def restore_records():
            records[:] = original

        yield Row(FAMILY, "theMergeSort (key, index) records", label,
                  lambda: (merge(q, 0, n - 1, 12, compare_double), records["index"])[1],
                  lambda: np.argsort(x, kind="stable"),
                  "peer: np.argsort(kind='stable') returns the permutation only; ours moves "
                  "the 12-byte records (keys sorted too)", rounds=rounds,
                  setup=restore_records, check=equal())
