# Sums up what ninja or ctest says: how far it is, the failures in full, and at the end of tests how
# many passed.
#
#   title     build or tests           terminal   1 where standard error is one
#   log_file  gets every line as it is

# On a terminal a line that is written over; elsewhere a line for each tenth of the way.
function progress(done, all, what) {
  if (terminal) {
    printf "\r%s %d of %d %s\033[K", title, done, all, failed ? "(" failed " failed)" : "" >"/dev/stderr"
  } else if (int(10 * done / all) > tenths) {
    tenths = int(10 * done / all)
    printf "%s: %d of %d\n", title, done, all >"/dev/stderr"
  }
}
function clear_progress() { if (terminal) printf "\r\033[K" >"/dev/stderr" }

{ print >log_file }

title == "build" {
  if (match($0, /^\[[0-9]+\/[0-9]+\]/)) {
    split(substr($0, 2, RLENGTH - 2), way, "/")
    progress(way[1], way[2])
  }
  next
}

/^ *Start +[0-9]+: / { showing = 0; next }
/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: / {
  split($1, way, "/")
  showing = 0
  if (/ Passed +[0-9.]+ sec$/) ++passed
  else if (/\*\*\*Skipped/) ++skipped
  else { ++failed; showing = 1; clear_progress() }
  if (showing) print
  progress(way[1], way[2])
  next
}
/^[0-9]+% tests passed, / { summary = 1; showing = 0 }
showing { print; next }
# What comes before the first test: a wrong option, a filter that matches nothing.
!passed && !failed && !skipped && NF && !/^Test project / { print }

END {
  clear_progress()
  if (title == "tests" && passed + failed + skipped > 0)
    printf "%d passed, %d failed%s\n", passed, failed, skipped ? ", " skipped " skipped" : ""
}
