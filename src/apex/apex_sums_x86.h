// SPDX-License-Identifier: Apache-2.0
//
// Sums of products of words, two by two, on the x86 backends: what all ways of
// scaling across have in common, and sums down, where of two rows the words of
// a column come beside each other.
#pragma once

#include "apex/apex_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexSums {
  using Reg = typename R::Reg;
  static constexpr int n = static_cast<int>(sizeof(Reg));
  // Times n columns that are summed down at once.
  static constexpr int kDownTimes = 2;

  LOX_OP Reg load(const int16_t *p) {
    return R::load(reinterpret_cast<const uint8_t *>(p));
  }
  LOX_OP void add_to(Reg &sum, Reg samples, Reg weights) {
    sum = R::add32(sum, R::multiply_add16(samples, weights));
  }
  // In one instruction where there is one, which takes longer until the next
  // one can follow: for sums that are many, or no longer than a few products.
  LOX_OP void dot_to(Reg &sum, Reg samples, Reg weights) {
    sum = R::multiply_add16_to(sum, samples, weights);
  }
  // Words as loaded to samples.
  template <ApexSample S>
  LOX_OP Reg samples(Reg v) {
    if constexpr (S == ApexSample::kLow10) {
      return R::bit_and(v, R::fill16(1023));
    } else if constexpr (S == ApexSample::kHigh10) {
      return R::template shift_right16<6>(v);
    } else {
      return v;
    }
  }
  // A register of words, from bytes or words.
  template <ApexSample S>
  LOX_OP Reg load_samples(const uint8_t *p) {
    if constexpr (S == ApexSample::kByte) {
      return widened(p);
    } else {
      return samples<S>(R::load(p));
    }
  }
  LOX_OP Reg widened(const uint8_t *p) {
    if constexpr (n == 16) {
      return _mm_cvtepu8_epi16(
          _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p)));
    } else {
      return _mm256_cvtepu8_epi16(
          _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
    }
  }
  // A block is two registers of sums.
  static constexpr int kSums = n / 4;

  // Sums of a row and of the one below.
  template <ApexSample S>
  LOX_OP Reg words_of(Reg sum, Reg below) {
    constexpr int kShift = apex_bits(S);
    return R::select_odd16(R::template shift_right32<kShift>(sum),
                           R::template shift_left32<16 - kShift>(below));
  }
  template <ApexSample S>
  LOX_OP void put_pairs(Reg sum, Reg below, int16_t *dst) {
    R::template store<false>(reinterpret_cast<uint8_t *>(dst),
                             words_of<S>(sum, below));
  }
  LOX_OP __m128i load_16(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  // Of each lane's elements 0 and 2, and 1 and 3: of a and b in turn.
  LOX_OP Reg adjacent(Reg a, Reg b) {
    return R::add32(R::unpack_low32(a, b), R::unpack_high32(a, b));
  }
  LOX_OP Reg halves(Reg a, Reg b) {
    return R::add32(R::unpack_low64(a, b), R::unpack_high64(a, b));
  }

  // --- down ------------------------------------------------------------------

  LOX_OP Reg two_weights(const int16_t *w) {
    int both;
    memcpy(&both, w, sizeof both);
    return R::fill32(both);
  }
  // kTimes n columns from x on.
  template <ApexSample S, int kTimes>
  LOX_OP void down(const int16_t *const *pairs, const int16_t *weights,
                   int32_t steps, ptrdiff_t x, uint8_t *dst) {
    const Reg half = R::fill32(1 << (27 - apex_bits(S)));
    Reg sum[kTimes][4];
    LOX_UNROLL
    for (auto &four : sum) {
      LOX_UNROLL
      for (Reg &s : four) s = half;
    }
    for (int32_t k = steps; k != 0; --k, ++pairs, weights += 2) {
      const Reg w = two_weights(weights);
      LOX_UNROLL
      for (int r = 0; r < 4 * kTimes; ++r) {
        dot_to(sum[r / 4][r % 4], load(*pairs + 2 * x + r * (n / 2)), w);
      }
    }
    LOX_UNROLL
    for (int t = 0; t < kTimes; ++t) put_down<S>(sum[t], x + t * n, dst);
  }
  template <ApexSample S>
  LOX_OP void put_down(Reg (&sum)[4], ptrdiff_t x, uint8_t *dst) {
    constexpr int kShift = 28 - apex_bits(S);
    for (Reg &s : sum) s = R::template shift_right_signed32<kShift>(s);
    if constexpr (S == ApexSample::kByte) {
      R::template store<false>(dst + x, R::permute_dwords(R::pack_unsigned16(
                                            R::pack_signed32(sum[0], sum[1]),
                                            R::pack_signed32(sum[2], sum[3]))));
    } else {
      constexpr int kMost = S == ApexSample::k14 ? 255 * 64 : 1023;
      LOX_UNROLL
      for (int r = 0; r < 2; ++r) {
        Reg v = R::permute_quads(R::min_unsigned16(
            R::pack_unsigned32(sum[2 * r], sum[2 * r + 1]), R::fill16(kMost)));
        if constexpr (S == ApexSample::kHigh10) {
          v = R::template shift_left16<6>(v);
        }
        R::template store<false>(dst + 2 * x + r * n, v);
      }
    }
  }
};

}  // namespace lox::LOX_SET
