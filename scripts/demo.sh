#!/usr/bin/env bash
# A photograph's raw through the library: multi-cell frames of all three patterns in both families
# are made of it, binned, held against the photograph's own sums, and developed.
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

# One pattern in one layout: make, bin, check, develop.
show() {
    local pattern=$1 cell=$2 layout=$3 size colours name said check plain
    name=$out/$pattern-$layout
    said=$("$build/tarn" synth "$raw" -o "$name.raw" -f "$layout" --cell "$cell" 2>&1)
    size=$(sed -E 's/.* frame, ([0-9]+x[0-9]+) .*/\1/' <<<"$said")
    colours=$(sed -E 's/.* at pitch [0-9]+, ([RGB]{4}), .*/\1/' <<<"$said")
    # The four colours of a binned block come from one place of the photograph: interpolating them
    # as if they lay apart would show as a grid.
    said=$("$build/tarn" bin "$name.raw" -o "$name.png" -f "$layout" -s "$size" --cell "$cell" \
        --gain "$gain" --cfa "$colours" --half 2>&1)

    plain=$out/plain-${layout:2}.pgm
    [[ -s $plain ]] || "$build/tarn" synth "$raw" -q -o "$plain" -f "$layout" --cell 1
    "$build/tarn" synth "$raw" -q -o "$out/frame.pgm" -f "$layout" --cell "$cell"
    "$build/tarn" bin "$name.raw" -q -o "$out/binned.pgm" -f "$layout" -s "$size" \
        --cell "$cell" --gain "$gain" --cfa "$colours"
    check=$("$build/check_binned" "$plain" "$out"/{frame,binned}.pgm "$cell" "$gain" \
        "${layout:0:2}") || fail "$pattern $layout: $check"
    check="equals the photograph's sums"
    rm "$out"/{frame,binned}.pgm
    rm "$name.raw"
    printf '%-9s %s  %9s  %9s  %s  %s\n' "$pattern" "$layout" "$size" \
        "$(sed -E 's/.*: ([0-9.]+ ms)$/\1/' <<<"$said")" "$name.png" "$check"
}

[[ -x $build/tarn ]] || fail "$build/tarn is not built: ./run build"
mkdir -p "$out"
rm -f "$out"/*.pgm  # of a run that broke off
[[ -s $raw ]] || fetch

echo "IMG_5952.CR2, a camera's raw, as frames of multi-cell sensors; binned, gain $gain, developed."
echo "Its samples are permuted inside each block of 2x2 cells: none is invented, all are real."
echo
printf '%-9s %s    %-9s  %9s  %s\n' pattern as frame binned picture
for layout in qc10 vx10; do
    show tetra 2 "$layout"
    show nona 3 "$layout"
    show hexadeca 4 "$layout"
done
show tetra 2 qc12
show tetra 2 vx12
rm -f "$out"/*.pgm
