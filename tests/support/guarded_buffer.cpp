// SPDX-License-Identifier: Apache-2.0
#include "support/guarded_buffer.h"

#include <algorithm>

namespace lox_test {
namespace {

// How much of the open side is watched: more than any vector step.
constexpr size_t kMargin = 256;

uint8_t canary(size_t i) {
  return static_cast<uint8_t>(static_cast<uint32_t>(i) * 0x9E3779B1 >> 24);
}
void fill_canaries(uint8_t *data, size_t size) {
  for (size_t i = 0; i < size; ++i) data[i] = canary(i);
}

}  // namespace

void GuardedBuffer::reset(size_t size, Edge edge) {
  pages_.reserve(size + 1 + kMargin);
  size_ = size;
  edge_ = edge;
  if (edge == Edge::kEnd) {
    data_ = pages_.end() - size;
  } else {
    gap_ = edge == Edge::kAligned ? 0 : 1 - gap_;
    data_ = pages_.begin() + gap_;
    fill_canaries(data_ - gap_, gap_);
  }
  fill_canaries(data_, size_);
  fill_canaries(margin(), kMargin);
}

uint8_t *GuardedBuffer::margin() const {
  return edge_ == Edge::kEnd ? data_ - kMargin : data_ + size_;
}

bool GuardedBuffer::margin_intact() const {
  if (data_ == nullptr) return true;
  if (edge_ != Edge::kEnd && gap_ != 0 && data_[-1] != canary(0)) {
    return false;
  }
  for (size_t i = 0; i < kMargin; ++i) {
    if (margin()[i] != canary(i)) return false;
  }
  return true;
}

testing::AssertionResult holds(const GuardedBuffer &buffer,
                               const std::vector<uint8_t> &expected) {
  if (!buffer.margin_intact()) {
    return testing::AssertionFailure() << "written outside the buffer";
  }
  const std::vector<uint8_t> actual = buffer.copy();
  if (actual == expected) return testing::AssertionSuccess();
  if (actual.size() != expected.size()) {
    return testing::AssertionFailure()
           << "size " << actual.size() << ", expected " << expected.size();
  }
  const auto [is, should] =
      std::mismatch(actual.begin(), actual.end(), expected.begin());
  return testing::AssertionFailure()
         << "byte " << is - actual.begin() << " of " << actual.size() << " is "
         << int{*is} << ", expected " << int{*should};
}

}  // namespace lox_test
