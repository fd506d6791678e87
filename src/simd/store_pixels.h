// SPDX-License-Identifier: Apache-2.0
//
// Channels of 16 bits to pixels of any layout.
#pragma once

#include "simd/simd.h"

#if LOX_VECTORS
namespace lox::LOX_SET {

// V::n pixels: of each channel clamp(v >> its bits, 0, 255), of pixels of two
// bytes the top bits of that. The channel on top of a word, or that comes
// first, and the last one.
template <PixelFormat F, class V, int kFirstBits, int kGreenBits, int kLastBits,
          bool kStream, class First, class Green, class Last>
LOX_INLINE void store_in_order(uint8_t *p, const First &first,
                               const Green &green, const Last &last) {
  if constexpr (F.bytes == 2) {
    V::template store16<kStream>(
        p, V::template pack565<kFirstBits, kGreenBits, kLastBits>(first, green,
                                                                  last));
  } else if constexpr (F.bytes == 3) {
    const auto a = V::template narrow<kFirstBits>(first);
    const auto b = V::template narrow<kGreenBits>(green);
    const auto c = V::template narrow<kLastBits>(last);
    V::template store3<kStream>(p, a, b, c);
  } else if constexpr (alpha_first(F)) {
    V::template store4<kStream>(
        p, V::template pair_255_narrow<kFirstBits>(first),
        V::template pair_narrow<kGreenBits, kLastBits>(green, last));
  } else {
    V::template store4<kStream>(
        p, V::template pair_narrow<kFirstBits, kGreenBits>(first, green),
        V::template pair_narrow_255<kLastBits>(last));
  }
}
template <PixelFormat F, class V, int kRedBits, int kGreenBits, int kBlueBits,
          bool kStream, class Red, class Green, class Blue>
LOX_INLINE void store_pixels(uint8_t *p, const Red &red, const Green &green,
                             const Blue &blue) {
  if constexpr (red_first(F)) {
    store_in_order<F, V, kRedBits, kGreenBits, kBlueBits, kStream>(p, red,
                                                                   green, blue);
  } else {
    store_in_order<F, V, kBlueBits, kGreenBits, kRedBits, kStream>(p, blue,
                                                                   green, red);
  }
}

}  // namespace lox::LOX_SET
#endif
