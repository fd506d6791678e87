#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the benchmarks, runs them and reports:
#   bench/run.sh OUT_DIR [options of frame_bench]
# Options given here come after the script's own and win, for example
# --benchmark_repetitions=2 for a quick look.
set -eu
if [ $# -lt 1 ]; then
  echo "usage: bench/run.sh OUT_DIR [options of frame_bench]" >&2
  exit 2
fi
mkdir -p "$1"
out=$(cd "$1" && pwd)
shift
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

# The report goes to standard output; what the tools say does not.
cmake --preset bench -DORUMLOX_TOOLS=OFF -DORUMLOX_EXAMPLES=OFF >&2
cmake --build build/bench --target frame_bench >&2

commit=$(git describe --always --dirty 2>/dev/null || echo unknown)
# Repetitions of all rows are interleaved, so that a noisy minute meets all
# contenders alike.
./build/bench/bench/frame_bench \
  --benchmark_enable_random_interleaving=true \
  --benchmark_repetitions=9 \
  --benchmark_min_time=0.05 \
  --benchmark_context=commit="$commit" \
  --benchmark_out="$out/benchmarks.json" \
  --benchmark_out_format=json \
  "$@" >"$out/benchmarks.log"
grep -E 'mean difference|correlation|equal$' "$out/benchmarks.log" >&2
python3 bench/report.py "$out/benchmarks.json" "$out"
