#!/bin/sh
# The manual pages: clean for mandoc -T lint, whose every word counts, and with examples that are true.
#
#   man_test.sh lint PAGE...
#   man_test.sh examples PAGE COMMAND VOLUME
#
# Ends with 77, the tests' "skipped", where mandoc is not there.
set -eu

# A page that refers to the other one is right where neither is installed.
lint() {
  command -v mandoc >/dev/null || exit 77
  faults=$(mandoc -T lint "$@" 2>&1 |
    grep -Ev 'not found: Xr (tarvik 1|sdblk 3|pkg-config 1)$|outdated mandoc\.db' || true)
  [ -z "$faults" ] || {
    echo "$faults"
    exit 1
  }
}

# Runs the command lines in the page's examples beside a copy of the volume.
examples() {
  page=$1
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  cp "$3" "$scratch/"
  sed -n '/^\.Sh EXAMPLES/,/^\.Sh SEE/{/^\.Bd/,/^\.Ed/{/^\./!p}}' "$page" | sed 's/\\e/\\/g' >"$scratch/want"
  PATH=$(dirname "$2"):$PATH
  cd "$scratch"
  sed -n 's/^\$ //p' want >lines
  while IFS= read -r line; do
    printf '$ %s\n' "$line"
    sh -c "$line" </dev/null
  done <lines | sed 's/ *$//' >got
  [ -s lines ]
  diff want got
}

case $1 in
  lint | examples) "$@" ;;
  *) exit 2 ;;
esac
