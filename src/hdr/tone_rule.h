// SPDX-License-Identifier: Apache-2.0
//
// The numbers of the tone mapping's pixel rule.
#pragma once

#include <stdint.h>

namespace lox {

// A product with a fraction, rounded to nearest: (k * factor + half) >> shift.
// Exact for |k| up to `limit`, which is proven below; a factor of more than 15
// bits is one of 5 and one of 15.
struct Product {
  int numerator, denominator, shift, limit;

  constexpr int scaled(int by) const {
    const int64_t twice = (int64_t{numerator} << (by + 1)) / denominator;
    return static_cast<int>((twice + (twice < 0 ? -1 : 1)) / 2);
  }
  constexpr int factor() const { return scaled(shift); }
  constexpr int of(int k) const {
    return (k * factor() + (1 << (shift - 1))) >> shift;
  }
  constexpr bool exact() const {
    for (int k = -limit; k <= limit; ++k) {
      // The nearest is less than half away; never two are.
      const int64_t off = int64_t{numerator} * k - int64_t{denominator} * of(k);
      if (2 * off >= denominator || 2 * off <= -int64_t{denominator}) {
        return false;
      }
    }
    return true;
  }
};

// BT.2020 of limited range to R'G'B': 1024 / 876 for luma, 1024 / 896 times the
// matrix for chroma. Quirk: white is 1024, so that scales are shifts, and not
// the largest code, 1023.
constexpr Product kLuma = {256, 219, 19, 876};
constexpr Product kCrToR = {8 * 14746, 7 * 10000, 19, 448};
constexpr Product kCbToG = {-8 * 16455, 7 * 100000, 21, 448};
constexpr Product kCrToG = {-8 * 57135, 7 * 100000, 20, 448};
constexpr Product kCbToB = {8 * 18814, 7 * 10000, 18, 448};
static_assert(kLuma.exact() && kCrToR.exact() && kCbToG.exact() &&
              kCrToG.exact() && kCbToB.exact());

constexpr int kBlack = 64;
constexpr int kWhite = 940;
constexpr int kLeastChroma = 64;
constexpr int kNoChroma = 512;
constexpr int kMostChroma = 960;
constexpr int kMostCode = 1023;
// Linear light of two scales.
constexpr int kMostLinear = 32767;
constexpr int kMostLight = 4095;

struct Row3 {
  int r, g, b;
};

// The BT.2020 to BT.709 matrix in 1 / 256 and BT.709 YUV in 1 / 4096.
struct Standard {
  static constexpr Row3 kR = {425, -150, -19};
  static constexpr Row3 kG = {-32, 290, -2};
  static constexpr Row3 kB = {-5, -26, 287};
  static constexpr Row3 kY = {871, 2929, 296};
  static constexpr Row3 kU = {-480, -1615, 2095};
  static constexpr Row3 kV = {2095, -1903, -192};
};

// Milder colours. Quirk: the rows of blue and luma add up to one more than the
// others, because callers know these colours.
struct Mild {
  static constexpr Row3 kR = {344, -72, -16};
  static constexpr Row3 kG = {-17, 276, -3};
  static constexpr Row3 kB = {1, -5, 261};
  static constexpr Row3 kY = {859, 2955, 283};
  static constexpr Row3 kU = {-461, -1587, 2048};
  static constexpr Row3 kV = {2048, -1869, -179};
};

}  // namespace lox
