// SPDX-License-Identifier: Apache-2.0
// The least planes of each format, as the public headers state them: buffers of
// these sizes, and not a byte more, are all that a call may touch.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "orumlox/img.h"

namespace lox_test {

// A plane; width and height in the units of vexo_img.
struct ExactPlane {
  int32_t width = 0, height = 0;
  int64_t row_bytes = 0;  // the least stride
  int64_t beyond = 0;     // what is touched behind a row, the last one's too
  int64_t whole = 0;      // the bytes of a plane that has no strides

  // Bytes of the plane with rows `stride` bytes apart; of a negative stride the
  // last row comes first. An odd stride of 16-bit samples is the next even one
  // below: round it before.
  int64_t bytes(int64_t stride) const {
    if (whole > 0) return whole;
    if (row_bytes < 1 || height < 1) return 0;
    return (height - int64_t{1}) * std::abs(stride) + row_bytes + beyond;
  }
  // Where in them row 0 begins.
  int64_t first(int64_t stride) const {
    return stride < 0 && height > 0 ? (height - int64_t{1}) * -stride : 0;
  }
};
using ExactImage = std::array<ExactPlane, 4>;

inline ExactPlane exact_plane(int32_t width, int32_t height, int unit) {
  return {width, height, int64_t{width} * unit, 0, 0};
}

inline int32_t half_down(int32_t n) { return n / 2; }
inline int32_t half_up(int32_t n) { return n / 2 + n % 2; }

// Bytes of a tiled plane of width x height bytes up to the end of its last tile
// in memory. T64X32 puts two tiles by two into units, of which an odd number of
// tile columns leaves the last one's quarter free.
inline int64_t tiled_bytes(int32_t format, int32_t width, int32_t height,
                           bool chroma) {
  const int64_t tile_width = format == VEXO_FMT_T64X32    ? 64
                             : format == VEXO_FMT_T256X16 ? 256
                             : format == VEXO_FMT_T16X16  ? 16
                                                          : 8;
  const int64_t tile_rows = format == VEXO_FMT_T64X32 ? 32
                            : format == VEXO_FMT_T8X8 ? (chroma ? 4 : 8)
                                                      : (chroma ? 8 : 16);
  const int64_t tile = tile_width * tile_rows;
  const int64_t across = (width + tile_width - 1) / tile_width;
  const int64_t down = (height + tile_rows - 1) / tile_rows;
  if (format != VEXO_FMT_T64X32) return across * down * tile;
  const int64_t units = down / 2 * ((across + 1) / 2) * 4 * tile;
  if (down % 2 != 0) return units + across * tile;
  return units - (across % 2 != 0 && down > 0 ? tile : 0);
}

// A picture of width x height whose chroma is rounded up: what copying, scaling
// and turning it need. Tiles of chroma hold half the rows, rounded down, but at
// least one.
inline ExactImage exact_image(int32_t format, int32_t width, int32_t height) {
  const int32_t w2 = half_up(width);
  const int32_t h2 = half_up(height);
  const auto planar = [&](int32_t cw, int32_t ch, int unit) {
    return ExactImage{exact_plane(width, height, unit),
                      exact_plane(cw, ch, unit), exact_plane(cw, ch, unit)};
  };
  switch (format) {
    case VEXO_FMT_YUV400:
      return {exact_plane(width, height, 1)};
    case VEXO_FMT_YUV420:
    case VEXO_FMT_YV12:
      return planar(w2, h2, 1);
    case VEXO_FMT_YUV420PLANAR16:
      return planar(w2, h2, 2);
    case VEXO_FMT_YUV422N:
    case VEXO_FMT_YV16:
      return planar(w2, height, 1);
    case VEXO_FMT_YUV422W:
      return planar(width, h2, 1);
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return {exact_plane(width, height, 1), exact_plane(w2, h2, 2)};
    case VEXO_FMT_P010LE:
      return {exact_plane(width, height, 2), exact_plane(w2, h2, 4)};
    case VEXO_FMT_T64X32:
    case VEXO_FMT_T16X16:
    case VEXO_FMT_T8X8:
    case VEXO_FMT_T256X16: {
      const int32_t rows = height == 1 ? 1 : height / 2;
      ExactImage image = {exact_plane(width, height, 1),
                          exact_plane(w2, rows, 2)};
      if (width < 1 || height < 1) return image;
      image[0].whole = tiled_bytes(format, width, height, false);
      image[1].whole = tiled_bytes(format, width, rows, true);
      return image;
    }
    case VEXO_FMT_UYVY:
    case VEXO_FMT_YUYV: {
      // Whole pairs of pixels.
      ExactPlane plane = exact_plane(width, height, 2);
      plane.row_bytes = int64_t{4} * w2;
      return {plane};
    }
    case VEXO_FMT_RGB565:
    case VEXO_FMT_BGR565:
      return {exact_plane(width, height, 2)};
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
      return {exact_plane(width, height, 3)};
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
    case VEXO_FMT_ARGB8888:
    case VEXO_FMT_ABGR8888:
    case VEXO_FMT_RGBA1010102:
      return {exact_plane(width, height, 4)};
    case VEXO_FMT_RGBAF16:
      return {exact_plane(width, height, 8)};
    default:
      return planar(width, height, 1);
  }
}

// --- colour conversion -------------------------------------------------------

struct ExactCall {
  ExactImage src, dst;
};

inline bool is_rgb_code(int32_t format) {
  return format >= 200 && format < 600;
}
inline bool is_tiled_code(int32_t format) {
  return format >= VEXO_FMT_T64X32 && format <= VEXO_FMT_T256X16;
}

inline bool has_pairs(int32_t format) {
  return format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21;
}
// Of chroma planes: by how much they are smaller, and which of them has U
// (kind 0) or V.
inline int chroma_x_shift(int32_t format) {
  return format != VEXO_FMT_YUV444 && format != VEXO_FMT_YUV422W;
}
inline int chroma_y_shift(int32_t format) {
  return format != VEXO_FMT_YUV444 && format != VEXO_FMT_YUV422N &&
         format != VEXO_FMT_YV16;
}
inline int chroma_plane(int32_t format, int kind) {
  if (has_pairs(format)) return 1;
  const bool v_first = format == VEXO_FMT_YV12 || format == VEXO_FMT_YV16;
  return kind == (v_first ? 1 : 0) ? 1 : 2;
}
// Whether a conversion goes from planes or pairs to planes or pairs: chroma's
// size is then that of the source's own planes, of pairs that of plane 1.
inline bool moves_planes(int32_t from, int32_t to) {
  return (from < VEXO_FMT_T64X32 || from == VEXO_FMT_YUV420PLANAR16) &&
         to < VEXO_FMT_T64X32;
}

// The planes of a conversion of width x height pixels. `standard` is the colour
// standard that the kernel is of.
inline ExactCall exact_csc(int32_t from, int32_t to, int32_t standard,
                           const ExactImage &source, int32_t width,
                           int32_t height) {
  ExactCall call = {source, exact_image(to, width, height)};
  ExactImage &src = call.src;
  ExactImage &dst = call.dst;
  const bool odd = width % 2 != 0 && width > 0;
  if (is_rgb_code(to)) {
    const bool whole_pairs =
        standard == VEXO_STD_DEFAULT &&
        (from == VEXO_FMT_YUV420 || from == VEXO_FMT_YV12 || has_pairs(from) ||
         from == VEXO_FMT_P010LE);
    if (whole_pairs && odd) {
      // A last pair is converted whole.
      src[0].beyond = from == VEXO_FMT_P010LE ? 2 : 1;
      dst[0].beyond = dst[0].row_bytes / width;
    }
    // Of the last pair of an odd row the second luma byte is not read.
    if (from == VEXO_FMT_UYVY && odd) src[0].row_bytes -= 1;
    return call;
  }
  const int32_t w2 = half_down(width);
  const int32_t h2 = half_down(height);
  if (is_rgb_code(from)) {
    // Whole blocks only.
    if (to == VEXO_FMT_YUV420 || to == VEXO_FMT_YV12) {
      dst[1] = dst[2] = exact_plane(w2, h2, 1);
    }
    if (has_pairs(to)) dst[1] = exact_plane(w2, h2, 2);
  } else if (is_tiled_code(from)) {
    // Rows of `width` bytes, an odd last one being a U.
    if (has_pairs(to)) {
      dst[1] = {half_up(width), h2, width, 0, 0};
    } else {
      dst[chroma_plane(to, 0)] = exact_plane(half_up(width), h2, 1);
      dst[chroma_plane(to, 1)] = exact_plane(w2, h2, 1);
    }
  } else if (to == VEXO_FMT_T64X32) {
    dst[1].height = h2;
    dst[1].row_bytes = 0;
    dst[1].whole =
        width < 1 ? 0 : tiled_bytes(to, width, std::max(h2, 0), true);
    // What of the source's chroma goes there.
    for (int p = 1; p < 3; ++p) {
      const int32_t most = p == 1 ? half_up(width) : w2;
      src[p] = exact_plane(std::min(src[p].width, most),
                           std::min(src[p].height, h2), 1);
    }
  } else if (moves_planes(from, to)) {
    for (const int kind : {0, 1}) {
      const ExactPlane &plane =
          src[has_pairs(from) || has_pairs(to) ? 1 : chroma_plane(from, kind)];
      const bool thinner = chroma_x_shift(to) > chroma_x_shift(from);
      const int lower = chroma_y_shift(to) - chroma_y_shift(from);
      dst[chroma_plane(to, kind)] =
          exact_plane(thinner ? half_up(plane.width) : plane.width,
                      thinner     ? half_up(plane.height)
                      : lower > 0 ? half_down(plane.height)
                      : lower < 0 ? 2 * plane.height
                                  : plane.height,
                      has_pairs(to) ? 2 : 1);
    }
  }
  return call;
}

// Bytes that vexo_csc_swap_8byte8 touches.
inline int64_t swapped_bytes(int32_t stride, int32_t rows) {
  const int64_t count =
      int64_t{static_cast<int16_t>(stride)} * static_cast<int16_t>(rows);
  return count < 1 ? 2 : count + count % 2;
}

// Bytes of a source plane of the call.
inline int64_t csc_source_bytes(const ExactCall &call, int32_t from, int32_t to,
                                int p, const int32_t stride[4]) {
  // From YUV420 to YV12 a chroma plane is read with the stride of the other.
  const bool others = from == VEXO_FMT_YUV420 && to == VEXO_FMT_YV12 && p > 0;
  // Pairs that are copied as 16-bit samples.
  const bool words =
      p == 1 && ((from == VEXO_FMT_NV12 && to == VEXO_FMT_NV21) ||
                 (from == VEXO_FMT_NV21 && to == VEXO_FMT_NV12));
  const int32_t step = stride[others ? 3 - p : p];
  return call.src[p].bytes(words ? step & ~1 : step);
}

// Bytes of a destination plane of the call.
inline int64_t csc_destination_bytes(const ExactCall &call, int32_t from,
                                     int32_t to, int p,
                                     const int32_t stride[4]) {
  const bool swapped =
      p == 1 && ((from == VEXO_FMT_NV12 && to == VEXO_FMT_NV21) ||
                 (from == VEXO_FMT_NV21 && to == VEXO_FMT_NV12));
  if (!swapped) return call.dst[p].bytes(stride[p]);
  // The pairs are copied, then exchanged in the run of all the rows that half
  // the luma's are, padding included. The stride is not negative.
  const int64_t copied = call.dst[p].bytes(stride[p] & ~1);
  const int64_t swapped_run =
      swapped_bytes(stride[p], half_down(call.src[0].height));
  return copied > swapped_run ? copied : swapped_run;
}

// --- tone mapping ------------------------------------------------------------

// The destination of a whole picture: its planes have no strides.
inline ExactImage exact_hdr_destination(int32_t format, int32_t width,
                                        int32_t height) {
  if (width < 1 || height < 1) return {};
  const int64_t w = width;
  const int64_t h = height;
  // Bands of four rows; those of one with `rows` rows have `chroma` samples.
  const auto chroma = [w](int64_t rows) {
    return rows == 0 ? 0 : rows <= 2 ? (w + 1) / 2 : w;
  };
  const int64_t top = h < 4 ? h : 4;
  const auto image = [](int64_t a, int64_t b, int64_t c) {
    ExactImage planes;
    planes[0].whole = a;
    planes[1].whole = b;
    planes[2].whole = c;
    return planes;
  };
  const int64_t planes = w * (h / 4) + chroma(h % 4);
  switch (format) {
    case VEXO_FMT_RGB888: {
      const int64_t first = (h - 1) / 4 * 4;
      return image(4 * w * first + 3 * w * (h - first), 0, 0);
    }
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_ARGB8888:
      return image(4 * w * h, 0, 0);
    case VEXO_FMT_YUV420:
      return image(w * h, planes, planes);
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      return image(w * h, 2 * planes, 0);
    case VEXO_FMT_YV12:
      return image(w * top, chroma(top), chroma(top));
    default:
      return is_rgb_code(format) ? image(0, 0, 0) : image(w * top, 0, 0);
  }
}

}  // namespace lox_test
