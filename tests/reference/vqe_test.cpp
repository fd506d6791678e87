// SPDX-License-Identifier: Apache-2.0
// What the cases of enhancement do not see.
#include <gtest/gtest.h>
#include <orumlox/unprefixed.h>

#include <vector>

namespace lox_test {
namespace {

const std::vector<uint8_t> kLutAtLoad(lut, lut + 256);

TEST(Vqe, TheSharedTableIsFilledOnRequest) {
  EXPECT_EQ(kLutAtLoad, std::vector<uint8_t>(256));
  EXPECT_EQ(vexo_vqe_cs_init(1024), VEXO_OK);
  // Entry 2 k of strength 1024 is k; the odd ones are that of k = 0.
  EXPECT_EQ(lut[254], 127);
  EXPECT_EQ(lut[255], 0);
}

// Only the low 32 bits of a stride that would fit do.
TEST(Vqe, SizesAreNotCutOff) {
  constexpr int32_t k = 1 << 29;
  vexo_img src = {}, dst = {};
  src.format = dst.format = VEXO_FMT_RGB888;
  src.width[0] = 2 * k;
  src.stride[0] = -2 * k;
  dst.width[0] = k;
  dst.stride[0] = 3 * k;
  EXPECT_EQ(vexo_fpa(&src, &dst, 1), VEXO_ERR_ARG);
}

}  // namespace
}  // namespace lox_test
