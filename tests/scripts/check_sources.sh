#!/bin/sh
# Who may include whom, and whether the public headers compile alone.
# usage: check_sources.sh root [compiler...]
set -u
root=$1
shift
cd "$root" || exit 1
status=0
fail() { echo "FAILED: $*"; status=1; }

# folder, then the folders it may include from besides its own; "public": any public header.
check_folder() {
  folder=$1
  shift
  [ -d "$folder" ] || { fail "$folder is not there"; return; }
  for file in $(find "$folder" -maxdepth "${depth:-9}" -name '*.h' -o -maxdepth "${depth:-9}" -name '*.cpp'); do
    for header in $(sed -n 's/^ *# *include *"\(.*\)".*/\1/p' "$file"); do
      case $header in
        Tarn*Engine.h) from=engines ;;
        Tarn*.h) from=include ;;
        */*) from=${header%/*} ;;
        *) fail "$file: \"$header\" without its folder"; continue ;;
      esac
      for allowed in "$folder" "$@"; do
        [ "$from" = "$allowed" ] && continue 2
        case $allowed:${header##*/} in public:Tarn*.h) continue 2 ;; esac
      done
      fail "$file must not include $header"
    done
  done
}
check_folder include
check_folder platform
check_folder layout include
check_folder engines/kernels layout
depth=1 check_folder engines include layout platform engines/kernels
check_folder solution include layout platform engines
check_folder reference
check_folder frames include layout engines engines/kernels
check_folder pictures frames pictures/synth reference
check_folder tools/tarn frames pictures pictures/synth public layout tools/tarn/cli tools/tarn/verbs

# In frames/ nothing but memory: what it may include of the standard library does not know of files,
# threads or terminals, and no header is anybody else's.
grep -nE '^ *# *include *<(iostream|fstream|filesystem|thread|mutex|condition_variable|future|cstdio)>|^ *# *include *<.*[/.].*>' \
  -r frames && fail "frames/ must not include these"
check_folder examples public

for compiler; do
  command -v "$compiler" >/dev/null || { echo "SKIPPED $compiler"; continue; }
  for header in include/*.h engines/Tarn*Engine.h; do
    "$compiler" -std=c++11 -x c++ -fsyntax-only -Wall -Wextra -Wpedantic -Werror -Iinclude \
      -include "$header" /dev/null || fail "$header with $compiler"
  done
done
exit $status
