// SPDX-License-Identifier: Apache-2.0
//
// What a format is: its planes as a function of a picture's size.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/format.h"
#include "orumlox/picture.h"

namespace lox {

// A plane is width / 2^x_shift units of `unit` bytes wide, rounded up, and
// height / 2^y_shift rows high; a row is then rounded up to row_align bytes and
// the plane to rows_align rows (tiles, or pairs of pixels).
struct PlaneRule {
  uint8_t unit, x_shift, y_shift;
  uint8_t rows_align;
  uint16_t row_align;
};

struct Format {
  int32_t code;
  const char *name;
  const char *others[3];
  int32_t planes;
  PlaneRule plane[3];
};

constexpr int kFormats = 27;
extern const Format kFormatTable[kFormats];

// Null for a code without a format.
const Format *find_format(int32_t code);

// Whether samples are words, in rows of whole ones.
constexpr bool has_words(int32_t format) {
  return is_10_bit(format) || format == VEXO_FMT_RGB565 ||
         format == VEXO_FMT_BGR565 || format == VEXO_FMT_RGBA1010102 ||
         format == VEXO_FMT_RGBAF16;
}

// A plane's bytes in a row, and its rows, of tiles all of them.
int64_t least_stride(const PlaneRule &rule, int64_t width);
int64_t least_rows(const PlaneRule &rule, int64_t height);
constexpr int64_t shifted_up(int64_t n, int shift) {
  return (n + (int64_t{1} << shift) - 1) >> shift;
}

// Planes one behind the other, of a picture that has its geometry.
void place_planes(vexo_img *img, uint8_t *memory);

// Whether planes are there, and strides hold a row: VEXO_OK, VEXO_ERR_ARG, or
// VEXO_ERR_UNSUPPORTED of a code without a format.
int32_t check_picture(const vexo_img *img);

// The sizes of all planes for a picture of this size, strides and pointers
// kept.
void set_sizes(vexo_img *img, int32_t width, int32_t height);

}  // namespace lox
