# Compares the expected lines (first file) with the actual ones (second file), where "..." alone on a
# line stands for any number of lines.  Names the first line that cannot be matched.

FNR == NR { expected[++wanted] = $0; next }
{ actual[++got] = $0 }

END {
  # reach[j]: the first j actual lines can be matched by the expected lines so far.
  reach[0] = 1
  for (i = 1; i <= wanted; ++i) {
    some = 0
    if (expected[i] == "...") {
      for (j = 0; j <= got; ++j) { some = some || reach[j]; next_reach[j] = some }
    } else {
      next_reach[0] = 0
      for (j = 1; j <= got; ++j) {
        next_reach[j] = reach[j - 1] && actual[j] == expected[i]
        some = some || next_reach[j]
      }
    }
    if (!some) { print "not printed where it should be: " expected[i]; exit 1 }
    for (j = 0; j <= got; ++j) reach[j] = next_reach[j]
  }
  if (!reach[got]) { print "more is printed than the page shows"; exit 1 }
}
