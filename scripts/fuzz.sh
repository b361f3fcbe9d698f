#!/usr/bin/env bash
# Runs every fuzz target for some minutes each (default 5), from the project's corpus on; what it finds
# new stays in build/fuzz-corpus. Prints executions and coverage. With "minimise" as second argument
# the project's corpus is made anew: the fewest inputs that reach all that was reached.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-5}
[ "$minutes" -gt 0 ] || { echo "fuzz: minutes must be at least 1" >&2; exit 2; }
# What `time` prints: a busy machine gives a target less of the processor than the minutes it runs for.
TIMEFORMAT='%U %S'
all_seconds=0 all_runs=0

targets=$(cd fuzz && ls fuzz_*.cpp | sed 's/^fuzz_//; s/\.cpp$//' | tr '\n' ' ')
for target in $targets; do
  found=build/fuzz-corpus/$target kept=fuzz/corpus/$target
  mkdir -p "$found" "$kept"
  { time build/fuzz/fuzz_$target -max_total_time=$((minutes * 60)) -max_len=1024 -print_final_stats=1 \
    -artifact_prefix=build/fuzz-corpus/ "$found" "$kept" >build/fuzz-corpus/$target.log 2>&1; } \
    2>build/fuzz-corpus/$target.time || {
    tail -40 build/fuzz-corpus/$target.log
    echo "fuzz_$target found a fault; the input is in build/fuzz-corpus" >&2
    exit 1
  }
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' build/fuzz-corpus/$target.log)
  reached=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' build/fuzz-corpus/$target.log | tail -1)
  seconds=$(awk '{ printf "%.0f", $1 + $2 }' build/fuzz-corpus/$target.time)
  all_seconds=$((all_seconds + seconds)) all_runs=$((all_runs + runs))
  echo "fuzz_$target: $runs executions in $seconds s of processor time, $reached, no fault"
  if [ "${2:-}" = minimise ]; then
    rm -rf build/fuzz-corpus/least && mkdir build/fuzz-corpus/least
    build/fuzz/fuzz_$target -set_cover_merge=1 -max_len=256 build/fuzz-corpus/least "$found" "$kept" >/dev/null 2>&1
    rm -rf "$kept" && mv build/fuzz-corpus/least "$kept"
  fi
done
echo "$(wc -w <<<"$targets") targets, $all_runs executions in $((all_seconds / 60)) minutes of processor time, no fault"
