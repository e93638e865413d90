#!/usr/bin/env python3
"""Checks the include graph of src/: calls go one way, down the layers.

    core  <  platform/numeric  <  platform/{nag,util,fft}  <  frame  <  signal, gridding, stats

A file may include headers of its own layer or of a lower one, never of a higher one.
signal, gridding and stats share a layer (one family may call another through its
internal header); so do nag, util and fft. Public headers (zemath/...) may be included
from anywhere; src/plainnames may include nothing internal.

Usage: check-layers.py [SRC_DIR]     (default: the src/ beside this script's folder)
       check-layers.py --self-test   (proves the check fails on an inverted include)
Prints the number of include lines checked; exits 1 and lists each offending line when
a lower folder includes a higher one.
"""
import os
import re
import sys
import tempfile

RANK = {
    "core": 0,
    "platform/numeric": 1,
    "platform/nag": 2,
    "platform/util": 2,
    "platform/fft": 2,
    "frame": 3,
    "signal": 4,
    "gridding": 4,
    "stats": 4,
    "plainnames": -1,  # includes public headers only
}
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')


def folder_of(path):
    """The layer folder of a path relative to src/ (or of an include path), or None."""
    parts = path.replace(os.sep, "/").split("/")
    if len(parts) >= 2 and parts[0] == "platform":
        return "platform/" + parts[1]
    return parts[0] if parts[0] in RANK else None


def check(src):
    checked, violations = 0, []
    for root, _, files in os.walk(src):
        for name in sorted(files):
            if not name.endswith((".c", ".cpp", ".h", ".hpp", ".inc")):
                continue
            path = os.path.join(root, name)
            rel = os.path.relpath(path, src)
            own = folder_of(rel)
            if own is None:
                violations.append(f"{rel}: not in a known layer folder")
                continue
            with open(path, encoding="utf-8", errors="replace") as handle:
                for number, line in enumerate(handle, 1):
                    match = INCLUDE.match(line)
                    if not match:
                        continue
                    target = match.group(1)
                    if target.startswith("zemath/") or target.startswith("zemath.h"):
                        continue  # public headers
                    checked += 1
                    other = folder_of(target)
                    if other is None:
                        violations.append(f"{rel}:{number}: includes \"{target}\", outside every layer")
                    elif RANK[own] < 0 or RANK[other] > RANK[own]:
                        violations.append(f"{rel}:{number}: {own} includes higher {other} (\"{target}\")")
    return checked, violations


def self_test():
    with tempfile.TemporaryDirectory() as src:
        for folder, text in (("core", '#include "core/missing.hpp"\n'),
                             ("platform/numeric", '#include "core/guard.hpp"\n'),
                             ("platform/util", '#include "frame/nrvec.hpp"\n'),
                             ("stats", '#include "signal/peaks.hpp"\n')):
            os.makedirs(os.path.join(src, folder), exist_ok=True)
            with open(os.path.join(src, folder, "x.cpp"), "w") as handle:
                handle.write(text)
        checked, violations = check(src)
        expected = ['platform/util/x.cpp:1: platform/util includes higher frame ("frame/nrvec.hpp")']
        if checked != 4 or violations != expected:
            print("self-test failed:", checked, violations)
            return 1
    print("self-test passed: an inverted include is reported, same-layer and downward ones are not")
    return 0


def main(argv):
    if argv[1:] == ["--self-test"]:
        return self_test()
    src = argv[1] if len(argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "src")
    checked, violations = check(src)
    for v in violations:
        print(v)
    print(f"{checked} internal include lines checked, {len(violations)} crossing a layer upwards")
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
