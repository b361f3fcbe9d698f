#!/usr/bin/env bash
# How much stack one function of the library takes, by each compiler: none may be without bound. The
# sum of a call's frames is measured by the everyday tests (Extremes.SmallStacks): an operation within
# 16 KiB, Process within 32 KiB. There g++ for aarch64 is not among the compilers: it copies the
# tuples of registers that NEON's table look-ups take through the stack, so its frames are stated here
# with a limit of their own. Android builds with clang.
set -euo pipefail
cd "$(dirname "$0")/.."

figures=()
# check PRESET LIMIT COMPILER
check() {
  local build=build/stack/$3 log=build/stack/$3.log largest
  mkdir -p build/stack
  { cmake --preset "$1" -B "$build" -DTARN_TOOL=OFF -DTARN_TESTS=OFF -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS=-fstack-usage && cmake --build "$build" -j 2 --target tarn_objects; } >"$log" 2>&1 || {
    cat "$log"
    exit 1
  }
  # file:line:column:function <tab> bytes <tab> static, or dynamic with "bounded"
  find "$build" -name '*.su' -exec cat {} + | sort -t$'\t' -k2nr >"build/stack/$3.txt"
  if grep -P '\tdynamic$' "build/stack/$3.txt"; then
    echo "FAILED: $3: frames without bound" >&2
    exit 1
  fi
  head -n 3 "build/stack/$3.txt"
  largest=$(head -n 1 "build/stack/$3.txt" | cut -f 2)
  if [ "$largest" -gt "$2" ]; then
    echo "FAILED: $3: a frame of $largest bytes, at most $2 are allowed" >&2
    exit 1
  fi
  figures+=("$3 $largest of $2")
}
check host 9000 g++
check aarch64 9000 aarch64-clang
check aarch64-asan 27648 aarch64-g++
echo "largest frame in bytes: $(IFS=';'; echo "${figures[*]}")"
