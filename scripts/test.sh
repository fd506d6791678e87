#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the library for every target and passes all tests:
#   scripts/test.sh [PRESET...]
# without arguments x86-64 (GCC; clang with address and undefined-behaviour
# sanitizers; clang with the thread sanitizer, whose preset builds and runs the
# tests labelled `threads` alone), i386, 32-bit ARM and AArch64 (both emulated),
# and the format and lint checks. Installs missing Debian packages first (as
# root).
set -eu

cd "$(dirname "$0")/.."
# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need g++ clang libclang-rt-14-dev clang-format clang-tidy cmake ninja-build \
  googletest libcli11-dev libpng-dev zlib1g-dev qemu-user ffmpeg \
  g++-i686-linux-gnu g++-arm-linux-gnueabihf g++-aarch64-linux-gnu

if [ $# -eq 0 ]; then
  scripts/lint.sh
  set -- x86_64 x86_64-clang-asan x86_64-tsan i386 armhf arm64
fi
jobs=$(nproc)
for preset in "$@"; do
  echo "== $preset"
  mkdir -p "build/$preset"
  log=build/$preset/build.log
  {
    cmake --preset "$preset" && cmake --build --preset "$preset" -j "$jobs"
  } >"$log" 2>&1 || {
    tail -n 60 "$log" >&2
    echo "test: the build of $preset failed; all of its output is in $log" >&2
    exit 1
  }
  ctest --preset "$preset" -j "$jobs"
done
echo "All tests passed: $*"
