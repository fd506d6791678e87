// SPDX-License-Identifier: Apache-2.0
//
// What the operations of the vector layer mean, lane by lane: the contract that
// the other backends are tested against; here those from YUV to RGB. Lanes wrap
// around like unsigned numbers of their width unless an operation says that it
// saturates.
#pragma once

#include <stdint.h>

#include "simd/order.h"

namespace lox {

template <int kPixels>
struct ScalarYuv {
  static constexpr int n = kPixels;  // pixels in a step
  // What a streaming store wants its address to be a multiple of; 0 where
  // there are none.
  static constexpr int kStreamAlignment = 0;

  // A byte for each pixel, as loaded and as narrowed.
  struct U8 {
    uint8_t at[n];
  };
  struct Bytes {
    uint8_t at[n];
  };
  // 16 bits for each pixel; two bytes for each pixel.
  struct W16 {
    int16_t at[n];
  };
  struct Words {
    uint8_t low[n], high[n];
  };
  // Two bytes, each less 128, for two pixels that share them; for each pixel.
  struct Pairs {
    int16_t first[n / 2], second[n / 2];
  };
  struct WPairs {
    int16_t first[n], second[n];
  };
  // Constants are made before the loop: of scale, dot and half_dot.
  struct Factor {
    uint8_t k;
  };
  template <int K0, int K1>
  struct Dot {
    int16_t bias;
  };
  template <int I, int K>
  struct HalfDot {
    int16_t bias;
  };

  static int16_t wrap(int v) {
    return static_cast<int16_t>(static_cast<uint16_t>(v));
  }
  static uint8_t clamp_to_byte(int v) {
    return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
  }

  static W16 fill(int k) {
    W16 r;
    for (int16_t &w : r.at) w = wrap(k);
    return r;
  }

  // n bytes.
  template <Order>
  static U8 load(const uint8_t *p) {
    U8 r;
    for (int i = 0; i < n; ++i) r.at[i] = p[i];
    return r;
  }
  static Bytes load_bytes(const uint8_t *p) {
    Bytes r;
    for (int i = 0; i < n; ++i) r.at[i] = p[i];
    return r;
  }
  // n / 2 interleaved pairs.
  template <Order>
  static Pairs load_pairs(const uint8_t *p) {
    Pairs r;
    for (int i = 0; i < n / 2; ++i) {
      r.first[i] = wrap(p[2 * i] - 128);
      r.second[i] = wrap(p[2 * i + 1] - 128);
    }
    return r;
  }
  // The same of little-endian words, of which the high byte counts.
  template <Order>
  static U8 load_words(const uint8_t *p) {
    U8 r;
    for (int i = 0; i < n; ++i) r.at[i] = p[2 * i + 1];
    return r;
  }
  template <Order>
  static Pairs load_word_pairs(const uint8_t *p) {
    Pairs r;
    for (int i = 0; i < n / 2; ++i) {
      r.first[i] = wrap(p[4 * i + 1] - 128);
      r.second[i] = wrap(p[4 * i + 3] - 128);
    }
    return r;
  }
  // n / 2 pairs from two rows of n / 2 bytes.
  template <Order>
  static Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    Pairs r;
    for (int i = 0; i < n / 2; ++i) {
      r.first[i] = wrap(first[i] - 128);
      r.second[i] = wrap(second[i] - 128);
    }
    return r;
  }
  // n pairs from two rows of n bytes.
  template <Order>
  static WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    WPairs r;
    for (int i = 0; i < n; ++i) {
      r.first[i] = wrap(first[i] - 128);
      r.second[i] = wrap(second[i] - 128);
    }
    return r;
  }
  // n pixels of packed 4:2:2 from 2n bytes: the luma is every second byte, the
  // pairs are the others. kLuma is the place of the first luma byte, 0 or 1.
  template <Order, int kLuma>
  static void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    for (int i = 0; i < n; ++i) luma.at[i] = p[2 * i + kLuma];
    for (int i = 0; i < n / 2; ++i) {
      pairs.first[i] = wrap(p[4 * i + 1 - kLuma] - 128);
      pairs.second[i] = wrap(p[4 * i + 3 - kLuma] - 128);
    }
  }

  // K0 * first + K1 * second + bias; |K| at most 255, of one sign, and the sum
  // of the products within 16 bits.
  template <int K0, int K1>
  static Dot<K0, K1> make_dot(int bias) {
    return {wrap(bias)};
  }
  template <int K0, int K1>
  static W16 dot(const Pairs &p, const Dot<K0, K1> &d) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = wrap(K0 * p.first[i / 2] + K1 * p.second[i / 2] + d.bias);
    }
    return r;
  }
  template <int K0, int K1>
  static W16 dot(const WPairs &p, const Dot<K0, K1> &d) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = wrap(K0 * p.first[i] + K1 * p.second[i] + d.bias);
    }
    return r;
  }
  // K * x / 2, rounded down, + bias; x the first (I = 0) or second of the pair,
  // K odd and at most 511.
  template <int I, int K>
  static HalfDot<I, K> make_half_dot(int bias) {
    return {wrap(bias)};
  }
  template <int I, int K>
  static W16 half_dot(const Pairs &p, const HalfDot<I, K> &d) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      const int x = I == 0 ? p.first[i / 2] : p.second[i / 2];
      r.at[i] = wrap(((K * x) >> 1) + d.bias);
    }
    return r;
  }
  template <int I, int K>
  static W16 half_dot(const WPairs &p, const HalfDot<I, K> &d) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      const int x = I == 0 ? p.first[i] : p.second[i];
      r.at[i] = wrap(((K * x) >> 1) + d.bias);
    }
    return r;
  }

  // k * a, and half of it rounded down.
  static Factor make_factor(int k) { return {static_cast<uint8_t>(k)}; }
  static void scale(const U8 &a, Factor k, W16 &whole, W16 &half) {
    for (int i = 0; i < n; ++i) {
      whole.at[i] = wrap(k.k * a.at[i]);
      half.at[i] = wrap(k.k * a.at[i] >> 1);
    }
  }
  static W16 add(W16 a, const W16 &b) {
    for (int i = 0; i < n; ++i) a.at[i] = wrap(a.at[i] + b.at[i]);
    return a;
  }
  static W16 add_saturate(W16 a, const W16 &b) {
    for (int i = 0; i < n; ++i) {
      const int sum = a.at[i] + b.at[i];
      a.at[i] = wrap(sum < -32768 ? -32768 : sum > 32767 ? 32767 : sum);
    }
    return a;
  }
  // An arithmetic shift.
  template <int S>
  static W16 shift_right(W16 a) {
    for (int16_t &w : a.at) w = wrap(w >> S);
    return a;
  }
  // clamp(a >> S, 0, 255), the shift arithmetic; S is 0, 6 or 7 here and below.
  template <int S>
  static Bytes narrow(const W16 &a) {
    Bytes r;
    for (int i = 0; i < n; ++i) r.at[i] = clamp_to_byte(a.at[i] >> S);
    return r;
  }
  // Two narrowed lanes side by side, or one beside 255.
  template <int S0, int S1>
  static Words join(const W16 &low, const W16 &high) {
    Words r;
    for (int i = 0; i < n; ++i) {
      r.low[i] = clamp_to_byte(low.at[i] >> S0);
      r.high[i] = clamp_to_byte(high.at[i] >> S1);
    }
    return r;
  }
  template <int S>
  static Words join_high_255(const W16 &low) {
    return join<S, 0>(low, fill(255));
  }
  template <int S>
  static Words join_low_255(const W16 &high) {
    return join<0, S>(fill(255), high);
  }
  // The top 5, 6 and 5 bits of three narrowed lanes.
  template <int S0, int S1, int S2>
  static W16 pack565(const W16 &high, const W16 &mid, const W16 &low) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = wrap(clamp_to_byte(high.at[i] >> S0) >> 3 << 11 |
                     clamp_to_byte(mid.at[i] >> S1) >> 2 << 5 |
                     clamp_to_byte(low.at[i] >> S2) >> 3);
    }
    return r;
  }

  // n bytes; n words; n groups of three bytes; n groups of four. A streaming
  // store goes past the caches; end_stream() makes them all visible.
  static void store_bytes(uint8_t *p, const Bytes &a) {
    for (int i = 0; i < n; ++i) p[i] = a.at[i];
  }
  template <bool kStream>
  static void store16(uint8_t *p, const W16 &a) {
    for (int i = 0; i < n; ++i) {
      p[2 * i] = static_cast<uint8_t>(a.at[i]);
      p[2 * i + 1] = static_cast<uint8_t>(a.at[i] >> 8);
    }
  }
  template <bool kStream>
  static void store3(uint8_t *p, const Bytes &a, const Bytes &b,
                     const Bytes &c) {
    for (int i = 0; i < n; ++i) {
      p[3 * i] = a.at[i];
      p[3 * i + 1] = b.at[i];
      p[3 * i + 2] = c.at[i];
    }
  }
  template <bool kStream>
  static void store4(uint8_t *p, const Words &ab, const Words &cd) {
    for (int i = 0; i < n; ++i) {
      p[4 * i] = ab.low[i];
      p[4 * i + 1] = ab.high[i];
      p[4 * i + 2] = cd.low[i];
      p[4 * i + 3] = cd.high[i];
    }
  }
  static void end_stream() {}
  // Fetches the cache lines of `bytes` bytes that lie kAhead behind p, to be
  // written soon; they may lie behind the end of what is there. 0 where it is
  // not done.
  static constexpr int kAhead = 0;
  static void fetch_ahead(const uint8_t *, int) {}
};

}  // namespace lox
