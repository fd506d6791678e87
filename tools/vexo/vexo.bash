# SPDX-License-Identifier: Apache-2.0
# Completion of vexo's command lines in bash: commands and options are those that
# its help lists, layouts those of `vexo formats`, all else is a file.
_vexo() {
  local tool=$1 word=$2 before=$3 words=''
  local command=${COMP_WORDS[1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words=$("$tool" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]\+\) .*/\1/p')
    words+=' --help --version'
  elif [[ $word == -* ]]; then
    words=$("$tool" "$command" --help | sed -n '/^Options:/,$s/^  \(-[^ ]*\).*/\1/p')
    words=${words//,/ }
  else
    case $before in
      --from | --format | --to | --via)
        words=$("$tool" formats | sed -n 's/^ *[0-9]\+ \([^ ]\+\) .*/\1/p')
        ;;
      --standard | --std) words='bt601 bt601-full bt709 bt709-full bt2020 bt2020-full' ;;
      --rotate | --turn) words='left right half mirror flip' ;;
      --filter) words='plain lanczos' ;;
      --chroma) words='plain smooth' ;;
      --kind) words='hdr10 hdr10-mild hlg none' ;;
      --range) words='limited full' ;;
      --in-kind | --out-kind) words='png pgm ppm jpeg webp y4m raw video' ;;
    esac
  fi
  if [[ -n $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  else
    compopt -o default 2>/dev/null
  fi
}
complete -F _vexo vexo
