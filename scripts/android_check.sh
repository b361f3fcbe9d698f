#!/usr/bin/env bash
# Compiles every source that Android.bp lists for aarch64 Android with clang 19, and compares what the
# objects leave undefined with what the platform supplies. No NDK is needed, and none is verified: the
# C++ headers are libc++'s, the log header Android's own, the C headers glibc's, and the property
# header a stub.
set -euo pipefail
cd "$(dirname "$0")/.."
work=build/android-check
rm -rf $work
mkdir -p $work/include/sys

cat >$work/include/sys/system_properties.h <<'TXT'
#define PROP_VALUE_MAX 92
extern "C" int __system_property_get(const char* name, char* value);
TXT

# What the platform's C library, C++ run-time and log library supply of what we use.
cat >$work/platform.txt <<'TXT'
_ZSt7nothrow
_ZTVN10__cxxabiv117__class_type_infoE
_ZTVN10__cxxabiv120__si_class_type_infoE
_ZdlPvm
_ZnwmRKSt9nothrow_t
__android_log_print
__cxa_pure_virtual
__errno_location
__stack_chk_fail
__stack_chk_guard
__system_property_get
atoi
fclose
fopen
fwrite
gettimeofday
localtime_r
memcpy
memset
snprintf
strtol
time
tzset
TXT

sources=$(sed -n '/srcs: \[/,/\]/s/^ *"\(.*\.cpp\)",$/\1/p' Android.bp)
flags=$(sed -n '/flags: \[/,/\]/s/^ *"\(-.*\)",$/\1/p' Android.bp)
for source in $sources; do
  clang++-19 --target=aarch64-linux-android26 -std=c++20 -fPIC $flags -I. -Iinclude \
    -nostdinc++ -isystem /usr/lib/llvm-19/include/c++/v1 -isystem $work/include \
    -isystem /usr/include/android -isystem /usr/aarch64-linux-gnu/include \
    -c "$source" -o "$work/$(basename "$source").o"
done

ld.lld-19 -r $work/*.o -o $work/all.o
llvm-nm-19 --undefined-only --just-symbol-name $work/all.o | sort -u >$work/undefined.txt
[ -s $work/undefined.txt ] || { echo "the objects leave nothing undefined, which cannot be" >&2; exit 1; }
export LC_ALL=C
sort -o $work/undefined.txt $work/undefined.txt
sort -o $work/platform.txt $work/platform.txt
comm -23 $work/undefined.txt $work/platform.txt >$work/unknown.txt
if [ -s $work/unknown.txt ]; then
  echo "not supplied by the platform:" >&2
  cat $work/unknown.txt >&2
  exit 1
fi
echo "$(wc -w <<<"$sources") sources compile for Android; undefined: $(wc -l <$work/undefined.txt) symbols, all the platform's"
