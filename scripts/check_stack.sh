#!/usr/bin/env bash
# How much stack one function of the library takes, by each compiler: none may be without bound, none
# above what the build warns of, most of which is a row of sums. What a whole call takes is measured by the everyday
# tests (Extremes.SmallStacks: an operation within 16 KiB, Process within 32 KiB), though not with g++
# for aarch64: it copies the tuples of registers that NEON's table look-ups take through the stack.
set -euo pipefail
cd "$(dirname "$0")/.."

figures=()
limit=$(sed -nE 's/.*-Wframe-larger-than=([0-9]+).*/\1/p' cmake/Library.cmake)
[ -n "$limit" ] || { echo "FAILED: cmake/Library.cmake has no -Wframe-larger-than" >&2; exit 1; }
# check PRESET COMPILER
check() {
  local build=build/stack/$2 log=build/stack/$2.log frames=build/stack/$2.txt largest
  rm -rf "$build" && mkdir -p build/stack
  { cmake --preset "$1" -B "$build" -DTARN_TOOL=OFF -DTARN_TESTS=OFF -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS=-fstack-usage && cmake --build "$build" -j 2 --target tarn_objects; } >"$log" 2>&1 || {
    cat "$log"
    exit 1
  }
  # file:line:column:function <tab> bytes <tab> static, or dynamic with "bounded"
  find "$build" -name '*.su' -exec cat {} + | sort -t$'\t' -k2nr >"$frames"
  [ -s "$frames" ] || { echo "FAILED: $2 wrote no sizes of frames" >&2; exit 1; }
  if grep -P '\tdynamic$' "$frames"; then
    echo "FAILED: $2: frames without bound" >&2
    exit 1
  fi
  head -n 3 "$frames"
  largest=$(head -n 1 "$frames" | cut -f 2)
  if [ "$largest" -gt "$limit" ]; then
    echo "FAILED: $2: a frame of $largest bytes, at most $limit are allowed" >&2
    exit 1
  fi
  figures+=("$2 $largest")
}
check host g++
check aarch64 aarch64-clang
check aarch64-asan aarch64-g++
echo "largest frame, of at most $limit bytes: $(printf '%s, ' "${figures[@]}")none without bound"
