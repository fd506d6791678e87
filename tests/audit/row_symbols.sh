#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# row_symbols.sh MANIFEST (lines "SET OBJECT"): an object compiled for an
# instruction set defines its table, lox::SET::..._rows, and no other symbol.
# The linker keeps one copy of a weak function that several objects define:
# that copy could be the one with instructions that the processor lacks.
set -euo pipefail
status=0
objects=0

while read -r set_name object; do
  [[ $set_name == baseline ]] && continue
  objects=$((objects + 1))
  tables=0
  symbols=$("$NM" -g -C --format=bsd "$object" |
    sed -E 's/^[0-9a-f]*[[:space:]]+//')
  # What is left of nm's lines: a letter for the kind, and the name.
  while read -r kind name; do
    case $kind in
      U) ;;
      [wWvVu])
        echo "$object: weak or unique: $name" >&2
        status=1
        ;;
      *)
        if [[ $name =~ ^lox::"$set_name"::[a-z0-9_]*_rows$ ]]; then
          tables=$((tables + 1))
        # The compiler's own helper of position-independent i386 code.
        elif [[ ! $name =~ ^__x86\.get_pc_thunk\.[a-z]+$ ]]; then
          echo "$object: $kind $name" >&2
          status=1
        fi
        ;;
    esac
  done <<<"$symbols"
  if [[ $tables -eq 0 ]]; then
    echo "$object: no table" >&2
    status=1
  fi
done <"$1"

if [[ $objects -eq 0 ]]; then
  echo "no objects in $1" >&2
  status=1
fi
exit $status
