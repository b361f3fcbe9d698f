#!/usr/bin/env bash
# Format, documents, include rules, headers alone, shellcheck, cppcheck, clang-tidy. Needs build/host configured.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
failed=0
fail() { echo "lint: $*" >&2; failed=1; }

format() {
  git ls-files '*.h' '*.cpp' | xargs clang-format-14 --dry-run -Werror || fail "clang-format 14 would change these"
}

# Not the kernels that only another machine compiles, and without the option that only g++ has.
tidy() {
  mkdir -p build/lint
  sed 's/ -mstringop-strategy=[a-z]*//' build/host/compile_commands.json >build/lint/compile_commands.json
  git ls-files ':!engines/kernels/neon.cpp' 'engines/*.cpp' 'layout/*.cpp' 'platform/*.cpp' 'solution/*.cpp' 'reference/*.cpp' 'frames/*.cpp' 'pictures/*.cpp' 'tools/*.cpp' |
    xargs -P 2 -n 3 clang-tidy-14 --quiet -p build/lint 2>/dev/null || fail "clang-tidy 14 has findings"
}

# The kernels of every machine, but only as far as cppcheck reads templates; .cppcheck says what it
# gets wrong.
second_opinion() {
  cppcheck --quiet --error-exitcode=1 --std=c++20 --language=c++ --library=googletest \
    --enable=warning,performance,portability --suppressions-list=.cppcheck -I. -Iinclude -Iengines \
    -Iplatform/host bench engines examples frames fuzz golden include layout pictures platform reference solution \
    tests tools || fail "cppcheck has findings"
}

scripts_too() {
  git ls-files '*.sh' run .ci/run | xargs shellcheck -S warning || fail "shellcheck has findings"
}

# What the everyday tests see as well.
documents() {
  tests/scripts/check_documents.sh . build/api || fail "links, lists of sources or the API reference"
  tests/scripts/check_sources.sh . g++ clang++-19 || fail "include rules, or a header that does not compile alone"
}

for check in format documents scripts_too second_opinion tidy; do
  echo "== $check"
  $check
done
[ $failed -eq 0 ] && echo "format, documents, include rules, headers alone, shellcheck, cppcheck, clang-tidy: no finding"
exit $failed
