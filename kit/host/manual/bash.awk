# Completion for bash, of what options.awk prints of all commands.

BEGIN {
  FS = "\t"
  print "_ospf_upgrade() {"
  print "  local word=${COMP_WORDS[COMP_CWORD]}"
  print "  local before=${COMP_WORDS[COMP_CWORD - 1]} words="
  print "  if [ \"$COMP_CWORD\" -gt 1 ]; then"
  print "    case \"${COMP_WORDS[1]} $before\" in"
}

$3 == "" {
  of_program = of_program " " $1
  next
}

{
  names = $2 == "" ? $3 : $2 " " $3
  if ($1 == "") {
    of_program = of_program " " names
    next
  }
  if (!($1 in options)) commands[++count] = $1
  options[$1] = options[$1] " " names
  if ($4 == "" || $4 == "?") next
  pattern = "\"" $1 " " $3 "\""
  if ($2 != "") pattern = pattern " | \"" $1 " " $2 "\""
  # Nothing is the name of a file.
  printf "      %s)\n", pattern
  if ($4 ~ / /) {
    printf "        mapfile -t COMPREPLY < <(compgen -W \"%s\" -- \"$word\")\n", $4
  } else {
    print "        COMPREPLY=()"
  }
  print "        return ;;"
}

END {
  print "    esac"
  print "    case ${COMP_WORDS[1]} in"
  for (i = 1; i <= count; ++i) {
    printf "      %s) words=\"%s\" ;;\n", commands[i], substr(options[commands[i]], 2)
  }
  print "    esac"
  print "    [[ $word == -* ]] || words="
  print "  else"
  printf "    words=\"%s\"\n", substr(of_program, 2)
  print "  fi"
  print "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")"
  print "}"
  print "complete -o default -F _ospf_upgrade ospf-upgrade"
}
