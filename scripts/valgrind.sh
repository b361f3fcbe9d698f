#!/usr/bin/env bash
# memcheck on the shipped library: the front end's tests, the clients, and the fuzz corpus's replay.
# valgrind offers the library AVX2, not more.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/build.sh
TARGETS="solution_test dump_in_threads example_ev_in_place example_own_log fuzz_targets" \
  configure_and_build clang -DTARN_TOOL=OFF -DTARN_TESTS=ON -DTARN_WERROR=ON

corpus=$PWD/fuzz/corpus runs=0
cd build/clang
under_memcheck() {
  echo "== $*"
  valgrind --quiet --error-exitcode=9 --leak-check=full "$@"
  runs=$((runs + 1))
}
# This one has an operator new of its own, which must stay its own.
under_memcheck --soname-synonyms=somalloc=nouserintercepts ./solution_test
under_memcheck ./dump_in_threads
under_memcheck ./example_ev_in_place
under_memcheck ./example_own_log
for target in frame values life_cycle; do
  under_memcheck ./fuzz_$target "$corpus/$target"
done
echo "$runs programs without an error of memcheck's, nothing lost"
