#!/bin/sh
# Checks for the programs and packages that the project needs, and installs those that are missing
# where it may: as root, or through sudo without a password.  Elsewhere it prints the one line to type
# and exits with 1.
#
#   setup.sh --build      what building the command takes
#   setup.sh              that, and what its tests take
#   setup.sh --clang      that, and clang with its fuzzer
#   setup.sh --coverage   that, and what measuring coverage takes
#   setup.sh --emulated   that, and compilers and emulators of other processors
#   setup.sh --bench      what building, tests and benchmarks take
#   setup.sh --package    what scripts/package.sh takes
#   setup.sh --source     what scripts/package.sh --source takes
#   setup.sh --ci         all that .ci/run takes
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

# An unpacked source archive brings its build identifier along.
need_git() { [ ! -e "$root/.git" ] || need git has git; }
need_build() {
  need g++ has g++
  need cmake has cmake
  need ninja-build has ninja
  need libcli11-dev found /usr/include/CLI/CLI.hpp /usr/local/include/CLI/CLI.hpp
  need nlohmann-json3-dev found /usr/include/nlohmann/json.hpp /usr/local/include/nlohmann/json.hpp
  need libxml2-dev found /usr/include/libxml2/libxml/tree.h /usr/local/include/libxml2/libxml/tree.h
  need_git
}
need_pybind11() {
  need pybind11-dev found /usr/include/pybind11/pybind11.h /usr/local/include/pybind11/pybind11.h
  need python3-dev has python3-config
}
need_python() {
  need_pybind11
  need mypy has mypy
  need python3-venv has_module ensurepip
  for module in numpy pybind11 pytest hypothesis jsonschema setuptools pip wheel matplotlib pandas \
    distributed; do
    need "python3-$module" has_module "$module"
  done
}
# Debian's packages are for Debian's own interpreter, which need not be the first on PATH.
has_module() {
  /usr/bin/python3 -c "import sys, importlib.util as util; sys.exit(not util.find_spec('$1'))"
}
need_tests() {
  need_build
  need_python
  need libgtest-dev found /usr/include/gtest/gtest.h /usr/local/include/gtest/gtest.h
  need libxml2-utils has xmllint
  need jq has jq
  need sqlite3 has sqlite3
  need parallel has parallel
  need pkg-config has pkg-config
  # For the manual pages and the completions.
  need mandoc has mandoc
  need man-db has man
  need zsh has zsh
}
need_clang() {
  need_tests
  need clang has clang++
  need libclang-rt-dev has_fuzzer
}
# A file of the compiler's own is printed with its whole path.
has_fuzzer() {
  [ -e "$(clang++ --print-file-name="libclang_rt.fuzzer-$(uname -m).a" 2>/dev/null)" ]
}
need_coverage() {
  need_clang
  need llvm has llvm-cov
}
need_emulated() {
  need_tests
  need qemu-user has qemu-s390x
  need g++-s390x-linux-gnu has s390x-linux-gnu-g++
  need g++-aarch64-linux-gnu has aarch64-linux-gnu-g++
}
need_bench() {
  need_tests
  need libbenchmark-dev found /usr/include/benchmark/benchmark.h \
    /usr/local/include/benchmark/benchmark.h
}
need_source() {
  need xz-utils has xz
  need_git
}
need_package() {
  need_build
  need_pybind11
  need_source
  need dpkg-dev has dpkg-shlibdeps
  need file has file
}
need_ci() {
  need_bench
  need_package
  need_coverage
  need clang-format has clang-format
  need clang-tidy has clang-tidy
  need cppcheck has cppcheck
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

case ${1---tests} in
  --build | --tests | --clang | --coverage | --emulated | --bench | --source | --package | --ci)
    "need_$(printf %s "${1---tests}" | tr -d -)"
    ;;
  *)
    sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "$root/scripts/setup.sh" >&2
    exit 2
    ;;
esac
[ -n "$missing" ] || exit 0
# A package that two of them name is installed once.
# shellcheck disable=SC2086 # a list of names
missing=$(printf '%s\n' $missing | sort -u | sed 's/^/ /' | tr -d '\n')
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
