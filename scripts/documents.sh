#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Checks that what the documents link to or name in code marks is there: links
# from where they stand, file names as the end of some tracked file's path; that
# their pieces of C compile; and that no file by hand is longer than 500 lines.
set -eu

cd "$(dirname "$0")/.."
failed=$(mktemp)
pieces=$(mktemp -d)
trap 'rm -rf "$failed" "$pieces"' EXIT
git ls-files '*.md' | while read -r page; do
  grep -o '](\([^)#:]*\))' "$page" | sed 's/](\(.*\))/\1/' |
    while read -r link; do
      [ -e "$(dirname "$page")/$link" ] || echo "$page: no $link"
    done
  grep -oE '`[A-Za-z0-9_]*[a-z][A-Za-z0-9_/]+\.(cpp|h|c|py|sh|cmake|txt|md|svg)`' "$page" |
    tr -d '`' | sort -u | while read -r name; do
      git ls-files | grep -qE "(^|/)$name\$" || echo "$page: no $name"
    done
done >"$failed"
git ls-files 'README.md' 'docs/*.md' | while read -r page; do
  awk -v to="$pieces/$(echo "$page" | tr / _)" '
    /^```/ { on = /^```c$/; piece = to "." ++n ".c"; next }
    on { print >piece }' "$page"
done
for piece in "$pieces"/*.c; do
  cc -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -Iinclude \
    "$piece" 2>&1 | sed "s|^$pieces/||"
done >>"$failed"
git ls-files '*.cpp' '*.h' '*.c' '*.py' '*.sh' ':!src/hdr/curves.cpp' |
  xargs wc -l | awk '$1 > 500 && $2 != "total" { print $2 ": " $1 " lines" }' \
    >>"$failed"
[ ! -s "$failed" ] || {
  cat "$failed" >&2
  exit 1
}
