#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Makes the API reference of the public headers and checks its links:
#   scripts/reference.sh [OUT]
# OUT/html/index.html is its first page; OUT is build/reference if not given.
# Anything public without a description is an error.
set -eu

cd "$(dirname "$0")/.."
out=${1:-build/reference}
for tool in doxygen dot python3; do
  command -v "$tool" >/dev/null || {
    echo "reference: $tool is missing (Debian: doxygen, graphviz, python3)" >&2
    exit 1
  }
done
version=$(sed -n 's/^#define ORUMLOX_VERSION_[A-Z]* //p' \
  include/orumlox/version.h | paste -sd .)
rm -rf "$out"
mkdir -p "$out"
{
  cat docs/reference/Doxyfile
  echo "OUTPUT_DIRECTORY = \"$out\""
  echo "PROJECT_NUMBER = $version"
} | doxygen -
scripts/reference.py --links "$out/html"
echo "$out/html/index.html"
