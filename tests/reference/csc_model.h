// SPDX-License-Identifier: Apache-2.0
// The conversion of YUV pictures to RGB, pixel by pixel: a table of source
// layouts, one of destination layouts, and the arithmetic between them.
#ifndef ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
#define ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H

#include <orumlox/csc.h>

#include <cstdint>

namespace lox_test {

// Where the samples of a pixel lie; grey pictures have no chroma.
struct Samples {
  uint8_t* y;
  uint8_t* u;
  uint8_t* v;
};

struct Source {
  const char* name;
  int32_t format;
  int planes;
  // An odd width is converted in whole pairs: one pixel more in every row.
  bool whole_pairs;
  // Elements in a row, rows, and bytes that a row of the plane holds and that
  // its last row is read to, for a picture of the given size.
  int32_t (*plane_width)(int plane, int32_t width);
  int32_t (*plane_height)(int plane, int32_t height);
  int32_t (*row_bytes)(int plane, int32_t width);
  int32_t (*last_row_bytes)(int plane, int32_t width);
  // The samples of pixel (x, y) of a picture whose sizes are in `img`.
  Samples (*locate)(const vexo_img& img, int32_t x, int32_t y);
};

// The three channels before the shift that brings them to their width: 256
// times the channel, with the half of rounding added.
struct Channels {
  int32_t r;
  int32_t g;
  int32_t b;
};

struct Destination {
  const char* name;
  int32_t format;
  int32_t pixel_bytes;
  void (*pack)(const Channels& c, uint8_t* pixel);
};

constexpr int kSources = 10;
constexpr int kDestinations = 8;
extern const Source kSourceTable[kSources];
extern const Destination kDestinationTable[kDestinations];

// The exported kernel of a pair, or null where the pair has none.
vexo_csc_kernel* kernel_of(int32_t src_format, int32_t dst_format);

Channels convert(const Samples& s);

inline int32_t clamp_channel(int32_t value, int32_t high) {
  return value < 0 ? 0 : value > high ? high : value;
}

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
