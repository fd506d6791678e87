// SPDX-License-Identifier: Apache-2.0
// Tone mapping of pictures without a pixel, and of the tallest.
#include <gtest/gtest.h>
#include <orumlox/hdr.h>

#include <cstdint>

namespace lox_test {
namespace {

// A luminance is chosen all the same, and no thread starts.
TEST(Empty, ToneMappingStillChoosesALuminance) {
  constexpr int32_t kSizes[][2] = {{0, INT32_MAX},
                                   {INT32_MAX, 0},
                                   {INT32_MIN, INT32_MAX},
                                   {INT32_MAX, INT32_MIN},
                                   {-1, -1}};
  for (const auto &[width, height] : kSizes) {
    vexo_img img = {};
    img.format = VEXO_FMT_P010LE;
    img.width[0] = width;
    img.height[0] = height;
    img.mode = VEXO_HDR_MODE_MEASURE;
    EXPECT_EQ(vexo_hdr10_to_sdr8(&img, &img, 0), VEXO_OK);
    EXPECT_EQ(img.source_nit, 1000);
    EXPECT_EQ(vexo_hlg_to_sdr8(&img, &img), VEXO_OK);
  }
}

// One row over and over, and a destination whose bands all begin at its start.
TEST(Tallest, ToneMappingEndsWithTheLastBand) {
  uint16_t sample[2] = {940, 512};
  uint8_t luma[4] = {};
  vexo_img src = {};
  src.format = VEXO_FMT_YUV420PLANAR16;
  src.width[0] = 1;
  src.height[0] = INT32_MAX;
  src.plane[0] = reinterpret_cast<uint8_t *>(&sample[0]);
  src.plane[1] = src.plane[2] = reinterpret_cast<uint8_t *>(&sample[1]);
  vexo_img dst = {};
  dst.plane[0] = luma;
  EXPECT_EQ(vexo_hdr10_to_sdr8(&src, &dst, 0), VEXO_OK);
  for (const uint8_t y : luma) EXPECT_EQ(y, luma[0]);
  EXPECT_GT(luma[0], 200);
}

}  // namespace
}  // namespace lox_test
