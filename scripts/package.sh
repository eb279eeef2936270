#!/bin/sh
# Makes what is handed out of a release, in build/packages:
#
#   tarvik-<version>.tar.xz    the source of the last commit, which builds without git
#   *.deb                      Debian packages: the commands, the library, its development files,
#                              the package for Python
#
#   package.sh                 both
#   package.sh --source        the source archive alone
#   package.sh --deb           the Debian packages alone
#
# Works in a git checkout and in an unpacked source archive, which both give the same bytes.  Options of
# cmake (-DTARVIK_MAKER=...) may follow; they go into the packages.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
. "$root/scripts/lib.sh"
cd "$root"
out=$root/build/packages
version=$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' CMakeLists.txt)

# The time of the release, so that the same source gives the same packages.
source_date() {
  if [ -e .git ]; then
    git log -1 --format=%ct
  else
    stat -c %Y BUILD_ID
  fi
}

# copy_source FOLDER: what git holds of the last commit, or all of an unpacked archive but its builds.
copy_source() {
  if [ -e .git ]; then
    git archive HEAD | tar -x -C "$1"
    git rev-parse --verify HEAD >"$1/BUILD_ID"
    git diff --quiet HEAD ||
      echo 'package: the archive has the last commit, not what was changed since.' >&2
  else
    tar -c --exclude=./build . | tar -x -C "$1"
  fi
}

make_source() {
  name=tarvik-$version
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  mkdir "$scratch/$name"
  copy_source "$scratch/$name"
  LC_ALL=C tar -c --format=ustar --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=root:0 \
    --group=root:0 --mode=u+rw,go+r,go-w -C "$scratch" "$name" | xz -9 -T1 >"$scratch/packed"
  mv "$scratch/packed" "$out/$name.tar.xz"
}

build_deb() {
  configure release "$root/build/deb" -DTARVIK_TESTS=OFF -DTARVIK_SHARED=ON \
    -DCMAKE_INSTALL_PREFIX=/usr -DTARVIK_ZSH_COMPLETION_DIR=share/zsh/vendor-completions \
    -DTARVIK_EXAMPLES_DIR=share/doc/libsdblk-dev/examples "$@" &&
    cmake --build build/deb && cpack --config build/deb/CPackConfig.cmake -B build/deb/pack
}
make_deb() {
  rm -f "$out"/*.deb
  quietly "$root/build/package.log" build_deb "$@"
  mv build/deb/pack/*.deb "$out/"
}

want=package
case ${1-} in
  --source | --deb) want=${1#--}; shift ;;
esac
if [ "$want" = source ]; then "$root/scripts/setup.sh" --source; else "$root/scripts/setup.sh" --package; fi

umask 022
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(source_date)}
export SOURCE_DATE_EPOCH
mkdir -p "$out"
[ "$want" = deb ] || make_source
[ "$want" = source ] || make_deb "$@"
ls "$out"
