// SPDX-License-Identifier: Apache-2.0
//
// Tiled 4:2:0 to RGB, by the row kernels of U, V pairs on strips of tiles.
#include <stddef.h>
#include <stdint.h>

#include "csc/drivers.h"
#include "csc/kernel_args.h"
#include "csc/tiles.h"
#include "csc/yuv_to_rgb.h"
#include "csc/yuv_to_rgb_rows.h"
#include "orumlox/csc.h"

namespace lox {

namespace {

struct Tiled {
  TilePlane luma, chroma;
  const YuvToRgbKernels &forms;
  RgbLayout layout;
  const KernelArgs &args;

  // An odd height's last row shares the chroma row before it.
  int32_t chroma_row(int32_t y) const {
    return y / 2 < chroma.height() ? y / 2 : chroma.height() - 1;
  }
  uint8_t *rgb(int32_t x, int32_t y) const {
    return args.dst(0, y) + ptrdiff_t{x} * kPixelFormats[layout].bytes;
  }
};

void convert_strips(const Tiled &tiled, const TileShape &shape,
                    const Writing &writing) {
  StripReader luma_reader(tiled.luma, tiled.args.src_plane[0]);
  StripReader chroma_reader(tiled.chroma, tiled.args.src_plane[1]);
  const TilePlane strips(tiled.luma.width(), tiled.luma.height(),
                         StripReader::width(tiled.luma), shape.luma_rows,
                         false);
  strips.for_tiles(tiled.args.rows(), [&](int32_t x, int32_t y, int32_t width,
                                          int32_t rows) {
    const int32_t first = tiled.chroma_row(y);
    const int32_t chroma_rows = tiled.chroma_row(y + rows - 1) - first + 1;
    const StripReader::View luma = luma_reader.view(x, y, width, rows);
    // Whole pairs: the last V of an odd width lies beyond it, in the same tile.
    const StripReader::View chroma =
        chroma_reader.view(x, first, width + width % 2, chroma_rows);
    for (int32_t row = 0; row < rows;) {
      // Rows that are asked for may begin with the second of two.
      const bool two = (y + row) % 2 == 0 && row + 1 < rows;
      const int32_t second = two ? row + 1 : row;
      const YuvToRgbRows pair = {
          {luma.row(row), luma.row(second)},
          {chroma.row(tiled.chroma_row(y + row) - first), nullptr},
          {tiled.rgb(x, y + row), tiled.rgb(x, y + second)},
          writing.stream,
          false,
          x,
          y + row};
      (two ? tiled.forms.two_rows : tiled.forms.one_row)(pair, width);
      row += two ? 2 : 1;
    }
  });
}

}  // namespace

void tiled_to_rgb(const KernelArgs &args, int from, int to) {
  if (args.empty()) return;
  const TileShape &shape = kTileShapes[from];
  const auto layout = static_cast<RgbLayout>(to);
  const int32_t width = args.src_width[0];
  const int32_t height = args.src_height[0];
  // A picture of one row has one row of chroma, too.
  const Tiled tiled = {TilePlane::luma(shape, width, height),
                       TilePlane::chroma(shape, width, height < 2 ? 2 : height),
                       yuv_to_rgb_rows().yuv_to_rgb[kRowUv][layout], layout,
                       args};
  const Writing writing = writing_of(layout, args);
  convert_strips(tiled, shape, writing);
  if (writing.stream) yuv_to_rgb_rows().end_stream();
}

}  // namespace lox

extern "C" {

LOX_KERNELS_RGB(t64x32, tiled_to_rgb, kT64x32)
LOX_KERNEL(t16x16_to_rgba8888, tiled_to_rgb, kT16x16, kRgba8888)
LOX_KERNEL(t8x8_to_rgba8888, tiled_to_rgb, kT8x8, kRgba8888)
LOX_KERNEL(t256x16_to_rgba8888, tiled_to_rgb, kT256x16, kRgba8888)

}  // extern "C"
