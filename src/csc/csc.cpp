// SPDX-License-Identifier: Apache-2.0
//
// The conversion entry points: checks, then a look-up of the two formats in a
// table of routes. A new route is a new row of its table.
#include "orumlox/csc.h"

#include <cstddef>
#include <cstdint>

#include "common/format.h"
#include "csc/yuv_layout.h"
#include "orumlox/common.h"

namespace lox {

namespace {

struct Route {
  int32_t src_format, dst_format;
  vexo_csc_kernel *kernel;
};

#define LOX_TO_565(code, token)                            \
  {code, VEXO_FMT_RGB565, vexo_csc_##token##_to_rgb565}, { \
    code, VEXO_FMT_BGR565, vexo_csc_##token##_to_bgr565    \
  }
#define LOX_TO_RGB(code, token)                                    \
  LOX_TO_565(code, token),                                         \
      {code, VEXO_FMT_RGB888, vexo_csc_##token##_to_rgb888},       \
      {code, VEXO_FMT_BGR888, vexo_csc_##token##_to_bgr888},       \
      {code, VEXO_FMT_RGBA8888, vexo_csc_##token##_to_rgba8888},   \
      {code, VEXO_FMT_BGRA8888, vexo_csc_##token##_to_bgra8888},   \
      {code, VEXO_FMT_ARGB8888, vexo_csc_##token##_to_argb8888}, { \
    code, VEXO_FMT_ABGR8888, vexo_csc_##token##_to_abgr8888        \
  }

#define LOX_TO_420(code, token)                            \
  {code, VEXO_FMT_YUV420, vexo_csc_##token##_to_yuv420},   \
      {code, VEXO_FMT_YV12, vexo_csc_##token##_to_yv12},   \
      {code, VEXO_FMT_NV12, vexo_csc_##token##_to_nv12}, { \
    code, VEXO_FMT_NV21, vexo_csc_##token##_to_nv21        \
  }

constexpr Route kRoutes[] = {
    {VEXO_FMT_YUV400, VEXO_FMT_RGB565, vexo_csc_yuv400_to_rgb565},
    {VEXO_FMT_YUV400, VEXO_FMT_RGB888, vexo_csc_yuv400_to_rgb888},
    LOX_TO_RGB(VEXO_FMT_YUV420, yuv420),
    LOX_TO_RGB(VEXO_FMT_YUV422N, yuv422n),
    LOX_TO_RGB(VEXO_FMT_YUV444, yuv444),
    LOX_TO_RGB(VEXO_FMT_YV12, yv12),
    LOX_TO_RGB(VEXO_FMT_NV12, nv12),
    LOX_TO_RGB(VEXO_FMT_NV21, nv21),
    LOX_TO_565(VEXO_FMT_YUV422W, yuv422w),
    LOX_TO_RGB(VEXO_FMT_T64X32, t64x32),
    {VEXO_FMT_T16X16, VEXO_FMT_RGBA8888, vexo_csc_t16x16_to_rgba8888},
    {VEXO_FMT_T8X8, VEXO_FMT_RGBA8888, vexo_csc_t8x8_to_rgba8888},
    {VEXO_FMT_T256X16, VEXO_FMT_RGBA8888, vexo_csc_t256x16_to_rgba8888},
    LOX_TO_RGB(VEXO_FMT_UYVY, uyvy),
    LOX_TO_RGB(VEXO_FMT_YUYV, yuyv),
    {VEXO_FMT_P010LE, VEXO_FMT_RGBA8888, vexo_csc_p010le_to_rgba8888},

    {VEXO_FMT_YUV420, VEXO_FMT_YUV422N, vexo_csc_yuv420_to_yuv422n},
    {VEXO_FMT_YUV420, VEXO_FMT_YV12, yuv420_to_yv12},
    {VEXO_FMT_YUV420, VEXO_FMT_NV12, vexo_csc_yuv420_to_nv12},
    {VEXO_FMT_YUV420, VEXO_FMT_NV21, vexo_csc_yuv420_to_nv21},
    {VEXO_FMT_YUV420, VEXO_FMT_T64X32, vexo_csc_yuv420_to_t64x32},
    {VEXO_FMT_YUV422N, VEXO_FMT_YUV420, vexo_csc_yuv422n_to_yuv420},
    {VEXO_FMT_YUV422N, VEXO_FMT_YV12, vexo_csc_yuv422n_to_yv12},
    {VEXO_FMT_YUV444, VEXO_FMT_YUV420, vexo_csc_yuv444_to_yuv420},
    {VEXO_FMT_YV16, VEXO_FMT_YUV420, vexo_csc_yv16_to_yuv420},
    {VEXO_FMT_YV16, VEXO_FMT_YV12, vexo_csc_yv16_to_yv12},
    {VEXO_FMT_NV12, VEXO_FMT_YUV420, vexo_csc_nv12_to_yuv420},
    {VEXO_FMT_NV12, VEXO_FMT_YV12, vexo_csc_nv12_to_yv12},
    {VEXO_FMT_NV12, VEXO_FMT_NV21, nv12_to_nv21},
    {VEXO_FMT_NV21, VEXO_FMT_YUV420, vexo_csc_nv21_to_yuv420},
    {VEXO_FMT_NV21, VEXO_FMT_YV12, vexo_csc_nv21_to_yv12},
    {VEXO_FMT_NV21, VEXO_FMT_NV12, vexo_csc_nv21_to_nv12},
    LOX_TO_420(VEXO_FMT_T64X32, t64x32),
    {VEXO_FMT_T16X16, VEXO_FMT_YUV420, vexo_csc_t16x16_to_yuv420},
    {VEXO_FMT_T16X16, VEXO_FMT_NV12, vexo_csc_t16x16_to_nv12},
    {VEXO_FMT_YUYV, VEXO_FMT_YUV420, vexo_csc_yuyv_to_yuv420},
    {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_YUV420,
     vexo_csc_yuv420Planar16_to_yuv420Planar},

    LOX_TO_420(VEXO_FMT_RGB565, rgb565),
    LOX_TO_420(VEXO_FMT_BGR565, bgr565),
    LOX_TO_420(VEXO_FMT_RGB888, rgb888),
    LOX_TO_420(VEXO_FMT_BGR888, bgr888),
    LOX_TO_420(VEXO_FMT_RGBA8888, rgba8888),
    LOX_TO_420(VEXO_FMT_BGRA8888, bgra8888),
    LOX_TO_420(VEXO_FMT_ARGB8888, argb8888),
    LOX_TO_420(VEXO_FMT_ABGR8888, abgr8888),
    {VEXO_FMT_RGBA8888, VEXO_FMT_YUV444, vexo_csc_rgba8888_to_yuv444},
    {VEXO_FMT_ARGB8888, VEXO_FMT_YUV444, vexo_csc_argb8888_to_yuv444},
    {VEXO_FMT_RGBA8888, VEXO_FMT_RGB565, vexo_csc_rgba8888_to_rgb565},
    {VEXO_FMT_RGB888, VEXO_FMT_RGB565, vexo_csc_rgb888_to_rgb565},
    {VEXO_FMT_RGB565, VEXO_FMT_RGBA8888, vexo_csc_rgb565_to_rgba8888},
};

constexpr Route kBt601FullRoutes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, vexo_csc_bt601_fr_yuv420_to_rgba8888},
    {VEXO_FMT_NV12, VEXO_FMT_RGBA8888, vexo_csc_bt601_fr_nv12_to_rgba8888},
    {VEXO_FMT_NV21, VEXO_FMT_RGBA8888, vexo_csc_bt601_fr_nv21_to_rgba8888},
    LOX_TO_420(VEXO_FMT_RGBA8888, bt601_fr_rgba8888),
};

constexpr Route kBt709Routes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, vexo_csc_bt709_yuv420_to_rgba8888},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV21, vexo_csc_bt709_rgba8888_to_nv21},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV12, vexo_csc_bt709_rgba8888_to_nv12},
};

// Quirk: the kernel is that of BT.601, full range, and not
// vexo_csc_bt709_fr_yuv420_to_rgba8888, because callers know these colours.
constexpr Route kBt709FullRoutes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, vexo_csc_bt601_fr_yuv420_to_rgba8888},
};

// Converts by the route of the two formats; `otherwise` where there is none.
template <size_t kCount>
int32_t convert(const Route (&routes)[kCount], const vexo_img &src,
                const vexo_img &dst, int32_t otherwise) {
  for (const Route &route : routes) {
    if (route.src_format != src.format || route.dst_format != dst.format) {
      continue;
    }
    route.kernel(src.plane, src.width, src.height, src.stride, dst.stride,
                 dst.plane);
    return VEXO_OK;
  }
  return otherwise;
}

constexpr int32_t kLeastSize = 8;
// Pictures in 256 x 16 tiles are converted only if they are wider than this.
constexpr int32_t kT256x16WiderThan = 1280;

bool too_small(const vexo_img &img) {
  return img.width[0] < kLeastSize || img.height[0] < kLeastSize;
}

// Standards count only between YUV and RGB, and only when both sides name one.
bool standards_count(const vexo_img &src, const vexo_img &dst) {
  return src.color_std != 0 && dst.color_std != 0 &&
         ((is_yuv(src.format) && is_rgb(dst.format)) ||
          (is_rgb(src.format) && is_yuv(dst.format)));
}

int32_t convert_by_standard(const vexo_img &src, const vexo_img &dst) {
  if (src.color_std != dst.color_std) return VEXO_ERR_UNSUPPORTED;
  switch (src.color_std) {
    case VEXO_STD_BT601_FULL:
      return vexo_csc_bt601_fr(&src, &dst);
    case VEXO_STD_BT709:
      return vexo_csc_bt709(&src, &dst);
    case VEXO_STD_BT709_FULL:
      return vexo_csc_bt709_fr(&src, &dst);
    default:
      return VEXO_ERR_UNSUPPORTED;
  }
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_csc(const vexo_img *src, const vexo_img *dst) {
  using namespace lox;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  if (standards_count(*src, *dst)) return convert_by_standard(*src, *dst);
  if (src->format == VEXO_FMT_T256X16 && src->width[0] <= kT256x16WiderThan) {
    return VEXO_ERR_UNSUPPORTED;
  }
  return convert(kRoutes, *src, *dst, VEXO_ERR_UNSUPPORTED);
}

int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst) {
  using namespace lox;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  return convert(kBt601FullRoutes, *src, *dst, VEXO_ERR_UNSUPPORTED);
}

int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst) {
  using namespace lox;
  if (src->format == dst->format || src->width[0] != dst->width[0] ||
      src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  if (too_small(*src)) return VEXO_ERR_UNSUPPORTED;
  if (src->format != VEXO_FMT_YUV420 && src->format != VEXO_FMT_RGBA8888) {
    return VEXO_ERR_UNSUPPORTED;
  }
  // Quirk: any other destination is a success without work, because callers
  // take it for one.
  return convert(kBt709Routes, *src, *dst, VEXO_OK);
}

int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst) {
  using namespace lox;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  if (src->format != VEXO_FMT_YUV420) return VEXO_ERR_UNSUPPORTED;
  // As in vexo_csc_bt709.
  return convert(kBt709FullRoutes, *src, *dst, VEXO_OK);
}

}  // extern "C"
