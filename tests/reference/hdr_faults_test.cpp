// SPDX-License-Identifier: Apache-2.0
// Tone mapping without memory or without threads: nothing is done then, or all
// of it by fewer threads.
#include <orumlox/hdr.h>

#include <cstdint>
#include <cstdlib>

#include "faults.h"
#include "hdr_log.h"
#include "hdr_pictures.h"

namespace lox_test {
namespace {

class HdrFaults : public HdrPictures {
 protected:
  void make_source_of_all_threads() {
    make_source(random.between(600, 601), 2 * random.between(10, 30) - 1,
                random.between(64, 70), Content::kRandom);
    take_log();
  }
};

TEST_F(HdrFaults, WithoutMemoryNothingIsDone) {
  for (const Call &call : kCalls) {
    const bool drops_status = std::string(call.name).starts_with("kind");
    bool done = false;
    for (int n = 1; !done; ++n) {
      ASSERT_LT(n, 100);
      make_source_of_all_threads();
      dst_.img.format = VEXO_FMT_NV12;
      const vexo_img described = src_.img;
      const int32_t nit = final_nit(src_.img);
      const auto expected = make_room(picture(
          model_context(src_.img, dst_.img, nit, call.variant, call.hlg)));
      const auto blank = dst_.contents();
      const int held_before = held;
      failing_allocation = n;
      const int32_t status = call.run(&src_.img, &dst_.img);
      done = failing_allocation != 0;
      failing_allocation = 0;
      EXPECT_EQ(held, held_before) << call.name;
      EXPECT_EQ(status, done || drops_status ? VEXO_OK : VEXO_ERR_ARG);
      EXPECT_TRUE(holds(dst_, done ? expected : blank)) << call.name;
      EXPECT_EQ(describes(described), !done) << call.name;
      EXPECT_EQ(take_log().empty(), !done) << call.name;
      ASSERT_FALSE(done && n == 1) << "the context needs memory";
    }
  }
}

// Any of the three threads may be missing.
TEST_F(HdrFaults, WithoutThreadsThePictureIsWhole) {
  for (const int32_t format : {400, 500, 502, 1, 4, 6, 7, 0}) {
    for (unsigned mask = 0; mask < 8; ++mask) {
      const Call &call = kCalls[random.between(0, kCallCount - 1)];
      make_source_of_all_threads();
      starts = joins = 0;
      failing_starts = mask;
      ASSERT_NO_FATAL_FAILURE(check(call, format)) << "without " << mask;
      failing_starts = 0;
      EXPECT_EQ(starts, joins);
      // Bands over each other may have one thread.
      if (format != VEXO_FMT_YV12 && format != VEXO_FMT_YUV400) {
        EXPECT_EQ(starts, 3 - __builtin_popcount(mask)) << "without " << mask;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
