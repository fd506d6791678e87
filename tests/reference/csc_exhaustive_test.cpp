// SPDX-License-Identifier: Apache-2.0
// Every one of the 2^24 values of (Y, U, V), through every source layout.
//
// The values are laid out so that a chroma sample serves a block of 2 by 2
// pixels: frame k has all 65536 pairs (U, V), and the lumas 4k to 4k + 3 in
// each block. All layouts can hold such a frame, so the expected pixels are
// made once for each.
#include <cstdint>
#include <deque>
#include <vector>

#include "csc_model.h"
#include "support/image.h"

namespace lox_test {
namespace {

constexpr int32_t kFrames = 64;
constexpr int32_t kPixels = 512 * 512;

struct Layout {
  int32_t width;
  int32_t height;
};

// The chroma of a block and the luma of a pixel in it.
int32_t block(const Layout& l, int32_t x, int32_t y) {
  return y / 2 * (l.width / 2) + x / 2;
}
int32_t luma(int32_t frame, int32_t x, int32_t y) {
  return 4 * frame + x % 2 + y % 2 * 2;
}

class CscExhaustive : public testing::Test {
 protected:
  CscExhaustive() : red_(65536), blue_(65536) {
    for (int32_t y = 0; y < 256; ++y) {
      for (int32_t c = 0; c < 256; ++c) {
        const int32_t l = 298 * (y - 16) + 128;
        red_[y * 256 + c] = l + 409 * (c - 128);
        blue_[y * 256 + c] = l + 516 * (c - 128);
      }
    }
  }

  Channels expected_pixel(int32_t y, int32_t u, int32_t v) const {
    return {red_[y * 256 + v],
            298 * (y - 16) - 100 * (u - 128) - 208 * (v - 128) + 128,
            blue_[y * 256 + u]};
  }

  // Lays out a source that all frames go through; its chroma never changes.
  void prepare(const Source& s, const Layout& l, TestImage& image) {
    image.img.format = s.format;
    for (int p = 0; p < s.planes; ++p) {
      const int32_t stride = s.row_bytes(p, l.width);
      const int32_t rows = s.plane_height(p, l.height);
      image.set_plane(p, s.plane_width(p, l.width), rows, stride,
                      plane_size(stride, rows, stride));
    }
    for (int32_t y = 0; y < l.height; ++y) {
      for (int32_t x = 0; x < l.width; ++x) {
        const Samples at = s.locate(image.img, x, y);
        *at.u = static_cast<uint8_t>(block(l, x, y) & 255);
        *at.v = static_cast<uint8_t>(block(l, x, y) >> 8);
      }
    }
  }

  void sweep(const Layout& l, const std::vector<const Source*>& sources,
             bool all_destinations) {
    std::deque<TestImage> images;
    for (const Source* s : sources) {
      images.emplace_back(s->format);
      prepare(*s, l, images.back());
    }
    std::vector<Channels> pixels(kPixels);
    GuardedBuffer actual;
    for (int32_t frame = 0; frame < kFrames; ++frame) {
      for (int32_t y = 0, i = 0; y < l.height; ++y) {
        for (int32_t x = 0; x < l.width; ++x, ++i) {
          const int32_t chroma = block(l, x, y);
          pixels[i] =
              expected_pixel(luma(frame, x, y), chroma & 255, chroma >> 8);
        }
      }
      for (size_t n = 0; n < sources.size(); ++n) {
        for (int32_t y = 0; y < l.height; ++y) {
          for (int32_t x = 0; x < l.width; ++x) {
            *sources[n]->locate(images[n].img, x, y).y =
                static_cast<uint8_t>(luma(frame, x, y));
          }
        }
      }
      for (const Destination& d : kDestinationTable) {
        const bool main_one =
            d.format == VEXO_FMT_RGBA8888 || d.format == VEXO_FMT_RGB565;
        if (!main_one && !all_destinations) continue;
        std::vector<uint8_t> expected(
            static_cast<size_t>(kPixels * d.pixel_bytes));
        for (int32_t i = 0; i < kPixels; ++i) {
          d.pack(pixels[i], &expected[static_cast<size_t>(i) * d.pixel_bytes]);
        }
        for (size_t n = 0; n < sources.size(); ++n) {
          vexo_csc_kernel* const kernel =
              kernel_of(sources[n]->format, d.format);
          if (kernel == nullptr) continue;
          const vexo_img& img = images[n].img;
          actual.reset(expected.size(), Edge::kEnd);
          const int32_t stride[4] = {l.width * d.pixel_bytes, 0, 0, 0};
          uint8_t* const plane[4] = {actual.data(), nullptr, nullptr, nullptr};
          kernel(img.plane, img.width, img.height, img.stride, stride, plane);
          ASSERT_TRUE(holds(actual, expected, stride[0]))
              << sources[n]->name << " to " << d.name << ", frame " << frame;
        }
      }
    }
  }

 private:
  std::vector<int32_t> red_;
  std::vector<int32_t> blue_;
};

std::vector<const Source*> sources_where(bool (*wanted)(int32_t format)) {
  std::vector<const Source*> all;
  for (const Source& s : kSourceTable) {
    if (wanted(s.format)) all.push_back(&s);
  }
  return all;
}

TEST_F(CscExhaustive, EveryDestination) {
  sweep({512, 512},
        sources_where([](int32_t f) { return f == VEXO_FMT_YUV444; }), true);
}

TEST_F(CscExhaustive, EverySource) {
  sweep({512, 512}, sources_where([](int32_t f) {
          return f != VEXO_FMT_YUV444 && f != VEXO_FMT_YUV400;
        }),
        false);
}

TEST_F(CscExhaustive, RowsOfTwoPixels) {
  // Rows too short for a vector.
  sweep({2, kPixels / 2}, sources_where([](int32_t f) {
          return f == VEXO_FMT_YUV420 || f == VEXO_FMT_YUYV;
        }),
        false);
}

TEST_F(CscExhaustive, EveryGrey) {
  GuardedBuffer src(256);
  for (int i = 0; i < 256; ++i) src.data()[i] = static_cast<uint8_t>(i);
  for (const Destination& d : kDestinationTable) {
    vexo_csc_kernel* const kernel = kernel_of(VEXO_FMT_YUV400, d.format);
    if (kernel == nullptr) continue;
    std::vector<uint8_t> expected;
    for (int i = 0; i < 256; ++i) {
      if (d.pixel_bytes == 2) {
        const int word = (i >> 3) << 11 | (i >> 2) << 5 | i >> 3;
        expected.push_back(static_cast<uint8_t>(word & 0xFF));
        expected.push_back(static_cast<uint8_t>(word >> 8));
      } else {
        expected.insert(expected.end(), 3, static_cast<uint8_t>(i));
      }
    }
    GuardedBuffer dst(expected.size());
    const int32_t size[4] = {256, 0, 0, 0};
    const int32_t one[4] = {1, 0, 0, 0};
    const int32_t stride[4] = {256 * d.pixel_bytes, 0, 0, 0};
    uint8_t* const src_plane[4] = {src.data(), nullptr, nullptr, nullptr};
    uint8_t* const dst_plane[4] = {dst.data(), nullptr, nullptr, nullptr};
    kernel(src_plane, size, one, size, stride, dst_plane);
    EXPECT_TRUE(holds(dst, expected)) << d.name;
  }
}

}  // namespace
}  // namespace lox_test
