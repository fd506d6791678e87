// SPDX-License-Identifier: Apache-2.0
// Every YUV to RGB kernel, called by name and through vexo_csc, over widths,
// heights, strides, contents and placements.
#include <array>
#include <cstdint>
#include <string>
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
  // One picture of the parameter's layout, to every destination.
  void check(int32_t width, int32_t height, const Padding& pad, Edge edge,
             Fill fill) {
    const Source& s = GetParam();
    src_.img.format = s.format;
    for (int p = 0; p < s.planes; ++p) {
      const int32_t rows = s.plane_height(p, height);
      const int32_t stride = s.row_bytes(p, width) + pad.src[p];
      src_.set_plane(p, s.plane_width(p, width), rows, stride,
                     plane_size(s.last_row_bytes(p, width), rows, stride),
                     edge);
    }
    src_.fill(random, fill);

    const int32_t written = s.whole_pairs ? (width + 1) / 2 * 2 : width;
    pixels_.clear();
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < written; ++x) {
        pixels_.push_back(convert(s.locate(src_.img, x, y)));
      }
    }
    for (const Destination& d : kDestinationTable) {
      vexo_csc_kernel* const kernel = kernel_of(s.format, d.format);
      if (kernel == nullptr) continue;
      const int32_t stride = width * d.pixel_bytes + pad.dst;
      const size_t size = plane_size(written * d.pixel_bytes, height, stride);
      expected_.resize(size);
      fill_canary(expected_.data(), size);
      // Top to bottom: with a short stride the pixel beyond an odd row is
      // overwritten by the first of the next row.
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < written; ++x) {
          d.pack(
              pixels_[static_cast<size_t>(y * written + x)],
              &expected_[static_cast<size_t>(y * stride + x * d.pixel_bytes)]);
        }
      }
      dst_.img.format = d.format;
      dst_.set_plane(0, width, height, stride, size, edge);
      kernel(src_.img.plane, src_.img.width, src_.img.height, src_.img.stride,
             dst_.img.stride, dst_.img.plane);
      ASSERT_TRUE(holds(dst_.buffer[0], expected_, stride))
          << label(d, width, height, pad, edge);
      if (width < 8 || height < 8) continue;
      dst_.set_plane(0, width, height, stride, size, edge);
      ASSERT_EQ(vexo_csc(&src_.img, &dst_.img), VEXO_OK);
      ASSERT_TRUE(holds(dst_.buffer[0], expected_, stride))
          << "vexo_csc, " << label(d, width, height, pad, edge);
    }
  }

  std::string label(const Destination& d, int32_t width, int32_t height,
                    const Padding& pad, Edge edge) {
    return std::string(GetParam().name) + " to " + d.name + ", " +
           std::to_string(width) + "x" + std::to_string(height) + ", padding " +
           std::to_string(pad.src[0]) + " " + std::to_string(pad.dst) +
           (edge == Edge::kEnd ? ", at the end" : ", at the start");
  }

  TestImage src_{0};
  TestImage dst_{0};
  std::vector<Channels> pixels_;
  std::vector<uint8_t> expected_;
};

TEST_P(CscKernels, ConvertEverySize) {
  for (int32_t width = 1; width <= 100; ++width) {
    for (const int32_t height : {1, 2, 3, 4, 5, 8, 9}) {
      for (const Padding& pad : kPaddings) {
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          ASSERT_NO_FATAL_FAILURE(
              check(width, height, pad, edge, Fill::kRandom));
        }
      }
    }
  }
}

TEST_P(CscKernels, ConvertExtremesAndLargerSizes) {
  for (const Fill fill : kFills) {
    for (const int32_t width : {2, 15, 36, 63, 64, 100, 131, 257, 1280}) {
      for (const int32_t height : {2, 3, 8, 17}) {
        for (const Padding& pad : kPaddings) {
          ASSERT_NO_FATAL_FAILURE(check(width, height, pad, Edge::kEnd, fill));
        }
      }
    }
  }
}

TEST_P(CscKernels, ConvertPicturesBeyondTheCaches) {
  // These may be written past the caches: rows that whole vectors fill, rows
  // that end in a part of one, rows that are not aligned. One source of each
  // way to walk the rows is enough.
  const int32_t format = GetParam().format;
  if (format != VEXO_FMT_NV12 && format != VEXO_FMT_YUV444 &&
      format != VEXO_FMT_YUYV) {
    GTEST_SKIP();
  }
  for (const auto& [width, padding] :
       {std::pair{1376, 0}, std::pair{1372, 16}, std::pair{1375, 4}}) {
    ASSERT_NO_FATAL_FAILURE(
        check(width, 1537, {{0, 0, 0}, padding}, Edge::kStart, Fill::kRandom));
  }
}

TEST_P(CscKernels, WithoutAreaWriteNothing) {
  for (const auto& size :
       {std::array{0, 2}, std::array{2, 0}, std::array{-1, 2},
        std::array{2, -1}, std::array{-8, 2}, std::array{8, -2},
        std::array{8, -1}, std::array{-2, -2}}) {
    const int32_t width[4] = {size[0], size[0], size[0], size[0]};
    const int32_t height[4] = {size[1], size[1], size[1], size[1]};
    const int32_t stride[4] = {64, 64, 64, 64};
    GuardedBuffer nothing(0);
    uint8_t* const plane[4] = {nothing.data(), nothing.data(), nothing.data(),
                               nothing.data()};
    for (const Destination& d : kDestinationTable) {
      vexo_csc_kernel* const kernel = kernel_of(GetParam().format, d.format);
      if (kernel == nullptr) continue;
      kernel(plane, width, height, stride, stride, plane);
      EXPECT_TRUE(holds(nothing, {})) << d.name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, CscKernels, testing::ValuesIn(kSourceTable),
                         [](const auto& instance) {
                           return instance.param.name;
                         });

}  // namespace
}  // namespace lox_test
