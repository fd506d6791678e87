// SPDX-License-Identifier: Apache-2.0
//
// What every operation of the vector layer means, lane by lane: the contract
// that the other backends are tested against. Lanes wrap around like unsigned
// numbers of their width unless an operation says that it saturates.
#pragma once

#include <stdint.h>

#include "simd/order.h"

namespace lox {

struct ScalarLanes {
  static constexpr int n = 16;  // pixels in a step

  struct U8 {
    uint8_t at[n];
  };
  // 16-bit lanes: one for each horizontal pair of pixels ...
  struct H16 {
    int16_t at[n / 2];
  };
  // ... and one for each pixel.
  struct W16 {
    int16_t at[n];
  };
  // Byte pairs, each taken less 128: chroma.
  struct Pairs {
    int16_t first[n / 2];
    int16_t second[n / 2];
  };
  // The same, one for each pixel.
  struct WPairs {
    int16_t first[n];
    int16_t second[n];
  };
  // The constants of dot and half_dot.
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
  static int16_t saturate(int v) {
    return static_cast<int16_t>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
  }

  static U8 fill_u8(int k) {
    U8 r;
    for (uint8_t &b : r.at) b = static_cast<uint8_t>(k);
    return r;
  }
  static W16 fill_w16(int k) {
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

  // K0 * first + K1 * second + bias; |K| at most 255, of one sign.
  template <int K0, int K1>
  static Dot<K0, K1> make_dot(int bias) {
    return {wrap(bias)};
  }
  template <int K0, int K1>
  static H16 dot(Pairs p, const Dot<K0, K1> &d) {
    H16 r;
    for (int i = 0; i < n / 2; ++i) {
      r.at[i] = wrap(K0 * p.first[i] + K1 * p.second[i] + d.bias);
    }
    return r;
  }
  template <int K0, int K1>
  static W16 dot(WPairs p, const Dot<K0, K1> &d) {
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
  static H16 half_dot(Pairs p, const HalfDot<I, K> &d) {
    H16 r;
    for (int i = 0; i < n / 2; ++i) {
      r.at[i] = wrap(((K * (I ? p.second[i] : p.first[i])) >> 1) + d.bias);
    }
    return r;
  }
  template <int I, int K>
  static W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = wrap(((K * (I ? p.second[i] : p.first[i])) >> 1) + d.bias);
    }
    return r;
  }
  // Each lane for both pixels of its pair.
  static W16 twice(H16 h) {
    W16 r;
    for (int i = 0; i < n; ++i) r.at[i] = h.at[i / 2];
    return r;
  }

  static W16 mul_wide(U8 a, U8 b) {
    W16 r;
    for (int i = 0; i < n; ++i) r.at[i] = wrap(a.at[i] * b.at[i]);
    return r;
  }
  // The byte in the high half of its lane.
  static W16 widen_high(U8 a) {
    W16 r;
    for (int i = 0; i < n; ++i) r.at[i] = wrap(a.at[i] << 8);
    return r;
  }
  static W16 sub(W16 a, W16 b) {
    for (int i = 0; i < n; ++i) a.at[i] = wrap(a.at[i] - b.at[i]);
    return a;
  }
  // Half of an unsigned lane, rounded down.
  static W16 half(W16 a) {
    for (int16_t &w : a.at) w = wrap(static_cast<uint16_t>(w) >> 1);
    return a;
  }
  static W16 add_saturate(W16 a, W16 b) {
    for (int i = 0; i < n; ++i) a.at[i] = saturate(a.at[i] + b.at[i]);
    return a;
  }
  // clamp(a >> S, 0, 255), the shift arithmetic.
  template <int S>
  static U8 narrow(W16 a) {
    U8 r;
    for (int i = 0; i < n; ++i) {
      const int v = a.at[i] >> S;
      r.at[i] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
    return r;
  }
  // clamp(a, 0, (1 << (8 + S)) - 1) << (8 - S): what narrow<S> gives, in the
  // high byte, with the bits below it kept.
  template <int S>
  static W16 narrow_high(W16 a) {
    for (int16_t &w : a.at) {
      const int top = (1 << (8 + S)) - 1;
      w = wrap((w < 0 ? 0 : w > top ? top : w) << (8 - S));
    }
    return a;
  }
  // The top 5, 6 and 5 bits of three lanes.
  static W16 pack565(W16 high, W16 mid, W16 low) {
    W16 r;
    for (int i = 0; i < n; ++i) {
      r.at[i] = wrap((high.at[i] & 0xF800) | ((mid.at[i] & 0xFC00) >> 5) |
                     ((low.at[i] & 0xF800) >> 11));
    }
    return r;
  }

  // n bytes; n 16-bit words; n groups of three bytes; n groups of four.
  static void store_bytes(uint8_t *p, U8 a) {
    for (int i = 0; i < n; ++i) p[i] = a.at[i];
  }
  static void store16(uint8_t *p, W16 a) {
    for (int i = 0; i < n; ++i) {
      p[2 * i] = static_cast<uint8_t>(a.at[i]);
      p[2 * i + 1] = static_cast<uint8_t>(a.at[i] >> 8);
    }
  }
  static void store3(uint8_t *p, U8 a, U8 b, U8 c) {
    for (int i = 0; i < n; ++i) {
      p[3 * i] = a.at[i];
      p[3 * i + 1] = b.at[i];
      p[3 * i + 2] = c.at[i];
    }
  }
  static void store4(uint8_t *p, U8 a, U8 b, U8 c, U8 d) {
    for (int i = 0; i < n; ++i) {
      p[4 * i] = a.at[i];
      p[4 * i + 1] = b.at[i];
      p[4 * i + 2] = c.at[i];
      p[4 * i + 3] = d.at[i];
    }
  }
};

}  // namespace lox
