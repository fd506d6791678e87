// SPDX-License-Identifier: Apache-2.0
//
// Pixels of four bytes and planes of bytes on the x86 backends. Interleaving
// works within lanes; permutations of groups of four put the rest
// right.
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct PlaneOps {
  using Reg = typename R::Reg;
  struct Four {
    Reg a, b, c, d;
  };
  static constexpr int n = static_cast<int>(sizeof(Reg));  // pixels

  LOX_OP Reg load_plane(const uint8_t *p) { return R::load(p); }
  LOX_OP Reg all_255() { return R::fill16(-1); }
  LOX_OP void store_plane(uint8_t *p, Reg v) { R::template store<false>(p, v); }

  // Of four pixels of each lane's sixteen bytes 0, then bytes 1, 2 and 3.
  LOX_OP Reg load_by_byte(const uint8_t *p) {
    return R::shuffle8(R::load_lanes(p, 64), R::broadcast128(_mm_setr_epi8(
                                                 0, 4, 8, 12, 1, 5, 9, 13, 2, 6,
                                                 10, 14, 3, 7, 11, 15)));
  }
  LOX_OP Four load_deinterleave4(const uint8_t *p) {
    const Reg v0 = load_by_byte(p);
    const Reg v1 = load_by_byte(p + 16);
    const Reg v2 = load_by_byte(p + 32);
    const Reg v3 = load_by_byte(p + 48);
    const Reg ab01 = R::unpack_low32(v0, v1);
    const Reg cd01 = R::unpack_high32(v0, v1);
    const Reg ab23 = R::unpack_low32(v2, v3);
    const Reg cd23 = R::unpack_high32(v2, v3);
    return {R::unpack_low64(ab01, ab23), R::unpack_high64(ab01, ab23),
            R::unpack_low64(cd01, cd23), R::unpack_high64(cd01, cd23)};
  }
  LOX_OP void store_interleave4(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    a = R::unpermute_dwords(a);
    b = R::unpermute_dwords(b);
    c = R::unpermute_dwords(c);
    d = R::unpermute_dwords(d);
    const Reg ab_low = R::unpack_low8(a, b);
    const Reg ab_high = R::unpack_high8(a, b);
    const Reg cd_low = R::unpack_low8(c, d);
    const Reg cd_high = R::unpack_high8(c, d);
    R::template store<false>(p, R::unpack_low16(ab_low, cd_low));
    R::template store<false>(p + n, R::unpack_high16(ab_low, cd_low));
    R::template store<false>(p + 2 * n, R::unpack_low16(ab_high, cd_high));
    R::template store<false>(p + 3 * n, R::unpack_high16(ab_high, cd_high));
  }
};

}  // namespace lox::LOX_SET
