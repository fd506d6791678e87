// SPDX-License-Identifier: Apache-2.0
//
// Scaling and conversion in one pass: some rows are scaled into a strip, which
// is converted while it is in the near caches.
#include <new>

#include "common/caches.h"
#include "common/copy.h"
#include "common/memory.h"
#include "csc/routes.h"
#include "fused/parts.h"
#include "fused/scaled_pairs.h"
#include "orumlox/common.h"
#include "orumlox/fused.h"
#include "orumlox/rsz.h"
#include "rsz/picture_rows.h"

namespace lox {

namespace {

constexpr int32_t kMostRows = 64;

// How a strip is converted to its place in the destination.
class Converter {
 public:
  Converter(const Route &route, const vexo_img &dst)
      : route_(route),
        dst_(dst),
        from_(route.src_format),
        to_(route.dst_format) {}

  void convert(const vexo_img &strip, int32_t x, int32_t y) const {
    const int32_t width = strip.width[0];
    const int32_t height = strip.height[0];
    if (width % 2 == 0 || !in_whole_pairs(route_)) {
      return convert_part(strip, x, y);
    }
    // What comes out beyond an odd width means nothing: the last pixel goes
    // through a copy.
    convert_part(from_.part(strip, 0, 0, width - 1, height), x, y);
    const int unit = to_.unit(0);
    uint8_t pixels[kMostRows * 8];
    vexo_img pairs = {};
    pairs.plane[0] = pixels;
    pairs.stride[0] = 2 * unit;
    route_.convert(from_.part(strip, width - 1, 0, 1, height), pairs);
    const vexo_img to = to_.part(dst_, x + width - 1, y, 1, height);
    copy_block(to.plane[0], to.stride[0], pixels, pairs.stride[0], unit,
               height);
  }

 private:
  void convert_part(const vexo_img &strip, int32_t x, int32_t y) const {
    route_.convert(strip, to_.part(dst_, x, y, strip.width[0], strip.height[0]),
                   kAllRows, int64_t{dst_.width[0]} * dst_.height[0]);
  }

  const Route &route_;
  const vexo_img &dst_;
  Shape from_, to_;
};

int32_t in_strips(const vexo_img &src, const vexo_img &middle,
                  const Route &route, const vexo_img &dst) {
  const Shape shape(src.format);
  const int32_t width = middle.width[0];
  const int32_t height = middle.height[0];
  const int32_t widest =
      width < PictureRows::kColumns ? width : PictureRows::kColumns;
  int32_t rows = 2;
  while (rows < kMostRows && shape.bytes(widest, rows + 2) <= kStripBytes) {
    rows += 2;
  }
  constexpr ptrdiff_t kLine = 64;
  constexpr ptrdiff_t kState = sizeof(PictureRows);
  static_assert(alignof(PictureRows) == kLine && kState % kLine == 0);
  auto *const memory = allocate<uint8_t>(
      kLine + kState + PictureRows::kScratch + shape.bytes(widest, rows));
  if (memory == nullptr) return VEXO_ERR_MEMORY;
  uint8_t *const state =
      memory + (kLine - reinterpret_cast<uintptr_t>(memory) % kLine) % kLine;
  uint8_t *const scratch = state + kState;
  uint8_t *const strip_memory = scratch + PictureRows::kScratch;
  auto *const scaled = new (state) PictureRows(src, middle, scratch);
  const Converter converter(route, dst);
  const bool first_alone = has_first_row_alone(route, width, height);
  for (int32_t x = 0; x < width;) {
    const int32_t columns = scaled->start(x, width - x);
    const vexo_img strip = shape.strip(strip_memory, columns, rows);
    for (Parts part(height, rows, first_alone, false); part.more();
         part.next()) {
      const vexo_img some = shape.part(strip, 0, 0, columns, part.rows());
      scaled->next(some);
      converter.convert(some, x, part.y());
    }
    x += columns;
  }
  mlox_mfree_align32(memory);
  return VEXO_OK;
}

// By a picture of all rows: to tiles, and where pairs are exchanged in a run
// that does not keep to what comes out of a strip.
int32_t by_picture(const vexo_img &src, const vexo_img &geometry,
                   const Route &route, const vexo_img &dst) {
  vexo_img middle;
  int32_t status = vexo_picture_alloc(&middle, geometry.format,
                                      geometry.width[0], geometry.height[0]);
  if (status != VEXO_OK) return status;
  middle.mode = dst.mode;
  status = vexo_rsz(&src, &middle);
  if (status == VEXO_OK) route.convert(middle, dst);
  vexo_picture_free(&middle);
  return status;
}

bool needs_picture(const vexo_img &middle, const Route &route,
                   const vexo_img &dst) {
  if (dst.format == VEXO_FMT_T64X32) return true;
  const int32_t stride = dst.stride[1];
  return route.driver == exchange_pairs &&
         (middle.width[0] > PictureRows::kWholeColumns || stride % 2 != 0 ||
          stride / 2 < middle.width[1] || stride > INT16_MAX ||
          middle.height[0] / 2 > INT16_MAX);
}

int32_t scale_and_convert(const vexo_img &src, const vexo_img &dst) {
  vexo_img middle;
  int32_t status = vexo_picture_geometry(&middle, src.format, dst.width[0],
                                         dst.height[0], 1);
  if (status != VEXO_OK) return status;
  const bool same =
      src.width[0] == dst.width[0] && src.height[0] == dst.height[0];
  status = status_of_scaling(src, middle);
  if (status != VEXO_OK) return status;
  middle.color_std = src.color_std;
  middle.mode = dst.mode;
  const Found found = find_route(middle, dst);
  if (found.route == nullptr) return found.status;
  if (same) {
    // Nothing is scaled, and a copy would be converted as the source is, but
    // where strides count or there is nothing to read beyond an odd width. Rows
    // of 16-bit words are copied by whole words.
    const bool words =
        rgb_bytes(src.format) == 2 || src.format == VEXO_FMT_P010LE;
    for (int p = 0; p < 4; ++p) {
      middle.plane[p] = src.plane[p];
      middle.stride[p] = words ? src.stride[p] & ~1 : src.stride[p];
    }
    Driver *const driver = found.route->driver;
    const bool as_copied =
        driver != exchange_planes && driver != exchange_pairs &&
        (dst.width[0] % 2 == 0 || !in_whole_pairs(*found.route));
    if (as_copied) {
      found.route->convert(middle, dst);
      return VEXO_OK;
    }
  }
  if (kHasPairKernels && !same &&
      convert_scaled_pairs(src, middle, *found.route, dst)) {
    return VEXO_OK;
  }
  const vexo_img from = same ? middle : src;
  return needs_picture(middle, *found.route, dst)
             ? by_picture(from, middle, *found.route, dst)
             : in_strips(from, middle, *found.route, dst);
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_rsz_csc(const vexo_img *src, const vexo_img *dst) {
  return lox::scale_and_convert(*src, *dst);
}

}  // extern "C"
