// SPDX-License-Identifier: Apache-2.0
//
// The dithering conversion: checks, and a table of routes. YUV goes by the
// drivers of vexo_csc, to layouts that are dithered.
#include "orumlox/dither.h"

#include <cstdint>

#include "common/format.h"
#include "csc/routes.h"
#include "dither/depth.h"
#include "dither/dither_rows.h"

namespace lox {

namespace {

constexpr int32_t kLeastSize = 8;

bool too_small(const vexo_img &img) {
  return img.width[0] < kLeastSize || img.height[0] < kLeastSize;
}

void convert(DitherRows::PixelsFn pixels, const KernelArgs &args) {
  if (args.empty()) return;
  const RowRange rows = args.rows();
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    pixels(args.src(0, row), args.dst(0, row), args.src_width[0], 0, row);
  }
}

// From an RgbLayout of bytes.
void rgb_to_dithered(const KernelArgs &args, int from, int to) {
  convert(dither_rows().rgb_to_565[from - kRgb888][to - kDitheredRgb565], args);
}
void grey_to_dithered(const KernelArgs &args, int /*from*/, int /*to*/) {
  convert(dither_rows().grey_to_565, args);
}

#define LOX_DITHERED(code, driver, from)                               \
  {VEXO_FMT_##code, VEXO_FMT_RGB565, driver, from, kDitheredRgb565}, { \
    VEXO_FMT_##code, VEXO_FMT_BGR565, driver, from, kDitheredBgr565    \
  }

constexpr Route kRoutes[] = {
    LOX_DITHERED(YUV400, grey_to_dithered, kNothing),
    LOX_DITHERED(YUV420, yuv_to_rgb, kYuv420),
    LOX_DITHERED(YUV422N, yuv_to_rgb, kYuv422n),
    LOX_DITHERED(YUV444, yuv_to_rgb, kYuv444),
    LOX_DITHERED(YV12, yuv_to_rgb, kYv12),
    LOX_DITHERED(NV12, yuv_to_rgb, kNv12),
    LOX_DITHERED(NV21, yuv_to_rgb, kNv21),
    LOX_DITHERED(YUV422W, yuv_to_rgb, kYuv422w),
    LOX_DITHERED(T64X32, tiled_to_rgb, kT64x32),
    LOX_DITHERED(T16X16, tiled_to_rgb, kT16x16),
    LOX_DITHERED(T8X8, tiled_to_rgb, kT8x8),
    LOX_DITHERED(T256X16, tiled_to_rgb, kT256x16),
    LOX_DITHERED(UYVY, yuv_to_rgb, kUyvy),
    LOX_DITHERED(YUYV, yuv_to_rgb, kYuyv),
    LOX_DITHERED(P010LE, words_to_rgb, kP010),
    LOX_DITHERED(RGB888, rgb_to_dithered, kRgb888),
    LOX_DITHERED(BGR888, rgb_to_dithered, kBgr888),
    LOX_DITHERED(RGBA8888, rgb_to_dithered, kRgba8888),
    LOX_DITHERED(BGRA8888, rgb_to_dithered, kBgra8888),
    LOX_DITHERED(ARGB8888, rgb_to_dithered, kArgb8888),
    LOX_DITHERED(ABGR8888, rgb_to_dithered, kAbgr8888),
};

int32_t dither_image(const vexo_img &src, const vexo_img &dst, RowRange rows) {
  if (src.format == dst.format) return VEXO_ERR_ARG;
  if (too_small(src) || too_small(dst)) return VEXO_ERR_UNSUPPORTED;
  if (loses_bits(src.format, dst.format)) {
    to_8_bits(src, dst, Loss::kDithered, rows);
    return VEXO_OK;
  }
  const bool by_standard =
      is_yuv(src.format) && src.color_std != 0 && dst.color_std != 0;
  const bool too_narrow =
      src.format == VEXO_FMT_T256X16 && src.width[0] <= kT256x16WiderThan;
  for (const Route &route : kRoutes) {
    if (route.src_format != src.format || route.dst_format != dst.format) {
      continue;
    }
    if (by_standard || too_narrow) break;
    route.convert(src, dst, rows);
    return VEXO_OK;
  }
  return VEXO_ERR_UNSUPPORTED;
}

}  // namespace

Routes dithered_routes() { return all_of(kRoutes); }

}  // namespace lox

extern "C" {

int32_t vexo_csc_dither(const vexo_img *src, const vexo_img *dst) {
  return lox::dither_image(*src, *dst, lox::kAllRows);
}

int32_t vexo_csc_dither_rows(const vexo_img *src, const vexo_img *dst,
                             int32_t y0, int32_t y1) {
  return lox::in_range(
      {y0, y1}, src->height[0], lox::has_half_rows(dst->format),
      [=](lox::RowRange rows) { return lox::dither_image(*src, *dst, rows); });
}

}  // extern "C"
