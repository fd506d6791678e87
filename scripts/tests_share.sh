#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints what part of all C and C++ the tests are, in lines of code without
# blanks and comments, generated tables left out. Fails above a third: then tests
# say things twice.
set -eu

cd "$(dirname "$0")/.."
lines() { # lines PATH...
  git ls-files "$@" | grep -E '\.(c|cpp|h)$' |
    cloc --quiet --csv --list-file=- | sed -n 's/.*,SUM,.*,\([0-9]*\)$/\1/p'
}
tests=$(lines tests)
rest=$(lines include src tools examples gst ':!src/hdr/curves.cpp')
tenths=$((1000 * tests / (tests + rest)))
echo "Tests are $tests of $((tests + rest)) lines of code:" \
  "$((tenths / 10)).$((tenths % 10)) %."
[ "$tenths" -le 333 ] || {
  echo "tests_share: at most a third is meant" >&2
  exit 1
}
