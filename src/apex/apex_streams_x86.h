// SPDX-License-Identifier: Apache-2.0
//
// Scaling across by 4:1 and 3:2, where every sample is loaded once: what
// outputs share moves from one to the next in registers. A period is four
// samples and an output, or six and four.
#pragma once

#include "apex/apex_pairs_x86.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ApexStreams : ApexPairs<V> {
  using Base = ApexPairs<V>;
  using Sums = ApexSums<V>;
  using Reg = typename Sums::Reg;
  using Base::kBoth;
  using Base::kRowSums;
  using Sums::n;

  // Registers of two rows at 3:2.
  static constexpr int kRows = kBoth ? 1 : 2;

  template <ApexSample S>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if (c.parts == 1) return across<S, 1>(c, pieces, count, dst);
    if (c.parts == 2) return across<S, 2>(c, pieces, count, dst);
    across<S, 4>(c, pieces, count, dst);
  }
  template <ApexSample S, int kParts>
  LOX_OP void across(const ApexColumns &c, const ApexPiece *pieces,
                     int32_t count, int16_t *dst) {
    if constexpr (S != ApexSample::k14 || kParts == 4) {
      if (c.phases == 1) {
        quarters<S, kParts>(c, pieces, count, dst);
      } else {
        two_thirds<S, kParts>(c, pieces, count, dst);
      }
    }
  }

 private:
  // Of each row's elements in a and then b those from element K on.
  template <int K>
  LOX_OP Reg elements_from(Reg a, Reg b) {
    if constexpr (K == 0) {
      return a;
    } else if constexpr (K == kRowSums) {
      return b;
    } else {
#if defined(LOX_SET_avx512)
      return _mm512_alignr_epi32(b, a, K);
#else
      return R::template bytes_from<4 * K>(a, b);
#endif
    }
  }
  // Where two registers have both rows: their sums of one and of the other.
  template <ApexSample S>
  LOX_OP Reg words_of_both(Reg a, Reg b) {
    return Sums::template words_of<S>(R::interleave_low_lanes(a, b),
                                      R::interleave_high_lanes(a, b));
  }
  LOX_OP void put(int16_t *dst, int i, Reg v) {
    R::template store<false>(reinterpret_cast<uint8_t *>(dst + i * (n / 2)), v);
  }
  LOX_OP int32_t loads_of(const ApexPiece *pieces, int32_t count) {
    int32_t loads = 0;
    for (; count != 0; --count) loads += pieces++->blocks;
    return loads;
  }

  // --- 4:1 -------------------------------------------------------------------

  // An output takes twelve pairs, two of each of six periods.
  template <ApexSample S, int kParts>
  LOX_OP void quarters(const ApexColumns &c, const ApexPiece *pieces,
                       int32_t count, int16_t *dst) {
    constexpr int kBefore = apex_quarters_before(n / 4, kParts);
    using Own = typename Base::template Pairs<S, 2, kParts>;
    const Own own;
    Reg w[12];
    LOX_UNROLL
    for (int i = 0; i < 12; ++i) w[i] = Sums::load(c.weights + i * (n / 2));
    typename Base::template Rows<Own::kLoaded, false> rows(c, pieces, count,
                                                           apex_bytes(S));
    int32_t left = loads_of(pieces, count) - kBefore;
    dst += pieces->at;
    if constexpr (n == 64) {
      QuarterSums<S, kParts> sums[2];
      const auto step = [&](Reg(&both)[2]) LOX_INLINE_LAMBDA {
        LOX_UNROLL
        for (int r = 0; r < 2; ++r) {
          Reg pairs[2];
          own.load(rows.row[r], pairs);
          both[r] = sums[r].add(pairs, w);
        }
        rows.advance();
      };
      Reg both[2];
      for (int i = 0; i < kBefore; ++i) step(both);
      for (; left != 0; --left, dst += n / 2) {
        step(both);
        put(dst, 0, Sums::template words_of<S>(both[0], both[1]));
      }
    } else {
      // Pairs are stored and loaded again from where they are wanted, some
      // blocks at a time. Those of the last periods come first next time.
      constexpr int kBlocks = 16;
      constexpr ptrdiff_t kRoom = (kBefore + kBlocks) * n;
      alignas(64) uint8_t apart[2][2][kRoom];
      const auto load = [&](int slot) LOX_INLINE_LAMBDA {
        LOX_UNROLL
        for (int r = 0; r < 2; ++r) {
          Reg pairs[2];
          own.load(rows.row[r], pairs);
          R::template store<false>(apart[r][0] + slot * n, pairs[0]);
          R::template store<false>(apart[r][1] + slot * n, pairs[1]);
        }
        rows.advance();
      };
      const Reg half = R::fill32(1 << (apex_bits(S) - 1));
      for (int i = 0; i < kBefore; ++i) load(i);
      while (left != 0) {
        const int blocks = left < kBlocks ? static_cast<int>(left) : kBlocks;
        left -= blocks;
        for (int i = 0; i < blocks; ++i) load(kBefore + i);
        for (int i = 0; i < blocks; ++i, dst += n / 2) {
          const uint8_t *p = apart[0][0] + i * n;
          // Or else GCC keeps what the next block loads, too, and has no
          // registers left for weights.
          asm("" : "+r"(p));
          Reg both[2];
          LOX_UNROLL
          for (int r = 0; r < 2; ++r) {
            Reg sum = half;
            LOX_UNROLL
            for (int k = 0; k < 12; ++k) {
              Sums::add_to(
                  sum,
                  R::load(p + (2 * r + k % 2) * kRoom + k / 2 * 4 * kParts),
                  w[k]);
            }
            both[r] = sum;
          }
          put(dst, 0, Sums::template words_of<S>(both[0], both[1]));
        }
        LOX_UNROLL
        for (int r = 0; r < 4; ++r) {
          uint8_t *const p = apart[r / 2][r % 2];
          for (int i = 0; i < kBefore; ++i) {
            R::template store<false>(p + i * n, R::load(p + (blocks + i) * n));
          }
        }
      }
    }
  }
  // Sums of the first periods are moved to where the next ones are added, and
  // so on, so that a register of them is complete with the last.
  template <ApexSample S, int kParts>
  struct QuarterSums {
    Reg until[kQuartersAhead] = {};

    LOX_INLINE Reg add(const Reg (&pairs)[2], const Reg (&w)[12]) {
      Reg sum = R::fill32(1 << (apex_bits(S) - 1));
      LOX_UNROLL
      for (int i = 0; i < 6; ++i) {
        Reg more = R::multiply_add16(pairs[0], w[2 * i]);
        Sums::dot_to(more, pairs[1], w[2 * i + 1]);
        if (i > 0) {
          const Reg last = sum;
          sum = elements_from<kRowSums - kParts>(until[i - 1], sum);
          until[i - 1] = last;
        }
        sum = R::add32(sum, more);
      }
      return sum;
    }
  };

  // --- 3:2 -------------------------------------------------------------------

  // Four outputs take five pairs each: from pairs 0, 1, 1 and 2 of a period on.
  template <ApexSample S, int kParts>
  LOX_OP void two_thirds(const ApexColumns &c, const ApexPiece *pieces,
                         int32_t count, int16_t *dst) {
    constexpr int kSets = apex_thirds_before(kRowSums, kParts) + 1;
    using Own = typename Base::template Pairs<S, 3, kParts>;
    const Own own;
    const Reg half = R::fill32(1 << (apex_bits(S) - 1));
    Reg w[20];
    LOX_UNROLL
    for (int i = 0; i < 20; ++i) w[i] = Sums::load(c.weights + i * (n / 2));
    typename Base::template Rows<Own::kLoaded, kBoth> rows(c, pieces, count,
                                                           apex_bytes(S));
    Reg sets[kRows][kSets][3];
    const auto load = [&](int set) LOX_INLINE_LAMBDA {
      LOX_UNROLL
      for (int r = 0; r < kRows; ++r) own.load(rows.row[r], sets[r][set]);
      rows.advance();
    };
    LOX_UNROLL
    for (int i = 0; i < kSets - 1; ++i) load(i);
    int32_t left = loads_of(pieces, count) - (kSets - 1);
    for (int16_t *to = dst + pieces->at; left != 0;
         --left, to += kBoth ? n : 2 * n) {
      load(kSets - 1);
      Reg sums[kRows][4];
      LOX_UNROLL
      for (int r = 0; r < kRows; ++r) {
        auto &set = sets[r];
        const Reg last = kSets == 3
                             ? set[kSets - 1][0]
                             : elements_from<2 * kParts % (kRowSums + 1)>(
                                   set[0][0], set[1][0]);
        const Reg x[7] = {set[0][0],
                          set[0][1],
                          set[0][2],
                          elements_from<kParts>(set[0][0], set[1][0]),
                          elements_from<kParts>(set[0][1], set[1][1]),
                          elements_from<kParts>(set[0][2], set[1][2]),
                          last};
        LOX_UNROLL
        for (int i = 0; i < 4; ++i) {
          Reg sum = half;
          LOX_UNROLL
          for (int k = 0; k < 5; ++k) {
            Sums::dot_to(sum, x[(i + 1) / 2 + k], w[5 * i + k]);
          }
          sums[r][i] = sum;
        }
        LOX_UNROLL
        for (int s = 0; s < kSets - 1; ++s) {
          LOX_UNROLL
          for (int i = 0; i < 3; ++i) set[s][i] = set[s + 1][i];
        }
      }
      put_in_turn<S, kParts>(sums, to);
    }
  }
  // Four outputs of each period in turn.
  template <ApexSample S, int kParts>
  LOX_OP void put_in_turn(const Reg (&sums)[kRows][4], int16_t *dst) {
    if constexpr (kBoth) {
      constexpr int kOther = kParts == 4 ? 1 : 2;
      const auto &s = sums[0];
      const Reg a = words_of_both<S>(s[0], s[kOther]);
      const Reg b = words_of_both<S>(s[3 - kOther], s[3]);
      if constexpr (kParts == 1) {
        put(dst, 0, R::permute_quads(R::unpack_low32(a, b)));
        put(dst, 1, R::permute_quads(R::unpack_high32(a, b)));
      } else {
        put(dst, 0, kParts == 4 ? a : R::unpack_low64(a, b));
        put(dst, 1, kParts == 4 ? b : R::unpack_high64(a, b));
      }
    } else {
      Reg v[4];
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) {
        v[i] = Sums::template words_of<S>(sums[0][i], sums[kRows - 1][i]);
      }
      if constexpr (n == 64 || kParts < 4) {
        const Reg low01 = in_turn<kParts, false>(v[0], v[1]);
        const Reg high01 = in_turn<kParts, true>(v[0], v[1]);
        const Reg low23 = in_turn<kParts, false>(v[2], v[3]);
        const Reg high23 = in_turn<kParts, true>(v[2], v[3]);
        v[0] = in_turn<2 * kParts, false>(low01, low23);
        v[1] = in_turn<2 * kParts, true>(low01, low23);
        v[2] = in_turn<2 * kParts, false>(high01, high23);
        v[3] = in_turn<2 * kParts, true>(high01, high23);
      }
      LOX_UNROLL
      for (int i = 0; i < 4; ++i) put(dst, i, v[i]);
    }
  }
  // So many elements of a and of b in turn: of their first halves or second.
  template <int kUnit, bool kSecond>
  LOX_OP Reg in_turn(Reg a, Reg b) {
#if defined(LOX_SET_avx512)
    constexpr auto kPlaces = Base::elements_at([](int i) {
      return i / (2 * kUnit) * kUnit + i % kUnit + i / kUnit % 2 * 16 +
             (kSecond ? 8 : 0);
    });
    return Base::permute(a, kPlaces.load(), b);
#else
    if constexpr (kUnit == 1) {
      return kSecond ? R::unpack_high32(a, b) : R::unpack_low32(a, b);
    } else if constexpr (kUnit == 2) {
      return kSecond ? R::unpack_high64(a, b) : R::unpack_low64(a, b);
    } else {
      return kSecond ? b : a;
    }
#endif
  }
};

}  // namespace lox::LOX_SET
