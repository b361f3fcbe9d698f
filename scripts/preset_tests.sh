#!/usr/bin/env bash
# Builds a part of the tests by a preset and runs it.
#   preset_tests.sh PRESET TARGETS TESTS    TARGETS: names in one argument; TESTS: a pattern of ctest's
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/build.sh
preset=$1 tests=$3
TARGETS=$2 configure_and_build "$preset" -DTARN_TESTS=ON -DTARN_WERROR=ON
# g++ 12's thread sanitizer does not know every place a kernel's randomisation can choose.
fixed=()
if setarch -R true 2>/dev/null; then fixed=(setarch -R); fi
"${fixed[@]}" ctest --preset "$preset" -R "$tests"
echo "$(ctest --preset "$preset" -R "$tests" -N | sed -n 's/^Total Tests: //p') tests pass under $preset"
