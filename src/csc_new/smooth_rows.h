// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of the conversion that interpolates chroma. A row goes
// through three of them: the chroma of a source becomes numbers (`samples`),
// these become one for each pixel (`enlarge`), and pixels are computed
// (`to_rgb`). So neither the sources nor where their chroma is sited multiply
// the kernels of destinations.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "simd/pixel_format.h"

namespace lox {

// Destinations: an RgbLayout, or one of these.
enum SmoothTarget { kRgba1010102 = kRgbLayouts, kRgbaF16, kSmoothTargets };

// How samples lie in memory; pairs are U and V in turn.
enum SmoothSamples {
  kBytePlane,
  kBytePairs,
  kWordPlane,
  kWordPairs,
  kSmoothSamples
};

// How chroma samples lie between pixels of a row.
enum SmoothSiting { kLeft, kCentre, kEveryPixel, kSmoothSitings };

// Words hold ten bits: on top, to be multiplied by 1, or below, by 64.
constexpr int kOnTop = 1;
constexpr int kBelow = 64;

// The numbers that to_rgb multiplies by 2^-15 and adds: the luma sample times
// 2^7 (of ten bits 2^5), and chroma, of which a pixel has -2^15..2^15 - 1. The
// sums have kSmoothBits below the destination's bits, and half of its last one
// is in the offsets. Pixels of two bytes have scales of green's own.
struct SmoothMatrix {
  int16_t luma, red_v, green_u, green_v, blue_u, luma_green;
  int16_t offset, offset_green;
};
constexpr int kSmoothBits = 6;
constexpr int kSmoothBits1010102 = 4;
// Of half-floats, which come of numbers of so many bits below 1.
constexpr int kSmoothBitsF16 = 14;

// What kernels read and write beyond the numbers they are asked for.
constexpr int kSmoothBeyond = 64;

struct SmoothRows {
  // n samples of each of two planes, or n pairs from the first alone: each less
  // its middle, times 16 (of ten bits 4), which is within -2^11..2^11 - 1.
  void (*samples[kSmoothSamples])(const uint8_t *const from[2], int factor,
                                  int16_t *const to[2], ptrdiff_t n);
  // The numbers of two pixels for each of n samples between two rows, which
  // weigh 3 and 1. Of samples on the left the first pixel has the sample and
  // the second the mean with the next one; of samples in the centre it is 3 and
  // 1 of the sample and its neighbour. For every pixel: n pixels of the first
  // row.
  void (*enlarge[kSmoothSitings])(const int16_t *near_row,
                                  const int16_t *far_row, int16_t *to,
                                  ptrdiff_t n);
  // `width` pixels of luma in bytes, and in words; `stream` writes them past
  // the caches, where stream_alignment divides the address.
  void (*to_rgb[2][kSmoothTargets])(const uint8_t *luma, int factor,
                                    const int16_t *const chroma[2],
                                    const SmoothMatrix &matrix, bool stream,
                                    uint8_t *rgb, ptrdiff_t width);
  // 0 where that is of no use; end_stream ends a picture of them.
  int stream_alignment;
  void (*end_stream)();
};

LOX_ROW_TABLE(SmoothRows, smooth_rows)

}  // namespace lox
