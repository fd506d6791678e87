// SPDX-License-Identifier: Apache-2.0
//
// Packed RGB rows as picture files hold them: R, G, B and perhaps A, a byte
// each. Reorders bytes and widens 16-bit pixels, so that such frames can be
// looked at; colours are converted by the library alone.
#pragma once

#include <cstdint>
#include <vector>

#include "frame.h"

namespace vexo {

class PixelUnpacker {
 public:
  static bool takes(const Layout &layout);

  // The layout must be one that takes() names.
  explicit PixelUnpacker(const Layout &layout);
  bool alpha() const { return alpha_; }
  // A row of R, G, B(, A): the frame's own, or one that stays valid until the
  // next call.
  const uint8_t *row(const Frame &frame, int y);

 private:
  int32_t code_;
  bool alpha_;
  std::vector<uint8_t> row_;
};

}  // namespace vexo
