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

# run_target TARGET: what it says is shown in full when it finds something, else in one line.
run_target() {
  corpus=build/fuzz-corpus/$1 said=build/fuzz-findings/$1.log
  mkdir -p "$corpus"
  "build/fuzz/fuzz/fuzz_$1" -dict=fuzz/seed.dict -max_total_time="$seconds" -timeout=30 \
    -max_len="$(longest "$1")" -print_final_stats=1 -print_funcs=0 -verbosity=0 \
    -artifact_prefix="build/fuzz-findings/$1-" "$corpus" "fuzz/corpus/fuzz_$1" >"$said" 2>&1 || {
    cat "$said" >&2
    echo "fuzz: $1 found something; its input is in build/fuzz-findings." >&2
    return 1
  }
  echo "fuzz: $1, $seconds s: $(sed -n 's/^stat::number_of_executed_units: *//p' "$said") inputs, nothing found"
}

# As many at a time as there are processors.
failed=0 running=''
for target in $targets; do
  run_target "$target" &
  running="$running $!"
  # shellcheck disable=SC2086 # a list
  set -- $running
  [ $# -lt "$(nproc)" ] || {
    wait "$1" || failed=1
    shift
    running=$*
  }
done
for process in $running; do wait "$process" || failed=1; done
exit "$failed"
