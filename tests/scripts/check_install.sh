#!/usr/bin/env bash
# Installs into an empty prefix and builds clients out of tree: by the CMake package (with every
# compiler at hand), by pkg-config, and the one that loads the library at run time.
#   check_install.sh BUILD_DIR SOURCE_DIR WORK_DIR
set -euo pipefail
build=$1 source=$2 work=$(realpath -m "$3")
rm -rf "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libTarn.camera.mirova.so')

if [ -x "$prefix/bin/tarn" ]; then
  "$prefix/bin/tarn" selftest
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

for compiler in g++ clang++-19; do
  command -v "$compiler" >/dev/null || { echo "SKIPPED $compiler"; continue; }
  # Away from the project, so that nothing but the prefix can be found.
  cp -r "$source/examples" "$work/examples-$compiler"
  cmake -S "$work/examples-$compiler" -B "$work/$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
  cmake --build "$work/$compiler" >/dev/null
  ctest --test-dir "$work/$compiler" --output-on-failure >/dev/null
  echo "CMake package, $compiler: built and run"
done

export PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig LD_LIBRARY_PATH=$(dirname "$library")
# shellcheck disable=SC2046
g++ -std=c++11 "$source/examples/one_frame.cpp" -o "$work/by_pkg_config" $(pkg-config --cflags --libs tarn)
"$work/by_pkg_config"
echo "pkg-config: built and run"

g++ -std=c++11 "$source/examples/load_at_run_time.cpp" -o "$work/at_run_time" -ldl $(pkg-config --cflags tarn)
"$work/at_run_time"
echo "run time: built and run"
