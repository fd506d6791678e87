// SPDX-License-Identifier: Apache-2.0
//
// How RGB pixels lie in memory: one table, from which the plain and the vector
// forms of every conversion take their shuffles.
#pragma once

#include <stdint.h>

#include "simd/op.h"
#include "simd/words.h"

namespace lox {

// The layouts, as indices of kernel tables.
enum RgbLayout {
  kRgb565,
  kBgr565,
  kRgb888,
  kBgr888,
  kRgba8888,
  kBgra8888,
  kArgb8888,
  kAbgr8888,
  kRgbLayouts,
  // Dithered: those of two bytes, for the tables that have them.
  kDitheredRgb565 = kRgbLayouts,
  kDitheredBgr565,
  kLayoutsAndDithered
};

// A pixel's size and the places of its bytes. Two bytes are a little-endian
// word: the channel whose place is 1 has the top five bits, the one whose place
// is 0 the last five, green the six between. Of four bytes the place that is
// left is alpha's.
struct PixelFormat {
  int bytes, r, g, b;
  bool dithered = false;
};

constexpr PixelFormat kPixelFormats[kLayoutsAndDithered] = {
    {2, 1, 0, 0},       {2, 0, 0, 1},      {3, 0, 1, 2}, {3, 2, 1, 0},
    {4, 0, 1, 2},       {4, 2, 1, 0},      {4, 1, 2, 3}, {4, 3, 2, 1},
    {2, 1, 0, 0, true}, {2, 0, 0, 1, true}};

// Whether red is on top of a word, or before blue.
LOX_OP constexpr bool red_first(PixelFormat f) {
  return f.bytes == 2 ? f.r == 1 : f.r < f.b;
}
LOX_OP constexpr bool alpha_first(PixelFormat f) {
  return f.bytes == 4 && f.g == 2;
}

// Where in a pixel of `from` each byte of one of `to` is; -1 for an alpha that
// `from` lacks.
struct ByteOrder {
  int8_t at[4];
};
LOX_OP constexpr ByteOrder byte_order(PixelFormat from, PixelFormat to) {
  ByteOrder order = {};
  const int alpha = from.bytes == 4 ? (alpha_first(from) ? 0 : 3) : -1;
  for (int i = 0; i < to.bytes; ++i) {
    order.at[i] = static_cast<int8_t>(i == to.r   ? from.r
                                      : i == to.g ? from.g
                                      : i == to.b ? from.b
                                                  : alpha);
  }
  return order;
}

struct Rgb {
  int r, g, b;
};

// Channels of five and six bits are shifted up to bytes; zeros fill the bits
// below.
template <PixelFormat F>
LOX_OP Rgb get_pixel(const uint8_t *p) {
  if constexpr (F.bytes == 2) {
    const int word = word_at(p);
    const int top = (word & 0xF800) >> 8;
    const int last = (word & 0x001F) << 3;
    const int green = (word & 0x07E0) >> 3;
    return red_first(F) ? Rgb{top, green, last} : Rgb{last, green, top};
  } else {
    return {p[F.r], p[F.g], p[F.b]};
  }
}

// Of channels of 0..255; alpha becomes 255.
template <PixelFormat F>
LOX_OP void put_pixel(uint8_t *p, Rgb c) {
  if constexpr (F.bytes == 2) {
    const int top = red_first(F) ? c.r : c.b;
    const int last = red_first(F) ? c.b : c.r;
    put_word(p, top >> 3 << 11 | c.g >> 2 << 5 | last >> 3);
  } else {
    p[F.r] = static_cast<uint8_t>(c.r);
    p[F.g] = static_cast<uint8_t>(c.g);
    p[F.b] = static_cast<uint8_t>(c.b);
    if constexpr (F.bytes == 4) p[alpha_first(F) ? 0 : 3] = 255;
  }
}

// How the bytes of a vector lie between load and store. A backend may permute
// them on loading so that the store of its kind need not.
enum class Order {
  kBytes,  // for store3 and store_bytes
  kWords,  // for store16
  kQuads   // for store4
};
LOX_OP constexpr Order order_of(PixelFormat f) {
  return f.bytes == 2   ? Order::kWords
         : f.bytes == 3 ? Order::kBytes
                        : Order::kQuads;
}

}  // namespace lox
