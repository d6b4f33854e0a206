#!/bin/bash
# Checks the data models of every release with yanglint: the modules parse, the
# good samples, the examples and a generated configuration are valid, each bad
# sample gets the message that its first line expects, and the tables that the
# upgrade moves as value arrays only ever grow at the end.
set -u

root=$(cd "$(dirname "$0")/../.." && pwd) || exit 2
releases="before intermediate after"
work=$(mktemp -d) || exit 2
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

if ! command -v yanglint >"$work/yanglint"; then
  echo "check.sh: yanglint is not installed" >&2
  exit 2
fi

pass() { passed=$((passed + 1)); }

fail() {
  failed=$((failed + 1))
  echo "FAILED: $1"
  if [ -n "${2-}" ]; then sed 's/^/    /' "$2"; fi
}

# Has a folder for each release.
models=$root/yang

# lint RELEASE ARGUMENT...: yanglint with the modules of a release loaded.
lint() {
  local release=$1
  shift
  yanglint -D -p "$models/$release" "$@" 2>&1
}

# validate RELEASE FILE: succeeds when FILE is a valid configuration. The
# wrapper that confd_load writes is not for yanglint.
wrapper='<config xmlns="http://tail-f.com/ns/config/1.0">'
validate() {
  local file=$2
  if grep -qxF -- "$wrapper" "$file"; then
    grep -vxF -e "$wrapper" -e '</config>' "$file" >"$work/unwrapped.xml"
    file=$work/unwrapped.xml
  fi
  lint "$1" -t config "$models/$1"/*.yang "$file" >"$work/messages"
}

expect_valid() {
  if validate "$1" "$2"; then
    pass
  else
    fail "${3:-${2#"$root"/}} is not valid in $1" "$work/messages"
  fi
}

expect_invalid() {
  local expected
  expected=$(sed -n '1s/^<!-- expect: \(.*\) -->$/\1/p' "$2")
  if [ -z "$expected" ]; then
    fail "${2#"$root"/} does not say on its first line what it expects"
  elif validate "$1" "$2"; then
    fail "${2#"$root"/} is valid in $1, expected: $expected"
  elif ! grep -qF -- "$expected" "$work/messages"; then
    fail "${2#"$root"/} gets another message than: $expected" "$work/messages"
  else
    pass
  fi
}

# releases_of FILE: the releases that a sample is for: the one that its name
# begins with, or all of them for "every".
releases_of() {
  local name
  name=$(basename "$1")
  if [ "${name%%-*}" = every ]; then
    echo "$releases"
  else
    echo "${name%%-*}"
  fi
}

# nodes RELEASE PATH: names of the nodes of a list entry, in the model's order.
nodes() {
  lint "$1" -f tree -P "$2" "$root/yang/$1"/*.yang |
    awk -v entry="${2##*/}*" '
      inside && $1 ~ /^\+--/ { sub(/[?*!]$/, "", $2); print $2 }
      $2 == entry { inside = 1 }'
}

# expect_growth WIDTH PATH: an entry fits in WIDTH values in every release and
# begins with the nodes that it had in the release before.
expect_growth() {
  local width=$1 path=$2 release previous="" count problem=""
  for release in $releases; do
    nodes "$release" "$path" >"$work/$release"
    count=$(wc -l <"$work/$release")
    if [ "$count" -eq 0 ]; then
      problem="$release does not have it"
    elif [ "$count" -gt "$width" ]; then
      problem="$release has $count values, more than $width"
    elif [ -n "$previous" ] &&
        ! head -n "$(wc -l <"$work/$previous")" "$work/$release" |
        cmp -s - "$work/$previous"; then
      problem="$release does not begin with the nodes of $previous"
    fi
    previous=$release
  done
  if [ -z "$problem" ]; then pass; else fail "$path: $problem"; fi
}

for release in $releases; do
  if lint "$release" "$root/yang/$release"/*.yang >"$work/messages" &&
      [ ! -s "$work/messages" ]; then
    pass
  else
    fail "yang/$release does not parse without messages" "$work/messages"
  fi
done

for sample in "$root"/tests/yang/good/*.xml; do
  for release in $(releases_of "$sample"); do
    expect_valid "$release" "$sample"
  done
done
for sample in "$root"/tests/yang/bad/*.xml; do
  for release in $(releases_of "$sample"); do
    expect_invalid "$release" "$sample"
  done
done
# Those of another release than before are in a folder that is called after it.
for release in $releases; do
  folder=$root/examples/$release
  [ "$release" != before ] || folder=$root/examples
  for example in "$folder"/*.xml; do
    [ ! -e "$example" ] || expect_valid "$release" "$example"
  done
done

# The upgrade in another domain has models of its own.
models=$root/examples/vlan-upgrade/yang
expect_valid before "$root/examples/vlan-upgrade/before.xml"
expect_valid after "$root/examples/vlan-upgrade/expected.xml"
models=$root/yang

for options in "--interfaces 0" "--interfaces 1 --secondary 0" \
    "--interfaces 2000 --secondary 3 --process-id 4294967295 --seed 9"; do
  # The options are words on purpose.
  # shellcheck disable=SC2086
  if "$root/scripts/generate-config" $options -o "$work/generated.xml"; then
    expect_valid before "$work/generated.xml" "generate-config $options"
  else
    fail "generate-config $options"
  fi
done

mib=/VX-OSPF-MIB:VX-OSPF-MIB
expect_growth 80 $mib/ospfPmEntTable/ospfPmEntEntry
expect_growth 10 $mib/ospfPmMjTable/ospfPmMjEntry
expect_growth 20 $mib/ospfNmEntTable/ospfNmEntEntry
expect_growth 40 $mib/ospfPmAreaTable/ospfPmAreaEntry
expect_growth 10 $mib/ospfPmStubAreaTable/ospfPmStubAreaEntry
expect_growth 10 $mib/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry
expect_growth 100 $mib/ospfPmIfTable/ospfPmIfEntry
expect_growth 10 $mib/ospfPmIfMetricTable/ospfPmIfMetricEntry
expect_growth 10 /quellix-internal:internal/ospf-area-global
expect_growth 10 /quellix-internal:internal/ospf-interface-l3

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
