// SPDX-License-Identifier: Apache-2.0
//
// Thumbnails: pictures scaled, then turned.
#include <cstdint>
#include <cstring>

#include "common/memory.h"
#include "dct/plan.h"
#include "orumlox/common.h"
#include "orumlox/rot.h"

namespace lox {

namespace {

struct Geometry {
  int32_t width, height, stride, buf_height;
};
Geometry geometry(const vexo_img &img, int plane) {
  return {img.width[plane], img.height[plane], img.stride[plane],
          img.buf_height[plane]};
}
void set_geometry(vexo_img *img, int plane, const Geometry &g) {
  img->width[plane] = g.width;
  img->height[plane] = g.height;
  img->stride[plane] = g.stride;
  img->buf_height[plane] = g.buf_height;
}

// How many of the intermediate's planes get memory: none of other formats.
int planes_of(int32_t format) {
  return format == VEXO_FMT_YUV420 ? 3 : format == VEXO_FMT_NV12 ? 2 : 0;
}

void allocate_planes(vexo_img *img) {
  const int planes = planes_of(img->format);
  int64_t bytes = 0;
  for (int plane = 0; plane < planes; ++plane) {
    bytes += plane_bytes(*img, plane);
  }
  img->plane[0] = nullptr;
  if (planes == 0 || bytes > INT32_MAX) return;
  img->plane[0] = allocate<uint8_t>(bytes);
  if (img->plane[0] == nullptr) return;
  // What the scaler leaves unwritten is turned with the rest.
  memset(img->plane[0], 0, static_cast<size_t>(bytes));
  for (int plane = 1; plane < planes; ++plane) {
    img->plane[plane] = img->plane[plane - 1] +
                        static_cast<ptrdiff_t>(plane_bytes(*img, plane - 1));
  }
}

// Sets the turned picture's geometry where the call defines it; all else stays
// the caller's.
void turn_geometry(const vexo_img &from, uint32_t rotation, vexo_img *to) {
  const bool quarter = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
  if (!quarter && rotation != VEXO_ROT_180) return;
  const Geometry luma = geometry(from, 0);
  const int32_t selector = to->color_std;
  if (from.format == VEXO_FMT_YUV420) {
    for (int plane = 0; plane < 3; ++plane) {
      const int part = plane == 0 ? 1 : 2;
      // Quirk: stride and rows trade places, so that a buffer of the same size
      // holds the turned picture.
      set_geometry(to, plane,
                   quarter
                       ? Geometry{luma.height / part, luma.width / part,
                                  luma.buf_height / part, luma.stride / part}
                       : geometry(from, plane == 0 ? 0 : 1));
    }
  } else if (from.format == VEXO_FMT_NV12 && (selector == 0 || selector == 1)) {
    const int32_t stride = round_up(luma.height, selector == 0 ? 128 : 16);
    const int32_t rows = round_up(luma.width, selector == 0 ? 32 : 16);
    for (int plane = 0; plane < 2; ++plane) {
      const int part = plane + 1;
      set_geometry(
          to, plane,
          quarter ? Geometry{luma.height / part, luma.width / part, stride,
                             plane == 0      ? rows
                             : selector == 0 ? rows / 2
                                             : round_up(luma.width / 2, 16)}
                  : geometry(from, plane));
    }
  }
}

}  // namespace

}  // namespace lox

int32_t vexo_txc_new_init(const vexo_img *pair, vexo_img *intermediate,
                          vexo_rsz_new_context *context, vexo_shift_set *a,
                          vexo_shift_set *b, int32_t prescale,
                          int32_t rotation) {
  // Quirk: the status is dropped. Without a plan nothing is scaled later.
  vexo_rsz_new_init(pair, context, a, b, prescale);
  if (rotation == VEXO_ROT_COPY) return VEXO_OK;
  const vexo_img &scaled = pair[1];
  intermediate->format = scaled.format;
  const int planes = scaled.format == VEXO_FMT_YUV420 ? 3 : 2;
  for (int plane = 0; plane < planes; ++plane) {
    lox::set_geometry(intermediate, plane, lox::geometry(scaled, plane));
  }
  lox::allocate_planes(intermediate);
  return VEXO_OK;
}

int32_t vexo_txc_new(const vexo_img *pair, vexo_img *result,
                     const vexo_img *intermediate,
                     vexo_rsz_new_context *context, vexo_shift_set a,
                     vexo_shift_set b, int32_t rotation) {
  if (rotation == VEXO_ROT_COPY) {
    vexo_rsz_new(&pair[0], result, context, a, b);
    return VEXO_OK;
  }
  if (intermediate->plane[0] == nullptr || !lox::has_plan(context)) {
    return VEXO_OK;
  }
  vexo_rsz_new(&pair[0], intermediate, context, a, b);
  const auto code = static_cast<uint32_t>(rotation);
  lox::turn_geometry(*intermediate, code, result);
  vexo_rot(intermediate, code, result);
  return VEXO_OK;
}

int32_t vexo_txc_new_deinit(const vexo_img *pair, vexo_img *intermediate,
                            vexo_rsz_new_context *context, vexo_shift_set a,
                            vexo_shift_set b, int32_t rotation) {
  vexo_rsz_new_deinit(pair, context, a, b);
  if (rotation != VEXO_ROT_COPY) {
    mlox_mfree_align32(intermediate->plane[0]);
    intermediate->plane[0] = nullptr;
  }
  return VEXO_OK;
}
