#!/bin/sh
# Builds both commands and the library, and runs tarvik.
#
#   demo.sh                            the station summary of the sample volume
#   demo.sh [options of tarvik]        the same with other options
#   demo.sh [options of tarvik] file   a volume of your own
#
# What the build says is shown only when it fails.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
build=$root/build/release
sample=$root/samples/demo.seed
. "$root/scripts/lib.sh"

"$root/scripts/setup.sh" --build

build_command() {
  # The tests are left for scripts/test.sh, which knows what they need.
  configured_here "$build" || configure release "$build" -DTARVIK_TESTS=OFF
  cmake --build "$build" --target tarvik sdblk sdblk_command
}
[ -x "$build/cmd/tarvik" ] || echo 'demo: building the commands; this happens once.' >&2
quietly "$root/build/demo.log" build_command

if [ $# -eq 0 ]; then
  status=0
  "$build/cmd/tarvik" -sta -v "$sample" || status=$?
  {
    echo
    echo 'This was the station summary of samples/demo.seed.  Next, try:'
    echo '  sh scripts/demo.sh -v               one line for each blockette and data record'
    echo '  sh scripts/demo.sh -vv              every field of them'
    echo '  sh scripts/demo.sh -sta -v VOLUME   the summary of a volume of your own'
  } >&2
  exit "$status"
fi

# Options come before the volume; two of them take a value.
names_no_volume() {
  previous='' last=''
  for argument in "$@"; do
    previous=$last
    last=$argument
  done
  case $previous in -types | -lsize) return 0 ;; esac
  case $last in -*) return 0 ;; esac
  return 1
}
if names_no_volume "$@"; then set -- "$@" "$sample"; fi
exec "$build/cmd/tarvik" "$@"
