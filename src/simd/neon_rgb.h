// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on NEON, continued: the operations from RGB and those that
// move bytes. Here a vector's pixels lie in their order.
#pragma once

#include "simd/neon_yuv.h"

// Compilers for 32-bit ARM are poor at some intrinsics: a few operations are
// written out for all of them, and a few for GCC only.
#if defined(__arm__)
#define LOX_ARM 1
#else
#define LOX_ARM 0
#endif
#if LOX_ARM && !defined(__clang__)
#define LOX_GCC_ARM 1
#else
#define LOX_GCC_ARM 0
#endif

namespace lox::LOX_SET {

struct Neon : NeonYuv {
  LOX_OP uint8x8_t load8(const uint8_t *p) {
#if LOX_ARM && !LOX_GCC_ARM
    // Held, or the compiler loads some through core registers and memory.
    return keep(vld1_u8(p));
#else
    return vld1_u8(p);
#endif
  }

  // What written-out loads and stores touch.
  using Bytes64 = uint8_t[64];
  using Bytes128 = uint8_t[128];
  // n pixels. Channels of five and six bits are shifted up, zeros below.
  template <PixelFormat F>
  struct Pixels {
    uint8x16_t r, g, b;
  };
  // Of what is taken together each part has a row of its own, 0 or 1: written
  // out they go to registers of their own.
#if LOX_ARM
  // The compiler would move a copy of the pointer and then the pointer.
#define LOX_TAKE_4_CHANNELS(a, b, c, d, even, odd)            \
  {                                                           \
    const uint8_t *const at = p;                              \
    register uint8x16_t v0 __asm__(#a);                       \
    register uint8x16_t v1 __asm__(#b);                       \
    register uint8x16_t v2 __asm__(#c);                       \
    register uint8x16_t v3 __asm__(#d);                       \
    __asm__("vld4.8 " even ", [%0]!\n\tvld4.8 " odd ", [%0]!" \
            : "+r"(p), "=w"(v0), "=w"(v1), "=w"(v2), "=w"(v3) \
            : "m"(*reinterpret_cast<const Bytes64 *>(at)));   \
    return {{v0, v1, v2, v3}};                                \
  }
  template <int kRow = 0>
  LOX_OP uint8x16x4_t take_4_channels(const uint8_t *&p) {
    if constexpr (kRow == 0) {
      LOX_TAKE_4_CHANNELS(q8, q9, q10, q11, "{d16, d18, d20, d22}",
                          "{d17, d19, d21, d23}")
    } else {
      LOX_TAKE_4_CHANNELS(q12, q13, q14, q15, "{d24, d26, d28, d30}",
                          "{d25, d27, d29, d31}")
    }
  }
#undef LOX_TAKE_4_CHANNELS
#else
  template <int kRow = 0>
  LOX_OP uint8x16x4_t take_4_channels(const uint8_t *&p) {
    p += 64;
    return vld4q_u8(p - 64);
  }
#endif
  // Moves the pointer behind them.
  template <PixelFormat F>
  LOX_OP Pixels<F> take_pixels(const uint8_t *&p) {
    if constexpr (F.bytes == 4) {
      const uint8x16x4_t v = take_4_channels(p);
      return {v.val[F.r], v.val[F.g], v.val[F.b]};
    } else if constexpr (F.bytes == 3) {
      const uint8x16x3_t v = vld3q_u8(p);
      p += 48;
      return {v.val[F.r], v.val[F.g], v.val[F.b]};
    } else {
      const uint8x16x2_t v = vld2q_u8(p);
      p += 32;
      const uint8x16_t top = vandq_u8(v.val[1], vdupq_n_u8(0xF8));
      const uint8x16_t last = vshlq_n_u8(v.val[0], 3);
      const uint8x16_t green = vandq_u8(
          vsriq_n_u8(vshlq_n_u8(v.val[1], 5), v.val[0], 3), vdupq_n_u8(0xFC));
      return {F.r == 1 ? top : last, green, F.r == 1 ? last : top};
    }
  }

  // Factors above 127 only where none is negative; the sum without the bias
  // fits 16 bits, signed, or does with 128 less in each channel.
  template <PixelFormat F, int KR, int KG, int KB>
  struct Weights {
    uint8x8_t r, g, b;
    uint16x8_t bias;
  };
  LOX_OP uint8x8_t factor(int k) {
    return keep(vdup_n_u8(static_cast<uint8_t>(k < 0 ? -k : k)));
  }
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Weights<F, KR, KG, KB> make_weights(int bias) {
    return {factor(KR), factor(KG), factor(KB),
            keep(vdupq_n_u16(static_cast<uint16_t>(bias)))};
  }
  template <int K>
  LOX_OP uint16x8_t accumulate(uint16x8_t sum, uint8x8_t v, uint8x8_t k) {
    return keep(K < 0 ? vmlsl_u8(sum, v, k) : vmlal_u8(sum, v, k));
  }
  // The sum begins with a product that is added.
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP uint16x8_t sum(uint8x8_t r, uint8x8_t g, uint8x8_t b,
                        const Weights<F, KR, KG, KB> &w) {
    static_assert(KR > 0 || KB > 0);
    if constexpr (KR > 0) {
      return accumulate<KG>(accumulate<KB>(vmull_u8(r, w.r), b, w.b), g, w.g);
    } else {
      return accumulate<KG>(accumulate<KR>(vmull_u8(b, w.b), r, w.r), g, w.g);
    }
  }
  // The high bytes of both sums with the bias, in one register: the compiler
  // would make two and copy one.
  LOX_OP uint8x16_t high_bytes(uint16x8_t low, uint16x8_t high,
                               uint16x8_t bias) {
#if LOX_ARM
    uint8x16_t v;
    __asm__(
        "vaddhn.i16 %e0, %q1, %q3\n\t"
        "vaddhn.i16 %f0, %q2, %q3"
        : "=&w"(v)
        : "w"(low), "w"(high), "w"(bias));
    return v;
#else
    return vcombine_u8(vaddhn_u16(low, bias), vaddhn_u16(high, bias));
#endif
  }
  // The high byte of KR r + KG g + KB b + bias, 16 bits wide.
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Bytes weighted_sum(const Pixels<F> &p,
                            const Weights<F, KR, KG, KB> &w) {
    return {high_bytes(
        sum(vget_low_u8(p.r), vget_low_u8(p.g), vget_low_u8(p.b), w),
        sum(vget_high_u8(p.r), vget_high_u8(p.g), vget_high_u8(p.b), w),
        w.bias)};
  }

  // Two such sums for each even pixel. No factor is above 127.
  template <PixelFormat F>
  struct EvenPairs {
    uint8x8_t first, second;
  };
  LOX_OP uint8x8_t even(uint8x16_t v) {
    return vmovn_u16(vreinterpretq_u16_u8(v));
  }
  template <PixelFormat F, class W0, class W1>
  LOX_OP EvenPairs<F> weighted_sums_of_even(const Pixels<F> &p, W0 first,
                                            W1 second) {
    const uint8x8_t r = even(p.r);
    const uint8x8_t g = even(p.g);
    const uint8x8_t b = even(p.b);
    return {vaddhn_u16(sum(r, g, b, first), first.bias),
            vaddhn_u16(sum(r, g, b, second), second.bias)};
  }
  // Interleaved, or in two rows.
  template <PixelFormat F>
  LOX_OP void store_pairs(uint8_t *p, EvenPairs<F> v) {
    const uint8x8x2_t pairs = {{v.first, v.second}};
    vst2_u8(p, pairs);
  }
  template <PixelFormat F>
  LOX_OP void store_rows(uint8_t *first, uint8_t *second, EvenPairs<F> v) {
    const uint8x8_t a = v.first;
    const uint8x8_t b = v.second;
    vst1_u8(first, a);
    vst1_u8(second, b);
  }

  // Of channels in the high bytes of the elements; what is below does not
  // matter.
  LOX_OP uint16x8_t to_565(uint16x8_t r, uint16x8_t g, uint16x8_t b) {
    return vsriq_n_u16(vsriq_n_u16(r, g, 5), b, 11);
  }
  // n words.
  template <PixelFormat To, PixelFormat F>
  LOX_OP void store_565(uint8_t *p, const Pixels<F> &v) {
    const uint16x8_t r = vreinterpretq_u16_u8(red_first(To) ? v.r : v.b);
    const uint16x8_t g = vreinterpretq_u16_u8(v.g);
    const uint16x8_t b = vreinterpretq_u16_u8(red_first(To) ? v.b : v.r);
    const uint16x8x2_t words = {
        {to_565(vshlq_n_u16(r, 8), vshlq_n_u16(g, 8), vshlq_n_u16(b, 8)),
         to_565(r, g, b)}};
    vst2q_u16(reinterpret_cast<uint16_t *>(p), words);
  }
  // n groups of r, g, b, 255.
  template <PixelFormat F>
  LOX_OP void store_rgba(uint8_t *p, const Pixels<F> &v) {
    const uint8x16x4_t pixels = {{v.r, v.g, v.b, vdupq_n_u8(255)}};
    vst4q_u8(p, pixels);
  }

  // n pixels with their bytes in another order.
  template <PixelFormat F, PixelFormat To>
  LOX_OP void reorder(const uint8_t *&from, uint8_t *&to) {
    constexpr ByteOrder kOrder = byte_order(F, To);
    uint8x16_t v[4];
    if constexpr (F.bytes == 4) {
      const uint8x16x4_t four = vld4q_u8(from);
      for (int i = 0; i < 4; ++i) v[i] = four.val[i];
    } else {
      const uint8x16x3_t three = vld3q_u8(from);
      for (int i = 0; i < 3; ++i) v[i] = three.val[i];
    }
    const auto byte = [&](int i) LOX_INLINE_LAMBDA {
      return kOrder.at[i] < 0 ? vdupq_n_u8(255) : v[kOrder.at[i]];
    };
    if constexpr (To.bytes == 4) {
      const uint8x16x4_t pixels = {{byte(0), byte(1), byte(2), byte(3)}};
      vst4q_u8(to, pixels);
    } else {
      const uint8x16x3_t pixels = {{byte(0), byte(1), byte(2)}};
      vst3q_u8(to, pixels);
    }
    from += n * F.bytes;
    to += n * To.bytes;
  }

  // What one load and one store move: two registers. Not by the intrinsics of
  // several registers (vld1q_u8_x2, vst1q_u8_x2): clang for ARMv7 promises the
  // processor that their addresses are aligned, and pixels are anywhere. Those
  // of four elements of 64 bits, which do not interleave, promise what the
  // pointer's type does: nothing.
  static constexpr int kBlock = 32;
  struct Block {
    uint8x16x2_t v;
  };
#if LOX_ARM
  using Unaligned64 [[gnu::aligned(1)]] = uint64_t;
#if LOX_GCC_ARM
  template <int kRow = 0>
  LOX_OP Block take_block(const uint8_t *&p) {
    Block b;
    const uint8_t *const at = p;
    __asm__("vld1.8 %h0, [%1]!"
            : "=w"(b.v), "+r"(p)
            : "m"(*reinterpret_cast<const uint8_t(*)[kBlock]>(at)));
    return b;
  }
#else
#define LOX_TAKE_BLOCK(a, b, pair)                                   \
  {                                                                  \
    const uint8_t *const at = p;                                     \
    register uint8x16_t v0 __asm__(#a);                              \
    register uint8x16_t v1 __asm__(#b);                              \
    __asm__("vld1.8 " pair ", [%0]!"                                 \
            : "+r"(p), "=w"(v0), "=w"(v1)                            \
            : "m"(*reinterpret_cast<const uint8_t(*)[kBlock]>(at))); \
    return {{{v0, v1}}};                                             \
  }
  template <int kRow = 0>
  LOX_OP Block take_block(const uint8_t *&p) {
    if constexpr (kRow == 0) {
      LOX_TAKE_BLOCK(q8, q9, "{d16-d19}")
    } else {
      LOX_TAKE_BLOCK(q10, q11, "{d20-d23}")
    }
  }
#undef LOX_TAKE_BLOCK
#endif
#else
  template <int kRow = 0>
  LOX_OP Block take_block(const uint8_t *&p) {
    p += kBlock;
    return {{ { vld1q_u8(p - 32), vld1q_u8(p - 16) } }};
  }
#endif
  LOX_OP void put_block(uint8_t *&p, Block b) {
#if LOX_GCC_ARM
    uint8_t *const at = p;
    __asm__("vst1.8 %h2, [%1]!"
            : "=m"(*reinterpret_cast<uint8_t(*)[kBlock]>(at)), "+r"(p)
            : "w"(b.v));
#elif LOX_ARM
    const uint64x2_t low = vreinterpretq_u64_u8(b.v.val[0]);
    const uint64x2_t high = vreinterpretq_u64_u8(b.v.val[1]);
    const uint64x1x4_t v = {
        { vget_low_u64(low),
          vget_high_u64(low),
          vget_low_u64(high),
          vget_high_u64(high) }};
    vst4_u64(reinterpret_cast<Unaligned64 *>(p), v);
    p += kBlock;
#else
    vst1q_u8(p, b.v.val[0]);
    vst1q_u8(p + 16, b.v.val[1]);
    p += kBlock;
#endif
  }

  struct TwoBytes {
    Bytes even, odd;
  };
  // The even and the odd ones of 2 n bytes, of two vectors; and back.
  LOX_OP TwoBytes load_deinterleave(const uint8_t *p) {
    const uint8x16x2_t v = vld2q_u8(p);
    return {{v.val[0]}, {v.val[1]}};
  }
  LOX_OP TwoBytes deinterleave(Bytes a, Bytes b) {
    const uint8x16x2_t v = vuzpq_u8(a.v, b.v);
    return {{v.val[0]}, {v.val[1]}};
  }
  LOX_OP void store_interleave(uint8_t *p, Bytes even, Bytes odd) {
    const uint8x16x2_t v = {{even.v, odd.v}};
    vst2q_u8(p, v);
  }
  // The bytes of each pair exchanged.
  LOX_OP Block swap_pairs(Block b) {
    return {{{vrev16q_u8(b.v.val[0]), vrev16q_u8(b.v.val[1])}}};
  }
  // Blocks moved as they are, or with pairs exchanged (in place, too); both
  // pointers move.
#if LOX_ARM
  LOX_OP void copy_4_blocks(uint8_t *&to, const uint8_t *&from) {
    const uint8_t *const src = from;
    uint8_t *const dst = to;
    __asm__(
        "vld1.8 {d16-d19}, [%0]!\n\t"
        "vld1.8 {d20-d23}, [%0]!\n\t"
        "vld1.8 {d24-d27}, [%0]!\n\t"
        "vld1.8 {d28-d31}, [%0]!\n\t"
        "vst1.8 {d16-d19}, [%1]!\n\t"
        "vst1.8 {d20-d23}, [%1]!\n\t"
        "vst1.8 {d24-d27}, [%1]!\n\t"
        "vst1.8 {d28-d31}, [%1]!"
        : "+r"(from), "+r"(to), "=m"(*reinterpret_cast<Bytes128 *>(dst))
        : "m"(*reinterpret_cast<const Bytes128 *>(src))
        : "q8", "q9", "q10", "q11", "q12", "q13", "q14", "q15");
  }
#endif
  LOX_OP void swap_2_blocks(uint8_t *&to, const uint8_t *&from) {
#if LOX_ARM
    const uint8_t *const src = from;
    uint8_t *const dst = to;
    __asm__(
        "vld1.8 {d16-d19}, [%0]!\n\t"
        "vld1.8 {d20-d23}, [%0]!\n\t"
        "vrev16.8 q8, q8\n\t"
        "vrev16.8 q9, q9\n\t"
        "vrev16.8 q10, q10\n\t"
        "vrev16.8 q11, q11\n\t"
        "vst1.8 {d16-d19}, [%1]!\n\t"
        "vst1.8 {d20-d23}, [%1]!"
        : "+r"(from), "+r"(to), "=m"(*reinterpret_cast<Bytes64 *>(dst))
        : "m"(*reinterpret_cast<const Bytes64 *>(src))
        : "q8", "q9", "q10", "q11");
#else
    const Block a = take_block(from);
    const Block b = take_block(from);
    put_block(to, swap_pairs(a));
    put_block(to, swap_pairs(b));
#endif
  }
  // (a + b) >> 1.
  LOX_OP Bytes average_down(Bytes a, Bytes b) { return {vhaddq_u8(a.v, b.v)}; }
  // The low bytes of n little-endian words shifted right by 2.
  LOX_OP Bytes load_10_to_8(const uint8_t *p) {
    const uint8x16x2_t v = vld2q_u8(p);
    return {vsliq_n_u8(vshrq_n_u8(v.val[0], 2), v.val[1], 6)};
  }
};

}  // namespace lox::LOX_SET
