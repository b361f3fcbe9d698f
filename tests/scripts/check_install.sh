#!/usr/bin/env bash
# Installs into an empty prefix and builds clients out of tree: by the CMake package (with every
# compiler at hand), by pkg-config, and the one that loads the library at run time.
#   check_install.sh BUILD_DIR SOURCE_DIR WORK_DIR tool|library|aarch64
# tool: with the tool; library: without; aarch64: a cross build of the library, under emulation
set -euo pipefail
build=$1 source=$(realpath "$2") work=$(realpath -m "$3")
rm -rf "$work"
prefix=$work/prefix

if [ "$4" = aarch64 ]; then
  compiler=aarch64-linux-gnu-g++ compilers="aarch64-linux-gnu-g++ clang++-19"
  emulator="qemu-aarch64 -cpu cortex-a53 -L /usr/aarch64-linux-gnu"
else
  compiler=g++ compilers="g++ clang++-19" emulator=
fi
# How CMake is told of a compiler and of the prefix. A toolchain file keeps CMake from looking for
# packages outside its root, so the package's own folder is named.
cmake_options() {
  local toolchain=$source/cmake/aarch64-linux-gnu
  case $emulator:$1 in
    :*) echo "-DCMAKE_CXX_COMPILER=$1 -DCMAKE_PREFIX_PATH=$prefix" ;;
    *g++) echo "-DCMAKE_TOOLCHAIN_FILE=$toolchain-g++.cmake -Dtarn_DIR=$package" ;;
    *) echo "-DCMAKE_TOOLCHAIN_FILE=$toolchain.cmake -Dtarn_DIR=$package" ;;
  esac
}
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libTarn.camera.mirova.so')
folder=$(dirname "$library")
package=$folder/cmake/tarn

if [ "$4" = tool ]; then
  # By the vectors that were installed with it, not those of the sources.
  "$prefix/bin/tarn" selftest 2>&1 | tee "$work/selftest"
  grep -qF " $prefix/" "$work/selftest"
  echo "tool: its golden vectors pass"
  "$source/tests/scripts/check_completion.sh" \
    "$prefix/share/bash-completion/completions/tarn" "$prefix/bin/tarn"
  echo "tool: bash completes its command line"
  page=$prefix/share/man/man1/tarn.1
  # What man cannot read it would leave out, and say so here.
  if command -v groff >/dev/null; then
    [ -z "$(groff -man -ww -z "$page" 2>&1)" ]
  else
    echo "SKIPPED the manual page's form: no groff"
  fi
  for verb in $("$prefix/bin/tarn" --complete tarn ""); do grep -q "^.SS tarn $verb " "$page"; done
  echo "tool: its manual page tells of every verb"
fi

used=()
for by in $compilers; do
  command -v "$by" >/dev/null || { echo "SKIPPED $by"; continue; }
  used+=("$by")
  # Away from the project, so that nothing but the prefix can be found.
  cp -r "$source/examples" "$work/examples-$by"
  cmake -S "$work/examples-$by" -B "$work/$by" $(cmake_options "$by") >/dev/null
  cmake --build "$work/$by" >/dev/null
  ctest --test-dir "$work/$by" --output-on-failure >/dev/null
  echo "CMake package, $by: built and run"
done

export PKG_CONFIG_PATH=$folder/pkgconfig LD_LIBRARY_PATH=$folder
$compiler -std=c++11 "$source/examples/one_frame.cpp" -o "$work/by_pkg_config" $(pkg-config --cflags --libs tarn)
$emulator "$work/by_pkg_config"
echo "pkg-config: built and run"

$compiler -std=c++11 "$source/examples/load_at_run_time.cpp" -o "$work/at_run_time" -ldl $(pkg-config --cflags tarn)
$emulator "$work/at_run_time"
echo "run time: built and run"
echo "three kinds of clients, by ${used[*]}"
