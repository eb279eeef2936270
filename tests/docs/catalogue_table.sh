#!/bin/sh
# Makes the table of the catalogue in docs/format.md from the code.
#
#   catalogue_table.sh --check PRINT_CATALOGUE PAGE   fails when the page's table is not the code's
#   catalogue_table.sh --write PRINT_CATALOGUE PAGE   puts the code's table into the page
#
# PRINT_CATALOGUE is the program built from tests/tools.  The table stands between two comments.
set -eu

mode=$1 program=$2 page=$3
begin='<!-- catalogue: begin -->'
end='<!-- catalogue: end -->'
here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

if ! grep -qxF "$begin" "$page" || ! grep -qxF "$end" "$page"; then
  echo "$page: the comments that enclose the table are missing." >&2
  exit 1
fi
"$program" >"$scratch/catalogue.tsv"
{
  sed "/^$begin\$/q" "$page"
  awk -F '\t' -f "$here/catalogue_table.awk" "$scratch/catalogue.tsv"
  sed -n "/^$end\$/,\$p" "$page"
} >"$scratch/page"

if [ "$mode" = --write ]; then
  cat "$scratch/page" >"$page"
elif ! diff -u "$page" "$scratch/page"; then
  echo "$page: the table is out of date; see the head of tests/docs/catalogue_table.sh." >&2
  exit 1
fi
