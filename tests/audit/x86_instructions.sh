#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# x86_instructions.sh MANIFEST (lines "SET OBJECT"): which instructions the
# objects contain. Baseline and portable ones run on every processor and may use
# none newer than SSE2; those for SSE4.1 none in the encodings that came with
# AVX, those for AVX2 none of AVX-512, and those for that none of VNNI. The
# objects for AVX2, AVX-512 and VNNI show that the search finds them where they
# are.
set -euo pipefail
status=0

# Mnemonics that start with v, wide and mask registers, and the general-purpose
# instructions that came with AVX2.
vex='^v|%[yz]mm|%k[0-7]|^k(mov|and|or|xor|not|test|unpck|shift)'
vex+='|^(andn|bextr|bls(i|r|msk)|bzhi|mulx|pdep|pext|rorx|sarx|shlx|shrx)\b'
# What came with AVX-512: its registers.
wide='%zmm|%[xy]mm(1[6-9]|2[0-9]|3[01])|%k[0-7]'
# VNNI.
dot='^vpdp'
# SSE3 to SSE4.2, and population and zero counts.
newer='^(addsub|hadd|hsub|lddqu|mov(s[hl]|d)dup|pabs|palignr|phadd|phsub)'
newer+='|^(pmaddubsw|pmulhrsw|pshufb|psign|blend|pblend|dpp[ds]|extractps)'
newer+='|^(insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|pcmpgtq|pextr[bdq])'
newer+='|^(phminposuw|pinsr[bdq]|pmax(sb|sd|ud|uw)|pmin(sb|sd|ud|uw))'
newer+='|^(pmov[sz]x|pmuldq|pmulld|ptest|round[ps][sd]|pcmp[ei]str|crc32)'
newer+='|^(popcnt|lzcnt|tzcnt)'

# The instructions of an object that match, without addresses and bytes.
found() {
  "$OBJDUMP" -d --no-show-raw-insn "$2" |
    sed -n 's/^ *[0-9a-f]*:\t//p' | { grep -E "$1" || true; }
}

refuse() {
  local instructions
  instructions=$(found "$1" "$2" | sort | uniq -c | sort -rn | head -n 5)
  if [[ -n $instructions ]]; then
    printf '%s:\n%s\n' "$2" "$instructions" >&2
    status=1
  fi
}

checked=0
vex_lines=0
wide_lines=0
dot_lines=0
while read -r set_name object; do
  case $set_name in
    baseline | portable)
      refuse "$vex|$newer" "$object"
      checked=$((checked + 1))
      ;;
    sse41) refuse "$vex" "$object" ;;
    avx2)
      refuse "$wide" "$object"
      vex_lines=$((vex_lines + $(found "$vex" "$object" | wc -l)))
      ;;
    avx512)
      refuse "$dot" "$object"
      wide_lines=$((wide_lines + $(found "$wide" "$object" | wc -l)))
      ;;
    avx512_vnni) dot_lines=$((dot_lines + $(found "$dot" "$object" | wc -l))) ;;
    *)
      echo "unknown set: $set_name" >&2
      status=1
      ;;
  esac
done <"$1"

if [[ $checked -eq 0 || $vex_lines -eq 0 || $wide_lines -eq 0 ||
  $dot_lines -eq 0 ]]; then
  echo "no baseline object, or no AVX instruction where there must be" >&2
  status=1
fi
exit $status
