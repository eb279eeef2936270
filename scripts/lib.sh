# What the scripts share.  They source it with $root set to the project's folder.
# shellcheck shell=sh disable=SC2154 # root

# quietly LOG COMMAND...: what the command says goes to the log, and is shown when it fails.
quietly() {
  log=$1
  shift
  mkdir -p "$(dirname "$log")"
  "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    echo "$(basename "$0" .sh): the build failed." >&2
    exit 1
  }
  # These are worth a look even so.
  sed -n '/^CMake Warning/,/^$/p' "$log" >&2
}

# Whether a build folder was configured, where it is and for the sources beside it.  One that came
# along with a checkout that was moved or copied still names the old place.
configured_here() {
  cache=$1/CMakeCache.txt
  [ -f "$1/build.ninja" ] && [ -f "$cache" ] || return 1
  same_folder "$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")" "$root" &&
    same_folder "$(sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' "$cache")" "$1"
}
same_folder() { [ -d "$1" ] && [ "$(cd "$1" && pwd -P)" = "$(cd "$2" && pwd -P)" ]; }

# configure PRESET FOLDER [option of cmake]...: anew where the folder is not configured here.
configure() {
  preset=$1 folder=$2
  shift 2
  configured_here "$folder" || set -- --fresh "$@"
  (cd "$root" && cmake --preset "$preset" -B "$folder" "$@")
}
