// SPDX-License-Identifier: Apache-2.0
// Scaling by threads, and without memory or threads: nothing is done then, or
// all of it by fewer threads; nothing is held in the end. Built with
// ThreadSanitizer too.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "faults.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

class DctFaults : public testing::TestWithParam<const char *> {
 protected:
  // What cases and rules keep for each thread is theirs before anything counts.
  DctFaults() {
    for (uint64_t seed = 0; seed < 40; ++seed) digest_of_case(function_, seed);
  }

  // Runs a case that is to hold nothing; what it prints.
  std::string told_by(uint64_t seed) const {
    const int held_before = held;
    testing::internal::CaptureStdout();
    digest_of_case(function_, seed);
    EXPECT_EQ(held, held_before) << "case " << seed;
    return testing::internal::GetCapturedStdout();
  }

  const Function function_ = by_rule(find(dct_family, GetParam()));
};

TEST_P(DctFaults, WithoutMemory) {
  int most = 0;
  for (uint64_t seed = 0; seed < 40 && !HasFailure(); ++seed) {
    bool done = false;
    for (int n = 1; !done; ++n) {
      failing_allocation = n;
      EXPECT_EQ(told_by(seed), "") << "allocation " << n;
      done = failing_allocation != 0;
      failing_allocation = 0;
      most = std::max(most, n);
    }
  }
  EXPECT_GT(most, 2);
}

TEST_P(DctFaults, WithoutThreads) {
  int most = 0;
  for (uint64_t seed = 0; seed < 40 && !HasFailure(); ++seed) {
    for (unsigned mask = 0; mask < 4; ++mask) {
      starts = joins = failed_starts = 0;
      failing_starts = mask;
      const std::string told = told_by(seed);
      failing_starts = 0;
      std::string errors;
      for (int i = 0; i < failed_starts; ++i) errors += " err \n ";
      EXPECT_EQ(told, errors) << "without " << mask;
      EXPECT_EQ(joins, starts) << "without " << mask;
      most = std::max(most, starts + failed_starts);
    }
  }
  const std::string name = GetParam();
  EXPECT_EQ(most, name == "get_mem3Dint16"          ? 0
                  : name == "vexo_rsz_new_rgba8888" ? 2
                                                    : 1);
}

INSTANTIATE_TEST_SUITE_P(Calls, DctFaults,
                         testing::Values("vexo_rsz_new", "vexo_txc_new",
                                         "vexo_rsz_new_rgba8888",
                                         "get_mem3Dint16"),
                         [](const auto &kind) {
                           return std::string(kind.param);
                         });

}  // namespace
}  // namespace lox_test
