# shellcheck shell=bash
# Building by presets. Sourced by ./run and by checks that build for themselves.

# configure_and_build PRESET [cmake options]; the log is shown when something fails. TARGETS names what
# is built, when it is not everything.
configure_and_build() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  echo "== build $preset"
  { cmake --preset "$preset" "$@" && cmake --build --preset "$preset" ${TARGETS:+--target $TARGETS}; } >"$log" 2>&1 || {
    cat "$log"
    return 1
  }
}
