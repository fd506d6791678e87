// SPDX-License-Identifier: Apache-2.0
// The tests whose data come from a generator.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "support/generator.h"

namespace lox_test {

// A test with a generator whose seed is printed when the test fails. The
// environment variable ORUMLOX_TEST_SEED sets another.
class SeededTest : public testing::Test {
 protected:
  void TearDown() override {
    if (HasFailure()) std::cout << "ORUMLOX_TEST_SEED=" << seed << std::endl;
  }

  static uint64_t chosen_seed() {
    const char *text = std::getenv("ORUMLOX_TEST_SEED");
    return text != nullptr ? std::strtoull(text, nullptr, 0) : 20240229;
  }

  const uint64_t seed = chosen_seed();
  Random random{seed};
};

}  // namespace lox_test
