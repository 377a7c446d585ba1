#!/usr/bin/env bash
# Runs every benchmark: the bench_* programs of the build and the bench/*.sh scripts. Each one
# measures against its own reference in the same run and prints the ratio.
set -uo pipefail
build=${1:-build}
cd "$(dirname "$0")/.."
status=0
for program in "$build"/bench/bench_*; do
  [ -f "$program" ] && [ -x "$program" ] || continue
  echo "== $(basename "$program")"
  "$program" || status=1
done
for script in bench/*.sh; do
  [ -f "$script" ] || continue
  echo "== $(basename "$script")"
  bash "$script" "$build" || status=1
done
exit $status
