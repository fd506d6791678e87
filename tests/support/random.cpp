// SPDX-License-Identifier: Apache-2.0
// The generator is splitmix64: short, and the same on every target, which the
// standard library's distributions do not promise.
#include "support/random.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace lox_test {
namespace {

uint64_t chosen_seed() {
  const char* text = std::getenv("ORUMLOX_TEST_SEED");
  return text != nullptr ? std::strtoull(text, nullptr, 0) : 20240229;
}

}  // namespace

uint64_t Random::next() {
  uint64_t z = (state_ += 0x9E3779B97F4A7C15);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

int32_t Random::between(int32_t low, int32_t high) {
  const uint64_t count = static_cast<uint64_t>(int64_t{high} - low) + 1;
  return static_cast<int32_t>(low + static_cast<int64_t>(next() % count));
}

void Random::fill(uint8_t* data, size_t size, Fill kind) {
  if (size == 0) return;
  switch (kind) {
    case Fill::kRandom:
      for (size_t i = 0; i < size; i += 8) {
        const uint64_t word = next();
        std::memcpy(data + i, &word, std::min<size_t>(8, size - i));
      }
      break;
    case Fill::kLow:
      std::memset(data, 0x00, size);
      break;
    case Fill::kHigh:
      std::memset(data, 0xFF, size);
      break;
    case Fill::kAlternating:
      for (size_t i = 0; i < size; ++i) data[i] = i % 2 == 0 ? 0xFF : 0x00;
      break;
  }
}

SeededTest::SeededTest() : seed(chosen_seed()), random(seed) {}

void SeededTest::TearDown() {
  if (HasFailure()) std::cout << "ORUMLOX_TEST_SEED=" << seed << std::endl;
}

}  // namespace lox_test
