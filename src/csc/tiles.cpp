// SPDX-License-Identifier: Apache-2.0
//
// Copies tiled pictures from and to rows, tile by tile.
#include "csc/tiles.h"

#include "common/caches.h"
#include "common/copy_rows.h"
#include "csc/drivers.h"
#include "csc/kernel_args.h"
#include "csc/layout_rows.h"
#include "orumlox/csc.h"

namespace lox {

int64_t crossed_offset(int32_t width, int32_t height, int32_t x, int32_t y) {
  // Which of its unit's four tiles: the lower two come last, and in every
  // second unit column the upper two.
  const int32_t column = x >> 6 & 1;
  const bool last = (x >> 7 & 1) != (y >> 5 & 1);
  const int32_t tile = column | (last ? 2 : 0);

  const int64_t units = (int64_t{width} + 127) >> 7;
  const bool in_last_tile_row = int64_t{height} <= int64_t{y} + 32;
  const bool unpaired = (((int64_t{height} - 1) >> 5) & 1) == 0;
  // An unpaired last tile row has units of four tiles side by side.
  const bool side_by_side = in_last_tile_row && unpaired && (y >> 5 & 1) == 0;
  const int64_t unit = (y >> 6) * units + (side_by_side ? x >> 8 : x >> 7);
  return unit * 8192 + int64_t{tile} * 2048 + int64_t{y & 31} * 64 + (x & 63);
}

namespace {

// Tiles of 64 bytes a row, several at once.
void copy_from_wide_tiles(const TilePlane &plane, RowRange range,
                          const uint8_t *src, int32_t dst_stride,
                          uint8_t *dst) {
  constexpr int kWidth = 64;
  constexpr int kAtOnce = 16;
  const CopyRows &kernels = copy_rows();
  const bool far = uint64_t{2} * static_cast<uint64_t>(plane.width()) *
                       static_cast<uint64_t>(plane.height()) >=
                   memory_now().far_from;
  if (plane.width() < 1) return;
  const int32_t whole = plane.width() - plane.width() % kWidth;
  for (int32_t y = range.begin, rows; y < range.end; y += rows) {
    rows = plane.rows_from(y, range.end);
    uint8_t *const to = dst + ptrdiff_t{y} * dst_stride;
    const auto tile = [&](int32_t x) {
      return x < plane.width()      ? src + plane.offset(x, y)
             : y + rows < range.end ? src + plane.offset(0, y + rows)
                                    : src;
    };
    for (int32_t x = 0, count; x < whole; x += count * kWidth) {
      count = TilePlane::step(x / kWidth, whole / kWidth, kAtOnce);
      const uint8_t *tiles[kAtOnce + 1];
      for (int i = 0; i <= count; ++i) tiles[i] = tile(x + i * kWidth);
      kernels.copy_tiles(to + x, dst_stride, tiles, count, rows, far);
    }
    if (whole < plane.width()) {
      copy_block(to + whole, dst_stride, tile(whole), kWidth,
                 plane.width() - whole, rows);
    }
  }
}

void copy_from_tiles(const TilePlane &plane, RowRange range, const uint8_t *src,
                     int32_t dst_stride, uint8_t *dst) {
  if (kTilesAtOnce && plane.tile_width() == 64) {
    return copy_from_wide_tiles(plane, range, src, dst_stride, dst);
  }
  plane.for_tiles(
      range, [&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
        copy_block(dst + ptrdiff_t{y} * dst_stride + x, dst_stride,
                   src + plane.offset(x, y), plane.tile_width(), bytes, rows);
      });
}

void copy_to_tiles(const TilePlane &plane, RowRange range, const uint8_t *src,
                   int32_t src_stride, uint8_t *dst) {
  plane.for_tiles(range, [&](int32_t x, int32_t y, int32_t bytes,
                             int32_t rows) {
    copy_block(dst + plane.offset(x, y), plane.tile_width(),
               src + ptrdiff_t{y} * src_stride + x, src_stride, bytes, rows);
  });
}

// Takes pairs apart; an odd last byte is a U.
void split_tiles(const TilePlane &plane, RowRange range, int tile_rows,
                 const uint8_t *src, int32_t stride_u, uint8_t *u,
                 int32_t stride_v, uint8_t *v) {
  const auto deinterleave = layout_rows().deinterleave;
  StripReader reader(plane, src);
  // The plane as if its tiles were as wide as strips.
  const TilePlane strips(plane.width(), plane.height(),
                         StripReader::width(plane), tile_rows, false);
  strips.for_tiles(
      range, [&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
        const StripReader::View view = reader.view(x, y, bytes, rows);
        for (int32_t row = 0; row < rows; ++row) {
          deinterleave(view.row(row), u + ptrdiff_t{y + row} * stride_u + x / 2,
                       v + ptrdiff_t{y + row} * stride_v + x / 2, bytes);
        }
      });
}

// Exchanges the bytes of pairs. A U without a V to change places with keeps its
// own.
void swap_tiles(const TilePlane &plane, RowRange range, const uint8_t *src,
                int32_t dst_stride, uint8_t *dst) {
  const auto swap = layout_rows().swap;
  plane.for_tiles(range, [&](int32_t x, int32_t y, int32_t bytes,
                             int32_t rows) {
    const uint8_t *const tile = src + plane.offset(x, y);
    for (int32_t row = 0; row < rows; ++row) {
      const uint8_t *const from = tile + ptrdiff_t{row} * plane.tile_width();
      uint8_t *const to = dst + ptrdiff_t{y + row} * dst_stride + x;
      swap(from, to, bytes / 2);
      if (bytes % 2 != 0) to[bytes - 1] = from[bytes - 1];
    }
  });
}

TilePlane luma_of(const TileShape &shape, const KernelArgs &args) {
  return TilePlane::luma(shape, args.src_width[0], args.src_height[0]);
}
TilePlane chroma_of(const TileShape &shape, const KernelArgs &args) {
  return TilePlane::chroma(shape, args.src_width[0], args.src_height[0]);
}

}  // namespace

void tiles_to_yuv(const KernelArgs &args, int from, int to) {
  const TileShape &shape = kTileShapes[from];
  copy_from_tiles(luma_of(shape, args), args.rows(), args.src_plane[0],
                  args.dst_stride[0], args.dst_plane[0]);
  const TilePlane chroma = chroma_of(shape, args);
  const RowRange rows = args.rows_of(chroma.height());
  if (to == kToNv12 || to == kToNv21) {
    (to == kToNv12 ? copy_from_tiles : swap_tiles)(
        chroma, rows, args.src_plane[1], args.dst_stride[1], args.dst_plane[1]);
    return;
  }
  const int u = to == kToYuv420 ? 1 : 2;
  const int v = 3 - u;
  split_tiles(chroma, rows, shape.chroma_rows, args.src_plane[1],
              args.dst_stride[u], args.dst_plane[u], args.dst_stride[v],
              args.dst_plane[v]);
}

void yuv420_to_tiles(const KernelArgs &args, int, int to) {
  const TileShape &shape = kTileShapes[to];
  copy_to_tiles(luma_of(shape, args), args.rows(), args.src_plane[0],
                args.src_stride[0], args.dst_plane[0]);

  const TilePlane chroma = chroma_of(shape, args);
  const auto interleave = layout_rows().interleave;
  // The picture's chroma may be wider than the source's.
  const int64_t samples = int64_t{2} * args.src_width[1];
  const int32_t width =
      samples < chroma.width() ? static_cast<int32_t>(samples) : chroma.width();
  const auto merge = [&](int32_t x, int32_t y, int32_t, int32_t rows) {
    const int32_t bytes = TilePlane::step(x, width, chroma.tile_width());
    if (bytes < 1) return;
    uint8_t *const tile = args.dst_plane[1] + chroma.offset(x, y);
    for (int32_t row = 0; row < rows && y + row < args.src_height[1]; ++row) {
      const uint8_t *const u = args.src(1, y + row) + x / 2;
      const uint8_t *const v = args.src(2, y + row) + x / 2;
      uint8_t *const pairs = tile + ptrdiff_t{row} * chroma.tile_width();
      interleave(u, v, pairs, bytes / 2);
      if (bytes % 2 != 0) pairs[bytes - 1] = u[bytes / 2];
    }
  };
  chroma.for_tiles(args.rows_of(chroma.height()), merge);
}

}  // namespace lox

extern "C" {

int32_t vexo_get_tile_offset(int32_t width, int32_t height, int32_t x,
                             int32_t y) {
  return static_cast<int32_t>(lox::crossed_offset(width, height, x, y));
}

#define LOX_COPY(columns, tile_rows)                                         \
  void vexo_csc_copy_##columns##x##tile_rows##tiles_to_linear(               \
      const uint8_t *src, int32_t width, int32_t height, int32_t dst_stride, \
      uint8_t *dst) {                                                        \
    lox::copy_from_tiles({width, height, columns, tile_rows, false},         \
                         {0, height}, src, dst_stride, dst);                 \
  }
LOX_COPY(16, 16)
LOX_COPY(16, 8)
LOX_COPY(8, 8)
LOX_COPY(8, 4)

void vexo_csc_unpack_16x8tiles_to_linear(const uint8_t *src, int32_t width,
                                         int32_t height, int32_t dst_stride_u,
                                         uint8_t *dst_u, int32_t dst_stride_v,
                                         uint8_t *dst_v) {
  lox::split_tiles({width, height, 16, 8, false}, {0, height}, 8, src,
                   dst_stride_u, dst_u, dst_stride_v, dst_v);
}

LOX_KERNELS_420(t64x32, tiles_to_yuv, kT64x32)
LOX_KERNEL(t16x16_to_yuv420, tiles_to_yuv, kT16x16, kToYuv420)
LOX_KERNEL(t16x16_to_nv12, tiles_to_yuv, kT16x16, kToNv12)
LOX_KERNEL(yuv420_to_t64x32, yuv420_to_tiles, kNothing, kT64x32)

}  // extern "C"
