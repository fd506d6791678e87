// SPDX-License-Identifier: Apache-2.0
//
// The weights of a Lanczos filter along one direction.
#pragma once

#include <stdint.h>

namespace lox {

// How many times as large an image may be, and how many weights that makes.
constexpr int32_t kMostRatio = 64;
constexpr int32_t kMostTaps = 6 * kMostRatio;

// Where the outputs of a direction lie in the source: its sizes, the ratio of
// them that counts, and whether samples are the left ones of two that `from`
// and `to` count.
struct ApexAxis {
  int32_t src_count, dst_count;
  int32_t from, to;
  bool left;

  // Weights of an output.
  int32_t taps() const {
    if (from == to) return 1;
    const int64_t wide = from > to ? from : to;
    return static_cast<int32_t>((6 * wide - 1) / to + 1);
  }
  // After so many outputs the same weights come again.
  int32_t period() const;
};

// Weights of all outputs: those of output i are words i * pitch and on, and
// belong to the samples from first[i] on. What is behind the axis' taps is 0,
// and so are the weights of samples beyond the last.
struct ApexTaps {
  int32_t *first;
  int16_t *weights;
  int32_t pitch;
};

// Fills `taps`. `period` has room for axis.taps() weights of axis.period()
// outputs.
void fill_taps(const ApexAxis &axis, int16_t *period, const ApexTaps &taps);

}  // namespace lox
