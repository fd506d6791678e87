// SPDX-License-Identifier: Apache-2.0
//
// Samples that lose bits on NEON.
#pragma once

#include "dither/dither_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V>
struct DitherOps : V {
  using typename V::Bytes;
  template <PixelFormat F>
  using Pixels = typename V::template Pixels<F>;

  // --- pixels ---------------------------------------------------------------

  template <PixelFormat>
  struct Thresholds {
    uint8x16_t five, six;
  };
  template <PixelFormat F>
  LOX_OP Thresholds<F> thresholds(DitherPlace at) {
    return {V::keep(vld1q_u8(at.five)), V::keep(vld1q_u8(at.six))};
  }
  template <PixelFormat F>
  LOX_OP Pixels<F> add(const Pixels<F> &p, Thresholds<F> t) {
    return {vqaddq_u8(p.r, t.five), vqaddq_u8(p.g, t.six),
            vqaddq_u8(p.b, t.five)};
  }
  LOX_OP void store_grey_565(uint8_t *to, const uint8_t *from,
                             typename V::Dither d) {
    const uint8x8x2_t v = vld2_u8(from);
    const uint8x16_t grey = vcombine_u8(v.val[0], v.val[1]);
    const uint8x16_t five = vqaddq_u8(grey, d.five);
    V::template store16<false>(
        to, V::pack565_bytes(five, vqaddq_u8(grey, d.six), five));
  }

  // --- samples --------------------------------------------------------------

  struct WordsToBytes {
    uint16x8_t low, high, most;
    int16x8_t shift;
  };
  // From the sample at `phase` of the period on.
  LOX_OP WordsToBytes words_to_bytes(const FewerBits &how, ptrdiff_t phase) {
    return {vld1q_u16(how.added + phase), vld1q_u16(how.added + phase + 8),
            vdupq_n_u16(how.most),
            vdupq_n_s16(static_cast<int16_t>(-int{how.shift}))};
  }
  LOX_OP uint8x8_t fewer(const uint8_t *p, uint16x8_t added,
                         const WordsToBytes &k) {
    const uint16x8_t v = vreinterpretq_u16_u8(vld1q_u8(p));
    return vmovn_u16(
        vshlq_u16(vminq_u16(vqaddq_u16(v, added), k.most), k.shift));
  }
  LOX_OP Bytes take(const uint8_t *p, const WordsToBytes &k) {
    return {vcombine_u8(fewer(p, k.low, k), fewer(p + 16, k.high, k))};
  }
  struct BytesToBytes {
    uint8x16_t added;
    int8x16_t shift;
  };
  LOX_OP BytesToBytes bytes_to_bytes(const FewerBits &how, ptrdiff_t phase) {
    return {vcombine_u8(vmovn_u16(vld1q_u16(how.added + phase)),
                        vmovn_u16(vld1q_u16(how.added + phase + 8))),
            vdupq_n_s8(static_cast<int8_t>(-int{how.shift}))};
  }
  LOX_OP Bytes take(const uint8_t *p, const BytesToBytes &k) {
    return {vshlq_u8(vqaddq_u8(vld1q_u8(p), k.added), k.shift)};
  }

  // --- words of ten bits ----------------------------------------------------

  template <bool kUp>
  LOX_OP uint16x8_t shifted(uint16x8_t v) {
    return kUp ? vshlq_n_u16(v, 6) : vshrq_n_u16(v, 6);
  }
  LOX_OP uint16x8_t load16(const uint8_t *p) {
    return vreinterpretq_u16_u8(vld1q_u8(p));
  }
  LOX_OP void store16(uint8_t *p, uint16x8_t v) {
    vst1q_u8(p, vreinterpretq_u8_u16(v));
  }
  template <bool kUp>
  LOX_OP void shift_words(const uint8_t *from, uint8_t *to) {
    store16(to, shifted<kUp>(load16(from)));
  }
  LOX_OP void pairs_down(const uint8_t *from, uint8_t *first, uint8_t *second) {
    const uint16x8x2_t v = vuzpq_u16(load16(from), load16(from + 16));
    store16(first, shifted<false>(v.val[0]));
    store16(second, shifted<false>(v.val[1]));
  }
  LOX_OP void pairs_up(const uint8_t *first, const uint8_t *second,
                       uint8_t *to) {
    const uint16x8x2_t v =
        vzipq_u16(shifted<true>(load16(first)), shifted<true>(load16(second)));
    store16(to, v.val[0]);
    store16(to + 16, v.val[1]);
  }
};

}  // namespace lox::LOX_SET
