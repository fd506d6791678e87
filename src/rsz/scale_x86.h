// SPDX-License-Identifier: Apache-2.0
//
// The operations of scaling on the x86 backends. A sample and its neighbour lie
// beside each other in a 16-bit element, so that one product of bytes sums or
// weighs them.
#pragma once

#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V>
struct ScaleOps : V {
  using typename V::Bytes;
  using typename V::R;
  using typename V::Reg;
  using V::n;

  // --- tables ---------------------------------------------------------------

  // Registers pack their lanes in turn: of a vector's groups the even ones are
  // in the first register, the odd ones in the second.
  static constexpr int kWindow = 16;
  static constexpr int windows(int span) { return span / kWindow; }
  static constexpr int place(int group) {
    return group % 2 * n + group / 2 * 16;
  }
  static constexpr int first_place(int byte) { return 2 * byte; }
  static constexpr int second_place(int byte) { return 2 * byte + 1; }

  // --- samples and their neighbours -----------------------------------------

  struct Neighbours {
    Reg a, b;
  };
  // Both are loaded where they are used.
  using Low = const uint8_t *;
  using High = const int16_t *;
  LOX_OP void take_windows(const uint8_t *src, const int16_t *&offsets, Low &p,
                           High &q) {
    p = src;
    q = offsets;
    offsets += n / 8;
  }
  LOX_OP void move_windows(Low &p, High &, ptrdiff_t by) { p += by; }
  template <int kSpan>
  struct Places {
    const uint8_t *p;
  };
  template <int kSpan>
  LOX_OP Places<kSpan> take_places(const uint8_t *&table) {
    constexpr int kSize = windows(kSpan) * 2 * n;
    table += kSize;
    return {table - kSize};
  }
  template <int kSpan>
  LOX_OP Neighbours gather(Low src, High offsets, Places<kSpan> places) {
    const uint8_t *p = places.p;
    Neighbours v = {
        R::shuffle8(R::load_groups(src, offsets), R::load(p)),
        R::shuffle8(R::load_groups(src, offsets + 1), R::load(p + n))};
    for (int w = 1; w < windows(kSpan); ++w) {
      src += kWindow;
      p += 2 * n;
      v.a =
          R::bit_or(v.a, R::shuffle8(R::load_groups(src, offsets), R::load(p)));
      v.b = R::bit_or(
          v.b, R::shuffle8(R::load_groups(src, offsets + 1), R::load(p + n)));
    }
    return v;
  }
  LOX_OP Neighbours as_neighbours(Bytes a, Bytes b) {
    return {R::unpack_low8(a.v, b.v), R::unpack_high8(a.v, b.v)};
  }
  template <int S>
  LOX_OP Reg pack_sums(Reg a, Reg b) {
    return R::pack_unsigned16(R::template shift_right16<S>(a),
                              R::template shift_right16<S>(b));
  }
  LOX_OP Reg sum(Reg pairs) {
    return R::multiply_add8(pairs, R::fill16(0x0101));
  }
  LOX_OP Bytes average(Neighbours v) {
    return {pack_sums<1>(sum(v.a), sum(v.b))};
  }
  LOX_OP Bytes mean_of_4(Neighbours v, Neighbours w) {
    return {pack_sums<2>(R::add16(sum(v.a), sum(w.a)),
                         R::add16(sum(v.b), sum(w.b)))};
  }

  struct Weights {
    Reg a, b, share_a, share_b;
  };
  LOX_OP Weights take_weights(const uint8_t *&p) {
    p += 4 * n;
    return {R::load(p - 4 * n), R::load(p - 3 * n), R::load(p - 2 * n),
            R::load(p - n)};
  }
  LOX_OP Weights fill_weights(int here, int next, int share) {
    const Reg both = R::fill16(here | next << 8);
    const Reg shares = R::fill16(share);
    return {both, both, shares, shares};
  }
  LOX_OP Bytes lerp(Neighbours v, Weights w) {
    return {R::pack_unsigned16(
        R::multiply_high16(R::multiply_add8(v.a, w.a), w.share_a),
        R::multiply_high16(R::multiply_add8(v.b, w.b), w.share_b))};
  }

  // --- whole factors --------------------------------------------------------

  struct Adjacent {
    Reg a, b;
  };
  template <int kUnit>
  LOX_OP Reg beside(Reg v) {
    if constexpr (kUnit == 1) {
      return v;
    } else {
      return R::shuffle8(
          v, R::broadcast128(kUnit == 2
                                 ? _mm_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 8, 10,
                                                 9, 11, 12, 14, 13, 15)
                                 : _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12,
                                                 9, 13, 10, 14, 11, 15)));
    }
  }
  template <int kUnit, int kRow = 0>
  LOX_OP Adjacent take_adjacent(const uint8_t *&p) {
    p += 2 * n;
    return {beside<kUnit>(R::load(p - 2 * n)), beside<kUnit>(R::load(p - n))};
  }
  LOX_OP Bytes average(Adjacent v) {
    return {R::permute_quads(pack_sums<1>(sum(v.a), sum(v.b)))};
  }
  LOX_OP Bytes mean_of_4(Adjacent v, Adjacent w) {
    return {R::permute_quads(pack_sums<2>(R::add16(sum(v.a), sum(w.a)),
                                          R::add16(sum(v.b), sum(w.b))))};
  }

  // Samples and their neighbours of two windows, each of the words that the
  // table spreads over four: the order of memory is that of the outputs.
  LOX_OP Adjacent spread(const uint8_t *p, const int16_t *offsets,
                         const uint8_t *table) {
    const auto half = [=](int i) LOX_INLINE_LAMBDA {
      return R::shuffle8(
          R::permute_words_by(R::load(p + offsets[i]), R::load(table + i * n)),
          R::load(table + (2 + i) * n));
    };
    return {half(0), half(1)};
  }

  // The sums of the first two of four bytes, in 32-bit elements.
  struct FirstTwoOf4 {
    Reg v0, v1, v2, v3;
  };
  LOX_OP Reg sum_first_two(const uint8_t *p) {
    return R::multiply_add8(R::load(p), R::fill32(0x0101));
  }
  template <int kRow = 0>
  LOX_OP FirstTwoOf4 take_first_two_of_4(const uint8_t *&p) {
    p += 4 * n;
    return {sum_first_two(p - 4 * n), sum_first_two(p - 3 * n),
            sum_first_two(p - 2 * n), sum_first_two(p - n)};
  }
  template <int S>
  LOX_OP Bytes pack_dwords(FirstTwoOf4 v) {
    return {R::permute_dwords(pack_sums<S>(R::pack_unsigned32(v.v0, v.v1),
                                           R::pack_unsigned32(v.v2, v.v3)))};
  }
  LOX_OP Bytes average(FirstTwoOf4 v) { return pack_dwords<1>(v); }
  LOX_OP Bytes mean_of_4(FirstTwoOf4 v, FirstTwoOf4 w) {
    return pack_dwords<2>({R::add16(v.v0, w.v0), R::add16(v.v1, w.v1),
                           R::add16(v.v2, w.v2), R::add16(v.v3, w.v3)});
  }

  template <int kUnit>
  LOX_OP void store_interleave_units(uint8_t *p, Bytes first, Bytes second) {
    const Reg a = R::unpermute_quads(first.v);
    const Reg b = R::unpermute_quads(second.v);
    if constexpr (kUnit == 1) {
      R::template store<false>(p, R::unpack_low8(a, b));
      R::template store<false>(p + n, R::unpack_high8(a, b));
    } else if constexpr (kUnit == 2) {
      R::template store<false>(p, R::unpack_low16(a, b));
      R::template store<false>(p + n, R::unpack_high16(a, b));
    } else {
      R::template store<false>(p, R::unpack_low32(a, b));
      R::template store<false>(p + n, R::unpack_high32(a, b));
    }
  }

  // --- pixels of 5, 6 and 5 bits --------------------------------------------

  struct Words {
    Reg v;
  };
  struct WordNeighbours {
    Words first, second;
  };
  static constexpr int first_word_place(int byte) { return byte; }
  static constexpr int second_word_place(int byte) { return 8 + byte; }
  template <int kSpan>
  LOX_OP WordNeighbours gather_words(Low src, High offsets,
                                     Places<kSpan> places) {
    const Neighbours v = gather<kSpan>(src, offsets, places);
    return {{R::unpack_low64(v.a, v.b)}, {R::unpack_high64(v.a, v.b)}};
  }
  LOX_OP Words load_words(const uint8_t *p) { return {R::load(p)}; }
  LOX_OP void store_words(uint8_t *p, Words v) {
    R::template store<false>(p, v.v);
  }
  // A component's halved difference does not reach into the next one below.
  LOX_OP Words average565(Words a, Words b) {
    const Reg apart = R::bit_and(R::exclusive_or(a.v, b.v), R::fill16(0xF7DE));
    return {
        R::add16(R::bit_and(a.v, b.v), R::template shift_right16<1>(apart))};
  }
  // Of two averages: one more where both lost a bit and theirs does.
  LOX_OP Words mean_of_4_565(WordNeighbours v, WordNeighbours w) {
    const Words a = average565(v.first, v.second);
    const Words b = average565(w.first, w.second);
    const Reg lost =
        R::bit_and(R::bit_and(R::exclusive_or(v.first.v, v.second.v),
                              R::exclusive_or(w.first.v, w.second.v)),
                   R::bit_and(R::exclusive_or(a.v, b.v), R::fill16(0x0821)));
    return {R::add16(average565(a, b).v, lost)};
  }
  struct WordWeights {
    Reg here, next, share;
  };
  LOX_OP WordWeights take_word_weights(const uint8_t *&p) {
    p += 3 * n;
    return {R::load(p - 3 * n), R::load(p - 2 * n), R::load(p - n)};
  }
  LOX_OP WordWeights fill_word_weights(int here, int next, int share) {
    return {R::fill16(here), R::fill16(next), R::fill16(share)};
  }
  LOX_OP Reg lerp_component(Reg a, Reg b, WordWeights w) {
    return R::multiply_high16(
        R::add16(R::multiply_low16(a, w.here), R::multiply_low16(b, w.next)),
        w.share);
  }
  LOX_OP Words lerp565(WordNeighbours v, WordWeights w) {
    const Reg a = v.first.v;
    const Reg b = v.second.v;
    const Reg six = R::fill16(63);
    const Reg five = R::fill16(31);
    const Reg top = lerp_component(R::template shift_right16<11>(a),
                                   R::template shift_right16<11>(b), w);
    const Reg middle =
        lerp_component(R::bit_and(R::template shift_right16<5>(a), six),
                       R::bit_and(R::template shift_right16<5>(b), six), w);
    const Reg last =
        lerp_component(R::bit_and(a, five), R::bit_and(b, five), w);
    return {R::bit_or(R::bit_or(R::template shift_left16<11>(top),
                                R::template shift_left16<5>(middle)),
                      last)};
  }

  // --- 16-bit components ----------------------------------------------------

  static constexpr bool kPermutesWords = n == 64;
  LOX_OP Words pick_words(Words v, const uint8_t *places) {
    return {R::permute_words_by(v.v, R::load(places))};
  }
  LOX_OP Words average_words(Words a, Words b) {
    return {R::add16(R::bit_and(a.v, b.v),
                     R::template shift_right16<1>(R::exclusive_or(a.v, b.v)))};
  }
  // Of two averages: one more where both lost a bit and theirs does.
  LOX_OP Words mean_of_four_words(WordNeighbours v, WordNeighbours w) {
    const Words a = average_words(v.first, v.second);
    const Words b = average_words(w.first, w.second);
    const Reg lost =
        R::bit_and(R::bit_and(R::exclusive_or(v.first.v, v.second.v),
                              R::exclusive_or(w.first.v, w.second.v)),
                   R::bit_and(R::exclusive_or(a.v, b.v), R::fill16(1)));
    return {R::add16(average_words(a, b).v, lost)};
  }
  // Weights, their parts of 65536 and what they sum to.
  struct FineWeights {
    Reg here, next, part_here, part_next, sum;
  };
  LOX_OP FineWeights take_fine_weights(const uint8_t *&p) {
    p += 5 * n;
    return {R::load(p - 5 * n), R::load(p - 4 * n), R::load(p - 3 * n),
            R::load(p - 2 * n), R::load(p - n)};
  }
  LOX_OP FineWeights fill_fine_weights(int here, int next, int part_here,
                                       int part_next, int sum) {
    return {R::fill16(here), R::fill16(next), R::fill16(part_here),
            R::fill16(part_next), R::fill16(sum)};
  }
  // One of the two differences is zero.
  LOX_OP Words lerp_words(WordNeighbours v, const FineWeights &w) {
    const Reg a = v.first.v;
    const Reg b = v.second.v;
    const Reg above = R::sub_saturating_unsigned16(a, b);
    const Reg below = R::sub_saturating_unsigned16(b, a);
    const Reg quotient = R::bit_or(R::multiply_high16(above, w.part_here),
                                   R::multiply_high16(below, w.part_next));
    const Reg product = R::add16(R::multiply_low16(above, w.here),
                                 R::multiply_low16(below, w.next));
    const Reg rest = R::sub16(product, R::multiply_low16(quotient, w.sum));
    const Reg one = R::fill16(1);
    const Reg more = R::min_unsigned16(
        R::sub_saturating_unsigned16(rest, R::sub16(w.sum, one)), one);
    return {R::add16(R::add16(R::sub16(a, above), quotient), more)};
  }

  // The sums of neighbours less 65536, in 32-bit elements: the product is
  // signed.
  template <int kUnit>
  LOX_OP Reg sum_words(const uint8_t *p) {
    Reg v = R::load(p);
    if constexpr (kUnit == 4) {
      v = R::shuffle8(
          v, R::broadcast128(_mm_setr_epi8(0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13,
                                           10, 11, 14, 15)));
    }
    return R::multiply_add16(R::exclusive_or(v, R::fill16(0x8000)),
                             R::fill16(1));
  }
  template <int kUnit>
  LOX_OP Reg mean_of_4_words(const uint8_t *p, const uint8_t *q) {
    return R::template shift_right32<2>(
        R::add32(R::add32(sum_words<kUnit>(p), sum_words<kUnit>(q)),
                 R::fill32(2 * 65536)));
  }
  // n bytes of components, each the mean of the units beside each other in two
  // rows.
  template <int kUnit>
  LOX_OP void halve_words(const uint8_t *row, const uint8_t *below,
                          uint8_t *dst) {
    R::template store<false>(dst,
                             R::permute_quads(R::pack_unsigned32(
                                 mean_of_4_words<kUnit>(row, below),
                                 mean_of_4_words<kUnit>(row + n, below + n))));
  }
};

}  // namespace lox::LOX_SET
