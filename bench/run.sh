#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the benchmarks, runs them and keeps the result under bench/results/:
#   bench/run.sh [options of frame_bench]
# Options given here come after the script's own and win. bench/report.py makes
# the page of what is kept.
set -eu
cd "$(dirname "$0")/.."
run=build/bench/run.json
cmake --preset bench -DORUMLOX_TOOLS=OFF -DORUMLOX_EXAMPLES=OFF
cmake --build build/bench --target frame_bench

# Repetitions of all rows are interleaved, so that a noisy minute meets all
# contenders alike.
./build/bench/bench/frame_bench \
  --benchmark_enable_random_interleaving=true \
  --benchmark_repetitions=7 \
  --benchmark_min_time=0.02 \
  --benchmark_out="$run" \
  --benchmark_out_format=json \
  "$@" >build/bench/run.log
python3 bench/report.py keep "$run"
