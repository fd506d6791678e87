// SPDX-License-Identifier: Apache-2.0
#include "bench/workloads.h"

namespace bench {

namespace {

// The samples of a plane and what one of them takes, as vexo_img counts them.
struct PlaneShape {
  int32_t x_shift, y_shift, bytes;
};

struct Layout {
  int32_t planes;
  PlaneShape plane[3];
};

Layout layout_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_YUV420:
      return {3, {{0, 0, 1}, {1, 1, 1}, {1, 1, 1}}};
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return {2, {{0, 0, 1}, {1, 1, 2}}};
    case VEXO_FMT_YUYV:
    case VEXO_FMT_RGB565:
      return {1, {{0, 0, 2}}};
    case VEXO_FMT_RGB888:
      return {1, {{0, 0, 3}}};
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
      return {1, {{0, 0, 4}}};
    default:
      return {1, {{0, 0, 1}}};
  }
}

}  // namespace

size_t frame_bytes(int32_t format, int32_t width, int32_t height) {
  const Layout layout = layout_of(format);
  size_t bytes = 0;
  for (int p = 0; p < layout.planes; ++p) {
    const PlaneShape &s = layout.plane[p];
    bytes += static_cast<size_t>(width >> s.x_shift) *
             static_cast<size_t>(height >> s.y_shift) *
             static_cast<size_t>(s.bytes);
  }
  return bytes;
}

vexo_img describe(int32_t format, int32_t width, int32_t height,
                  uint8_t *bytes) {
  const Layout layout = layout_of(format);
  vexo_img img = {};
  img.format = format;
  for (int p = 0; p < layout.planes; ++p) {
    const PlaneShape &s = layout.plane[p];
    img.width[p] = width >> s.x_shift;
    img.height[p] = img.buf_height[p] = height >> s.y_shift;
    img.stride[p] = img.width[p] * s.bytes;
    img.plane[p] = bytes;
    bytes +=
        static_cast<size_t>(img.stride[p]) * static_cast<size_t>(img.height[p]);
  }
  return img;
}

int32_t run_library(const Workload &workload, int32_t width, int32_t height,
                    uint8_t *src, uint8_t *dst) {
  if (workload.is_copy()) {
    vexo_cpy_8b(src, width, height, width, width, dst);
    return VEXO_OK;
  }
  const vexo_img from = describe(workload.src_format, width, height, src);
  const vexo_img to = describe(workload.dst_format, width, height, dst);
  return vexo_csc(&from, &to);
}

void fill_noise(uint8_t *bytes, size_t size) {
  uint32_t state = 1;
  for (size_t i = 0; i < size; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes[i] = static_cast<uint8_t>(16 + (state >> 16) % 220);
  }
}

}  // namespace bench
