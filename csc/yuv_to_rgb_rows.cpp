// SPDX-License-Identifier: Apache-2.0
//
// YUV to RGB, BT.601 with luma 16..235, a row or two at a time. With y = Y -
// 16, u = U - 128, v = V - 128:
//
//   R = clamp((298 y         + 409 v + 128) >> 8)
//   G = clamp((298 y - 100 u - 208 v + 128) >> 8)
//   B = clamp((298 y + 516 u         + 128) >> 8)
//
// The portable form computes just that. The vector form does it in 16-bit
// lanes, to the same bytes. 298 is even, so one bit of the sums is not needed,
// and y is taken from 40, so that sums which matter fit and others saturate on
// the right side. With L = 149 (Y - 40), within -5960..32035:
//
//   R = clamp((L              + floor(409 v / 2) + 3640) >> 7)
//   G = clamp((floor(149 Y / 2)  - 25 u  - 52 v  - 1160) >> 6)
//   B = clamp((floor(149 Y / 2) + 129 u          - 1160) >> 6)
//
// 3640 being 149 * 24 + 64 and 1160 being 149 * 8 - 32; six bits are enough
// where the chroma factors are multiples of 4, and B's would not fit with more.
// The chroma parts lie within -22536..29611, -10939..8696 and -17672..15223,
// and floor(149 Y / 2) within 0..18997: G's sum always fits, the others
// saturate.
#include "csc/csc_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

struct Yuv {
  int y, u, v;
};

// Where the vector form stands in the rows.
struct Cursor {
  const uint8_t *y0, *y1;
  const uint8_t *chroma0, *chroma1;
  uint8_t *rgb0, *rgb1;
};

// --- sources: where a pixel's samples are -----------------------------------

// Two pixels share a chroma sample of planes of their own.
struct Planar {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    return {y[x], chroma[0][x / 2], chroma[1][x / 2]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = 0;
  static constexpr int kLumaBytes = 1;
  template <class V, Order O>
  LOX_INLINE static typename V::Pairs chroma(const Cursor &at) {
    return V::template load_zip<O>(at.chroma0, at.chroma1);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += pixels / 2;
    at.chroma1 += pixels / 2;
  }
#endif
};

// Interleaved pairs with U at place I.
template <int I>
struct SemiPlanar {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    const uint8_t *const pair = chroma[0] + x / 2 * 2;
    return {y[x], pair[I], pair[1 - I]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = I;
  static constexpr int kLumaBytes = 1;
  template <class V, Order O>
  LOX_INLINE static typename V::Pairs chroma(const Cursor &at) {
    return V::template load_pairs<O>(at.chroma0);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += pixels;
  }
#endif
};

// A chroma sample for each pixel.
struct Full {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    return {y[x], chroma[0][x], chroma[1][x]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = false;
  static constexpr int kU = 0;
  static constexpr int kLumaBytes = 1;
  template <class V, Order O>
  LOX_INLINE static typename V::WPairs chroma(const Cursor &at) {
    return V::template load_zip_wide<O>(at.chroma0, at.chroma1);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += pixels;
    at.chroma1 += pixels;
  }
#endif
};

// Packed 4:2:2 with the first luma byte at place kLuma.
template <int kLumaPlace>
struct Packed {
  static constexpr int kLuma = kLumaPlace;

  static Yuv pixel(const uint8_t *yuv, const uint8_t *const[2], ptrdiff_t x) {
    const uint8_t *const pair = yuv + x / 2 * 4;
    return {pair[kLuma + x % 2 * 2], pair[1 - kLuma], pair[3 - kLuma]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = 0;
  static constexpr int kLumaBytes = 2;
  LOX_INLINE static void move_chroma(Cursor &, ptrdiff_t) {}
#endif
};

// --- destinations: how a pixel is packed ------------------------------------

template <int kR, int kB>
struct Rgb24 {
  static constexpr int kBytes = 3;

  static void put(uint8_t *p, int r, int g, int b) {
    p[kR] = static_cast<uint8_t>(r);
    p[1] = static_cast<uint8_t>(g);
    p[kB] = static_cast<uint8_t>(b);
  }
#if LOX_VECTORS
  static constexpr Order kOrder = Order::kBytes;
  template <class V, bool kStream>
  LOX_INLINE static void store(uint8_t *p, typename V::W16 r, typename V::W16 g,
                               typename V::W16 b) {
    const auto first = V::template narrow<7>(r);
    const auto mid = V::template narrow<6>(g);
    const auto last = V::template narrow<6>(b);
    if constexpr (kR == 0) {
      V::template store3<kStream>(p, first, mid, last);
    } else {
      V::template store3<kStream>(p, last, mid, first);
    }
  }
#endif
};

// Red first or last of the colours, alpha before or behind them.
template <bool kRedFirst, bool kAlphaFirst>
struct Rgb32 {
  static constexpr int kBytes = 4;

  static void put(uint8_t *p, int r, int g, int b) {
    uint8_t *const colours = kAlphaFirst ? p + 1 : p;
    colours[kRedFirst ? 0 : 2] = static_cast<uint8_t>(r);
    colours[1] = static_cast<uint8_t>(g);
    colours[kRedFirst ? 2 : 0] = static_cast<uint8_t>(b);
    p[kAlphaFirst ? 0 : 3] = 255;
  }
#if LOX_VECTORS
  static constexpr Order kOrder = Order::kQuads;
  template <class V, bool kStream>
  LOX_INLINE static void store(uint8_t *p, typename V::W16 r, typename V::W16 g,
                               typename V::W16 b) {
    if constexpr (kRedFirst && kAlphaFirst) {
      V::template store4<kStream>(p, V::template join_low_255<7>(r),
                                  V::template join<6, 6>(g, b));
    } else if constexpr (kRedFirst) {
      V::template store4<kStream>(p, V::template join<7, 6>(r, g),
                                  V::template join_high_255<6>(b));
    } else if constexpr (kAlphaFirst) {
      V::template store4<kStream>(p, V::template join_low_255<6>(b),
                                  V::template join<6, 7>(g, r));
    } else {
      V::template store4<kStream>(p, V::template join<6, 6>(b, g),
                                  V::template join_high_255<7>(r));
    }
  }
#endif
};

template <bool kRedHigh>
struct Rgb16 {
  static constexpr int kBytes = 2;

  static void put(uint8_t *p, int r, int g, int b) {
    const int high = kRedHigh ? r : b;
    const int low = kRedHigh ? b : r;
    const int word = high >> 3 << 11 | g >> 2 << 5 | low >> 3;
    p[0] = static_cast<uint8_t>(word);
    p[1] = static_cast<uint8_t>(word >> 8);
  }
#if LOX_VECTORS
  static constexpr Order kOrder = Order::kWords;
  template <class V, bool kStream>
  LOX_INLINE static void store(uint8_t *p, typename V::W16 r, typename V::W16 g,
                               typename V::W16 b) {
    if constexpr (kRedHigh) {
      V::template store16<kStream>(p, V::template pack565<7, 6, 6>(r, g, b));
    } else {
      V::template store16<kStream>(p, V::template pack565<6, 6, 7>(b, g, r));
    }
  }
#endif
};

// --- the rule ---------------------------------------------------------------

int clamp_to_byte(int v) {
  v = v < 0 ? 0 : v;
  return v > 255 ? 255 : v;
}

template <class Dst>
LOX_INLINE void convert_pixel(Yuv yuv, uint8_t *rgb) {
  const int y = 298 * (yuv.y - 16);
  const int u = yuv.u - 128;
  const int v = yuv.v - 128;
  Dst::put(rgb, clamp_to_byte((y + 409 * v + 128) >> 8),
           clamp_to_byte((y - 100 * u - 208 * v + 128) >> 8),
           clamp_to_byte((y + 516 * u + 128) >> 8));
}

template <class Src, class Dst, int kRows>
void convert_pixels(const YuvToRgbRows &rows, ptrdiff_t begin, ptrdiff_t end) {
  const uint8_t *const chroma[2] = {rows.chroma[0], rows.chroma[1]};
  for (int row = 0; row < kRows; ++row) {
    const uint8_t *const y = rows.y[row];
    uint8_t *const rgb = rows.rgb[row];
    for (ptrdiff_t x = begin; x < end; ++x) {
      convert_pixel<Dst>(Src::pixel(y, chroma, x), rgb + x * Dst::kBytes);
    }
  }
}

// --- the vector form --------------------------------------------------------

#if LOX_VECTORS

// kU is the place of U in a pair.
template <class V, int kU>
struct Constants {
  static constexpr bool kUFirst = kU == 0;
  static constexpr int kGreen0 = kUFirst ? -25 : -52;
  static constexpr int kGreen1 = kUFirst ? -52 : -25;
  static constexpr int kBlue0 = kUFirst ? 129 : 0;
  static constexpr int kBlue1 = kUFirst ? 0 : 129;

  typename V::Factor k149 = V::make_factor(149);
  typename V::W16 from_40 = V::fill(-149 * 40);
  typename V::template HalfDot<1 - kU, 409> red =
      V::template make_half_dot<1 - kU, 409>(149 * 24 + 64);
  typename V::template Dot<kGreen0, kGreen1> green =
      V::template make_dot<kGreen0, kGreen1>(32 - 149 * 8);
  typename V::template Dot<kBlue0, kBlue1> blue =
      V::template make_dot<kBlue0, kBlue1>(32 - 149 * 8);
};

template <class V>
struct ChromaTerms {
  typename V::W16 red, green, blue;
};

template <class V, class Pairs, class C>
LOX_INLINE ChromaTerms<V> chroma_terms(Pairs p, const C &k) {
  return {V::half_dot(p, k.red), V::dot(p, k.green), V::dot(p, k.blue)};
}

template <class V, class Dst, bool kStream, class C>
LOX_INLINE void convert_luma(typename V::U8 luma, const ChromaTerms<V> &chroma,
                             const C &k, uint8_t *rgb) {
  typename V::W16 whole;
  typename V::W16 half;
  V::scale(luma, k.k149, whole, half);
  Dst::template store<V, kStream>(
      rgb, V::add_saturate(V::add(whole, k.from_40), chroma.red),
      V::add(half, chroma.green), V::add_saturate(half, chroma.blue));
}

template <class S>
constexpr bool kIsPacked = false;
template <int kLuma>
constexpr bool kIsPacked<Packed<kLuma>> = true;

template <class V, class Src, class Dst, int kRows, bool kStream, class C>
LOX_INLINE void step(const Cursor &at, const C &k) {
  constexpr Order kOrder = Dst::kOrder;
  if constexpr (kIsPacked<Src>) {
    typename V::U8 luma;
    typename V::Pairs pairs;
    V::template load_422<kOrder, Src::kLuma>(at.y0, luma, pairs);
    convert_luma<V, Dst, kStream>(luma, chroma_terms<V>(pairs, k), k, at.rgb0);
  } else {
    const auto chroma = chroma_terms<V>(Src::template chroma<V, kOrder>(at), k);
    convert_luma<V, Dst, kStream>(V::template load<kOrder>(at.y0), chroma, k,
                                  at.rgb0);
    if constexpr (kRows == 2) {
      convert_luma<V, Dst, kStream>(V::template load<kOrder>(at.y1), chroma, k,
                                    at.rgb1);
    }
  }
}

template <class Src, class Dst, int kRows>
LOX_INLINE void move(Cursor &at, ptrdiff_t pixels) {
  at.y0 += pixels * Src::kLumaBytes;
  at.rgb0 += pixels * Dst::kBytes;
  Src::move_chroma(at, pixels);
  if constexpr (kRows == 2) {
    at.y1 += pixels * Src::kLumaBytes;
    at.rgb1 += pixels * Dst::kBytes;
  }
  settle(at.y0);
  settle(at.y1);
  settle(at.chroma0);
  settle(at.chroma1);
  settle(at.rgb0);
  settle(at.rgb1);
}

template <class V, class Src, class Dst, int kRows, bool kStream>
LOX_INLINE void convert_vectors(const YuvToRgbRows &rows, ptrdiff_t width) {
  const Constants<V, Src::kU> constants;
  Cursor at = {rows.y[0],      rows.y[1],   rows.chroma[0],
               rows.chroma[1], rows.rgb[0], rows.rgb[1]};
  for_vectors<V>(
      width,
      [&]() LOX_INLINE_LAMBDA {
        step<V, Src, Dst, kRows, kStream>(at, constants);
      },
      [&](ptrdiff_t pixels)
          LOX_INLINE_LAMBDA { move<Src, Dst, kRows>(at, pixels); },
      [&]() LOX_INLINE_LAMBDA {
        step<V, Src, Dst, kRows, false>(at, constants);
      });
}

#endif  // LOX_VECTORS

template <class Src, class Dst, int kRows>
void convert(const YuvToRgbRows &rows, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  // A vector starts on a pair, so an odd last pixel is left to the rule.
  const ptrdiff_t whole = Src::kTwoPixels ? width & ~1 : width;
  done = with_vectors(whole, [&]<class V>(V) LOX_INLINE_LAMBDA {
    if constexpr (V::kStreamAlignment != 0) {
      if (rows.stream) {
        convert_vectors<V, Src, Dst, kRows, true>(rows, whole);
        return;
      }
    }
    convert_vectors<V, Src, Dst, kRows, false>(rows, whole);
  });
#endif
  convert_pixels<Src, Dst, kRows>(rows, done, width);
}

// --- grey: every channel is Y -----------------------------------------------

template <class Dst>
void grey_to_rgb(const uint8_t *y, uint8_t *rgb, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto k64 = V::make_factor(64);
    const uint8_t *from = y;
    uint8_t *to = rgb;
    for_vectors<V>(
        width,
        [&]() LOX_INLINE_LAMBDA {
          if constexpr (Dst::kBytes == 2) {
            typename V::W16 word;
            typename V::W16 unused;
            V::scale(V::template load<Dst::kOrder>(from), k64, word, unused);
            V::template store16<false>(
                to, V::template pack565<6, 6, 6>(word, word, word));
          } else {
            const auto bytes = V::load_bytes(from);
            V::template store3<false>(to, bytes, bytes, bytes);
          }
        },
        [&](ptrdiff_t pixels) LOX_INLINE_LAMBDA {
          from += pixels;
          to += pixels * Dst::kBytes;
        });
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    Dst::put(rgb + x * Dst::kBytes, y[x], y[x], y[x]);
  }
}

#if LOX_VECTORS
constexpr int kStreamAlignment = Wide::kStreamAlignment;
void end_stream() { Wide::end_stream(); }
#else
constexpr int kStreamAlignment = 0;
void end_stream() {}
#endif

using Rgb565 = Rgb16<true>;
using Rgb888 = Rgb24<0, 2>;

}  // namespace

// One source's row of the table, in the order of RgbLayout.
#define LOX_LAYOUTS(Src, kRows)                                        \
  {                                                                    \
    convert<Src, Rgb565, kRows>, convert<Src, Rgb16<false>, kRows>,    \
        convert<Src, Rgb888, kRows>, convert<Src, Rgb24<2, 0>, kRows>, \
        convert<Src, Rgb32<true, false>, kRows>,                       \
        convert<Src, Rgb32<false, false>, kRows>,                      \
        convert<Src, Rgb32<true, true>, kRows>,                        \
        convert<Src, Rgb32<false, true>, kRows>                        \
  }

constinit const CscRows csc_rows = {
    .yuv_to_rgb = {LOX_LAYOUTS(Planar, 1), LOX_LAYOUTS(SemiPlanar<0>, 1),
                   LOX_LAYOUTS(SemiPlanar<1>, 1), LOX_LAYOUTS(Full, 1),
                   LOX_LAYOUTS(Packed<0>, 1), LOX_LAYOUTS(Packed<1>, 1)},
    .two_yuv_to_rgb = {LOX_LAYOUTS(Planar, 2), LOX_LAYOUTS(SemiPlanar<0>, 2),
                       LOX_LAYOUTS(SemiPlanar<1>, 2)},
    .grey_to_rgb565 = grey_to_rgb<Rgb565>,
    .grey_to_rgb888 = grey_to_rgb<Rgb888>,
    .stream_alignment = kStreamAlignment,
    .end_stream = end_stream,
};

}  // namespace lox::LOX_SET
