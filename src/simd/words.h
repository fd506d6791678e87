// SPDX-License-Identifier: Apache-2.0
//
// 16-bit words in memory: the low byte first, at any address.
#pragma once

#include <cstdint>

#include "simd/op.h"

namespace lox {

LOX_OP constexpr int word_at(const uint8_t *p) { return p[0] | p[1] << 8; }
LOX_OP constexpr void put_word(uint8_t *p, int word) {
  p[0] = static_cast<uint8_t>(word);
  p[1] = static_cast<uint8_t>(word >> 8);
}

}  // namespace lox
