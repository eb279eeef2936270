#!/bin/sh
# Makes what is handed out of a release, in build/packages:
#
#   tarvik-<version>.tar.xz    the source of the last commit, which builds without git
#   *.deb                      Debian packages: the command, the library, its development files
#
#   package.sh                 both
#   package.sh --source        the source archive alone; needs a git checkout
#   package.sh --deb           the Debian packages alone; also from an unpacked source archive
#
# Options of cmake (-DTARVIK_MAKER=...) may follow; they go into the packages.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
cd "$root"
out=$root/build/packages
version=$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' CMakeLists.txt)

make_source() {
  name=tarvik-$version
  id=$(git rev-parse --verify HEAD)
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  echo "$id" >"$scratch/BUILD_ID"
  git archive --prefix="$name/" --add-file="$scratch/BUILD_ID" HEAD >"$scratch/$name.tar"
  xz -9 -T1 "$scratch/$name.tar"
  mv "$scratch/$name.tar.xz" "$out/"
  git diff --quiet HEAD || echo 'package: the archive has the last commit, not what was changed since.' >&2
}

# The time of the release, so that the same source gives the same packages.
source_date() {
  if [ -e .git ]; then
    git log -1 --format=%ct
  else
    stat -c %Y BUILD_ID
  fi
}

make_deb() {
  umask 022
  SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(source_date)}
  export SOURCE_DATE_EPOCH
  log=$root/build/package.log
  rm -f "$out"/*.deb
  {
    cmake --preset release -B build/deb -DTARVIK_TESTS=OFF -DTARVIK_SHARED=ON \
      -DCMAKE_INSTALL_PREFIX=/usr -DTARVIK_ZSH_COMPLETION_DIR=share/zsh/vendor-completions "$@" &&
      cmake --build build/deb && cpack --config build/deb/CPackConfig.cmake -B build/deb/pack
  } >"$log" 2>&1 || {
    cat "$log" >&2
    echo 'package: the build failed.' >&2
    exit 1
  }
  mv build/deb/pack/*.deb "$out/"
}

"$root/scripts/setup.sh" --package

want=both
case ${1-} in
  --source | --deb) want=${1#--}; shift ;;
esac
mkdir -p "$out"
[ "$want" = deb ] || make_source
[ "$want" = source ] || make_deb "$@"
ls "$out"
