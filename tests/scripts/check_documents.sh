#!/usr/bin/env bash
# Every relative link of a document leads to a file, and to a heading of it where it names one; every
# source that Android.bp and CMake list is the same, and every version; the API reference has no warning.
# usage: check_documents.sh root work-folder
set -uo pipefail
work=$(realpath -m "$2")
cd "$1" || exit 1
status=0
fail() { echo "FAILED: $*"; status=1; }

# The headings of a document, as links name them.
anchors() {
  sed -nE 's/^#+ +//p' "$1" | tr '[:upper:]' '[:lower:]' | sed -E 's/[^a-z0-9 _-]//g; s/ /-/g'
}

links() {
  local document link file anchor
  while read -r document; do
    while read -r link; do
      file=${link%%#*} anchor=${link#"$file"}
      file=${file:+$(dirname "$document")/$file}
      file=${file:-$document}
      [ -e "$file" ] || { fail "$document links to $link, which is not there" && continue; }
      [ -z "$anchor" ] || anchors "$file" | grep -qx -- "${anchor#\#}" || fail "$document: no heading for $link"
    done < <(grep -oE '\]\([^)]+\)' "$document" | sed 's/^](//; s/)$//' | grep -v '://')
  done < <(find . -name '*.md' -not -path './build/*' -not -path './.git/*')
}

# Android.bp lists the library's sources a second time, for arm64.
source_lists() {
  diff <(sed '/STREQUAL "x86_64"/,/^elseif/d' cmake/Library.cmake | grep -oE '[a-z_/]+/[A-Za-z_0-9]+\.cpp' | grep -v host_platform | sort -u) \
    <(grep -oE '[a-z_/]+/[A-Za-z_0-9]+\.cpp' Android.bp | sort) || fail "cmake/Library.cmake and Android.bp differ"
}

# What the library says at each Init is the project's version.
versions() {
  local project
  project=$(sed -nE 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
  grep -qF "kVersion[] = \"$project\";" solution/solution_impl.cpp || fail "CMakeLists.txt and solution_impl.cpp differ in the version"
}

# Every function, type and field of the public headers is documented.
api_reference() {
  command -v doxygen >/dev/null || { echo "SKIPPED API reference: no doxygen" && return; }
  { cat docs/Doxyfile && echo "OUTPUT_DIRECTORY = $work"; } | doxygen - || fail "doxygen has warnings"
}

mkdir -p "$work"
links
source_lists
versions
api_reference
exit $status
