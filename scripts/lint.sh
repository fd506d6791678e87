#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Checks the formatting of all C and C++, the library's structure, the documents,
# what part of the code tests are, and runs clang-tidy over the library and its
# tool.
set -eu

cd "$(dirname "$0")/.."
git ls-files '*.c' '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
echo "Formatting is clean."
scripts/structure.py --check
scripts/documents.sh
scripts/tests_share.sh

build=build/lint
mkdir -p "$build"
cmake -S . -B "$build" -G Ninja -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DORUMLOX_TESTS=OFF \
  '-DORUMLOX_SETS_READ=portable;avx2' >"$build/lint.log"
tidy() {
  xargs -n 1 -P "$(nproc)" clang-tidy -p "$build" --quiet \
    --warnings-as-errors='*' "$@" 2>>"$build/lint.log" || {
    echo "lint: clang-tidy found something" >&2
    exit 1
  }
}
git ls-files 'src/*.cpp' 'tools/*.cpp' 'examples/*.c' |
  grep -v '_rows\.cpp$' | tidy
# Following every path through the many forms of a row kernel takes minutes and
# finds nothing: they have hardly a branch.
git ls-files 'src/*_rows.cpp' | tidy '--checks=-clang-analyzer-*'
echo "clang-tidy is clean."
