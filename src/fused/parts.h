// SPDX-License-Identifier: Apache-2.0
//
// Pictures in parts: what two steps of a call share while it is in the near
// caches, one making it and the other taking it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/format.h"
#include "orumlox/picture.h"

namespace lox {

// How the planes of a format go together, tiles excepted.
class Shape {
 public:
  explicit Shape(int32_t format)
      : format_(format),
        planes_(vexo_format_planes(format)),
        x_shift_(has_half_columns(format) ? 1 : 0),
        y_shift_(has_half_rows(format) || format == VEXO_FMT_YUV420PLANAR16
                     ? 1
                     : 0) {
    for (int p = 0; p < planes_; ++p) {
      unit_[p] = vexo_format_sample_bytes(format, p);
    }
  }
  int planes() const { return planes_; }
  int unit(int p) const { return unit_[p]; }
  // Whether a picture can be cut here.
  bool cuts(int32_t x, int32_t y) const {
    return (x & x_shift_) == 0 && (y & y_shift_) == 0;
  }
  bool has_half_columns_of(int p) const { return p > 0 && x_shift_ != 0; }
  int32_t columns(int p, int32_t count) const {
    return p == 0 ? count : (count >> x_shift_) + (count & x_shift_);
  }
  int32_t rows(int p, int32_t count) const {
    return p == 0 ? count : (count >> y_shift_) + (count & y_shift_);
  }

  // The part of a picture that begins at (x, y), where it can be cut.
  vexo_img part(const vexo_img &img, int32_t x, int32_t y, int32_t width,
                int32_t height) const {
    vexo_img result = {};
    result.format = format_;
    for (int p = 0; p < planes_; ++p) {
      result.width[p] = columns(p, width);
      result.height[p] = rows(p, height);
      result.stride[p] = img.stride[p];
      result.plane[p] = img.plane[p] + ptrdiff_t{rows(p, y)} * img.stride[p] +
                        ptrdiff_t{columns(p, x)} * unit_[p];
    }
    return result;
  }

  // The same of memory that a strip of such a width is laid out over, with room
  // behind each row for a pixel more.
  int64_t bytes(int32_t width, int32_t height) const {
    int64_t sum = 0;
    for (int p = 0; p < planes_; ++p) sum += pitch(p, width) * rows(p, height);
    return sum;
  }
  vexo_img strip(uint8_t *memory, int32_t width, int32_t height) const {
    vexo_img result = {};
    result.format = format_;
    for (int p = 0; p < planes_; ++p) {
      result.stride[p] = static_cast<int32_t>(pitch(p, width));
      result.plane[p] = memory;
      memory += pitch(p, width) * rows(p, height);
    }
    return result;
  }

 private:
  int64_t pitch(int p, int32_t width) const {
    return (int64_t{columns(p, width)} + 1) * unit_[p] / 64 * 64 + 64;
  }

  int32_t format_;
  int planes_;
  int x_shift_, y_shift_;
  int unit_[3] = {};
};

// The rows of a picture from the top on, `most` at once, which is even.
class Parts {
 public:
  // Where rows share chroma from the bottom up, the first one is alone. With
  // `even_last` what is left over comes first, if rows are in pairs then.
  Parts(int32_t height, int32_t most, bool first_alone, bool even_last)
      : height_(height), most_(most) {
    const int32_t left = height % most;
    first_ = first_alone                              ? 1
             : even_last && left > 0 && left % 2 == 0 ? left
                                                      : most;
  }
  bool more() const { return y_ < height_; }
  int32_t y() const { return y_; }
  int32_t rows() const {
    const int32_t left = height_ - y_;
    const int32_t wanted = y_ == 0 ? first_ : most_;
    // A last row is not alone if it can be helped: an exchange of pairs always
    // has one.
    if (left == wanted + 1 && wanted > 2) return wanted - 2;
    return wanted < left ? wanted : left;
  }
  void next() { y_ += rows(); }

 private:
  int32_t height_, most_, first_, y_ = 0;
};

}  // namespace lox
