# Makes a shell script of a session: prints each command as the session shows it, then runs it with $?
# as the command before left it.

function quoted(text) { gsub(/'/, "'\\''", text); return "'" text "'" }
function finish() {
  if (command == "") return
  print "printf '%s\\n' " quoted(shown)
  print "(exit $status)"
  print command
  print "status=$?"
  command = ""
}

BEGIN { print "status=0" }
/^\$ / { finish(); shown = $0; command = substr($0, 3); carried_on = 1; next }
/^> / && carried_on { shown = shown "\n" $0; command = command "\n" substr($0, 3); next }
{ carried_on = 0 }
END { finish() }
