// SPDX-License-Identifier: Apache-2.0
// Every YUV to RGB kernel of rows over widths, heights, strides, placements and
// every value of (Y, U, V): by name, and through vexo_csc where it takes the
// size.
#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

// Bytes added to a tight row: to the source's planes (each plane has another
// stride) and to the destination.
struct Padding {
  std::array<int32_t, 3> src;
  int32_t dst;
};
constexpr Padding kPaddings[] = {
    {{0, 0, 0}, 0}, {{16, 8, 24}, 32}, {{1, 3, 5}, 7}, {{0, 1, 0}, 1}};

class CscKernels : public SeededTest,
                   public testing::WithParamInterface<Source> {
 protected:
  // One picture of the parameter's layout, to every destination. It is random,
  // or has a frame of all values, which goes to fewer destinations unless it
  // is not subsampled.
  void check(int32_t width, int32_t height, const Padding &pad, Edge edge,
             std::optional<int32_t> frame = {}) {
    const Source &s = GetParam();
    const int32_t converted = s.converted(width);
    src_.img.format = s.format;
    for (int p = 0; p < s.planes; ++p) {
      const int32_t stride = s.row_bytes(p, width) + pad.src[p];
      const int32_t last_row = s.row_bytes(p, converted);
      src_.set_plane(p, width, height, stride,
                     plane_size(last_row, s.rows(p, height), stride), edge);
    }
    src_.fill(random);
    if (frame) lay_out(width, height, *frame);
    pixels_.clear();
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < converted; ++x) {
        pixels_.push_back(s.pixel(src_.img, x, y));
      }
    }
    for (int n = 0; n < kDestinations; ++n) {
      if (s.kernel(n) == nullptr) continue;
      const Destination &d = kDestinationTable[n];
      const bool chosen =
          d.format == VEXO_FMT_RGBA8888 || d.format == VEXO_FMT_RGB565;
      if (frame && s.format != VEXO_FMT_YUV444 && !chosen) continue;
      const int32_t stride = width * d.pixel_bytes + pad.dst;
      dst_.img.format = d.format;
      // The source alone decides how much is converted.
      dst_.set_plane(0, 8, 8, stride,
                     plane_size(converted * d.pixel_bytes, height, stride),
                     edge);
      std::vector<uint8_t> expected = dst_.buffer[0].copy();
      // Top to bottom: with a short stride the pixel beyond an odd row is
      // overwritten by the first of the next row.
      auto pixel = pixels_.begin();
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < converted; ++x, ++pixel) {
          d.pack(*pixel, &expected[size_t{1} * y * stride + x * d.pixel_bytes]);
        }
      }
      if (s.standard == VEXO_STD_DEFAULT && width >= 8 && height >= 8) {
        ASSERT_EQ(vexo_csc(&src_.img, &dst_.img), VEXO_OK);
      } else {
        s.kernel(n)(src_.img.plane, src_.img.width, src_.img.height,
                    src_.img.stride, dst_.img.stride, dst_.img.plane);
      }
      ASSERT_TRUE(holds(dst_.buffer[0], expected))
          << d.name << ", " << width << "x" << height << ", padding "
          << pad.src[0] << " " << pad.dst;
    }
  }

  // A chroma sample serves a block of 2 by 2 pixels: frame k has all 65536
  // pairs (U, V), and the lumas 4k to 4k + 3 in each block.
  void lay_out(int32_t width, int32_t height, int32_t frame) {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const int32_t block = y / 2 * (width / 2) + x / 2;
        const Source::Samples at = GetParam().samples(src_.img, x, y);
        *at.u = static_cast<uint8_t>(block & 255);
        *at.v = static_cast<uint8_t>(block >> 8);
        *at.y = static_cast<uint8_t>(4 * frame + x % 2 + y % 2 * 2);
      }
    }
  }

  TestImage src_{0};
  TestImage dst_{0};
  std::vector<Channels> pixels_;
};

TEST_P(CscKernels, ConvertEverySize) {
  for (int32_t width = -1; width <= 1280; width += width < 100 ? 1 : 295) {
    for (const int32_t height : {-8, -1, 0, 1, 2, 3, 4, 5, 8, 9}) {
      for (const Padding &pad : kPaddings) {
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          ASSERT_NO_FATAL_FAILURE(check(width, height, pad, edge));
        }
      }
    }
  }
}

TEST_P(CscKernels, ConvertEveryValue) {
  const int32_t format = GetParam().format;
  const bool standard = GetParam().standard != VEXO_STD_DEFAULT;
  for (int32_t frame = 0; frame < 64; ++frame) {
    ASSERT_NO_FATAL_FAILURE(check(512, 512, {}, Edge::kEnd, frame));
    // Rows too short for a vector, or for the steps of eight beyond which one
    // of the standards has another rule.
    if (format != VEXO_FMT_YUV420 && format != VEXO_FMT_YUYV && !standard) {
      continue;
    }
    ASSERT_NO_FATAL_FAILURE(check(2, 131072, {}, Edge::kEnd, frame));
  }
}

TEST_P(CscKernels, ConvertPicturesBeyondTheCaches) {
  // These may be written past the caches: rows that whole vectors fill, rows
  // that end in a part of one, rows that are not aligned. One source of each
  // way to walk the rows is enough.
  for (const int32_t format : {VEXO_FMT_NV12, VEXO_FMT_YUV444, VEXO_FMT_YUYV}) {
    if (format != GetParam().format) continue;
    for (const auto &[width, pad] :
         {std::pair{1376, 0}, std::pair{1372, 16}, std::pair{1375, 4}}) {
      ASSERT_NO_FATAL_FAILURE(check(width, 1537, {{}, pad}, Edge::kStart));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, CscKernels, testing::ValuesIn(kSourceTable),
                         [](const auto &i) { return i.param.name; });
INSTANTIATE_TEST_SUITE_P(Standards, CscKernels,
                         testing::ValuesIn(kStandardTable),
                         [](const auto &i) { return i.param.name; });

}  // namespace
}  // namespace lox_test
