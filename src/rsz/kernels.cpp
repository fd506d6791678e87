// SPDX-License-Identifier: Apache-2.0
//
// The exported kernels of scaling: for each type of sample, role and turn the
// job that the plane scalers would do in that step.
#include <cstdint>

#include "orumlox/rsz.h"
#include "rsz/scale_plane.h"

namespace lox {

namespace {

enum class Role : uint8_t {
  kDownMult,
  kDownNonMult,
  kDownW,
  kDownH,
  kUp,
  kUpMod1,
  kUpH,
  kUpHMod1
};

Scaling scaling_of(Role role, int32_t src, int32_t dst) {
  switch (role) {
    case Role::kDownMult:
      return Scaling::kReduceWhole;
    case Role::kDownNonMult:
      return Scaling::kReduce;
    case Role::kDownW:
    case Role::kDownH:
      return src % dst == 0 ? Scaling::kReduceWhole : Scaling::kReduce;
    case Role::kUp:
    case Role::kUpH:
      return Scaling::kEnlarge;
    default:
      return Scaling::kEnlargeMod1;
  }
}

bool goes_across(Role role) {
  return role == Role::kDownW || role == Role::kUp || role == Role::kUpMod1;
}
bool goes_down(Role role) {
  return role == Role::kDownH || role == Role::kUpH || role == Role::kUpHMod1;
}

struct Arguments {
  const uint8_t *src;
  int32_t src_width, src_height, dst_width, dst_height;
  uint8_t *dst;
  int32_t src_stride, dst_stride;
};

void run(SampleType type, Turn turn, Role role, const Arguments &a) {
  const int32_t width = is_quarter(turn) ? a.dst_height : a.dst_width;
  const int32_t height = is_quarter(turn) ? a.dst_width : a.dst_height;
  const bool across = !goes_down(role);
  const bool down = !goes_across(role);
  if (width < 1 || a.src_height < 1 || (across && a.src_width < 1) ||
      (down && height < 1)) {
    return;
  }
  const int64_t odd = type.rgb565 ? 1 : 0;  // strides rounded down to even
  interpolate_plane({.type = type,
                     // The passes across leave the turn to those down.
                     .turn = down ? turn : Turn::kNone,
                     .across = across
                                   ? Axis{a.src_width, width,
                                          scaling_of(role, a.src_width, width)}
                                   : unscaled(width),
                     .down = down ? Axis{a.src_height, height,
                                         scaling_of(role, a.src_height, height)}
                                  : unscaled(a.src_height),
                     .at_once = across && down,
                     .src = a.src,
                     .src_step = a.src_stride & ~odd,
                     .dst = a.dst,
                     .dst_step = a.dst_stride & ~odd,
                     .scratch = nullptr});
}

}  // namespace

}  // namespace lox

extern "C" {

#define LOX_KERNEL(name)                                               \
  void name(const uint8_t *src, int32_t src_width, int32_t src_height, \
            int32_t dst_width, int32_t dst_height, uint8_t *dst,       \
            int32_t src_stride, int32_t dst_stride)
#define LOX_RUN(name, type, turn, role)                               \
  LOX_KERNEL(name) {                                                  \
    lox::run(lox::type, lox::Turn::turn, lox::Role::role,             \
             {src, src_width, src_height, dst_width, dst_height, dst, \
              src_stride, dst_stride});                               \
  }

// The roles of a type, of which some have those down and some turns.
#define LOX_ACROSS(tag, type, turn)                             \
  LOX_RUN(vexo_##tag##_down_mult, type, turn, kDownMult)        \
  LOX_RUN(vexo_##tag##_down_non_mult, type, turn, kDownNonMult) \
  LOX_RUN(vexo_##tag##_down_w, type, turn, kDownW)              \
  LOX_RUN(vexo_##tag##_up, type, turn, kUp)                     \
  LOX_RUN(vexo_##tag##_up_mode1, type, turn, kUpMod1)
#define LOX_DOWN(tag, type, turn)                  \
  LOX_RUN(vexo_##tag##_down_h, type, turn, kDownH) \
  LOX_RUN(vexo_##tag##_up_h, type, turn, kUpH)     \
  LOX_RUN(vexo_##tag##_up_h_mode1, type, turn, kUpHMod1)
#define LOX_BOTH(tag, type, turn) \
  LOX_ACROSS(tag, type, turn)     \
  LOX_DOWN(tag, type, turn)

LOX_BOTH(8b_rsz, k8b, kNone)
LOX_BOTH(8b8b_rsz, k8b8b, kNone)
LOX_ACROSS(8b8b8b_rsz, k8b8b8b, kNone)
LOX_ACROSS(8b8b8b8b_rsz, k8b8b8b8b, kNone)
LOX_BOTH(5b6b5b_rsz, k5b6b5b, kNone)
LOX_BOTH(8b_rsz_rot_90l, k8b, kLeft)
LOX_BOTH(8b_rsz_rot_90r, k8b, kRight)
LOX_BOTH(8b_rsz_rot_180, k8b, kHalf)
LOX_BOTH(8b8b_rsz_rot_90l, k8b8b, kLeft)
LOX_BOTH(8b8b_rsz_rot_90r, k8b8b, kRight)
LOX_BOTH(8b8b_rsz_rot_180, k8b8b, kHalf)

LOX_RUN(vexo_8b_rsz_down_non_mult_720p_720x404, k8b, kNone, kDownNonMult)
LOX_RUN(vexo_8b8b_rsz_down_non_mult_720p_720x404, k8b8b, kNone, kDownNonMult)

LOX_KERNEL(vexo_16b_rsz_down_mult) {
  vexo_rsz_16b(src, src_width, src_height, dst_width, dst_height, dst, nullptr,
               src_stride, dst_stride, 0);
}
LOX_KERNEL(vexo_16b16b_rsz_down_mult) {
  vexo_rsz_16b16b(src, src_width, src_height, dst_width, dst_height, dst,
                  nullptr, src_stride, dst_stride, 0);
}

}  // extern "C"
