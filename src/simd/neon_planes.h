// SPDX-License-Identifier: Apache-2.0
//
// Pixels of four bytes and planes of bytes on NEON, whose loads and stores
// interleave.
#pragma once

#include "simd/neon_rgb.h"

namespace lox::LOX_SET {

template <class>
struct PlaneOps {
  static constexpr int n = 16;  // pixels

  struct Four {
    uint8x16_t a, b, c, d;
  };
  LOX_OP uint8x16_t load_plane(const uint8_t *p) { return vld1q_u8(p); }
  LOX_OP uint8x16_t all_255() { return vdupq_n_u8(255); }
  LOX_OP void store_plane(uint8_t *p, uint8x16_t v) { vst1q_u8(p, v); }
  LOX_OP Four load_deinterleave4(const uint8_t *p) {
    const uint8x16x4_t v = vld4q_u8(p);
    return {v.val[0], v.val[1], v.val[2], v.val[3]};
  }
  LOX_OP void store_interleave4(uint8_t *p, uint8x16_t a, uint8x16_t b,
                                uint8x16_t c, uint8x16_t d) {
    uint8x16x4_t v;
    v.val[0] = a;
    v.val[1] = b;
    v.val[2] = c;
    v.val[3] = d;
    vst4q_u8(p, v);
  }
};

}  // namespace lox::LOX_SET
