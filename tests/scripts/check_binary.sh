#!/bin/sh
# What the shared library is as a file: its exports, name and hardening.
# usage: check_binary.sh library nm readelf expected-exports on-android(0|1)
set -u
library=$1 nm=$2 readelf=$3 expected=$4 android=$5
status=0
fail() { echo "FAILED: $*"; status=1; }

{
  sed -e '/^#/d' -e '/^$/d' "$expected"
  [ "$android" = 1 ] || printf '%s\n' __android_log_print __system_property_get
} | LC_ALL=C sort >exports.wanted
"$nm" -D --defined-only "$library" | awk '{print $NF}' | LC_ALL=C sort >exports.found
diff exports.wanted exports.found || fail "exports differ (< listed, > found)"

elf=$("$readelf" -dlW "$library")
has() { echo "$elf" | grep -Eq "$1" || fail "$2"; }
has 'soname: \[libTarn\.camera\.mirova\.so\]' "the soname"
has 'BIND_NOW|Flags: NOW' "immediate binding"
has 'GNU_RELRO' "read-only relocations"
has 'GNU_STACK [0-9a-fx ]* RW +0' "a stack that is not executable"
echo "$elf" | grep -Eq 'TEXTREL|RPATH|RUNPATH' && fail "text relocations, or a search path of its own"
echo "$elf" | grep -Eq 'LOAD .* R?WE ' && fail "a segment that is writable and executable"
echo "$elf" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
  grep -Ev '^(lib(c|m|c\+\+|stdc\+\+|gcc_s|log|dl)\.so|ld-linux-)' &&
  fail "needs more than the platform's C, C++ and log libraries"
"$nm" -D --undefined-only "$library" | grep -q __stack_chk_fail || fail "the stack protector"
echo "$elf" | awk '$1 == "LOAD" && $NF != "0x4000" && $NF != "0x10000" {bad = 1} END {exit bad}' ||
  fail "segments aligned to 16 KiB"
exit $status
