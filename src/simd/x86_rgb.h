// SPDX-License-Identifier: Apache-2.0
//
// The x86 backends' operations from RGB, and those that move bytes. Packing
// works inside 128-bit lanes, which leaves what is packed in an order that
// depends on how it was loaded; R::order_* puts it right where there are
// several.
#pragma once

#include "simd/x86_yuv.h"

namespace lox::LOX_SET {

template <class R>
struct X86Rgb : X86Yuv<R> {
  using Yuv = X86Yuv<R>;
  using typename Yuv::Bytes;
  using typename Yuv::Reg;
  using Yuv::n;

  // Pixels of four bytes as they are in memory, n / 4 in a register; those of
  // three bytes with a zero behind, in an order that packing makes right; those
  // of two bytes as they are, n / 2 in a register.
  template <PixelFormat F>
  struct Pixels {
    Reg v[F.bytes == 2 ? 2 : 4];
  };
  template <PixelFormat F>
  LOX_OP Pixels<F> take_pixels(const uint8_t *&at) {
    const uint8_t *const p = at;
    at += n * F.bytes;
    if constexpr (F.bytes == 4) {
      return {
          {R::load(p), R::load(p + n), R::load(p + 2 * n), R::load(p + 3 * n)}};
    } else if constexpr (F.bytes == 3) {
      const Reg v0 = R::load_lanes(p, 48);
      const Reg v1 = R::load_lanes(p + 16, 48);
      const Reg v2 = R::load_lanes(p + 32, 48);
      const Reg spread = R::broadcast128(
          _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
      const Reg last = R::broadcast128(_mm_setr_epi8(
          4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1));
      return {{R::shuffle8(v0, spread),
               R::shuffle8(R::template bytes_from<12>(v0, v1), spread),
               R::shuffle8(R::template bytes_from<8>(v1, v2), spread),
               R::shuffle8(v2, last)}};
    } else {
      return {{R::load(p), R::load(p + n)}};
    }
  }

  // Picks kOrder's bytes of the four pixels, of kFrom bytes each, that a lane
  // begins with, to where those of kTo bytes lie that begin kAway bytes before
  // it; the rest is 0.
  template <ByteOrder kOrder, int kFrom, int kTo, int kAway = 0>
  LOX_OP Reg pick(Reg v) {
    const auto place = [](int i) {
      const int away = i + kAway;
      if (away < 0 || away >= 4 * kTo) return char{-1};
      const int pixel = away / kTo;
      const int byte = kOrder.at[away % kTo];
      return static_cast<char>(byte >= 0 ? pixel * kFrom + byte : -1);
    };
    return R::shuffle8(
        v, R::broadcast128(_mm_setr_epi8(
               place(0), place(1), place(2), place(3), place(4), place(5),
               place(6), place(7), place(8), place(9), place(10), place(11),
               place(12), place(13), place(14), place(15))));
  }
  // n pixels with their bytes in another order.
  template <PixelFormat F, PixelFormat To>
  LOX_OP void reorder(const uint8_t *&from, uint8_t *&to) {
    constexpr ByteOrder kOrder = byte_order(F, To);
    if constexpr (F.bytes == 4 && To.bytes == 4) {
      for (int i = 0; i < 4; ++i) {
        R::template store<false>(to, pick<kOrder, 4, 4>(R::load(from)));
        from += n;
        to += n;
      }
      return;
    }
    Reg v[4];
    if constexpr (F.bytes == 4) {
      for (int i = 0; i < 4; ++i) v[i] = R::load_lanes(from + 16 * i, 64);
    } else {
      const Reg v0 = R::load_lanes(from, 48);
      const Reg v1 = R::load_lanes(from + 16, 48);
      const Reg v2 = R::load_lanes(from + 32, 48);
      v[0] = v0;
      v[1] = R::template bytes_from<12>(v0, v1);
      v[2] = R::template bytes_from<8>(v1, v2);
      v[3] = R::template bytes_from<4>(v2, v2);
    }
    from += n * F.bytes;
    if constexpr (To.bytes == 4) {
      const Reg alpha =
          R::fill32(static_cast<int>(alpha_first(To) ? 0xFFu : 0xFF000000u));
      for (int i = 0; i < 4; ++i) {
        R::store_lanes(to + 16 * i, 64,
                       R::bit_or(alpha, pick<kOrder, F.bytes, 4>(v[i])));
      }
    } else {
      R::store_lanes(to, 48,
                     R::bit_or(pick<kOrder, F.bytes, 3>(v[0]),
                               pick<kOrder, F.bytes, 3, -12>(v[1])));
      R::store_lanes(to + 16, 48,
                     R::bit_or(pick<kOrder, F.bytes, 3, 4>(v[1]),
                               pick<kOrder, F.bytes, 3, -8>(v[2])));
      R::store_lanes(to + 32, 48,
                     R::bit_or(pick<kOrder, F.bytes, 3, 8>(v[2]),
                               pick<kOrder, F.bytes, 3, -4>(v[3])));
    }
    to += n * To.bytes;
  }

  // Factors by place in memory. One operand of a product of bytes is signed:
  // the factors, or with factors above 127 the pixels, less 128.
  template <PixelFormat F, int KR, int KG, int KB>
  struct Weights {
    static constexpr bool kLarge = KR > 127 || KG > 127 || KB > 127;
    Reg bias;

    LOX_OP constexpr int byte(int k, int place) {
      return static_cast<int>(static_cast<unsigned>(k & 255) << 8 * place);
    }
    // Of pixels of two bytes, green and the channel on top; and the last.
    static constexpr int kTop = F.r == 1 ? KR : KB;
    static constexpr int kLast = F.r == 1 ? KB : KR;
    static_assert(F.bytes != 2 || kLast <= 127);

    LOX_OP Reg all() {
      return R::fill32(byte(KR, F.r) | byte(KG, F.g) | byte(KB, F.b));
    }
    LOX_OP Reg top_and_green() {
      return R::fill16(byte(kTop, 1) | byte(KG, 0));
    }
    LOX_OP Reg last() { return R::fill16(byte(kLast, 0)); }

    LOX_OP Reg products(Reg pixels, Reg factors) {
      if constexpr (kLarge) {
        return R::multiply_add8(factors, Yuv::less_128(pixels));
      } else {
        return R::multiply_add8(pixels, factors);
      }
    }
  };
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Weights<F, KR, KG, KB> make_weights(int bias) {
    using W = Weights<F, KR, KG, KB>;
    constexpr int kTaken = F.bytes == 2 ? KG + W::kTop : KR + KG + KB;
    return {R::fill16(bias + (W::kLarge ? 128 * kTaken : 0))};
  }
  // The biased sums of the pixels of two registers of 32-bit elements, or of
  // one of 16-bit elements.
  template <class W>
  LOX_OP Reg sums(Reg a, Reg b, W w) {
    const Reg one = R::fill16(1);
    return R::add16(
        R::pack_signed32(R::multiply_add16(W::products(a, W::all()), one),
                         R::multiply_add16(W::products(b, W::all()), one)),
        w.bias);
  }
  struct Fields {
    Reg top_and_green, last;
  };
  LOX_OP Fields fields(Reg words) {
    return {R::bit_or(R::bit_and(words, R::fill16(0xF800)),
                      R::bit_and(R::template shift_right16<3>(words),
                                 R::fill16(0x00FC))),
            R::bit_and(R::template shift_left16<3>(words), R::fill16(0x00F8))};
  }
  template <class W>
  LOX_OP Reg sums(Fields f, W w) {
    return R::add16(
        R::add16(W::products(f.top_and_green, W::top_and_green()), w.bias),
        R::multiply_add8(f.last, W::last()));
  }
  template <PixelFormat F>
  LOX_OP Reg permute_packed(Reg packed) {
    return F.bytes == 4   ? R::permute_dwords(packed)
           : F.bytes == 3 ? packed
                          : R::permute_quads(packed);
  }
  LOX_OP Reg pack_high_bytes(Reg a, Reg b) {
    return R::pack_unsigned16(R::template shift_right16<8>(a),
                              R::template shift_right16<8>(b));
  }
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Bytes weighted_sum(const Pixels<F> &p, Weights<F, KR, KG, KB> w) {
    if constexpr (F.bytes == 2) {
      return {permute_packed<F>(
          pack_high_bytes(sums(fields(p.v[0]), w), sums(fields(p.v[1]), w)))};
    } else {
      return {permute_packed<F>(
          pack_high_bytes(sums(p.v[0], p.v[1], w), sums(p.v[2], p.v[3], w)))};
    }
  }

  // The sums in 16-bit elements.
  template <PixelFormat F>
  struct EvenPairs {
    Reg first, second;
  };
  template <PixelFormat F, class W0, class W1>
  LOX_OP EvenPairs<F> weighted_sums_of_even(const Pixels<F> &p, W0 first,
                                            W1 second) {
    static_assert(!W0::kLarge && !W1::kLarge);
    if constexpr (F.bytes == 2) {
      const Reg low = R::fill32(0xFFFF);
      const Fields f = fields(
          R::pack_unsigned32(R::bit_and(p.v[0], low), R::bit_and(p.v[1], low)));
      return {sums(f, first), sums(f, second)};
    } else {
      const Reg a = R::even32(p.v[0], p.v[1]);
      const Reg b = R::even32(p.v[2], p.v[3]);
      return {sums(a, b, first), sums(a, b, second)};
    }
  }
  template <PixelFormat F>
  LOX_OP void store_pairs(uint8_t *p, EvenPairs<F> v) {
    R::template store<false>(p, permute_packed<F>(R::bit_or(
                                    R::template shift_right16<8>(v.first),
                                    R::bit_and(v.second, R::fill16(0xFF00)))));
  }
  template <PixelFormat F>
  LOX_OP void store_rows(uint8_t *first, uint8_t *second, EvenPairs<F> v) {
    const Reg both = pack_high_bytes(v.first, v.second);
    R::store_halves(first, second,
                    F.bytes == 4   ? R::permute_words(both)
                    : F.bytes == 3 ? R::permute_quads(both)
                                   : R::permute_dwords(both));
  }

  template <PixelFormat F, PixelFormat To>
  LOX_OP Reg to_565(Reg pixels) {
    constexpr int kTop = red_first(To) ? F.r : F.b;
    constexpr int kLast = red_first(To) ? F.b : F.r;
    Reg top = R::fill32(0xF800);
    if constexpr (kTop == 0) {
      top = R::bit_and(R::template shift_left32<8>(pixels), top);
    } else {
      top = R::bit_and(R::template shift_right32<8 * kTop - 8>(pixels), top);
    }
    return R::bit_or(
        R::bit_or(top,
                  R::bit_and(R::template shift_right32<8 * F.g - 3>(pixels),
                             R::fill32(0x7E0))),
        R::bit_and(R::template shift_right32<8 * kLast + 3>(pixels),
                   R::fill32(0x1F)));
  }
  template <PixelFormat To, PixelFormat F>
  LOX_OP void store_565(uint8_t *to, const Pixels<F> &p) {
    static_assert(F.bytes > 2 && To.bytes == 2);
    const Reg a =
        R::pack_unsigned32(to_565<F, To>(p.v[0]), to_565<F, To>(p.v[1]));
    const Reg b =
        R::pack_unsigned32(to_565<F, To>(p.v[2]), to_565<F, To>(p.v[3]));
    constexpr bool kFour = F.bytes == 4;
    R::template store<false>(
        to, kFour ? R::permute_quads(a) : R::interleave_low_lanes(a, b));
    R::template store<false>(
        to + n, kFour ? R::permute_quads(b) : R::interleave_high_lanes(a, b));
  }
  template <PixelFormat F>
  LOX_OP void store_rgba(uint8_t *p, const Pixels<F> &v) {
    static_assert(F.bytes == 2 && F.r == 1);
    for (const Reg words : v.v) {
      const Reg w = R::unpermute_quads(words);
      const Reg red_green = R::bit_or(
          R::bit_and(R::template shift_right16<8>(w), R::fill16(0x00F8)),
          R::bit_and(R::template shift_left16<5>(w), R::fill16(0xFC00)));
      const Reg blue_alpha = R::bit_or(
          R::bit_and(R::template shift_left16<3>(w), R::fill16(0x00F8)),
          R::fill16(0xFF00));
      R::template store<false>(p, R::unpack_low16(red_green, blue_alpha));
      R::template store<false>(p + n, R::unpack_high16(red_green, blue_alpha));
      p += 2 * n;
    }
  }

  static constexpr int kBlock = n;
  using Block = Bytes;
  LOX_OP Block take_block(const uint8_t *&p) {
    p += kBlock;
    return Yuv::load_bytes(p - kBlock);
  }
  LOX_OP void put_block(uint8_t *&p, Block v) {
    Yuv::store_bytes(p, v);
    p += kBlock;
  }

  struct TwoBytes {
    Bytes even, odd;
  };
  LOX_OP TwoBytes deinterleave(Reg a, Reg b) {
    const Reg low = R::fill16(0x00FF);
    return {{R::permute_quads(
                R::pack_unsigned16(R::bit_and(a, low), R::bit_and(b, low)))},
            {R::permute_quads(pack_high_bytes(a, b))}};
  }
  LOX_OP TwoBytes deinterleave(Bytes a, Bytes b) {
    return deinterleave(a.v, b.v);
  }
  LOX_OP TwoBytes load_deinterleave(const uint8_t *p) {
    return deinterleave(R::load(p), R::load(p + n));
  }
  LOX_OP void store_interleave(uint8_t *p, Bytes even, Bytes odd) {
    const Reg e = R::unpermute_quads(even.v);
    const Reg o = R::unpermute_quads(odd.v);
    R::template store<false>(p, R::unpack_low8(e, o));
    R::template store<false>(p + n, R::unpack_high8(e, o));
  }
  LOX_OP Block swap_pairs(Block v) {
    return {R::shuffle8(
        v.v, R::broadcast128(_mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10,
                                           13, 12, 15, 14)))};
  }
  LOX_OP void swap_2_blocks(uint8_t *&to, const uint8_t *&from) {
    put_block(to, swap_pairs(take_block(from)));
    put_block(to, swap_pairs(take_block(from)));
  }
  // The instruction's average is rounded up.
  LOX_OP Bytes average_down(Bytes a, Bytes b) {
    const Reg odd = R::bit_and(R::exclusive_or(a.v, b.v), R::fill16(0x0101));
    return {R::sub8(R::average8(a.v, b.v), odd)};
  }
  LOX_OP Bytes load_10_to_8(const uint8_t *p) {
    const Reg low = R::fill16(0x00FF);
    return {R::permute_quads(R::pack_unsigned16(
        R::bit_and(R::template shift_right16<2>(R::load(p)), low),
        R::bit_and(R::template shift_right16<2>(R::load(p + n)), low)))};
  }
};

}  // namespace lox::LOX_SET
