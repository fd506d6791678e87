// SPDX-License-Identifier: Apache-2.0
//
// YUV to RGB, a row or two at a time. The portable form is the matrix's rule
// for each pixel; the vector form gives the same bytes.
#include "csc/yuv_to_rgb_rows.h"

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#include "csc/yuv_to_rgb_matrices.h"

// Where the vector form stands in the rows.
struct Cursor {
  const uint8_t *y0, *y1;
  const uint8_t *chroma0, *chroma1;
  uint8_t *rgb0, *rgb1;
};

// --- sources: where a pixel's samples are -----------------------------------

// Luma of a byte for each pixel.
struct ByteLuma {
#if LOX_VECTORS
  static constexpr int kLumaBytes = 1;
  template <class V, Order O>
  LOX_INLINE static typename V::U8 luma(const uint8_t *y) {
    return V::template load<O>(y);
  }
#endif
};

// Two pixels share a chroma sample of planes of their own.
struct Planar : ByteLuma {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    return {y[x], chroma[0][x / 2], chroma[1][x / 2]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = 0;
  template <class V, Order O>
  LOX_INLINE static typename V::Pairs chroma(const Cursor &at) {
    return V::template load_interleave<O>(at.chroma0, at.chroma1);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += pixels / 2;
    at.chroma1 += pixels / 2;
  }
#endif
};

// Interleaved pairs with U at place I.
template <int I>
struct SemiPlanar : ByteLuma {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    const uint8_t *const pair = chroma[0] + x / 2 * 2;
    return {y[x], pair[I], pair[1 - I]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = I;
  template <class V, Order O>
  LOX_INLINE static typename V::Pairs chroma(const Cursor &at) {
    return V::template load_pairs<O>(at.chroma0);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += pixels;
  }
#endif
};

// As pairs with U first, of 16-bit samples, little-endian, whose high byte
// counts.
struct SemiPlanarWords {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    const uint8_t *const pair = chroma[0] + x / 2 * 4;
    return {y[2 * x + 1], pair[1], pair[3]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = true;
  static constexpr int kU = 0;
  static constexpr int kLumaBytes = 2;
  template <class V, Order O>
  LOX_INLINE static typename V::U8 luma(const uint8_t *y) {
    return V::template load_words<O>(y);
  }
  template <class V, Order O>
  LOX_INLINE static typename V::Pairs chroma(const Cursor &at) {
    return V::template load_word_pairs<O>(at.chroma0);
  }
  LOX_INLINE static void move_chroma(Cursor &at, ptrdiff_t pixels) {
    at.chroma0 += 2 * pixels;
  }
#endif
};

// A chroma sample for each pixel.
struct Full : ByteLuma {
  static Yuv pixel(const uint8_t *y, const uint8_t *const chroma[2],
                   ptrdiff_t x) {
    return {y[x], chroma[0][x], chroma[1][x]};
  }
#if LOX_VECTORS
  static constexpr bool kTwoPixels = false;
  static constexpr int kU = 0;
  template <class V, Order O>
  LOX_INLINE static typename V::WPairs chroma(const Cursor &at) {
    return V::template load_interleave_wide<O>(at.chroma0, at.chroma1);
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
  template <class V, class M, bool kStream>
  LOX_INLINE static void store(uint8_t *p, const Channels<V> &c) {
    const auto first = V::template narrow<M::kRed>(c.red);
    const auto mid = V::template narrow<M::kGreen>(c.green);
    const auto last = V::template narrow<M::kBlue>(c.blue);
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
  template <class V, class M, bool kStream>
  LOX_INLINE static void store(uint8_t *p, const Channels<V> &c) {
    if constexpr (kRedFirst && kAlphaFirst) {
      V::template store4<kStream>(
          p, V::template pair_255_narrow<M::kRed>(c.red),
          V::template pair_narrow<M::kGreen, M::kBlue>(c.green, c.blue));
    } else if constexpr (kRedFirst) {
      V::template store4<kStream>(
          p, V::template pair_narrow<M::kRed, M::kGreen>(c.red, c.green),
          V::template pair_narrow_255<M::kBlue>(c.blue));
    } else if constexpr (kAlphaFirst) {
      V::template store4<kStream>(
          p, V::template pair_255_narrow<M::kBlue>(c.blue),
          V::template pair_narrow<M::kGreen, M::kRed>(c.green, c.red));
    } else {
      V::template store4<kStream>(
          p, V::template pair_narrow<M::kBlue, M::kGreen>(c.blue, c.green),
          V::template pair_narrow_255<M::kRed>(c.red));
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
  template <class V, class M, bool kStream>
  LOX_INLINE static void store(uint8_t *p, const Channels<V> &c) {
    if constexpr (kRedHigh) {
      V::template store16<kStream>(
          p, V::template pack565<M::kRed, M::kGreen, M::kBlue>(c.red, c.green,
                                                               c.blue));
    } else {
      V::template store16<kStream>(
          p, V::template pack565<M::kBlue, M::kGreen, M::kRed>(c.blue, c.green,
                                                               c.red));
    }
  }
#endif
};

// --- the rule ---------------------------------------------------------------

int clamp_to_byte(int v) {
  v = v < 0 ? 0 : v;
  return v > 255 ? 255 : v;
}

// Whether a row's last columns have a rule of their own, and where it begins.
template <class M>
constexpr bool kHasTail = requires {
  M::kGroup;
};
template <class M>
ptrdiff_t tail_begin(ptrdiff_t width) {
  if constexpr (kHasTail<M>) {
    return width - width % M::kGroup;
  } else {
    return width;
  }
}

template <class M>
LOX_INLINE Rgb convert_pixel(Yuv yuv, [[maybe_unused]] bool tail) {
  if constexpr (kHasTail<M>) {
    if (tail) return M::tail_pixel(yuv);
  }
  return M::pixel(yuv);
}

template <class Src, class Dst, class M, int kRows>
void convert_pixels(const YuvToRgbRows &rows, ptrdiff_t begin, ptrdiff_t end) {
  const uint8_t *const chroma[2] = {rows.chroma[0], rows.chroma[1]};
  const ptrdiff_t tail = tail_begin<M>(end);
  for (int row = 0; row < kRows; ++row) {
    const uint8_t *const y = rows.y[row];
    uint8_t *const rgb = rows.rgb[row];
    for (ptrdiff_t x = begin; x < end; ++x) {
      const Rgb c = convert_pixel<M>(Src::pixel(y, chroma, x), x >= tail);
      Dst::put(rgb + x * Dst::kBytes, clamp_to_byte(c.r), clamp_to_byte(c.g),
               clamp_to_byte(c.b));
    }
  }
}

// --- the vector form --------------------------------------------------------

#if LOX_VECTORS

template <class V, class Dst, class M, bool kStream, class Chroma, class C>
LOX_INLINE void convert_luma(typename V::U8 luma, const Chroma &chroma,
                             const C &k, uint8_t *rgb) {
  Dst::template store<V, M, kStream>(rgb,
                                     M::template channels<V>(luma, chroma, k));
}

template <class S>
constexpr bool kIsPacked = false;
template <int kLuma>
constexpr bool kIsPacked<Packed<kLuma>> = true;

template <class V, class Src, class Dst, class M, int kRows, bool kStream,
          class C>
LOX_INLINE void step(const Cursor &at, const C &k) {
  constexpr Order kOrder = Dst::kOrder;
  if constexpr (kIsPacked<Src>) {
    typename V::U8 luma;
    typename V::Pairs pairs;
    V::template load_422<kOrder, Src::kLuma>(at.y0, luma, pairs);
    convert_luma<V, Dst, M, kStream>(luma, M::template chroma<V>(pairs, k), k,
                                     at.rgb0);
  } else {
    const auto chroma =
        M::template chroma<V>(Src::template chroma<V, kOrder>(at), k);
    convert_luma<V, Dst, M, kStream>(Src::template luma<V, kOrder>(at.y0),
                                     chroma, k, at.rgb0);
    if constexpr (kRows == 2) {
      convert_luma<V, Dst, M, kStream>(Src::template luma<V, kOrder>(at.y1),
                                       chroma, k, at.rgb1);
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
  keep_pointer(at.y0);
  keep_pointer(at.y1);
  keep_pointer(at.chroma0);
  keep_pointer(at.chroma1);
  keep_pointer(at.rgb0);
  keep_pointer(at.rgb1);
}

template <class V, class Src, class Dst, class M, int kRows, bool kStream>
LOX_INLINE void convert_vectors(const YuvToRgbRows &rows, ptrdiff_t width) {
  const typename M::template Constants<V, Src::kU> constants;
  Cursor at = {rows.y[0],      rows.y[1],   rows.chroma[0],
               rows.chroma[1], rows.rgb[0], rows.rgb[1]};
  [[maybe_unused]] const bool fetch = rows.fetch;
  for_vectors<V>(
      width,
      [&]() LOX_INLINE_LAMBDA {
        if constexpr (V::kAhead != 0 && !kStream) {
          if (fetch) {
            V::fetch_ahead(at.rgb0, V::n * Dst::kBytes);
            if (kRows == 2) V::fetch_ahead(at.rgb1, V::n * Dst::kBytes);
          }
        }
        step<V, Src, Dst, M, kRows, kStream>(at, constants);
      },
      [&](ptrdiff_t pixels)
          LOX_INLINE_LAMBDA { move<Src, Dst, kRows>(at, pixels); },
      [&]() LOX_INLINE_LAMBDA {
        step<V, Src, Dst, M, kRows, false>(at, constants);
      });
}

#endif  // LOX_VECTORS

template <class Src, class Dst, int kRows, class M = Bt601>
void convert(const YuvToRgbRows &rows, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  // A vector starts on a pair, so an odd last pixel is left to the rule.
  const ptrdiff_t regular = tail_begin<M>(width);
  const ptrdiff_t whole = Src::kTwoPixels ? regular & ~1 : regular;
  done = with_vectors(whole, [&]<class V>(V) LOX_INLINE_LAMBDA {
    if constexpr (V::kStreamAlignment != 0) {
      if (rows.stream) {
        convert_vectors<V, Src, Dst, M, kRows, true>(rows, whole);
        return;
      }
    }
    convert_vectors<V, Src, Dst, M, kRows, false>(rows, whole);
  });
#endif
  convert_pixels<Src, Dst, M, kRows>(rows, done, width);
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
using Bgr565 = Rgb16<false>;
using Rgb888 = Rgb24<0, 2>;
using Bgr888 = Rgb24<2, 0>;
using Rgba8888 = Rgb32<true, false>;
using Bgra8888 = Rgb32<false, false>;
using Argb8888 = Rgb32<true, true>;
using Abgr8888 = Rgb32<false, true>;

}  // namespace

// One source's row of the table, in the order of RgbLayout. A source that
// shares no chroma has no form for two rows.
#define LOX_FORMS(Src, Dst) \
  { convert<Src, Dst, 1>, convert<Src, Dst, 2> }
#define LOX_FORM(Src, Dst) \
  { convert<Src, Dst, 1>, nullptr }
#define LOX_LAYOUTS(FORMS, Src)                                         \
  {                                                                     \
    FORMS(Src, Rgb565), FORMS(Src, Bgr565), FORMS(Src, Rgb888),         \
        FORMS(Src, Bgr888), FORMS(Src, Rgba8888), FORMS(Src, Bgra8888), \
        FORMS(Src, Argb8888), FORMS(Src, Abgr8888)                      \
  }
#define LOX_FORMS_OF(Src, M) \
  { convert<Src, Rgba8888, 1, M>, convert<Src, Rgba8888, 2, M> }

constinit const CscRows yuv_to_rgb_rows = {
    .yuv_to_rgb = {LOX_LAYOUTS(LOX_FORMS, Planar),
                   LOX_LAYOUTS(LOX_FORMS, SemiPlanar<0>),
                   LOX_LAYOUTS(LOX_FORMS, SemiPlanar<1>),
                   LOX_LAYOUTS(LOX_FORM, Full),
                   LOX_LAYOUTS(LOX_FORM, Packed<0>),
                   LOX_LAYOUTS(LOX_FORM, Packed<1>)},
    .words_to_rgba = LOX_FORMS_OF(SemiPlanarWords, Bt601),
    .bt601_full = {LOX_FORMS_OF(Planar, Bt601Full),
                   LOX_FORMS_OF(SemiPlanar<0>, Bt601Full),
                   LOX_FORMS_OF(SemiPlanar<1>, Bt601Full)},
    .bt709_planar = LOX_FORMS_OF(Planar, Bt709),
    .bt709_full_planar = LOX_FORMS_OF(Planar, Bt709Full),
    .grey_to_rgb565 = grey_to_rgb<Rgb565>,
    .grey_to_rgb888 = grey_to_rgb<Rgb888>,
    .stream_alignment = kStreamAlignment,
    .end_stream = end_stream,
};

}  // namespace lox::LOX_SET
