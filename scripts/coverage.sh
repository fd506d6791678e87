#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Prints which part of the library's lines and branches the tests run, the fuzz
# targets' short runs included, by file:
#   scripts/coverage.sh [CTEST_ARGUMENT...]
# Row kernels count as run when any instruction set's form of them is; the
# branches of headers that only inline functions hold are their users'.
set -eu

cd "$(dirname "$0")/.."
# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need clang llvm-14 libclang-rt-14-dev

build=$PWD/build/coverage
rm -rf "$build/profiles"
mkdir -p "$build/profiles"
log=$build/build.log
{
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DORUMLOX_COVERAGE=ON
  cmake --build "$build"
} >"$log" 2>&1 || {
  tail -n 60 "$log" >&2
  exit 1
}
# A failed test is reported, and what it ran counts.
LLVM_PROFILE_FILE="$build/profiles/%4m.profraw" \
  ctest --test-dir "$build" -j "$(nproc)" -Q "$@" ||
  echo "coverage: some tests failed" >&2
llvm-profdata-14 merge -sparse "$build"/profiles/*.profraw -o "$build/profile"
# Of each file the share of lines and of branches.
llvm-cov-14 report -show-region-summary=false -instr-profile="$build/profile" \
  "$build/liborumlox.so" | awk '
  /%/ { printf "%-28s %8s %8s\n", $1, $7, $10 }
  NR == 1 { printf "%-28s %8s %8s\n", "file", "lines", "branches" }'
