#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# needed.sh LIBRARY: the library has a soname and needs the C library alone;
# above all no C++ run-time library, which its callers may not have.
set -euo pipefail
dynamic=$("$READELF" -d -W "$1")

if ! grep -Eq '\(SONAME\).*\[liborumlox\.so(\.[0-9]+)?\]' <<<"$dynamic"; then
  echo "no soname" >&2
  exit 1
fi
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
if [[ -z $needed ]]; then
  echo "nothing needed: not what readelf prints for this library" >&2
  exit 1
fi
others=$(grep -Ev '^(libc|libm|libpthread|ld-linux[a-z0-9_-]*)\.so(\.[0-9]+)?$' \
  <<<"$needed" || true)
if [[ -n $others ]]; then
  printf 'needed as well: %s\n' "$others" >&2
  exit 1
fi
