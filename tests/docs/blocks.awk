# Cuts a page into its sessions and named files; see check_page.sh.
#
#   awk -v folder=DIR -f blocks.awk PAGE
#
# Writes blocks/NNN.session with .line (where it stands) and, when asked for, .run_if or .not_run, and
# named files into tree/.

function comment(text) { sub(/^<!-- [a-z ]*: /, "", text); sub(/ -->$/, "", text); return text }

function start_session() {
  path = sprintf("%s/blocks/%03d.session", folder, ++sessions)
  print FNR > (path ".line"); close(path ".line")
  if (run_if != "") { print run_if > (path ".run_if"); close(path ".run_if") }
  if (not_run != "") { print not_run > (path ".not_run"); close(path ".not_run") }
  run_if = not_run = ""
  printf "" > path
}

/^<!-- run if: / { run_if = comment($0); next }
/^<!-- not run: / { not_run = comment($0); next }

path == "" && !skipping && /^```console$/ { start_session(); next }
path == "" && !skipping && /^```(c|cpp|sh|cmake|python|text) [A-Za-z0-9._-]+$/ {
  path = folder "/tree/" $2
  printf "" > path
  next
}
path == "" && !skipping && /^```/ { skipping = 1; next }
/^```$/ { if (path != "") close(path); path = ""; skipping = 0; next }
path != "" { print > path }
