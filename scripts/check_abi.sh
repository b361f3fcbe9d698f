#!/usr/bin/env bash
# The library built twice, in two directories, must be the same to the last bit; and its interface as a
# binary must be the recorded one: functions, slots, sizes, offsets, values of enumerations.
# "check_abi.sh record" records the interface anew: see CONTRIBUTING.md first.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$PWD/build/abi
record=tests/abi/x86_64.xml
ignore=tests/abi/standard_library.abignore
[ "$(uname -m)" = x86_64 ] || { echo "SKIPPED abi: the record is that of x86-64" && exit 77; }

# With debugging information, which holds more paths than anything else, and without a cache, which
# would answer with the other directory's object.
build_in() {
  mkdir -p "$1"
  cp -r CMakeLists.txt CMakePresets.json cmake engines include layout platform solution "$1"
  (cd "$1" && cmake --preset host -DTARN_TOOL=OFF -DTARN_TESTS=OFF -DCMAKE_CXX_FLAGS=-g &&
    CCACHE_DISABLE=1 cmake --build --preset host --target tarn) >"$1/build.log" 2>&1 || {
    cat "$1/build.log"
    return 1
  }
}
rm -rf "$work"
build_in "$work/one"
build_in "$work/another/directory"
library=build/host/libTarn.camera.mirova.so
cmp "$work/one/$library" "$work/another/directory/$library"

mkdir "$work/headers"
cp include/*.h engines/Tarn*Engine.h "$work/headers"
abidw --headers-dir "$work/headers" --drop-private-types --exported-interfaces-only \
  --suppressions $ignore --no-show-locs --no-corpus-path --no-comp-dir-path --no-parameter-names \
  --out-file "$work/found.xml" "$work/one/$library"
[ "${1:-}" = record ] && cp "$work/found.xml" $record
abidiff --suppressions $ignore $record "$work/found.xml" || {
  echo "the binary interface is no longer the recorded one" >&2
  exit 1
}
echo "two directories, one library; $(grep -c '<elf-symbol' $record) exported symbols as recorded"
