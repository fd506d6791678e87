// SPDX-License-Identifier: Apache-2.0
//
// Frames of raw files as the library takes them: what the tool writes is what
// the library makes of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "orumlox/csc.h"
#include "support/exact_sizes.h"

namespace tool {

struct Layout {
  int32_t code;
  std::string token;

  bool tiled() const { return lox_test::is_tiled_code(code); }
  bool rgb() const { return lox_test::is_rgb_code(code); }
};

inline const std::vector<Layout> kLayouts = [] {
  std::istringstream words(
      "0 yuv400 1 yuv420 2 yuv422n 3 yuv444 4 yv12 5 yv16 6 nv12 7 nv21 "
      "8 yuv422w 11 t64x32 12 t16x16 13 t8x8 14 t256x16 100 uyvy 101 yuyv "
      "200 rgb565 201 bgr565 400 rgb888 401 bgr888 500 rgba8888 501 bgra8888 "
      "502 argb8888 503 abgr8888 600 yuv420Planar16 601 p010le "
      "700 rgba1010102 701 rgbaf16");
  std::vector<Layout> all;
  for (Layout entry; words >> entry.code >> entry.token;) all.push_back(entry);
  return all;
}();

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
    for (int p = 0; p < 4 && even_img_.stride[p] > 0; ++p) {
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
  // Of tiled planes rows are filled up to whole tiles, and so is the plane.
  // Tiles of 64 x 32 come in pairs of columns.
  vexo_img describe(int width, int height, int32_t standard) const {
    constexpr int kTiles[4][3] = {
        {128, 32, 32}, {16, 16, 8}, {8, 8, 4}, {256, 16, 8}};
    vexo_img img = {};
    img.format = layout_.code;
    img.color_std = standard;
    const auto planes = lox_test::exact_image(layout_.code, width, height);
    for (int p = 0; p < 4; ++p) {
      img.width[p] = planes[p].width;
      img.height[p] = planes[p].height;
      img.stride[p] = static_cast<int32_t>(planes[p].row_bytes);
      if (layout_.tiled() && p == 1) img.height[p] = (height + 1) / 2;
      img.buf_height[p] = img.height[p];
      if (!layout_.tiled()) continue;
      const int *const tile = kTiles[layout_.code - VEXO_FMT_T64X32];
      const int rows = tile[1 + p % 2];
      img.stride[p] = (img.stride[p] + tile[0] - 1) / tile[0] * tile[0];
      img.buf_height[p] = (img.height[p] + rows - 1) / rows * rows;
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

// A frame through layouts, each converted to the next. YUYV is averaged in rows
// as they are, and another standard than the first, which p010le does not have,
// has a rule for the last columns; all else has the next even size, so that odd
// pictures get all of their chroma and every pixel its own.
inline std::string converted(const std::string &bytes, int width, int height,
                             const std::vector<std::string> &tokens,
                             int32_t standard = 0) {
  RawFrame frame(layout(tokens[0]), width, height, standard);
  frame.set(bytes);
  for (size_t i = 1; i < tokens.size(); ++i) {
    const Layout &from = layout(tokens[i - 1]), &to = layout(tokens[i]);
    const bool as_is =
        from.token == "yuyv" ||
        (standard != 0 && from.token != "p010le" && !from.rgb() && to.rgb());
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
