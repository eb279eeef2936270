#!/bin/sh
# Runs the fuzz targets: clang's libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer.
#
#   fuzz.sh                    all targets, 60 seconds each
#   fuzz.sh target [seconds]   one of volume, control, data, scan; or all
#
# New inputs go to build/fuzz-corpus/<target> and serve the next run.  The input of a finding is
# written to build/fuzz-findings; the target run on it alone shows the finding again.
set -eu
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
. "$root/scripts/lib.sh"
chosen=${1:-all}
seconds=${2:-60}
case $chosen in
  all) targets='volume control data scan' ;;
  volume | control | data | scan) targets=$chosen ;;
  *)
    echo 'usage: fuzz.sh [volume|control|data|scan|all] [seconds]' >&2
    exit 1
    ;;
esac
"$root/scripts/setup.sh" --clang
cd "$root"
mkdir -p build/fuzz-findings
build_targets() {
  configure fuzz "$root/build/fuzz"
  cmake --build build/fuzz --target fuzzers
}
quietly "$root/build/fuzz-build.log" build_targets

# The longest input that makes sense for a target, bytes.
longest() {
  case $1 in
    volume) echo 16384 ;;
    control) echo 10000 ;;
    data) echo 4096 ;;
    scan) echo 512 ;;
  esac
}

for target in $targets; do
  corpus=build/fuzz-corpus/$target
  mkdir -p "$corpus"
  echo "fuzz: $target, $seconds s" >&2
  "build/fuzz/fuzz/fuzz_$target" -dict=fuzz/seed.dict -max_total_time="$seconds" -timeout=30 \
    -max_len="$(longest "$target")" -print_final_stats=1 -print_funcs=0 -verbosity=0 \
    -artifact_prefix="build/fuzz-findings/$target-" "$corpus" "fuzz/corpus/fuzz_$target"
done
