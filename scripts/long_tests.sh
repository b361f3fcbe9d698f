#!/usr/bin/env bash
# The everyday random tests at length, each case on every level that the processor has, in rounds: a
# run that is broken off has counted what its log says.
#   long_tests.sh frames CASES [PRESET]   random frames against the reference
#   long_tests.sh gains GAINS [PRESET]    every 16-bit value x depths 10..16 x so many gains
# PRESET is host or aarch64, which runs under emulation; it is built first, unless BUILD names a folder
# of tests. ROUND (1000000) is the cases of a round. Levels are scalar and the vector ones, each by itself,
# and the engines, which choose.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/build.sh
what=${1:?frames or gains} amount=${2:?how many} preset=${3:-host} build=${BUILD:-}
[ -n "$build" ] || {
  TARGETS="differential_test engines_test" configure_and_build "$preset" -DTARN_TESTS=ON
  build=build/$preset
}
emulator=()
[ "$preset" != aarch64 ] || emulator=(qemu-aarch64 -L /usr/aarch64-linux-gnu)
seed=${TARN_TEST_SEED:-$(date +%s)000000000}
start=$(date +%s.%N)
seconds() { awk -v a="$start" -v b="$(date +%s.%N)" 'BEGIN { printf "%.0f", b - a }'; }

# A test names the levels that this processor lacks.
levels() {
  echo "every level$(grep SKIPPED "$log" | sed 's/SKIPPED / but /' | sort -u | tr -d '\n')"
}

frames() {
  local done=0 round=${ROUND:-1000000} log
  log=$(mktemp)
  while [ "$done" -lt "$amount" ]; do
    [ $((amount - done)) -ge "$round" ] || round=$((amount - done))
    TARN_TEST_SEED=$((seed + done)) TARN_TEST_CASES=$round "${emulator[@]}" "$build/differential_test" \
      --gtest_filter=Differential.RandomFrames >"$log" 2>&1 || {
      cat "$log"
      echo "frames: FAILED within the $round cases from seed $((seed + done)) on" >&2
      exit 1
    }
    done=$((done + round))
    echo "frames: $done cases from seed $seed on, each on $(levels), no mismatch, $(seconds) s"
  done
  rm "$log"
}

gains() {
  local log
  log=$(mktemp)
  TARN_TEST_SEED=$seed TARN_TEST_GAINS=$amount "${emulator[@]}" "$build/engines_test" \
    --gtest_filter=Values.CompensationIsFusedForEveryValueDepthAndGain >"$log" 2>&1 || {
    cat "$log"
    exit 1
  }
  echo "gains: 65536 values x 7 depths x $(grep -E '^[0-9]+ gains' "$log"), no mismatch, $(seconds) s"
  rm "$log"
}

"$what"
