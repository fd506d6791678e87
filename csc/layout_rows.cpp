// SPDX-License-Identifier: Apache-2.0
//
// Samples taken apart, put together and moved, a row at a time.
#include "csc/layout_rows.h"

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS

// Rows with n positions of which a vector does V::n: calls step(V(), position)
// for whole vectors that cover them, the last of which may begin in the one
// before. Returns the positions done.
template <class Step>
LOX_INLINE ptrdiff_t cover(ptrdiff_t n, Step step) {
  return with_vectors(n, [&]<class V>(V v) LOX_INLINE_LAMBDA {
    ptrdiff_t at = 0;
    for (; at + 2 * V::n <= n; at += 2 * V::n) {
      step(v, at);
      step(v, at + V::n);
    }
    for (; at + V::n <= n; at += V::n) step(v, at);
    if (at < n) step(v, n - V::n);
  });
}

#endif

void split(const uint8_t *src, uint8_t *even, uint8_t *odd, ptrdiff_t n) {
  const ptrdiff_t pairs = n / 2;
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = cover(pairs, [&]<class V>(V, ptrdiff_t at) LOX_INLINE_LAMBDA {
    const auto two = V::load_unzip(src + 2 * at);
    V::store_bytes(even + at, two.even);
    V::store_bytes(odd + at, two.odd);
  });
#endif
  for (; i < pairs; ++i) {
    even[i] = src[2 * i];
    odd[i] = src[2 * i + 1];
  }
  if (n % 2 != 0) even[pairs] = src[2 * pairs];
}

void even(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  const ptrdiff_t pairs = n / 2;
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = cover(pairs, [&]<class V>(V, ptrdiff_t at) LOX_INLINE_LAMBDA {
    V::store_bytes(dst + at, V::load_unzip(src + 2 * at).even);
  });
#endif
  for (; i < pairs; ++i) dst[i] = src[2 * i];
  if (n % 2 != 0) dst[pairs] = src[2 * pairs];
}

void merge(const uint8_t *even, const uint8_t *odd, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = cover(n, [&]<class V>(V, ptrdiff_t at) LOX_INLINE_LAMBDA {
    V::store_zip(dst + 2 * at, V::load_bytes(even + at),
                 V::load_bytes(odd + at));
  });
#endif
  for (; i < n; ++i) {
    dst[2 * i] = even[i];
    dst[2 * i + 1] = odd[i];
  }
}

void swap(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  // In place no vector may do pairs again.
  with_vectors(2 * n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    for (; i + V::n / 2 <= n; i += V::n / 2) {
      V::store_bytes(dst + 2 * i, V::swap_pairs(V::load_bytes(src + 2 * i)));
    }
  });
#endif
  for (; i < n; ++i) {
    const uint8_t first = src[2 * i];
    dst[2 * i] = src[2 * i + 1];
    dst[2 * i + 1] = first;
  }
}

void words_by_4(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = cover(n, [&]<class V>(V, ptrdiff_t at) LOX_INLINE_LAMBDA {
    V::store_bytes(dst + at, V::load_words_by_4(src + 2 * at));
  });
#endif
  for (; i < n; ++i) {
    const int word = src[2 * i] | src[2 * i + 1] << 8;
    dst[i] = static_cast<uint8_t>(word >> 2);
  }
}

template <bool kAverage>
void yuyv(const uint8_t *src, uint8_t *y, uint8_t *u, uint8_t *v,
          ptrdiff_t width) {
  const auto put = [](uint8_t &c, uint8_t sample) LOX_INLINE_LAMBDA {
    c = kAverage ? static_cast<uint8_t>((c + sample) >> 1) : sample;
  };
  ptrdiff_t pair = 0;
#if LOX_VECTORS
  // Averages are not made twice: no vector may do pairs again.
  with_vectors(width / 2, [&]<class V>(V) LOX_INLINE_LAMBDA {
    for (; pair + V::n <= width / 2; pair += V::n) {
      const auto low = V::load_unzip(src + 4 * pair);
      const auto high = V::load_unzip(src + 4 * pair + 2 * V::n);
      V::store_bytes(y + 2 * pair, low.even);
      V::store_bytes(y + 2 * pair + V::n, high.even);
      auto chroma = V::unzip(low.odd, high.odd);
      if constexpr (kAverage) {
        chroma.even = V::average_down(V::load_bytes(u + pair), chroma.even);
        chroma.odd = V::average_down(V::load_bytes(v + pair), chroma.odd);
      }
      V::store_bytes(u + pair, chroma.even);
      V::store_bytes(v + pair, chroma.odd);
    }
  });
#endif
  for (; 2 * pair < width; ++pair) {
    const uint8_t *const p = src + 4 * pair;
    y[2 * pair] = p[0];
    if (2 * pair + 1 < width) y[2 * pair + 1] = p[2];
    put(u[pair], p[1]);
    put(v[pair], p[3]);
  }
}

}  // namespace

constinit const LayoutRows layout_rows = {
    .split = split,
    .even = even,
    .merge = merge,
    .swap = swap,
    .words_by_4 = words_by_4,
    .yuyv = yuyv<false>,
    .yuyv_average = yuyv<true>,
};

}  // namespace lox::LOX_SET
