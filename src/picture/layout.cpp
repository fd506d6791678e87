// SPDX-License-Identifier: Apache-2.0
//
// Lays pictures out: over the caller's memory, over separate planes, over
// memory of their own.
#include <cstring>

#include "common/memory.h"
#include "orumlox/common.h"
#include "picture/formats.h"

namespace lox {

namespace {

constexpr int32_t kMostAlignment = 4096;
constexpr int32_t kOwnAlignment = 32;

constexpr int64_t round_up(int64_t n, int64_t to) {
  return (n + to - 1) / to * to;
}

// The geometry, and the bytes of all planes.
int32_t lay_out(vexo_img *img, int32_t code, int32_t width, int32_t height,
                int32_t alignment, size_t *bytes) {
  const Format *const format = find_format(code);
  if (format == nullptr) return VEXO_ERR_UNSUPPORTED;
  // The next even size is one, too.
  if (width < 1 || width == INT32_MAX || height < 1 || height == INT32_MAX ||
      alignment < 1 || alignment > kMostAlignment ||
      (alignment & (alignment - 1)) != 0) {
    return VEXO_ERR_ARG;
  }
  vexo_img result = {};
  result.format = code;
  *bytes = 0;
  for (int32_t p = 0; p < format->planes; ++p) {
    const PlaneRule &rule = format->plane[p];
    const int64_t least = least_stride(rule, width);
    // Tiles lie back to back.
    const int64_t stride = is_tiled(code) ? least : round_up(least, alignment);
    const int64_t rows = least_rows(rule, height);
    if (stride > INT32_MAX || rows > INT32_MAX) return VEXO_ERR_ARG;
    const uint64_t plane = static_cast<uint64_t>(stride * rows);
    if (plane > static_cast<uint64_t>(PTRDIFF_MAX) - *bytes) {
      return VEXO_ERR_ARG;
    }
    *bytes += static_cast<size_t>(plane);
    result.stride[p] = static_cast<int32_t>(stride);
    result.buf_height[p] = static_cast<int32_t>(rows);
  }
  set_sizes(&result, width, height);
  *img = result;
  return VEXO_OK;
}

}  // namespace

int64_t least_stride(const PlaneRule &rule, int64_t width) {
  return round_up(shifted_up(width, rule.x_shift) * rule.unit, rule.row_align);
}

int64_t least_rows(const PlaneRule &rule, int64_t height) {
  return round_up(shifted_up(height, rule.y_shift), rule.rows_align);
}

void set_sizes(vexo_img *img, int32_t width, int32_t height) {
  const Format *const format = find_format(img->format);
  for (int32_t p = 0; p < format->planes; ++p) {
    const PlaneRule &rule = format->plane[p];
    img->width[p] = static_cast<int32_t>(shifted_up(width, rule.x_shift));
    img->height[p] = static_cast<int32_t>(shifted_up(height, rule.y_shift));
  }
}

void place_planes(vexo_img *img, uint8_t *memory) {
  const int32_t planes = find_format(img->format)->planes;
  for (int32_t p = 0; p < planes; ++p) {
    img->plane[p] = memory;
    memory +=
        static_cast<ptrdiff_t>(int64_t{img->stride[p]} * img->buf_height[p]);
  }
}

int32_t check_picture(const vexo_img *img) {
  if (img == nullptr) return VEXO_ERR_ARG;
  const Format *const format = find_format(img->format);
  if (format == nullptr) return VEXO_ERR_UNSUPPORTED;
  vexo_img own;
  size_t bytes = 0;
  const int32_t status =
      lay_out(&own, img->format, img->width[0], img->height[0], 1, &bytes);
  if (status != VEXO_OK) return status;
  for (int32_t p = 0; p < format->planes; ++p) {
    if (img->plane[p] == nullptr) return VEXO_ERR_ARG;
    if (is_tiled(img->format)) continue;
    const int64_t stride = img->stride[p];
    if ((stride < 0 ? -stride : stride) < own.stride[p] ||
        (has_words(img->format) && stride % 2 != 0)) {
      return VEXO_ERR_ARG;
    }
  }
  return VEXO_OK;
}

}  // namespace lox

extern "C" {

int32_t vexo_picture_geometry(vexo_img *img, int32_t format, int32_t width,
                              int32_t height, int32_t alignment) {
  if (img == nullptr) return VEXO_ERR_ARG;
  size_t bytes = 0;
  return lox::lay_out(img, format, width, height, alignment, &bytes);
}

int32_t vexo_picture_bytes(int32_t format, int32_t width, int32_t height,
                           int32_t alignment, size_t *bytes) {
  if (bytes == nullptr) return VEXO_ERR_ARG;
  vexo_img img;
  size_t wanted = 0;
  const int32_t status =
      lox::lay_out(&img, format, width, height, alignment, &wanted);
  if (status == VEXO_OK) *bytes = wanted;
  return status;
}

int32_t vexo_picture_layout(vexo_img *img, int32_t format, int32_t width,
                            int32_t height, int32_t alignment, void *memory,
                            size_t size) {
  if (img == nullptr || memory == nullptr) return VEXO_ERR_ARG;
  vexo_img result;
  size_t bytes = 0;
  const int32_t status =
      lox::lay_out(&result, format, width, height, alignment, &bytes);
  if (status != VEXO_OK) return status;
  if (bytes > size) return VEXO_ERR_ARG;
  lox::place_planes(&result, static_cast<uint8_t *>(memory));
  *img = result;
  return VEXO_OK;
}

int32_t vexo_picture_wrap(vexo_img *img, int32_t format, int32_t width,
                          int32_t height, uint8_t *const *planes,
                          const int32_t *strides) {
  if (img == nullptr || planes == nullptr || strides == nullptr) {
    return VEXO_ERR_ARG;
  }
  vexo_img result;
  size_t bytes = 0;
  int32_t status = lox::lay_out(&result, format, width, height, 1, &bytes);
  if (status != VEXO_OK) return status;
  const int32_t count = vexo_format_planes(format);
  for (int32_t p = 0; p < count; ++p) {
    result.plane[p] = planes[p];
    if (!lox::is_tiled(format)) result.stride[p] = strides[p];
  }
  status = lox::check_picture(&result);
  if (status == VEXO_OK) *img = result;
  return status;
}

int32_t vexo_picture_alloc(vexo_img *img, int32_t format, int32_t width,
                           int32_t height) {
  if (img == nullptr) return VEXO_ERR_ARG;
  vexo_img result;
  size_t bytes = 0;
  const int32_t status =
      lox::lay_out(&result, format, width, height, lox::kOwnAlignment, &bytes);
  if (status != VEXO_OK) return status;
  auto *const memory = lox::allocate<uint8_t>(static_cast<int64_t>(bytes));
  if (memory == nullptr) return VEXO_ERR_MEMORY;
  memset(memory, 0, bytes);
  lox::place_planes(&result, memory);
  *img = result;
  return VEXO_OK;
}

void vexo_picture_free(vexo_img *img) {
  if (img == nullptr) return;
  mlox_mfree_align32(img->plane[0]);
  *img = {};
}

}  // extern "C"
