#!/usr/bin/env bash
# Measures `tarn bin`: where its time goes on one 50-megapixel frame, and how long it takes for 100 of
# them beside a plain copy of the same files. Needs the host build, python3 and 15 GB in the folder.
#
#   measure_tool.sh [folder]    build/measure when none is given; what it writes there is deleted
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly tarn=$PWD/build/host/tarn folder=${1:-build/measure}
readonly how=(-f qc10 -s 8160x6120 --cell 2) frames=100 rounds=5 rounds_of_one=15

[[ -x $tarn ]] || { echo "measure_tool: $tarn is not built: ./run build" >&2; exit 1; }
mkdir -p "$folder"
work=$(mktemp -d "$folder/tarn-XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work"/{in,copy,out}

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# milliseconds COMMAND...
milliseconds() {
  local begin end
  begin=$(date +%s%N)
  "$@"
  end=$(date +%s%N)
  echo $(((end - begin) / 1000000))
}

head -c $((8160 / 4 * 5 * 6120)) /dev/urandom >"$work/in/frame_000.raw"

echo "load before: $(cut -d' ' -f1-3 /proc/loadavg), $(nproc) cores"
echo
echo "one frame of 50 megapixels ($(stat -c %s "$work/in/frame_000.raw") bytes), --threads 1, milliseconds, medians of $rounds_of_one:"
for ((i = 0; i < rounds_of_one; ++i)); do
  "$tarn" bin "$work/in/frame_000.raw" -o "$work/out/one.raw" --threads 1 --json "${how[@]}"
done | python3 -c '
import json, statistics, sys
text, decoder, reports = sys.stdin.read(), json.JSONDecoder(), []
while text.strip():
  report, end = decoder.raw_decode(text.lstrip())
  reports.append(report)
  text = text.lstrip()[end:]
median = lambda value: statistics.median(value(r) for r in reports)
files = median(lambda r: r["milliseconds_reading"] + r["milliseconds_writing"])
rest = median(lambda r: r["milliseconds_elapsed"] - r["milliseconds_reading"] - r["milliseconds_writing"])
reading, writing = (median(lambda r: r["milliseconds_" + key]) for key in ("reading", "writing"))
library = median(lambda r: r["milliseconds"])
print(f"  reading and writing the files  {files:7.2f}  (reading {reading:.2f}, writing {writing:.2f})")
print(f"  the library and the tool       {rest:7.2f}  (the library {library:.2f})")
print(f"  ratio                          {rest / files:7.2f}  (bar: below 1)")
'

for ((i = 1; i < frames; ++i)); do
  cp --reflink=never "$work/in/frame_000.raw" "$work/in/frame_$(printf %03d "$i").raw"
done
cat "$work"/in/*.raw >/dev/null
sync

echo
echo "$frames such frames in one call beside cp --reflink=never of them, warm cache, milliseconds:"
for ((i = 0; i < rounds; ++i)); do
  copied=$(milliseconds cp --reflink=never "$work"/in/*.raw "$work/copy")
  rm "$work"/copy/*.raw
  sync
  binned=$(milliseconds "$tarn" bin "$work"/in/*.raw -q -o "$work/out/%s.raw" "${how[@]}")
  rm "$work"/out/*.raw
  sync
  echo "  cp $copied, tarn bin $binned" >&2
  echo "$copied $binned"
done >"$work/times"
copied=$(cut -d' ' -f1 "$work/times" | median)
binned=$(cut -d' ' -f2 "$work/times" | median)
echo "  medians: cp $copied, tarn bin $binned; ratio $(awk "BEGIN { printf \"%.2f\", $binned / $copied }") (bar: 1.3)"
echo "load after: $(cut -d' ' -f1-3 /proc/loadavg)"
