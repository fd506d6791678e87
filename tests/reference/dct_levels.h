// SPDX-License-Identifier: Apache-2.0
// Scaling by the portable form and at the level of the test.
#pragma once

#include "common/isa.h"
#include "dct_pictures.h"

namespace lox_test {

class Dct : public DctPictures {
 protected:
  // Runs `body` with the portable form, then again, on the same destination,
  // at the level of the test: the bytes are the same.
  template <typename Body>
  void at_both_levels(TestImage &dst, const Body &body) {
    const int level = lox::isa_level();
    const auto blank = dst.contents();
    lox::isa_limit(0);
    body();
    lox::isa_limit(level);
    if (level == 0) return;
    const auto portable = dst.contents();
    for (int p = 0; p < 4; ++p) {
      std::copy(blank[p].begin(), blank[p].end(), dst.buffer[p].data());
    }
    body();
    ASSERT_TRUE(holds(dst, portable)) << "unlike the portable form";
  }

  // Scales the pair and looks at all of both pictures.
  void check(const Job &job) {
    const Plan plan(pair_, job.prescale);
    const auto source = images_[0].contents();
    Canvas canvas(images_[1].contents());
    draw(plan, pair_[0], pair_[1], false, canvas);
    Scaler s(pair_, job.prescale);
    ASSERT_EQ(s.status, VEXO_OK) << job;
    ASSERT_NO_FATAL_FAILURE(at_both_levels(images_[1], [&] {
      ASSERT_EQ(s.run(), VEXO_OK);
    })) << job;
    ASSERT_TRUE(near(images_[1], canvas)) << job;
    ASSERT_TRUE(holds(images_[0], source)) << job;
  }

  static int32_t times(int32_t n, double ratio) {
    return static_cast<int32_t>(std::lround(n * ratio));
  }
  Content any_content() { return static_cast<Content>(random.between(0, 2)); }
};

}  // namespace lox_test
