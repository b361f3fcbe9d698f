#!/usr/bin/env bash
# Counts the aarch64 instructions of every operation per byte of input, under emulation: exact and
# repeatable where no such machine is at hand. Fails when one takes over 3 % more than
# bench/arm/instructions.txt records; `scripts/bench_arm.sh record` writes that file anew.
set -euo pipefail
cd "$(dirname "$0")/.."
work=build/bench-arm
record=bench/arm/instructions.txt
mkdir -p $work

{ cmake --preset aarch64 && cmake --build --preset aarch64 --target tarn_objects; } >$work/build.log 2>&1 || {
  cat $work/build.log
  exit 1
}
g++ -shared -fPIC -O2 -Wall -Wextra bench/arm/count_instructions.cpp -o $work/count_instructions.so
clang++-19 --target=aarch64-linux-gnu -fuse-ld=lld-19 -std=c++20 -O2 -Wall -Wextra -I. -Iinclude \
  -DTARN_TEST_EFFORT=100 bench/arm/run_operations.cpp tests/support/operations.cpp reference/operation.cpp \
  build/aarch64/libtarn_objects.a -o $work/run_operations

qemu-aarch64 -cpu cortex-a53 -L /usr/aarch64-linux-gnu -plugin $work/count_instructions.so \
  $work/run_operations |
  awk '$4 > 0 { printf "%s %s %.3f\n", $1, $2, $4 / $3 }' >$work/instructions.txt

if [ "${1:-}" = record ]; then
  cp $work/instructions.txt $record
fi
awk '
  BEGIN { printf "%-20s %-6s %8s %9s\n", "operation", "gain", "reached", "recorded" }
  NR == FNR { recorded[$1, $2] = $3; expected++; next }
  {
    known = ($1, $2) in recorded
    grown = !known || $3 > 1.03 * recorded[$1, $2]
    failed += grown
    printf "%-20s %-6s %8.3f %9s%s\n", $1, $2, $3, known ? recorded[$1, $2] : "none",
      grown ? "  GROWN" : ""
  }
  END {
    if (FNR != expected) { print "FAILED: " FNR " figures, " expected " recorded"; exit 1 }
    if (failed) { print "FAILED: " failed " take more instructions"; exit 1 }
    print FNR " counts, none over 3 % above its record"
  }' $record $work/instructions.txt
