// SPDX-License-Identifier: Apache-2.0
//
// The row kernels from YUV to RGB: what the drivers call and each instruction
// set provides.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "simd/pixel_format.h"

namespace lox {

// How a row's luma and chroma lie in memory.
enum YuvRowKind {
  kRowPlanar,  // U and V of their own, one sample for two pixels
  kRowUv,      // U, V pairs, one for two pixels
  kRowVu,      // V, U pairs, one for two pixels
  kRowFull,    // U and V of their own, one sample for each pixel
  kRowYuyv,    // packed
  kRowUyvy,    // packed
  kYuvRowKinds
};
// The kinds that two luma rows can share a chroma row of come first.
constexpr int kSharedRowKinds = kRowVu + 1;

// One luma row, or two that share their chroma.
struct YuvToRgbRows {
  // Luma, or the packed row.
  const uint8_t *y[2];
  // U and V, or the pairs in the first alone.
  const uint8_t *chroma[2];
  uint8_t *rgb[2];
  // Write past the caches; only where stream_alignment divides the addresses.
  bool stream;
  // Fetch what is written some way ahead; of no effect with the other.
  bool fetch;
  // The place of the first pixel in the picture, which dithering goes by.
  int32_t column = 0, row = 0;
  // So many times, each of them steps behind the one before: small pictures
  // would be calls for the most part.
  int32_t count = 1;
  ptrdiff_t y_step = 0, chroma_step[2] = {}, rgb_step = 0;
  // The picture is beyond the second cache: its source may be fetched.
  bool far = false;
};

// `width` pixels of each row. Nothing is read or written beyond them, but the
// chroma of an odd width's last pixel is that of a whole pair. Source and
// destination do not overlap.
using YuvToRgbFn = void (*)(const YuvToRgbRows &rows, ptrdiff_t width);
using GreyToRgbFn = void (*)(const uint8_t *y, uint8_t *rgb, ptrdiff_t width);

// Two forms of one conversion; the second is null where rows share no chroma.
struct YuvToRgbKernels {
  YuvToRgbFn one_row, two_rows;
};

struct CscRows {
  YuvToRgbKernels yuv_to_rgb[kYuvRowKinds][kLayoutsAndDithered];
  // 16-bit samples, of which the high byte counts, in U, V pairs; to RGBA8888
  // and to dithered words, red on top or blue.
  YuvToRgbKernels words_to_rgba;
  YuvToRgbKernels words_to_565[2];
  // Other standards, to RGBA8888. That of BT.601 must be given whole rows: its
  // last columns have a rule of their own.
  YuvToRgbKernels bt601_full[kSharedRowKinds];
  YuvToRgbKernels bt709_planar;
  YuvToRgbKernels bt709_full_planar;
  GreyToRgbFn grey_to_rgb565;
  GreyToRgbFn grey_to_rgb888;
  // 0 where there are no streaming stores; end_stream ends a picture of them.
  int stream_alignment;
  void (*end_stream)();
};

LOX_ROW_TABLE(CscRows, yuv_to_rgb_rows)

}  // namespace lox
