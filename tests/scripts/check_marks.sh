#!/bin/sh
# Every object of ours is marked for branch target identification and return address signing. The
# library as a whole is not where the system's start files lack the mark, as Debian's do.
# usage: check_marks.sh readelf object...
readelf=$1
shift
[ $# -gt 0 ] || { echo "FAILED: no objects"; exit 1; }
status=0
for object; do
  "$readelf" -nW "$object" | grep -qi 'aarch64 feature: BTI, PAC' || { echo "FAILED: $object"; status=1; }
done
exit $status
