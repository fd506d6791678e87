#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# android_library.sh LIBRARY ABI [stripped]: the library is what a device of the
# ABI loads, with pages of 4 or 16 KiB. READELF is the NDK's llvm-readelf if it
# is not set.
set -euo pipefail
library=$1
abi=$2
export READELF=${READELF:-$(echo "${ANDROID_NDK_HOME:?}"/toolchains/llvm/prebuilt/*/bin/llvm-readelf)}
here=$(dirname "${BASH_SOURCE[0]}")

refuse() {
  echo "$library: $*" >&2
  exit 1
}

"$here/needed.sh" "$library" android

case $abi in
  armeabi-v7a) machine='ELF32 ARM' ;;
  arm64-v8a) machine='ELF64 AArch64' ;;
  x86) machine='ELF32 Intel 80386' ;;
  x86_64) machine='ELF64 Advanced Micro Devices X86-64' ;;
  *) refuse "no ABI: $abi" ;;
esac
header=$("$READELF" -h "$library" |
  sed -n -E 's/^ *(Class|Machine): *//p' | paste -s -d ' ')
[[ $header == "$machine" ]] || refuse "$header, not $machine"

# Columns: type, offset, address, physical address, size in the file, size in
# memory, flags, alignment.
segments=$("$READELF" -l -W "$library" | sed -n 's/^ *\(LOAD\|GNU_RELRO\|GNU_STACK\) /\1 /p' |
  sed -e 's/R E/RE/')
[[ $(grep -c ^LOAD <<<"$segments") -ge 2 ]] || refuse "no segments found"
while read -r type offset address _ _ size flags align; do
  case $type in
    LOAD)
      ((align == 16384 && (address - offset) % 16384 == 0)) ||
        refuse "LOAD at $address: alignment $align"
      [[ $flags != *W*E* ]] || refuse "LOAD at $address: $flags"
      ;;
    # The dynamic linker protects whole pages.
    GNU_RELRO) (((address + size) % 16384 == 0)) ||
      refuse "GNU_RELRO ends within a page: $address + $size" ;;
    GNU_STACK) [[ $flags != *E* ]] || refuse "executable stack" ;;
  esac
done <<<"$segments"

if "$READELF" -d -W "$library" | grep TEXTREL >&2; then
  refuse "text relocations"
fi
"$READELF" -n "$library" | grep -Eq 'Build ID: [0-9a-f]{40}$' ||
  refuse "no build-id"
if [[ ${3:-} == stripped ]] &&
  "$READELF" -S -W "$library" | grep -E ' \.(symtab|debug_)' >&2; then
  refuse "not stripped"
fi
