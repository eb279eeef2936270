#!/bin/sh
# Runs what a page of documentation shows and compares what it prints with what the page says.
#
#   check_page.sh PAGE...           as a reader who has installed all this
#   check_page.sh --clone PAGE...   as one who starts from a clean clone of the last commit, with nothing
#                                   built or installed but what the page says, step by step
#
# A fenced block "```console" is a session at a shell: a line that starts with "$ " is a command, lines
# with "> " after it carry it on, the rest is what both streams print.  The commands of a block run in
# one shell.  All blocks of a page run in one fresh folder, in order: the clone, or one in which the entries
# of the source tree are linked.  In the expected output
#
#   ...          alone on a line stands for any number of lines, also none
#   [build id]   stands for the 40 digits of the build identifier, before <#>
#   [date]       stands for a date as ctime writes it, before <#>
#
# and blanks at the end of a line do not count.  A block "```cpp name.cpp" (or c, sh, cmake, python, text) is
# written into that folder under its name, for the sessions after it.  A line before a session
#
#   <!-- run if: command -->    runs it only where the command succeeds (a tool that may be missing)
#   <!-- not run: reason -->    never runs it
#
# says so in the test's output.  In a clone FROM_CLONE is set.
#
# Environment, for a reader who has installed it: TARVIK and SDBLK the commands; BUILD_DIR where it was built; CXX, CC,
# COMPILE_FLAGS the compilers with the options that the build needs.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
source_dir=$(CDPATH='' cd -- "$here/../.." && pwd)
unset FROM_CLONE
if [ "$1" = --clone ]; then
  export FROM_CLONE=yes
  shift
else
  : "${TARVIK:?}" "${SDBLK:?}" "${BUILD_DIR:?}"
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM

# A compiler as a reader has it after installing the library under ~/.local.
compiler() {
  cat >"$scratch/bin/$1" <<END
#!/bin/sh
for lib in "$scratch"/home/.local/lib*  "$scratch"/home/.local/lib*/*; do
  ! ls "\$lib"/libsdblk.* >/dev/null 2>&1 || LIBRARY_PATH=\$lib\${LIBRARY_PATH:+:\$LIBRARY_PATH}
done
export LIBRARY_PATH LD_RUN_PATH="\${LIBRARY_PATH-}"
exec $(command -v "$2") "\$@" ${COMPILE_FLAGS-}
END
  chmod +x "$scratch/bin/$1"
}

new_folder() {
  rm -rf "${scratch:?}"/*
  mkdir -p "$scratch/bin" "$scratch/home" "$scratch/blocks"
  if [ -n "${FROM_CLONE-}" ]; then new_clone; else new_installation "$1"; fi
}
new_clone() { git clone -q "$source_dir" "$scratch/tree"; }
new_installation() {
  mkdir "$scratch/tree"
  for entry in "$source_dir"/*; do
    [ "${entry##*/}" = build ] || ln -s "$entry" "$scratch/tree"
  done
  ln -s "$TARVIK" "$scratch/bin/tarvik"
  ln -s "$SDBLK" "$scratch/bin/sdblk"
  compiler c++ "${CXX:-c++}"
  compiler cc "${CC:-cc}"
  # The library is for the pages that use it.
  ! grep -q '[.]local' "$1" || cmake --install "$BUILD_DIR" --prefix "$scratch/home/.local" >/dev/null
}

clean() {
  sed -e 's/[0-9a-f]\{40\}  *<#>$/[build id]  <#>/' \
    -e 's/[A-Z][a-z][a-z] [A-Z][a-z][a-z] [ 0-9][0-9] [0-9:]\{8\} [0-9]\{4\} <#>/[date] <#>/' \
    -e 's/[[:blank:]]*$//' "$1"
}

# run_block FILE: 0 when the session prints what it should.
run_block() {
  awk -f "$here/session.awk" "$1" >"$1.sh"
  # The command releases nothing at its end, which is no leak.
  (cd "$scratch/tree" && env -u ORVALEN HOME="$scratch/home" \
    PATH="$scratch/home/.local/bin:$scratch/bin:$PATH" LC_ALL=C TZ=UTC0 ASAN_OPTIONS=detect_leaks=0 sh "$1.sh") >"$1.raw" 2>&1 </dev/null || :
  clean "$1.raw" >"$1.actual"
  sed 's/[[:blank:]]*$//' "$1" >"$1.expected"
  awk -f "$here/matches.awk" "$1.expected" "$1.actual" >"$1.fault" && return 0
  cat "$1.fault"
  diff -u "$1.expected" "$1.actual" || :
  return 1
}

check_page() {
  page=$1
  new_folder "$page"
  awk -v folder="$scratch" -f "$here/blocks.awk" "$page"
  run=0
  for block in "$scratch"/blocks/*.session; do
    [ -e "$block" ] || break
    line=$(sed 1q "$block.line")
    if [ -e "$block.not_run" ]; then
      echo "$page:$line: not run: $(cat "$block.not_run")"
    elif [ -e "$block.run_if" ] && ! (cd "$scratch/tree" && sh "$block.run_if") >/dev/null 2>&1; then
      echo "$page:$line: not run here, because this fails: $(cat "$block.run_if")"
    elif run_block "$block"; then
      run=$((run + 1))
    else
      echo "$page:$line: the output differs from the page."
      failed=1
    fi
  done
  echo "$page: $run sessions run."
  [ "$run" -gt 0 ] || failed=1
}

failed=0
for page in "$@"; do check_page "$page"; done
exit "$failed"
