// SPDX-License-Identifier: Apache-2.0
//
// The layouts that the library names, how large their planes are, and frames
// whose memory lives as long as they do.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>

#include "orumlox/img.h"

namespace vexo {

// Size of one plane as a function of the picture's. A plane is
// width / 2^x_shift units of unit_bytes wide, rounded up, and height /
// 2^y_shift rows high; a row is then rounded up to row_align bytes and the
// plane to rows_align rows (tiles, or pixel pairs).
struct PlaneRule {
  int unit_bytes;
  int x_shift;
  int y_shift;
  int row_align;
  int rows_align;
};

struct Layout {
  int32_t code;
  const char *token;
  bool tiled;
  int planes;
  PlaneRule plane[3];
};

std::span<const Layout> all_layouts();
const Layout &layout_of(int32_t code);
// Throws Error when no layout has this token.
const Layout &layout_named(const std::string &token);
bool is_rgb(const Layout &layout);

constexpr int kMaxSide = 32767;
// Throws Error unless 1 <= side <= kMaxSide for both.
void check_size(int64_t width, int64_t height, const std::string &where);

class Frame {
 public:
  // Zeroed planes. Throws Error when a plane would not fit 2 GiB.
  Frame(const Layout &layout, int width, int height, int32_t color_std);

  const Layout &layout() const { return *layout_; }
  int width() const { return width_; }
  int height() const { return height_; }
  const vexo_img &img() const { return img_; }
  // The same memory as a picture of the next even width and height; what lies
  // beyond this one means nothing.
  vexo_img even_img() const;

  // The bytes of a plane that belong to the picture, as files hold them: rows()
  // rows of row_bytes() bytes.
  int row_bytes(int plane) const { return row_bytes_[plane]; }
  int rows(int plane) const { return img_.buf_height[plane]; }
  uint8_t *row(int plane, int y) const {
    return img_.plane[plane] + int64_t{y} * img_.stride[plane];
  }

 private:
  struct Free {
    void operator()(uint8_t *memory) const { std::free(memory); }
  };

  const Layout *layout_;
  int width_;
  int height_;
  int row_bytes_[3] = {};
  vexo_img img_ = {};
  std::unique_ptr<uint8_t, Free> memory_;
};

}  // namespace vexo
