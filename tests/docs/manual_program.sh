#!/bin/sh
# Compiles the example program of a manual page, runs it on the sample volume, and compares what it
# prints with what the page says.
#
#   manual_program.sh PAGE
#
# The program is the display that starts with "#include", its output the last display of the page.
# Environment: SOURCE_DIR; LIBRARY the static library; CXX, CC, COMPILE_FLAGS as in check_page.sh.
set -eu

page=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# As the reader sees it.
awk -v folder="$scratch" '
  /^\.Bd -literal/ { display = 1; text = ""; next }
  /^\.Ed/ {
    display = 0
    if (text ~ /^#include/) printf "%s", text > (folder "/program.c")
    last = text
    next
  }
  display { gsub(/\\e/, "\\"); gsub(/\\&/, ""); gsub(/\\-/, "-"); text = text $0 "\n" }
  END { printf "%s", last > (folder "/expected") }
' "$page"

# shellcheck disable=SC2086 # lists of options
${CC:-cc} -std=c11 -Wall -Wextra -pedantic -I "$SOURCE_DIR" ${COMPILE_FLAGS-} \
  -c "$scratch/program.c" -o "$scratch/program.o"
# shellcheck disable=SC2086
${CXX:-c++} "$scratch/program.o" "$LIBRARY" ${COMPILE_FLAGS-} -o "$scratch/program"
"$scratch/program" "$SOURCE_DIR/samples/demo.seed" >"$scratch/actual"
diff -u "$scratch/expected" "$scratch/actual"
