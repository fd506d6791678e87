// SPDX-License-Identifier: Apache-2.0
// An image descriptor whose planes lie in guarded buffers.
#ifndef ORUMLOX_TESTS_SUPPORT_IMAGE_H
#define ORUMLOX_TESTS_SUPPORT_IMAGE_H

#include <orumlox/img.h>

#include <array>
#include <cstdint>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace lox_test {

// The size of a buffer whose last of `rows` rows ends after `row_bytes`: the
// bytes from there to the stride are nobody's.
size_t plane_size(int32_t row_bytes, int32_t rows, int32_t stride);

struct TestImage {
  explicit TestImage(int32_t format);

  // Fills in the descriptor of a plane and gives it a buffer of `bytes`.
  void set_plane(int p, int32_t width, int32_t height, int32_t stride,
                 size_t bytes, Edge edge = Edge::kEnd);

  void fill(Random& random, Fill kind = Fill::kRandom);

  using Contents = std::array<std::vector<uint8_t>, 4>;
  Contents contents() const;

  vexo_img img{};
  std::array<GuardedBuffer, 4> buffer;
};

// Whether every plane holds what is expected, its margins included.
testing::AssertionResult holds(const TestImage& image,
                               const TestImage::Contents& expected);

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_SUPPORT_IMAGE_H
