// SPDX-License-Identifier: Apache-2.0
//
// Copies tiled pictures from and to rows, tile by tile.
#include "csc/tiles.h"

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

void copy_from_tiles(const TilePlane &plane, const uint8_t *src,
                     int32_t dst_stride, uint8_t *dst) {
  plane.for_tiles([&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
    copy_block(dst + ptrdiff_t{y} * dst_stride + x, dst_stride,
               src + plane.offset(x, y), plane.tile_width(), bytes, rows);
  });
}

void copy_to_tiles(const TilePlane &plane, const uint8_t *src,
                   int32_t src_stride, uint8_t *dst) {
  plane.for_tiles([&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
    copy_block(dst + plane.offset(x, y), plane.tile_width(),
               src + ptrdiff_t{y} * src_stride + x, src_stride, bytes, rows);
  });
}

// Takes pairs apart; an odd last byte is a U.
void split_tiles(const TilePlane &plane, int tile_rows, const uint8_t *src,
                 int32_t stride_u, uint8_t *u, int32_t stride_v, uint8_t *v) {
  const auto deinterleave = layout_rows().deinterleave;
  StripReader reader(plane, src);
  // The plane as if its tiles were as wide as strips.
  const TilePlane strips(plane.width(), plane.height(),
                         StripReader::width(plane), tile_rows, false);
  strips.for_tiles([&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
    const StripReader::View view = reader.view(x, y, bytes, rows);
    for (int32_t row = 0; row < rows; ++row) {
      deinterleave(view.row(row), u + ptrdiff_t{y + row} * stride_u + x / 2,
                   v + ptrdiff_t{y + row} * stride_v + x / 2, bytes);
    }
  });
}

void copy_plane_from_tiles(int32_t width, int32_t height, int tile_width,
                           int tile_rows, const uint8_t *src,
                           int32_t dst_stride, uint8_t *dst) {
  copy_from_tiles({width, height, tile_width, tile_rows, false}, src,
                  dst_stride, dst);
}

void copy_luma_from_tiles(const TileShape &shape, const KernelArgs &args) {
  copy_from_tiles(TilePlane::luma(shape, args.src_width[0], args.src_height[0]),
                  args.src_plane[0], args.dst_stride[0], args.dst_plane[0]);
}

TilePlane chroma_of(const TileShape &shape, const KernelArgs &args) {
  return TilePlane::chroma(shape, args.src_width[0], args.src_height[0]);
}

void tiles_to_planes(const TileShape &shape, int u, int v,
                     const KernelArgs &args) {
  copy_luma_from_tiles(shape, args);
  split_tiles(chroma_of(shape, args), shape.chroma_rows, args.src_plane[1],
              args.dst_stride[u], args.dst_plane[u], args.dst_stride[v],
              args.dst_plane[v]);
}

void tiles_to_nv12(const TileShape &shape, const KernelArgs &args) {
  copy_luma_from_tiles(shape, args);
  copy_from_tiles(chroma_of(shape, args), args.src_plane[1], args.dst_stride[1],
                  args.dst_plane[1]);
}

}  // namespace

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
    lox::copy_plane_from_tiles(width, height, columns, tile_rows, src,       \
                               dst_stride, dst);                             \
  }
LOX_COPY(16, 16)
LOX_COPY(16, 8)
LOX_COPY(8, 8)
LOX_COPY(8, 4)

void vexo_csc_unpack_16x8tiles_to_linear(const uint8_t *src, int32_t width,
                                         int32_t height, int32_t dst_stride_u,
                                         uint8_t *dst_u, int32_t dst_stride_v,
                                         uint8_t *dst_v) {
  lox::split_tiles({width, height, 16, 8, false}, 8, src, dst_stride_u, dst_u,
                   dst_stride_v, dst_v);
}

void vexo_csc_t64x32_to_yuv420(LOX_PARAMETERS) {
  lox::tiles_to_planes(lox::kT64x32, 1, 2, LOX_ARGUMENTS);
}
void vexo_csc_t64x32_to_yv12(LOX_PARAMETERS) {
  lox::tiles_to_planes(lox::kT64x32, 2, 1, LOX_ARGUMENTS);
}
void vexo_csc_t16x16_to_yuv420(LOX_PARAMETERS) {
  lox::tiles_to_planes(lox::kT16x16, 1, 2, LOX_ARGUMENTS);
}
void vexo_csc_t64x32_to_nv12(LOX_PARAMETERS) {
  lox::tiles_to_nv12(lox::kT64x32, LOX_ARGUMENTS);
}
void vexo_csc_t16x16_to_nv12(LOX_PARAMETERS) {
  lox::tiles_to_nv12(lox::kT16x16, LOX_ARGUMENTS);
}

void vexo_csc_t64x32_to_nv21(LOX_PARAMETERS) {
  const lox::KernelArgs args = LOX_ARGUMENTS;
  lox::copy_luma_from_tiles(lox::kT64x32, args);
  const lox::TilePlane chroma = lox::chroma_of(lox::kT64x32, args);
  const auto swap = lox::layout_rows().swap;
  chroma.for_tiles([&](int32_t x, int32_t y, int32_t bytes, int32_t rows) {
    const uint8_t *const tile = src_plane[1] + chroma.offset(x, y);
    for (int32_t row = 0; row < rows; ++row) {
      const uint8_t *const from = tile + ptrdiff_t{row} * chroma.tile_width();
      uint8_t *const to = args.dst(1, y + row) + x;
      swap(from, to, bytes / 2);
      // A U without a V to change places with keeps its own.
      if (bytes % 2 != 0) to[bytes - 1] = from[bytes - 1];
    }
  });
}

void vexo_csc_yuv420_to_t64x32(LOX_PARAMETERS) {
  using lox::TilePlane;
  const lox::KernelArgs args = LOX_ARGUMENTS;
  const TilePlane luma =
      TilePlane::luma(lox::kT64x32, src_width[0], src_height[0]);
  lox::copy_to_tiles(luma, src_plane[0], src_stride[0], dst_plane[0]);

  const TilePlane chroma = lox::chroma_of(lox::kT64x32, args);
  const auto interleave = lox::layout_rows().interleave;
  // The picture's chroma may be wider than the source's.
  const int64_t samples = int64_t{2} * src_width[1];
  const int32_t width =
      samples < chroma.width() ? static_cast<int32_t>(samples) : chroma.width();
  chroma.for_tiles([&](int32_t x, int32_t y, int32_t, int32_t rows) {
    const int32_t bytes = TilePlane::step(x, width, chroma.tile_width());
    if (bytes < 1) return;
    uint8_t *const tile = dst_plane[1] + chroma.offset(x, y);
    for (int32_t row = 0; row < rows && y + row < src_height[1]; ++row) {
      const uint8_t *const u = args.src(1, y + row) + x / 2;
      const uint8_t *const v = args.src(2, y + row) + x / 2;
      uint8_t *const to = tile + ptrdiff_t{row} * chroma.tile_width();
      interleave(u, v, to, bytes / 2);
      if (bytes % 2 != 0) to[bytes - 1] = u[bytes / 2];
    }
  });
}

}  // extern "C"
