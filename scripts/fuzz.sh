#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Fuzzes with clang's sanitizers:
#   scripts/fuzz.sh [TARGET|all] [SECONDS]
# one target, a folder of tests/fuzz/corpus, or all one after the other; 60
# seconds each unless said. What finds new ways through the code is kept in
# build/fuzz/TARGET for the next time. An input that fails is written into
# build/fuzz; minimise it (fuzz_TARGET -minimize_crash=1 INPUT) and put it into
# the corpus.
set -eu

cd "$(dirname "$0")/.."
target=${1:-all}
seconds=${2:-60}
[ "$target" != all ] || target=$(ls tests/fuzz/corpus)

preset=x86_64-clang-asan
build=build/$preset
[ -e "$build/build.ninja" ] || cmake --preset $preset >/dev/null
for name in $target; do
  length=64
  counters=1
  case $name in
    tool) program=fuzz_tool_readers length=256 ;;
    video) program=fuzz_tool_video length=2048 ;;
    *) program=fuzz_$name counters=0 ;;
  esac
  cmake --build "$build" --target "$program" >/dev/null
  mkdir -p "build/fuzz/$name"
  echo "== $name"
  "$build/tests/fuzz/$program" -max_total_time="$seconds" -max_len=$length \
    -len_control=0 -timeout=10 -print_final_stats=1 -verbosity=0 \
    -use_counters=$counters -reload=0 -close_fd_mask=1 \
    -artifact_prefix="build/fuzz/$name-" \
    "build/fuzz/$name" "tests/fuzz/corpus/$name"
done
