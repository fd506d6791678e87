// SPDX-License-Identifier: Apache-2.0
//
// The conversion dispatcher: checks, then a table of format pairs. A new route
// is a new row of its table.
#include "orumlox/csc.h"

#include <cstddef>
#include <cstdint>

#include "csc/yuv_layout.h"
#include "orumlox/common.h"

namespace lox::csc {

namespace {

struct Route {
  int32_t src_format, dst_format;
  // Null where the route exists and its kernel is not built yet.
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
    LOX_TO_RGB(VEXO_FMT_UYVY, uyvy),
    LOX_TO_RGB(VEXO_FMT_YUYV, yuyv),
    {VEXO_FMT_YUV420, VEXO_FMT_YV12, yuv420_to_yv12},
    {VEXO_FMT_YUYV, VEXO_FMT_YUV420, vexo_csc_yuyv_to_yuv420},
};

constexpr Route kBt601FullRoutes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, nullptr},
    {VEXO_FMT_NV12, VEXO_FMT_RGBA8888, nullptr},
    {VEXO_FMT_NV21, VEXO_FMT_RGBA8888, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_YUV420, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_YV12, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV12, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV21, nullptr},
};

constexpr Route kBt709Routes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV21, nullptr},
    {VEXO_FMT_RGBA8888, VEXO_FMT_NV12, nullptr},
};

// Its kernel is intentionally that of BT.601, full range.
constexpr Route kBt709FullRoutes[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, nullptr},
};

// Converts by the route of the two formats; `otherwise` where there is none.
template <size_t kCount>
int32_t convert(const Route (&routes)[kCount], const vexo_img &src,
                const vexo_img &dst, int32_t otherwise) {
  for (const Route &route : routes) {
    if (route.src_format != src.format || route.dst_format != dst.format) {
      continue;
    }
    if (route.kernel == nullptr) return VEXO_ERR_UNSUPPORTED;
    route.kernel(src.plane, src.width, src.height, src.stride, dst.stride,
                 dst.plane);
    return VEXO_OK;
  }
  return otherwise;
}

constexpr int32_t kLeastSize = 8;

bool too_small(const vexo_img &img) {
  return img.width[0] < kLeastSize || img.height[0] < kLeastSize;
}

bool is_yuv(int32_t format) { return format < 200; }
bool is_rgb(int32_t format) { return format >= 200 && format < 600; }

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

}  // namespace lox::csc

extern "C" {

int32_t vexo_csc(const vexo_img *src, const vexo_img *dst) {
  using namespace lox::csc;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  if (standards_count(*src, *dst)) return convert_by_standard(*src, *dst);
  return convert(kRoutes, *src, *dst, VEXO_ERR_UNSUPPORTED);
}

int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst) {
  using namespace lox::csc;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  return convert(kBt601FullRoutes, *src, *dst, VEXO_ERR_UNSUPPORTED);
}

int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst) {
  using namespace lox::csc;
  if (src->format == dst->format || src->width[0] != dst->width[0] ||
      src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  if (too_small(*src)) return VEXO_ERR_UNSUPPORTED;
  if (src->format != VEXO_FMT_YUV420 && src->format != VEXO_FMT_RGBA8888) {
    return VEXO_ERR_UNSUPPORTED;
  }
  // Any other destination is a success without work, intentionally.
  return convert(kBt709Routes, *src, *dst, VEXO_OK);
}

int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst) {
  using namespace lox::csc;
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (too_small(*src) || too_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  if (src->format != VEXO_FMT_YUV420) return VEXO_ERR_UNSUPPORTED;
  // As in vexo_csc_bt709.
  return convert(kBt709FullRoutes, *src, *dst, VEXO_OK);
}

}  // extern "C"
