// SPDX-License-Identifier: Apache-2.0
//
// Arithmetic on bytes, as filters and searches do it, on NEON.
#pragma once

#include "simd/neon_rgb.h"

namespace lox::LOX_SET {

template <class>
struct ByteOps {
  using Reg = uint8x16_t;
  static constexpr int n = 16;

  LOX_OP int8x16_t as_signed(Reg v) { return vreinterpretq_s8_u8(v); }
  LOX_OP Reg as_bytes(int8x16_t v) { return vreinterpretq_u8_s8(v); }

  LOX_OP Reg load(const uint8_t *p) { return vld1q_u8(p); }
  LOX_OP Reg load_once(const uint8_t *p) { return vld1q_u8(p); }
  LOX_OP void store(uint8_t *p, Reg v) { vst1q_u8(p, v); }
  LOX_OP Reg fill8(int k) { return vdupq_n_u8(static_cast<uint8_t>(k)); }

  LOX_OP Reg bit_and(Reg a, Reg b) { return vandq_u8(a, b); }
  LOX_OP Reg bit_and_not(Reg mask, Reg b) { return vbicq_u8(b, mask); }
  LOX_OP Reg bit_or(Reg a, Reg b) { return vorrq_u8(a, b); }
  LOX_OP Reg exclusive_or(Reg a, Reg b) { return veorq_u8(a, b); }
  LOX_OP Reg add(Reg a, Reg b) {
#if LOX_ARM && !LOX_GCC_ARM
    // Held, or the compiler forms sums of several anew and copies registers.
    return NeonYuv::keep(vaddq_u8(a, b));
#else
    return vaddq_u8(a, b);
#endif
  }
  LOX_OP Reg sub(Reg a, Reg b) { return vsubq_u8(a, b); }
  LOX_OP Reg add_saturating(Reg a, Reg b) { return vqaddq_u8(a, b); }
  LOX_OP Reg sub_saturating(Reg a, Reg b) { return vqsubq_u8(a, b); }
  LOX_OP Reg average_up(Reg a, Reg b) { return vrhaddq_u8(a, b); }
  LOX_OP Reg min(Reg a, Reg b) { return vminq_u8(a, b); }
  LOX_OP Reg half(Reg v) { return vshrq_n_u8(v, 1); }
  // Of a mean that is s / 16 rounded up, or one more: the former. `sum` is s
  // modulo 256.
  LOX_OP Reg less_excess_16(Reg mean, Reg sum) {
#if LOX_GCC_ARM
    // Bit 4 of s + 15 is the lowest one of s / 16 rounded up: an operation and
    // two constants more, but GCC moves the shorter form so that registers run
    // out.
    const Reg rounded = vshrq_n_u8(vaddq_u8(sum, fill8(15)), 4);
    return vsubq_u8(mean, vandq_u8(veorq_u8(rounded, mean), fill8(1)));
#else
    // 16 mean - s is below 16, or one more is in the mean.
    return vsubq_u8(mean, vshrq_n_u8(vsubq_u8(vshlq_n_u8(mean, 4), sum), 4));
#endif
  }

  // Of signed bytes. (a - b) >> 1 of unsigned ones is one.
  LOX_OP Reg half_difference(Reg a, Reg b) { return vhsubq_u8(a, b); }
  LOX_OP Reg half_signed(Reg v) {
    return as_bytes(vshrq_n_s8(as_signed(v), 1));
  }
  LOX_OP Reg add_saturating_signed(Reg a, Reg b) {
    return as_bytes(vqaddq_s8(as_signed(a), as_signed(b)));
  }
  LOX_OP Reg min_signed(Reg a, Reg b) {
    return as_bytes(vminq_s8(as_signed(a), as_signed(b)));
  }
  LOX_OP Reg max_signed(Reg a, Reg b) {
    return as_bytes(vmaxq_s8(as_signed(a), as_signed(b)));
  }
  LOX_OP Reg magnitude(Reg v) { return as_bytes(vabsq_s8(as_signed(v))); }
  LOX_OP Reg negative(Reg v) { return as_bytes(vshrq_n_s8(as_signed(v), 7)); }

  // Which bytes are zero, in four bits each, and the first of them.
  LOX_OP uint64_t zeros(Reg v) {
    const uint16x8_t zero = vreinterpretq_u16_u8(vceqq_u8(v, vdupq_n_u8(0)));
    return vget_lane_u64(vreinterpret_u64_u8(vshrn_n_u16(zero, 4)), 0);
  }
  LOX_OP bool none(uint64_t zeros) { return zeros == 0; }
  LOX_OP int first(uint64_t zeros) { return __builtin_ctzll(zeros) / 4; }

  // The first four bytes of every eight, of eight rows: first, second, third
  // and fourth ones apart, a register each; and the rows' other bytes.
  struct FourColumns {
    Reg a, b, c, d;
    uint32x4_t others0, others1, others2, others3;
  };
  LOX_OP uint32x4_t load32(const uint8_t *p) {
    return vreinterpretq_u32_u8(vld1q_u8(p));
  }
  LOX_OP Reg as_bytes(uint32x4_t v) { return vreinterpretq_u8_u32(v); }
  LOX_OP FourColumns load_four_columns(uint8_t *const (&row)[8]) {
    const uint32x4x2_t v0 = vuzpq_u32(load32(row[0]), load32(row[4]));
    const uint32x4x2_t v1 = vuzpq_u32(load32(row[1]), load32(row[5]));
    const uint32x4x2_t v2 = vuzpq_u32(load32(row[2]), load32(row[6]));
    const uint32x4x2_t v3 = vuzpq_u32(load32(row[3]), load32(row[7]));
    const uint8x16x2_t ac_bd01 =
        vuzpq_u8(as_bytes(v0.val[0]), as_bytes(v1.val[0]));
    const uint8x16x2_t ac_bd23 =
        vuzpq_u8(as_bytes(v2.val[0]), as_bytes(v3.val[0]));
    const uint8x16x2_t ac = vuzpq_u8(ac_bd01.val[0], ac_bd23.val[0]);
    const uint8x16x2_t bd = vuzpq_u8(ac_bd01.val[1], ac_bd23.val[1]);
    return {ac.val[0], bd.val[0], ac.val[1], bd.val[1],
            v0.val[1], v1.val[1], v2.val[1], v3.val[1]};
  }
  LOX_OP void put_pair(uint8_t *upper, uint8_t *lower, Reg fours,
                       uint32x4_t others) {
    const uint32x4x2_t v = vzipq_u32(vreinterpretq_u32_u8(fours), others);
    vst1q_u8(upper, as_bytes(v.val[0]));
    vst1q_u8(lower, as_bytes(v.val[1]));
  }
  LOX_OP void store_four_columns(uint8_t *const (&row)[8],
                                 const FourColumns &f) {
    const uint8x16x2_t ac = vzipq_u8(f.a, f.c);
    const uint8x16x2_t bd = vzipq_u8(f.b, f.d);
    const uint8x16x2_t v01 = vzipq_u8(ac.val[0], bd.val[0]);
    const uint8x16x2_t v23 = vzipq_u8(ac.val[1], bd.val[1]);
    put_pair(row[0], row[4], v01.val[0], f.others0);
    put_pair(row[1], row[5], v01.val[1], f.others1);
    put_pair(row[2], row[6], v23.val[0], f.others2);
    put_pair(row[3], row[7], v23.val[1], f.others3);
  }
};

}  // namespace lox::LOX_SET
