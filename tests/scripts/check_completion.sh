#!/usr/bin/env bash
# Loads the completion for bash and asks it as bash does.
#   check_completion.sh COMPLETION_FILE PROGRAM
set -uo pipefail
# shellcheck source=/dev/null
source "$1"
program=$2
status=0

# What it offers for the last of the words on a line.
offers() {
  COMP_WORDS=("$program" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _tarn "$program" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
  echo "${COMPREPLY[*]-}"
}

# expect "WHAT IT OFFERS" WORD...
expect() {
  local wanted=$1 got
  shift
  got=$(offers "$@")
  [[ $got == "$wanted" ]] && return
  echo "FAILED: tarn $*: offers \"$got\", not \"$wanted\""
  status=1
}

expect "convert" con
expect "--version" --v
expect "SRGGB10P SRGGB10_CSI2P" bin -f SRGGB10
expect "pgAA pgCC" convert dump.raw --format pg
expect "BayerRG10p BayerRG12p" bin --format = BayerRG
expect "GRBG GBRG" bin --cfa G
expect "qc vx" bin --family ""
expect "all" bin --frame ""
expect "tight" convert --pitch t
expect "png" bin --to pn
expect "1 2 3 4" inspect --cell ""
expect "patches" synth --chart pa
expect "--out --out-pitch --out-bits" bin dump.raw --out
expect "" bin ""               # a file
expect "" bin dump.raw -o ""   # a file
expect "" fold ""              # no such verb
expect "" bin "--no such"

# Every verb, and with each its options: as --help lists them.
verbs=$(offers "")
[[ $verbs == "$("$program" --help | sed -n '/^Verbs:/,/^$/s/^  \([a-z]*\) .*/\1/p' | tr '\n' ' ' | sed 's/ $//')" ]] ||
  { echo "FAILED: the verbs are $verbs"; status=1; }
for verb in $verbs; do
  listed=$("$program" "$verb" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE '\-\-[a-z-]+' | sort | tr '\n' ' ')
  offered=$(offers "$verb" -- | tr ' ' '\n' | sort | tr '\n' ' ')
  [[ $offered == "$listed" ]] || { echo "FAILED: $verb: $offered; help: $listed"; status=1; }
done

# Where it offers nothing, bash completes the names of files.
[[ $(complete -p tarn) == *"-o default"* ]] || { echo "FAILED: no names of files"; status=1; }
exit $status
