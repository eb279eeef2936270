#!/bin/sh
# The manual pages: clean for mandoc -T lint, whose every word counts, laid out well on a terminal of 80
# columns, and with examples that are true.
#
#   man_test.sh lint PAGE...
#   man_test.sh layout PAGE...
#   man_test.sh examples PAGE COMMAND VOLUME
#   man_test.sh names PAGE LIST                every public name of the list stands in the page
#   man_test.sh synopsis PAGE SOURCES          what the page declares is what the headers declare (CC)
#
# Ends with 77, the tests' "skipped", where mandoc or man-db is not there.
set -eu

# A page that refers to the other one is right where neither is installed.
lint() {
  command -v mandoc >/dev/null || exit 77
  faults=$(mandoc -T lint "$@" 2>&1 |
    grep -Ev 'not found: Xr (tarvik 1|sdblk [13]|jq 1|pkg-config 1)$|outdated mandoc\.db' || true)
  [ -z "$faults" ] || {
    echo "$faults"
    exit 1
  }
}

# Neither of the two programs that show pages writes beyond the edge, or breaks a table: the rest of a cell
# stands alone then, far to the right.
layout() {
  command -v mandoc >/dev/null && man --version 2>/dev/null | grep -q '^man 2' || exit 77
  export LC_ALL=C MANWIDTH=80 MAN_KEEP_FORMATTING='' PAGER=cat MANPAGER=cat
  for page in "$@"; do
    mandoc -T ascii -O width=80 "$page" | col -b | well_laid_out mandoc "$page"
    man -l "$page" | col -b | well_laid_out man-db "$page"
  done
}
well_laid_out() {
  awk -v by="$1: $2" 'length($0) > 80 || /^ {40}/ && !/^ *[A-Z]+\([13]\)/ { print by ": " $0; bad = 1 }
    END { if (NR < 50) { print by ": no page"; bad = 1 } exit bad }'
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

# A word of prose is no name: those are marked.
names() {
  missing=$(while IFS= read -r name; do
    grep -Eq "^\.(Fn|Fo|Va) $name( |\$)" "$1" || printf ' %s' "$name"
  done <"$2")
  [ -z "$missing" ] || {
    echo "$1 lacks:$missing"
    exit 1
  }
}

# The synopsis as mandoc shows it is a piece of C, but for the headers for C++; a compiler takes a
# function that is declared twice only where both are of one type.
synopsis() {
  command -v mandoc >/dev/null || exit 77
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  mandoc -T ascii -O width=80 "$1" | col -b |
    sed -n '/^SYNOPSIS/,/^DESCRIPTION/{/^[A-Z]/d;/getv[.]h/d;/[.]hpp/d;p}' >"$scratch/synopsis.c"
  [ "$(grep -c ');' "$scratch/synopsis.c")" -gt 40 ]
  "${CC:-cc}" -std=c11 -Wall -Wextra -pedantic -Werror -fsyntax-only -I "$2" "$scratch/synopsis.c"
}

case $1 in
  lint | layout | examples | names | synopsis) "$@" ;;
  *) exit 2 ;;
esac
