#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints the man page of the vexo tool, made of what the tool says of itself:
#   scripts/manual.sh VEXO > vexo.1
set -eu

vexo=$1
export LC_ALL=C

# Paragraphs as they are; "Options:" and "Positionals:" begin lists, whose items
# are two columns in and parted from their text by two spaces or a line's end.
roff() {
  awk '
    function text(line) {
      gsub(/\\/, "\\e", line)
      gsub(/-/, "\\-", line)
      sub(/^[.'\'']/, "\\\\\\&&", line)
      return line
    }
    /^(Options|Positionals):$/ { list = 1; next }
    /^$/ { if (!list) print ".PP"; next }
    !list { print text($0); next }
    /^  [^ ]/ {
      item = substr($0, 3)
      at = match(item, /  +/)
      print ".TP"
      print ".B " text(at ? substr(item, 1, at - 1) : item)
      if (at) print text(substr(item, at + RLENGTH))
      next
    }
    { sub(/^ +/, ""); print text($0) }'
}

help=$("$vexo" --help)
about=$(echo "$help" | sed '/^Usage:/,$d')
version=$("$vexo" --version | sed 's/^vexo //')
cat <<END
.TH VEXO 1 "" "orumlox $version" "User Commands"
.SH NAME
vexo \\- convert, scale, turn, tone map and compare pictures and videos
.SH SYNOPSIS
.B vexo
.I COMMAND
.RI [ OPTION "...] [" FILE ...]
.SH DESCRIPTION
END
echo "$about" | roff
echo ".SH COMMANDS"
echo "$help" | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z]*\) .*/\1/p' |
  while read -r command; do
    of=$("$vexo" "$command" --help)
    echo ".SS $(echo "$of" | sed -n 's/^Usage: //p' | sed 's/-/\\-/g')"
    echo "$of" | sed '/^Usage:/d' | roff
  done
cat <<'END'
.SH EXIT STATUS
0 when all was done, 1 when something failed, 2 for a command line that is not
understood.
END
