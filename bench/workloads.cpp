// SPDX-License-Identifier: Apache-2.0
#include "bench/workloads.h"

#include <algorithm>

#include "orumlox/unprefixed.h"

namespace bench {

namespace {

// The samples of a plane and what one of them takes, as vexo_img counts them.
struct PlaneShape {
  int32_t x_shift, y_shift, bytes;
};

struct Layout {
  int32_t planes;
  PlaneShape plane[3];
  // What the bytes of a row and the rows are padded to.
  int32_t stride_unit = 1, rows_unit = 1;
};

Layout layout_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_YUV420:
      return {3, {{0, 0, 1}, {1, 1, 1}, {1, 1, 1}}};
    case VEXO_FMT_YUV444:
      return {3, {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}};
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return {2, {{0, 0, 1}, {1, 1, 2}}};
    case VEXO_FMT_T64X32:
      // Tiles lie in pairs beside each other.
      return {2, {{0, 0, 1}, {1, 1, 2}}, 128, 32};
    case VEXO_FMT_YUV420PLANAR16:
      return {3, {{0, 0, 2}, {1, 1, 2}, {1, 1, 2}}};
    case VEXO_FMT_P010LE:
      return {2, {{0, 0, 2}, {1, 1, 4}}};
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

int32_t padded(int32_t size, int32_t unit) {
  return (size + unit - 1) / unit * unit;
}

int32_t row_unit(const Workload &workload) {
  const bool dense =
      workload.task == Task::kConvert || workload.task == Task::kSharpen;
  return dense ? 1 : 64;
}

// Of a frame as the library has it, or as one peer does that reduces NV12 in
// planes and wants other padding.
size_t room_for_all(const Workload &workload, const vexo_img &img, Size size) {
  const size_t own = frame_bytes(img);
  if (workload.task != Task::kReduce) return own;
  const vexo_img planes =
      describe(VEXO_FMT_YUV420, size, nullptr, row_unit(workload));
  return std::max(own, frame_bytes(planes));
}

}  // namespace

Sizes sizes_of(const Workload &workload, bool large) {
  Sizes sizes = large ? workload.ratio.large : workload.ratio.small;
  if (workload.is_quarter_turn()) {
    sizes.dst = {sizes.dst.height, sizes.dst.width};
  }
  return sizes;
}

vexo_img describe(int32_t format, Size size, uint8_t *bytes, int32_t row_unit) {
  const Layout layout = layout_of(format);
  vexo_img img = {};
  img.format = format;
  for (int p = 0; p < layout.planes; ++p) {
    const PlaneShape &s = layout.plane[p];
    img.width[p] = size.width >> s.x_shift;
    img.height[p] = size.height >> s.y_shift;
    img.stride[p] = padded(img.width[p] * s.bytes,
                           row_unit > 1 ? row_unit : layout.stride_unit);
    img.buf_height[p] = padded(img.height[p], layout.rows_unit);
    img.plane[p] = bytes;
    if (bytes) {
      bytes += static_cast<size_t>(img.stride[p]) *
               static_cast<size_t>(img.buf_height[p]);
    }
  }
  return img;
}

vexo_img describe_src(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes) {
  vexo_img img =
      describe(workload.src_format, sizes.src, bytes, row_unit(workload));
  img.color_std = workload.color_std;
  return img;
}

vexo_img describe_dst(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes) {
  vexo_img img =
      describe(workload.dst_format, sizes.dst, bytes, row_unit(workload));
  if (workload.task == Task::kReduce && img.format == VEXO_FMT_NV12) {
    vexo_img pair[] = {describe_src(workload, sizes, nullptr), img};
    pair[1].color_std = 1;  // the layout selector
    vexo_rsz_new_set_img(pair);
    img = pair[1];
    if (bytes) {
      img.plane[1] = bytes + ptrdiff_t{img.stride[0]} * img.buf_height[0];
    }
    return img;
  }
  img.color_std = workload.color_std;
  img.mode = workload.mode;
  return img;
}

int32_t row_bytes(const vexo_img &img, int plane) {
  return img.width[plane] * layout_of(img.format).plane[plane].bytes;
}

size_t frame_bytes(const vexo_img &img) {
  size_t bytes = 0;
  for (int p = 0; p < 3; ++p) {
    bytes += static_cast<size_t>(img.stride[p]) *
             static_cast<size_t>(img.buf_height[p]);
  }
  return bytes;
}

size_t picture_bytes(const vexo_img &img) {
  size_t bytes = 0;
  for (int p = 0; p < 3; ++p) {
    bytes += static_cast<size_t>(row_bytes(img, p)) *
             static_cast<size_t>(img.height[p]);
  }
  return bytes;
}

size_t src_room(const Workload &workload, const Sizes &sizes) {
  return room_for_all(workload, describe_src(workload, sizes, nullptr),
                      sizes.src);
}

size_t dst_room(const Workload &workload, const Sizes &sizes) {
  return room_for_all(workload, describe_dst(workload, sizes, nullptr),
                      sizes.dst);
}

int32_t run_library(const Workload &workload, const Sizes &sizes, uint8_t *src,
                    uint8_t *dst) {
  const vexo_img from = describe_src(workload, sizes, src);
  const vexo_img to = describe_dst(workload, sizes, dst);
  if (workload.is_copy()) {
    vexo_cpy_8b(src, from.width[0], from.height[0], from.stride[0],
                to.stride[0], dst);
    return VEXO_OK;
  }
  switch (workload.task) {
    case Task::kScale:
      return vexo_rsz(&from, &to);
    case Task::kTurn:
      return vexo_rot(&from, workload.rotation, &to);
    case Task::kScaleAndTurn:
      return vexo_rsz_rot(&from, workload.rotation, &to);
    case Task::kSharpen: {
      constexpr int32_t kStrength = 4;
      detail_enh(src, from.width[0], from.height[0], dst, kStrength);
      return VEXO_OK;
    }
    default:
      return vexo_csc(&from, &to);
  }
}

void fill_noise(uint8_t *bytes, size_t size) {
  uint32_t state = 1;
  for (size_t i = 0; i < size; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes[i] = static_cast<uint8_t>(16 + (state >> 16) % 220);
  }
}

}  // namespace bench
