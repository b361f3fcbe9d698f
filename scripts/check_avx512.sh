#!/usr/bin/env bash
# Runs the machine code of the AVX-512 level: Bochs emulates a processor that has it, which boots a
# Debian kernel whose first and only process is the test of levels. Then one that has only some of what
# the level needs: there the library must not take it. Says nothing about speed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/build.sh
source scripts/packages.sh
work=$PWD/build/avx512
isolinux=/usr/lib/ISOLINUX/isolinux.bin
loader=/usr/lib/syslinux/modules/bios/ldlinux.c32

skip() { echo "SKIPPED avx512 machine code: $*" && exit 77; }

[ "$(uname -m)" = x86_64 ] || skip "another architecture"
for file in /usr/bin/bochs /usr/share/bochs/BIOS-bochs-latest /usr/bin/xorriso /usr/bin/cpio $isolinux $loader; do
  [ -e "$file" ] || skip "no $file (packages: $packages_avx512)"
done

# The kernel is taken out of its package: nothing changes on this machine.
fetch_kernel() {
  local package
  package=$(apt-cache depends linux-image-cloud-amd64 | awk '/Depends: linux-image/ { print $2 }')
  [ -n "$package" ] || return 1
  (cd "$work" && apt-get download -qq "$package") >"$work/kernel.log" 2>&1 || return 1
  dpkg-deb --fsys-tarfile "$work/$package"_*.deb | tar -xO "./boot/vmlinuz-${package#linux-image-}" >"$work/kernel"
}
mkdir -p "$work/cd"
[ -s "$work/kernel" ] || fetch_kernel || skip "no kernel package to be had from Debian"

TARGETS=level_test configure_and_build host -DTARN_TESTS=ON
cp "$work/kernel" "$work/cd/kernel"
cp $isolinux $loader "$work/cd"
cp build/host/level_test "$work/test"
(cd "$work" && echo test | cpio --quiet -o -H newc | gzip -1) >"$work/cd/files"

# boot MODEL FILTER [VARIABLE=VALUE...]: the tests by that processor; what they print is in console.txt.
boot() {
  local model=$1 filter=$2 seconds=900
  shift 2
  # Of the kernel's own use of the processor: this Bochs lays out the state of protection keys and of
  # compacted saving in its own way, and traps in what the other names stand for. What the kernel does
  # not know becomes the environment of its first process.
  cat >"$work/cd/isolinux.cfg" <<TXT
default test
label test
  kernel /kernel
  append initrd=/files rdinit=/test console=ttyS0 quiet panic=-1 mitigations=off clearcpuid=pku,xsavec,xsaves,smap,smep,umip,fsgsbase,erms,fsrm,invpcid,rdpid,rdtscp nopcid no5lvl $* -- --gtest_color=no --gtest_filter=$filter
TXT
  (cd "$work/cd" && xorriso -as mkisofs -quiet -o "$work/boot.iso" -b isolinux.bin -c boot.cat \
    -no-emul-boot -boot-load-size 4 -boot-info-table .) 2>"$work/xorriso.log"

  cat >"$work/bochsrc" <<TXT
cpu: model=$model, ips=50000000
megs: 512
romimage: file=/usr/share/bochs/BIOS-bochs-latest
vgaromimage: file=/usr/share/bochs/VGABIOS-lgpl-latest
ata0-master: type=cdrom, path=$work/boot.iso, status=inserted
boot: cdrom
com1: enabled=1, mode=file, dev=$work/console.txt
log: $work/bochs.log
display_library: rfb, options="timeout=0"
plugin_ctrl: speaker=0
TXT
  echo continue >"$work/commands" # Debian's Bochs starts in its debugger
  : >"$work/console.txt"
  bochs -q -f "$work/bochsrc" -rc "$work/commands" </dev/null >"$work/bochs.out" 2>&1 &
  machine=$!

  # The kernel ends with its first process and says how that ended.
  until grep -q 'exitcode=' "$work/console.txt"; do
    sleep 1
    seconds=$((seconds - 1))
    if [ $seconds -le 0 ] || ! kill -0 $machine 2>/dev/null; then
      tail -n 20 "$work/bochs.out" "$work/console.txt"
      echo "the emulated $model came to no end" >&2
      exit 1
    fi
  done
  kill $machine 2>/dev/null || true
  wait $machine || true
  echo "$model:"
  tr -d '\r' <"$work/console.txt" | grep -aE 'TARN_TEST_SEED|FAILED|Failure|SKIPPED|crash|   OK ' || true
  if ! grep -q 'exitcode=0x00000000' "$work/console.txt"; then
    echo "the tests failed on an emulated $model" >&2
    exit 1
  fi
}
machine=
trap 'kill $machine 2>/dev/null || true' EXIT

boot corei7_icelake_u 'Differential.*:Values.*:Levels.*' TARN_TEST_LEVEL=avx512 \
  TARN_TEST_SEED=${TARN_TEST_SEED:-$RANDOM} TARN_TEST_CASES=4000 TARN_TEST_WIDTHS=2 TARN_TEST_GAINS=4
if grep -q 'SKIPPED avx512' "$work/console.txt"; then
  echo "the emulated processor does not offer the AVX-512 level" >&2
  exit 1
fi
# VBMI without VNNI: the engines end here by an illegal instruction if they take the level. What so short
# a run prints is cut off; how it ended is not.
boot corei3_cnl 'Figures.*:Levels.*'
echo "the AVX-512 level's machine code is exact on an emulated processor, and not offered to one without VNNI"
