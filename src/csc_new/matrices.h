// SPDX-License-Identifier: Apache-2.0
//
// The matrices of the standards, as the numbers that the row kernels multiply
// by, worked out by the compiler.
#pragma once

#include <stdint.h>

#include "csc_new/smooth_rows.h"

namespace lox {

// Destinations that share their scales.
enum SmoothScale { kScale8, kScale565, kScale10, kScaleF16, kSmoothScales };

// What 1 becomes, and what is added to round.
struct SmoothUnit {
  double red_blue, round_red_blue, green, round_green;
};
constexpr SmoothUnit kSmoothUnits[kSmoothScales] = {
    {255 * 64, 32, 255 * 64, 32},
    // The top five or six of eight bits: the largest number is without those
    // below.
    {248 * 64, 4 * 64, 252 * 64, 2 * 64},
    {1023 * 16, 8, 1023 * 16, 8},
    {16384, 0, 16384, 0}};

// Parts of luma that red and blue are.
struct Primaries {
  double red, blue;
};
constexpr Primaries kPrimaries[] = {
    {0.299, 0.114},    // BT.601
    {0.2126, 0.0722},  // BT.709
    {0.2627, 0.0593},  // BT.2020
};

constexpr int16_t nearest(double v) {
  return static_cast<int16_t>(v < 0 ? v - 0.5 : v + 0.5);
}

constexpr SmoothMatrix smooth_matrix(const Primaries &p, bool full,
                                     bool ten_bits, const SmoothUnit &unit) {
  // Codes from black to white, and from one end of chroma to the other.
  const double top = ten_bits ? 1023 : 255;
  const double luma = full ? top : ten_bits ? 876 : 219;
  const double chroma = full ? top : ten_bits ? 896 : 224;
  const double black = full ? 0 : ten_bits ? 64 : 16;
  // Codes come times 2^7 and 2^8, of ten bits 2^5 and 2^6; products are taken
  // times 2^-15.
  const double of_luma = (ten_bits ? 1024 : 256) / luma;
  const double of_chroma = (ten_bits ? 512 : 128) / chroma;
  const double green = 1 - p.red - p.blue;
  const double from_v = 2 * (1 - p.red);
  const double from_u = 2 * (1 - p.blue);
  return {
      .luma = nearest(unit.red_blue * of_luma),
      .red_v = nearest(unit.red_blue * from_v * of_chroma),
      .green_u = nearest(unit.green * -from_u * p.blue / green * of_chroma),
      .green_v = nearest(unit.green * -from_v * p.red / green * of_chroma),
      .blue_u = nearest(unit.red_blue * from_u * of_chroma),
      .luma_green = nearest(unit.green * of_luma),
      .offset = nearest(unit.round_red_blue - unit.red_blue * black / luma),
      .offset_green = nearest(unit.round_green - unit.green * black / luma)};
}

struct SmoothMatrices {
  SmoothMatrix of[3][2][2][kSmoothScales];
};
constexpr SmoothMatrices kSmoothMatrices = [] {
  SmoothMatrices all = {};
  for (int p = 0; p < 3; ++p) {
    for (int full = 0; full < 2; ++full) {
      for (int ten_bits = 0; ten_bits < 2; ++ten_bits) {
        for (int scale = 0; scale < kSmoothScales; ++scale) {
          all.of[p][full][ten_bits][scale] = smooth_matrix(
              kPrimaries[p], full != 0, ten_bits != 0, kSmoothUnits[scale]);
        }
      }
    }
  }
  return all;
}();

}  // namespace lox
