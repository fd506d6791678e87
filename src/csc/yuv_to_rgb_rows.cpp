// SPDX-License-Identifier: Apache-2.0
//
// YUV to RGB, a row or two at a time. The portable form is the matrix's rule
// for each pixel; the vector form gives the same bytes.
#include "csc/yuv_to_rgb_rows.h"

#include "simd/dither.h"
#include "simd/simd.h"
#include "simd/store_pixels.h"

namespace lox::LOX_SET {

namespace {

#include "csc/yuv_to_rgb_matrices.h"

// Where the vector form stands in the rows.
struct Place {
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
  LOX_INLINE static typename V::Pairs chroma(const Place &at) {
    return V::template load_interleave<O>(at.chroma0, at.chroma1);
  }
  LOX_INLINE static void move_chroma(Place &at, ptrdiff_t pixels) {
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
  LOX_INLINE static typename V::Pairs chroma(const Place &at) {
    return V::template load_pairs<O>(at.chroma0);
  }
  LOX_INLINE static void move_chroma(Place &at, ptrdiff_t pixels) {
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
  LOX_INLINE static typename V::Pairs chroma(const Place &at) {
    return V::template load_word_pairs<O>(at.chroma0);
  }
  LOX_INLINE static void move_chroma(Place &at, ptrdiff_t pixels) {
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
  LOX_INLINE static typename V::WPairs chroma(const Place &at) {
    return V::template load_interleave_wide<O>(at.chroma0, at.chroma1);
  }
  LOX_INLINE static void move_chroma(Place &at, ptrdiff_t pixels) {
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
  LOX_INLINE static void move_chroma(Place &, ptrdiff_t) {}
#endif
};

// What is added to n pixels of a row before they are packed.
struct NoDither {};
template <PixelFormat F, class V>
LOX_INLINE auto dither_of([[maybe_unused]] ptrdiff_t x,
                          [[maybe_unused]] ptrdiff_t y) {
  if constexpr (F.dithered) {
    return V::make_dither(dither_place(x, y));
  } else {
    return NoDither();
  }
}
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

template <class Src, PixelFormat F, class M, int kRows>
void convert_pixels(const YuvToRgbRows &rows, ptrdiff_t begin, ptrdiff_t end) {
  const uint8_t *const chroma[2] = {rows.chroma[0], rows.chroma[1]};
  const ptrdiff_t tail = tail_begin<M>(end);
  for (int row = 0; row < kRows; ++row) {
    const uint8_t *const y = rows.y[row];
    uint8_t *const rgb = rows.rgb[row];
    for (ptrdiff_t x = begin; x < end; ++x) {
      Rgb c = convert_pixel<M>(Src::pixel(y, chroma, x), x >= tail);
      if constexpr (F.dithered) {
        const DitherPlace at = dither_place(rows.column + x, rows.row + row);
        c = {clamp_to_byte(c.r) + *at.five, clamp_to_byte(c.g) + *at.six,
             clamp_to_byte(c.b) + *at.five};
      }
      put_pixel<F>(rgb + x * F.bytes, {clamp_to_byte(c.r), clamp_to_byte(c.g),
                                       clamp_to_byte(c.b)});
    }
  }
}

// --- the vector form --------------------------------------------------------

#if LOX_VECTORS

template <class V, PixelFormat F, class M, bool kStream, class Chroma, class C,
          class D>
LOX_INLINE void convert_luma(typename V::U8 luma, const Chroma &chroma,
                             const C &k, uint8_t *rgb,
                             [[maybe_unused]] const D &dither) {
  const auto c = M::template channels<V>(luma, chroma, k);
  if constexpr (F.dithered) {
    V::template store16<kStream>(
        rgb, red_first(F) ? V::template pack565<M::kRed, M::kGreen, M::kBlue>(
                                c.red, c.green, c.blue, dither)
                          : V::template pack565<M::kBlue, M::kGreen, M::kRed>(
                                c.blue, c.green, c.red, dither));
  } else {
    store_pixels<F, V, M::kRed, M::kGreen, M::kBlue, kStream>(rgb, c.red,
                                                              c.green, c.blue);
  }
}

template <class S>
constexpr bool kIsPacked = false;
template <int kLuma>
constexpr bool kIsPacked<Packed<kLuma>> = true;

template <class V, class Src, PixelFormat F, class M, int kRows, bool kStream,
          class C, class D>
LOX_INLINE void step(const Place &at, const C &k, const D (&dither)[kRows]) {
  constexpr Order kOrder = order_of(F);
  if constexpr (kIsPacked<Src>) {
    typename V::U8 luma;
    typename V::PackedPairs pairs;
    V::template load_422<kOrder, Src::kLuma>(at.y0, luma, pairs);
    convert_luma<V, F, M, kStream>(luma, M::template chroma<V>(pairs, k), k,
                                   at.rgb0, dither[0]);
  } else {
    const auto chroma =
        M::template chroma<V>(Src::template chroma<V, kOrder>(at), k);
    convert_luma<V, F, M, kStream>(Src::template luma<V, kOrder>(at.y0), chroma,
                                   k, at.rgb0, dither[0]);
    if constexpr (kRows == 2) {
      convert_luma<V, F, M, kStream>(Src::template luma<V, kOrder>(at.y1),
                                     chroma, k, at.rgb1, dither[1]);
    }
  }
}

// The pointers of one row or two, as one that for_vectors moves.
template <class Src, PixelFormat F, int kRows>
struct RowCursor {
  Place &at;
  LOX_INLINE void move(ptrdiff_t pixels) const {
    at.y0 += pixels * Src::kLumaBytes;
    at.rgb0 += pixels * F.bytes;
    Src::move_chroma(at, pixels);
    if constexpr (kRows == 2) {
      at.y1 += pixels * Src::kLumaBytes;
      at.rgb1 += pixels * F.bytes;
    }
  }
  LOX_INLINE void advance(ptrdiff_t pixels) const {
    move(pixels);
    keep_pointer(at.y0);
    keep_pointer(at.y1);
    keep_pointer(at.chroma0);
    keep_pointer(at.chroma1);
    keep_pointer(at.rgb0);
    keep_pointer(at.rgb1);
  }
};

template <class V, class Src, PixelFormat F, class M, int kRows, bool kStream>
LOX_INLINE void convert_vectors(const YuvToRgbRows &rows, ptrdiff_t width) {
  const typename M::template Constants<V, Src::kU> constants;
  Place at = {rows.y[0],      rows.y[1],   rows.chroma[0],
              rows.chroma[1], rows.rgb[0], rows.rgb[1]};
  [[maybe_unused]] const bool fetch = rows.fetch;
  // Of a picture that is written past the caches, and so comes from behind them
  // itself, the source of the next rows is fetched: where it lies when rows
  // follow each other. Pictures of words are large before they are written so.
  constexpr bool kFetchesSource = kAhead != 0 && F.bytes == 2;
  [[maybe_unused]] const bool far = rows.far;
  const ptrdiff_t luma_row =
      kRows == 2 ? rows.y[1] - rows.y[0] : width * Src::kLumaBytes;
  Place next = at;
  if constexpr (kStream || kFetchesSource) {
    Src::move_chroma(next, luma_row / Src::kLumaBytes);
  }
  const ptrdiff_t chroma0_row = next.chroma0 - at.chroma0;
  const ptrdiff_t chroma1_row = next.chroma1 - at.chroma1;
  using Dithers = decltype(dither_of<F, V>(0, 0))[kRows];
  const auto dithers_at = [&](ptrdiff_t x, Dithers &d) LOX_INLINE_LAMBDA {
    d[0] = dither_of<F, V>(x, rows.row);
    if constexpr (kRows == 2) d[1] = dither_of<F, V>(x, rows.row + 1);
  };
  Dithers dithers;
  dithers_at(rows.column, dithers);
  for_units_and_last<V::n, 1>(
      width,
      [&]() LOX_INLINE_LAMBDA {
        if constexpr (kAhead != 0 && !kStream) {
          if (fetch) {
            prefetch(at.rgb0, kAhead, V::n * F.bytes);
            if (kRows == 2) prefetch(at.rgb1, kAhead, V::n * F.bytes);
          }
        }
        if (kStream || (kFetchesSource && far)) {
          prefetch(at.y0, kRows * luma_row, V::n * Src::kLumaBytes);
          if (kRows == 2) prefetch(at.y1, 2 * luma_row, V::n * Src::kLumaBytes);
          if (chroma0_row != 0) prefetch(at.chroma0, chroma0_row, V::n);
          if (chroma1_row != 0) prefetch(at.chroma1, chroma1_row);
        }
        step<V, Src, F, M, kRows, kStream>(at, constants, dithers);
      },
      [&]() LOX_INLINE_LAMBDA {
        dithers_at(rows.column + width - V::n, dithers);
        step<V, Src, F, M, kRows, false>(at, constants, dithers);
      },
      RowCursor<Src, F, kRows>{at});
}

#endif  // LOX_VECTORS

// Calls convert_one for rows, as often as is asked for.
template <int kRows, class Convert>
LOX_INLINE void for_rows(const YuvToRgbRows &first, Convert convert_one) {
  // One by one: as a whole it would be read before it is written.
  YuvToRgbRows rows = {{first.y[0], first.y[1]},
                       {first.chroma[0], first.chroma[1]},
                       {first.rgb[0], first.rgb[1]},
                       first.stream,
                       first.fetch,
                       first.column,
                       first.row};
  rows.far = first.far;
  for (int32_t left = first.count;;) {
    convert_one(rows);
    if (--left == 0) return;
    for (int i = 0; i < kRows; ++i) {
      rows.y[i] += first.y_step;
      rows.rgb[i] += first.rgb_step;
    }
    rows.chroma[0] += first.chroma_step[0];
    rows.chroma[1] += first.chroma_step[1];
    rows.row += kRows;
  }
}

#if LOX_VECTORS
// Where the rows of vectors end: a vector starts on a pair, so an odd last
// pixel is left to the rule.
template <class Src, class M>
LOX_INLINE ptrdiff_t whole_vectors(ptrdiff_t width) {
  const ptrdiff_t regular = tail_begin<M>(width);
  return Src::kTwoPixels ? regular & ~1 : regular;
}
#endif

#if LOX_VECTORS && !defined(LOX_SET_neon)
template <class Src, PixelFormat F, int kRows, class M = Bt601>
void convert(const YuvToRgbRows &first, ptrdiff_t width) {
  const ptrdiff_t whole = whole_vectors<Src, M>(width);
  const ptrdiff_t done = with_vectors(whole, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto by_vectors = [&]<bool kStream>() LOX_INLINE_LAMBDA {
      for_rows<kRows>(first, [&](const YuvToRgbRows &rows) LOX_INLINE_LAMBDA {
        convert_vectors<V, Src, F, M, kRows, kStream>(rows, whole);
        if (whole < width) {
          convert_pixels<Src, F, M, kRows>(rows, whole, width);
        }
      });
    };
    if (first.stream) return by_vectors.template operator()<true>();
    by_vectors.template operator()<false>();
  });
  if (done != 0) return;
  for_rows<kRows>(first, [&](const YuvToRgbRows &rows) LOX_INLINE_LAMBDA {
    convert_pixels<Src, F, M, kRows>(rows, 0, width);
  });
}
#else
// Apart from the loop over rows, or that takes registers from it.
template <class Src, PixelFormat F, int kRows, class M>
[[gnu::noinline]] void convert_once(const YuvToRgbRows &rows, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  const ptrdiff_t whole = whole_vectors<Src, M>(width);
  done = with_vectors(whole, [&]<class V>(V) LOX_INLINE_LAMBDA {
    convert_vectors<V, Src, F, M, kRows, false>(rows, whole);
  });
#endif
  convert_pixels<Src, F, M, kRows>(rows, done, width);
}
template <class Src, PixelFormat F, int kRows, class M = Bt601>
void convert(const YuvToRgbRows &first, ptrdiff_t width) {
  for_rows<kRows>(first, [&](const YuvToRgbRows &rows) LOX_INLINE_LAMBDA {
    convert_once<Src, F, kRows, M>(rows, width);
  });
}
#endif

// --- grey: every channel is Y -----------------------------------------------

template <PixelFormat F>
void grey_to_rgb(const uint8_t *y, uint8_t *rgb, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto k64 = V::make_factor(64);
    const uint8_t *from = y;
    uint8_t *to = rgb;
    for_vectors<V, 1>(
        width,
        [&]() LOX_INLINE_LAMBDA {
          if constexpr (F.bytes == 2) {
            typename V::W16 word;
            typename V::W16 unused;
            V::scale(V::template load<order_of(F)>(from), k64, word, unused);
            V::template store16<false>(
                to, V::template pack565<6, 6, 6>(word, word, word));
          } else {
            const auto bytes = V::load_bytes(from);
            V::template store3<false>(to, bytes, bytes, bytes);
          }
        },
        moving<1>(from), moving<F.bytes>(to));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    put_pixel<F>(rgb + x * F.bytes, {y[x], y[x], y[x]});
  }
}

#if LOX_VECTORS
constexpr int kStreamAlignment = Wide::kStreamAlignment;
void end_stream() { Wide::end_stream(); }
#else
constexpr int kStreamAlignment = 0;
void end_stream() {}
#endif

}  // namespace

#define LOX_CONVERT(Src, layout, rows, ...) \
  convert<Src, kPixelFormats[layout], rows __VA_OPT__(, ) __VA_ARGS__>

// One source's row of the table, in the order of RgbLayout. A source that
// shares no chroma has no kernel for two rows.
#define LOX_ONE_OR_TWO(Src, layout) \
  { LOX_CONVERT(Src, layout, 1), LOX_CONVERT(Src, layout, 2) }
#define LOX_ONE(Src, layout) \
  { LOX_CONVERT(Src, layout, 1), nullptr }
#define LOX_LAYOUTS(KERNELS, Src)                                        \
  {                                                                      \
    KERNELS(Src, kRgb565), KERNELS(Src, kBgr565), KERNELS(Src, kRgb888), \
        KERNELS(Src, kBgr888), KERNELS(Src, kRgba8888),                  \
        KERNELS(Src, kBgra8888), KERNELS(Src, kArgb8888),                \
        KERNELS(Src, kAbgr8888), KERNELS(Src, kDitheredRgb565),          \
        KERNELS(Src, kDitheredBgr565)                                    \
  }
#define LOX_TO_RGBA(Src, M) \
  { LOX_CONVERT(Src, kRgba8888, 1, M), LOX_CONVERT(Src, kRgba8888, 2, M) }

constinit const CscRows yuv_to_rgb_rows = {
    .yuv_to_rgb = {LOX_LAYOUTS(LOX_ONE_OR_TWO, Planar),
                   LOX_LAYOUTS(LOX_ONE_OR_TWO, SemiPlanar<0>),
                   LOX_LAYOUTS(LOX_ONE_OR_TWO, SemiPlanar<1>),
                   LOX_LAYOUTS(LOX_ONE, Full), LOX_LAYOUTS(LOX_ONE, Packed<0>),
                   LOX_LAYOUTS(LOX_ONE, Packed<1>)},
    .words_to_rgba = LOX_TO_RGBA(SemiPlanarWords, Bt601),
    .words_to_565 = {LOX_ONE_OR_TWO(SemiPlanarWords, kDitheredRgb565),
                     LOX_ONE_OR_TWO(SemiPlanarWords, kDitheredBgr565)},
    .bt601_full = {LOX_TO_RGBA(Planar, Bt601Full),
                   LOX_TO_RGBA(SemiPlanar<0>, Bt601Full),
                   LOX_TO_RGBA(SemiPlanar<1>, Bt601Full)},
    .bt709_planar = LOX_TO_RGBA(Planar, Bt709),
    .bt709_full_planar = LOX_TO_RGBA(Planar, Bt709Full),
    .grey_to_rgb565 = grey_to_rgb<kPixelFormats[kRgb565]>,
    .grey_to_rgb888 = grey_to_rgb<kPixelFormats[kRgb888]>,
    .stream_alignment = kStreamAlignment,
    .end_stream = end_stream,
};

}  // namespace lox::LOX_SET
