#!/bin/sh
# Times tarvik and sdblk beside their yardsticks: bench.sh [rounds]
#
# The volumes (7.8 GiB with the long ones and the many small ones) are made in build/bench/volumes and kept for the next run.
set -eu
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
. "$root/scripts/lib.sh"
rounds=${1:-9}
build=$root/build/bench
volumes=$build/volumes

"$root/scripts/setup.sh" --bench
configure bench "$build" >&2
cmake --build "$build" --target tarvik sdblk_command benchmarks >&2
mkdir -p "$volumes"

# make NAME ARGUMENTS...: one volume, unless it is there already.
make() {
  name=$volumes/$1.seed
  shift
  [ -s "$name" ] && return
  "$build/bench/make_volumes" "$@" "$name.part"
  mv "$name.part" "$name"
}
make A records 512 256
make B records 4096 256
make C metadata 64
make C16 metadata 1024
make E varied 64
make D continuous 512 256
make A4 records 512 1024
make A16 records 512 4096
ln -sf A.seed "$volumes/A1.seed"
head -c 4096 "$volumes/A.seed" >"$volumes/small.seed"

# files NAME NUMBER BYTES: a folder of so many files, cut from A, unless it is there already.
files() {
  folder=$volumes/$1
  [ -d "$folder" ] && return
  rm -rf "$folder.part"
  mkdir "$folder.part"
  head -c "$(($2 * $3))" "$volumes/A.seed" | (cd "$folder.part" && split -a 5 -b "$3")
  mv "$folder.part" "$folder"
}
files forty 40 6291456
files small 4000 20480
files many 100000 512

peer=-
[ -x "$build/bench/mseed_headers" ] && peer=$build/bench/mseed_headers
"$build/bench/compare" "$build/cmd/tarvik" "$build/bench/yardstick" "$peer" "$volumes" "$rounds"
msi=$(command -v msi || echo -)
echo
"$build/bench/compare_sdblk" "$build/sdblk/sdblk" "$build/cmd/tarvik" "$build/bench/yardstick" "$msi" \
  "$volumes" "$rounds"
rm -f "$volumes/output" "$volumes"/*.listing "$volumes"/*.json
