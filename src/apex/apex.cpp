// SPDX-License-Identifier: Apache-2.0
//
// The entry point of scaling by Lanczos filters: formats, sizes, statuses, and
// where chroma lies beside luma.
#include "orumlox/apex.h"

#include <cstdint>

#include "apex/plane.h"
#include "common/caches.h"
#include "common/memory.h"
#include "orumlox/common.h"

namespace lox {

namespace {

struct Layout {
  int32_t planes = 0;  // 0: the format is not scaled
  ApexSample sample = ApexSample::kByte;
  int32_t parts = 1;        // of plane 0's samples
  int32_t other_parts = 1;  // of the others'
  bool half_width = false, half_height = false;
  int32_t alpha = -1;
};

Layout layout_of(int32_t format) {
  constexpr auto kByte = ApexSample::kByte;
  switch (format) {
    case VEXO_FMT_YUV400:
      return {1};
    case VEXO_FMT_YUV420:
    case VEXO_FMT_YV12:
      return {3, kByte, 1, 1, true, true};
    case VEXO_FMT_YUV422N:
    case VEXO_FMT_YV16:
      return {3, kByte, 1, 1, true, false};
    case VEXO_FMT_YUV422W:
      return {3, kByte, 1, 1, false, true};
    case VEXO_FMT_YUV444:
      return {3};
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return {2, kByte, 1, 2, true, true};
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
      return {1, kByte, 3};
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
      return {1, kByte, 4, 0, false, false, 3};
    case VEXO_FMT_ARGB8888:
    case VEXO_FMT_ABGR8888:
      return {1, kByte, 4, 0, false, false, 0};
    case VEXO_FMT_YUV420PLANAR16:
      return {3, ApexSample::kLow10, 1, 1, true, true};
    case VEXO_FMT_P010LE:
      return {2, ApexSample::kHigh10, 1, 2, true, true};
    default:
      return {};
  }
}

// Whether a plane has half the samples of plane 0, rounded either way.
bool is_half(const int32_t *sizes, int p) {
  return sizes[p] == sizes[0] / 2 || sizes[p] == sizes[0] - sizes[0] / 2;
}

ApexAxis axis_of(const int32_t *from, const int32_t *to, int p, bool half,
                 bool left) {
  const bool beside = p > 0 && half && is_half(from, p) && is_half(to, p);
  const int of = beside ? 0 : p;
  return {from[p], to[p], from[of], to[of], beside && left};
}

ApexPlane plane_of(const vexo_img &src, const vexo_img &dst,
                   const Layout &layout, bool far, int p) {
  const int32_t mask = apex_bytes(layout.sample) == 2 ? ~1 : ~0;
  const bool scales =
      src.width[p] != dst.width[p] || src.height[p] != dst.height[p];
  return {src.plane[p],
          dst.plane[p],
          src.stride[p] & mask,
          dst.stride[p] & mask,
          layout.sample,
          p == 0 ? layout.parts : layout.other_parts,
          scales && dst.mode == VEXO_MODE_ALPHA ? layout.alpha : -1,
          axis_of(src.width, dst.width, p, layout.half_width, true),
          axis_of(src.height, dst.height, p, layout.half_height, false),
          far};
}

// Whether the source is more than the second cache holds.
bool is_far(const vexo_img &src, const Layout &layout) {
  double bytes = 0;
  for (int p = 0; p < layout.planes; ++p) {
    const int32_t parts = p == 0 ? layout.parts : layout.other_parts;
    bytes += double{1} * src.width[p] * src.height[p] * parts *
             apex_bytes(layout.sample);
  }
  return bytes >= static_cast<double>(memory_now().far_from);
}

bool is_near(int32_t a, int32_t b) {
  return a <= int64_t{b} * kMostRatio && b <= int64_t{a} * kMostRatio;
}

int32_t scale_image(const vexo_img &src, const vexo_img &dst) {
  if (src.format != dst.format) return VEXO_ERR_ARG;
  const Layout layout = layout_of(src.format);
  if (layout.planes == 0) return VEXO_ERR_UNSUPPORTED;
  for (int p = 0; p < layout.planes; ++p) {
    if (src.width[p] < 1 || src.height[p] < 1 || dst.width[p] < 1 ||
        dst.height[p] < 1) {
      return VEXO_ERR_ARG;
    }
  }
  const bool far = is_far(src, layout);
  int64_t size = 0;
  for (int p = 0; p < layout.planes; ++p) {
    if (!is_near(src.width[p], dst.width[p]) ||
        !is_near(src.height[p], dst.height[p])) {
      return VEXO_ERR_UNSUPPORTED;
    }
    const int64_t wanted = apex_scratch(plane_of(src, dst, layout, far, p));
    if (wanted > size) size = wanted;
  }
  uint8_t *const scratch = allocate<uint8_t>(size);
  if (scratch == nullptr) return VEXO_ERR_MEMORY;
  for (int p = 0; p < layout.planes; ++p) {
    apex_scale(plane_of(src, dst, layout, far, p), scratch);
  }
  mlox_mfree_align32(scratch);
  return VEXO_OK;
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_rsz_apex_c(const vexo_img *src, const vexo_img *dst) {
  return lox::scale_image(*src, *dst);
}

int32_t vexo_rsz_apex_supports(int32_t format) {
  return lox::layout_of(format).planes > 0 ? 1 : 0;
}

}  // extern "C"
