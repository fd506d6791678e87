// SPDX-License-Identifier: Apache-2.0
//
// Frames of raw files as the library takes them: what the tool writes is what
// the library makes of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "orumlox/csc.h"

namespace tool {

// Units of so many bytes, each for so many pixels across and down. Rows are
// filled up to whole tiles, and so is the plane.
struct Plane {
  int bytes, across, down;
  int tile_bytes = 1, tile_rows = 1;
};

struct Layout {
  int32_t code;
  std::string token;
  std::vector<Plane> planes;

  bool tiled() const { return code >= 11 && code <= 14; }
  bool rgb() const { return code >= 200 && code < 600; }
};

// Tiles of 64 x 32 come in pairs of columns.
inline const Layout kLayouts[] = {
    {0, "yuv400", {{1, 1, 1}}},
    {1, "yuv420", {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {2, "yuv422n", {{1, 1, 1}, {1, 2, 1}, {1, 2, 1}}},
    {3, "yuv444", {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}},
    {4, "yv12", {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {5, "yv16", {{1, 1, 1}, {1, 2, 1}, {1, 2, 1}}},
    {6, "nv12", {{1, 1, 1}, {2, 2, 2}}},
    {7, "nv21", {{1, 1, 1}, {2, 2, 2}}},
    {8, "yuv422w", {{1, 1, 1}, {1, 1, 2}, {1, 1, 2}}},
    {11, "t64x32", {{1, 1, 1, 128, 32}, {2, 2, 2, 128, 32}}},
    {12, "t16x16", {{1, 1, 1, 16, 16}, {2, 2, 2, 16, 8}}},
    {13, "t8x8", {{1, 1, 1, 8, 8}, {2, 2, 2, 8, 4}}},
    {14, "t256x16", {{1, 1, 1, 256, 16}, {2, 2, 2, 256, 8}}},
    {100, "uyvy", {{4, 2, 1}}},
    {101, "yuyv", {{4, 2, 1}}},
    {200, "rgb565", {{2, 1, 1}}},
    {201, "bgr565", {{2, 1, 1}}},
    {400, "rgb888", {{3, 1, 1}}},
    {401, "bgr888", {{3, 1, 1}}},
    {500, "rgba8888", {{4, 1, 1}}},
    {501, "bgra8888", {{4, 1, 1}}},
    {502, "argb8888", {{4, 1, 1}}},
    {503, "abgr8888", {{4, 1, 1}}},
    {600, "yuv420Planar16", {{2, 1, 1}, {2, 2, 2}, {2, 2, 2}}},
    {601, "p010le", {{2, 1, 1}, {4, 2, 2}}}};

inline const Layout &layout(const std::string &token) {
  return *std::find_if(
      std::begin(kLayouts), std::end(kLayouts),
      [&token](const Layout &entry) { return entry.token == token; });
}

// A frame in memory for the next even size, without gaps.
class RawFrame {
 public:
  RawFrame(const Layout &layout, int width, int height, int32_t standard = 0)
      : layout_(layout), img_(describe(width, height, standard)) {
    even_img_ = describe((width + 1) / 2 * 2, (height + 1) / 2 * 2, standard);
    for (size_t p = 0; p < layout.planes.size(); ++p) {
      memory_.emplace_back(even_img_.stride[p] * even_img_.buf_height[p]);
    }
  }

  // As a raw file holds it.
  void set(const std::string &bytes) {
    size_t at = 0;
    for_each_row([&](uint8_t *row, size_t count) {
      std::copy_n(bytes.data() + at, count, row);
      at += count;
    });
  }
  std::string bytes() {
    std::string out;
    for_each_row([&](uint8_t *row, size_t n) { out.append(row, row + n); });
    return out;
  }

  vexo_img img() { return placed(img_); }
  vexo_img even_img() { return placed(even_img_); }

 private:
  static int whole(int value, int unit) { return (value + unit - 1) / unit; }

  vexo_img describe(int width, int height, int32_t standard) const {
    vexo_img img = {};
    img.format = layout_.code;
    img.color_std = standard;
    for (size_t p = 0; p < layout_.planes.size(); ++p) {
      const auto [bytes, across, down, tile, rows] = layout_.planes[p];
      const int units = whole(width, across);
      // Packed YUV counts in pixels.
      img.width[p] = bytes == 4 && across == 2 && !p ? width : units;
      img.height[p] = whole(height, down);
      img.stride[p] = whole(units * bytes, tile) * tile;
      img.buf_height[p] = whole(img.height[p], rows) * rows;
    }
    return img;
  }

  vexo_img placed(vexo_img img) {
    for (size_t p = 0; p < memory_.size(); ++p) {
      img.stride[p] = even_img_.stride[p];
      img.plane[p] = memory_[p].data();
    }
    return img;
  }

  template <typename Visit>
  void for_each_row(Visit visit) {
    for (size_t p = 0; p < memory_.size(); ++p) {
      for (int y = 0; y < img_.buf_height[p]; ++y) {
        visit(&memory_[p][y * even_img_.stride[p]], img_.stride[p]);
      }
    }
  }

  Layout layout_;
  vexo_img img_, even_img_;
  std::vector<std::vector<uint8_t>> memory_;
};

// A frame through layouts, each converted to the next. Rows of YUV become RGB,
// and YUYV whatever it becomes, as large as they are; all else has the next
// even size, so that odd pictures get all of their chroma.
inline std::string converted(const std::string &bytes, int width, int height,
                             const std::vector<std::string> &tokens,
                             int32_t standard = 0) {
  RawFrame frame(layout(tokens[0]), width, height, standard);
  frame.set(bytes);
  for (size_t i = 1; i < tokens.size(); ++i) {
    const Layout &from = layout(tokens[i - 1]), &to = layout(tokens[i]);
    const bool as_is =
        !from.tiled() && !from.rgb() && (to.rgb() || from.token == "yuyv");
    RawFrame next(to, width, height, standard);
    const vexo_img src = as_is ? frame.img() : frame.even_img();
    const vexo_img dst = as_is ? next.img() : next.even_img();
    EXPECT_EQ(vexo_csc(&src, &dst), VEXO_OK) << from.token << " " << to.token;
    // Without what lies beyond the picture.
    frame = RawFrame(to, width, height, standard);
    frame.set(next.bytes());
  }
  return frame.bytes();
}

}  // namespace tool
