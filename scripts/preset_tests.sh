#!/usr/bin/env bash
# Builds a part of the tests by a preset and runs it.
#   preset_tests.sh PRESET TARGETS TESTS    TARGETS: names in one argument; TESTS: a pattern of ctest's
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/build.sh
preset=$1 tests=$3
TARGETS=$2 configure_and_build "$preset" -DTARN_TESTS=ON -DTARN_WERROR=ON
ctest --preset "$preset" -R "$tests"
echo "$(ctest --preset "$preset" -R "$tests" -N | sed -n 's/^Total Tests: //p') tests pass under $preset"
