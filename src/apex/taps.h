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
};

// The weights of outputs in a line without ends. They come again after so many
// outputs, which lie `samples` further.
struct ApexPeriod {
  int32_t taps;
  int32_t outputs;
  int64_t samples;
  // Of each output the first sample, before 0 or not, and the weights.
  int32_t *first = nullptr;
  int16_t *weights = nullptr;

  // Of a direction; for the tables there is room to find.
  explicit ApexPeriod(const ApexAxis &axis);
  int64_t first_of(int64_t output) const {
    return first[output % outputs] + output / outputs * samples;
  }
  const int16_t *weights_of(int64_t output) const {
    return weights + output % outputs * taps;
  }
  // Fills the tables.
  void fill(const ApexAxis &axis) const;
};

// The weights of all outputs by pairs of samples: those of output i are pairs
// i * pairs and on, and belong to the pairs of samples from first[i] on. They
// are 0 outside of the filter and beyond the last sample.
struct ApexTaps {
  int32_t pairs;
  int32_t *first;
  int16_t *weights;
};
// Pairs that an output may need: its first sample may be a pair's second.
constexpr int32_t apex_pairs(int32_t taps) { return taps / 2 + 1; }

// Fills the weights of so many outputs; those behind the last one take nothing
// of what it takes.
void fill_taps(const ApexAxis &axis, const ApexPeriod &period, int64_t outputs,
               const ApexTaps &taps);

}  // namespace lox
