#!/usr/bin/env bash
# A camera's raw on the whole road: multi-cell frames of all three patterns in both families are made
# of it, recognised, binned, held to the plain reference and to the photograph's own sums, developed.
#
# Needs the host build. Fetches one Debian package, which stays in build/demo.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly build=build/host out=build/demo
readonly raw=$out/IMG_5952.CR2
readonly gain=2.5  # the brightest sample of this photograph lies at a third of the range

fail() {
  echo "demo: $*" >&2
  exit 1
}

# The photograph is the example of Debian's package rawtran-doc (GPL-3+). dpkg-deb unpacks what
# slim systems leave out when they install a package.
fetch() {
  local deb
  folder=$(mktemp -d)
  trap 'rm -rf "$folder"' EXIT
  chmod 755 "$folder"
  # Run by root, apt downloads as its own user, to whom the folder must belong.
  if [[ $EUID == 0 ]] && id _apt >/dev/null 2>&1; then chown _apt "$folder"; fi
  (cd "$folder" && apt-get -qq download rawtran-doc) ||
    fail "apt-get cannot download rawtran-doc: are the package lists there (apt-get update)?"
  deb=$(echo "$folder"/*.deb)
  dpkg-deb -x "$deb" "$folder/x"
  cp "$folder/x/usr/share/doc/rawtran/IMG_5952.CR2" "$raw"
}

tarn() { "$build/tarn" "$@"; }

# What follows a word in what synth and inspect say: "3520x2344 qc10 at pitch 4400, ".
geometry() { sed -nE "s/.*($1) ([0-9]+x[0-9]+) ([a-z0-9]+) at pitch ([0-9]+), .*/\2 \3 \4/p" <<<"$2"; }

# One pattern in one layout: make, guess, bin, check, develop.
show() {
  local pattern=$1 cell=$2 layout=$3 name said made guessed size pitch colours frame time check
  name=$out/$pattern-$layout
  said=$(tarn synth "$raw" -o "$name.raw" -f "$layout" --cell "$cell" 2>&1)
  made=$(geometry "frame," "$said")
  colours=$(sed -E 's/.* at pitch [0-9]+, ([RGB]{4}), .*/\1/' <<<"$said")

  # As somebody who holds the file and knows nothing of it.
  said=$(tarn inspect "$name.raw")
  guessed="$(geometry "it is|it may be" "$said") $(sed -nE 's/^it (is|may be) .*, cell ([1-4]).*/\2/p' <<<"$said")"
  [[ $guessed == "$made $cell" ]] || fail "$name.raw: guessed $guessed, made as $made $cell"
  read -r size _ pitch <<<"$made"
  frame=(-f "$layout" -s "$size" --pitch "$pitch" --cell "$cell")

  said=$(tarn bin "$name.raw" -o "$name.dng" "${frame[@]}" --gain "$gain" --cfa "$colours" 2>&1)
  time=$(sed -nE 's/.*: ([0-9.]+ ms)$/\1/p' <<<"$said")
  # The four colours of a binned block come from one place of the photograph: interpolating them
  # as if they lay apart would show as a grid.
  tarn bin "$name.raw" -q -o "$name.png" "${frame[@]}" --gain "$gain" --cfa "$colours" --half
  tarn verify "$name.raw" -q "${frame[@]}" --gain "$gain"
  check=$(sums "$cell" "$layout" "$name.raw" 2>&1) || fail "$pattern $layout: $check"
  rm "$out"/{frame,binned}.pgm
  rm "$name.raw"
  printf '%-9s %s  %9s  %9s  %s\n' "$pattern" "$layout" "$size" "$time" "$name.png, .dng"
}

# Whether the frame holds the photograph's samples, and the binned one their sums, by a program that
# shares nothing with the library or the tool.
sums() {
  local cell=$1 layout=$2 plain=$out/plain-${2:2}.pgm
  [[ -s $plain ]] || tarn synth "$raw" -q -o "$plain" -f "$layout" --cell 1
  tarn synth "$raw" -q -o "$out/frame.pgm" -f "$layout" --cell "$cell"
  tarn bin "$3" -q -o "$out/binned.pgm" "${frame[@]}" --gain "$gain" &&
    "$build/check_binned" "$plain" "$out"/{frame,binned}.pgm "$cell" "$gain" "${layout:0:2}"
}

[[ -x $build/tarn ]] || fail "$build/tarn is not built: ./run build"
mkdir -p "$out"
rm -f "$out"/*.pgm  # of a run that broke off
[[ -s $raw ]] || fetch

cat <<TXT
IMG_5952.CR2, a camera's raw, as frames of multi-cell sensors: its samples are permuted inside each
block of 2x2 cells, none is invented. Each frame is made (synth), its layout, pitch, size and cell are
guessed from its bytes (inspect), it is binned with gain $gain to a DNG and a picture (bin), the library
is held to the plain reference (verify), and the result to the photograph's own sums.

TXT
printf '%-9s %s    %-9s  %9s  %s\n' pattern as frame binned files
for layout in qc10 vx10; do
  show tetra 2 "$layout"
  show nona 3 "$layout"
  show hexadeca 4 "$layout"
done
show tetra 2 qc12
show tetra 2 vx12
rm -f "$out"/*.pgm
echo
echo "All guesses are right; all results equal the plain reference and the photograph's sums."
