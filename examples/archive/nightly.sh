#!/bin/sh
# Brings archive.db of the current folder up to date with the volumes in some folders; the first run
# makes it:
#
#   nightly.sh FOLDER...
#
# Only what was added or changed since the last run is read.  sdblk, sqlite3 and jq must be on PATH.
set -eu
here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)

# Files that are damaged or cannot be read are told in the lines, and are no reason to stop.
read_volumes() {
  sdblk "$@" || [ $? -ne 2 ]
}

[ -e archive.db ] || sqlite3 archive.db <"$here/schema.sql"
rm -f volumes.json stations.json segments.json
sqlite3 archive.db "SELECT json_object('kind', 'volume', 'file', file, 'bytes', bytes,
                                       'modified', modified) FROM volumes" >known.json
read_volumes volumes -j 0 --known known.json -o volumes.json "$@"
jq -j 'select(.kind == "volume") | .file + "\u0000"' volumes.json >changed
read_volumes stations -j 0 -0 --files-from changed -o stations.json
read_volumes segments -j 0 -0 --files-from changed -o segments.json
sqlite3 archive.db <"$here/load.sql"
