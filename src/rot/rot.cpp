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
#include "orumlox/common.h"
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

void turn_plane(vexo_rot_kernel *const *kernels, uint32_t rotation,
                const vexo_img &src, const vexo_img &dst, int p) {
  kernels[rotation](src.plane[p], src.width[p], src.height[p], src.stride[p],
                    dst.stride[p], dst.plane[p]);
}

}  // namespace

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
  using lox::turn_plane;
  static vexo_rot_kernel *const *const kKernels[] = {
      vexo_tbl_fn_rot_8b, vexo_tbl_fn_rot_16b, vexo_tbl_fn_rot_24b,
      vexo_tbl_fn_rot_32b};
  const int32_t format = src->format;
  const int unit = lox::is_planar_yuv(format) ? 1 : lox::rgb_bytes(format);
  if (rotation > VEXO_ROT_VERT || unit == 0) return VEXO_ERR_UNSUPPORTED;
  turn_plane(kKernels[unit - 1], rotation, *src, *dst, 0);
  if (lox::has_chroma_pairs(format)) {
    turn_plane(vexo_tbl_fn_rot_16b, rotation, *src, *dst, 1);
  } else if (unit == 1 && format != VEXO_FMT_YUV400) {
    turn_plane(vexo_tbl_fn_rot_8b, rotation, *src, *dst, 1);
    turn_plane(vexo_tbl_fn_rot_8b, rotation, *src, *dst, 2);
  }
  return VEXO_OK;
}

}  // extern "C"
