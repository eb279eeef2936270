#!/bin/sh
# Builds for other processors, runs the libraries' tests there under emulation, and compares the command's
# listings with those of this machine:
#
#   emulated.sh [--volumes FOLDER] [s390x | aarch64]...
#
# s390x, which keeps the high byte first, and aarch64 unless one is named.  Listings are compared for the
# sample, the inputs of the fuzz targets, and the volumes in FOLDER.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
. "$root/scripts/lib.sh"
native=$root/build/release/cmd/tarvik
more=''
if [ "${1-}" = --volumes ]; then
  more=$(CDPATH='' cd -- "$2" && pwd)
  shift 2
fi
[ $# -gt 0 ] || set -- s390x aarch64

"$root/scripts/setup.sh" --emulated

# build_for PROCESSOR: the command and the tests of both libraries, in build/PROCESSOR.
build_for() {
  folder=$root/build/$1
  set -- -DCMAKE_SYSTEM_NAME=Linux "-DCMAKE_SYSTEM_PROCESSOR=$1" \
    "-DCMAKE_C_COMPILER=$1-linux-gnu-gcc" "-DCMAKE_CXX_COMPILER=$1-linux-gnu-g++" \
    "-DCMAKE_CROSSCOMPILING_EMULATOR=qemu-$1;-L;/usr/$1-linux-gnu"
  cmake -S /usr/src/googletest -B "$folder/gtest" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_GMOCK=OFF \
    "-DCMAKE_INSTALL_PREFIX=$folder/gtest/installed" "$@" &&
    cmake --build "$folder/gtest" --target install &&
    configure release "$folder" "-DCMAKE_PREFIX_PATH=$folder/gtest/installed" "$@" &&
    cmake --build "$folder" --target tarvik tests_support tests_seed
}

# listings COMMAND...: all that it prints of each volume, both streams and the status, but for the
# announcement and its date.
listings() {
  find "$root/samples" "$root/fuzz/corpus" ${more:+"$more"} -type f | LC_ALL=C sort |
    while IFS= read -r volume; do
      for options in '' -v -vv '-sta -v' '-lsize 512 -vv'; do
        echo "= $options ${volume##*/}"
        # shellcheck disable=SC2086 # options
        "$@" $options "$volume" 2>&1 </dev/null | tail -n +6
        # shellcheck disable=SC2086
        { "$@" $options "$volume" 2>/dev/null </dev/null || echo "status $?"; } | tail -n 12
      done
    done
}

build_native() {
  configured_here "$root/build/release" || configure release "$root/build/release" -DTARVIK_TESTS=OFF
  cmake --build "$root/build/release" --target tarvik
}
quietly "$root/build/native.log" build_native
listings "$native" >"$root/build/native.listings"

for processor in "$@"; do
  echo "emulated: building for $processor" >&2
  quietly "$root/build/$processor.log" build_for "$processor"
  emulated="qemu-$processor -L /usr/$processor-linux-gnu"
  echo "emulated: running the tests for $processor" >&2
  for tests in support seed; do
    # Left out: a locale's files are made for this machine, and the emulator has no limit on memory.
    # shellcheck disable=SC2086 # a command line
    $emulated "$root/build/$processor/tests/$tests/tests_$tests" --gtest_brief=1 \
      --gtest_filter=-*.LocaleOfTheProgramChangesNothing:*.FileThatCannotBeMapped* 2>"$root/build/$processor.log" || {
      cat "$root/build/$processor.log" >&2
      exit 1
    }
  done
  echo "emulated: comparing listings for $processor" >&2
  # shellcheck disable=SC2086
  listings $emulated "$root/build/$processor/cmd/tarvik" >"$root/build/$processor.listings"
  cmp "$root/build/native.listings" "$root/build/$processor.listings"
  echo "$processor: $(grep -c '^= ' "$root/build/$processor.listings") listings as on $(uname -m)"
done
