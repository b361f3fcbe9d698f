#!/usr/bin/env bash
# Format, clang-tidy, links inside the documents, one list of sources. Needs build/host configured.
set -uo pipefail
cd "$(dirname "$0")/.."
failed=0
fail() { echo "lint: $*" >&2; failed=1; }

format() {
  git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format-14 --dry-run -Werror || fail "clang-format 14 would change these"
}

# Not the kernels that only another machine compiles.
tidy() {
  git ls-files ':!engines/kernels/neon.cpp' 'engines/*.cpp' 'layout/*.cpp' 'platform/*.cpp' 'solution/*.cpp' 'reference/*.cpp' 'tools/*.cpp' |
    xargs -P 2 -n 3 clang-tidy-14 --quiet -p build/host 2>/dev/null || fail "clang-tidy 14 has findings"
}

# Every relative link of a document leads to a file.
links() {
  local document link
  for document in $(git ls-files '*.md'); do
    for link in $(grep -oE '\]\([^)#]+' "$document" | sed 's/^](//' | grep -v '://'); do
      [ -e "$(dirname "$document")/$link" ] || fail "$document links to $link, which is not there"
    done
  done
}

# Android.bp lists the library's sources a second time.
source_lists() {
  diff <(grep -oE '[a-z_/]+/[A-Za-z_0-9]+\.cpp' cmake/Library.cmake | grep -v host_platform | grep -v avx | sort) \
    <(grep -oE '[a-z_/]+/[A-Za-z_0-9]+\.cpp' Android.bp | sort) || fail "cmake/Library.cmake and Android.bp differ"
}

# Every function, type and field of the public headers is documented.
api_reference() {
  mkdir -p build/api
  doxygen docs/Doxyfile || fail "doxygen has warnings"
}

for check in format links source_lists api_reference tidy; do
  echo "== $check"
  $check
done
[ $failed -eq 0 ] && echo "format, links, lists of sources, reference and clang-tidy: no finding"
exit $failed
