// SPDX-License-Identifier: Apache-2.0
//
// Turns and mirrors planes and images. A quarter turn is a transpose that walks
// the source or the destination upwards. A half turn reverses every row and
// writes the rows from the last one on.
#include "orumlox/rot.h"

#include <cstddef>
#include <cstdint>

#include "common/copy.h"
#include "common/format.h"
#include "common/row_range.h"
#include "orumlox/common.h"
#include "rot/rot.h"
#include "rot/rotate_rows.h"

namespace lox {

namespace {

// The last of `count` rows, and the step from there to the row above.
template <class Byte>
Byte *last_row(Byte *first, int32_t stride, int32_t count) {
  return first + static_cast<ptrdiff_t>(int64_t{stride} * (count - 1));
}
ptrdiff_t upwards(int32_t stride) {
  return static_cast<ptrdiff_t>(-int64_t{stride});
}

// The kernels of units of kUnit bytes.
template <int kUnit>
struct PlaneTurns {
  static void left(const uint8_t *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
    if (width < 1 || height < 1) return;
    rotate_rows().transpose[kUnit - 1](src, src_stride,
                                       last_row(dst, dst_stride, width),
                                       upwards(dst_stride), width, height);
  }
  static void right(const uint8_t *src, int32_t width, int32_t height,
                    int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
    if (width < 1 || height < 1) return;
    rotate_rows().transpose[kUnit - 1](last_row(src, src_stride, height),
                                       upwards(src_stride), dst, dst_stride,
                                       width, height);
  }
  static void reverse_rows(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                           ptrdiff_t dst_step, int32_t width, int32_t height) {
    const auto reverse = rotate_rows().reverse[kUnit - 1];
    for (ptrdiff_t row = 0; row < height; ++row) {
      reverse(src + row * src_step, dst + row * dst_step, width);
    }
  }
  static void half(const uint8_t *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
    if (width < 1 || height < 1) return;
    reverse_rows(src, src_stride, last_row(dst, dst_stride, height),
                 upwards(dst_stride), width, height);
  }
  static void mirror(const uint8_t *src, int32_t width, int32_t height,
                     int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
    if (width < 1 || height < 1) return;
    reverse_rows(src, src_stride, dst, dst_stride, width, height);
  }
  static void flip(const uint8_t *src, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
    if (width < 1 || height < 1) return;
    copy_plane(last_row(dst, dst_stride, height), -int64_t{dst_stride}, src,
               src_stride, int64_t{width} * kUnit, height);
  }
};

// Kernels of a unit, by rotation code.
struct Kernels {
  int unit;
  vexo_rot_kernel *const *by_code;
};

// Turns what comes to these rows of the destination.
void turn_plane(const Kernels &kernels, uint32_t rotation, const vexo_img &src,
                const vexo_img &dst, int p, RowRange asked) {
  if (src.width[p] < 1 || src.height[p] < 1) return;
  const bool quarter = is_quarter(rotation);
  const int32_t *const sizes = quarter ? src.width : src.height;
  const RowRange rows = rows_of_plane(asked, sizes[0], sizes[p]);
  const int32_t count = rows.end - rows.begin;
  const bool backwards = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_180 ||
                         rotation == VEXO_ROT_VERT;
  const int64_t first = backwards ? sizes[p] - rows.end : rows.begin;
  // The copy of 16-bit units rounds strides down.
  const int32_t exact =
      rotation == VEXO_ROT_COPY && kernels.unit == 2 ? ~1 : ~0;
  const int64_t step = quarter ? kernels.unit : src.stride[p] & exact;
  const int64_t dst_step = dst.stride[p] & exact;
  kernels.by_code[rotation](
      src.plane[p] + first * step, quarter ? count : src.width[p],
      quarter ? src.height[p] : count, src.stride[p], dst.stride[p],
      dst.plane[p] + rows.begin * dst_step);
}

int32_t turn(const vexo_img &src, uint32_t rotation, const vexo_img &dst,
             RowRange rows) {
  static constexpr Kernels kKernels[] = {{1, vexo_tbl_fn_rot_8b},
                                         {2, vexo_tbl_fn_rot_16b},
                                         {3, vexo_tbl_fn_rot_24b},
                                         {4, vexo_tbl_fn_rot_32b}};
  const int32_t format = src.format;
  const int unit = turned_unit(format);
  if (rotation > VEXO_ROT_VERT || unit == 0) return VEXO_ERR_UNSUPPORTED;
  turn_plane(kKernels[unit - 1], rotation, src, dst, 0, rows);
  if (has_chroma_pairs(format)) {
    turn_plane(kKernels[1], rotation, src, dst, 1, rows);
  } else if (unit == 1 && format != VEXO_FMT_YUV400) {
    turn_plane(kKernels[0], rotation, src, dst, 1, rows);
    turn_plane(kKernels[0], rotation, src, dst, 2, rows);
  }
  return VEXO_OK;
}

}  // namespace

void turn_block(int unit, uint32_t rotation, const uint8_t *src, int32_t width,
                int32_t height, int32_t src_stride, int32_t dst_stride,
                uint8_t *dst, bool past) {
  if (width < 1 || height < 1) return;
  const RotateRows &rows = rotate_rows();
  const auto transpose =
      (past ? rows.transpose_past : rows.transpose)[unit - 1];
  if (rotation == VEXO_ROT_90L) {
    transpose(src, src_stride, last_row(dst, dst_stride, width),
              upwards(dst_stride), width, height);
  } else {
    transpose(last_row(src, src_stride, height), upwards(src_stride), dst,
              dst_stride, width, height);
  }
}

int turned_unit(int32_t format) {
  return is_planar_yuv(format) ? 1 : rgb_bytes(format);
}

}  // namespace lox

extern "C" {

#define LOX_KERNEL(name, unit, turn)                                        \
  void name(const uint8_t *src, int32_t width, int32_t height,              \
            int32_t src_stride, int32_t dst_stride, uint8_t *dst) {         \
    lox::PlaneTurns<unit>::turn(src, width, height, src_stride, dst_stride, \
                                dst);                                       \
  }
// The kernels of a unit and their table.
#define LOX_KERNELS(tag, unit)                                           \
  LOX_KERNEL(vexo_rot_##tag##_90l, unit, left)                           \
  LOX_KERNEL(vexo_rot_##tag##_90r, unit, right)                          \
  LOX_KERNEL(vexo_rot_##tag##_180, unit, half)                           \
  LOX_KERNEL(vexo_rot_##tag##_hori, unit, mirror)                        \
  LOX_KERNEL(vexo_rot_##tag##_vert, unit, flip)                          \
  vexo_rot_kernel *const vexo_tbl_fn_rot_##tag[6] = {                    \
      vexo_cpy_##tag,       vexo_rot_##tag##_90l,  vexo_rot_##tag##_90r, \
      vexo_rot_##tag##_180, vexo_rot_##tag##_hori, vexo_rot_##tag##_vert};

LOX_KERNELS(8b, 1)
LOX_KERNELS(16b, 2)
LOX_KERNELS(24b, 3)
LOX_KERNELS(32b, 4)

int32_t vexo_rot(const vexo_img *src, uint32_t rotation, const vexo_img *dst) {
  return lox::turn(*src, rotation, *dst, lox::kAllRows);
}

int32_t vexo_rot_rows(const vexo_img *src, uint32_t rotation,
                      const vexo_img *dst, int32_t y0, int32_t y1) {
  return lox::in_range(
      {y0, y1}, (lox::is_quarter(rotation) ? src->width : src->height)[0],
      lox::has_half_rows(src->format), [=](lox::RowRange rows) {
        return lox::turn(*src, rotation, *dst, rows);
      });
}

}  // extern "C"
