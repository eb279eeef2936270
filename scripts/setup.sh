#!/bin/sh
# Checks for the programs and packages that the project needs, and installs those that are missing
# where it may: as root, or through sudo without a password.  Elsewhere it prints the one line to type
# and exits with 1.
#
#   setup.sh --build     what building the command takes
#   setup.sh             that, and what its tests take
#   setup.sh --bench     that, and what the benchmarks take
#   setup.sh --package   what building the command and scripts/package.sh take
#   setup.sh --ci        all that .ci/run takes
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
missing=''

# need <package> <test...>: the package is missing unless the test succeeds.
need() {
  package=$1
  shift
  "$@" >/dev/null 2>&1 || missing="$missing $package"
}
has() { command -v "$1"; }
installed() { [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }
found() {
  for file in "$@"; do
    [ -e "$file" ] && return 0
  done
  return 1
}

need_build() {
  need g++ has g++
  need cmake has cmake
  need ninja-build has ninja
  # An unpacked source archive brings its build identifier along.
  [ ! -e "$root/.git" ] || need git has git
}
need_tests() {
  need libgtest-dev found /usr/include/gtest/gtest.h /usr/local/include/gtest/gtest.h
  # For the manual pages and the completions.
  need mandoc has mandoc
  need zsh has zsh
}
need_bench() {
  need libbenchmark-dev installed libbenchmark-dev
}
need_package() {
  need dpkg-dev has dpkg-shlibdeps
  need file has file
  need xz-utils has xz
}
need_ci() {
  need clang has clang++
  need clang-format has clang-format
  need clang-tidy has clang-tidy
  need cppcheck has cppcheck
  need libclang-rt-14-dev installed libclang-rt-14-dev
  need llvm has llvm-cov
  need pkg-config has pkg-config
  need valgrind has valgrind
  need lintian has lintian
}

# What apt-get says is shown only when it fails.
install_missing() {
  log=$(mktemp)
  trap 'rm -f "$log"' EXIT
  # shellcheck disable=SC2086,SC2016 # a list of package names; the inner shell expands its own "$@"
  "$@" sh -c 'export DEBIAN_FRONTEND=noninteractive
    apt-get -qq update && apt-get -qq install -y --no-install-recommends "$@"' sh $missing \
    </dev/null >"$log" 2>&1 || {
    cat "$log" >&2
    echo 'setup: apt-get failed.' >&2
    exit 1
  }
}

case ${1-} in
  --build) need_build ;;
  '') need_build; need_tests ;;
  --bench) need_build; need_tests; need_bench ;;
  --package) need_build; need_package ;;
  --ci) need_build; need_tests; need_bench; need_package; need_ci ;;
  *) echo "usage: setup.sh [--build | --bench | --package | --ci]" >&2; exit 2 ;;
esac
[ -n "$missing" ] || exit 0

echo "setup: missing:$missing" >&2
install="apt-get install -y --no-install-recommends$missing"
if ! has apt-get >/dev/null; then
  echo 'setup: this is no Debian system; please install what these Debian packages hold.' >&2
  exit 1
elif [ "$(id -u)" -eq 0 ]; then
  echo 'setup: installing it, which can take minutes.' >&2
  install_missing env
elif has sudo >/dev/null && sudo -n true 2>/dev/null; then
  echo 'setup: installing it through sudo, which can take minutes.' >&2
  install_missing sudo
elif has sudo >/dev/null; then
  printf 'setup: please type:\n  sudo apt-get update && sudo %s\n' "$install" >&2
  exit 1
else
  printf 'setup: please type:\n  su - -c "apt-get update && %s"\n' "$install" >&2
  exit 1
fi
