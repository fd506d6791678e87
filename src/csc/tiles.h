// SPDX-License-Identifier: Apache-2.0
//
// Where the bytes of a tiled plane are.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/copy.h"
#include "common/row_range.h"
#include "csc/drivers.h"

namespace lox {

// Tiles of `width` bytes; those of luma and chroma differ in their rows.
struct TileShape {
  int width, luma_rows, chroma_rows;
  // Two tiles by two make a unit, whose halves change places in every second
  // unit column. Else tiles follow each other from left to right, row by row.
  bool crossed;
};
// By TileShapeId.
inline constexpr TileShape kTileShapes[] = {
    {64, 32, 32, true},   // kT64x32
    {16, 16, 8, false},   // kT16x16
    {8, 8, 4, false},     // kT8x8
    {256, 16, 8, false},  // kT256x16
};

// Offset of byte (x, y) of a crossed plane.
int64_t crossed_offset(int32_t width, int32_t height, int32_t x, int32_t y);

// A plane of width x height bytes in tiles.
class TilePlane {
 public:
  TilePlane(int32_t width, int32_t height, int tile_width, int tile_rows,
            bool crossed)
      : width_(width),
        height_(height),
        tile_width_(tile_width),
        tile_rows_(tile_rows),
        crossed_(crossed) {}
  // Of a picture whose luma is width x height.
  static TilePlane luma(const TileShape &shape, int32_t width, int32_t height) {
    return {width, height, shape.width, shape.luma_rows, shape.crossed};
  }
  static TilePlane chroma(const TileShape &shape, int32_t width,
                          int32_t height) {
    return {width, height / 2, shape.width, shape.chroma_rows, shape.crossed};
  }

  int32_t width() const { return width_; }
  int32_t height() const { return height_; }
  int tile_width() const { return tile_width_; }

  ptrdiff_t offset(int32_t x, int32_t y) const {
    if (crossed_) {
      return static_cast<ptrdiff_t>(crossed_offset(width_, height_, x, y));
    }
    const ptrdiff_t tiles = (ptrdiff_t{width_} - 1) / tile_width_ + 1;
    const ptrdiff_t tile = y / tile_rows_ * tiles + x / tile_width_;
    return (tile * tile_rows_ + y % tile_rows_) * tile_width_ + x % tile_width_;
  }

  // How many rows from y to `end` are in one row of tiles.
  int32_t rows_from(int32_t y, int32_t end) const {
    return step(y, end, tile_rows_ - y % tile_rows_);
  }

  // Calls each(x, y, bytes, rows) for the part of every tile that lies in these
  // rows of the plane.
  template <class Each>
  void for_tiles(RowRange range, Each each) const {
    if (width_ < 1) return;
    for (int32_t y = range.begin; y < range.end;) {
      const int32_t rows = rows_from(y, range.end);
      for (int32_t x = 0; x < width_; x += step(x, width_, tile_width_)) {
        each(x, y, step(x, width_, tile_width_), rows);
      }
      y += rows;
    }
  }

  // The smaller of `most` and what is left.
  static int32_t step(int32_t at, int32_t end, int32_t most) {
    return end - at < most ? end - at : most;
  }

 private:
  int32_t width_, height_;
  int tile_width_, tile_rows_;
  bool crossed_;
};

// Reads a tiled plane in strips that are wide enough for row kernels: a wide
// tile as it is, narrow ones copied beside each other.
class StripReader {
 public:
  struct View {
    const uint8_t *at;
    ptrdiff_t stride;
    const uint8_t *row(ptrdiff_t y) const { return at + y * stride; }
  };

  StripReader(const TilePlane &plane, const uint8_t *bytes)
      : plane_(plane), bytes_(bytes) {}

  static int32_t width(const TilePlane &plane) {
    return is_wide(plane) ? plane.tile_width() : kScratchWidth;
  }

  // The strip from byte x, a multiple of the width, and row y on. It lies in
  // one row of tiles.
  View view(int32_t x, int32_t y, int32_t bytes, int32_t rows) {
    if (is_wide(plane_)) {
      return {bytes_ + plane_.offset(x, y), plane_.tile_width()};
    }
    const int tile_width = plane_.tile_width();
    for (int32_t done = 0; done < bytes; done += tile_width) {
      copy_block(scratch_ + done, kScratchWidth,
                 bytes_ + plane_.offset(x + done, y), tile_width,
                 TilePlane::step(done, bytes, tile_width), rows);
    }
    return {scratch_, kScratchWidth};
  }

 private:
  static constexpr int kScratchWidth = 256;
  static constexpr int kScratchRows = 16;
  static bool is_wide(const TilePlane &plane) {
    return plane.tile_width() >= 64;
  }

  TilePlane plane_;
  const uint8_t *bytes_;
  uint8_t scratch_[kScratchWidth * kScratchRows];
};

}  // namespace lox
