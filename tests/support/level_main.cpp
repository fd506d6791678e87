// SPDX-License-Identifier: Apache-2.0
// The main function of tests that run once for each instruction set:
// --level=N makes the library run at level N. Where the machine lacks it the
// program says so and ends with the status that CTest counts as skipped.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/caches.h"
#include "common/isa.h"

int main(int argc, char **argv) {
  constexpr int kSkipped = 77;
  testing::InitGoogleTest(&argc, argv);
  constexpr char kFlag[] = "--level=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], kFlag, sizeof(kFlag) - 1) != 0) {
      std::fprintf(stderr, "unknown argument %s\n", argv[i]);
      return 2;
    }
    const int level = std::atoi(argv[i] + sizeof(kFlag) - 1);
    lox::isa_limit(level);
    if (lox::isa_level() != level) {
      std::printf("this machine has no level %d\n", level);
      return kSkipped;
    }
  }
  // Large pictures are written past the caches whatever the processor gains.
  lox::set_memory_rule(lox::memory_rule(
      lox::Core::kStreams, {size_t{1} << 18, size_t{1} << 20}, true));
  std::printf("level: %s\n", lox::isa_name(lox::isa_level()));
  return RUN_ALL_TESTS();
}
