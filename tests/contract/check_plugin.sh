#!/bin/bash
# check_plugin.sh PLUGIN EXPORTED_SYMBOLS [SOURCE_ROOT]
#
# Compares a Release plug-in's SONAME, needed libraries and exported symbols
# with what devices expect, and makes sure that its assertions are alive and
# that it does not name the machine it was built on (SOURCE_ROOT).
set -uo pipefail
export LC_ALL=C

if [ $# -lt 2 ] || [ ! -r "$1" ] || [ ! -r "$2" ]; then
  sed -n '2s/^# /usage: /p' "$0" >&2
  exit 2
fi
plugin=$1
exported_symbols=$2
source_root=${3-}
failed=0

# expect WHAT EXPECTED ACTUAL
expect() {
  local difference
  if difference=$(diff --label expected --label "$plugin" -U 1000 \
      <(echo "$2") <(echo "$3") | sed 's/^/    /'); then
    echo "ok: $1"
  else
    failed=1
    echo "FAILED: $1"
    echo "$difference"
  fi
}

# dynamic TAG: values of a tag of the dynamic section, sorted.
dynamic() { readelf -dW "$plugin" | sed -n "s/.*($1).*\[\(.*\)\]/\1/p" | sort; }

expect "SONAME" "libquellix_ext_ospf_prot_update.so" "$(dynamic SONAME)"

expect "needed libraries" "$(sort <<'END'
libconfd.so
libpthread.so.0
libzqconfd.so
libstdc++.so.6
libm.so.6
libgcc_s.so.1
libc.so.6
END
)" "$(dynamic NEEDED)"

expect "no search path of its own" "" "$(dynamic RUNPATH; dynamic RPATH)"

expect "exported symbols" "$(sort "$exported_symbols")" \
  "$(nm -DC --defined-only "$plugin" | cut -c 20- | sort)"

expect "live assertions" "__assert_fail" \
  "$(nm -D --undefined-only "$plugin" | grep -o '__assert_fail')"

if [ -n "$source_root" ]; then
  expect "no paths of the build machine" "" \
    "$(strings -a "$plugin" | grep -F -- "$source_root/")"
fi

exit $failed
