#!/usr/bin/python3
"""Writes image_filters_ref.inc: expected results of the 16-bit percentile and
conservative filters.

Oracles:
  - interior pixels (the whole window inside the image): scipy.ndimage.rank_filter with
    the window's footprint and rank k - 1, k = trunc(percent / 100 m), or
    scipy.ndimage.minimum_filter / maximum_filter for k <= 1 / k - 1 >= m; for the
    conservative filter the minimum and maximum filters over the footprint without its
    centre (scipy.ndimage.minimum_filter / maximum_filter), then a clamp;
  - border pixels: the clipped-window rule written here with NumPy (window cells outside
    the image skipped; for count < m cells the rank is trunc(percent / 100 count) - 1, or
    0), checked to agree with SciPy on every interior pixel.
Footprints: rectangle, ellipse inscribed in it, cross, diagonal cross, with offsets
-(side // 2) .. (side - 1) // 2 (SciPy's default origin).
Run: /usr/bin/python3 tests/reference/gen_image_filters.py > tests/reference/image_filters_ref.inc
"""
import math

import numpy as np
from scipy import ndimage

rng = np.random.default_rng(20241123)


def footprint(width, height, shape):
    rows = np.arange(-(height // 2), (height - 1) // 2 + 1)
    cols = np.arange(-(width // 2), (width - 1) // 2 + 1)
    r, c = np.meshgrid(rows, cols, indexing="ij")
    if shape == 0:
        return np.ones_like(r, dtype=bool)
    if shape == 1:
        rc = -0.5 if height % 2 == 0 else 0.0
        cc = -0.5 if width % 2 == 0 else 0.0
        return ((r - rc) / (0.5 * height)) ** 2 + ((c - cc) / (0.5 * width)) ** 2 <= 1.0
    if shape == 2:
        return (r == 0) | (c == 0)
    return np.abs(r) == np.abs(c)


def kind_of(percent, m):
    k = math.trunc(percent / 100.0 * m)
    if k <= 1:
        return "min", 0
    if k - 1 < m:
        return "order", k - 1
    return "max", 0


def brute(img, kind, percent, width, height, shape):
    fp = footprint(width, height, shape)
    offsets = [(r - height // 2, c - width // 2) for r, c in zip(*np.nonzero(fp))]
    m = len(offsets)
    op, index = kind_of(percent, m)
    rows, cols = img.shape
    out = img.copy()
    for i in range(rows):
        for j in range(cols):
            vals = [int(img[i + dr, j + dc]) for dr, dc in offsets
                    if 0 <= i + dr < rows and 0 <= j + dc < cols]
            count = len(vals)
            if kind == 1:  # conservative
                rest = sorted(vals)
                rest.remove(int(img[i, j]))
                v = int(img[i, j])
                out[i, j] = v if not rest else min(max(v, rest[0]), rest[-1])
                continue
            s = sorted(vals)
            if op == "min":
                out[i, j] = s[0]
            elif op == "max":
                out[i, j] = s[-1]
            elif count >= m:
                out[i, j] = s[index]
            else:
                kk = math.trunc(percent / 100.0 * count)
                out[i, j] = s[0] if kk == 0 else s[min(kk, count) - 1]
    return out, fp, m, op, index


def scipy_interior(img, kind, percent, fp, op, index):
    f = img.astype(np.int64)
    if kind == 1:
        ring = fp.copy()
        ring[fp.shape[0] // 2, fp.shape[1] // 2] = False
        if not ring.any():
            return img.copy()
        lo = ndimage.minimum_filter(f, footprint=ring)
        hi = ndimage.maximum_filter(f, footprint=ring)
        return np.clip(f, lo, hi)
    if op == "min":
        return ndimage.minimum_filter(f, footprint=fp)
    if op == "max":
        return ndimage.maximum_filter(f, footprint=fp)
    return ndimage.rank_filter(f, rank=index, footprint=fp)


def threshold_rule(before, after, img, threshold):
    if threshold == 0:
        return after
    level = min(65535, math.trunc(float(img.max() - img.min()) * abs(threshold) / 100.0))
    sign = 1 if threshold > 0 else -1
    moved = np.abs(after.astype(np.int64) - before.astype(np.int64))
    return np.where((moved - level) * sign >= 0, after, before)


CASES = [
    # what, rows, cols, kind, percent, width, height, shape, threshold, region, value max
    ("3x3 at 50%: rank 3", 17, 23, 0, 50.0, 3, 3, 0, 0.0, (0, 0, -1, -1), 65535),
    ("5 wide 4 high at 30%", 17, 23, 0, 30.0, 5, 4, 0, 0.0, (0, 0, -1, -1), 65535),
    ("4x6 at 0%: minimum", 17, 23, 0, 0.0, 4, 6, 0, 0.0, (0, 0, -1, -1), 65535),
    ("7x7 at 100%: largest by order", 17, 23, 0, 100.0, 7, 7, 0, 0.0, (0, 0, -1, -1), 65535),
    ("3x5 at 150%: maximum", 17, 23, 0, 150.0, 3, 5, 0, 0.0, (0, 0, -1, -1), 65535),
    ("6x3 at -20%: minimum", 17, 23, 0, -20.0, 6, 3, 0, 0.0, (0, 0, -1, -1), 65535),
    ("9x9 at 75%: histogram path", 17, 23, 0, 75.0, 9, 9, 0, 0.0, (0, 0, -1, -1), 65535),
    ("15x11 at 50%, ties", 17, 23, 0, 50.0, 15, 11, 0, 0.0, (0, 0, -1, -1), 7),
    ("8x6 at 12.5%: histogram path", 17, 23, 0, 12.5, 8, 6, 0, 0.0, (0, 0, -1, -1), 65535),
    ("whole-image window at 40%", 17, 23, 0, 40.0, 23, 17, 0, 0.0, (0, 0, -1, -1), 65535),
    ("1 x 40 image", 1, 40, 0, 50.0, 5, 1, 0, 0.0, (0, 0, -1, -1), 65535),
    ("40 x 1 image", 40, 1, 0, 60.0, 1, 7, 0, 0.0, (0, 0, -1, -1), 65535),
    ("ellipse 7x5 at 50%", 17, 23, 0, 50.0, 7, 5, 1, 0.0, (0, 0, -1, -1), 65535),
    ("cross 5x5 at 60%", 17, 23, 0, 60.0, 5, 5, 2, 0.0, (0, 0, -1, -1), 65535),
    ("diagonal cross 5x5 at 100%", 17, 23, 0, 100.0, 5, 5, 3, 0.0, (0, 0, -1, -1), 65535),
    ("threshold +10", 17, 23, 0, 50.0, 5, 5, 0, 10.0, (0, 0, -1, -1), 65535),
    ("threshold -10", 17, 23, 0, 50.0, 5, 5, 0, -10.0, (0, 0, -1, -1), 65535),
    ("threshold +10 histogram path", 17, 23, 0, 50.0, 9, 9, 0, 10.0, (0, 0, -1, -1), 65535),
    ("region rows 3..10, cols 5..last", 17, 23, 0, 50.0, 9, 9, 0, 0.0, (3, 5, 10, -1), 65535),
    ("region single pixel", 17, 23, 0, 50.0, 3, 3, 0, 0.0, (16, 22, 16, 22), 65535),
    ("1x1 window", 17, 23, 0, 50.0, 1, 1, 0, 0.0, (0, 0, -1, -1), 65535),
    ("conserve 3x3", 17, 23, 1, 0.0, 3, 3, 0, 0.0, (0, 0, -1, -1), 65535),
    ("conserve 5x5 cross, ties", 17, 23, 1, 0.0, 5, 5, 2, 0.0, (0, 0, -1, -1), 5),
    ("conserve 4x4 threshold +3", 17, 23, 1, 0.0, 4, 4, 0, 3.0, (0, 0, -1, -1), 65535),
    ("conserve 1x1", 17, 23, 1, 0.0, 1, 1, 0, 0.0, (2, 2, 8, 8), 65535),
]


def values(a):
    return "{" + ", ".join(str(int(v)) for v in a.ravel()) + "}"


print("// Generated by tests/reference/gen_image_filters.py (SciPy ndimage and the clipped-")
print("// window rule in NumPy); do not edit.")
print("const ImageFilterCase kImageFilterCases[] = {")
for what, rows, cols, kind, pct, w, h, shape, thr, region, vmax in CASES:
    img = rng.integers(0, vmax + 1, size=(rows, cols), dtype=np.int64)
    out, fp, m, op, index = brute(img, kind, pct, w, h, shape)
    ref = scipy_interior(img, kind, pct, fp, op, index)
    r0, c0 = h // 2, w // 2
    r1, c1 = rows - (h - 1) // 2, cols - (w - 1) // 2
    assert np.array_equal(out[r0:r1, c0:c1], ref[r0:r1, c0:c1]), what
    out = threshold_rule(img, out, img, thr)
    rf, cf, rt, ct = region
    rt_, ct_ = (rows - 1 if rt == -1 else rt), (cols - 1 if ct == -1 else ct)
    expected = img.copy()
    expected[rf:rt_ + 1, cf:ct_ + 1] = out[rf:rt_ + 1, cf:ct_ + 1]
    print(f'    {{"{what}", {rows}, {cols}, {kind}, {pct!r}, {w}, {h}, {shape}, {thr!r}, '
          f'{rf}, {cf}, {rt}, {ct},')
    print(f"     {values(img)},")
    print(f"     {values(expected)}}},")
print("};")
