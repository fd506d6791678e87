// SPDX-License-Identifier: Apache-2.0
//
// The dithering conversion: checks, and the driver of each source. YUV goes by
// the drivers of vexo_csc, to layouts that are dithered.
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

// Which of the table's RGB layouts a format is; -1 for none.
int rgb_place(int32_t format) {
  switch (format) {
    case VEXO_FMT_RGB888:
      return 0;
    case VEXO_FMT_BGR888:
      return 1;
    case VEXO_FMT_RGBA8888:
      return 2;
    case VEXO_FMT_BGRA8888:
      return 3;
    case VEXO_FMT_ARGB8888:
      return 4;
    case VEXO_FMT_ABGR8888:
      return 5;
    default:
      return -1;
  }
}

void dither_pixels(DitherRows::PixelsFn convert, const KernelArgs &args) {
  if (args.empty()) return;
  const RowRange rows = args.rows();
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    convert(args.src(0, row), args.dst(0, row), args.src_width[0], 0, row);
  }
}

// Whether there was a driver.
bool dither_yuv(const KernelArgs &args, int32_t from, int to) {
  const auto by = [&](Driver *driver, int source) {
    driver(args, source, to);
    return true;
  };
  switch (from) {
    case VEXO_FMT_YUV400:
      dither_pixels(dither_rows().grey_to_565, args);
      return true;
    case VEXO_FMT_YUV420:
      return by(yuv_to_rgb, kYuv420);
    case VEXO_FMT_YUV422N:
      return by(yuv_to_rgb, kYuv422n);
    case VEXO_FMT_YUV444:
      return by(yuv_to_rgb, kYuv444);
    case VEXO_FMT_YV12:
      return by(yuv_to_rgb, kYv12);
    case VEXO_FMT_NV12:
      return by(yuv_to_rgb, kNv12);
    case VEXO_FMT_NV21:
      return by(yuv_to_rgb, kNv21);
    case VEXO_FMT_YUV422W:
      return by(yuv_to_rgb, kYuv422w);
    case VEXO_FMT_T64X32:
      return by(tiled_to_rgb, kT64x32);
    case VEXO_FMT_T16X16:
      return by(tiled_to_rgb, kT16x16);
    case VEXO_FMT_T8X8:
      return by(tiled_to_rgb, kT8x8);
    case VEXO_FMT_T256X16:
      return args.src_width[0] > kT256x16WiderThan &&
             by(tiled_to_rgb, kT256x16);
    case VEXO_FMT_UYVY:
      return by(yuv_to_rgb, kUyvy);
    case VEXO_FMT_YUYV:
      return by(yuv_to_rgb, kYuyv);
    case VEXO_FMT_P010LE:
      return by(words_to_rgb, kP010);
    default:
      return false;
  }
}

int32_t dither_image(const vexo_img &src, const vexo_img &dst, RowRange rows) {
  if (src.format == dst.format) return VEXO_ERR_ARG;
  if (too_small(src) || too_small(dst)) return VEXO_ERR_UNSUPPORTED;
  if (loses_bits(src.format, dst.format)) {
    to_8_bits(src, dst, Loss::kDithered, rows);
    return VEXO_OK;
  }
  const bool red_on_top = dst.format == VEXO_FMT_RGB565;
  if (!red_on_top && dst.format != VEXO_FMT_BGR565) return VEXO_ERR_UNSUPPORTED;
  const KernelArgs args = {src.plane,  src.width, src.height, src.stride,
                           dst.stride, dst.plane, rows};
  const int rgb = rgb_place(src.format);
  if (rgb >= 0) {
    dither_pixels(dither_rows().rgb_to_565[rgb][red_on_top ? 0 : 1], args);
    return VEXO_OK;
  }
  const bool by_standard =
      is_yuv(src.format) && src.color_std != 0 && dst.color_std != 0;
  return !by_standard &&
                 dither_yuv(args, src.format,
                            red_on_top ? kDitheredRgb565 : kDitheredBgr565)
             ? VEXO_OK
             : VEXO_ERR_UNSUPPORTED;
}

}  // namespace

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
