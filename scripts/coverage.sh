#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints which part of the library's lines and branches the sanitizers' tests
# have run, the fuzz targets' short runs included, by file, after
#   scripts/test.sh x86_64-clang-asan
# which calls it. Fails when a file of 98 % of lines and 95 % of branches, or of
# what tests/coverage.txt grants it, falls below.
# Of row kernels the portable form and that of SSE4.1 are counted.
set -eu

cd "$(dirname "$0")/.."
build=build/x86_64-clang-asan
llvm-profdata-14 merge -sparse "$build"/profiles/*.profraw -o "$build/profile"
llvm-cov-14 report -show-region-summary=false -instr-profile="$build/profile" \
  "$build/liborumlox.so" | awk '
  BEGIN {
    while ((getline line < "tests/coverage.txt") > 0) {
      split(line, word, " ")
      if (line !~ /^#/ && word[1] != "") {
        lines[word[1]] = word[2]; branches[word[1]] = word[3]
      }
    }
    printf "%-28s %8s %8s\n", "file", "lines", "branches"
  }
  /%/ {
    least = $1 in lines ? lines[$1] : 98
    least_branches = $1 in branches ? branches[$1] : 95
    low = $1 != "TOTAL" && ($7 + 0 < least || $10 != "-" && $10 + 0 < least_branches)
    printf "%-28s %8s %8s%s\n", $1, $7, $10, low ? "  too few" : ""
    failed = failed || low
  }
  END { exit failed }'
