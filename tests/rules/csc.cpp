// SPDX-License-Identifier: Apache-2.0
// Colour conversion pixel by pixel.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <utility>

#include "cases/conversion.h"
#include "rules/colours.h"
#include "rules/rules.h"
#include "rules/tiles.h"

namespace lox_test {
namespace {

// The arguments of a kernel, and what its name says.
struct Job {
  int32_t from, to, standard;
  uint8_t *const *src;
  const int32_t *width, *height, *src_stride, *dst_stride;
  uint8_t *const *dst;

  // A byte of a plane: by row and column, or in tiles.
  const uint8_t *source(int p, int64_t row, int64_t column) const {
    const int64_t rows = p == 0 ? *height : std::max(*height / 2, 1);
    return is_tiled_code(from)
               ? src[p] + tile_byte(from, p > 0, *width, rows, column, row)
               : src[p] + row * src_stride[p] + column;
  }
  uint8_t *target(int p, int64_t row, int64_t column) const {
    return to == VEXO_FMT_T64X32
               ? dst[p] + tile_byte(to, p > 0, *width,
                                    p == 0 ? *height : *height / 2, column, row)
               : dst[p] + row * dst_stride[p] + column;
  }
  uint8_t *target(const Place &p, int64_t x, int64_t y) const {
    return target(p.plane, y >> p.y_shift, (x >> p.x_shift) * p.step + p.first);
  }

  void yuv_to_rgb() const {
    const YuvLayout &l = yuv_layout(from);
    const Rgb &rgb = rgb_layout(to);
    // By default 4:2:0 is converted in pairs: an odd width has one pixel more.
    // Widths without a multiple of four go a row at a time: with an odd height
    // the first row has a chroma row of its own.
    const bool in_pairs = standard == VEXO_STD_DEFAULT && l.u.x_shift == 1 &&
                          l.u.y_shift == 1 && !is_tiled_code(from);
    const int64_t columns = in_pairs ? (int64_t{*width} + 1) / 2 * 2 : *width;
    const bool own = in_pairs && *width % 4 != 0 && *height % 2 != 0;
    const int32_t last =
        is_tiled_code(from) ? std::max(*height / 2, 1) - 1 : INT32_MAX;
    for (int32_t y = 0; y < *height && columns > 0; ++y) {
      for (int32_t x = 0; x < columns; ++x) {
        const auto sample = [&](const Place &p) -> int32_t {
          const int32_t row = std::min((y + (own ? p.y_shift : 0)) >> p.y_shift,
                                       p.plane == 0 ? INT32_MAX : last);
          return *source(p.plane, row, (x >> p.x_shift) * p.step + p.first);
        };
        const Yuv c = {sample(l.y), sample(l.u), sample(l.v)};
        // Grey is replicated without expanding its range.
        const Channels pixel = from == VEXO_FMT_YUV400
                                   ? Channels{c.y << 8, c.y << 8, c.y << 8}
                                   : to_rgb(standard, c, x >= *width / 8 * 8);
        rgb.put(pixel, target(0, y, int64_t{x} * rgb.bytes));
      }
    }
  }

  void from_rgb() const {
    const Rgb &rgb = rgb_layout(from);
    const bool rgb_too = is_rgb_code(to);
    const Rgb &other = rgb_layout(rgb_too ? to : from);
    const YuvLayout &l = yuv_layout(rgb_too ? VEXO_FMT_YUV400 : to);
    const int32_t side = 1 << l.u.x_shift;
    for (int32_t y = 0; y<*height && * width> 0; ++y) {
      for (int32_t x = 0; x < *width; ++x) {
        const Channels c = rgb.get(source(0, y, int64_t{x} * rgb.bytes));
        if (rgb_too) {
          other.put(c, target(0, y, int64_t{x} * other.bytes));
          continue;
        }
        const Yuv sample = to_yuv(standard, c);
        *target(l.y, x, y) = static_cast<uint8_t>(sample.y);
        // Whole blocks have chroma: their top left pixel's.
        if (x % side != 0 || y % side != 0) continue;
        if (x + side > *width || y + side > *height) continue;
        *target(l.u, x, y) = static_cast<uint8_t>(sample.u);
        *target(l.v, x, y) = static_cast<uint8_t>(sample.v);
      }
    }
  }

  void luma() const {
    const Place &p = yuv_layout(from).y;
    for (int32_t y = 0; y<*height && * width> 0; ++y) {
      for (int32_t x = 0; x < *width; ++x) *target(0, y, x) = value(p, x, y);
    }
  }
  // 16-bit samples lose their low bits.
  uint8_t value(const Place &p, int64_t x, int64_t y) const {
    const uint8_t *at = source(p.plane, y, x * p.step + p.first);
    return from == VEXO_FMT_YUV420PLANAR16
               ? static_cast<uint8_t>((at[0] | at[1] << 8) >> 2)
               : *at;
  }

  // Planes and pairs: chroma has the size of its own planes, of pairs that of
  // plane 1. Every second column or row is dropped, or rows are doubled.
  void chroma() const {
    const YuvLayout &a = yuv_layout(from);
    const YuvLayout &b = yuv_layout(to);
    const int64_t x_step = b.u.x_shift > a.u.x_shift ? 2 : 1;
    const int64_t y_step = b.u.y_shift > a.u.y_shift ? 2 : 1;
    const int64_t doubled = b.u.y_shift < a.u.y_shift ? 2 : 1;
    for (const auto &[f, t] : {std::pair{a.u, b.u}, std::pair{a.v, b.v}}) {
      const int p = has_pairs(from) || has_pairs(to) ? 1 : f.plane;
      const int64_t columns = (width[p] + x_step - 1) / x_step;
      const int64_t rows = x_step == 2 ? (int64_t{height[p]} + 1) / 2
                                       : height[p] * doubled / y_step;
      for (int64_t y = 0; y < rows && columns > 0; ++y) {
        for (int64_t x = 0; x < columns; ++x) {
          *target(t.plane, y, x * t.step + t.first) =
              value(f, x * x_step, y * y_step / doubled);
        }
      }
    }
  }

  // Rows of `width` bytes, U and V in turn. A last U without its V comes first
  // even where V does.
  void chroma_of_tiles() const {
    const YuvLayout &l = yuv_layout(to);
    for (int32_t y = 0; y < *height / 2 && *width > 0; ++y) {
      for (int32_t x = 0; x < *width; ++x) {
        const Place &p = x % 2 == 0 ? l.u : l.v;
        const int first = x % 2 == 0 && x == *width - 1 ? 0 : p.first;
        *target(p.plane, y, x / 2 * p.step + first) = *source(1, y, x);
      }
    }
  }
  // No more than the source's plane 1 has.
  void chroma_to_tiles() const {
    const int64_t columns = std::min(int64_t{2} * width[1], int64_t{*width});
    for (int64_t y = 0; columns > 0 && y < std::min(height[1], *height / 2);
         ++y) {
      for (int64_t x = 0; x < columns; ++x) {
        *target(1, y, x) = *source(static_cast<int>(1 + x % 2), y, x / 2);
      }
    }
  }

  // Pairs are copied as 16-bit samples, whose strides are even. Then the run of
  // half the luma's rows is exchanged, padding too.
  void exchange_pairs() const {
    if (*width < 1 || *height < 1) return;
    move_rows(src[1], src_stride[1] & ~1, int64_t{2} * width[1], height[1],
              dst_stride[1] & ~1, dst[1]);
    const int64_t bytes = swapped_bytes(dst_stride[1], *height / 2);
    for (int64_t i = 0; i < bytes; i += 2) std::swap(dst[1][i], dst[1][i + 1]);
  }

  // Of two rows the mean, rounded down; a last odd one alone.
  void average_chroma() const {
    for (int32_t y = 0; y<*height && * width> 0; ++y) {
      for (int32_t x = 0; x < (int64_t{*width} + 1) / 2; ++x) {
        for (const int p : {1, 2}) {
          const int sample = *source(0, y, int64_t{4} * x + 2 * p - 1);
          uint8_t &c = *target(p, y / 2, x);
          c = static_cast<uint8_t>(y % 2 == 0 ? sample : (c + sample) >> 1);
        }
      }
    }
  }

  void convert() const {
    if (is_rgb_code(from)) return from_rgb();
    if (is_rgb_code(to)) return yuv_to_rgb();
    luma();
    if (exchanges_pairs(from, to)) return exchange_pairs();
    if (is_tiled_code(from)) return chroma_of_tiles();
    if (is_tiled_code(to)) return chroma_to_tiles();
    if (from == VEXO_FMT_YUYV) return average_chroma();
    if (!exchanges_planes(from, to)) return chroma();
    // Each chroma plane is read with the other's stride.
    for (const int p : {1, 2}) {
      move_rows(src[p], src_stride[3 - p], width[p], height[p],
                dst_stride[3 - p], dst[3 - p]);
    }
  }
};

void kernel(const Function &function, uint8_t *const *src, const int32_t *width,
            const int32_t *height, const int32_t *src_stride,
            const int32_t *dst_stride, uint8_t *const *dst) {
  const auto [from, to, standard] = parse_conversion(function.name);
  Job{from, to, standard, src, width, height, src_stride, dst_stride, dst}
      .convert();
}

// Two routes have no kernel of their own.
const std::vector<Conversion> &routes() {
  static const std::vector<Conversion> all = {
      {VEXO_FMT_YUV420, VEXO_FMT_YV12, 0},
      {VEXO_FMT_NV12, VEXO_FMT_NV21, 0},
#define KERNEL(name) parse_conversion(#name),
#include "vexo_csc_kernel.inc"
#undef KERNEL
  };
  return all;
}
int32_t by_route(const vexo_img *src, const vexo_img *dst, int32_t standard,
                 int32_t otherwise) {
  for (const auto &[f, t, s] : routes()) {
    if (f != src->format || t != dst->format || s != standard) continue;
    Job{f,           t,           s,           src->plane, src->width,
        src->height, src->stride, dst->stride, dst->plane}
        .convert();
    return VEXO_OK;
  }
  return otherwise;
}

bool is_small(const vexo_img &img) {
  return std::min(img.width[0], img.height[0]) < 8;
}

int32_t bt601(const Function &, const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (is_small(*src) || is_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  return by_route(src, dst, VEXO_STD_BT601_FULL, VEXO_ERR_UNSUPPORTED);
}
// Success without work where there is no route from a source that has one.
int32_t bt709(const Function &, const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format || src->width[0] != dst->width[0] ||
      src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  if (is_small(*src) ||
      (src->format != VEXO_FMT_YUV420 && src->format != VEXO_FMT_RGBA8888)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  return by_route(src, dst, VEXO_STD_BT709, VEXO_OK);
}
// As BT.601.
int32_t bt709_full(const Function &, const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (is_small(*src) || is_small(*dst) || src->format != VEXO_FMT_YUV420) {
    return VEXO_ERR_UNSUPPORTED;
  }
  return dst->format == VEXO_FMT_RGBA8888
             ? by_route(src, dst, VEXO_STD_BT601_FULL, VEXO_OK)
             : VEXO_OK;
}
}  // namespace

int32_t convert_picture(const Function &function, const vexo_img *src,
                        const vexo_img *dst) {
  const int32_t from = src->format;
  const int32_t to = dst->format;
  const int32_t standard = src->color_std;
  if (from == to) return VEXO_ERR_ARG;
  if (is_small(*src) || is_small(*dst)) return VEXO_ERR_UNSUPPORTED;
  const bool between =
      (from < 200 && is_rgb_code(to)) || (to < 200 && is_rgb_code(from));
  if (between && standard != 0 && dst->color_std != 0) {
    return standard != dst->color_std ? VEXO_ERR_UNSUPPORTED
           : standard == 1            ? bt601(function, src, dst)
           : standard == 10           ? bt709(function, src, dst)
           : standard == 11           ? bt709_full(function, src, dst)
                                      : VEXO_ERR_UNSUPPORTED;
  }
  if (from == VEXO_FMT_T256X16 && src->width[0] <= 1280) {
    return VEXO_ERR_UNSUPPORTED;
  }
  return by_route(src, dst, VEXO_STD_DEFAULT, VEXO_ERR_UNSUPPORTED);
}

void picture_to_rgba(const vexo_img *src, uint8_t *dst, int32_t stride) {
  Job{src->format, VEXO_FMT_RGBA8888, VEXO_STD_DEFAULT, src->plane, src->width,
      src->height, src->stride,       &stride,          &dst}
      .convert();
}

void set_yuv(int32_t format, uint8_t *const *planes, const int32_t *strides,
             int32_t x, int32_t y, const uint8_t (&yuv)[3]) {
  const YuvLayout &l = yuv_layout(format);
  int i = 0;
  for (const Place &p : {l.y, l.u, l.v}) {
    planes[p.plane][int64_t{y >> p.y_shift} * strides[p.plane] +
                    (x >> p.x_shift) * p.step + p.first] = yuv[i++];
  }
}

std::vector<Rule> csc_rules() {
  return {
#define KERNEL(name) rule_for(name, kernel),
#include "vexo_csc_kernel.inc"
      rule_for(vexo_csc, convert_picture),
      rule_for_rows(vexo_csc_rows, convert_picture),
      rule_for(vexo_csc_bt601_fr, bt601),
      rule_for(vexo_csc_bt709, bt709),
      rule_for(vexo_csc_bt709_fr, bt709_full),
  };
}

}  // namespace lox_test
