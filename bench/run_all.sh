#!/usr/bin/env bash
# Runs every benchmark program and, beside it, its peer script on the same sizes, so the
# ratios in the reports come from one run on one machine.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-build/release}
for program in "$BUILD"/bench/*_bench; do
  [ -x "$program" ] || continue
  name=$(basename "$program" _bench)
  echo "== $name: zeMath"
  "$program" --benchmark_min_time=0.2 "$@"
  if [ -f "bench/${name}_peer.py" ]; then
    echo "== $name: peer"
    /usr/bin/python3 "bench/${name}_peer.py"
  fi
done
