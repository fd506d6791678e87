// SPDX-License-Identifier: Apache-2.0
//
// Arithmetic on bytes, as filters and searches do it, on the x86 backends.
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

template <class V>
struct ByteOps {
  using R = typename V::R;
  using Reg = typename R::Reg;
  static constexpr int n = static_cast<int>(sizeof(Reg));

  LOX_OP Reg load(const uint8_t *p) { return R::load(p); }
  // Held in a register: the compiler would load it anew for each operation.
  LOX_OP Reg load_once(const uint8_t *p) {
    Reg v = R::load(p);
    __asm__("" : "+v"(v));
    return v;
  }
  LOX_OP void store(uint8_t *p, Reg v) { R::template store<false>(p, v); }
  LOX_OP Reg fill8(int k) { return R::fill16((k & 255) * 0x0101); }

  LOX_OP Reg bit_and(Reg a, Reg b) { return R::bit_and(a, b); }
  LOX_OP Reg bit_and_not(Reg mask, Reg b) { return R::bit_and_not(mask, b); }
  LOX_OP Reg bit_or(Reg a, Reg b) { return R::bit_or(a, b); }
  LOX_OP Reg exclusive_or(Reg a, Reg b) { return R::exclusive_or(a, b); }
  LOX_OP Reg add(Reg a, Reg b) { return R::add8(a, b); }
  LOX_OP Reg sub(Reg a, Reg b) { return R::sub8(a, b); }
  LOX_OP Reg add_saturating(Reg a, Reg b) {
    return R::add_saturating_unsigned8(a, b);
  }
  LOX_OP Reg sub_saturating(Reg a, Reg b) {
    return R::sub_saturating_unsigned8(a, b);
  }
  LOX_OP Reg average_up(Reg a, Reg b) { return R::average8(a, b); }
  LOX_OP Reg min(Reg a, Reg b) { return R::min_unsigned8(a, b); }
  LOX_OP Reg half(Reg v) {
    return R::bit_and(R::template shift_right16<1>(v), fill8(0x7F));
  }
  // Bit 4 of s + 15 is the lowest one of s / 16 rounded up.
  LOX_OP Reg less_excess_16(Reg mean, Reg sum) {
    const Reg rounded = R::template shift_right16<4>(add(sum, fill8(15)));
    return sub(mean, R::bit_and(R::exclusive_or(rounded, mean), fill8(1)));
  }

  // Of signed bytes. (a - b) >> 1 of unsigned ones is one.
  LOX_OP Reg half_difference(Reg a, Reg b) {
    return R::exclusive_or(R::average8(a, R::exclusive_or(b, fill8(0xFF))),
                           fill8(0x80));
  }
  LOX_OP Reg half_signed(Reg v) {
    return R::sub8(half(R::exclusive_or(v, fill8(0x80))), fill8(64));
  }
  LOX_OP Reg add_saturating_signed(Reg a, Reg b) {
    return R::add_saturating_signed8(a, b);
  }
  LOX_OP Reg min_signed(Reg a, Reg b) { return R::min_signed8(a, b); }
  LOX_OP Reg max_signed(Reg a, Reg b) { return R::max_signed8(a, b); }
  LOX_OP Reg magnitude(Reg v) { return R::abs8(v); }
  LOX_OP Reg negative(Reg v) { return R::negative8(v); }

  // Which bytes are zero, and the first of them.
  LOX_OP auto zeros(Reg v) { return R::zero_bytes(v); }
  template <class Mask>
  LOX_OP bool none(Mask zeros) {
    return zeros == 0;
  }
  LOX_OP int first(uint32_t zeros) { return __builtin_ctz(zeros); }
  LOX_OP int first(uint64_t zeros) { return __builtin_ctzll(zeros); }

  // The first four bytes of every eight, of eight rows: first, second, third
  // and fourth ones apart, a register each; and the rows' other bytes.
  struct FourColumns {
    Reg a, b, c, d;
    Reg others[4];
  };
  LOX_OP Reg regroup(Reg v) {
    return R::shuffle8(
        v, R::broadcast128(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14,
                                         3, 7, 11, 15)));
  }
  LOX_OP FourColumns load_four_columns(uint8_t *const (&row)[8]) {
    FourColumns f;
    Reg v[4];
    for (int i = 0; i < 4; ++i) {
      const Reg upper = R::load(row[i]);
      const Reg lower = R::load(row[i + 4]);
      v[i] = regroup(R::even32(upper, lower));
      f.others[i] = R::odd32(upper, lower);
    }
    const Reg ab01 = R::unpack_low32(v[0], v[1]);
    const Reg cd01 = R::unpack_high32(v[0], v[1]);
    const Reg ab23 = R::unpack_low32(v[2], v[3]);
    const Reg cd23 = R::unpack_high32(v[2], v[3]);
    f.a = R::unpack_low64(ab01, ab23);
    f.b = R::unpack_high64(ab01, ab23);
    f.c = R::unpack_low64(cd01, cd23);
    f.d = R::unpack_high64(cd01, cd23);
    return f;
  }
  LOX_OP void store_four_columns(uint8_t *const (&row)[8],
                                 const FourColumns &f) {
    const Reg ab_low = R::unpack_low32(f.a, f.b);
    const Reg ab_high = R::unpack_high32(f.a, f.b);
    const Reg cd_low = R::unpack_low32(f.c, f.d);
    const Reg cd_high = R::unpack_high32(f.c, f.d);
    const Reg v[4] = {
        R::unpack_low64(ab_low, cd_low), R::unpack_high64(ab_low, cd_low),
        R::unpack_low64(ab_high, cd_high), R::unpack_high64(ab_high, cd_high)};
    for (int i = 0; i < 4; ++i) {
      const Reg fours = regroup(v[i]);
      store(row[i], R::unpack_low32(fours, f.others[i]));
      store(row[i + 4], R::unpack_high32(fours, f.others[i]));
    }
  }
};

}  // namespace lox::LOX_SET
