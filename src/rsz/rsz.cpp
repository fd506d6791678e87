// SPDX-License-Identifier: Apache-2.0
//
// The entry points of scaling and of scaling with a turn: format codes, sizes
// that agree, statuses, and the scratch memory that a call's planes share.
#include "orumlox/rsz.h"

#include <cstdint>

#include "common/format.h"
#include "common/memory.h"
#include "orumlox/common.h"
#include "orumlox/rot.h"
#include "rsz/layout.h"
#include "rsz/rsz.h"

namespace lox {

namespace {

Layout yuv_layout(int32_t format) {
  if (!is_planar_yuv(format)) return {};
  if (format == VEXO_FMT_YUV400) return {1, {k8b}};
  if (has_chroma_pairs(format)) return {2, {k8b, k8b8b}};
  return {3, {k8b, k8b, k8b}};
}

}  // namespace

Layout layout_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_RGB565:
    case VEXO_FMT_BGR565:
      return {1, {k5b6b5b}};
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
      return {1, {k8b8b8b}};
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
    case VEXO_FMT_ARGB8888:
    case VEXO_FMT_ABGR8888:
      return {1, {k8b8b8b8b}};
    default:
      return yuv_layout(format);
  }
}

Plane plane_of(const vexo_img &src, const vexo_img &dst, int p) {
  return {src.plane[p],  src.width[p], src.height[p], dst.width[p],
          dst.height[p], dst.plane[p], src.stride[p], dst.stride[p]};
}

namespace {

// Rows of a plane that is copied, which has the source's sizes. `even`: strides
// are rounded down.
Plane plane_to_copy(const vexo_img &src, const vexo_img &dst, int p,
                    RowRange asked, bool even) {
  Plane plane = plane_of(src, dst, p);
  const RowRange rows = rows_of_plane(asked, src.height[0], plane.src_height);
  const int64_t mask = even ? ~int64_t{1} : ~int64_t{0};
  plane.src_height = plane.src_width < 1 ? 0 : rows.end - rows.begin;
  if (plane.src_height < 1) return plane;
  plane.src += (plane.src_stride & mask) * rows.begin;
  plane.dst += (plane.dst_stride & mask) * rows.begin;
  return plane;
}

void copy(SampleType type, const Plane &p) {
  if (p.src_width < 1) return;
  const auto by = [&p](auto *kernel, int32_t width) {
    kernel(p.src, width, p.src_height, p.src_stride, p.dst_stride, p.dst);
  };
  if (type.rgb565) {
    by(vexo_cpy_16b, p.src_width);
  } else if (type.unit == 2) {
    // Pairs go as bytes, whose strides are not rounded to even. A row of more
    // pairs than that is in no memory.
    if (p.src_width <= INT32_MAX / 2) by(vexo_cpy_8b, 2 * p.src_width);
  } else {
    by(type.unit == 1   ? vexo_cpy_8b
       : type.unit == 3 ? vexo_cpy_24b
                        : vexo_cpy_32b,
       p.src_width);
  }
}

int32_t scale_planes(const Layout &layout, Turn turn, const vexo_img &src,
                     const vexo_img &dst, RowRange rows) {
  int64_t size = 0;
  for (int p = 0; p < layout.planes; ++p) {
    const int64_t wanted =
        scratch_for(layout.type[p], turn, plane_of(src, dst, p));
    if (wanted > size) size = wanted;
  }
  uint8_t *scratch = nullptr;
  if (size > 0) {
    scratch = allocate<uint8_t>(size);
    if (scratch == nullptr) return VEXO_ERR_ARG;
  }
  int32_t status = VEXO_OK;
  for (int p = 0; p < layout.planes && status == VEXO_OK; ++p) {
    Plane plane = plane_of(src, dst, p);
    plane.rows = rows_of_plane(rows, dst.height[0], plane.height(turn));
    status = scale(layout.type[p], turn, plane, dst.mode, scratch);
  }
  mlox_mfree_align32(scratch);
  return status;
}

bool same_size(const vexo_img &a, const vexo_img &b) {
  return a.width[0] == b.width[0] && a.height[0] == b.height[0];
}

// 16-bit samples in plane 0, pairs of them in plane 1. Quirk: plane 0 is
// written before plane 1 is checked, because planes are scaled one after the
// other.
int32_t scale_p010(const vexo_img &src, const vexo_img &dst, RowRange rows) {
  if (same_size(src, dst)) {
    const Plane luma = plane_to_copy(src, dst, 0, rows, true);
    const Plane chroma = plane_to_copy(src, dst, 1, rows, true);
    vexo_cpy_16b(luma.src, luma.src_width, luma.src_height, luma.src_stride,
                 luma.dst_stride, luma.dst);
    if (chroma.src_width < 1 || chroma.src_width > INT32_MAX / 2) {
      return VEXO_OK;
    }
    vexo_cpy_16b(chroma.src, 2 * chroma.src_width, chroma.src_height,
                 chroma.src_stride, chroma.dst_stride, chroma.dst);
    return VEXO_OK;
  }
  for (int p = 0; p < 2; ++p) {
    Plane plane = plane_of(src, dst, p);
    plane.rows = rows_of_plane(rows, dst.height[0], plane.dst_height);
    const int32_t status = reduce_words(p == 0 ? 2 : 4, plane);
    if (status != VEXO_OK) return status;
  }
  return VEXO_OK;
}

int32_t scale_image(const vexo_img &src, const vexo_img &dst, RowRange rows) {
  if (src.format != dst.format) return VEXO_ERR_ARG;
  if (src.format == VEXO_FMT_P010LE) return scale_p010(src, dst, rows);
  const Layout layout = layout_of(src.format);
  if (layout.planes == 0) return VEXO_ERR_UNSUPPORTED;
  if (!same_size(src, dst)) {
    return scale_planes(layout, Turn::kNone, src, dst, rows);
  }
  for (int p = 0; p < layout.planes; ++p) {
    const SampleType type = layout.type[p];
    copy(type, plane_to_copy(src, dst, p, rows, type.rgb565));
  }
  return VEXO_OK;
}

}  // namespace

int32_t status_of_scaling(const vexo_img &src, const vexo_img &dst) {
  const bool words = src.format == VEXO_FMT_P010LE;
  const int planes = words ? 2 : layout_of(src.format).planes;
  if (planes == 0) return VEXO_ERR_UNSUPPORTED;
  if (same_size(src, dst)) return VEXO_OK;
  for (int p = 0; p < planes; ++p) {
    const Plane plane = plane_of(src, dst, p);
    const int32_t status = words                    ? status_of_words(plane)
                           : is_scaled_plane(plane) ? VEXO_OK
                                                    : VEXO_ERR_ARG;
    if (status != VEXO_OK) return status;
  }
  return VEXO_OK;
}

bool is_scaled(int32_t format) { return layout_of(format).planes > 0; }

}  // namespace lox

using lox::Turn;

extern "C" {

int32_t vexo_rsz(const vexo_img *src, const vexo_img *dst) {
  return lox::scale_image(*src, *dst, lox::kAllRows);
}

int32_t vexo_rsz_rows(const vexo_img *src, const vexo_img *dst, int32_t y0,
                      int32_t y1) {
  return lox::in_range(
      {y0, y1}, dst->height[0], lox::has_half_rows(dst->format),
      [=](lox::RowRange rows) { return lox::scale_image(*src, *dst, rows); });
}

int32_t vexo_rsz_rot(const vexo_img *src, uint32_t rotation,
                     const vexo_img *dst) {
  using namespace lox;
  if (src->format != dst->format) return VEXO_ERR_ARG;
  const Turn turn = rotation == VEXO_ROT_90L   ? Turn::kLeft
                    : rotation == VEXO_ROT_90R ? Turn::kRight
                    : rotation == VEXO_ROT_180 ? Turn::kHalf
                                               : Turn::kNone;
  const bool unscaled = is_quarter(turn) ? src->width[0] == dst->height[0] &&
                                               src->height[0] == dst->width[0]
                                         : same_size(*src, *dst);
  // Before the format is looked at, because vexo_rot takes more formats.
  if (unscaled) return vexo_rot(src, rotation, dst);
  const Layout layout = yuv_layout(src->format);
  if (layout.planes == 0) return VEXO_ERR_UNSUPPORTED;
  return scale_planes(layout, turn, *src, *dst, kAllRows);
}

}  // extern "C"
