"""Shared runner of the benchmark table: loads the built library with ctypes, times our
export and the peer on the same NumPy arrays in one process, taking turns, and prints one
row per (operation, size).

Timing: one warm-up call per side, then `rounds` rounds; each round times both sides, the
order alternating (ours first in even rounds, the peer first in odd ones). A side's
measurement is time.perf_counter (wall) and time.process_time (CPU of the whole process)
around `number` back-to-back calls, divided by `number`; `number` is chosen once so that
a measurement lasts about MIN_MEASURE seconds (1 when the row has a per-call setup, such
as restoring an array sorted in place; the setup is never timed). Ratios are ours over
the peer's: below 1 we are faster. A row marked single (a peer taking minutes per call)
is measured by its warm-up calls alone, one call per side.

A row may carry a check of the two outputs (after the warm-up): when they disagree, the
row's note says so instead of hiding it.
"""
import ctypes
import os
import statistics
import sys
import time
from dataclasses import dataclass, field
from typing import Callable, Optional

import numpy as np

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.environ.get("BUILD", os.path.join(ROOT, "build", "release"))
MIN_MEASURE = 0.02  # seconds per measurement when calls are short

c_int, c_uint, c_double, c_long = ctypes.c_int, ctypes.c_uint, ctypes.c_double, ctypes.c_long
c_bool = ctypes.c_bool

_lib = None
_loops = None
VP = ctypes.c_void_p


def lib():
    """libzemath, loaded once."""
    global _lib
    if _lib is None:
        _lib = ctypes.CDLL(os.path.join(BUILD, "libzemath.so"))
    return _lib


def loops():
    """The benchmark loops (bench/table/loops.c)."""
    global _loops
    if _loops is None:
        _loops = ctypes.CDLL(os.path.join(BUILD, "bench", "libzemath_bench_loops.so"))
        _loops.bench_read.argtypes = [VP, c_long]
        _loops.bench_read.restype = ctypes.c_uint64
        _loops.bench_copy.argtypes = [VP, VP, c_long]
        _loops.bench_copy.restype = None
        for name, arrays in (("bench_map_p", 1), ("bench_map_x_tail", 1),
                             ("bench_map_xa_tail", 2), ("bench_map_xab_tail", 3)):
            f = getattr(_loops, name)
            tail = [] if name == "bench_map_p" else [c_int]
            f.argtypes = [VP] + [VP] * arrays + tail + [VP, c_long]
            f.restype = c_long
        for name, arrays in (("bench_map_pa", 2), ("bench_map_pab", 3), ("bench_map_pabc", 4)):
            f = getattr(_loops, name)
            f.argtypes = [VP] + [VP] * arrays + [VP, c_long]
            f.restype = c_long
    return _loops


def export(name, restype, argtypes):
    """An export of libzemath with its prototype (copied from include/zemath/*.h)."""
    f = getattr(lib(), name)
    f.restype = restype
    f.argtypes = argtypes
    return f


def ptr(a):
    """The address of an array's data as a ctypes argument, formed once outside the timed
    call (ndpointer argument checks would add microseconds to every call)."""
    return ctypes.c_void_p(a.ctypes.data)



def address(name):
    """The address of an export, for the loops that map a scalar export over arrays."""
    return ctypes.cast(getattr(lib(), name), ctypes.c_void_p).value


def rng(family, salt=0):
    """A generator with a fixed seed per family (and salt), so every run draws the same."""
    return np.random.default_rng([20261124, sum(map(ord, family)), salt])


@dataclass
class Row:
    family: str
    operation: str
    size: str
    ours: Callable[[], object]
    peer: Callable[[], object]
    note: str = ""
    rounds: int = 5
    setup: Optional[Callable[[], None]] = None  # before every call of either side, untimed
    check: Optional[Callable[[object, object], Optional[str]]] = None  # None when outputs agree
    # Bandwidth rows: bytes our call moves and bytes the peer (a plain streaming read or
    # copy) moves; the note then gives both rates and our share of the plain one.
    bytes_moved: Optional[tuple] = None
    # A peer that takes minutes per call: the first (checked) call of each side is its
    # only measurement, and rounds is not used.
    single: bool = False
    results: dict = field(default_factory=dict)


def _measure(fn, setup, number):
    if setup is not None:
        setup()
    w0, c0 = time.perf_counter(), time.process_time()
    for _ in range(number):
        fn()
    w1, c1 = time.perf_counter(), time.process_time()
    return (w1 - w0) / number, (c1 - c0) / number


def _snapshot(out):
    # Outputs may live in buffers that the next call (or setup) overwrites.
    if isinstance(out, np.ndarray):
        return out.copy()
    if isinstance(out, tuple):
        return tuple(_snapshot(o) for o in out)
    return out


def _timed(fn):
    w0, c0 = time.perf_counter(), time.process_time()
    out = _snapshot(fn())
    return out, (time.perf_counter() - w0, time.process_time() - c0)


def run_row(row):
    if row.setup is not None:
        row.setup()
    ours_out, ours_first = _timed(row.ours)
    once = ours_first[0]
    if row.setup is not None:
        row.setup()
    peer_out, peer_first = _timed(row.peer)
    problem = row.check(ours_out, peer_out) if row.check is not None else None
    del ours_out, peer_out
    number = 1 if row.setup is not None else max(1, min(1000, int(MIN_MEASURE / max(once, 1e-7))))
    samples = {"ours": [], "peer": []}
    if row.single:
        samples = {"ours": [ours_first], "peer": [peer_first]}
    for r in range(0 if row.single else row.rounds):
        order = ("ours", "peer") if r % 2 == 0 else ("peer", "ours")
        for side in order:
            samples[side].append(_measure(getattr(row, side), row.setup, number))
    for side in ("ours", "peer"):
        wall = [w for w, _ in samples[side]]
        cpu = [c for _, c in samples[side]]
        row.results[side] = (min(wall), statistics.median(wall), statistics.median(cpu))
    if row.bytes_moved is not None:
        ours_rate = row.bytes_moved[0] / row.results["ours"][0] / 1e9
        plain_rate = row.bytes_moved[1] / row.results["peer"][0] / 1e9
        share = f"{ours_rate:.1f} GB/s = {100 * ours_rate / plain_rate:.0f}% of plain {plain_rate:.1f} GB/s"
        row.note = f"{share}; {row.note}" if row.note else share
    if problem:
        row.note = f"OUTPUTS DIFFER: {problem}; " + row.note if row.note else f"OUTPUTS DIFFER: {problem}"
    return row


def fmt_time(seconds):
    if seconds >= 1:
        return f"{seconds:.2f} s"
    if seconds >= 1e-3:
        return f"{seconds * 1e3:.3g} ms"
    return f"{seconds * 1e6:.3g} us"


HEADER = (f"{'operation':<38} {'size':>9} | {'ours min':>9} {'ours med':>9} {'ours cpu':>9} | "
          f"{'peer min':>9} {'peer med':>9} {'peer cpu':>9} | {'min':>5} {'med':>5} {'cpu':>5} | note")


def format_row(row):
    o_min, o_med, o_cpu = row.results["ours"]
    p_min, p_med, p_cpu = row.results["peer"]
    return (f"{row.operation:<38} {row.size:>9} | {fmt_time(o_min):>9} {fmt_time(o_med):>9} "
            f"{fmt_time(o_cpu):>9} | {fmt_time(p_min):>9} {fmt_time(p_med):>9} "
            f"{fmt_time(p_cpu):>9} | {o_min / p_min:>5.2f} {o_med / p_med:>5.2f} "
            f"{o_cpu / p_cpu if p_cpu > 0 else float('nan'):>5.2f} | {row.note}")


def run_family(family, rows, out=sys.stdout):
    print(f"-- {family}", file=out, flush=True)
    for row in rows():
        run_row(row)
        print(format_row(row), file=out, flush=True)


# ---- output checks ------------------------------------------------------------------


def close(rtol=1e-12, atol=0.0):
    def check(ours, peer):
        a, b = np.asarray(ours, dtype=float), np.asarray(peer, dtype=float)
        if a.shape != b.shape:
            return f"shapes {a.shape} vs {b.shape}"
        bad = ~np.isclose(a, b, rtol=rtol, atol=atol, equal_nan=True)
        if bad.any():
            with np.errstate(all="ignore"):
                rel = np.abs(a[bad] - b[bad]) / np.maximum(np.abs(a[bad]), np.abs(b[bad]))
            worst = np.nanmax(rel) if np.isfinite(rel).any() else float("nan")
            return f"{int(bad.sum())} of {a.size} values beyond rel {rtol:g}, worst {worst:.1e}"
        return None
    return check


def equal():
    def check(ours, peer):
        a, b = np.asarray(ours), np.asarray(peer)
        if a.shape != b.shape:
            return f"shapes {a.shape} vs {b.shape}"
        if not np.array_equal(a, b):
            return f"{int((a != b).sum())} of {a.size} differ"
        return None
    return check
