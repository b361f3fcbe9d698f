#!/bin/sh
# No row-kernel object may define a weak symbol: the linker could keep that copy, compiled for an
# instruction set, for the whole program.
# usage: check_kernels.sh nm object...
nm=$1
shift
[ $# -gt 0 ] || { echo "FAILED: no objects"; exit 1; }
status=0
for object; do
  symbols=$("$nm" --defined-only "$object") && [ -n "$symbols" ] ||
    { echo "FAILED: $object has no symbols to read"; exit 1; }
  weak=$(echo "$symbols" | awk '$2 ~ /^[WVu]$/')
  [ -z "$weak" ] || { echo "FAILED: $object"; echo "$weak"; status=1; }
done
exit $status
