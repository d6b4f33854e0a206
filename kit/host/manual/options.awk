# Of what entries.awk prints of one command, prints what a shell completes:
# "COMMAND<TAB>SHORT<TAB>LONG<TAB>VALUE<TAB>DESCRIPTION" for each option and, of
# the program itself, the same without an option for each subcommand. VALUE is
# empty for none, "?" for one that may be left out, "a b c" for one of these,
# else what it is called in capitals. Variable: command, "" for the program.

BEGIN { FS = "\t" }

$2 == "Subcommands" { printf "%s\t\t\t\t%s\n", $3, $4 }

$2 == "Options" {
  split($3, words, " ")
  value = words[2] ~ /:$/ ? "" : words[2]
  if (words[1] ~ /\[/) value = "?"
  sub(/\[.*/, "", words[1])
  sub(/=.*/, "", value)
  if (value ~ /^[a-z]+(\|[a-z]+)+$/) gsub(/\|/, " ", value)
  short = ""
  long = words[1]
  if (long ~ /^-[^-],/) {
    short = substr(long, 1, 2)
    long = substr(long, 4)
  }
  printf "%s\t%s\t%s\t%s\t%s\n", command, short, long, value, $4
}
