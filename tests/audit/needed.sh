#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# needed.sh LIBRARY [android]: the library has a soname and needs the C library
# alone (on Android liblog, too, and Java's side libjnigraphics); above all no C++ run-time library, which its
# callers may not have. Nor does it look for its own functions and tables by
# name, where the application's could be found.
set -euo pipefail
soname='liborumlox\.so(\.[0-9]+)?'
system='(libc|libm|libpthread|ld-linux[a-z0-9_-]*)\.so(\.[0-9]+)?'
if [[ ${2:-} == android ]]; then
  soname='liborumlox\.so'
  system='(libc|libm|libdl|liblog)\.so'
  if [[ $1 == *_jni.so ]]; then
    soname='liborumlox_jni\.so'
    system='(libc|libm|libdl|liblog|libjnigraphics)\.so'
  fi
fi
dynamic=$("$READELF" -d -W "$1")

if ! grep -Eq "\(SONAME\).*\[$soname\]" <<<"$dynamic"; then
  echo "no soname, or the wrong one" >&2
  exit 1
fi
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
if [[ -z $needed ]]; then
  echo "nothing needed: not what readelf prints for this library" >&2
  exit 1
fi
others=$(grep -Ev "^$system\$" <<<"$needed" || true)
if [[ -n $others ]]; then
  printf 'needed as well: %s\n' "$others" >&2
  exit 1
fi

# Offset, info, type, value, name: a symbol with a value is the library's.
relocations=$("$READELF" -r -W "$1" | grep ' R_')
own=$(awk '$4 !~ /^0*$/ && NF > 4 && $5 != "+" { print $3, $5 }' <<<"$relocations")
if [[ $relocations != *" memcpy"* || -n $own ]]; then
  printf 'its own names are looked up, or no relocations found: %s\n' "$own" >&2
  exit 1
fi
