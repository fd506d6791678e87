// SPDX-License-Identifier: Apache-2.0
//
// Channels of 16 bits to pixels of any layout.
#pragma once

#include "simd/simd.h"

#if LOX_VECTORS
namespace lox::LOX_SET {

// V::n pixels: of each channel clamp(v >> its bits, 0, 255), of pixels of two
// bytes the top bits of that.
template <PixelFormat F, class V, int kRedBits, int kGreenBits, int kBlueBits,
          bool kStream>
LOX_INLINE void store_pixels(uint8_t *p, const typename V::W16 &red,
                             const typename V::W16 &green,
                             const typename V::W16 &blue) {
  constexpr bool kRedFirst = red_first(F);
  constexpr int kFirst = kRedFirst ? kRedBits : kBlueBits;
  constexpr int kLast = kRedFirst ? kBlueBits : kRedBits;
  const auto &first = kRedFirst ? red : blue;
  const auto &last = kRedFirst ? blue : red;
  if constexpr (F.bytes == 2) {
    V::template store16<kStream>(
        p, V::template pack565<kFirst, kGreenBits, kLast>(first, green, last));
  } else if constexpr (F.bytes == 3) {
    const auto r = V::template narrow<kRedBits>(red);
    const auto g = V::template narrow<kGreenBits>(green);
    const auto b = V::template narrow<kBlueBits>(blue);
    V::template store3<kStream>(p, kRedFirst ? r : b, g, kRedFirst ? b : r);
  } else if constexpr (alpha_first(F)) {
    V::template store4<kStream>(
        p, V::template pair_255_narrow<kFirst>(first),
        V::template pair_narrow<kGreenBits, kLast>(green, last));
  } else {
    V::template store4<kStream>(
        p, V::template pair_narrow<kFirst, kGreenBits>(first, green),
        V::template pair_narrow_255<kLast>(last));
  }
}

}  // namespace lox::LOX_SET
#endif
