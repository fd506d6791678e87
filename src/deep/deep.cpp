// SPDX-License-Identifier: Apache-2.0
//
// Pictures with samples of 16 bits: copies, windows, frames, turns and sizes,
// plane by plane.
#include "orumlox/deep.h"

#include <cstddef>

#include "common/copy.h"
#include "common/format.h"
#include "common/memory.h"
#include "common/row_range.h"
#include "orumlox/common.h"
#include "orumlox/rot.h"
#include "rot/rot.h"
#include "rsz/plane_scalers.h"

namespace lox {

namespace {

// Planes, and the bytes of a unit of each.
struct Deep {
  int planes = 0;  // 0: another format
  int unit[3] = {};
};
Deep deep_of(int32_t format) {
  if (format == VEXO_FMT_P010LE) return {2, {2, 4}};
  if (format == VEXO_FMT_YUV420PLANAR16) return {3, {2, 2, 2}};
  return {};
}

// Calls work(planes) for pictures of one such format.
template <class Work>
int32_t with_planes(const vexo_img &src, const vexo_img &dst, Work work) {
  if (src.format != dst.format) return VEXO_ERR_ARG;
  const Deep deep = deep_of(src.format);
  return deep.planes == 0 ? VEXO_ERR_UNSUPPORTED : work(deep);
}

// Where the source's offset is in plane p of a picture.
uint8_t *at_offset(const vexo_img &img, int p, const vexo_img &src, int unit) {
  const int32_t x = p == 0 ? src.offset_x : half_up(src.offset_x);
  const int32_t y = p == 0 ? src.offset_y : half_up(src.offset_y);
  return img.plane[p] + ptrdiff_t{y} * img.stride[p] +
         static_cast<ptrdiff_t>(int64_t{x} * unit);
}

void copy(const vexo_img &src, const uint8_t *from, const vexo_img &dst,
          uint8_t *to, int p, int unit, int32_t width, int32_t height) {
  const int64_t bytes = int64_t{width} * unit;
  if (height > 0 && bytes == src.stride[p] && bytes == dst.stride[p]) {
    copy_plane(to, 0, from, 0, bytes * height, 1);
  } else {
    copy_plane(to, dst.stride[p], from, src.stride[p], bytes, height);
  }
}
void copy_planes(const vexo_img &src, const vexo_img &dst, const Deep &deep,
                 RowRange asked) {
  for (int p = 0; p < deep.planes; ++p) {
    if (src.width[p] < 1 || src.height[p] < 1) continue;
    const RowRange rows = rows_of_plane(asked, src.height[0], src.height[p]);
    copy(src, src.plane[p] + ptrdiff_t{rows.begin} * src.stride[p], dst,
         dst.plane[p] + ptrdiff_t{rows.begin} * dst.stride[p], p, deep.unit[p],
         src.width[p], rows.end - rows.begin);
  }
}

// Words from the start of every row on; an odd last byte is a low one.
void fill(const vexo_img &img, int p, int black) {
  if (img.stride[p] < 1 || img.buf_height[p] < 1) return;
  uint8_t *const first = img.plane[p];
  for (int32_t i = 0; i < img.stride[p]; ++i) {
    first[i] = static_cast<uint8_t>(i % 2 == 0 ? black : black >> 8);
  }
  for (ptrdiff_t y = 1; y < img.buf_height[p]; ++y) {
    copy_plane(first + y * img.stride[p], 0, first, 0, img.stride[p], 1);
  }
}

void turn_plane(const vexo_img &src, uint32_t rotation, const vexo_img &dst,
                int p, int unit) {
  // The copy of words rounds odd strides.
  if (rotation == VEXO_ROT_COPY) {
    return copy(src, src.plane[p], dst, dst.plane[p], p, unit, src.width[p],
                src.height[p]);
  }
  (unit == 2 ? vexo_tbl_fn_rot_16b : vexo_tbl_fn_rot_32b)[rotation](
      src.plane[p], src.width[p], src.height[p], src.stride[p], dst.stride[p],
      dst.plane[p]);
}

// --- scaling ----------------------------------------------------------------

Plane plane_of(const vexo_img &src, const vexo_img &dst, int p,
               RowRange asked) {
  Plane plane = {src.plane[p],  src.width[p], src.height[p], dst.width[p],
                 dst.height[p], dst.plane[p], src.stride[p], dst.stride[p]};
  plane.rows = rows_of_plane(asked, dst.height[0], plane.dst_height);
  return plane;
}

SampleType type_of(int unit) { return unit == 2 ? k16b : k16b16b; }

void scale_plane(const Plane &plane, int unit, int32_t mode, uint8_t *scratch) {
  // Halves have a form of their own, which rounds odd strides.
  if (plane.src_stride % 2 == 0 && plane.dst_stride % 2 == 0 &&
      plane.src_width / 2 == plane.dst_width &&
      reduce_words(unit, plane) == VEXO_OK) {
    return;
  }
  scale(type_of(unit), Turn::kNone, plane, mode, scratch);
}

int32_t scale_image(const vexo_img &src, const vexo_img &dst, const Deep &deep,
                    RowRange rows) {
  if (src.width[0] == dst.width[0] && src.height[0] == dst.height[0]) {
    copy_planes(src, dst, deep, rows);
    return VEXO_OK;
  }
  int64_t most = 0;
  for (int p = 0; p < deep.planes; ++p) {
    const Plane plane = plane_of(src, dst, p, rows);
    if (plane.src_width < 1 || plane.src_height < 1 || plane.dst_width < 1 ||
        plane.dst_height < 1) {
      return VEXO_ERR_ARG;
    }
    const int64_t wanted =
        scratch_for(type_of(deep.unit[p]), Turn::kNone, plane);
    if (wanted > most) most = wanted;
  }
  uint8_t *const scratch = most > 0 ? allocate<uint8_t>(most) : nullptr;
  if (most > 0 && scratch == nullptr) return VEXO_ERR_ARG;
  for (int p = 0; p < deep.planes; ++p) {
    scale_plane(plane_of(src, dst, p, rows), deep.unit[p], dst.mode, scratch);
  }
  mlox_mfree_align32(scratch);
  return VEXO_OK;
}

}  // namespace

}  // namespace lox

using lox::Deep;
using lox::with_planes;

extern "C" {

int32_t vexo_cpy_deep(const vexo_img *src, const vexo_img *dst) {
  return with_planes(*src, *dst, [=](const Deep &deep) -> int32_t {
    lox::copy_planes(*src, *dst, deep, lox::kAllRows);
    return VEXO_OK;
  });
}

int32_t vexo_crop_deep(const vexo_img *src, const vexo_img *dst) {
  return with_planes(*src, *dst, [=](const Deep &deep) -> int32_t {
    for (int p = 0; p < deep.planes; ++p) {
      if (dst->width[p] < 1 || dst->height[p] < 1) continue;
      lox::copy(*src, lox::at_offset(*src, p, *src, deep.unit[p]), *dst,
                dst->plane[p], p, deep.unit[p], dst->width[p], dst->height[p]);
    }
    return VEXO_OK;
  });
}

int32_t vexo_padding_deep(const vexo_img *src, const vexo_img *dst) {
  return with_planes(*src, *dst, [=](const Deep &deep) -> int32_t {
    if (dst->width[0] < int64_t{src->offset_x} + src->width[0] ||
        dst->height[0] < int64_t{src->offset_y} + src->height[0]) {
      return VEXO_ERR_ARG;
    }
    for (int p = 0; p < deep.planes; ++p) {
      const int black = p == 0 ? 64 : 512;
      lox::fill(*dst, p, deep.planes == 2 ? black << 6 : black);
      if (src->width[p] < 1 || src->height[p] < 1) continue;
      lox::copy(*src, src->plane[p], *dst,
                lox::at_offset(*dst, p, *src, deep.unit[p]), p, deep.unit[p],
                src->width[p], src->height[p]);
    }
    return VEXO_OK;
  });
}

int32_t vexo_rot_deep(const vexo_img *src, uint32_t rotation,
                      const vexo_img *dst) {
  return with_planes(*src, *dst, [=](const Deep &deep) -> int32_t {
    if (rotation > VEXO_ROT_VERT) return VEXO_ERR_UNSUPPORTED;
    for (int p = 0; p < deep.planes; ++p) {
      lox::turn_plane(*src, rotation, *dst, p, deep.unit[p]);
    }
    return VEXO_OK;
  });
}

int32_t vexo_rsz_deep(const vexo_img *src, const vexo_img *dst) {
  return with_planes(*src, *dst, [=](const Deep &deep) {
    return lox::scale_image(*src, *dst, deep, lox::kAllRows);
  });
}

int32_t vexo_rsz_deep_rows(const vexo_img *src, const vexo_img *dst, int32_t y0,
                           int32_t y1) {
  return lox::in_range({y0, y1}, dst->height[0], true, [=](lox::RowRange rows) {
    return with_planes(*src, *dst, [=](const Deep &deep) {
      return lox::scale_image(*src, *dst, deep, rows);
    });
  });
}

}  // extern "C"
