// SPDX-License-Identifier: Apache-2.0
//
// The operations of scaling on NEON. Samples and their neighbours are looked up
// into registers of their own.
#pragma once

#include <string.h>

#include "simd/simd.h"

namespace lox::LOX_SET {

template <class>
struct ScaleOps : Neon {
  // --- tables ---------------------------------------------------------------

  static constexpr int kWindow = 32;
  static constexpr int windows(int span) { return span > kWindow ? 2 : 1; }
  static constexpr int place(int group) { return group * 16; }
  static constexpr int first_place(int byte) { return byte; }
  static constexpr int second_place(int byte) { return 8 + byte; }

  // --- samples and their neighbours -----------------------------------------

  struct Neighbours {
    uint8x16_t first, second;
  };
  // Where two groups' windows begin: in a register each, not in a struct, which
  // the compiler would keep in memory too.
  using Low = const uint8_t *;
  using High = const uint8_t *;
  // Both offsets are loaded together.
  LOX_OP void take_windows(const uint8_t *src, const int16_t *&offsets, Low &p,
                           High &q) {
    int32_t both;
    memcpy(&both, offsets, sizeof both);
    offsets += 2;
    p = src + static_cast<int16_t>(both);
    q = src + (both >> 16);
  }
  // The same of another row.
  LOX_OP void move_windows(Low &p, High &q, ptrdiff_t by) {
    p += by;
    q += by;
  }
  // Each group's places: 8 of samples, 8 of neighbours.
  struct Places {
    uint8x16x2_t v;
    LOX_OP uint8x16_t low(const Places &p) { return p.v.val[0]; }
    LOX_OP uint8x16_t high(const Places &p) { return p.v.val[1]; }
  };
  // Apart, or the compiler would keep them in memory.
  struct TwoPlaces {
    uint8x16_t v0, v1, more_low, more_high;
    LOX_OP uint8x16_t low(const TwoPlaces &p) { return p.v0; }
    LOX_OP uint8x16_t high(const TwoPlaces &p) { return p.v1; }
  };
  template <int kSpan>
  LOX_OP auto take_places(const uint8_t *&table) {
    const uint8x16x2_t v = take_block(table).v;
    if constexpr (windows(kSpan) == 1) {
      return Places{v};
    } else {
      const uint8x16x2_t w = take_block<1>(table).v;
      return TwoPlaces{v.val[0], v.val[1], w.val[0], w.val[1]};
    }
  }

  struct Window16 {
    uint8x16_t v;
  };
  struct Window32 {
#if defined(__aarch64__)
    uint8x16x2_t v;
#else
    uint8x8x4_t v;
#endif
  };
  LOX_OP void load_window(Window16 &w, const uint8_t *p) { w.v = vld1q_u8(p); }
  LOX_OP void load_window(Window32 &w, const uint8_t *p) {
#if defined(__aarch64__)
    w.v = {{ vld1q_u8(p), vld1q_u8(p + 16) }};
#elif LOX_GCC_ARM
    // Loaded in two halves, the compiler would move them together.
    __asm__("vld1.8 %h0, [%1]"
            : "=w"(w.v)
            : "r"(p), "m"(*reinterpret_cast<const uint8_t(*)[32]>(p)));
#else
    const uint64x1x4_t v = vld4_u64(reinterpret_cast<const Unaligned64 *>(p));
    w.v = {{vreinterpret_u8_u64(v.val[0]), vreinterpret_u8_u64(v.val[1]),
            vreinterpret_u8_u64(v.val[2]), vreinterpret_u8_u64(v.val[3])}};
#endif
  }
#if defined(__aarch64__)
  LOX_OP uint8x8_t look_up(Window16 w, uint8x8_t places) {
    return vqtbl1_u8(w.v, places);
  }
  LOX_OP uint8x8_t look_up(Window32 w, uint8x8_t places) {
    return vqtbl2_u8(w.v, places);
  }
  LOX_OP uint8x8_t look_up_more(uint8x8_t v, Window32 w, uint8x8_t places) {
    return vqtbx2_u8(v, w.v, places);
  }
#else
  LOX_OP uint8x8_t look_up(Window16 w, uint8x8_t places) {
    const uint8x8x2_t table = {{ vget_low_u8(w.v), vget_high_u8(w.v) }};
    return vtbl2_u8(table, places);
  }
  LOX_OP uint8x8_t look_up(Window32 w, uint8x8_t places) {
    return vtbl4_u8(w.v, places);
  }
  LOX_OP uint8x8_t look_up_more(uint8x8_t v, Window32 w, uint8x8_t places) {
    return vtbx4_u8(v, w.v, places);
  }
#endif
  // A half from each window. GCC would copy windows and halves alike.
#if LOX_GCC_ARM
  LOX_OP uint8x16_t look_up(Window16 w, Window16 x, uint8x8_t p, uint8x8_t q) {
    uint8x16_t v;
    __asm__(
        "vtbl.8 %e0, {%e1, %f1}, %P3\n\t"
        "vtbl.8 %f0, {%e2, %f2}, %P4"
        : "=&w"(v)
        : "w"(w.v), "w"(x.v), "w"(p), "w"(q));
    return v;
  }
  LOX_OP uint8x16_t look_up(Window32 w, Window32 x, uint8x8_t p, uint8x8_t q) {
    uint8x16_t v;
    __asm__(
        "vtbl.8 %e0, %h1, %P3\n\t"
        "vtbl.8 %f0, %h2, %P4"
        : "=&w"(v)
        : "w"(w.v), "w"(x.v), "w"(p), "w"(q));
    return v;
  }
#else
  template <class Window>
  LOX_OP uint8x16_t look_up(Window w, Window x, uint8x8_t p, uint8x8_t q) {
    return vcombine_u8(look_up(w, p), look_up(x, q));
  }
#endif
  LOX_OP uint8x16_t look_up_more(uint8x16_t v, Window32 w, Window32 x,
                                 uint8x8_t p, uint8x8_t q) {
    return vcombine_u8(look_up_more(vget_low_u8(v), w, p),
                       look_up_more(vget_high_u8(v), x, q));
  }
  template <int kSpan, bool kShort = kSpan == 16>
  struct WindowOf {
    using type = Window32;
  };
  template <int kSpan>
  struct WindowOf<kSpan, true> {
    using type = Window16;
  };
  template <int kSpan, class P>
  LOX_OP Neighbours gather(Low p, High q, const P &places) {
    typename WindowOf<kSpan>::type w;
    typename WindowOf<kSpan>::type x;
    load_window(w, p);
    load_window(x, q);
    const uint8x16_t a = P::low(places);
    const uint8x16_t b = P::high(places);
    Neighbours r = {look_up(w, x, vget_low_u8(a), vget_low_u8(b)),
                    look_up(w, x, vget_high_u8(a), vget_high_u8(b))};
    if constexpr (kSpan == 64) {
      const uint8x16_t c = places.more_low;
      const uint8x16_t d = places.more_high;
      load_window(w, p + 32);
      load_window(x, q + 32);
      r.first = look_up_more(r.first, w, x, vget_low_u8(c), vget_low_u8(d));
      r.second = look_up_more(r.second, w, x, vget_high_u8(c), vget_high_u8(d));
    }
    return r;
  }
  LOX_OP Neighbours as_neighbours(Bytes a, Bytes b) { return {a.v, b.v}; }
  LOX_OP Bytes average(Neighbours v) { return {vhaddq_u8(v.first, v.second)}; }
  // Both shifted right and narrowed, in one register.
  template <int S>
  LOX_OP uint8x16_t narrow_sums(uint16x8_t low, uint16x8_t high) {
#if LOX_ARM
    uint8x16_t v;
    __asm__(
        "vshrn.i16 %e0, %q1, %3\n\t"
        "vshrn.i16 %f0, %q2, %3"
        : "=&w"(v)
        : "w"(low), "w"(high), "i"(S));
    return v;
#else
    return vcombine_u8(vshrn_n_u16(low, S), vshrn_n_u16(high, S));
#endif
  }
  LOX_OP uint16x8_t sum_low(Neighbours v) {
    return vaddl_u8(vget_low_u8(v.first), vget_low_u8(v.second));
  }
  LOX_OP uint16x8_t sum_high(Neighbours v) {
    return vaddl_u8(vget_high_u8(v.first), vget_high_u8(v.second));
  }
  LOX_OP Bytes mean_of_4(Neighbours v, Neighbours w) {
    return {narrow_sums<2>(vaddq_u16(sum_low(v), sum_low(w)),
                           vaddq_u16(sum_high(v), sum_high(w)))};
  }

  // Of the low and of the high half's 8 outputs.
  struct Weights {
    uint8x16_t low, high;
    uint16x8_t share_low, share_high;
  };
  LOX_OP Weights take_weights(const uint8_t *&p) {
    const uint8x16x2_t both = take_block(p).v;
    const uint8x16x2_t share = take_block<1>(p).v;
    return {both.val[0], both.val[1], vreinterpretq_u16_u8(share.val[0]),
            vreinterpretq_u16_u8(share.val[1])};
  }
  LOX_OP Weights fill_weights(int here, int next, int share) {
    const uint8x16_t both =
        keep(vcombine_u8(vdup_n_u8(static_cast<uint8_t>(here)),
                         vdup_n_u8(static_cast<uint8_t>(next))));
    const uint16x8_t shares = keep(vdupq_n_u16(static_cast<uint16_t>(share)));
    return {both, both, shares, shares};
  }
  LOX_OP uint16x8_t multiply_high(uint16x8_t a, uint16x8_t b) {
    return vcombine_u16(
        vshrn_n_u32(vmull_u16(vget_low_u16(a), vget_low_u16(b)), 16),
        vshrn_n_u32(vmull_u16(vget_high_u16(a), vget_high_u16(b)), 16));
  }
  LOX_OP uint16x8_t lerp(uint8x8_t a, uint8x8_t b, uint8x16_t weights,
                         uint16x8_t share) {
    return multiply_high(
        vmlal_u8(vmull_u8(a, vget_low_u8(weights)), b, vget_high_u8(weights)),
        share);
  }
  LOX_OP Bytes lerp(Neighbours v, Weights w) {
    const uint16x8_t low =
        lerp(vget_low_u8(v.first), vget_low_u8(v.second), w.low, w.share_low);
    const uint16x8_t high = lerp(vget_high_u8(v.first), vget_high_u8(v.second),
                                 w.high, w.share_high);
    return {vcombine_u8(vmovn_u16(low), vmovn_u16(high))};
  }

  // --- whole factors --------------------------------------------------------

  // Of bytes as they lie, which pairwise additions sum; of units apart.
  template <int kUnit>
  struct Adjacent {
    uint8x16_t a, b;
  };
  template <int kUnit, int kRow = 0>
  LOX_OP Adjacent<kUnit> take_adjacent(const uint8_t *&p) {
    if constexpr (kUnit == 1) {
      const uint8x16x2_t v = take_block<kRow>(p).v;
      return {v.val[0], v.val[1]};
    } else if constexpr (kUnit == 2) {
      const uint16x8x2_t v = vld2q_u16(reinterpret_cast<const uint16_t *>(p));
      p += 32;
      return {vreinterpretq_u8_u16(v.val[0]), vreinterpretq_u8_u16(v.val[1])};
    } else {
      const uint32x4x2_t v = vld2q_u32(reinterpret_cast<const uint32_t *>(p));
      p += 32;
      return {vreinterpretq_u8_u32(v.val[0]), vreinterpretq_u8_u32(v.val[1])};
    }
  }
  template <int kUnit>
  LOX_OP Bytes average(Adjacent<kUnit> v) {
    if constexpr (kUnit == 1) {
      return {narrow_sums<1>(vpaddlq_u8(v.a), vpaddlq_u8(v.b))};
    } else {
      return {vhaddq_u8(v.a, v.b)};
    }
  }
  template <int kUnit>
  LOX_OP Bytes mean_of_4(Adjacent<kUnit> v, Adjacent<kUnit> w) {
    if constexpr (kUnit == 1) {
      return {narrow_sums<2>(vpadalq_u8(vpaddlq_u8(v.a), w.a),
                             vpadalq_u8(vpaddlq_u8(v.b), w.b))};
    } else {
      return mean_of_4(as_neighbours({v.a}, {v.b}),
                       as_neighbours({w.a}, {w.b}));
    }
  }

  template <int kRow = 0>
  LOX_OP Neighbours take_first_two_of_4(const uint8_t *&p) {
    const uint8x16x4_t v = take_4_channels<kRow>(p);
    return {v.val[0], v.val[1]};
  }

  template <int kUnit>
  LOX_OP void store_interleave_units(uint8_t *p, Bytes first, Bytes second) {
    if constexpr (kUnit == 1) {
      const uint8x16x2_t v = {{first.v, second.v}};
      vst2q_u8(p, v);
    } else if constexpr (kUnit == 2) {
      const uint16x8x2_t v = {
          {vreinterpretq_u16_u8(first.v), vreinterpretq_u16_u8(second.v)}};
      vst2q_u16(reinterpret_cast<uint16_t *>(p), v);
    } else {
      const uint32x4x2_t v = {
          {vreinterpretq_u32_u8(first.v), vreinterpretq_u32_u8(second.v)}};
      vst2q_u32(reinterpret_cast<uint32_t *>(p), v);
    }
  }

  // --- pixels of 5, 6 and 5 bits --------------------------------------------

  struct Words {
    uint16x8_t v;
  };
  struct WordNeighbours {
    Words first, second;
  };
  static constexpr int first_word_place(int byte) { return byte; }
  static constexpr int second_word_place(int byte) { return 8 + byte; }
  template <int kSpan, class P>
  LOX_OP WordNeighbours gather_words(Low p, High q, const P &places) {
    const Neighbours v = gather<kSpan>(p, q, places);
    return {{vreinterpretq_u16_u8(v.first)}, {vreinterpretq_u16_u8(v.second)}};
  }
  LOX_OP Words load_words(const uint8_t *p) {
    return {vreinterpretq_u16_u8(vld1q_u8(p))};
  }
  LOX_OP void store_words(uint8_t *p, Words v) {
    const uint8x16_t bytes = vreinterpretq_u8_u16(v.v);
    vst1q_u8(p, bytes);
  }
  // A component's halved difference does not reach into the next one below.
  // Held, or the compiler would mask it after a shift of its own.
  LOX_OP Words average565(Words a, Words b) {
    const uint16x8_t apart =
        keep(vandq_u16(veorq_u16(a.v, b.v), vdupq_n_u16(0xF7DE)));
    return {vsraq_n_u16(vandq_u16(a.v, b.v), apart, 1)};
  }
  // Of two averages: one more where both lost a bit and theirs does.
  LOX_OP Words mean_of_4_565(WordNeighbours v, WordNeighbours w) {
    const Words a = average565(v.first, v.second);
    const Words b = average565(w.first, w.second);
    const uint16x8_t lost =
        vandq_u16(vandq_u16(veorq_u16(v.first.v, v.second.v),
                            veorq_u16(w.first.v, w.second.v)),
                  vandq_u16(veorq_u16(a.v, b.v), vdupq_n_u16(0x0821)));
    return {vaddq_u16(average565(a, b).v, lost)};
  }
  struct WordWeights {
    uint16x8_t here, next, share;
  };
  LOX_OP WordWeights take_word_weights(const uint8_t *&p) {
    p += 3 * n;
    return {load_words(p - 3 * n).v, load_words(p - 2 * n).v,
            load_words(p - n).v};
  }
  LOX_OP WordWeights fill_word_weights(int here, int next, int share) {
    return {vdupq_n_u16(static_cast<uint16_t>(here)),
            vdupq_n_u16(static_cast<uint16_t>(next)),
            vdupq_n_u16(static_cast<uint16_t>(share))};
  }
  LOX_OP uint16x8_t lerp_component(uint16x8_t a, uint16x8_t b, WordWeights w) {
    return multiply_high(vmlaq_u16(vmulq_u16(a, w.here), b, w.next), w.share);
  }
  LOX_OP Words lerp565(WordNeighbours v, WordWeights w) {
    const uint16x8_t a = v.first.v;
    const uint16x8_t b = v.second.v;
    const uint16x8_t six = vdupq_n_u16(63);
    const uint16x8_t five = vdupq_n_u16(31);
    const uint16x8_t top =
        lerp_component(vshrq_n_u16(a, 11), vshrq_n_u16(b, 11), w);
    const uint16x8_t middle =
        lerp_component(vandq_u16(vshrq_n_u16(a, 5), six),
                       vandq_u16(vshrq_n_u16(b, 5), six), w);
    const uint16x8_t last =
        lerp_component(vandq_u16(a, five), vandq_u16(b, five), w);
    return {vsliq_n_u16(vsliq_n_u16(last, middle, 5), top, 11)};
  }

  // --- 16-bit components ----------------------------------------------------

  static constexpr bool kPermutesWords = false;
  LOX_OP Words average_words(Words a, Words b) {
    return {vhaddq_u16(a.v, b.v)};
  }
  LOX_OP Words mean_of_four_words(WordNeighbours v, WordNeighbours w) {
    const uint16x8_t a = v.first.v;
    const uint16x8_t b = v.second.v;
    const uint16x8_t c = w.first.v;
    const uint16x8_t d = w.second.v;
    const uint32x4_t low =
        vaddq_u32(vaddl_u16(vget_low_u16(a), vget_low_u16(b)),
                  vaddl_u16(vget_low_u16(c), vget_low_u16(d)));
    const uint32x4_t high =
        vaddq_u32(vaddl_u16(vget_high_u16(a), vget_high_u16(b)),
                  vaddl_u16(vget_high_u16(c), vget_high_u16(d)));
    return {vcombine_u16(vshrn_n_u32(low, 2), vshrn_n_u32(high, 2))};
  }
  // Weights, their parts of 65536 and what they sum to.
  struct FineWeights {
    uint16x8_t here, next, part_here, part_next, sum;
  };
  LOX_OP FineWeights take_fine_weights(const uint8_t *&p) {
    p += 5 * n;
    return {load_words(p - 5 * n).v, load_words(p - 4 * n).v,
            load_words(p - 3 * n).v, load_words(p - 2 * n).v,
            load_words(p - n).v};
  }
  LOX_OP uint16x8_t fill_words(int k) {
    return vdupq_n_u16(static_cast<uint16_t>(k));
  }
  LOX_OP FineWeights fill_fine_weights(int here, int next, int part_here,
                                       int part_next, int sum) {
    return {fill_words(here), fill_words(next), fill_words(part_here),
            fill_words(part_next), fill_words(sum)};
  }
  LOX_OP Words lerp_words(WordNeighbours v, const FineWeights &w) {
    const uint16x8_t a = v.first.v;
    const uint16x8_t b = v.second.v;
    const uint16x8_t falls = vcgtq_u16(a, b);
    const uint16x8_t apart = vabdq_u16(a, b);
    const uint16x8_t quotient =
        multiply_high(apart, vbslq_u16(falls, w.part_here, w.part_next));
    const uint16x8_t product =
        vmulq_u16(apart, vbslq_u16(falls, w.here, w.next));
    const uint16x8_t rest = vmlsq_u16(product, quotient, w.sum);
    return {vsubq_u16(vaddq_u16(vminq_u16(a, b), quotient),
                      vcgeq_u16(rest, w.sum))};
  }

  template <int kUnit>
  LOX_OP uint16x4_t mean_of_4_words(const uint8_t *p, const uint8_t *q) {
    if constexpr (kUnit == 2) {
      return vshrn_n_u32(
          vpadalq_u16(vpaddlq_u16(load_words(p).v), load_words(q).v), 2);
    } else {
      const uint32x2x2_t v = vld2_u32(reinterpret_cast<const uint32_t *>(p));
      const uint32x2x2_t w = vld2_u32(reinterpret_cast<const uint32_t *>(q));
      return vshrn_n_u32(vaddq_u32(vaddl_u16(vreinterpret_u16_u32(v.val[0]),
                                             vreinterpret_u16_u32(v.val[1])),
                                   vaddl_u16(vreinterpret_u16_u32(w.val[0]),
                                             vreinterpret_u16_u32(w.val[1]))),
                         2);
    }
  }
  // n bytes of components, each the mean of the units beside each other in two
  // rows.
  template <int kUnit>
  LOX_OP void halve_words(const uint8_t *row, const uint8_t *below,
                          uint8_t *dst) {
    const uint16x4_t low = mean_of_4_words<kUnit>(row, below);
    const uint16x4_t high = mean_of_4_words<kUnit>(row + n, below + n);
    store_words(dst, {vcombine_u16(low, high)});
  }
};

}  // namespace lox::LOX_SET
