#!/usr/bin/env bash
# Runs the checks of scripts/checks.txt, one after the other, and says of each its outcome, its time
# and its figure. Logs stay in build/checks. Ends non-zero when one fails.
#   checks.sh [--list] check | all | long | NAME...
# A stage runs those before it too.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
readonly logs=build/checks

# name|stage|seconds|command, without the blanks around the bars.
table() { sed -E '/^(#|$)/d; s/ *\| */|/g' scripts/checks.txt; }

# Those rows of the table that the arguments name.
selected() {
  local stages=
  case ${1:-} in
    check) stages="check" ;;
    all) stages="check all" ;;
    long) stages="check all long" ;;
  esac
  if [ -n "$stages" ]; then
    [ $# -eq 1 ] || { echo "checks: either a stage or names: $*" >&2 && return 1; }
    table | awk -F'|' -v stages=" $stages " 'index(stages, " " $2 " ")'
    return
  fi
  local name
  for name; do
    table | awk -F'|' -v name="$name" '$1 == name { print; found = 1 } END { exit !found }' || { echo "there is no check '$name'; ./run check --list names them" >&2 && return 1; }
  done
}

outcome_of() {
  case $1 in
    0) echo ok ;;
    77) echo SKIPPED ;;
    *) echo FAILED ;;
  esac
}

# Counts the outcome in passed, failed, skipped.
run_one() {
  local name=$1 stated=$2 command=$3 log=$logs/$1.log start=$SECONDS status=0 outcome
  bash -c "$command" >"$log" 2>&1 </dev/null || status=$?
  outcome=$(outcome_of $status)
  printf '%-7s %-18s %5d s (%d)  %s\n' "$outcome" "$name" $((SECONDS - start)) "$stated" \
    "$(grep -v '^ *$' "$log" | tail -n 1 | cut -c 1-150)"
  case $outcome in
    ok) passed=$((passed + 1)) ;;
    SKIPPED) skipped=$((skipped + 1)) ;;
    FAILED)
      failed=$((failed + 1))
      tail -n 40 "$log" | sed 's/^/    /'
      echo "    the whole log: $log"
      ;;
  esac
}

list=false
[ "${1:-}" = --list ] && { list=true && shift; }
rows=$(selected "${@:-long}") || exit 2
if $list; then
  echo "$rows" | awk -F'|' '{ printf "%-18s %-6s %6d s  %s\n", $1, $2, $3, $4; sum += $3 }
                            END { printf "%d checks, %d minutes\n", NR, (sum + 59) / 60 }'
  exit 0
fi

passed=0 failed=0 skipped=0
mkdir -p "$logs"
while IFS='|' read -r name _ stated command <&3; do
  run_one "$name" "$stated" "$command"
done 3<<<"$rows"
echo "the checks took $((SECONDS / 60)) minutes"
# The last line is one that continuous integration reads.
line="$passed passed, $failed failed"
[ "$skipped" -eq 0 ] || line="$line, $skipped skipped"
echo "$line"
[ "$failed" -eq 0 ]
