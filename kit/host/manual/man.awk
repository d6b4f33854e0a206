# Makes a manual page of what entries.awk prints. Variables: page, its name;
# version; see_also, names of other pages.

function roff(text) {
  gsub(/\\/, "\\e", text)
  gsub(/-/, "\\-", text)
  if (text ~ /^[.']/) text = "\\&" text
  return text
}

BEGIN {
  FS = "\t"
  headings["Exit codes"] = "EXIT STATUS"
  headings["Positionals"] = "ARGUMENTS"
  printf ".TH %s 1 \"\" \"ospf-upgrade %s\" \"User Commands\"\n", toupper(page), version
}

$1 == "text" && $2 == "Description" {
  about = about (about == "" ? "" : " ") $3
  next
}

$1 == "text" && $2 == "Usage" {
  summary = about
  sub(/[:.].*/, "", summary)
  summary = tolower(substr(summary, 1, 1)) substr(summary, 2)
  printf ".SH NAME\n%s \\- %s\n", page, roff(summary)
  printf ".SH SYNOPSIS\n.B %s\n", roff($3)
  printf ".SH DESCRIPTION\n%s\n", roff(about)
  next
}

$2 != section {
  if (is_verbatim) print ".fi"
  section = $2
  print ".SH " (section in headings ? headings[section] : toupper(section))
  is_verbatim = $1 == "text"
  if (is_verbatim) print ".nf"
}

$1 == "entry" { printf ".TP\n.B %s\n%s\n", roff($3), roff($4) }
$1 == "text" { print roff($3) }

END {
  if (is_verbatim) print ".fi"
  if (see_also != "") {
    print ".SH SEE ALSO"
    count = split(see_also, names, " ")
    for (i = 1; i <= count; ++i) {
      printf ".BR %s (1)%s\n", roff(names[i]), i < count ? "," : ""
    }
  }
}
