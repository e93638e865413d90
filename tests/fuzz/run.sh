#!/usr/bin/env bash
# Runs every fuzz target of a build for the given number of seconds each, starting from
# its committed corpus and dictionary; new inputs go to a scratch folder, not the corpus.
# Prints the executions and coverage reached per target. Usage: run.sh <build dir> <seconds>
# With FUZZ_RUNS set, each target instead runs exactly that many inputs from a fixed seed:
# a repeatable run (CI's), where a time budget would make each run a different one.
set -euo pipefail
build=$1
seconds=${2:-20}
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
total=0
for source in "$here"/fuzz_*.cpp; do
  target=$(basename "$source" .cpp)
  family=${target#fuzz_}
  mkdir -p "$scratch/$family"
  log="$scratch/$family.log"
  if [ -n "${FUZZ_RUNS:-}" ]; then budget=(-runs="$FUZZ_RUNS" -seed=1); else budget=(-max_total_time="$seconds"); fi
  if ! "$build/tests/fuzz/$target" "${budget[@]}" -timeout=20 -rss_limit_mb=2048 \
      -print_final_stats=1 -dict="$here/$family.dict" -artifact_prefix="$scratch/" \
      "$scratch/$family" "$here/corpus/$family" >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "fuzz: $target found a problem; the input is kept under $scratch"
    trap - EXIT
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1)
  echo "fuzz: $target ${runs:-0} executions, $cov"
  total=$((total + ${runs:-0}))
done
echo "fuzz: $total executions in all"
