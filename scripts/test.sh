#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the library for every target and passes all tests:
#   scripts/test.sh [PRESET...]
# without arguments the format and lint checks and these presets:
#   x86_64             GCC, the tool, every test at each instruction set
#   x86_64-clang-asan  address and undefined-behaviour sanitizers; then what
#                      part of the library the tests have run, by file
#   x86_64-tsan        the thread sanitizer, for the tests that have threads
#   x86_64-msan        the memory sanitizer, for the fuzz targets
#   i386               GCC
#   armhf, arm64       Debian's GCC, emulated: the row kernels and the table of hashes
#   android-*          with ANDROID_NDK_HOME set, the libraries as they are
#                      shipped, looked at file by file; with ANDROID_RUNTIME set
#                      too, every test of the two ARM ones, on Android's own
#                      linker and C library, emulated
# ANDROID_RUNTIME is a folder with two commands, run32 and run64. Each runs an
# Android program of that many bits: run32 PROGRAM [ARGUMENT...]. Its shared
# libraries lie in the folder named by ANDROID_LIBS, else in the current one.
# Installs missing Debian packages first (as root).
set -eu

cd "$(dirname "$0")/.."
# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need g++ clang llvm-14 libclang-rt-14-dev clang-format clang-tidy cloc python3-minimal cmake ninja-build \
  googletest libcli11-dev libpng-dev zlib1g-dev libavformat-dev libavcodec-dev \
  libavutil-dev libjpeg-dev libwebp-dev libfreetype-dev qemu-user ffmpeg zip unzip \
  dpkg-dev pkgconf man-db doxygen graphviz default-jdk-headless \
  python3-dev pybind11-dev python3-numpy python3-pytest python3-opencv python3-av \
  mypy python3-pip python3-setuptools python3-wheel \
  libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools \
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav \
  g++-i686-linux-gnu g++-arm-linux-gnueabihf g++-aarch64-linux-gnu

jobs=$(nproc)
build() {
  echo "== $1"
  mkdir -p "build/$1"
  log=build/$1/build.log
  {
    cmake --preset "$1" && cmake --build --preset "$1" -j "$jobs"
  } >"$log" 2>&1 || {
    tail -n 60 "$log" >&2
    echo "test: the build of $1 failed; all of its output is in $log" >&2
    exit 1
  }
}

if [ $# -eq 0 ]; then
  scripts/lint.sh
  set -- x86_64 x86_64-clang-asan x86_64-tsan x86_64-msan i386 armhf arm64
  if [ -n "${ANDROID_NDK_HOME:-}" ]; then
    set -- "$@" android-armeabi-v7a android-arm64-v8a android-x86 android-x86_64
  else
    echo "ANDROID_NDK_HOME is not set: Android is left out."
  fi
fi
for preset in "$@"; do
  build "$preset"
  case $preset in
    android-*-tests) mkdir -p /data/local/tmp ;; # where GoogleTest captures
    android-*)
      tests/audit/android_library.sh "build/$preset/liborumlox.so" \
        "${preset#android-}"
      case $preset in android-x86*) continue ;; esac
      if [ -z "${ANDROID_RUNTIME:-}" ]; then
        echo "ANDROID_RUNTIME is not set: the tests of $preset are left out."
        continue
      fi
      preset=$preset-tests
      build "$preset"
      mkdir -p /data/local/tmp
      ;;
  esac
  rm -rf "build/$preset/profiles"
  LLVM_PROFILE_FILE=$PWD/build/$preset/profiles/%4m.profraw \
    ctest --preset "$preset" -j "$jobs"
  if [ "$preset" = x86_64-clang-asan ]; then
    # What is run depends on the processor a little: no reason to stop.
    scripts/coverage.sh || echo "Some files are run less than they should be."
  fi
done
case " $* " in
  *' android-armeabi-v7a android-arm64-v8a android-x86 android-x86_64 '*)
    tests/audit/aar.sh
    ;;
esac
echo "All tests passed: $*"
