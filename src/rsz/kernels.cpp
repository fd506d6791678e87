// SPDX-License-Identifier: Apache-2.0
//
// The exported kernels of scaling. Each is the job that a plane scaler would do
// for one type of sample, role and turn.
#include <cstdint>

#include "orumlox/rsz.h"
#include "rsz/plane_scalers.h"

namespace lox {

namespace {

// What a role does with one direction.
enum class Pass : uint8_t {
  kNone,  // the source has the destination's samples
  kReduce,
  kReduceWhole,
  kReduceByRatio,  // kReduceWhole where the sizes divide, else kReduce
  kEnlarge,
  kEnlargeMod1
};

struct Role {
  Pass across : 4, down : 4;
};
constexpr Role kDownMult = {Pass::kReduceWhole, Pass::kReduceWhole};
constexpr Role kDownNonMult = {Pass::kReduce, Pass::kReduce};
constexpr Role kDownW = {Pass::kReduceByRatio, Pass::kNone};
constexpr Role kDownH = {Pass::kNone, Pass::kReduceByRatio};
constexpr Role kUp = {Pass::kEnlarge, Pass::kNone};
constexpr Role kUpMod1 = {Pass::kEnlargeMod1, Pass::kNone};
constexpr Role kUpH = {Pass::kNone, Pass::kEnlarge};
constexpr Role kUpHMod1 = {Pass::kNone, Pass::kEnlargeMod1};

Axis axis_of(Pass pass, int32_t src, int32_t dst) {
  switch (pass) {
    case Pass::kReduce:
      return {src, dst, Scaling::kReduce};
    case Pass::kReduceWhole:
      return {src, dst, Scaling::kReduceWhole};
    case Pass::kReduceByRatio:
      return reduced(src, dst);
    case Pass::kEnlargeMod1:
      return {src, dst, Scaling::kEnlargeMod1};
    default:
      return {src, dst, Scaling::kEnlarge};
  }
}

// Sizes of a direction that the role leaves alone are not read: its source has
// as many samples as its destination.
void run(SampleType type, Turn turn, Role role, const Plane &p) {
  const bool down = role.down != Pass::kNone;
  const int32_t width = p.width(turn);
  const int32_t src_width = role.across != Pass::kNone ? p.src_width : width;
  const int32_t height = down ? p.height(turn) : p.src_height;
  if (src_width < 1 || p.src_height < 1 || width < 1 || height < 1) return;
  // The passes across leave the turn to those down.
  interpolate_plane(make_job(type, down ? turn : Turn::kNone, p,
                             axis_of(role.across, src_width, width),
                             axis_of(role.down, p.src_height, height),
                             nullptr));
}

}  // namespace

}  // namespace lox

extern "C" {

#define LOX_KERNEL(name)                                               \
  void name(const uint8_t *src, int32_t src_width, int32_t src_height, \
            int32_t dst_width, int32_t dst_height, uint8_t *dst,       \
            int32_t src_stride, int32_t dst_stride)
#define LOX_RUN(name, type, turn, role)                         \
  LOX_KERNEL(name) {                                            \
    lox::run(lox::type, lox::Turn::turn, lox::role, LOX_PLANE); \
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
