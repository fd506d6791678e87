#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# hashes.sh LIBRARY TABLE: the table of hashes has a line for each function
# that the library exports, and no others.
set -euo pipefail
functions=$("$NM" -D --defined-only -P "$1" | sed -n 's/ T .*//p' | sort -u)
if ! diff <(echo "$functions") <(cut -d ' ' -f 2 "$2" | sort -u) >&2; then
  echo "left: exported only; right: in the table only" >&2
  exit 1
fi
echo "$(wc -l <<<"$functions") functions"
