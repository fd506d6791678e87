#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints what the Android libraries of the build folders consist of, in bytes:
#   scripts/library_size.sh BUILD...
# by section, as far as sections are loaded, and the code and data of each
# subsystem. Needs ANDROID_NDK_HOME.
set -eu

readelf=$(echo "${ANDROID_NDK_HOME:?}"/toolchains/llvm/prebuilt/*/bin/llvm-readelf)
strip=$(echo "$ANDROID_NDK_HOME"/toolchains/llvm/prebuilt/*/bin/llvm-strip)
stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
for build in "$@"; do
  "$strip" -o "$stripped" "$build/liborumlox.so"
  echo "$build: stripped $(wc -c <"$stripped")"
  # Name, type, address, offset, size, entry size, flags.
  "$readelf" -S -W "$stripped" | sed -n 's/^ *\[ *[0-9]*\] //p' |
    while read -r name type _ _ size _ flags _; do
      case $type:$flags in
        NULL:* | *:[0-9]*) ;;
        *A*) printf '  %-20s %8d\n' "$name" "0x$size" ;;
      esac
    done
  # Address, address, size, alignment, object:(section).
  sed -n -E 's/^ *[0-9a-f]+ +[0-9a-f]+ +([0-9a-f]+) +[0-9]+ +[^ ]*\.dir\/([^ ]*)\.o:\(\.(text|rodata|data|bss|ARM|eh_frame).*/0x\1 \2/p' \
    "$build/liborumlox.so.map" |
    while read -r size unit; do
      case $unit in
        rsz/*rot* | rsz/*turn*) unit=rot/ ;;
      esac
      echo "$((size)) ${unit%%/*}"
    done |
    awk '{ sum[$2] += $1; all += $1 }
      END { for (s in sum) printf "  %-20s %8d\n", s, sum[s]
            if (!all) exit 1 }' | sort
done
