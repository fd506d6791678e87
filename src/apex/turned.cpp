// SPDX-License-Identifier: Apache-2.0
#include "apex/turned.h"

#include <cstring>

namespace lox {

namespace {

// Of the turned samples: they are to stay in the first cache.
constexpr int32_t kStrip = 24 << 10;
// Outputs of all blocks together are a multiple of these.
constexpr int32_t kOutputs = 4;

}  // namespace

ApexTurned::ApexTurned(const ApexAxis &axis, ApexSample sample, int32_t parts)
    : sample_(sample),
      parts_(parts),
      src_count_(axis.src_count),
      outputs_(int64_t{(axis.dst_count - 1) / kOutputs} * kOutputs + kOutputs),
      steps_(apex_pairs(axis.taps())) {
  // Four outputs, and what they are apart.
  const int64_t apart = (int64_t{kOutputs} * axis.from - 1) / axis.to + 1;
  const int64_t least = (apart / 2 + 1 + steps_) * parts;
  const int64_t many = kStrip / (4 * (rows() > 0 ? rows() : 1));
  units_ = least > many ? least : many;
}

void ApexTurned::make(const uint8_t *const *rows, const ApexTaps &taps,
                      int16_t *words, uint8_t *end,
                      int16_t *const *pairs) const {
  const int32_t *const first = taps.first;
  const int32_t pixel = parts_ * apex_bytes(sample_);
  // What is turned at once: whole pairs of 16 bytes.
  const int32_t chunk_pairs = 8 / pixel;
  const int64_t row_bytes = int64_t{src_count_} * pixel;
  const uint8_t *from[kMostTurnedRows];
  for (int32_t o = 0; o < outputs_;) {
    // As many outputs as the strip takes.
    const int32_t begin = first[o];
    int32_t next = o + kOutputs;
    while (next < outputs_ &&
           (first[next + kOutputs - 1] - begin + steps_) * int64_t{parts_} <=
               units_) {
      next += kOutputs;
    }
    const int32_t wanted = first[next - 1] - begin + steps_;
    const int32_t chunks = (wanted - 1) / chunk_pairs + 1;
    const int64_t at = int64_t{2} * begin * pixel;
    const int64_t bytes =
        int64_t{2} * chunk_pairs * pixel * (chunks - int64_t{1}) + 16;
    for (int32_t y = 0; y < this->rows(); ++y) {
      from[y] = rows[y] + at;
      if (at + bytes <= row_bytes) continue;
      uint8_t *const copy = end + bytes * y;
      const int64_t left = row_bytes - at;
      std::memcpy(copy, from[y], static_cast<size_t>(left));
      std::memset(copy + left, 0, static_cast<size_t>(bytes - left));
      from[y] = copy;
    }
    apex_rows().turn(sample_, from, parts_, chunks, words);
    // The last pair counts where an output's first sample is a pair's second.
    const ptrdiff_t pitch = ptrdiff_t{2} * steps_;
    const int16_t *const own = taps.weights + o * pitch;
    int32_t last = 0;
    for (int32_t i = 1; i <= next - o; ++i) {
      last |= own[i * pitch - 2] | own[i * pitch - 1];
    }
    apex_rows().across_turned(sample_, words, parts_, next - o, begin,
                              first + o, {own, pitch, steps_ - (last == 0)},
                              ptrdiff_t{o} * apex_sums(parts_), pairs);
    o = next;
  }
}

}  // namespace lox
