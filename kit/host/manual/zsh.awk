# Completion for zsh, of what options.awk prints of all commands.

function quote(text) {
  gsub(/'/, "'\\''", text)
  return "'" text "'"
}

function escape(text) {
  gsub(/[\[\]:\\]/, "\\\\&", text)
  return text
}

# What _arguments takes for the option.
function argument() {
  value = ""
  if ($4 ~ / /) {
    value = ":value:(" $4 ")"
  } else if ($4 == "?") {
    value = "::value:_files"
  } else if ($4 != "") {
    value = ":" $4 ":" ($4 == "DIR" ? "_files -/" : $4 == "FILE" ? "_files" : "")
  }
  names = $4 == "?" ? $3 "=-" : $3
  if ($2 == "") return quote(names "[" escape($5) "]" value)
  return quote("(" $2 " " $3 ")" $2 "[" escape($5) "]" value) " " quote("(" $2 " " $3 ")" names "[" escape($5) "]" value)
}

BEGIN {
  FS = "\t"
  print "#compdef ospf-upgrade"
  print "local context state state_descr line"
  print "typeset -A opt_args"
}

$3 == "" {
  subcommands = subcommands " " quote(escape($1) ":" $5)
  next
}

{
  if (!($1 in arguments) && $1 != "") commands[++count] = $1
  arguments[$1] = arguments[$1] " \\\n    " argument()
}

END {
  printf "_arguments -C%s \\\n    '1: :->command' '*:: :->arguments'\n", arguments[""]
  print "case $state in"
  printf "  command)\n    local -a commands=(%s)\n", substr(subcommands, 2)
  print "    _describe command commands ;;"
  print "  arguments)\n    case $words[1] in"
  for (i = 1; i <= count; ++i) {
    printf "  %s)\n    _arguments%s \\\n    '*:CONFIG:_files' ;;\n", commands[i], arguments[commands[i]]
  }
  print "    esac ;;\nesac"
}
