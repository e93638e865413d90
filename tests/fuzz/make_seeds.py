#!/usr/bin/env python3
"""Writes the seed corpora: for each target, one input per export it can pick (the first
byte selects it), followed by bytes that give small counts and ordinary doubles, so that
fuzzing starts from calls that get past the argument checks. Run from tests/fuzz/."""
import pathlib
import random
import struct

CASES = {"primitives": 12, "sort": 8, "search": 10, "distributions": 38, "random": 22,
         "smoothing": 26, "peaks": 26, "rainflow": 7, "image": 14, "reduction": 13,
         "statistics": 24, "special": 14, "gridding": 16, "emd": 5, "peak_analysis": 21}


def seed(case, rng):
    body = bytes([case])
    for _ in range(48):
        kind = rng.randrange(3)
        if kind == 0:
            body += bytes([4]) + struct.pack("<H", rng.randrange(1, 40))  # a small count
        elif kind == 1:
            body += bytes([1]) + struct.pack("<h", rng.randrange(-512, 512))  # value / 64
        else:
            body += bytes([3]) + struct.pack("<d", rng.uniform(-10, 10))  # raw double
    return body


def main():
    rng = random.Random(20261123)
    for target, cases in CASES.items():
        folder = pathlib.Path("corpus") / target
        folder.mkdir(parents=True, exist_ok=True)
        for case in range(cases):
            (folder / ("seed_%02d" % case)).write_bytes(seed(case, rng))


if __name__ == "__main__":
    main()
