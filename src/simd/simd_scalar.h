// SPDX-License-Identifier: Apache-2.0
//
// What every operation of the vector layer means, lane by lane, continued: the
// operations from RGB and those that move bytes.
#pragma once

#include "simd/simd_scalar_yuv.h"

namespace lox {

template <int kPixels>
struct ScalarLanes : ScalarYuv<kPixels> {
  using Yuv = ScalarYuv<kPixels>;
  using typename Yuv::Bytes;
  using Yuv::n;
  using Yuv::store_bytes;

  // --- from RGB -------------------------------------------------------------

  // n pixels; five- and six-bit channels are shifted up, zeros below. Taking
  // them moves the pointer behind them.
  template <PixelFormat F>
  struct Pixels {
    uint8_t r[n], g[n], b[n];
  };
  template <PixelFormat F>
  static Pixels<F> take_pixels(const uint8_t *&p) {
    Pixels<F> v;
    for (int i = 0; i < n; ++i, p += F.bytes) {
      if constexpr (F.bytes == 2) {
        const uint8_t high = p[1] & 0xF8;
        const uint8_t low = static_cast<uint8_t>(p[0] << 3);
        v.r[i] = F.r == 1 ? high : low;
        v.g[i] = static_cast<uint8_t>(p[1] << 5 | (p[0] >> 3 & 0x1C));
        v.b[i] = F.b == 1 ? high : low;
      } else {
        v.r[i] = p[F.r];
        v.g[i] = p[F.g];
        v.b[i] = p[F.b];
      }
    }
    return v;
  }
  // The high byte of KR r + KG g + KB b + bias, 16 bits wide. Factors above 127
  // only where none is negative; the sum without the bias lies within -32768
  // .. 32767 or, with 128 less in each channel, does.
  template <PixelFormat F, int KR, int KG, int KB>
  struct Weights {
    int bias;
  };
  template <PixelFormat F, int KR, int KG, int KB>
  static Weights<F, KR, KG, KB> make_weights(int bias) {
    return {bias};
  }
  template <PixelFormat F, int KR, int KG, int KB>
  static uint8_t weigh_pixel(const Pixels<F> &v, int i,
                             Weights<F, KR, KG, KB> w) {
    const int sum = KR * v.r[i] + KG * v.g[i] + KB * v.b[i] + w.bias;
    return static_cast<uint8_t>(static_cast<uint16_t>(sum) >> 8);
  }
  template <PixelFormat F, int KR, int KG, int KB>
  static Bytes weigh(const Pixels<F> &v, Weights<F, KR, KG, KB> w) {
    Bytes r;
    for (int i = 0; i < n; ++i) r.at[i] = weigh_pixel(v, i, w);
    return r;
  }
  // Two such sums for each even pixel, stored as pairs or in two rows. No
  // factor above 127.
  template <PixelFormat F>
  struct EvenPairs {
    uint8_t first[n / 2], second[n / 2];
  };
  template <PixelFormat F, class W0, class W1>
  static EvenPairs<F> weigh_even(const Pixels<F> &v, W0 first, W1 second) {
    EvenPairs<F> r;
    for (int i = 0; i < n / 2; ++i) {
      r.first[i] = weigh_pixel(v, 2 * i, first);
      r.second[i] = weigh_pixel(v, 2 * i, second);
    }
    return r;
  }
  template <PixelFormat F>
  static void store_pairs(uint8_t *p, const EvenPairs<F> &a) {
    for (int i = 0; i < n / 2; ++i) {
      p[2 * i] = a.first[i];
      p[2 * i + 1] = a.second[i];
    }
  }
  template <PixelFormat F>
  static void store_rows(uint8_t *first, uint8_t *second,
                         const EvenPairs<F> &a) {
    for (int i = 0; i < n / 2; ++i) {
      first[i] = a.first[i];
      second[i] = a.second[i];
    }
  }
  // n words of the top 5, 6 and 5 bits, red on top.
  template <PixelFormat F>
  static void store_565(uint8_t *p, const Pixels<F> &v) {
    for (int i = 0; i < n; ++i) {
      const int word = v.r[i] >> 3 << 11 | v.g[i] >> 2 << 5 | v.b[i] >> 3;
      p[2 * i] = static_cast<uint8_t>(word);
      p[2 * i + 1] = static_cast<uint8_t>(word >> 8);
    }
  }
  // n groups of r, g, b, 255, of pixels of two bytes.
  template <PixelFormat F>
  static void store_rgba(uint8_t *p, const Pixels<F> &v) {
    for (int i = 0; i < n; ++i) {
      p[4 * i] = v.r[i];
      p[4 * i + 1] = v.g[i];
      p[4 * i + 2] = v.b[i];
      p[4 * i + 3] = 255;
    }
  }

  // --- bytes apart and together ---------------------------------------------

  // What one load and one store can move, n bytes or more. Both move the
  // pointer.
  static constexpr int kBlock = n;
  using Block = Bytes;
  static Block take_block(const uint8_t *&p) {
    p += kBlock;
    return Yuv::load_bytes(p - kBlock);
  }
  static void put_block(uint8_t *&p, const Block &a) {
    store_bytes(p, a);
    p += kBlock;
  }
  static void copy_4_blocks(uint8_t *&to, const uint8_t *&from) {
    for (int i = 0; i < 4; ++i) put_block(to, take_block(from));
  }

  struct TwoBytes {
    Bytes even, odd;
  };
  // 2n bytes, and the bytes of two vectors, the even and the odd ones apart.
  static TwoBytes load_unzip(const uint8_t *p) {
    TwoBytes r;
    for (int i = 0; i < n; ++i) {
      r.even.at[i] = p[2 * i];
      r.odd.at[i] = p[2 * i + 1];
    }
    return r;
  }
  static TwoBytes unzip(const Bytes &a, const Bytes &b) {
    uint8_t both[2 * n];
    store_bytes(both, a);
    store_bytes(both + n, b);
    return load_unzip(both);
  }
  static void store_zip(uint8_t *p, const Bytes &even, const Bytes &odd) {
    for (int i = 0; i < n; ++i) {
      p[2 * i] = even.at[i];
      p[2 * i + 1] = odd.at[i];
    }
  }
  static Block swap_pairs(Block a) {
    for (int i = 0; i < n; i += 2) {
      const uint8_t first = a.at[i];
      a.at[i] = a.at[i + 1];
      a.at[i + 1] = first;
    }
    return a;
  }
  // In place, too.
  static void swap_2_blocks(uint8_t *&to, const uint8_t *&from) {
    for (int i = 0; i < 2; ++i) put_block(to, swap_pairs(take_block(from)));
  }
  // (a + b) >> 1.
  static Bytes average_down(Bytes a, const Bytes &b) {
    for (int i = 0; i < n; ++i) {
      a.at[i] = static_cast<uint8_t>((a.at[i] + b.at[i]) >> 1);
    }
    return a;
  }
  // n little-endian words shifted right by 2, the low bytes of them.
  static Bytes load_words_by_4(const uint8_t *p) {
    Bytes r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = static_cast<uint8_t>(p[2 * i] >> 2 | p[2 * i + 1] << 6);
    }
    return r;
  }
};

}  // namespace lox
