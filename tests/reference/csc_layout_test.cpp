// SPDX-License-Identifier: Apache-2.0
// Conversions between YUV layouts.
#include <orumlox/csc.h>

#include <cstdint>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

class CscLayout : public SeededTest {};

TEST_F(CscLayout, Yuv420ToYv12SwapsTheChromaPlanes) {
  struct Sizes {
    int32_t width[3];
    int32_t height[3];
    int32_t src_stride[3];
    int32_t dst_stride[3];
  };
  constexpr Sizes kCases[] = {
      {{16, 8, 8}, {8, 4, 4}, {16, 8, 8}, {16, 8, 8}},
      {{17, 9, 9}, {9, 5, 5}, {17, 9, 9}, {20, 12, 12}},
      {{18, 9, 9}, {10, 5, 5}, {31, 11, 11}, {18, 9, 13}},
      // Each chroma plane is read at the other's stride, with its own size,
      // and written at the stride of the plane it goes to.
      {{16, 8, 8}, {8, 4, 4}, {16, 9, 12}, {16, 8, 10}},
      {{40, 20, 20}, {12, 6, 6}, {64, 32, 20}, {41, 21, 37}},
      {{24, 12, 7}, {8, 3, 5}, {24, 15, 13}, {24, 16, 14}},
  };
  for (const Sizes& c : kCases) {
    TestImage src(VEXO_FMT_YUV420);
    TestImage dst(VEXO_FMT_YV12);
    const int other[3] = {0, 2, 1};
    for (int p = 0; p < 3; ++p) {
      src.set_plane(
          p, c.width[p], c.height[p], c.src_stride[p],
          plane_size(c.width[p], c.height[p], c.src_stride[other[p]]));
      // The destination's chroma sizes are not looked at.
      dst.set_plane(
          p, p == 0 ? c.width[0] : -1, p == 0 ? c.height[0] : -1,
          c.dst_stride[p],
          plane_size(c.width[other[p]], c.height[other[p]], c.dst_stride[p]));
    }
    src.fill(random);
    TestImage::Contents expected = dst.contents();
    for (int p = 0; p < 3; ++p) {
      const int q = other[p];
      for (int32_t y = 0; y < c.height[p]; ++y) {
        for (int32_t x = 0; x < c.width[p]; ++x) {
          expected[q][y * c.dst_stride[q] + x] =
              src.img.plane[p][y * c.src_stride[q] + x];
        }
      }
    }
    ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected)) << c.width[0] << "x" << c.height[0];
  }
}

class YuyvToYuv420 : public SeededTest {
 protected:
  void check(int32_t width, int32_t height, int32_t src_pad,
             const int32_t (&dst_pad)[3], Edge edge, Fill fill) {
    const int32_t chroma_width = (width + 1) / 2;
    const int32_t chroma_height = (height + 1) / 2;
    const int32_t src_row = chroma_width * 4;
    const int32_t src_stride = src_row + src_pad;
    src.set_plane(0, width, height, src_stride,
                  plane_size(src_row, height, src_stride), edge);
    src.fill(random, fill);
    const uint8_t* bytes = src.img.plane[0];

    const auto reset = [&] {
      dst.set_plane(0, width, height, width + dst_pad[0],
                    plane_size(width, height, width + dst_pad[0]), edge);
      for (int p = 1; p < 3; ++p) {
        const int32_t stride = chroma_width + dst_pad[p];
        dst.set_plane(p, chroma_width, chroma_height, stride,
                      plane_size(chroma_width, chroma_height, stride), edge);
      }
    };
    reset();
    TestImage::Contents expected = dst.contents();
    for (int32_t y = 0; y < height; ++y) {
      const uint8_t* row = bytes + y * src_stride;
      for (int32_t x = 0; x < width; ++x) {
        expected[0][y * dst.img.stride[0] + x] = row[x * 2];
      }
      for (int32_t x = 0; x < chroma_width; ++x) {
        for (int p = 1; p < 3; ++p) {
          uint8_t& c = expected[p][y / 2 * dst.img.stride[p] + x];
          const uint8_t sample = row[x * 4 + (p == 1 ? 1 : 3)];
          c = y % 2 == 0 ? sample : static_cast<uint8_t>((c + sample) >> 1);
        }
      }
    }
    vexo_csc_yuyv_to_yuv420(src.img.plane, src.img.width, src.img.height,
                            src.img.stride, dst.img.stride, dst.img.plane);
    ASSERT_TRUE(holds(dst, expected)) << width << "x" << height;
    if (width < 8 || height < 8) return;
    reset();
    ASSERT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected)) << width << "x" << height;
  }

  TestImage src{VEXO_FMT_YUYV};
  TestImage dst{VEXO_FMT_YUV420};
};

TEST_F(YuyvToYuv420, AveragesTheChromaOfRowPairs) {
  for (int32_t width = 1; width <= 100; ++width) {
    for (const int32_t height : {1, 2, 3, 4, 5, 8, 9}) {
      for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
        ASSERT_NO_FATAL_FAILURE(
            check(width, height, 0, {0, 0, 0}, edge, Fill::kRandom));
        ASSERT_NO_FATAL_FAILURE(
            check(width, height, 8, {5, 3, 16}, edge, Fill::kRandom));
        ASSERT_NO_FATAL_FAILURE(
            check(width, height, 1, {0, 1, 0}, edge, Fill::kRandom));
      }
    }
  }
  for (const Fill fill : kFills) {
    for (const int32_t width : {9, 64, 257, 1280}) {
      ASSERT_NO_FATAL_FAILURE(check(width, 16, 4, {1, 2, 3}, Edge::kEnd, fill));
    }
  }
}

TEST_F(YuyvToYuv420, TruncatesTheMeanOfEveryPairOfValues) {
  // Column x and row pair y of the chroma average x and y: U has x in the
  // upper row, V has y there.
  constexpr int32_t kWidth = 512;
  constexpr int32_t kHeight = 512;
  src.set_plane(0, kWidth, kHeight, kWidth * 2, kWidth * 2 * kHeight);
  dst.set_plane(0, kWidth, kHeight, kWidth, kWidth * kHeight);
  for (int p = 1; p < 3; ++p) {
    dst.set_plane(p, kWidth / 2, kHeight / 2, kWidth / 2,
                  kWidth / 2 * kHeight / 2);
  }
  TestImage::Contents expected = dst.contents();
  for (int32_t y = 0; y < kHeight; ++y) {
    for (int32_t x = 0; x < kWidth; ++x) {
      uint8_t* at = src.img.plane[0] + (y * kWidth + x) * 2;
      at[0] = static_cast<uint8_t>(x + 3 * y);
      const bool x_first = y % 2 == x % 2;
      at[1] = static_cast<uint8_t>(x_first ? x / 2 : y / 2);
      expected[0][y * kWidth + x] = at[0];
    }
  }
  for (int32_t y = 0; y < kHeight / 2; ++y) {
    for (int32_t x = 0; x < kWidth / 2; ++x) {
      for (int p = 1; p < 3; ++p) {
        expected[p][y * kWidth / 2 + x] = static_cast<uint8_t>((x + y) >> 1);
      }
    }
  }
  EXPECT_EQ(vexo_csc(&src.img, &dst.img), VEXO_OK);
  EXPECT_TRUE(holds(dst, expected));
}

TEST_F(YuyvToYuv420, WithoutAreaWritesNothing) {
  for (const auto& size :
       {std::array{0, 2}, std::array{2, 0}, std::array{-1, 2},
        std::array{2, -1}, std::array{-8, -8}}) {
    const int32_t width[4] = {size[0], size[0], size[0], size[0]};
    const int32_t height[4] = {size[1], size[1], size[1], size[1]};
    const int32_t stride[4] = {64, 64, 64, 64};
    GuardedBuffer nothing(0);
    uint8_t* const plane[4] = {nothing.data(), nothing.data(), nothing.data(),
                               nothing.data()};
    vexo_csc_yuyv_to_yuv420(plane, width, height, stride, stride, plane);
    EXPECT_TRUE(holds(nothing, {}));
  }
}

}  // namespace
}  // namespace lox_test
