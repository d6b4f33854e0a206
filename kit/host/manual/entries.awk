# Reads what --help prints. For each entry of a list, such as the options,
# prints "entry<TAB>list<TAB>name<TAB>description", for other lines
# "text<TAB>section<TAB>line"; a heading begins a list or section.

function indent(line) {
  return match(line, /[^ ]/) ? RSTART - 1 : 0
}

function flush() {
  if (name != "") printf "entry\t%s\t%s\t%s\n", section, name, description
  name = description = ""
}

function begin_entry(line, next_line) {
  flush()
  line = substr(line, indent(line) + 1)
  # Some releases of the parser align long names behind short ones.
  if (line ~ /^-., +--/) sub(/, +/, ",", line)
  if (match(line, /  +/)) {
    name = substr(line, 1, RSTART - 1)
    description = substr(line, RSTART + RLENGTH)
  } else if (indent(next_line) >= 20 || length(line) < 29) {
    name = line
  } else {
    # A name that fills its column leaves one blank.
    name = substr(line, 1, 27)
    description = substr(line, 29)
  }
}

{ lines[NR] = $0 }

END {
  section = "Description"
  for (i = 1; i <= NR; ++i) {
    line = lines[i]
    is_list = section ~ /^(Positionals|Options|Subcommands)$/
    if (line ~ /^Usage: /) {
      printf "text\tUsage\t%s\n", substr(line, 8)
      section = "Usage"
    } else if (line ~ /^[A-Z][a-z ]*:$/) {
      flush()
      section = substr(line, 1, length(line) - 1)
    } else if (is_list && indent(line) >= 20) {
      sub(/^ +/, "", line)
      description = description (description == "" ? "" : " ") line
    } else if (is_list && indent(line) > 0) {
      begin_entry(line, lines[i + 1])
    } else if (line != "" || section !~ /^(Usage|Positionals|Options|Subcommands)$/) {
      flush()
      if (is_list) section = "Notes"
      printf "text\t%s\t%s\n", section, line
    }
  }
  flush()
}
