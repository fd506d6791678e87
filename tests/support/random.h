// SPDX-License-Identifier: Apache-2.0
// Test data that is the same in every run, and the fills that pictures are
// tested with.
#ifndef ORUMLOX_TESTS_SUPPORT_RANDOM_H
#define ORUMLOX_TESTS_SUPPORT_RANDOM_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace lox_test {

enum class Fill { kRandom, kLow, kHigh, kAlternating };
constexpr Fill kFills[] = {Fill::kRandom, Fill::kLow, Fill::kHigh,
                           Fill::kAlternating};

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next();
  // A number of low..high, both included.
  int32_t between(int32_t low, int32_t high);
  void fill(uint8_t* data, size_t size, Fill kind = Fill::kRandom);

 private:
  uint64_t state_;
};

// A test with a generator whose seed is printed when the test fails. The
// environment variable ORUMLOX_TEST_SEED sets another.
class SeededTest : public testing::Test {
 protected:
  SeededTest();
  void TearDown() override;

  const uint64_t seed;
  Random random;
};

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_SUPPORT_RANDOM_H
