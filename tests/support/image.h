// SPDX-License-Identifier: Apache-2.0
// An image descriptor whose planes lie in guarded buffers, and the plain way
// to move rows from plane to plane.
#pragma once

#include <orumlox/img.h>

#include <array>
#include <cstdint>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace lox_test {

// The size of a buffer whose last of `rows` rows ends after `row_bytes`: the
// bytes from there to the stride are nobody's.
inline size_t plane_size(int32_t row_bytes, int32_t rows, int32_t stride) {
  if (row_bytes <= 0 || rows <= 0) return 0;
  return size_t{1} * (rows - 1) * stride + row_bytes;
}

inline void copy_rows(const uint8_t *src, int32_t src_stride, int32_t row_bytes,
                      int32_t rows, int32_t dst_stride, uint8_t *dst) {
  for (int32_t y = 0; y < rows; ++y) {
    for (int32_t i = 0; i < row_bytes; ++i) {
      dst[y * dst_stride + i] = src[y * src_stride + i];
    }
  }
}

// Planes that a test does not set have sizes and pointers that end the test
// when a call uses them.
struct TestImage {
  explicit TestImage(int32_t format) {
    img.format = format;
    for (int p = 0; p < 4; ++p) {
      img.width[p] = img.height[p] = img.stride[p] = img.buf_height[p] = 7777;
    }
  }

  // Fills in the descriptor of a plane and gives it a buffer of `bytes`.
  void set_plane(int p, int32_t width, int32_t height, int32_t stride,
                 size_t bytes, Edge edge = Edge::kEnd) {
    img.width[p] = width;
    img.height[p] = height;
    img.stride[p] = stride;
    img.buf_height[p] = height;
    buffer[p].reset(bytes, edge);
    img.plane[p] = buffer[p].data();
  }

  void fill(Random &random) {
    for (GuardedBuffer &b : buffer) random.fill(b.data(), b.size());
  }

  using Contents = std::array<std::vector<uint8_t>, 4>;
  Contents contents() const {
    return {buffer[0].copy(), buffer[1].copy(), buffer[2].copy(),
            buffer[3].copy()};
  }

  vexo_img img{};
  std::array<GuardedBuffer, 4> buffer;
};

// Whether every plane holds what is expected, its margins included.
inline testing::AssertionResult holds(const TestImage &image,
                                      const TestImage::Contents &expected) {
  for (int p = 0; p < 4; ++p) {
    auto result = holds(image.buffer[p], expected[p]);
    if (!result) return result << ", plane " << p;
  }
  return testing::AssertionSuccess();
}

}  // namespace lox_test
