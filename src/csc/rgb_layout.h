// SPDX-License-Identifier: Apache-2.0
//
// The layouts of RGB pixels, as indices of the kernel tables.
#pragma once

namespace lox {

enum RgbLayout {
  kRgb565,
  kBgr565,
  kRgb888,
  kBgr888,
  kRgba8888,
  kBgra8888,
  kArgb8888,
  kAbgr8888,
  kRgbLayouts
};

constexpr int kPixelBytes[kRgbLayouts] = {2, 2, 3, 3, 4, 4, 4, 4};

}  // namespace lox
