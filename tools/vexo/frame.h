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

#include "orumlox/picture.h"

namespace vexo {

struct Layout {
  int32_t code;
  const char *token;
  bool tiled;
  int planes;
};

std::span<const Layout> all_layouts();
const Layout &layout_of(int32_t code);
// By any of its names. Throws Error when no layout has this one.
const Layout &layout_named(const std::string &token);
bool is_rgb(const Layout &layout);
// Of 16-bit words, 10 bits of which count.
bool is_deep(const Layout &layout);

constexpr int kMaxSide = 32767;
// Throws Error unless 1 <= side <= kMaxSide for both.
void check_size(int64_t width, int64_t height, const std::string &where);

class Frame {
 public:
  // Zeroed planes without gaps, as raw files hold them. Throws Error when a
  // plane would not fit 2 GiB.
  Frame(const Layout &layout, int width, int height, int32_t color_std);
  // Planes of somebody else, which live as long as what is kept.
  Frame(const vexo_img &img, std::shared_ptr<const void> kept);

  const Layout &layout() const { return *layout_; }
  int width() const { return width_; }
  int height() const { return height_; }
  const vexo_img &img() const { return img_; }
  // The bytes of a plane that belong to the picture, as files hold them: rows()
  // rows of row_bytes() bytes.
  int row_bytes(int plane) const { return row_bytes_[plane]; }
  int rows(int plane) const { return img_.buf_height[plane]; }
  // All planes in one piece, or null where there are gaps.
  uint8_t *whole() const { return whole_; }
  size_t size() const { return size_; }
  uint8_t *row(int plane, int y) const {
    return img_.plane[plane] + int64_t{y} * img_.stride[plane];
  }

 private:
  const Layout *layout_;
  int width_;
  int height_;
  int row_bytes_[3] = {};
  vexo_img img_ = {};
  uint8_t *whole_ = nullptr;
  size_t size_ = 0;
  std::shared_ptr<const void> kept_;
};

// Throws Error unless a call that was to do this went well.
void require_ok(int32_t status, const std::string &what);
void require_ok(int32_t status, const char *what, const Frame &src,
                const Frame &dst);

// A part of a frame's pixels. Where layouts pair pixels, its place is rounded
// down to even.
vexo_img window_of(const Frame &frame, int x, int y, int width, int height);

// Black, opaque.
void blacken(const Frame &frame);

// The library's memory for what lies between a call's steps.
class PictureContext {
 public:
  // Throws std::bad_alloc.
  PictureContext();
  ~PictureContext() { vexo_picture_context_free(context_); }
  PictureContext(const PictureContext &) = delete;
  PictureContext &operator=(const PictureContext &) = delete;

  vexo_picture_context *get() const { return context_; }

 private:
  vexo_picture_context *context_ = nullptr;
};

}  // namespace vexo
