// SPDX-License-Identifier: Apache-2.0
// Scaling by threads, and without memory or threads: nothing is done then, or
// all of it by fewer threads; nothing is held in the end. Built with
// ThreadSanitizer too.
#include <cstdint>
#include <string>

#include "dct_checks.h"
#include "faults.h"

namespace lox_test {
namespace {

class DctFaults : public testing::TestWithParam<Model> {
 protected:
  DctFaults() : function_(find(dct_family, GetParam().name)) {
    if (GetParam().address) function_.address = GetParam().address;
  }
  // Runs a case that is to hold nothing; what it prints.
  std::string told_by(uint64_t seed) const {
    const int held_before = held;
    testing::internal::CaptureStdout();
    digest_of_case(function_, seed);
    EXPECT_EQ(held, held_before) << "case " << seed;
    return testing::internal::GetCapturedStdout();
  }

  Function function_;
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
  const std::string name = GetParam().name;
  EXPECT_EQ(most, name == "get_mem3Dint16"          ? 0
                  : name == "vexo_rsz_new_rgba8888" ? 2
                                                    : 1);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, DctFaults,
    testing::Values(Model LOX_MODEL(vexo_rsz_new, checked_scale),
                    Model LOX_MODEL(vexo_txc_new, checked_thumbnail),
                    Model LOX_MODEL(vexo_rsz_new_rgba8888, checked_pixels),
                    Model{"get_mem3Dint16", nullptr}),
    [](const auto &kind) { return std::string(kind.param.name); });

}  // namespace
}  // namespace lox_test
