#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints what the Android libraries in the build folders android-ABI consist of,
# as a Markdown table in bytes:
#   ANDROID_NDK_HOME=... scripts/library_size.sh [BUILD...]
# by section, as far as sections are loaded, and code and data by subsystem.
set -eu

cd "$(dirname "$0")/.."
tools=$(echo "${ANDROID_NDK_HOME:?}"/toolchains/llvm/prebuilt/*/bin)
[ $# -gt 0 ] || set -- build/android-armeabi-v7a build/android-arm64-v8a \
  build/android-x86 build/android-x86_64
stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT

rows() { # rows BUILD: lines "size|name"
  "$tools/llvm-strip" -o "$stripped" "$1/liborumlox.so"
  echo "$(wc -c <"$stripped")|stripped file"
  # Name, type, address, offset, size, entry size, flags.
  "$tools/llvm-readelf" -S -W "$stripped" | sed -n 's/^ *\[ *[0-9]*\] //p' |
    while read -r name _ _ _ size _ flags _; do
      case $flags in *A*) ;; *) continue ;; esac
      case $name in
        .text | .rodata | .bss) name="\`$name\`" ;;
        .ARM.ex* | .eh_frame*) name='unwind tables' ;;
        .dyn[s]* | *hash | .gnu.version*) name='symbols, hashes, versions' ;;
        .rel*) name='relocations' ;;
        *) name='tables and the rest' ;;
      esac
      echo "$((0x$size))|$name"
    done
  # Address, address, size, alignment, object:(section).
  sed -n -E 's/^ *[0-9a-f]+ +[0-9a-f]+ +([0-9a-f]+) +[0-9]+ +[^ ]*\.dir\/([^ ]*)\.o:\(\.(text|rodata|data|bss|ARM|eh_frame).*/\1 \2/p' \
    "$1/liborumlox.so.map" |
    while read -r size unit; do
      echo "$((0x$size))|code and data of \`${unit%%/*}\`"
    done
}

for build in "$@"; do
  echo "abi|${build##*/android-}"
  rows "$build"
done | awk -F '|' '
  $1 == "abi" { abi[++n] = $2; next }
  !($2 in seen) { seen[$2] = 1; name[++names] = $2 }
  { sum[$2, n] += $1 }
  END {
    line = "|"; rule = "|---|"
    for (i = 1; i <= n; ++i) { line = line " | " abi[i]; rule = rule "---:|" }
    print line " |"; print rule
    for (k = 1; k <= names; ++k) {
      line = "| " name[k]
      for (i = 1; i <= n; ++i) line = line " | " sum[name[k], i]
      print line " |"
    }
  }'
