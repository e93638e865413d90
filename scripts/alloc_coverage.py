#!/usr/bin/env python3
"""Allocation sites of src/ that the allocation-failure test never reaches.

Builds the library and the allocation-failure test with GCC coverage in a scratch folder
(build/alloc-coverage unless given), runs the test, and lists every allocating line of
src/ (containers sized, grown or copied, new, make_unique/make_shared, the untyped
allocation pair, try_allocate, FFT plans, Eigen's dynamic matrices) that the run never
executed, grouped by file with the enclosing function. A line the run never executes is
an allocation no injection fails.

    python3 scripts/alloc_coverage.py [--no-build] [--build-dir DIR]

Slow (an unoptimised build, then the whole injection run): a tool for reviews, not a CI
step.
"""
import argparse
import collections
import json
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

# What allocates on a line of our sources. Deliberately wide: a false entry costs a look,
# a missing pattern hides a site.
ALLOCATING = re.compile(
    r"\bNR(?:Vec|Mat)\s*<[^;]*>\s*\w+\s*[({]"  # NRVec<double> a(n);
    r"|\bNR(?:Vec|Mat)\s*<[^;]*>\s*[({]"  # NRVec<double>(n) temporaries
    r"|\bstd::vector\s*<[^;]*>\s*\w+\s*[({=]"  # std::vector<int> v(n); v{..}; v = ..
    r"|\bstd::(?:string|deque|map|set|unordered_map|list)\b[^;]*\w+\s*[({=]"
    r"|\.(?:resize|reserve|push_back|emplace_back|emplace|insert|assign|append)\s*\("
    r"|\bnew\s+[A-Za-z_:]|\bnew\s*\(std::nothrow\)"
    r"|\bmake_(?:unique|shared)\s*<"
    r"|\braw_(?:alloc|alloc_aligned|array)\s*[<(]|\balloc_array\s*<|\ballocate\s*<"
    r"|\btry_allocate\s*<"
    r"|\bfftw_plan_\w+\s*\("
    r"|\bEigen::(?:MatrixXd|VectorXd|Matrix<[^;]*Dynamic)"
    r"|\bx04bbc\s*\("
)


def run(cmd, **kw):
    print("+", " ".join(cmd), file=sys.stderr)
    subprocess.run(cmd, check=True, **kw)


def build_and_run(build):
    flags = "--coverage -O0"
    run(["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
         "-DZEMATH_WERROR=ON", "-DZEMATH_BUILD_BENCH=OFF", f"-DCMAKE_CXX_FLAGS={flags}",
         f"-DCMAKE_C_FLAGS={flags}", "-DCMAKE_EXE_LINKER_FLAGS=--coverage",
         "-DCMAKE_SHARED_LINKER_FLAGS=--coverage"], stdout=subprocess.DEVNULL)
    run(["ninja", "-C", build, "-j2", "zemath_alloc_tests"])
    for dirpath, _, files in os.walk(build):
        for f in files:
            if f.endswith(".gcda"):
                os.remove(os.path.join(dirpath, f))
    run([os.path.join(build, "tests", "zemath_alloc_tests"), "--gtest_brief=1"],
        stdout=subprocess.DEVNULL)


def executed_lines(build):
    """{source path: {line: count}} over every .gcda of the library, counts summed."""
    counts = collections.defaultdict(lambda: collections.defaultdict(int))
    functions = collections.defaultdict(dict)
    for dirpath, _, files in os.walk(os.path.join(build, "CMakeFiles")):
        for f in files:
            if not f.endswith(".gcda"):
                continue
            out = subprocess.run(["gcov", "--json-format", "--stdout", f],
                                 cwd=dirpath, capture_output=True, text=True, check=True)
            for chunk in out.stdout.splitlines():
                if not chunk.strip():
                    continue
                report = json.loads(chunk)
                for entry in report["files"]:
                    path = os.path.normpath(
                        os.path.join(report.get("current_working_directory", ""), entry["file"]))
                    if not path.startswith(os.path.join(ROOT, "src")):
                        continue
                    for line in entry["lines"]:
                        counts[path][line["line_number"]] += line["count"]
                        functions[path].setdefault(line["line_number"],
                                                   line.get("function_name", "?"))
    return counts, functions


def demangle(names):
    out = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True)
    return dict(zip(names, out.stdout.splitlines()))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build-dir", default=os.path.join(ROOT, "build", "alloc-coverage"),
                        type=os.path.abspath)
    parser.add_argument("--no-build", action="store_true",
                        help="use the counts of an earlier run in the build folder")
    args = parser.parse_args()
    if not args.no_build:
        build_and_run(args.build_dir)
    counts, functions = executed_lines(args.build_dir)
    missed = []
    for path in sorted(counts):
        with open(path, encoding="utf-8") as f:
            text = f.read().splitlines()
        for number, count in sorted(counts[path].items()):
            line = text[number - 1]
            code = line.split("//")[0]
            if count == 0 and ALLOCATING.search(code):
                missed.append((os.path.relpath(path, ROOT), number,
                               functions[path].get(number, "?"), line.strip()))
    names = demangle(sorted({m[2] for m in missed}))
    current = None
    for path, number, function, line in missed:
        if path != current:
            print(f"\n{path}")
            current = path
        print(f"  {number:5d}  {names.get(function, function)[:70]}\n         {line[:110]}")
    reached = sum(1 for p in counts for n, c in counts[p].items() if c > 0)
    print(f"\n{len(missed)} allocating lines never executed ({reached} lines of src/ executed)")


if __name__ == "__main__":
    main()
