#!/usr/bin/env bash
# Runs every Google Benchmark program (in-C++ timings, for profiling the library's own
# code). The comparison with the NumPy/SciPy peers is the table that `make bench` prints
# (bench/table/run.py), where both sides run in one process, taking turns.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build/release}
for program in "$BUILD"/bench/*_bench; do
  [ -x "$program" ] || continue
  echo "== $(basename "$program" _bench)"
  "$program" --benchmark_min_time=0.2 "$@"
done
