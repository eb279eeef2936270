#!/bin/sh
# Fails when a page links to a file that is not there.  Links to the web are not followed.
#
#   check_links.sh PAGE...
set -eu

# links_of PAGE: one a line.
links_of() { grep -o ']([^)]*)' "$1" | sed 's/^](//; s/)$//; s/#.*//' | sort -u; }

is_there() {
  case $2 in
    '' | http:* | https:*) return 0 ;;
  esac
  [ -e "$(dirname "$1")/$2" ]
}

failed=0
for page in "$@"; do
  for link in $(links_of "$page"); do
    is_there "$page" "$link" || {
      echo "$page: no such file: $link"
      failed=1
    }
  done
done
exit "$failed"
