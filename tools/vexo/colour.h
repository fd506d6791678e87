// SPDX-License-Identifier: Apache-2.0
//
// What the samples of a stream mean, as containers say it, and what the library
// has of that.
#pragma once

#include <cstdint>
#include <string>

namespace vexo {

// Numbers are those of ITU-T H.273, which files, decoders and encoders share.
struct Colour {
  static constexpr int kUnknown = 2;

  int matrix = kUnknown;
  int primaries = kUnknown;
  int transfer = kUnknown;
  // 0 unknown, 1 limited, 2 full.
  int range = 0;
  // 0 unknown, 1 left, 2 centre, 3 top left and others.
  int siting = 0;
  // In nits; 0: not said. Of the display that a film was made on, of the
  // brightest pixel and of the brightest frame's mean.
  double display_peak = 0;
  double display_black = 0;
  int brightest = 0;
  int mean = 0;

  bool is_pq() const { return transfer == 16; }
  bool is_hlg() const { return transfer == 18; }
  bool is_hdr() const { return is_pq() || is_hlg(); }
};

// Names as ffmpeg has them; "unknown" among them.
const char *matrix_name(int matrix);
const char *primaries_name(int primaries);
const char *transfer_name(int transfer);
const char *range_name(int range);
const char *siting_name(int siting);

// A matrix that no standard of the library has.
constexpr int32_t kNoStandard = -1;

// Whether a standard is one of full range: each follows that of limited range.
constexpr bool is_full_range(int32_t color_std) { return color_std % 10 == 1; }

// The library's standard for the matrix and range. Of an unknown matrix it is
// BT.601 for small pictures and BT.709 for those of high definition, as players
// have it.
int32_t standard_of(const Colour &colour, int width, int height);

// The matrix of a standard; of kNoStandard it is unknown.
int matrix_of(int32_t color_std);

// The peak that the tone mapping takes a stream to have: that of its brightest
// pixel, else of the display, else 1000.
int source_nit(const Colour &colour);

// In one line.
std::string describe(const Colour &colour);

}  // namespace vexo
