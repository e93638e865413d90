#!/usr/bin/env python3
"""Checks that the shared libraries export exactly what the public headers declare.

Usage: check_symbols.py LIBZEMATH LIBZEMATH_PLAIN INCLUDE_DIR

- every C function declared with ZEMATH_API in include/**/*.h is defined by its library
  (plainnames.h by the companion library, every other header by libzemath);
- every defined dynamic symbol is either such a declared C name, or a function (C or C++
  linkage) or a class member declared with ZEMATH_API in a public .hpp header;
- every C prototype ends in ZEMATH_NOEXCEPT (noexcept for C++ callers, so that an export
  that lets an exception out stops at the boundary instead of unwinding C frames).
Prints what is wrong and exits non-zero on any mismatch.
"""
import pathlib
import re
import subprocess
import sys

DECL = re.compile(r"ZEMATH_API\s+(?!class\b|struct\b)[^;{()]*?\b(\w+)\s*\(", re.S)
PROTOTYPE = re.compile(r"ZEMATH_API\s+(?!class\b|struct\b)[^;{]*;", re.S)
CPP_CLASS = re.compile(r"(?:ZEMATH_API\s+(?:class|struct)|(?:class|struct)\s+ZEMATH_API)\s+(\w+)")


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"//[^\n]*", " ", text)
    return re.sub(r"(?m)^\s*#.*$", " ", text)


def declared(include_dir):
    c_main, c_plain, cpp = set(), set(), set()
    for path in sorted(pathlib.Path(include_dir).rglob("*")):
        if path.suffix not in (".h", ".hpp"):
            continue
        text = strip_comments(path.read_text())
        if path.suffix == ".hpp":
            cpp.update(CPP_CLASS.findall(text))
            cpp.update(DECL.findall(text))
        elif path.name == "plainnames.h":
            c_plain.update(DECL.findall(text))
        else:
            c_main.update(DECL.findall(text))
    return c_main, c_plain, cpp


def without_noexcept(include_dir):
    missing = []
    for path in sorted(pathlib.Path(include_dir).rglob("*.h")):
        for proto in PROTOTYPE.findall(strip_comments(path.read_text())):
            if not re.search(r"\)\s*ZEMATH_NOEXCEPT\s*;$", proto):
                missing.append(f"{path.name}: prototype without ZEMATH_NOEXCEPT: {' '.join(proto.split())}")
    return missing


def defined(library):
    out = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                         capture_output=True, text=True).stdout
    names = []
    for line in out.splitlines():
        parts = line.split(None, 2)
        if len(parts) == 3 and parts[1] not in ("A",):
            names.append(parts[2])
    return names


def cpp_owner(symbol):
    for prefix in ("typeinfo name for ", "typeinfo for ", "vtable for ", "VTT for ",
                   "non-virtual thunk to ", "virtual thunk to "):
        if symbol.startswith(prefix):
            symbol = symbol[len(prefix):]
    head = symbol.split("(", 1)[0]
    head = re.sub(r"<.*>", "", head)
    return head.split("::", 1)[0].strip()


def main():
    lib, plain, include_dir = sys.argv[1:4]
    c_main, c_plain, cpp = declared(include_dir)
    problems = without_noexcept(include_dir)
    for library, wanted in ((lib, c_main), (plain, c_plain)):
        names = defined(library)
        have = set(names)
        for name in sorted(wanted - have):
            problems.append(f"{library}: declared but not exported: {name}")
        for name in names:
            if name in wanted or (library == lib and name in cpp):
                continue
            if ("::" in name or "(" in name or " for " in name) and cpp_owner(name) in cpp \
                    and library == lib:
                continue
            problems.append(f"{library}: exported but not declared: {name}")
    for p in problems:
        print(p)
    print(f"checked {len(c_main)} C exports, {len(c_plain)} plain names, "
          f"{len(cpp)} C++ export names: {'FAIL' if problems else 'ok'}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
