// SPDX-License-Identifier: Apache-2.0
//
// The conversion entry points: checks, then a look-up of the two formats in a
// table of routes. A new route is a new row of its table.
#include "orumlox/csc.h"

#include <cstddef>
#include <cstdint>

#include "common/format.h"
#include "common/row_range.h"
#include "csc/routes.h"

namespace lox {

namespace {

#define LOX_TO_565(code, driver, from)                         \
  {VEXO_FMT_##code, VEXO_FMT_RGB565, driver, from, kRgb565}, { \
    VEXO_FMT_##code, VEXO_FMT_BGR565, driver, from, kBgr565    \
  }
#define LOX_TO_RGB(code, driver, from)                                 \
  LOX_TO_565(code, driver, from),                                      \
      {VEXO_FMT_##code, VEXO_FMT_RGB888, driver, from, kRgb888},       \
      {VEXO_FMT_##code, VEXO_FMT_BGR888, driver, from, kBgr888},       \
      {VEXO_FMT_##code, VEXO_FMT_RGBA8888, driver, from, kRgba8888},   \
      {VEXO_FMT_##code, VEXO_FMT_BGRA8888, driver, from, kBgra8888},   \
      {VEXO_FMT_##code, VEXO_FMT_ARGB8888, driver, from, kArgb8888}, { \
    VEXO_FMT_##code, VEXO_FMT_ABGR8888, driver, from, kAbgr8888        \
  }

#define LOX_TO_420(code, driver, from)                           \
  {VEXO_FMT_##code, VEXO_FMT_YUV420, driver, from, kToYuv420},   \
      {VEXO_FMT_##code, VEXO_FMT_YV12, driver, from, kToYv12},   \
      {VEXO_FMT_##code, VEXO_FMT_NV12, driver, from, kToNv12}, { \
    VEXO_FMT_##code, VEXO_FMT_NV21, driver, from, kToNv21        \
  }

#define LOX_ROUTE(src, dst, driver, from, to) \
  { VEXO_FMT_##src, VEXO_FMT_##dst, driver, from, to }
#define LOX_LAYOUT(src, dst, driver, order) \
  LOX_ROUTE(src, dst, driver, order, kNothing)

constexpr Route kRoutes[] = {
    LOX_ROUTE(YUV400, RGB565, grey_to_rgb, kNothing, kRgb565),
    LOX_ROUTE(YUV400, RGB888, grey_to_rgb, kNothing, kRgb888),
    LOX_TO_RGB(YUV420, yuv_to_rgb, kYuv420),
    LOX_TO_RGB(YUV422N, yuv_to_rgb, kYuv422n),
    LOX_TO_RGB(YUV444, yuv_to_rgb, kYuv444),
    LOX_TO_RGB(YV12, yuv_to_rgb, kYv12),
    LOX_TO_RGB(NV12, yuv_to_rgb, kNv12),
    LOX_TO_RGB(NV21, yuv_to_rgb, kNv21),
    LOX_TO_565(YUV422W, yuv_to_rgb, kYuv422w),
    LOX_TO_RGB(T64X32, tiled_to_rgb, kT64x32),
    LOX_ROUTE(T16X16, RGBA8888, tiled_to_rgb, kT16x16, kRgba8888),
    LOX_ROUTE(T8X8, RGBA8888, tiled_to_rgb, kT8x8, kRgba8888),
    LOX_ROUTE(T256X16, RGBA8888, tiled_to_rgb, kT256x16, kRgba8888),
    LOX_TO_RGB(UYVY, yuv_to_rgb, kUyvy),
    LOX_TO_RGB(YUYV, yuv_to_rgb, kYuyv),
    LOX_ROUTE(P010LE, RGBA8888, words_to_rgb, kP010, kRgba8888),

    LOX_LAYOUT(YUV420, YUV422N, double_chroma_rows, kInOrder),
    LOX_LAYOUT(YUV420, YV12, exchange_planes, kNothing),
    LOX_LAYOUT(YUV420, NV12, planes_to_pairs, kInOrder),
    LOX_LAYOUT(YUV420, NV21, planes_to_pairs, kCrossed),
    LOX_ROUTE(YUV420, T64X32, yuv420_to_tiles, kNothing, kT64x32),
    LOX_LAYOUT(YUV422N, YUV420, halve_chroma_rows, kInOrder),
    LOX_LAYOUT(YUV422N, YV12, halve_chroma_rows, kCrossed),
    LOX_LAYOUT(YUV444, YUV420, halve_chroma, kInOrder),
    LOX_LAYOUT(YV16, YUV420, halve_chroma_rows, kCrossed),
    LOX_LAYOUT(YV16, YV12, halve_chroma_rows, kInOrder),
    LOX_LAYOUT(NV12, YUV420, pairs_to_planes, kInOrder),
    LOX_LAYOUT(NV12, YV12, pairs_to_planes, kCrossed),
    LOX_LAYOUT(NV12, NV21, exchange_pairs, kNothing),
    LOX_LAYOUT(NV21, YUV420, pairs_to_planes, kCrossed),
    LOX_LAYOUT(NV21, YV12, pairs_to_planes, kInOrder),
    LOX_LAYOUT(NV21, NV12, exchange_pairs, kNothing),
    LOX_TO_420(T64X32, tiles_to_yuv, kT64x32),
    LOX_ROUTE(T16X16, YUV420, tiles_to_yuv, kT16x16, kToYuv420),
    LOX_ROUTE(T16X16, NV12, tiles_to_yuv, kT16x16, kToNv12),
    LOX_LAYOUT(YUYV, YUV420, yuyv_to_yuv420, kNothing),
    LOX_LAYOUT(YUV420PLANAR16, YUV420, narrow_planes, kNothing),

    LOX_TO_420(RGB565, rgb_to_yuv, kRgb565),
    LOX_TO_420(BGR565, rgb_to_yuv, kBgr565),
    LOX_TO_420(RGB888, rgb_to_yuv, kRgb888),
    LOX_TO_420(BGR888, rgb_to_yuv, kBgr888),
    LOX_TO_420(RGBA8888, rgb_to_yuv, kRgba8888),
    LOX_TO_420(BGRA8888, rgb_to_yuv, kBgra8888),
    LOX_TO_420(ARGB8888, rgb_to_yuv, kArgb8888),
    LOX_TO_420(ABGR8888, rgb_to_yuv, kAbgr8888),
    LOX_ROUTE(RGBA8888, YUV444, rgb_to_yuv444, kRgba8888, kNothing),
    LOX_ROUTE(ARGB8888, YUV444, rgb_to_yuv444, kArgb8888, kNothing),
    LOX_ROUTE(RGBA8888, RGB565, rgb_to_rgb, kRgba8888, kRgb565),
    LOX_ROUTE(RGB888, RGB565, rgb_to_rgb, kRgb888, kRgb565),
    LOX_ROUTE(RGB565, RGBA8888, rgb_to_rgb, kRgb565, kRgba8888),
};

// Where a format code is among those that have routes; -1 for a number that is
// none of them. Codes follow each other in every hundred.
constexpr int kPlaces = 28;
constexpr int place_of(int32_t format) {
  constexpr int kFirst[] = {0, 16, 18, 20, 20, 22, 26, kPlaces};
  if (format < 0 || format >= 700) return -1;
  const int place = kFirst[format / 100] + format % 100;
  return place < kFirst[format / 100 + 1] ? place : -1;
}

// The row of kRoutes that two formats have, counted from 1; 0 for none. Looking
// through the rows would take longer than converting a small picture.
struct RouteIndex {
  uint8_t row[kPlaces][kPlaces];
};
constexpr RouteIndex kIndex = [] {
  RouteIndex index = {};
  uint8_t row = 0;
  for (const Route &route : kRoutes) {
    index.row[place_of(route.src_format)][place_of(route.dst_format)] = ++row;
  }
  return index;
}();
static_assert(sizeof(kRoutes) / sizeof(Route) <= UINT8_MAX);

constexpr Found kNoRoute = {VEXO_ERR_UNSUPPORTED, nullptr};

Found find_by_index(const vexo_img &src, const vexo_img &dst) {
  const int from = place_of(src.format);
  const int to = place_of(dst.format);
  const int row = from < 0 || to < 0 ? 0 : kIndex.row[from][to];
  if (row == 0) return kNoRoute;
  return {VEXO_OK, &kRoutes[row - 1]};
}

constexpr Route kBt601FullRoutes[] = {
    LOX_ROUTE(YUV420, RGBA8888, bt601_full_to_rgb, kExactYuv420, kRgba8888),
    LOX_ROUTE(NV12, RGBA8888, bt601_full_to_rgb, kExactNv12, kRgba8888),
    LOX_ROUTE(NV21, RGBA8888, bt601_full_to_rgb, kExactNv21, kRgba8888),
    LOX_TO_420(RGBA8888, bt601_full_to_yuv, kRgba8888),
};

constexpr Route kBt709Routes[] = {
    LOX_ROUTE(YUV420, RGBA8888, bt709_to_rgb, kExactYuv420, kRgba8888),
    LOX_ROUTE(RGBA8888, NV21, bt709_to_yuv, kRgba8888, kToNv21),
    LOX_ROUTE(RGBA8888, NV12, bt709_to_yuv, kRgba8888, kToNv12),
};

// Quirk: this is the conversion of BT.601, full range, and not the one of
// vexo_csc_bt709_fr_yuv420_to_rgba8888, because callers know these colours.
constexpr Route kBt709FullRoutes[] = {
    LOX_ROUTE(YUV420, RGBA8888, bt601_full_to_rgb, kExactYuv420, kRgba8888),
};

// The route of the two formats; `otherwise` is the answer where there is none.
template <size_t kCount>
Found find(const Route (&routes)[kCount], const vexo_img &src,
           const vexo_img &dst, int32_t otherwise) {
  for (const Route &route : routes) {
    if (route.src_format == src.format && route.dst_format == dst.format) {
      return {VEXO_OK, &route};
    }
  }
  return {otherwise, nullptr};
}

constexpr int32_t kLeastSize = 8;

bool too_small(const vexo_img &img) {
  return img.width[0] < kLeastSize || img.height[0] < kLeastSize;
}

// Standards count only between YUV and RGB, and only when both sides name one.
bool standards_count(const vexo_img &src, const vexo_img &dst) {
  return src.color_std != 0 && dst.color_std != 0 &&
         ((is_yuv(src.format) && is_rgb(dst.format)) ||
          (is_rgb(src.format) && is_yuv(dst.format)));
}

Found by_bt601_full(const vexo_img &src, const vexo_img &dst) {
  if (src.format == dst.format) return {VEXO_ERR_ARG, nullptr};
  if (too_small(src) || too_small(dst)) return kNoRoute;
  return find(kBt601FullRoutes, src, dst, VEXO_ERR_UNSUPPORTED);
}

Found by_bt709(const vexo_img &src, const vexo_img &dst) {
  if (src.format == dst.format || src.width[0] != dst.width[0] ||
      src.height[0] != dst.height[0]) {
    return {VEXO_ERR_ARG, nullptr};
  }
  if (too_small(src)) return kNoRoute;
  if (src.format != VEXO_FMT_YUV420 && src.format != VEXO_FMT_RGBA8888) {
    return kNoRoute;
  }
  // Quirk: any other destination is a success without work, because callers
  // take it for one.
  return find(kBt709Routes, src, dst, VEXO_OK);
}

Found by_bt709_full(const vexo_img &src, const vexo_img &dst) {
  if (src.format == dst.format) return {VEXO_ERR_ARG, nullptr};
  if (too_small(src) || too_small(dst)) return kNoRoute;
  if (src.format != VEXO_FMT_YUV420) return kNoRoute;
  // As in by_bt709.
  return find(kBt709FullRoutes, src, dst, VEXO_OK);
}

Found by_standard(const vexo_img &src, const vexo_img &dst) {
  if (src.color_std != dst.color_std) return kNoRoute;
  switch (src.color_std) {
    case VEXO_STD_BT601_FULL:
      return by_bt601_full(src, dst);
    case VEXO_STD_BT709:
      return by_bt709(src, dst);
    case VEXO_STD_BT709_FULL:
      return by_bt709_full(src, dst);
    default:
      return kNoRoute;
  }
}

}  // namespace

Found find_route(const vexo_img &src, const vexo_img &dst) {
  if (src.format == dst.format) return {VEXO_ERR_ARG, nullptr};
  if (too_small(src) || too_small(dst)) return kNoRoute;
  if (standards_count(src, dst)) return by_standard(src, dst);
  if (src.format == VEXO_FMT_T256X16 && src.width[0] <= kT256x16WiderThan) {
    return kNoRoute;
  }
  return find_by_index(src, dst);
}

namespace {

int32_t convert(const Found &found, const vexo_img &src, const vexo_img &dst,
                RowRange rows) {
  if (found.route != nullptr) found.route->convert(src, dst, rows);
  return found.status;
}

}  // namespace

Routes csc_routes(int32_t standard) {
  switch (standard) {
    case VEXO_STD_DEFAULT:
      return all_of(kRoutes);
    case VEXO_STD_BT601_FULL:
      return all_of(kBt601FullRoutes);
    case VEXO_STD_BT709:
      return all_of(kBt709Routes);
    case VEXO_STD_BT709_FULL:
      return all_of(kBt709FullRoutes);
    default:
      return {nullptr, 0};
  }
}

}  // namespace lox

extern "C" {

int32_t vexo_csc(const vexo_img *src, const vexo_img *dst) {
  return lox::convert(lox::find_route(*src, *dst), *src, *dst, lox::kAllRows);
}

int32_t vexo_csc_rows(const vexo_img *src, const vexo_img *dst, int32_t y0,
                      int32_t y1) {
  return lox::in_range(
      {y0, y1}, src->height[0], lox::has_half_rows(dst->format),
      [=](lox::RowRange rows) {
        return lox::convert(lox::find_route(*src, *dst), *src, *dst, rows);
      });
}

int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst) {
  return lox::convert(lox::by_bt601_full(*src, *dst), *src, *dst,
                      lox::kAllRows);
}

int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst) {
  return lox::convert(lox::by_bt709(*src, *dst), *src, *dst, lox::kAllRows);
}

int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst) {
  return lox::convert(lox::by_bt709_full(*src, *dst), *src, *dst,
                      lox::kAllRows);
}

}  // extern "C"
