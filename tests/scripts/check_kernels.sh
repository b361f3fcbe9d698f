#!/bin/sh
# No row-kernel object may define a weak symbol: the linker could keep that copy, compiled for an
# instruction set, for the whole program.
# usage: check_kernels.sh nm object...
nm=$1
shift
[ $# -gt 0 ] || { echo "FAILED: no objects"; exit 1; }
status=0
for object; do
  weak=$("$nm" --defined-only "$object" | awk '$2 ~ /^[WVu]$/')
  [ -z "$weak" ] || { echo "FAILED: $object"; echo "$weak"; status=1; }
done
exit $status
