#!/usr/bin/env bash
# Runs every fuzz target for some minutes (default 5), as many at once as there are processors, from the
# project's corpus on; what it finds new stays in build/fuzz-corpus. Prints executions and coverage. With
# "minimise" as second argument the project's corpus is made anew: the fewest inputs that reach all that
# was reached.
set -euo pipefail
cd "$(dirname "$0")/.."
export minutes=${1:-5} minimise=${2:-}
[ "$minutes" -gt 0 ] || { echo "fuzz: minutes must be at least 1" >&2; exit 2; }
# What `time` prints: a busy machine gives a target less of the processor than the minutes it runs for.
export TIMEFORMAT='%U %S' work=build/fuzz-corpus

# Leaves "executions seconds" of processor time in $work/NAME.sum.
fuzz_one() {
  local target=$1 found=$work/$1 kept=fuzz/corpus/$1 log=$work/$1.log runs reached seconds
  mkdir -p "$found" "$kept"
  { time "build/fuzz/fuzz_$target" -max_total_time=$((minutes * 60)) -max_len=1024 -print_final_stats=1 \
    -artifact_prefix=$work/ "$found" "$kept" >"$log" 2>&1; } 2>"$work/$target.time" || {
    tail -40 "$log"
    echo "fuzz_$target found a fault; the input is in $work" >&2
    return 1
  }
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  reached=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -1)
  seconds=$(awk '{ printf "%.0f", $1 + $2 }' "$work/$target.time")
  echo "fuzz_$target: $runs executions in $seconds s of processor time, $reached, no fault"
  echo "$runs $seconds" >"$work/$target.sum"
  [ "$minimise" = minimise ] || return 0
  rm -rf "$work/$target.least" && mkdir "$work/$target.least"
  "build/fuzz/fuzz_$target" -set_cover_merge=1 -max_len=1024 "$work/$target.least" "$found" "$kept" >/dev/null 2>&1
  rm -rf "$kept" && mv "$work/$target.least" "$kept"
}
export -f fuzz_one

rm -f $work/*.sum
ls fuzz/fuzz_*.cpp | sed 's/.*fuzz_//; s/\.cpp$//' |
  xargs -P "$(nproc)" -I TARGET bash -euo pipefail -c 'fuzz_one TARGET'
cat $work/*.sum | awk '{ runs += $1; seconds += $2 }
  END { printf "%d targets, %d executions in %d minutes of processor time, no fault\n", NR, runs, seconds / 60 }'
