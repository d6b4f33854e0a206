# Completion for fish, of what options.awk prints of all commands.

function quote(text) {
  gsub(/\\/, "\\\\", text)
  gsub(/'/, "\\'", text)
  return "'" text "'"
}

BEGIN {
  FS = "\t"
  print "complete -c ospf-upgrade -n __fish_use_subcommand -f"
}

{
  line = "complete -c ospf-upgrade -n "
  line = line ($1 == "" || $3 == "" ? "__fish_use_subcommand" : "'__fish_seen_subcommand_from " $1 "'")
  if ($3 == "") line = line " -a " $1
  if ($2 != "") line = line " -s " substr($2, 2)
  if ($3 != "") line = line " -l " substr($3, 3)
  if ($4 ~ / /) {
    line = line " -x -a " quote($4)
  } else if ($4 != "" && $4 != "?") {
    line = line " -r"
  }
  print line " -d " quote($5)
}
