// SPDX-License-Identifier: Apache-2.0
// Crop and padding, byte by byte, for every format code.
#include <orumlox/common.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

// How a plane is addressed from the luma origin (x, y).
struct PlaneRule {
  int32_t pixel_bytes;  // of a column of the plane
  // The column is (x + 1) / 2 and rows have the plane's own width; otherwise
  // both are plane 0's, of chroma pairs as well.
  bool half_x;
  bool half_y;  // the row is (y + 1) / 2
  uint8_t black;

  int32_t row(int32_t y) const { return half_y ? (y + 1) / 2 : y; }
  int32_t byte(int32_t x) const {
    return (half_x ? (x + 1) / 2 : x) * pixel_bytes;
  }
};

std::vector<PlaneRule> rules_of(bool crop, int32_t format) {
  constexpr PlaneRule kLuma{1, false, false, 16};
  constexpr PlaneRule kChroma{1, true, true, 128};
  switch (format) {
    case VEXO_FMT_YUV420:
      return {kLuma, kChroma, kChroma};
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return {kLuma, {1, false, true, 128}};
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
      return {{3, false, false, 0}};
  }
  const int32_t last = crop ? VEXO_FMT_ABGR8888 : VEXO_FMT_BGRA8888;
  if (format < VEXO_FMT_RGBA8888 || format > last) return {};
  return {{4, false, false, 0}};
}

int32_t run(bool crop, const TestImage &src, const TestImage &dst) {
  return (crop ? vexo_crop : vexo_padding)(&src.img, &dst.img);
}

class CropPadding : public SeededTest {
 protected:
  // Moves a picture of the given size from (crop) or to (padding) the place
  // `at` of a larger one. With `spare` there is room beyond it: columns between
  // all rows and, in the buffer, rows below the larger picture's height.
  void check(bool crop, int32_t format, const int32_t (&at)[2],
             const int32_t (&size)[2], int32_t spare) {
    const std::vector<PlaneRule> rules = rules_of(crop, format);
    TestImage src(format);
    // The destination's own format is not read.
    TestImage dst(spare == 0 ? format : 12345);
    src.img.offset_x = at[0];
    src.img.offset_y = at[1];
    TestImage &inner = crop ? dst : src;
    TestImage &outer = crop ? src : dst;

    const int planes = static_cast<int>(rules.size());
    int32_t row_bytes[3];
    for (int p = 0; p < planes; ++p) {
      const PlaneRule &r = rules[p];
      // The size of a chroma plane does not follow from the luma's.
      const int32_t width = r.half_x ? (size[0] + 1) / 2 + p : size[0];
      const int32_t rows = p > 0 ? (size[1] + 1) / 2 + p : size[1];
      row_bytes[p] = width * r.pixel_bytes;
      const int32_t stride = row_bytes[p] + spare;
      inner.set_plane(p, p == 0 || r.half_x ? width : -1, rows, stride,
                      plane_size(row_bytes[p], rows, stride));
      const int32_t outer_stride = r.byte(at[0]) + row_bytes[p] + 2 * spare;
      const int32_t outer_rows = r.row(at[1]) + std::max(rows, 0) + spare;
      // A source that crop cuts a window out of says nothing of its size.
      outer.set_plane(p, crop || p > 0 ? -1 : at[0] + size[0],
                      crop || p > 0 ? -1 : at[1] + size[1], outer_stride,
                      static_cast<size_t>(outer_stride) * outer_rows);
      outer.img.buf_height[p] = outer_rows;
    }
    src.fill(random);

    TestImage::Contents expected = dst.contents();
    for (int p = 0; p < planes; ++p) {
      std::vector<uint8_t> &bytes = expected[p];
      if (!crop) std::fill(bytes.begin(), bytes.end(), rules[p].black);
      // Nothing to copy, and perhaps nothing to copy from.
      if (inner.img.height[p] < 1) continue;
      const int32_t place =
          rules[p].row(at[1]) * outer.img.stride[p] + rules[p].byte(at[0]);
      copy_rows(src.img.plane[p] + (crop ? place : 0), src.img.stride[p],
                row_bytes[p], inner.img.height[p], dst.img.stride[p],
                bytes.data() + (crop ? 0 : place));
    }
    ASSERT_EQ(run(crop, src, dst), VEXO_OK);
    ASSERT_TRUE(holds(dst, expected))
        << (crop ? "crop " : "padding ") << format << ", " << size[0] << "x"
        << size[1] << " at " << at[0] << "," << at[1];
  }
};

TEST_F(CropPadding, MovesThePictureBetweenItsPlaces) {
  constexpr int32_t kPlaces[][2] = {{0, 0}, {1, 0}, {0, 1},  {1, 1},
                                    {2, 2}, {3, 6}, {20, 11}};
  constexpr int32_t kSizes[][2] = {{1, 1},  {2, 2},  {7, 5}, {16, 4},
                                   {33, 3}, {40, 8}, {8, 0}, {8, -3}};
  for (const bool crop : {false, true}) {
    for (const int32_t format : {1, 6, 7, 400, 401, 500, 501, 502, 503}) {
      if (rules_of(crop, format).empty()) continue;
      for (const auto &at : kPlaces) {
        for (const auto &size : kSizes) {
          for (const int32_t spare : {0, 3}) {
            ASSERT_NO_FATAL_FAILURE(check(crop, format, at, size, spare));
          }
        }
      }
    }
  }
}

TEST_F(CropPadding, RefuseWithoutWriting) {
  const struct {
    int32_t src_size[2], offset[2], dst_size[2];
    bool fits;
  } kCases[] = {
      {{100, 100}, {20, 10}, {120, 110}, true},
      {{100, 100}, {20, 10}, {119, 110}, false},
      {{100, 100}, {20, 10}, {120, 109}, false},
      {{1, 1}, {0, 0}, {-5, -5}, false},
      // The sum is compared, however large it is.
      {{INT32_MAX, 1}, {INT32_MAX, 0}, {INT32_MAX, 1}, false},
      {{1, INT32_MAX}, {0, INT32_MAX}, {1, INT32_MAX}, false},
  };
  // Without memory: a plane that is touched ends the test.
  TestImage src(0);
  TestImage dst(VEXO_FMT_RGB888);
  for (const auto &c : kCases) {
    src.img.width[0] = c.src_size[0];
    src.img.height[0] = c.src_size[1];
    src.img.offset_x = c.offset[0];
    src.img.offset_y = c.offset[1];
    dst.img.width[0] = c.dst_size[0];
    dst.img.height[0] = c.dst_size[1];
    for (src.img.format = -3; src.img.format <= 610; ++src.img.format) {
      for (const bool crop : {false, true}) {
        // Too small a destination of a padding is reported before the format.
        const bool fits = crop || c.fits;
        if (fits && !rules_of(crop, src.img.format).empty()) continue;
        ASSERT_EQ(run(crop, src, dst),
                  fits ? VEXO_ERR_UNSUPPORTED : VEXO_ERR_ARG)
            << src.img.format;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
