// SPDX-License-Identifier: Apache-2.0
#include "frame.h"

#include <cstring>

namespace lox_gst {

namespace {

// What black is in a plane: a sample, a pair of them or a pixel, of packed
// 4:2:2 a pair of pixels. Returns its bytes.
int black(const Side &side, int32_t plane, uint8_t unit[4]) {
  const bool full = side.info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
  const uint8_t luma = full ? 0 : 16;
  const uint8_t grey = 128;
  memset(unit, 0, 4);
  switch (side.format) {
    case VEXO_FMT_YUYV:
    case VEXO_FMT_UYVY:
      for (int i = 0; i < 4; ++i) {
        unit[i] = (i % 2 == 0) == (side.format == VEXO_FMT_YUYV) ? luma : grey;
      }
      return 4;
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
      unit[3] = 255;
      return 4;
    case VEXO_FMT_ARGB8888:
    case VEXO_FMT_ABGR8888:
      unit[0] = 255;
      return 4;
    case VEXO_FMT_P010LE:
      unit[1] = unit[3] = plane == 0 ? luma : grey;
      return plane == 0 ? 2 : 4;
    case VEXO_FMT_YUV420PLANAR16: {
      const int word = (plane == 0 ? luma : grey) * 4;
      unit[0] = static_cast<uint8_t>(word & 255);
      unit[1] = static_cast<uint8_t>(word >> 8);
      return 2;
    }
    default:
      if (!GST_VIDEO_INFO_IS_RGB(&side.info)) {
        unit[0] = unit[1] = plane == 0 ? luma : grey;
      }
      return vexo_format_sample_bytes(side.format, plane);
  }
}

void fill(uint8_t *row, ptrdiff_t bytes, const uint8_t unit[4], int size) {
  for (ptrdiff_t i = 0; i < bytes; ++i) row[i] = unit[i % size];
}

}  // namespace

Turn turn_of(GstVideoOrientationMethod direction) {
  switch (direction) {
    case GST_VIDEO_ORIENTATION_90R:
      return {VEXO_ROT_90R, false};
    case GST_VIDEO_ORIENTATION_180:
      return {VEXO_ROT_180, false};
    case GST_VIDEO_ORIENTATION_90L:
      return {VEXO_ROT_90L, false};
    case GST_VIDEO_ORIENTATION_HORIZ:
      return {VEXO_ROT_HORI, false};
    case GST_VIDEO_ORIENTATION_VERT:
      return {VEXO_ROT_VERT, false};
    case GST_VIDEO_ORIENTATION_UL_LR:
      return {VEXO_ROT_90R, true};
    case GST_VIDEO_ORIENTATION_UR_LL:
      return {VEXO_ROT_90L, true};
    default:
      return {VEXO_ROT_COPY, false};
  }
}

bool picture_of(const GstVideoFrame &frame, const Side &side, int32_t standard,
                const GstVideoRectangle &part, vexo_img *img) {
  const GstVideoFormatInfo *format = frame.info.finfo;
  uint8_t *planes[GST_VIDEO_MAX_PLANES] = {};
  int32_t strides[GST_VIDEO_MAX_PLANES] = {};
  for (int32_t p = 0; p < vexo_format_planes(side.format); ++p) {
    const int x =
        part.x >> (p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_W_SUB(format, 1));
    const int y =
        part.y >> (p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_H_SUB(format, 1));
    strides[p] = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, p);
    planes[p] = static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, p)) +
                ptrdiff_t{y} * strides[p] +
                ptrdiff_t{x} * vexo_format_sample_bytes(side.format, p);
  }
  if (vexo_picture_wrap(img, side.format, part.w, part.h, planes, strides) !=
      VEXO_OK) {
    return false;
  }
  img->color_std = standard;
  return true;
}

vexo_img field_of(const vexo_img &img, int field) {
  uint8_t *planes[4];
  int32_t strides[4];
  for (int32_t p = 0; p < vexo_format_planes(img.format); ++p) {
    planes[p] = img.plane[p] + ptrdiff_t{field} * img.stride[p];
    strides[p] = 2 * img.stride[p];
  }
  vexo_img half = {};
  vexo_picture_wrap(&half, img.format, img.width[0],
                    (img.height[0] + 1 - field) / 2, planes, strides);
  half.color_std = img.color_std;
  return half;
}

vexo_img upside_down(const vexo_img &img) {
  vexo_img result = img;
  for (int32_t p = 0; p < vexo_format_planes(img.format); ++p) {
    result.plane[p] += ptrdiff_t{img.height[p] - 1} * img.stride[p];
    result.stride[p] = -img.stride[p];
  }
  return result;
}

void draw_border(const GstVideoFrame &frame, const Side &side,
                 const GstVideoRectangle &place) {
  const GstVideoFormatInfo *format = frame.info.finfo;
  for (int32_t p = 0; p < vexo_format_planes(side.format); ++p) {
    const auto w_sub = p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_W_SUB(format, 1);
    const auto h_sub = p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_H_SUB(format, 1);
    const ptrdiff_t bytes = vexo_format_sample_bytes(side.format, p);
    const auto shifted = [](int n, unsigned shift) {
      return (n + (1 << shift) - 1) >> shift;
    };
    uint8_t unit[4];
    const int size = black(side, p, unit);
    // A row of packed 4:2:2 has whole pairs of pixels.
    const int32_t width =
        frame.info.width + (size == 4 && bytes == 2 ? frame.info.width % 2 : 0);
    const ptrdiff_t row_bytes = shifted(width, w_sub) * bytes;
    const ptrdiff_t left = shifted(place.x, w_sub) * bytes;
    const ptrdiff_t right = shifted(place.x + place.w, w_sub) * bytes;
    const int top = shifted(place.y, h_sub);
    const int bottom = shifted(place.y + place.h, h_sub);
    for (int y = 0; y < shifted(frame.info.height, h_sub); ++y) {
      auto *const row =
          static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, p)) +
          ptrdiff_t{y} * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, p);
      if (y < top || y >= bottom) {
        fill(row, row_bytes, unit, size);
      } else {
        fill(row, left, unit, size);
        fill(row + right, row_bytes - right, unit, size);
      }
    }
  }
}

void set_opaque(const vexo_img &img) {
  const ptrdiff_t alpha =
      img.format == VEXO_FMT_RGBA8888 || img.format == VEXO_FMT_BGRA8888 ? 3
                                                                         : 0;
  for (int32_t y = 0; y < img.height[0]; ++y) {
    uint8_t *const row = img.plane[0] + ptrdiff_t{y} * img.stride[0] + alpha;
    for (ptrdiff_t x = 0; x < img.width[0]; ++x) row[4 * x] = 255;
  }
}

}  // namespace lox_gst
