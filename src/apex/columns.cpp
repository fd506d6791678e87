// SPDX-License-Identifier: Apache-2.0
#include "apex/columns.h"

namespace lox {

namespace {

int32_t round_up(int32_t n, int32_t step) {
  return (n + step - 1) / step * step;
}

// Whether the outputs of so many sums find what they take in so many parts.
bool fits(const ApexAxis &axis, int32_t parts, int32_t sums, int32_t within) {
  const int64_t further = (int64_t{sums} / apex_sums(parts) - 1) * axis.from;
  return ((further + axis.to - 1) / axis.to + 2) * parts <= within;
}

ApexWay way_of(const ApexAxis &axis, ApexSample sample, int32_t parts) {
  const ApexRows &rows = apex_rows();
  if (rows.register_bytes == 0) return ApexWay::kPlain;
  if (rows.picks && fits(axis, parts, 16, 32)) return ApexWay::kRegister;
  if (rows.picks && fits(axis, parts, 16, 64)) return ApexWay::kTwoRegisters;
  const int32_t lane = 16 / apex_bytes(sample);
  if (rows.register_bytes == 32 && fits(axis, parts, 8, lane)) {
    return ApexWay::kTwoLanes;
  }
  return fits(axis, parts, 4, lane) ? ApexWay::kLanes : ApexWay::kDirect;
}

}  // namespace

ApexArrangement::ApexArrangement(const ApexAxis &axis, ApexSample sample,
                                 int32_t parts)
    : way_(way_of(axis, sample, parts)),
      sample_(sample),
      parts_(parts),
      taps_(axis.taps()),
      count_(axis.dst_count),
      src_count_(axis.src_count) {
  const int32_t bytes = apex_rows().register_bytes;
  steps_ = (taps_ + 1) / 2;
  int32_t load = 16 / apex_bytes(sample);
  switch (way_) {
    case ApexWay::kPlain:
      steps_ = round_up(taps_, apex_rows().plain_step);
      reach_ = steps_ * parts + 8;
      break;
    case ApexWay::kDirect:
      block_ = bytes / 4;
      words_ = bytes / 2;
      steps_ = (taps_ * parts - 1) / words_ + 1;
      reach_ = int64_t{steps_} * words_;
      break;
    case ApexWay::kLanes:
    case ApexWay::kTwoLanes:
      sums_ = way_ == ApexWay::kLanes ? 4 : 8;
      block_ = bytes / 2;
      break;
    default:
      sums_ = 16;
      block_ = 32;
      load = way_ == ApexWay::kRegister ? 32 : 64;
  }
  if (sums_ > 0) {
    lanes_ = block_ / sums_;
    reach_ = (steps_ - int64_t{1}) * 2 * parts + load;
  }
  outputs_ = block_ / apex_sums(parts);
  blocks_ = (count_ - 1) / outputs_ + 1;
}

int64_t ApexArrangement::firsts() const {
  if (is_plain()) return count_;
  return int64_t{blocks_} * (sums_ == 0 ? outputs_ : lanes_);
}
int64_t ApexArrangement::places() const {
  return sums_ == 0 ? 0 : int64_t{blocks_} * block_;
}
int64_t ApexArrangement::weights() const {
  if (is_plain()) return 0;
  return sums_ == 0 ? firsts() * steps_ * words_ : places() * 2 * steps_;
}

int32_t ApexArrangement::block_output(int32_t block) const {
  const int32_t last = count_ > outputs_ ? count_ - outputs_ : 0;
  const int64_t at = int64_t{block} * outputs_;
  return at < last ? static_cast<int32_t>(at) : last;
}
// Of a block that is not full the other outputs are like the last one, and
// weigh nothing.
int32_t ApexArrangement::first_of(const ApexTaps &taps, int32_t output) const {
  return taps.first[output < count_ ? output : count_ - 1];
}
int16_t ApexArrangement::weight(const ApexTaps &taps, int32_t output,
                                int32_t tap) const {
  if (output >= count_ || tap >= taps_) return 0;
  return taps.weights[int64_t{output} * taps.pitch + tap];
}
// Where a part and the one that it is summed with are: words of a register, or
// bytes of 16, a zero being behind what is a byte.
uint32_t ApexArrangement::place(int32_t part) const {
  const auto a = static_cast<uint32_t>(part);
  const auto b = static_cast<uint32_t>(part + parts_);
  if (block_ == 32 && sums_ == 16) return a | b << 16;
  if (sample_ == ApexSample::kByte) return 0x80008000 | a | b << 16;
  return (2 * a) | (2 * a + 1) << 8 | (2 * b) << 16 | (2 * b + 1) << 24;
}

int64_t ApexArrangement::add_block(const ApexTaps &taps, int32_t block,
                                   int32_t *first, uint32_t *places,
                                   int16_t *weights) const {
  const int32_t at = block_output(block);
  const int32_t last = at + outputs_ - 1;
  const int64_t end = int64_t{first_of(taps, last)} * parts_ + reach_;
  if (sums_ == 0) {
    for (int32_t o = at; o <= last; ++o) {
      *first++ = first_of(taps, o) * parts_;
      for (int32_t i = 0; i < steps_ * words_; ++i) {
        // Of pairs two of the first parts and two of the second in turn.
        *weights++ = weight(taps, o, parts_ == 1 ? i : i / 4 * 2 + i % 2);
      }
    }
    return end;
  }
  // Of three parts the fourth sum is one more of the third.
  const int32_t sums = apex_sums(parts_);
  for (int32_t lane = 0; lane < lanes_; ++lane) {
    const int32_t sum = lane * sums_;
    const int32_t begin = first_of(taps, at + sum / sums);
    *first++ = begin * parts_;
    for (int32_t i = sum; i < sum + sums_; ++i) {
      const int32_t part = i % sums < parts_ ? i % sums : parts_ - 1;
      *places++ =
          place((first_of(taps, at + i / sums) - begin) * parts_ + part);
    }
  }
  for (int32_t tap = 0; tap < 2 * steps_; tap += 2) {
    for (int32_t lane = 0; lane < lanes_; ++lane) {
      for (int32_t i = lane * sums_; i < lane * sums_ + sums_; ++i) {
        *weights++ = weight(taps, at + i / sums, tap);
        *weights++ = weight(taps, at + i / sums, tap + 1);
      }
    }
  }
  return end;
}

ApexArrangement::Columns ApexArrangement::columns(const ApexTaps &taps,
                                                  int32_t *first,
                                                  uint32_t *places,
                                                  int16_t *weights) const {
  const int64_t row_end = int64_t{src_count_} * parts_;
  const int64_t block_firsts = firsts() / blocks_;
  const int64_t block_weights = this->weights() / blocks_;
  int32_t inside = 0;  // blocks
  int64_t tail_first = 0;
  int32_t tail = 0;  // outputs before it
  if (is_plain()) {
    // The tail has at least a block, so that it can be done as one.
    const int32_t last = count_ > outputs_ ? count_ - outputs_ : 0;
    while (tail < last &&
           int64_t{taps.first[tail]} * parts_ + reach_ <= row_end) {
      ++tail;
    }
    for (int32_t i = 0; i < count_; ++i) first[i] = taps.first[i] * parts_;
    weights = taps.weights;
    tail_first = tail;
  } else {
    for (int32_t b = 0; b < blocks_; ++b) {
      const int64_t end =
          add_block(taps, b, first + b * block_firsts,
                    sums_ == 0 ? places : places + int64_t{b} * block_,
                    weights + b * block_weights);
      if (inside == b && end <= row_end) ++inside;
    }
    tail = inside < blocks_ ? inside * outputs_ : count_;
    tail_first = inside * block_firsts;
  }
  const int32_t last = block_output(blocks_ - 1);
  Columns c;
  c.body = {way_, parts_, tail, inside, last, first, places, weights, steps_};
  c.tail = c.body;
  c.tail_output = tail;
  c.tail.count = count_ - tail;
  c.tail.blocks = is_plain() ? 0 : blocks_ - inside;
  c.tail.last = last - tail;
  c.tail.first += tail_first;
  c.tail.places += sums_ == 0 ? 0 : int64_t{inside} * block_;
  c.tail.weights +=
      is_plain() ? int64_t{tail} * steps_ : inside * block_weights;
  c.begin = c.tail.count > 0 ? c.tail.first[0] : row_end;
  for (int64_t i = tail_first; i < firsts() && c.tail.count > 0; ++i) {
    first[i] -= static_cast<int32_t>(c.begin);
  }
  return c;
}

}  // namespace lox
