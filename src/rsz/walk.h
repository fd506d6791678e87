// SPDX-License-Identifier: Apache-2.0
//
// Where the samples of a scaled row or column come from: the rule of both
// directions, written once. Everything here is inlined, since kernel units of
// every instruction set include it.
#pragma once

#include <stdint.h>

#include "simd/op.h"

namespace lox {

// How one direction is scaled from `src` samples to `dst`.
enum class Scaling : uint8_t {
  kReduce,       // outputs at which the accumulator overflows are blended
  kReduceWhole,  // by a whole factor: every output is
  kEnlarge,      // weights by exact division
  kEnlargeMod1   // weights in 64ths
};
struct Axis {
  int32_t src, dst;
  Scaling scaling;
};

// An output: `part` of `length` on the way from source sample `at` to the one
// after it; with part 0 it is the sample itself.
struct Step {
  int32_t at, part, length;
};

// The weights of an output's two samples, in 64ths or in its length-ths.
struct Shares {
  uint32_t here, next;
};

// By how many 64ths the weight of the next sample grows from output to output,
// in a segment of `length` outputs; no formula gives it.
LOX_OP uint32_t step_in_64ths(int32_t length) {
  static constexpr uint8_t kScale[34] = {
      0, 0, 32, 21, 16, 13, 11, 9, 8, 7, 6, 6, 5, 5, 4, 4, 4,
      3, 3, 3,  3,  3,  3,  2,  2, 2, 2, 2, 2, 2, 2, 2, 2, 1};
  return kScale[length < 33 ? length : 33];
}
// Long segments give weights above 64, whose complement wraps around; what is
// kept of the sum does not see it.
LOX_OP Shares shares(Step s, bool mod1) {
  const auto part = static_cast<uint32_t>(s.part);
  if (mod1) {
    const uint32_t next = part * step_in_64ths(s.length);
    return {64 - next, next};
  }
  return {static_cast<uint32_t>(s.length) - part, part};
}

// Goes through the outputs of a direction, from any one on.
class Walk {
 public:
  Walk() = default;
  [[gnu::always_inline]] Walk(Axis axis, int32_t first) : axis_(axis) {
    const int64_t src = axis.src;
    const int64_t dst = axis.dst;
    if (enlarges()) {
      // A source sample j stands at output j * dst / src.
      at_ = static_cast<int32_t>(((int64_t{first} + 1) * src + dst - 1) / dst -
                                 1);
      step_ = axis.dst / axis.src;
      rest_ = static_cast<uint32_t>(axis.dst % axis.src);
      part_ = first - static_cast<int32_t>(at_ * dst / src);
      sum_ = static_cast<uint32_t>(int64_t{at_} * rest_ % src);
      next_segment();
    } else {
      at_ = static_cast<int32_t>(first * src / dst);
      step_ = axis.src / axis.dst;
      rest_ = static_cast<uint32_t>(axis.src % axis.dst);
      sum_ = static_cast<uint32_t>(int64_t{first} * rest_ % dst);
      length_ = 2;
    }
  }

  // The source sample at which the next output begins.
  [[gnu::always_inline]] int32_t at() const { return at_; }

  [[gnu::always_inline]] Step next() {
    if (enlarges()) {
      // The last sample's next is itself.
      const Step s = {at_, at_ + 1 < axis_.src ? part_ : 0, length_};
      if (++part_ == length_) {
        part_ = 0;
        ++at_;
        next_segment();
      }
      return s;
    }
    Step s = {at_, axis_.scaling == Scaling::kReduceWhole ? 1 : 0, length_};
    at_ += step_;
    sum_ += rest_;
    if (sum_ >= static_cast<uint32_t>(axis_.dst)) {
      sum_ -= static_cast<uint32_t>(axis_.dst);
      s.part = 1;
      ++at_;
    }
    return s;
  }

 private:
  [[gnu::always_inline]] bool enlarges() const {
    return axis_.scaling >= Scaling::kEnlarge;
  }
  [[gnu::always_inline]] void next_segment() {
    length_ = step_;
    sum_ += rest_;
    if (sum_ >= static_cast<uint32_t>(axis_.src)) {
      sum_ -= static_cast<uint32_t>(axis_.src);
      ++length_;
    }
  }

  Axis axis_ = {};
  int32_t at_ = 0, part_ = 0, length_ = 0;
  int32_t step_ = 0;             // whole samples an output, or outputs a sample
  uint32_t rest_ = 0, sum_ = 0;  // what the accumulator adds, and holds
};

}  // namespace lox
