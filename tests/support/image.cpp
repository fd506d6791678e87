// SPDX-License-Identifier: Apache-2.0
// Planes that a test does not set keep a size and a pointer that end the test
// when a call uses them.
#include "support/image.h"

namespace lox_test {

size_t plane_size(int32_t row_bytes, int32_t rows, int32_t stride) {
  if (row_bytes <= 0 || rows <= 0) return 0;
  return static_cast<size_t>(rows - 1) * static_cast<size_t>(stride) +
         static_cast<size_t>(row_bytes);
}

TestImage::TestImage(int32_t format) {
  img.format = format;
  for (int p = 0; p < 4; ++p) {
    img.width[p] = 7777;
    img.height[p] = 7777;
    img.stride[p] = 7777;
    img.buf_height[p] = 7777;
    img.plane[p] = nullptr;
  }
}

void TestImage::set_plane(int p, int32_t width, int32_t height, int32_t stride,
                          size_t bytes, Edge edge) {
  img.width[p] = width;
  img.height[p] = height;
  img.stride[p] = stride;
  img.buf_height[p] = height;
  buffer[p].reset(bytes, edge);
  img.plane[p] = buffer[p].data();
}

void TestImage::fill(Random& random, Fill kind) {
  for (GuardedBuffer& b : buffer) random.fill(b.data(), b.size(), kind);
}

TestImage::Contents TestImage::contents() const {
  Contents all;
  for (int p = 0; p < 4; ++p) all[p] = buffer[p].copy();
  return all;
}

testing::AssertionResult holds(const TestImage& image,
                               const TestImage::Contents& expected) {
  for (int p = 0; p < 4; ++p) {
    if (image.img.plane[p] == nullptr) continue;
    const testing::AssertionResult result = holds(
        image.buffer[p], expected[p], static_cast<size_t>(image.img.stride[p]));
    if (!result) {
      return testing::AssertionFailure()
             << "plane " << p << ": " << result.message();
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace lox_test
