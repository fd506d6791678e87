#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# exports.sh LIBRARY INCLUDE_DIR SYMBOLS COMPILER...: the library exports the
# functions and tables that the public headers declare, all of them and nothing
# else; and that is what the stored list of a Debian package has, with the version
# that each came with. Names are added to it, none is taken away (docs/abi.md).
set -euo pipefail
library=$1
include=$2
list=$3
shift 3

declared() {
  for header in "$include"/orumlox/*.h; do
    printf '#include "%s"\n' "$header"
  done |
    "$@" -E -P -x c -I "$include" - |
    tr '\n' ' ' | tr ';' '\n' |
    # Of the declarations with default visibility, what stands last before the
    # parameters or the first size is the name.
    sed -n 's/^.*__attribute__ *((visibility("default")))//p' |
    sed -e 's/[([].*//' |
    grep -Eo '\w+ *$' | tr -d ' ' | sort -u
}

exported() {
  "$NM" -D --defined-only -P "$library" | cut -d ' ' -f 1 | sort -u
}

names=$(declared "$@")
symbols=$(exported)
if [[ $(wc -l <<<"$names") -lt 10 ]]; then
  echo "too few declarations found in $include" >&2
  exit 1
fi
if ! diff <(echo "$names") <(echo "$symbols") >&2; then
  echo "left: declared only; right: exported only" >&2
  exit 1
fi
if ! diff <(sed -n 's/^ \(.*\)@Base [0-9.]*$/\1/p' "$list" | sort) \
  <(echo "$symbols") >&2; then
  echo "left: $list only; right: exported only. New names are added to the list." >&2
  exit 1
fi
echo "$(wc -l <<<"$names") names"
