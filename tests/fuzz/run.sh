#!/usr/bin/env bash
# Runs every fuzz target of a build for the given number of seconds each, starting from
# its committed corpus and dictionary; new inputs go to a scratch folder, not the corpus.
# Prints the executions and coverage reached per target. Usage: run.sh <build dir> <seconds>
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
  if ! "$build/tests/fuzz/$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
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
