// SPDX-License-Identifier: Apache-2.0
// Test data that is the same in every run and on every target, and the fills
// that pictures are tested with.
#ifndef ORUMLOX_TESTS_SUPPORT_RANDOM_H
#define ORUMLOX_TESTS_SUPPORT_RANDOM_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>

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

  void fill(uint8_t* data, size_t size, Fill kind = Fill::kRandom) {
    for (size_t i = 0; i < size; i += 8) {
      const uint64_t word = kind == Fill::kRandom ? next()
                            : kind == Fill::kLow  ? 0
                            : kind == Fill::kHigh ? UINT64_MAX
                                                  : 0x00FF00FF00FF00FF;
      std::memcpy(data + i, &word, std::min<size_t>(8, size - i));
    }
  }

 private:
  uint64_t state_;
};

// A test with a generator whose seed is printed when the test fails. The
// environment variable ORUMLOX_TEST_SEED sets another.
class SeededTest : public testing::Test {
 protected:
  void TearDown() override {
    if (HasFailure()) std::cout << "ORUMLOX_TEST_SEED=" << seed << std::endl;
  }

  static uint64_t chosen_seed() {
    const char* text = std::getenv("ORUMLOX_TEST_SEED");
    return text != nullptr ? std::strtoull(text, nullptr, 0) : 20240229;
  }

  const uint64_t seed = chosen_seed();
  Random random{seed};
};

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_SUPPORT_RANDOM_H
