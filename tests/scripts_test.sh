#!/bin/sh
# What the scripts share and what they print.
#
#   scripts_test.sh
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
scripts=$root/scripts
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

fails() {
  echo "$1"
  failed=1
}

# A build folder as cmake leaves it, in a checkout whose path has a blank.
new_checkout() {
  mkdir -p "$1/build/release"
  : >"$1/build/release/build.ninja"
  printf '%s\n' "CMAKE_CACHEFILE_DIR:INTERNAL=$1/build/release" "CMAKE_HOME_DIRECTORY:INTERNAL=$1" \
    >"$1/build/release/CMakeCache.txt"
}
is_configured() (
  root=$1
  . "$scripts/lib.sh"
  configured_here "$1/build/release"
)
test_moved_and_copied_checkouts() {
  new_checkout "$scratch/a clone"
  is_configured "$scratch/a clone" || fails 'a build folder in its place is configured anew'
  cp -R "$scratch/a clone" "$scratch/a copy"
  ! is_configured "$scratch/a copy" || fails 'a copied build folder is taken for one of its own'
  mv "$scratch/a clone" "$scratch/moved"
  ! is_configured "$scratch/moved" || fails 'a moved build folder is taken for one of its own'
  mkdir "$scratch/fresh"
  ! is_configured "$scratch/fresh" || fails 'a checkout that was never built is taken for a built one'
}

test_summary_of_tests() {
  cat >"$scratch/said" <<'END'
Test project /build
      Start  1: Scan.One
      Start  2: Scan.Two
1/4 Test  #2: Scan.Two ..........................***Failed    0.02 sec
the reason
in two lines
      Start  3: man.lint
2/4 Test  #1: Scan.One ..........................   Passed    0.01 sec
3/4 Test  #3: man.lint ..........................***Skipped   0.00 sec
4/4 Test  #4: Scan.Slow .........................***Timeout 120.01 sec

33% tests passed, 2 tests failed out of 4

The following tests FAILED:
	  2 - Scan.Two (Failed)
END
  awk -v title=tests -v terminal=0 -v log_file=/dev/null -f "$scripts/progress.awk" \
    <"$scratch/said" >"$scratch/summary" 2>/dev/null
  cat >"$scratch/want" <<'END'
1/4 Test  #2: Scan.Two ..........................***Failed    0.02 sec
the reason
in two lines
4/4 Test  #4: Scan.Slow .........................***Timeout 120.01 sec

1 passed, 2 failed, 1 skipped
END
  diff "$scratch/want" "$scratch/summary" || failed=1
}

test_arguments_of_test_sh() {
  sh "$scripts/test.sh" --help | grep -q '^  test.sh --help' || fails 'test.sh --help is no help'
  ! sh "$scripts/test.sh" nosuch >/dev/null 2>"$scratch/said" || fails 'test.sh takes any preset'
  grep -q "no preset is called 'nosuch'" "$scratch/said" || fails 'test.sh does not name the preset'
}

# The archive of a tree that has no git is the same, and needs neither git nor a compiler.
test_source_archive_of_an_archive() {
  mkdir -p "$scratch/bin" "$scratch/tree"
  for program in sh sed tar xz mktemp rm mkdir mv ls stat id dirname cat tr sort basename; do
    ln -s "$(command -v $program)" "$scratch/bin/$program"
  done
  cp -R "$scripts" "$scratch/tree"
  echo 'project(x
  VERSION 1.2.3' >"$scratch/tree/CMakeLists.txt"
  echo 0123456789abcdef0123456789abcdef01234567 >"$scratch/tree/BUILD_ID"
  touch -d @1700000000 "$scratch/tree/BUILD_ID"
  (cd "$scratch/tree" && PATH=$scratch/bin scripts/package.sh --source) >/dev/null ||
    fails 'no source archive without git'
  mkdir "$scratch/again"
  tar -xf "$scratch/tree/build/packages/tarvik-1.2.3.tar.xz" -C "$scratch/again"
  (cd "$scratch/again/tarvik-1.2.3" && PATH=$scratch/bin scripts/package.sh --source) >/dev/null
  cmp "$scratch/tree/build/packages/tarvik-1.2.3.tar.xz" \
    "$scratch/again/tarvik-1.2.3/build/packages/tarvik-1.2.3.tar.xz" || failed=1
}

test_moved_and_copied_checkouts
test_summary_of_tests
test_arguments_of_test_sh
test_source_archive_of_an_archive
exit "$failed"
