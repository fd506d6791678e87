// SPDX-License-Identifier: Apache-2.0
//
// The DCT-domain scaler on the x86 backends. The sums of columns lie by twos of
// columns: a word of each for the coefficients 0, 2, 1 and 3, 16 bytes, which a
// product with weights makes four sums of. In that order of coefficients
// packing brings those together that the inverse adds up.
#pragma once

#include <string.h>

#include "dct/dct_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct DctOps {
  static constexpr int kColumns = 2;
  static constexpr int kTaken = 0;  // off first sums
  using Reg = typename R::Reg;
  static constexpr int blocks = static_cast<int>(sizeof(Reg)) / 16;
  static constexpr int kHalves = blocks == 4 ? 1 : 2;
  static constexpr int n = static_cast<int>(sizeof(Reg));  // columns
  static constexpr int kRegs = 4 / blocks;                 // of a block's sums

  LOX_OP constexpr int order(int u) { return u == 1 ? 2 : u == 2 ? 1 : u; }
  // Where the sum of column i for coefficient u is.
  LOX_OP constexpr ptrdiff_t column(ptrdiff_t i, int u) {
    return i / 2 * 8 + 2 * order(u) + i % 2;
  }
  // Where coefficient (u, v) is in a block's sums.
  LOX_OP constexpr int place(int u, int v) { return 4 * v + order(u); }
  // The weights of a row of blocks that begin `odd` columns behind the first,
  // two columns at a time: four of each v. Of an even number of entries, which
  // is returned, two are taken at a time.
  template <class Entry>
  LOX_OP int32_t put_across(int16_t *words, int32_t width, int odd,
                            Entry entry) {
    const int32_t count = (odd + width + 3) / 4 * 2;
    for (int32_t i = 0; i < 32 * count; ++i) {
      const int32_t x = i / 32 * 2 + i % 2 - odd;
      words[i] =
          static_cast<int16_t>(x >= 0 && x < width ? entry(i / 8 % 4, x) : 0);
    }
    return count;
  }

  // --- sums of columns ------------------------------------------------------

  // Of half the columns of a vector. Even elements are of a first row and its
  // mirror image, odd ones of a second.
  struct Half {
    Reg u0_low, u0_high;  // of bytes, in 16 bits
    Reg first_low, first_high;
    Reg u1_low, u1_high, u2_low, u2_high, u3_low, u3_high;
  };
  // With 32 registers both halves are summed at once, else `high` is not used.
  struct Sums {
    Half low, high;
  };
  LOX_OP Sums no_sums(int shift) {
    const Reg z = R::zero();
    const Reg half = R::fill32(1 << (shift - 1));
    const Half none = {z, z, half, half, half, half, half, half, half, half};
    return {none, none};
  }
  LOX_OP Reg two_weights(const int16_t *w) {
    int both;
    memcpy(&both, w, sizeof both);
    return R::fill32(both);
  }
  LOX_OP void weigh_first(Sums &s, int w0) {
    weigh_first(s.low, w0);
    if constexpr (kHalves == 1) weigh_first(s.high, w0);
  }
  LOX_OP void weigh_first(Half &s, int w0) {
    const Reg weights = R::fill32(pair(w0, w0));
    s.first_low = R::add32(s.first_low, R::multiply_add16(s.u0_low, weights));
    s.first_high =
        R::add32(s.first_high, R::multiply_add16(s.u0_high, weights));
    s.u0_low = s.u0_high = R::zero();
  }
  template <int kHalf>
  LOX_OP void add(Sums &s, Reg top0, Reg bottom0, Reg top1, Reg bottom1,
                  const int16_t *w) {
    const Reg w1 = two_weights(w);
    const Reg w2 = two_weights(w + 2);
    const Reg w3 = two_weights(w + 4);
    add_half<kHalf>(s.low, top0, bottom0, top1, bottom1, w1, w2, w3);
    if constexpr (kHalves == 1) {
      add_half<1>(s.high, top0, bottom0, top1, bottom1, w1, w2, w3);
    }
  }
  // Products with 1 and with -1 make the sums and differences of bytes.
  template <int kHalf>
  LOX_OP void add_half(Half &s, Reg top0, Reg bottom0, Reg top1, Reg bottom1,
                       Reg w1, Reg w2, Reg w3) {
    const Reg ones = R::fill16(0x0101);
    const Reg signs = R::fill16(static_cast<int16_t>(0xFF01));
    const Reg rows0 = unpack8<kHalf>(top0, bottom0);
    const Reg rows1 = unpack8<kHalf>(top1, bottom1);
    const Reg low = R::unpack_low16(rows0, rows1);
    const Reg high = R::unpack_high16(rows0, rows1);
    const Reg sums_low = R::multiply_add8(low, ones);
    const Reg sums_high = R::multiply_add8(high, ones);
    s.u0_low = R::add16(s.u0_low, sums_low);
    s.u0_high = R::add16(s.u0_high, sums_high);
    s.u2_low = R::add32(s.u2_low, R::multiply_add16(sums_low, w2));
    s.u2_high = R::add32(s.u2_high, R::multiply_add16(sums_high, w2));
    const Reg differences_low = R::multiply_add8(low, signs);
    const Reg differences_high = R::multiply_add8(high, signs);
    s.u1_low = R::add32(s.u1_low, R::multiply_add16(differences_low, w1));
    s.u1_high = R::add32(s.u1_high, R::multiply_add16(differences_high, w1));
    s.u3_low = R::add32(s.u3_low, R::multiply_add16(differences_low, w3));
    s.u3_high = R::add32(s.u3_high, R::multiply_add16(differences_high, w3));
    if constexpr (kHalves == 1) {
      // Held in their registers, or GCC moves some through others and memory.
      __asm__(""
              : "+v"(s.u0_low), "+v"(s.u0_high), "+v"(s.u1_low),
                "+v"(s.u1_high), "+v"(s.u2_low), "+v"(s.u2_high),
                "+v"(s.u3_low), "+v"(s.u3_high));
    }
  }
  template <int kHalf>
  LOX_OP Reg unpack8(Reg a, Reg b) {
    return kHalf == 0 ? R::unpack_low8(a, b) : R::unpack_high8(a, b);
  }
  template <int kHalf>
  LOX_OP void add_pairs(Sums &s, const uint8_t *top0, const uint8_t *bottom0,
                        const uint8_t *top1, const uint8_t *bottom1,
                        const int16_t *w) {
    add<kHalf>(s, R::load(top0), R::load(bottom0), R::load(top1),
               R::load(bottom1), w);
  }
  template <int kHalf>
  LOX_OP void add_pair(Sums &s, const uint8_t *top, const uint8_t *bottom,
                       const int16_t *w) {
    add<kHalf>(s, R::load(top), R::load(bottom), R::zero(), R::zero(), w);
  }
  // A row without a mirror image: its weights for odd coefficients are 0.
  template <int kHalf>
  LOX_OP void add_pair_and_row(Sums &s, const uint8_t *top,
                               const uint8_t *bottom, const uint8_t *row,
                               const int16_t *w) {
    add<kHalf>(s, R::load(top), R::load(bottom), R::load(row), R::zero(), w);
  }
  template <int kHalf>
  LOX_OP void add_row(Sums &s, const uint8_t *row, const int16_t *w) {
    add<kHalf>(s, R::zero(), R::zero(), R::load(row), R::zero(), w);
  }

  LOX_OP Reg shift(Reg low, Reg high, typename R::Shift by) {
    return R::pack_signed32(R::shift_right_signed32_by(low, by),
                            R::shift_right_signed32_by(high, by));
  }
  // `t` is where the vector's first column is.
  template <int kHalf>
  LOX_OP void put(Sums &s, int w0, int by, int16_t *t) {
    uint8_t *const p = reinterpret_cast<uint8_t *>(t);
    const typename R::Shift shift_by = R::shift(by);
    weigh_first(s, w0);
    put_half(s.low, shift_by, p + 64 * kHalf);
    if constexpr (kHalves == 1) put_half(s.high, shift_by, p + 64);
  }
  LOX_OP void put_half(const Half &s, typename R::Shift by, uint8_t *p) {
    store_in_turn(
        p, shift(s.first_low, s.first_high, by), shift(s.u2_low, s.u2_high, by),
        shift(s.u1_low, s.u1_high, by), shift(s.u3_low, s.u3_high, by));
  }
  // A dword of each of four registers in turn: 64 bytes of each lane, which are
  // 128 apart.
  LOX_OP void store_in_turn(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    if constexpr (requires { R::store_dwords_in_turn(p, a, b, c, d); }) {
      R::store_dwords_in_turn(p, a, b, c, d);
    } else {
      const Reg ab_low = R::unpack_low32(a, b);
      const Reg cd_low = R::unpack_low32(c, d);
      const Reg ab_high = R::unpack_high32(a, b);
      const Reg cd_high = R::unpack_high32(c, d);
      R::store_lanes(p, R::unpack_low64(ab_low, cd_low),
                     R::unpack_high64(ab_low, cd_low),
                     R::unpack_low64(ab_high, cd_high),
                     R::unpack_high64(ab_high, cd_high));
    }
  }

  // --- blocks ---------------------------------------------------------------

  // Weighted coefficients, in 1 / 256: for each block a lane for each v.
  struct Group {
    Reg v[4];
  };
  LOX_OP Reg load32(const int32_t *p) {
    return R::load(reinterpret_cast<const uint8_t *>(p));
  }
  LOX_OP void sum_rows(Group &group, int block, const int16_t *t,
                       const DctTables::Kind &kind) {
    const auto *column = reinterpret_cast<const uint8_t *>(t);
    const auto *weights = reinterpret_cast<const uint8_t *>(kind.across);
    Reg sums[2][kRegs];
    const auto product = [&](int k, int j) LOX_INLINE_LAMBDA {
      return R::multiply_add16(R::load_broadcast128(column + 16 * k),
                               R::load(weights + 64 * k + n * j));
    };
    for (int j = 0; j < kRegs; ++j) {
      sums[0][j] = product(0, j);
      sums[1][j] = product(1, j);
    }
    for (int32_t left = kind.count - 2; left > 0; left -= 2) {
      column += 32;
      weights += 128;
      for (int j = 0; j < kRegs; ++j) {
        sums[0][j] = R::add32(sums[0][j], product(0, j));
        sums[1][j] = R::add32(sums[1][j], product(1, j));
      }
    }
    const typename R::Shift shift = R::shift(kind.shift);
    for (int j = 0; j < kRegs; ++j) {
      const Reg k = R::min_signed32(
          R::shift_right_signed32_by(R::add32(sums[0][j], sums[1][j]), shift),
          load32(kind.most + 4 * blocks * j));
      group.v[kRegs * block + j] =
          R::multiply_low32(k, load32(kind.weights + 4 * blocks * j));
    }
  }

  struct Four {
    Reg a, b, c, d;
  };
  // Of words for coefficients 0 and 2, and for 1 and 3.
  template <int S>
  LOX_OP Four butterfly(Reg c02, Reg c13) {
    const Reg e0 = R::multiply_add16(c02, R::fill32(pair(128, 128)));
    const Reg e1 = R::multiply_add16(c02, R::fill32(pair(128, -128)));
    const Reg oa = R::multiply_add16(c13, R::fill32(pair(53, -128)));
    const Reg ob = R::multiply_add16(c13, R::fill32(pair(128, 53)));
    return {R::template shift_right_signed32<S>(R::add32(e0, ob)),
            R::template shift_right_signed32<S>(R::add32(e1, oa)),
            R::template shift_right_signed32<S>(R::sub32(e1, oa)),
            R::template shift_right_signed32<S>(R::sub32(e0, ob))};
  }
  LOX_OP constexpr int pair(int low, int high) {
    return static_cast<int>(static_cast<unsigned>(high) << 16 |
                            static_cast<uint16_t>(low));
  }
  // Bits 8 to 23 of a, and of b above them.
  LOX_OP Reg words(Reg a, Reg b) {
    return R::select_odd16(R::template shift_right32<8>(a),
                           R::template shift_left32<8>(b));
  }
  // With samples taken less 128 the first direction's results are below 2^15
  // for blocks of all sides, so that words hold them: at most 32241 and what
  // rounding down adds.
  static constexpr int kMiddle = 128 * 128;
  struct Constants {};
  LOX_OP Constants constants() { return {}; }
  LOX_OP void put_blocks(const Group &group, const Constants &, uint8_t *dst,
                         ptrdiff_t stride) {
    const Four v = transpose_lanes(group);
    const Reg middle = R::broadcast128(_mm_setr_epi32(kMiddle, 0, 0, 0));
    const Four h =
        butterfly<7>(R::sub16(words(v.a, v.c), middle), words(v.b, v.d));
    const Reg ab = R::pack_signed32(h.a, h.b);
    const Reg cd = R::pack_signed32(h.c, h.d);
    const Four s = butterfly<14>(R::even32(ab, cd), R::odd32(ab, cd));
    const Reg bytes = R::pack_signed16(R::pack_signed32(s.a, s.b),
                                       R::pack_signed32(s.c, s.d));
    R::store_rows(dst, stride,
                  R::permute_dwords(R::exclusive_or(
                      bytes, R::fill16(static_cast<int16_t>(0x8080)))));
  }
  // Each v's lanes, of all blocks.
  LOX_OP Four transpose_lanes(const Group &g) {
    Four v = {g.v[0], g.v[1], g.v[2], g.v[3]};
    R::transpose_lanes(v.a, v.b, v.c, v.d);
    return v;
  }
};

}  // namespace lox::LOX_SET
