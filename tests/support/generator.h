// SPDX-License-Identifier: Apache-2.0
// Numbers that are the same in every run and on every target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lox_test {

enum class Fill { kRandom, kLow, kHigh, kAlternating };
constexpr Fill kFills[] = {Fill::kRandom, Fill::kLow, Fill::kHigh,
                           Fill::kAlternating};

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  // splitmix64.
  uint64_t next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

  // A number of low..high, both included.
  int32_t between(int32_t low, int32_t high) {
    const uint64_t count = static_cast<uint64_t>(int64_t{high} - low) + 1;
    return static_cast<int32_t>(low + static_cast<int64_t>(next() % count));
  }

  void fill(uint8_t *data, size_t size, Fill kind = Fill::kRandom) {
    const auto word = [&]() -> uint64_t {
      return kind == Fill::kRandom ? next()
             : kind == Fill::kLow  ? 0
             : kind == Fill::kHigh ? UINT64_MAX
                                   : 0x00FF00FF00FF00FF;
    };
    uint64_t now = 0;
    size_t i = 0;
    for (; i + 8 <= size; i += 8) {
      now = word();
      std::memcpy(data + i, &now, 8);
    }
    if (i == size) return;
    now = word();
    std::memcpy(data + i, &now, size - i);
  }

 private:
  uint64_t state_;
};

}  // namespace lox_test
