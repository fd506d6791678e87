// SPDX-License-Identifier: Apache-2.0
// Every kernel with an RGB source over widths, heights, strides and placements,
// and over every value of a pixel.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

struct Yuv {
  int32_t y, u, v;
};

// The weights of red, green and blue, in 256ths. Luma is truncated and chroma
// rounded.
struct Weights {
  int32_t y[3], black, u[3], v[3];

  static int32_t sum(const int32_t (&w)[3], const Channels &c) {
    return w[0] * (c.r >> 8) + w[1] * (c.g >> 8) + w[2] * (c.b >> 8);
  }
  Yuv convert(const Channels &c) const {
    return {(sum(y, c) >> 8) + black, ((sum(u, c) + 128) >> 8) + 128,
            ((sum(v, c) + 128) >> 8) + 128};
  }
};
constexpr Weights kDefault = {
    {66, 129, 25}, 16, {-38, -74, 112}, {112, -94, -18}};
constexpr Weights kBt601Full = {
    {77, 150, 29}, 0, {-43, -84, 127}, {127, -106, -21}};
constexpr Weights kBt709 = {
    {47, 157, 25}, 16, {-26, -86, 112}, {112, -102, -10}};

// Bytes added to a tight row: to the source's, and to each destination plane's.
struct Padding {
  int32_t src, dst[3];
};
constexpr Padding kPaddings[] = {
    {0, {0, 0, 0}}, {16, {32, 8, 24}}, {1, {3, 1, 5}}, {7, {0, 1, 0}}};

class RgbKernels : public SeededTest,
                   public testing::WithParamInterface<Conversion> {
 protected:
  // A random picture. From `first` on, 4096 values of a pixel lie side by side
  // where they give luma and chroma.
  void check(int32_t width, int32_t height, const Padding &pad, Edge edge,
             std::optional<int32_t> first = {}) {
    const int32_t bytes = from_.pixel_bytes;
    const int32_t stride = width * bytes + pad.src;
    src_.set_plane(0, width, height, stride,
                   plane_size(width * bytes, height, stride), edge);
    src_.fill(random);
    for (int32_t n = 0; first && n < 4096; ++n) {
      uint8_t *pixel = src_.img.plane[0] + n * (block() * bytes);
      for (int i = 0; i < std::min(bytes, 3); ++i) {
        pixel[i] = static_cast<uint8_t>((*first + n) >> (8 * i));
      }
    }
    if (to_rgb_ != nullptr) {
      set_destination(0, width * to_rgb_->pixel_bytes, height, pad, edge);
    }
    for (int p = 0; to_rgb_ == nullptr && p < to_yuv_.planes; ++p) {
      const int32_t side = p == 0 ? 1 : block();
      set_destination(p, to_yuv_.row_bytes(p, width / side * side),
                      height / side, pad, edge);
    }
    TestImage::Contents expected = dst_.contents();
    convert(width, height, expected);
    GetParam().kernel(src_.img.plane, src_.img.width, src_.img.height,
                      src_.img.stride, dst_.img.stride, dst_.img.plane);
    ASSERT_TRUE(holds(dst_, expected)) << width << "x" << height << ", padding "
                                       << pad.src << " " << pad.dst[0];
  }

  // How many pixels of a row share a chroma sample.
  int32_t block() const {
    return to_rgb_ != nullptr ? 1 : 1 << to_yuv_.cb.x_shift;
  }

 private:
  // The source alone decides how much is converted.
  void set_destination(int p, int32_t row_bytes, int32_t rows,
                       const Padding &pad, Edge edge) {
    const int32_t stride = std::max(row_bytes, 0) + pad.dst[p];
    dst_.set_plane(p, 8, 8, stride, plane_size(row_bytes, rows, stride), edge);
  }

  void convert(int32_t width, int32_t height, TestImage::Contents &expected) {
    const int32_t standard = GetParam().standard;
    const Weights &weights = standard == VEXO_STD_BT601_FULL ? kBt601Full
                             : standard == VEXO_STD_BT709    ? kBt709
                                                             : kDefault;
    vexo_img out = dst_.img;
    for (int p = 0; p < 4; ++p) out.plane[p] = expected[p].data();
    const auto put = [&](const Place &place, int32_t x, int32_t y, int32_t c) {
      *Source::at(place, false, out, x, y) = static_cast<uint8_t>(c);
    };
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const Channels c =
            from_.unpack(src_.img.plane[0] + int64_t{y} * src_.img.stride[0] +
                         x * from_.pixel_bytes);
        if (to_rgb_ != nullptr) {
          to_rgb_->pack(c, out.plane[0] + int64_t{y} * out.stride[0] +
                               x * to_rgb_->pixel_bytes);
          continue;
        }
        const Yuv sample = weights.convert(c);
        put(to_yuv_.luma, x, y, sample.y);
        // Whole blocks have chroma: their top left pixel's.
        const int32_t last = block() - 1;
        if ((x & last) != 0 || (y & last) != 0) continue;
        if (x + last >= width || y + last >= height) continue;
        put(to_yuv_.cb, x, y, sample.u);
        put(to_yuv_.cr, x, y, sample.v);
      }
    }
  }

  const Destination &from_ = *rgb_layout(GetParam().src);
  // The destination's layout is one of these.
  const Destination *const to_rgb_ = rgb_layout(GetParam().dst);
  const Source to_yuv_ = yuv_layout(GetParam().dst);
  TestImage src_{0};
  TestImage dst_{0};
};

TEST_P(RgbKernels, ConvertEverySize) {
  for (int32_t width = -1; width <= 1923; width += width == 100 ? 1817 : 1) {
    for (const int32_t height : {-1, 0, 1, 2, 3, 4, 5, 8, 9}) {
      if (width > 100 && height > 3) continue;
      for (const Padding &pad : kPaddings) {
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          ASSERT_NO_FATAL_FAILURE(check(width, height, pad, edge));
        }
      }
    }
  }
}

// The ways to compute that differ: 16- and 32-bit pixels to each layout, by
// each standard. Others differ from them in the order of bytes or planes.
std::vector<Conversion> distinct_routes() {
  std::vector<Conversion> routes;
  for (const Conversion &r : rgb_routes()) {
    const bool pixels =
        r.src == VEXO_FMT_RGB565 || r.src == VEXO_FMT_BGR565 ||
        (r.src == VEXO_FMT_RGBA8888 &&
         (r.standard != VEXO_STD_BT601_FULL || r.dst == VEXO_FMT_YUV420));
    if (pixels && r.dst != VEXO_FMT_YV12 && r.dst != VEXO_FMT_NV21) {
      routes.push_back(r);
    }
  }
  return routes;
}

using RgbRoutes = RgbKernels;

TEST_P(RgbRoutes, ConvertEveryValue) {
  const int bits = rgb_layout(GetParam().src)->pixel_bytes == 2 ? 16 : 24;
  for (int32_t first = 0; first < 1 << bits; first += 4096) {
    ASSERT_NO_FATAL_FAILURE(
        check(4096 * block(), block(), {}, Edge::kEnd, first));
  }
}

INSTANTIATE_TEST_SUITE_P(, RgbKernels, testing::ValuesIn(rgb_routes()),
                         [](const auto &i) { return i.param.name; });
INSTANTIATE_TEST_SUITE_P(, RgbRoutes, testing::ValuesIn(distinct_routes()),
                         [](const auto &i) { return i.param.name; });

}  // namespace
}  // namespace lox_test
