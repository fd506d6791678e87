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

// A quarter turn of a block of a plane by units of 1 to 4 bytes, as the kernels
// do it; `past` if the plane is written past the caches.
void turn_block(int unit, uint32_t rotation, const uint8_t *src, int32_t width,
                int32_t height, int32_t src_stride, int32_t dst_stride,
                uint8_t *dst, bool past);

}  // namespace lox
