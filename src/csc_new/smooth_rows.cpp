// SPDX-License-Identifier: Apache-2.0
//
// YUV to RGB with interpolated chroma, a row at a time. The portable form is
// the rule; the vector form gives the same bytes.
#include "csc_new/smooth_rows.h"

#include "simd/simd.h"
#include "simd/store_pixels.h"
#include "simd/words.h"

#if defined(LOX_SET_neon)
#include "csc_new/smooth_neon.h"
#elif LOX_VECTORS
#include "csc_new/smooth_x86.h"
#endif

namespace lox::LOX_SET {

namespace {

// --- samples to numbers -----------------------------------------------------

int16_t centred(int sample, int middle, int times) {
  return static_cast<int16_t>((sample - middle) * times);
}

int16_t chroma_of_word(const uint8_t *p, int factor) {
  const int word = word_at(p);
  return centred(factor == kOnTop ? word >> 6 : word & 1023, 512, 4);
}

#if LOX_VECTORS
template <bool kWords, class Ops>
LOX_INLINE auto load_samples(const uint8_t *p, [[maybe_unused]] int factor) {
  if constexpr (kWords) {
    return Ops::centred(Ops::load_words(p, factor));
  } else {
    return Ops::centred(Ops::load_bytes(p));
  }
}
#endif

template <bool kWords, bool kPairs>
void samples(const uint8_t *const from[2], [[maybe_unused]] int factor,
             int16_t *const to[2], ptrdiff_t n) {
  constexpr int kBytes = kWords ? 2 : 1;
  ptrdiff_t done = 0;
#if LOX_VECTORS
  if constexpr (kPairs) {
    done = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
      using Ops = SmoothOps<V>;
      const uint8_t *p = from[0];
      int16_t *first = to[0];
      int16_t *second = to[1];
      for_units<V::n / 2, 1>(
          n,
          [&]() LOX_INLINE_LAMBDA {
            const auto v = load_samples<kWords, Ops>(p, factor);
            Ops::store(first, Ops::even(v));
            Ops::store(second, Ops::odd(v));
          },
          moving<2 * kBytes>(p), moving<1>(first), moving<1>(second));
    });
  } else {
    done = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
      using Ops = SmoothOps<V>;
      for (int plane = 0; plane < 2; ++plane) {
        const uint8_t *p = from[plane];
        int16_t *out = to[plane];
        for_vectors<V, 1>(
            n,
            [&]() LOX_INLINE_LAMBDA {
              Ops::store(out, load_samples<kWords, Ops>(p, factor));
            },
            moving<kBytes>(p), moving<1>(out));
      }
    });
  }
#endif
  for (ptrdiff_t i = done; i < n; ++i) {
    for (int kind = 0; kind < 2; ++kind) {
      const uint8_t *const p =
          kPairs ? from[0] + (2 * i + kind) * kBytes : from[kind] + i * kBytes;
      to[kind][i] = kWords ? chroma_of_word(p, factor) : centred(*p, 128, 16);
    }
  }
}

// --- numbers for every pixel ------------------------------------------------

void every_pixel(const int16_t *row, const int16_t *, int16_t *to,
                 ptrdiff_t n) {
#if LOX_VECTORS
  using Ops = SmoothOps<Wide>;
  for (ptrdiff_t i = 0; i < n; i += Ops::n / 2) {
    Ops::store(to + i, Ops::shift_left<4>(Ops::load(row + i)));
  }
#else
  for (ptrdiff_t i = 0; i < n; ++i) to[i] = static_cast<int16_t>(16 * row[i]);
#endif
}

template <SmoothSiting kSiting>
void enlarge(const int16_t *near_row, const int16_t *far_row, int16_t *to,
             ptrdiff_t n) {
#if LOX_VECTORS
  using Ops = SmoothOps<Wide>;
  const auto between = [](const int16_t *a,
                          const int16_t *b) LOX_INLINE_LAMBDA {
    const auto v = Ops::load(a);
    return Ops::add(Ops::add(v, Ops::shift_left<1>(v)), Ops::load(b));
  };
  for (ptrdiff_t i = 0; i < n; i += Ops::n / 2) {
    const int16_t *const a = near_row + i;
    const int16_t *const b = far_row + i;
    const auto here = between(a, b);
    const auto next = between(a + 1, b + 1);
    if constexpr (kSiting == kLeft) {
      Ops::store_interleave(to + 2 * i, Ops::shift_left<2>(here),
                            Ops::shift_left<1>(Ops::add(here, next)));
    } else {
      const auto three = Ops::add(here, Ops::shift_left<1>(here));
      Ops::store_interleave(to + 2 * i, Ops::add(three, between(a - 1, b - 1)),
                            Ops::add(three, next));
    }
  }
#else
  const auto between = [=](ptrdiff_t i) {
    return 3 * near_row[i] + far_row[i];
  };
  for (ptrdiff_t i = 0; i < n; ++i) {
    const int here = between(i);
    const int first = kSiting == kLeft ? 4 * here : 3 * here + between(i - 1);
    const int second = kSiting == kLeft ? 2 * (here + between(i + 1))
                                        : 3 * here + between(i + 1);
    to[2 * i] = static_cast<int16_t>(first);
    to[2 * i + 1] = static_cast<int16_t>(second);
  }
#endif
}

// --- pixels: the rule -------------------------------------------------------

int scaled(int number, int factor) {
  return (number * factor + (1 << 14)) >> 15;
}

int between(int low, int v, int high) {
  return v < low ? low : v > high ? high : v;
}

int saturated(int v) { return between(INT16_MIN, v, INT16_MAX); }

// `v` times 2^-kSmoothBitsF16, the last bit rounded, halves away from zero.
int half_float(int v) {
  if (v == 0) return 0;
  int magnitude = v < 0 ? -v : v;
  int exponent = 15 - kSmoothBitsF16 + 10;
  // To the eleven bits that a half-float has, one of which is not stored.
  while (magnitude < 1 << 10) {
    magnitude *= 2;
    --exponent;
  }
  int dropped = 0;
  while (magnitude >> dropped >= 1 << 11) ++dropped;
  if (dropped > 0) magnitude = (magnitude + (1 << (dropped - 1))) >> dropped;
  // A magnitude of twelve bits goes into the exponent, as it should.
  return (v < 0 ? 0x8000 : 0) + ((exponent + dropped) << 10) + magnitude -
         (1 << 10);
}

template <int kTarget>
constexpr int kPixelBytes = [] {
  if constexpr (kTarget < kRgbLayouts) {
    return kPixelFormats[kTarget].bytes;
  } else {
    return kTarget == kRgbaF16 ? 8 : 4;
  }
}();

template <int kTarget>
void put(uint8_t *p, Rgb c) {
  if constexpr (kTarget == kRgbaF16) {
    put_word(p, half_float(c.r));
    put_word(p + 2, half_float(c.g));
    put_word(p + 4, half_float(c.b));
    put_word(p + 6, 0x3C00);
  } else if constexpr (kTarget == kRgba1010102) {
    const int r = between(0, c.r >> kSmoothBits1010102, 1023);
    const int g = between(0, c.g >> kSmoothBits1010102, 1023);
    const int b = between(0, c.b >> kSmoothBits1010102, 1023);
    put_word(p, r | g << 10);
    put_word(p + 2, g >> 6 | b << 4 | 0xC000);
  } else {
    put_pixel<kPixelFormats[kTarget]>(p, {between(0, c.r >> kSmoothBits, 255),
                                          between(0, c.g >> kSmoothBits, 255),
                                          between(0, c.b >> kSmoothBits, 255)});
  }
}

template <bool kWords>
int luma_number(const uint8_t *row, int factor, ptrdiff_t x) {
  if constexpr (kWords) {
    const int word = row[2 * x] | row[2 * x + 1] << 8;
    return (factor == kOnTop ? word >> 6 : word & 1023) << 5;
  } else {
    return row[x] << 7;
  }
}

// Measured: stores past the caches of less than a line are slow.
#if LOX_VECTORS
constexpr int kStreamAlignment =
    Wide::kStreamAlignment >= 64 ? Wide::kStreamAlignment : 0;
void end_stream() { Wide::end_stream(); }
#else
constexpr int kStreamAlignment = 0;
void end_stream() {}
#endif

template <bool kWords, int kTarget>
void to_rgb(const uint8_t *luma, int factor, const int16_t *const chroma[2],
            const SmoothMatrix &matrix, [[maybe_unused]] bool stream,
            uint8_t *rgb, ptrdiff_t width) {
  ptrdiff_t done = 0;
  // Pixels of two bytes hold more of green.
  constexpr bool kGreenApart = kPixelBytes<kTarget> == 2;
#if LOX_VECTORS
  done = with_vectors(width, [&]<class V>(V) LOX_INLINE_LAMBDA {
    using Ops = SmoothOps<V>;
    constexpr Order kOrder = kPixelBytes<kTarget> == 2   ? Order::kWords
                             : kPixelBytes<kTarget> == 3 ? Order::kBytes
                                                         : Order::kQuads;
    const auto k = Ops::factors(matrix);
    const uint8_t *y = luma;
    const int16_t *u = chroma[0];
    const int16_t *v = chroma[1];
    uint8_t *to = rgb;
    const auto step = [&]<bool kStream>() LOX_INLINE_LAMBDA {
      typename V::W16 number;
      if constexpr (kWords) {
        number = Ops::template luma_of_words<kOrder>(y, factor);
      } else {
        number = Ops::template luma_of_bytes<kOrder>(y);
      }
      const auto c = Ops::template channels<kGreenApart>(
          number, Ops::template load_chroma<kOrder>(u),
          Ops::template load_chroma<kOrder>(v), k);
      if constexpr (kTarget == kRgbaF16) {
        Ops::template store_f16<kStream>(to, c);
      } else if constexpr (kTarget == kRgba1010102) {
        Ops::template store_1010102<kStream>(to, c);
      } else {
        store_pixels<kPixelFormats[kTarget], V, kSmoothBits, kSmoothBits,
                     kSmoothBits, kStream>(to, c.red, c.green, c.blue);
      }
    };
    const auto convert = [&]<bool kStream>() LOX_INLINE_LAMBDA {
      for_units_and_last<V::n, 1>(
          width,
          [&]() LOX_INLINE_LAMBDA { step.template operator()<kStream>(); },
          [&]() LOX_INLINE_LAMBDA { step.template operator()<false>(); },
          moving < kWords ? 2 : 1 > (y), moving<1>(u), moving<1>(v),
          moving<kPixelBytes<kTarget>>(to));
    };
    if constexpr (V::kStreamAlignment == kStreamAlignment &&
                  kStreamAlignment != 0) {
      if (stream) return convert.template operator()<true>();
    }
    convert.template operator()<false>();
  });
#endif
  for (ptrdiff_t x = done; x < width; ++x) {
    const int number = luma_number<kWords>(luma, factor, x);
    const int u = chroma[0][x];
    const int v = chroma[1][x];
    const int y = scaled(number, matrix.luma) + matrix.offset;
    const int y_green =
        kGreenApart ? scaled(number, matrix.luma_green) + matrix.offset_green
                    : y;
    put<kTarget>(
        rgb + x * kPixelBytes<kTarget>,
        {saturated(y + scaled(v, matrix.red_v)),
         y_green + scaled(u, matrix.green_u) + scaled(v, matrix.green_v),
         saturated(y + scaled(u, matrix.blue_u))});
  }
}

}  // namespace

#define LOX_TARGETS(words)                                                  \
  {                                                                         \
    to_rgb<words, kRgb565>, to_rgb<words, kBgr565>, to_rgb<words, kRgb888>, \
        to_rgb<words, kBgr888>, to_rgb<words, kRgba8888>,                   \
        to_rgb<words, kBgra8888>, to_rgb<words, kArgb8888>,                 \
        to_rgb<words, kAbgr8888>, to_rgb<words, kRgba1010102>,              \
        to_rgb<words, kRgbaF16>                                             \
  }

constinit const SmoothRows smooth_rows = {
    .samples = {samples<false, false>, samples<false, true>,
                samples<true, false>, samples<true, true>},
    .enlarge = {enlarge<kLeft>, enlarge<kCentre>, every_pixel},
    .to_rgb = {LOX_TARGETS(false), LOX_TARGETS(true)},
    .stream_alignment = kStreamAlignment,
    .end_stream = end_stream,
};

}  // namespace lox::LOX_SET
