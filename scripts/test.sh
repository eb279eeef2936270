#!/bin/sh
# Builds everything and runs every test.  Ends with ctest's summary.
#
#   test.sh                    the release, as it is shipped
#   test.sh preset [option...] another preset (debug, asan, clang), and options for ctest (-R name)
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
preset=${1:-release}
[ $# -eq 0 ] || shift

"$root/scripts/setup.sh"

cd "$root"
mkdir -p build
log=build/test-$preset.log
echo "test: building ($preset); build chatter goes to $log" >&2
{ cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1 || {
  cat "$log" >&2
  echo 'test: the build failed.' >&2
  exit 1
}
exec ctest --preset "$preset" -j "$(nproc)" "$@"
