# The catalogue, as print_catalogue writes it, in Markdown: a section for each blockette, then one for
# each group of fields.

function code(text) { return text == "-" ? "" : "`" text "`" }

function value(kind, format, counted_by, group, refers_to) {
  if (kind == -1) return refers_to == "-" ? "integer" : "integer, code of a `" refers_to "`"
  if (kind == -2) return "integer, defines this code"
  if (kind == -3) return format ~ /TIME$/ ? "time" : "real"
  if (kind == -4) return "text"
  if (kind == -6) return code(counted_by) " reals"
  if (kind == -7) return code(counted_by) " texts"
  if (kind == -8) return code(counted_by) " times " code(group)
  if (kind == -9) return code(counted_by) " codes of a `" refers_to "`"
  return "kind " kind
}

function fields_of(array) {
  print "\n| key | type | width | format | value | title |\n|---|---|---|---|---|---|"
  printf "%s", rows[array]
}

/^#/ { next }
$1 == "blockette" { order[++count] = $7; heading[$7] = "### " $3 ": " $4 "\n\nRecords: " $5 "."
                    if ($8 != "-") heading[$7] = heading[$7] " " $8; next }
$1 == "group" { order[++count] = $2; heading[$2] = "### Group " $2; next }
$1 == "field" {
  gsub(/\|/, "\\|")
  rows[$2] = rows[$2] "| " code($4) " | " ($5 == "-" ? "" : $5) " | " ($6 == "-" ? "" : $6) " | " \
             code($7) " | " value($8, $7, $9, $10, $11) " | " $12 " |\n"
}

END {
  for (i = 1; i <= count; ++i) { print "\n" heading[order[i]]; fields_of(order[i]) }
  print ""
}
