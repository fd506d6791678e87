// SPDX-License-Identifier: Apache-2.0
//
// Which formats vexo_rot turns, and how.
#pragma once

#include <cstdint>

#include "orumlox/rot.h"

namespace lox {

// The bytes of plane 0's unit; 0 for a format that is not turned.
int turned_unit(int32_t format);

constexpr bool is_quarter(uint32_t rotation) {
  return rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
}

}  // namespace lox
