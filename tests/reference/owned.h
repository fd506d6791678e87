// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <orumlox/picture.h>

#include <cstdint>
#include <cstring>

#include "cases/cases.h"

namespace lox_test {

// A picture in memory of its own, of random samples.
struct Owned {
  vexo_img img = {};

  Owned(int32_t format, int32_t standard, int32_t width, int32_t height,
        uint64_t seed = 0) {
    EXPECT_EQ(vexo_picture_alloc(&img, format, width, height), VEXO_OK);
    img.color_std = standard;
    if (seed == 0) return;
    for (int p = 0; p < vexo_format_planes(format); ++p) {
      Random(seed).fill(img.plane[p], bytes(p), Fill::kRandom);
    }
  }
  ~Owned() { vexo_picture_free(&img); }
  Owned(const Owned &) = delete;
  Owned &operator=(const Owned &) = delete;

  size_t bytes(int p) const {
    return static_cast<size_t>(img.stride[p]) * img.buf_height[p];
  }
  bool operator==(const Owned &other) const {
    for (int p = 0; p < vexo_format_planes(img.format); ++p) {
      if (std::memcmp(img.plane[p], other.img.plane[p], bytes(p)) != 0) {
        return false;
      }
    }
    return true;
  }
};

}  // namespace lox_test
