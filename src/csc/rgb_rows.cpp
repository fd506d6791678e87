// SPDX-License-Identifier: Apache-2.0
//
// From RGB, a row at a time. A matrix gives three weighted sums; luma is
// truncated, chroma rounded (Quirk: the rule has it so):
//
//   Y = (sum >> 8) + offset, U and V = ((sum + 128) >> 8) + 128
//
// which is the high byte of the sum with 256 * offset, or with 128 + 128 * 256,
// added to it: results fit a byte, so 16 bits are enough, and unsigned.
#include "csc/rgb_rows.h"

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

// --- matrices ---------------------------------------------------------------

struct Factors {
  int r, g, b;
};

// BT.601 to luma 16..235.
struct Bt601 {
  static constexpr Factors kY = {66, 129, 25};
  static constexpr Factors kU = {-38, -74, 112};
  static constexpr Factors kV = {112, -94, -18};
  static constexpr int kOffset = 16;
};

// BT.601, full range.
struct Bt601Full {
  static constexpr Factors kY = {77, 150, 29};
  static constexpr Factors kU = {-43, -84, 127};
  static constexpr Factors kV = {127, -106, -21};
  static constexpr int kOffset = 0;
};

// BT.709. Quirk: luma's blue factor is 25, which makes white 244.
struct Bt709 {
  static constexpr Factors kY = {47, 157, 25};
  static constexpr Factors kU = {-26, -86, 112};
  static constexpr Factors kV = {112, -102, -10};
  static constexpr int kOffset = 16;
};

// --- the rule ---------------------------------------------------------------

int weighted_sum(Factors k, Rgb p) { return k.r * p.r + k.g * p.g + k.b * p.b; }

template <class M>
uint8_t luma_of(Rgb p) {
  return static_cast<uint8_t>((weighted_sum(M::kY, p) >> 8) + M::kOffset);
}
uint8_t chroma_of(Factors k, Rgb p) {
  return static_cast<uint8_t>(((weighted_sum(k, p) + 128) >> 8) + 128);
}

// --- vectors ----------------------------------------------------------------

#if LOX_VECTORS

// Fetches n pixels a page ahead, where a row wants that.
template <class V, PixelFormat F>
LOX_INLINE void fetch_page_ahead([[maybe_unused]] const uint8_t *rgb,
                                 [[maybe_unused]] bool fetch) {
  if constexpr (kAhead != 0) {
    if (fetch) prefetch(rgb, kPage, V::n * F.bytes);
  }
}

template <class V, PixelFormat F, Factors K>
LOX_INLINE auto weights(int bias) {
  return V::template make_weights<F, K.r, K.g, K.b>(bias);
}
template <class V, PixelFormat F, class M>
LOX_INLINE auto luma_weights() {
  return weights<V, F, M::kY>(M::kOffset * 256);
}
template <class V, PixelFormat F, Factors K>
LOX_INLINE auto chroma_weights() {
  return weights<V, F, K>(128 + 128 * 256);
}

#endif

// --- to YUV -----------------------------------------------------------------

template <PixelFormat F, class M>
void luma(const RgbToYuvRow &row, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto y_weights = luma_weights<V, F, M>();
    [[maybe_unused]] const bool fetch = row.fetch;
    const uint8_t *rgb = row.rgb;
    uint8_t *y = row.y;
    for_vectors<V, 2>(
        width,
        [&]() LOX_INLINE_LAMBDA {
          fetch_page_ahead<V, F>(rgb, fetch);
          V::store_bytes(
              y, V::weighted_sum(V::template take_pixels<F>(rgb), y_weights));
        },
        taken<F.bytes>(rgb), moving<1>(y));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    row.y[x] = luma_of<M>(get_pixel<F>(row.rgb + x * F.bytes));
  }
}

template <PixelFormat F, class M, ChromaKind kChroma>
void luma_and_chroma(const RgbToYuvRow &row, ptrdiff_t width) {
  constexpr Factors kFirst = kChroma == kChromaVu ? M::kV : M::kU;
  constexpr Factors kSecond = kChroma == kChromaVu ? M::kU : M::kV;
  ptrdiff_t done = 0;
#if LOX_VECTORS
  // A vector starts on a pair, so an odd last pixel is left to the rule.
  const ptrdiff_t whole = width & ~1;
  done = with_vectors(whole, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto y_weights = luma_weights<V, F, M>();
    const auto first_weights = chroma_weights<V, F, kFirst>();
    const auto second_weights = chroma_weights<V, F, kSecond>();
    [[maybe_unused]] const bool fetch = row.fetch;
    const uint8_t *rgb = row.rgb;
    uint8_t *y = row.y;
    uint8_t *chroma0 = row.chroma[0];
    uint8_t *chroma1 = row.chroma[1];
    // Chroma bytes of two pixels.
    constexpr int kBytes0 = kChroma == kChromaPlanes ? 1 : 2;
    constexpr int kBytes1 = kChroma == kChromaPlanes ? 1 : 0;
    for_vectors<V, 1>(
        whole,
        [&]() LOX_INLINE_LAMBDA {
          fetch_page_ahead<V, F>(rgb, fetch);
          const auto pixels = V::template take_pixels<F>(rgb);
          V::store_bytes(y, V::weighted_sum(pixels, y_weights));
          const auto pairs =
              V::weighted_sums_of_even(pixels, first_weights, second_weights);
          if constexpr (kChroma == kChromaPlanes) {
            V::store_rows(chroma0, chroma1, pairs);
          } else {
            V::store_pairs(chroma0, pairs);
          }
        },
        taken<F.bytes>(rgb), moving<1>(y), moving<kBytes0, 2>(chroma0),
        moving<kBytes1, 2>(chroma1));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    const Rgb pixel = get_pixel<F>(row.rgb + x * F.bytes);
    row.y[x] = luma_of<M>(pixel);
    if (x % 2 != 0 || x + 1 == width) continue;
    const uint8_t first = chroma_of(kFirst, pixel);
    const uint8_t second = chroma_of(kSecond, pixel);
    if constexpr (kChroma == kChromaPlanes) {
      row.chroma[0][x / 2] = first;
      row.chroma[1][x / 2] = second;
    } else {
      row.chroma[0][x] = first;
      row.chroma[0][x + 1] = second;
    }
  }
}

template <PixelFormat F>
void full_chroma(const RgbToYuvRow &row, ptrdiff_t width) {
  using M = Bt601;
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const auto y_weights = luma_weights<V, F, M>();
    const auto u_weights = chroma_weights<V, F, M::kU>();
    const auto v_weights = chroma_weights<V, F, M::kV>();
    [[maybe_unused]] const bool fetch = row.fetch;
    const uint8_t *rgb = row.rgb;
    uint8_t *y = row.y;
    uint8_t *u = row.chroma[0];
    uint8_t *v = row.chroma[1];
    for_vectors<V, 1>(
        width,
        [&]() LOX_INLINE_LAMBDA {
          fetch_page_ahead<V, F>(rgb, fetch);
          const auto pixels = V::template take_pixels<F>(rgb);
          V::store_bytes(y, V::weighted_sum(pixels, y_weights));
          V::store_bytes(u, V::weighted_sum(pixels, u_weights));
          V::store_bytes(v, V::weighted_sum(pixels, v_weights));
        },
        taken<F.bytes>(rgb), moving<1>(y), moving<1>(u), moving<1>(v));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    const Rgb pixel = get_pixel<F>(row.rgb + x * F.bytes);
    row.y[x] = luma_of<M>(pixel);
    row.chroma[0][x] = chroma_of(M::kU, pixel);
    row.chroma[1][x] = chroma_of(M::kV, pixel);
  }
}

// --- to RGB -----------------------------------------------------------------

template <PixelFormat F, PixelFormat To>
void to_rgb(const uint8_t *src, uint8_t *dst, ptrdiff_t width) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to = dst;
    for_vectors<V, 1>(
        width,
        [&]() LOX_INLINE_LAMBDA {
          const auto pixels = V::template take_pixels<F>(from);
          if constexpr (To.bytes == 2) {
            V::template store_565<To>(to, pixels);
          } else {
            V::store_rgba(to, pixels);
          }
        },
        taken<F.bytes>(from), moving<To.bytes>(to));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    put_pixel<To>(dst + x * To.bytes, get_pixel<F>(src + x * F.bytes));
  }
}

template <PixelFormat F, PixelFormat To>
void reorder(const uint8_t *src, uint8_t *dst, ptrdiff_t width) {
  constexpr ByteOrder kOrder = byte_order(F, To);
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to = dst;
    for_vectors<V, 1>(
        width,
        [&]() LOX_INLINE_LAMBDA { V::template reorder<F, To>(from, to); },
        taken<F.bytes>(from), taken<To.bytes>(to));
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    for (int i = 0; i < To.bytes; ++i) {
      dst[x * To.bytes + i] =
          kOrder.at[i] < 0 ? 255 : src[x * F.bytes + kOrder.at[i]];
    }
  }
}

}  // namespace

#define LOX_REORDER_TO(from, to) reorder<kPixelFormats[from], kPixelFormats[to]>
#define LOX_REORDER(from)                                                 \
  {                                                                       \
    LOX_REORDER_TO(from, kRgb888), LOX_REORDER_TO(from, kBgr888),         \
        LOX_REORDER_TO(from, kRgba8888), LOX_REORDER_TO(from, kBgra8888), \
        LOX_REORDER_TO(from, kArgb8888), LOX_REORDER_TO(from, kAbgr8888)  \
  }
#define LOX_TO_YUV(layout, M)                                   \
  {                                                             \
    luma<kPixelFormats[layout], M>, {                           \
      luma_and_chroma<kPixelFormats[layout], M, kChromaPlanes>, \
          luma_and_chroma<kPixelFormats[layout], M, kChromaUv>, \
          luma_and_chroma<kPixelFormats[layout], M, kChromaVu>  \
    }                                                           \
  }

constinit const RgbRows rgb_rows = {
    .to_yuv = {LOX_TO_YUV(kRgb565, Bt601), LOX_TO_YUV(kBgr565, Bt601),
               LOX_TO_YUV(kRgb888, Bt601), LOX_TO_YUV(kBgr888, Bt601),
               LOX_TO_YUV(kRgba8888, Bt601), LOX_TO_YUV(kBgra8888, Bt601),
               LOX_TO_YUV(kArgb8888, Bt601), LOX_TO_YUV(kAbgr8888, Bt601)},
    .bt601_full = LOX_TO_YUV(kRgba8888, Bt601Full),
    .bt709 = LOX_TO_YUV(kRgba8888, Bt709),
    .rgba8888_to_yuv444 = full_chroma<kPixelFormats[kRgba8888]>,
    .argb8888_to_yuv444 = full_chroma<kPixelFormats[kArgb8888]>,
    .rgba8888_to_rgb565 =
        to_rgb<kPixelFormats[kRgba8888], kPixelFormats[kRgb565]>,
    .rgb888_to_rgb565 = to_rgb<kPixelFormats[kRgb888], kPixelFormats[kRgb565]>,
    .rgb565_to_rgba8888 =
        to_rgb<kPixelFormats[kRgb565], kPixelFormats[kRgba8888]>,
    .reorder = {LOX_REORDER(kRgb888), LOX_REORDER(kBgr888),
                LOX_REORDER(kRgba8888), LOX_REORDER(kBgra8888),
                LOX_REORDER(kArgb8888), LOX_REORDER(kAbgr8888)},
};

}  // namespace lox::LOX_SET
