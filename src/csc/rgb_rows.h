// SPDX-License-Identifier: Apache-2.0
//
// The row kernels from RGB, to YUV and to other layouts of RGB.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "simd/pixel_format.h"

namespace lox {

// Where 4:2:0 chroma goes.
enum ChromaKind {
  kChromaPlanes,  // U and V of their own
  kChromaUv,      // U, V pairs
  kChromaVu,      // V, U pairs
  kChromaKinds
};

struct RgbToYuvRow {
  const uint8_t *rgb;
  uint8_t *y;
  // U and V, or the pairs in the first alone.
  uint8_t *chroma[2];
  // Fetch what is read a page ahead.
  bool fetch;
};

// `width` pixels, and nothing beyond them is read or written. Chroma is written
// by the forms that say so: of 4:2:0 width / 2 samples of each kind, those of
// the even pixels. Source and destination do not overlap.
using RgbToYuvFn = void (*)(const RgbToYuvRow &row, ptrdiff_t width);
using RgbToRgbFn = void (*)(const uint8_t *src, uint8_t *dst, ptrdiff_t width);

struct RgbToYuvKernels {
  RgbToYuvFn luma;
  RgbToYuvFn luma_and_chroma[kChromaKinds];
};

struct RgbRows {
  RgbToYuvKernels to_yuv[kRgbLayouts];
  // Other standards, from RGBA8888.
  RgbToYuvKernels bt601_full;
  RgbToYuvKernels bt709;
  // A U and a V for each pixel.
  RgbToYuvFn rgba8888_to_yuv444;
  RgbToYuvFn argb8888_to_yuv444;
  RgbToRgbFn rgba8888_to_rgb565;
  RgbToRgbFn rgb888_to_rgb565;
  RgbToRgbFn rgb565_to_rgba8888;
  // Between layouts of bytes, counted from RGB888: every channel where the
  // other has it, an alpha of 255 where the source has none.
  RgbToRgbFn reorder[6][6];
};

LOX_ROW_TABLE(RgbRows, rgb_rows)

}  // namespace lox
