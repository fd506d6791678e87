#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the benchmarks, runs them at every level of this machine, or at one, and
# keeps the results under bench/results/:
#   bench/run.sh [--level avx512|avx2|sse41|portable] [options of frame_bench]
# Options given here come after the script's own and win. bench/report.py makes
# the page of what is kept. Any peer that is missing ends it, for a page without
# it would flatter.
set -eu
cd "$(dirname "$0")/.."
cmake --preset bench -DORUMLOX_TOOLS=OFF -DORUMLOX_EXAMPLES=OFF \
  -DORUMLOX_BENCH_ALL_PEERS=ON
cmake --build build/bench --target frame_bench
bench=build/bench/bench/frame_bench
levels=$($bench --level list 2>/dev/null) || true
levels=${levels%portable}
if [ "${1:-}" = --level ]; then
  levels=${2:?is a level}
  shift 2
fi

# Repetitions of all rows are interleaved, so that a noisy minute meets all
# contenders alike.
for level in $levels; do
  run=build/bench/run-$level.json
  $bench --level "$level" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_repetitions=7 \
    --benchmark_min_time=0.01 \
    --benchmark_out="$run" \
    --benchmark_out_format=json \
    "$@" >"${run%json}log"
  python3 bench/report.py keep "$run"
done
