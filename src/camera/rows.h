// SPDX-License-Identifier: Apache-2.0
//
// A camera frame as rows of RGB: which row kernels its planes want, and what is
// copied together for them first.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/caches.h"
#include "common/row_range.h"
#include "csc/yuv_to_rgb.h"
#include "csc/yuv_to_rgb_rows.h"
#include "orumlox/camera.h"

namespace lox {

class CameraRows {
 public:
  static bool converts(int32_t standard, int32_t format);
  // Bytes of a pixel.
  static int32_t unit_of(int32_t format) {
    return format == VEXO_FMT_RGB565 ? 2 : 4;
  }

  // From the pixel (x, y) on, both even, `height` rows. All samples that are
  // asked for are in the frame's planes.
  CameraRows(const vexo_camera_frame &frame, int32_t x, int32_t y,
             int32_t height, int32_t format);

  // How many columns can be made at once; any number where nothing has to be
  // copied together.
  static constexpr int32_t kColumns = 2048;
  bool any_width() const {
    return !(plane_[0].apart || plane_[1].apart || plane_[2].apart || to_565_);
  }

  struct Target {
    uint8_t *first;
    ptrdiff_t step;
    Writing writing;
    // The rows are parts of wider ones that lie far away, each perhaps on a
    // page of its own: no processor fetches them by itself.
    bool fetch_source;
  };
  // How a whole picture is written. What is streamed is ended by the caller.
  Writing writing(uint8_t *first, ptrdiff_t step, int32_t width,
                  int32_t height) const;
  // Columns x .. x + width - 1 of some rows. x is a multiple of 8, and so is
  // the width, but where the last columns are among them.
  void make(RowRange rows, int32_t x, int32_t width, Target to) const;

  // What comes of some columns when planes are turned: their pixels are rows,
  // of `count` pixels, from row y on or with `back` the other way round. x and
  // y are even where there is more than one. For any_width(); `planes`, of
  // kStripBytes, become the source.
  static constexpr int32_t kTurnedColumns = 64;
  static constexpr int32_t kMostTurned =
      kStripBytes * 2 / 3 / kTurnedColumns / 64 * 64;
  CameraRows turned(int32_t x, int32_t y, int32_t columns, int32_t count,
                    bool back, uint8_t *planes) const;

 private:
  struct Plane {
    const uint8_t *first;
    ptrdiff_t stride;
    // From sample to sample, or pair to pair.
    int32_t step;
    // Samples have others between them, and the kernel wants none.
    bool apart;
  };
  struct Scratch;
  const uint8_t *samples(int p, int32_t row, int32_t x, int32_t count,
                         uint8_t *scratch) const;
  // Two rows, the first one even, and their chroma.
  void fetch_pair(int32_t row, int32_t x, int32_t width) const;
  void convert(YuvToRgbRows *rows, int32_t width, Scratch *scratch) const;

  Plane plane_[3];
  int planes_ = 3;
  int32_t height_;
  YuvToRgbKernels kernels_;
  RgbLayout layout_;
  // By way of RGBA8888.
  bool to_565_;
};

}  // namespace lox
