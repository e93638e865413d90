#!/usr/bin/env bash
# The long fuzz run: every target (or those named) for a number of seconds each, one after
# the other at the lowest priority, built with the fuzz-long preset (AddressSanitizer and
# UndefinedBehaviorSanitizer as in CI, without comparison tracing: up to twice the
# executions where much data is compared). Unlike tests/fuzz/run.sh it carries on past a
# finding, so that one run reports on every target.
#
#   scripts/long_fuzz.sh [seconds per target] [family ...]
#
# Each target starts from its committed corpus and dictionary; the inputs it adds and any
# finding go under $FUZZ_WORK (default build/fuzz-long/run): corpus/<family>/,
# findings/<family>/ (crash-, leak-, timeout-, oom- files) and <family>.log. A finding is
# fixed at its root and its input joins tests/fuzz/corpus/<family>/. Prints per target the
# executions, executions per second, coverage (edges) and features, and the totals.
# Set FUZZ_SKIP_BUILD=1 to use binaries already built (in build/fuzz-long, or FUZZ_BIN).
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-120}
shift || true
cd "$root"
if [ -z "${FUZZ_SKIP_BUILD:-}" ]; then
  cmake --preset fuzz-long >/dev/null || exit 1
  cmake --build --preset fuzz-long -j "${JOBS:-2}" --target zemath_fuzz_targets || exit 1
fi
bin=${FUZZ_BIN:-$root/build/fuzz-long/tests/fuzz}
work=${FUZZ_WORK:-$root/build/fuzz-long/run}
mkdir -p "$work"
if [ $# -gt 0 ]; then
  families=("$@")
else
  families=()
  for source in "$root"/tests/fuzz/fuzz_*.cpp; do
    target=$(basename "$source" .cpp)
    families+=("${target#fuzz_}")
  done
fi
total=0
findings=0
for family in "${families[@]}"; do
  mkdir -p "$work/corpus/$family" "$work/findings/$family"
  log=$work/$family.log
  nice -n 19 "$bin/fuzz_$family" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
    -print_final_stats=1 -dict="$root/tests/fuzz/$family.dict" \
    -artifact_prefix="$work/findings/$family/" "$work/corpus/$family" \
    "$root/tests/fuzz/corpus/$family" >"$log" 2>&1
  status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  cov=$(grep -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -n 1)
  found=$(find "$work/findings/$family" -type f | wc -l)
  findings=$((findings + found))
  echo "long fuzz: $family ${runs:-0} executions (${speed:-0}/s), $cov, exit $status," \
    "$found finding(s)"
  total=$((total + ${runs:-0}))
done
echo "long fuzz: $total executions in all, $findings finding(s) under $work/findings"
[ "$findings" -eq 0 ]
