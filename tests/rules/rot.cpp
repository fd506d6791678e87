// SPDX-License-Identifier: Apache-2.0
// Turning, mirroring, copying, windows and frames, unit by unit.
#include <orumlox/common.h>
#include <orumlox/orumlox.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "rules/rules.h"

namespace lox_test {
namespace {

void turn(uint32_t code, int unit, const uint8_t *src, int32_t width,
          int32_t height, int64_t src_stride, int64_t dst_stride,
          uint8_t *dst) {
  if (code == VEXO_ROT_COPY && unit == 2) {
    src_stride &= ~1;
    dst_stride &= ~1;
  }
  for (int32_t y = 0; y < height && width > 0; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const Point to = rotated(code, {width, height}, x, y);
      for (int i = 0; i < unit; ++i) {
        dst[to.y * dst_stride + int64_t{to.x} * unit + i] =
            src[y * src_stride + int64_t{x} * unit + i];
      }
    }
  }
}

// vexo_rot_8b_90l or vexo_cpy_8b, by the bits of its unit.
void kernel(const Function &function, const uint8_t *src, int32_t width,
            int32_t height, int32_t src_stride, int32_t dst_stride,
            uint8_t *dst) {
  constexpr std::string_view kWays[] = {"_90l", "_90r", "_180", "_hori",
                                        "_vert"};
  uint32_t code = VEXO_ROT_COPY;
  for (uint32_t i = 0; i < 5; ++i) {
    if (std::string_view(function.name).ends_with(kWays[i])) code = i + 1;
  }
  turn(code, std::atoi(function.name + 9) / 8, src, width, height, src_stride,
       dst_stride, dst);
}

void block_copy(const Function &, void *dst, const void *src, int32_t dst_step,
                int32_t src_step, int32_t bytes, int32_t rows) {
  move_rows(static_cast<const uint8_t *>(src), src_step, bytes, rows, dst_step,
            static_cast<uint8_t *>(dst));
}

// The bytes of a unit of each plane, by codes from `first` on; none where the
// call takes no such code.
struct Units {
  int32_t first;
  int units[3];
};
constexpr Units kCopied[] = {{INT32_MIN, {}},
                             {VEXO_FMT_YUV400, {1}},
                             {VEXO_FMT_YUV420, {1, 1, 1}},
                             {VEXO_FMT_NV12, {1, 2}},
                             {VEXO_FMT_NV21, {1, 1, 1}},
                             {VEXO_FMT_T64X32, {}},
                             {VEXO_FMT_T16X16, {1, 1, 1}},
                             {100, {}},
                             {200, {2}},
                             {300, {}}};
constexpr Units kTurned[] = {{INT32_MIN, {}},
                             {VEXO_FMT_YUV400, {1}},
                             {VEXO_FMT_YUV420, {1, 1, 1}},
                             {VEXO_FMT_NV12, {1, 2}},
                             {VEXO_FMT_YUV422W, {1, 1, 1}},
                             {VEXO_FMT_T64X32, {}},
                             {VEXO_FMT_T16X16, {1, 1, 1}},
                             {100, {}},
                             {200, {2}},
                             {300, {}},
                             {400, {3}},
                             {500, {4}},
                             {600, {}}};

template <size_t kCount>
int32_t turn_planes(const Units (&table)[kCount], uint32_t code,
                    const vexo_img *src, const vexo_img *dst) {
  const Units *of = table;
  while (of + 1 < table + kCount && of[1].first <= src->format) ++of;
  if (of->units[0] == 0 || code > VEXO_ROT_VERT) return VEXO_ERR_UNSUPPORTED;
  for (int p = 0; p < 3; ++p) {
    turn(code, of->units[p], src->plane[p],
         of->units[p] > 0 ? src->width[p] : 0, src->height[p], src->stride[p],
         dst->stride[p], dst->plane[p]);
  }
  return VEXO_OK;
}
int32_t copy(const Function &, const vexo_img *src, const vexo_img *dst) {
  return src->format != dst->format ? VEXO_ERR_ARG
                                    : turn_planes(kCopied, 0, src, dst);
}

// How a plane of a window or frame is addressed from the luma origin (x, y).
struct PlaneRule {
  int bytes;            // of a column of the plane
  bool half_x, half_y;  // the origin is halved, rounded up
  uint8_t black;
};

// vexo_crop and vexo_padding: `small` is the picture at a place of `large`.
int32_t window(const Function &function, const vexo_img *src,
               const vexo_img *dst) {
  const bool cuts = function.address == AnyFunction(vexo_crop);
  const int32_t format = src->format;
  const int64_t x = src->offset_x;
  const int64_t y = src->offset_y;
  if (!cuts && (x + src->width[0] > dst->width[0] ||
                y + src->height[0] > dst->height[0])) {
    return VEXO_ERR_ARG;
  }
  const bool planar = format == VEXO_FMT_YUV420;
  const bool pairs = has_pairs(format);
  const int32_t last = cuts ? VEXO_FMT_ABGR8888 : VEXO_FMT_BGRA8888;
  const int bytes = format == VEXO_FMT_RGB888 || format == VEXO_FMT_BGR888 ? 3
                    : format >= VEXO_FMT_RGBA8888 && format <= last        ? 4
                                                                           : 0;
  if (!planar && !pairs && bytes == 0) return VEXO_ERR_UNSUPPORTED;
  const PlaneRule rules[3] = {bytes > 0 ? PlaneRule{bytes, false, false, 0}
                                        : PlaneRule{1, false, false, 16},
                              {1, planar, true, 128},
                              {1, true, true, 128}};
  for (int p = 0; p < (planar ? 3 : pairs ? 2 : 1); ++p) {
    const PlaneRule &r = rules[p];
    const vexo_img &small = cuts ? *dst : *src;
    const int64_t left = (r.half_x ? (x + 1) / 2 : x) * r.bytes;
    const int64_t top = r.half_y ? (y + 1) / 2 : y;
    if (!cuts) {
      std::fill_n(dst->plane[p], int64_t{dst->stride[p]} * dst->buf_height[p],
                  r.black);
    }
    // A row of pairs has as many bytes as the luma's.
    const int64_t row =
        int64_t{small.width[p > 0 && !r.half_x ? 0 : p]} * r.bytes;
    const auto place = [&](const vexo_img &img) {
      return img.plane[p] + top * img.stride[p] + left;
    };
    move_rows(cuts ? place(*src) : src->plane[p], src->stride[p], row,
              small.height[p], dst->stride[p],
              cuts ? dst->plane[p] : place(*dst));
  }
  return VEXO_OK;
}

}  // namespace

int32_t turn_picture(const Function &, const vexo_img *src, uint32_t rotation,
                     const vexo_img *dst) {
  return turn_planes(kTurned, rotation, src, dst);
}

std::vector<Rule> rot_rules() {
  return {
      rule_for(mlox_blk_mcpy, block_copy),
      rule_for(vexo_cpy, copy),
      rule_for(vexo_rot, turn_picture),
      rule_for_rows(vexo_rot_rows, turn_picture),
      rule_for(vexo_crop, window),
      rule_for(vexo_padding, window),
      rule_for(vexo_cpy_8b, kernel),
      rule_for(vexo_cpy_16b, kernel),
      rule_for(vexo_cpy_24b, kernel),
      rule_for(vexo_cpy_32b, kernel),
#define KERNEL(name) rule_for(name, kernel),
#include "vexo_rot_kernel.inc"
  };
}

}  // namespace lox_test
