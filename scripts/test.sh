#!/bin/sh
# Builds everything and runs every test.  Failures are shown in full; the last line says how many passed.
#
#   test.sh                      the release, as it is shipped
#   test.sh -R NAME              only tests whose name matches; so for each option of ctest
#   test.sh PRESET [option...]   another preset: debug, asan, clang, coverage, fuzz
#   test.sh --help               this text
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
. "$root/scripts/lib.sh"

usage() { sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "$root/scripts/test.sh"; }

preset=release
case ${1-} in
  -h | --help) usage; exit 0 ;;
  '' | -*) ;;
  *)
    grep -q "\"name\": \"$1\".*\"configurePreset\": \"$1\"" "$root/CMakePresets.json" || {
      echo "test: no preset is called '$1'." >&2
      usage >&2
      exit 2
    }
    preset=$1
    shift
    ;;
esac
case $preset in
  clang | fuzz) "$root/scripts/setup.sh" --clang ;;
  coverage) "$root/scripts/setup.sh" --coverage ;;
  *) "$root/scripts/setup.sh" ;;
esac

cd "$root"
build=$root/build/$preset

# watched TITLE COMMAND...: its output is summed up, and its status kept.
watched() {
  title=$1
  shift
  terminal=0
  [ ! -t 2 ] || terminal=1
  { "$@" 2>&1 && echo 0 >"$build/status" || echo $? >"$build/status"; } |
    awk -v title="$title" -v terminal="$terminal" -v log_file="$build/$title.log" \
      -f "$root/scripts/progress.awk"
  return "$(cat "$build/status")"
}

echo "test: building ($preset)" >&2
quietly "$root/build/configure.log" configure "$preset" "$build"
watched build cmake --build "$build" || {
  cat "$build/build.log" >&2
  echo 'test: the build failed.' >&2
  exit 1
}
echo "test: running the tests ($preset)" >&2
watched tests ctest --preset "$preset" --output-on-failure -j "$(nproc)" "$@"
