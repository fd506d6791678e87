// SPDX-License-Identifier: Apache-2.0
//
// Sums of Lanczos filters on NEON: words times a weight, or times as many
// weights, added to elements of 32 bits.
#pragma once

#include "apex/apex_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class>
struct ApexOps {
  static constexpr int kRegisterBytes = 0;
  // Times n columns that are summed down at once.
  static constexpr int kDownTimes = 1;
  static constexpr int kPhaseBytes = 0;
  static constexpr int kStreamSums = 0;
  static constexpr bool kPicks = false;
  static constexpr int n = 16;

  LOX_OP int16x8_t as_signed(uint16x8_t v) { return vreinterpretq_s16_u16(v); }
  template <int kLane>
  LOX_OP void add_to(int32x4_t &low, int32x4_t &high, int16x8_t v,
                     int16x4_t weights) {
    low = vmlal_lane_s16(low, vget_low_s16(v), weights, kLane);
    high = vmlal_lane_s16(high, vget_high_s16(v), weights, kLane);
  }
  LOX_OP void add_8(int32x4_t &sum, int16x8_t v, int16x8_t w) {
    sum = vmlal_s16(sum, vget_low_s16(v), vget_low_s16(w));
    sum = vmlal_s16(sum, vget_high_s16(v), vget_high_s16(w));
  }
  template <ApexSample S>
  LOX_OP int16x8_t samples(uint16x8_t v) {
    if constexpr (S == ApexSample::kLow10) {
      return as_signed(vandq_u16(v, vdupq_n_u16(1023)));
    } else if constexpr (S == ApexSample::kHigh10) {
      return as_signed(vshrq_n_u16(v, 6));
    } else {
      return as_signed(v);
    }
  }
  // Eight parts.
  template <ApexSample S>
  LOX_OP int16x8_t load(const uint8_t *p) {
    if constexpr (S == ApexSample::kByte) {
      return as_signed(vmovl_u8(Neon::load8(p)));
    } else {
      return samples<S>(vreinterpretq_u16_u8(vld1q_u8(p)));
    }
  }

  // --- across ----------------------------------------------------------------

  template <ApexSample S>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    switch (c.parts) {
      case 1:
        return across<S, 1>(c, pieces, count, dst);
      case 2:
        return across<S, 2>(c, pieces, count, dst);
      case 3:
        return across<S, 3>(c, pieces, count, dst);
      default:
        return across<S, 4>(c, pieces, count, dst);
    }
  }
  // Eight sums at a time.
  template <ApexSample S, int kParts>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    constexpr int kOutputs = kPlainSums / apex_sums(kParts);
    for_blocks<kPlainSums>(
        c, pieces, count, dst,
        [&](const uint8_t *row, const uint8_t *below, ptrdiff_t base,
            ptrdiff_t entry, int16_t *to) LOX_INLINE_LAMBDA {
          row += base * apex_bytes(S);
          below += base * apex_bytes(S);
          const int32_t *const first = c.first + entry * kOutputs;
          const int16_t *const weights = c.weights + entry * kOutputs * c.steps;
          const auto sum = [&](int o) LOX_INLINE_LAMBDA {
            const ptrdiff_t from = ptrdiff_t{first[o]} * apex_bytes(S);
            return sums_of<S, kParts>(row + from, below + from,
                                      weights + ptrdiff_t{o} * c.steps,
                                      c.steps);
          };
          int16x8x2_t both;
          if constexpr (kParts == 1) {
            const auto s0 = sum(0), s1 = sum(1), s2 = sum(2), s3 = sum(3);
            const auto s4 = sum(4), s5 = sum(5), s6 = sum(6), s7 = sum(7);
            both = {{words<S>(four(s0.row, s1.row, s2.row, s3.row),
                              four(s4.row, s5.row, s6.row, s7.row)),
                     words<S>(four(s0.below, s1.below, s2.below, s3.below),
                              four(s4.below, s5.below, s6.below, s7.below))}};
          } else if constexpr (kParts == 2) {
            const auto s0 = sum(0), s1 = sum(1), s2 = sum(2), s3 = sum(3);
            both = {{words<S>(vcombine_s32(s0.row, s1.row),
                              vcombine_s32(s2.row, s3.row)),
                     words<S>(vcombine_s32(s0.below, s1.below),
                              vcombine_s32(s2.below, s3.below))}};
          } else {
            const auto s0 = sum(0), s1 = sum(1);
            both = {{words<S>(s0.row, s1.row), words<S>(s0.below, s1.below)}};
          }
          vst2q_s16(to, both);
        });
  }
  template <ApexSample S>
  LOX_OP int16x8_t words(int32x4_t low, int32x4_t high) {
    constexpr int kBits = apex_bits(S);
    return vcombine_s16(vrshrn_n_s32(low, kBits), vrshrn_n_s32(high, kBits));
  }
  LOX_OP int32x4_t four(int32x2_t a, int32x2_t b, int32x2_t c, int32x2_t d) {
    return vcombine_s32(vpadd_s32(a, b), vpadd_s32(c, d));
  }
  LOX_OP int32x2_t folded(int32x4_t v) {
    return vadd_s32(vget_low_s32(v), vget_high_s32(v));
  }
  // The sums of an output, of two rows; single ones in two halves.
  template <class Sum>
  struct Both {
    Sum row, below;
  };
  template <ApexSample S, int kParts>
  LOX_OP auto sums_of(const uint8_t *row, const uint8_t *below,
                      const int16_t *weights, int32_t steps) {
    constexpr int kBytes = apex_bytes(S);
    int32x4_t a = vdupq_n_s32(0);
    int32x4_t b = a;
    if constexpr (kParts == 1) {
      for (uint32_t k = static_cast<uint32_t>(steps) / 8; k != 0; --k) {
        const int16x8_t w = vld1q_s16(weights);
        add_8(a, load<S>(row), w);
        add_8(b, load<S>(below), w);
        weights += 8;
        row += 8 * kBytes;
        below += 8 * kBytes;
      }
      if (steps % 8 != 0) {
        const int16x4_t w = vld1_s16(weights);
        a = vmlal_s16(a, vget_low_s16(load<S>(row)), w);
        b = vmlal_s16(b, vget_low_s16(load<S>(below)), w);
      }
      return Both<int32x2_t>{folded(a), folded(b)};
    } else if constexpr (kParts == 2) {
      int32x4_t a2 = a;
      int32x4_t b2 = a;
      for (uint32_t k = static_cast<uint32_t>(steps) / 8; k != 0; --k) {
        const int16x8_t w = vld1q_s16(weights);
        const int16x8x2_t p = load_pairs<S>(row);
        add_8(a, p.val[0], w);
        add_8(a2, p.val[1], w);
        const int16x8x2_t q = load_pairs<S>(below);
        add_8(b, q.val[0], w);
        add_8(b2, q.val[1], w);
        weights += 8;
        row += 16 * kBytes;
        below += 16 * kBytes;
      }
      if (steps % 8 != 0) {
        const int16x4_t w = vld1_s16(weights);
        const int16x8x2_t p = load_pairs<S>(row);
        a = vmlal_s16(a, vget_low_s16(p.val[0]), w);
        a2 = vmlal_s16(a2, vget_low_s16(p.val[1]), w);
        const int16x8x2_t q = load_pairs<S>(below);
        b = vmlal_s16(b, vget_low_s16(q.val[0]), w);
        b2 = vmlal_s16(b2, vget_low_s16(q.val[1]), w);
      }
      return Both<int32x2_t>{vpadd_s32(folded(a), folded(a2)),
                             vpadd_s32(folded(b), folded(b2))};
    } else {
      for (uint32_t k = static_cast<uint32_t>(steps) / 4; k != 0; --k) {
        const int16x4_t w = vld1_s16(weights);
        add_4<S, kParts>(a, row, w);
        add_4<S, kParts>(b, below, w);
        weights += 4;
        row += 4 * kParts * kBytes;
        below += 4 * kParts * kBytes;
      }
      return Both<int32x4_t>{a, b};
    }
  }
  // Eight pairs.
  template <ApexSample S>
  LOX_OP int16x8x2_t load_pairs(const uint8_t *p) {
    if constexpr (S == ApexSample::kByte) {
      const uint8x8x2_t v = vld2_u8(p);
      return {{as_signed(vmovl_u8(v.val[0])), as_signed(vmovl_u8(v.val[1]))}};
    } else {
      // As bytes first: nothing is said of the address.
      const uint16x8x2_t v = vuzpq_u16(vreinterpretq_u16_u8(vld1q_u8(p)),
                                       vreinterpretq_u16_u8(vld1q_u8(p + 16)));
      return {{samples<S>(v.val[0]), samples<S>(v.val[1])}};
    }
  }
  // Four pixels.
  template <ApexSample S, int kParts>
  LOX_OP void add_4(int32x4_t &sum, const uint8_t *p, int16x4_t w) {
    const int16x8_t a = load<S>(p);
    const int16x8_t b = load<S>(p + 2 * kParts * apex_bytes(S));
    sum = vmlal_lane_s16(sum, vget_low_s16(a), w, 0);
    sum = vmlal_lane_s16(sum, second<kParts>(a), w, 1);
    sum = vmlal_lane_s16(sum, vget_low_s16(b), w, 2);
    sum = vmlal_lane_s16(sum, second<kParts>(b), w, 3);
  }
  // The second pixel of some words.
  template <int kParts>
  LOX_OP int16x4_t second(int16x8_t v) {
    return kParts == 4 ? vget_high_s16(v) : vget_low_s16(vextq_s16(v, v, 3));
  }

  // --- down ------------------------------------------------------------------

  // 16 columns from x on.
  template <ApexSample S, int>
  LOX_OP void down(const int16_t *const *pairs, const int16_t *weights,
                   int32_t steps, ptrdiff_t x, uint8_t *dst) {
    int32x4_t s0 = vdupq_n_s32(0);
    int32x4_t s1 = s0;
    int32x4_t s2 = s0;
    int32x4_t s3 = s0;
    for (int32_t k = steps; k != 0; --k, ++pairs, weights += 2) {
      int32_t both;
      memcpy(&both, weights, sizeof both);
      const int16x4_t w = vreinterpret_s16_s32(vdup_n_s32(both));
      const int16x8x2_t left = vld2q_s16(*pairs + 2 * x);
      const int16x8x2_t right = vld2q_s16(*pairs + 2 * x + 16);
      add_to<0>(s0, s1, left.val[0], w);
      add_to<0>(s2, s3, right.val[0], w);
      add_to<1>(s0, s1, left.val[1], w);
      add_to<1>(s2, s3, right.val[1], w);
    }
    put<S>(s0, s1, dst + x * apex_bytes(S));
    put<S>(s2, s3, dst + (x + 8) * apex_bytes(S));
  }
  template <ApexSample S>
  LOX_OP void put(int32x4_t low, int32x4_t high, uint8_t *dst) {
    constexpr int kShift = 28 - apex_bits(S);
    low = vrshrq_n_s32(low, kShift);
    high = vrshrq_n_s32(high, kShift);
    if constexpr (S == ApexSample::kByte) {
      vst1_u8(dst,
              vqmovun_s16(vcombine_s16(vqmovn_s32(low), vqmovn_s32(high))));
    } else {
      constexpr int kMost = S == ApexSample::k14 ? 255 * 64 : 1023;
      const uint16x8_t v =
          vminq_u16(vcombine_u16(vqmovun_s32(low), vqmovun_s32(high)),
                    vdupq_n_u16(kMost));
      vst1q_u8(dst, vreinterpretq_u8_u16(
                        S == ApexSample::kHigh10 ? vshlq_n_u16(v, 6) : v));
    }
  }
};

}  // namespace lox::LOX_SET
