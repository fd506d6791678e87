// SPDX-License-Identifier: Apache-2.0
//
// Samples that lose bits, a row at a time.
#include "dither/dither_rows.h"

#include "simd/dither.h"
#include "simd/simd.h"
#include "simd/words.h"

#if LOX_VECTORS
#if defined(LOX_SET_neon)
#include "dither/dither_neon.h"
#else
#include "dither/dither_x86.h"
#endif
#endif

namespace lox::LOX_SET {

namespace {

int saturated(int v) { return v > 255 ? 255 : v; }

// --- pixels -----------------------------------------------------------------

template <PixelFormat To>
LOX_INLINE void put_dithered(uint8_t *dst, Rgb c, ptrdiff_t x, ptrdiff_t y) {
  const DitherPlace at = dither_place(x, y);
  put_pixel<To>(dst, {saturated(c.r + *at.five), saturated(c.g + *at.six),
                      saturated(c.b + *at.five)});
}

template <PixelFormat F, PixelFormat To>
void rgb_to_565(const uint8_t *src, uint8_t *dst, ptrdiff_t width, ptrdiff_t x,
                ptrdiff_t y) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    using D = DitherOps<V>;
    const uint8_t *from = src;
    uint8_t *to = dst;
    auto thresholds = D::template thresholds<F>(dither_place(x, y));
    const auto step = [&]() LOX_INLINE_LAMBDA {
      const auto pixels = V::template take_pixels<F>(from);
      V::template store_565<To>(to, D::template add<F>(pixels, thresholds));
    };
    for_units_and_last<V::n, 1>(
        width, step,
        [&]() LOX_INLINE_LAMBDA {
          thresholds =
              D::template thresholds<F>(dither_place(x + width - V::n, y));
          step();
        },
        taken<F.bytes>(from), moving<To.bytes>(to));
  });
#endif
  for (ptrdiff_t i = done; i < width; ++i) {
    put_dithered<To>(dst + i * To.bytes, get_pixel<F>(src + i * F.bytes), x + i,
                     y);
  }
}

void grey_to_565(const uint8_t *src, uint8_t *dst, ptrdiff_t width, ptrdiff_t x,
                 ptrdiff_t y) {
  constexpr PixelFormat kTo = kPixelFormats[kRgb565];
  ptrdiff_t done = 0;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to = dst;
    auto dither = V::make_dither(dither_place(x, y));
    const auto step = [&]() LOX_INLINE_LAMBDA {
      DitherOps<V>::store_grey_565(to, from, dither);
    };
    for_units_and_last<V::n, 1>(
        width, step,
        [&]() LOX_INLINE_LAMBDA {
          dither = V::make_dither(dither_place(x + width - V::n, y));
          step();
        },
        moving<1>(from), moving<kTo.bytes>(to));
  });
#endif
  for (ptrdiff_t i = done; i < width; ++i) {
    put_dithered<kTo>(dst + i * kTo.bytes, {src[i], src[i], src[i]}, x + i, y);
  }
}

// --- samples ----------------------------------------------------------------

template <int kBytes>
void fewer_bits(const uint8_t *src, uint8_t *dst, ptrdiff_t n,
                const FewerBits &how) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    using D = DitherOps<V>;
    const auto constants = [&](ptrdiff_t first) LOX_INLINE_LAMBDA {
      const ptrdiff_t phase = first % FewerBits::kPeriod;
      if constexpr (kBytes == 2) {
        return D::words_to_bytes(how, phase);
      } else {
        return D::bytes_to_bytes(how, phase);
      }
    };
    const uint8_t *from = src;
    uint8_t *to = dst;
    auto k = constants(0);
    const auto step = [&]() LOX_INLINE_LAMBDA {
      V::store_bytes(to, D::take(from, k));
    };
    for_units_and_last<V::n, 2>(
        n, step,
        [&]() LOX_INLINE_LAMBDA {
          k = constants(n - V::n);
          step();
        },
        moving<kBytes>(from), moving<1>(to));
  });
#endif
  for (; i < n; ++i) {
    const int sample = kBytes == 2 ? word_at(src + 2 * i) : src[i];
    const int sum = sample + how.added[i % FewerBits::kPeriod];
    dst[i] =
        static_cast<uint8_t>((sum < how.most ? sum : how.most) >> how.shift);
  }
}

template <bool kUp>
LOX_INLINE int shifted(int word) {
  return kUp ? word << 6 : word >> 6;
}

template <bool kUp>
void shift_words(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to = dst;
    for_units<V::n / 2, 2>(
        n,
        [&]() LOX_INLINE_LAMBDA {
          DitherOps<V>::template shift_words<kUp>(from, to);
        },
        moving<2>(from), moving<2>(to));
  });
#endif
  for (; i < n; ++i) {
    put_word(dst + 2 * i, shifted<kUp>(word_at(src + 2 * i)));
  }
}

void pairs_down(const uint8_t *src, uint8_t *first, uint8_t *second,
                ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to0 = first;
    uint8_t *to1 = second;
    for_units<V::n / 2, 2>(
        n,
        [&]() LOX_INLINE_LAMBDA { DitherOps<V>::pairs_down(from, to0, to1); },
        moving<4>(from), moving<2>(to0), moving<2>(to1));
  });
#endif
  for (; i < n; ++i) {
    put_word(first + 2 * i, shifted<false>(word_at(src + 4 * i)));
    put_word(second + 2 * i, shifted<false>(word_at(src + 4 * i + 2)));
  }
}

void pairs_up(const uint8_t *first, const uint8_t *second, uint8_t *dst,
              ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    const uint8_t *from0 = first;
    const uint8_t *from1 = second;
    uint8_t *to = dst;
    for_units<V::n / 2, 2>(
        n,
        [&]() LOX_INLINE_LAMBDA { DitherOps<V>::pairs_up(from0, from1, to); },
        moving<2>(from0), moving<2>(from1), moving<4>(to));
  });
#endif
  for (; i < n; ++i) {
    put_word(dst + 4 * i, shifted<true>(word_at(first + 2 * i)));
    put_word(dst + 4 * i + 2, shifted<true>(word_at(second + 2 * i)));
  }
}

}  // namespace

#define LOX_FROM(layout)                                          \
  {                                                               \
    rgb_to_565<kPixelFormats[layout], kPixelFormats[kRgb565]>,    \
        rgb_to_565<kPixelFormats[layout], kPixelFormats[kBgr565]> \
  }

constinit const DitherRows dither_rows = {
    .rgb_to_565 = {LOX_FROM(kRgb888), LOX_FROM(kBgr888), LOX_FROM(kRgba8888),
                   LOX_FROM(kBgra8888), LOX_FROM(kArgb8888),
                   LOX_FROM(kAbgr8888)},
    .grey_to_565 = grey_to_565,
    .words = fewer_bits<2>,
    .bytes = fewer_bits<1>,
    .words_down = shift_words<false>,
    .words_up = shift_words<true>,
    .pairs_down = pairs_down,
    .pairs_up = pairs_up,
};

}  // namespace lox::LOX_SET
