// SPDX-License-Identifier: Apache-2.0
// Conversions between YUV layouts.
#include <orumlox/csc.h>

#include <cstdint>

#include "support/image.h"

namespace lox_test {
namespace {

using CscLayout = SeededTest;

// Each chroma plane is read at the other's stride, with its own size, and
// written at the stride of the plane it goes to.
TEST_F(CscLayout, Yuv420ToYv12SwapsTheChromaPlanes) {
  constexpr int kOther[3] = {0, 2, 1};
  for (int run = 0; run < 200; ++run) {
    TestImage src(VEXO_FMT_YUV420);
    TestImage dst(VEXO_FMT_YV12);
    // Half of the runs have planes without padding.
    const bool tight = run % 2 == 0;
    const auto pad = [&] { return tight ? 0 : random.between(0, 9); };
    const int32_t half = random.between(4, 35);
    const int32_t width[3] = {half * 2, tight ? half : half - 3, half};
    const int32_t height[3] = {random.between(8, 20), random.between(-1, 9), 5};
    const int32_t stride[3] = {half * 2 + pad(), half + pad(), half + pad()};
    for (int p = 0; p < 3; ++p) {
      const int to = kOther[p];
      src.set_plane(p, width[p], height[p], stride[p],
                    plane_size(width[p], height[p], stride[to]));
      // The destination's chroma sizes are not looked at.
      const int32_t dst_stride = width[p] + pad();
      dst.set_plane(to, p == 0 ? 8 : -1, p == 0 ? 8 : -1, dst_stride,
                    plane_size(width[p], height[p], dst_stride));
    }
    src.fill(random);
    TestImage::Contents expected = dst.contents();
    for (int p = 0; p < 3; ++p) {
      const int to = kOther[p];
      copy_rows(src.img.plane[p], stride[to], width[p], height[p],
                dst.img.stride[to], expected[to].data());
    }
    ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected)) << "run " << run;
  }
}

TEST_F(CscLayout, YuyvToYuv420AveragesTheChromaOfRowPairs) {
  TestImage src(VEXO_FMT_YUYV);
  TestImage dst(VEXO_FMT_YUV420);
  const auto check = [&](int32_t width, int32_t height, bool tight) {
    const auto pad = [&] { return tight ? 0 : random.between(0, 17); };
    const Edge edge = random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart;
    const int32_t pairs = (width + 1) / 2;
    const int32_t src_stride = pairs * 4 + pad();
    src.set_plane(0, width, height, src_stride,
                  plane_size(pairs * 4, height, src_stride), edge);
    src.fill(random);
    for (int p = 0; p < 3; ++p) {
      const int32_t columns = p == 0 ? width : pairs;
      const int32_t rows = p == 0 ? height : (height + 1) / 2;
      const int32_t stride = columns + pad();
      // The source alone decides how much is converted.
      dst.set_plane(p, 8, 8, stride, plane_size(columns, rows, stride), edge);
    }
    TestImage::Contents expected = dst.contents();
    for (int32_t y = 0; y < height; ++y) {
      const uint8_t* row = src.img.plane[0] + y * src_stride;
      for (int32_t x = 0; x < width; ++x) {
        expected[0][y * dst.img.stride[0] + x] = row[x * 2];
        for (int p = 1; p < 3 && x % 2 == 0; ++p) {
          uint8_t& c = expected[p][y / 2 * dst.img.stride[p] + x / 2];
          const uint8_t sample = row[x * 2 + (p == 1 ? 1 : 3)];
          c = y % 2 == 0 ? sample : static_cast<uint8_t>((c + sample) >> 1);
        }
      }
    }
    if (width >= 8 && height >= 8) {
      ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    } else {
      vexo_csc_yuyv_to_yuv420(src.img.plane, src.img.width, src.img.height,
                              src.img.stride, dst.img.stride, dst.img.plane);
    }
    ASSERT_TRUE(holds(dst, expected)) << width << "x" << height;
  };
  for (const bool tight : {true, false}) {
    for (const int32_t height : {-8, -1, 0, 1, 2, 3, 4, 5, 8, 9, 16}) {
      for (int32_t width = -1; width <= 300; ++width) {
        ASSERT_NO_FATAL_FAILURE(check(width, height, tight));
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
