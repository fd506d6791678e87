// SPDX-License-Identifier: Apache-2.0
//
// Samples taken apart, put together and moved, a row at a time.
#include "csc/layout_rows.h"

#include "common/caches.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS
// Steps are short: several make a turn of a loop.
constexpr int kSteps = 2;

// Whether lines are fetched before this many bytes are written, as many having
// been read.
LOX_INLINE bool fetches(ptrdiff_t bytes) {
  return kAhead != 0 && memory_now().fetches &&
         static_cast<size_t>(bytes) >= memory_now().far_from / 2;
}

// Calls kernel.operator()<V, kFetch>() for n units of kBytes.
template <ptrdiff_t kBytes, class Kernel>
LOX_INLINE ptrdiff_t fetching_if_large(ptrdiff_t n, Kernel kernel) {
  if (fetches(n * kBytes)) {
    kernel.template operator()<Bulk, true>();
    return n;
  }
  return with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    kernel.template operator()<V, false>();
  });
}
#endif

void deinterleave(const uint8_t *src, uint8_t *even, uint8_t *odd,
                  ptrdiff_t n) {
  const ptrdiff_t pairs = n / 2;
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = fetching_if_large<2>(
      pairs, [&]<class V, bool kFetch>() LOX_INLINE_LAMBDA {
        const uint8_t *from = src;
        uint8_t *to0 = even;
        uint8_t *to1 = odd;
        for_vectors<V, kSteps>(
            pairs,
            [&]() LOX_INLINE_LAMBDA {
              if constexpr (kFetch) {
                prefetch(to0, kAhead, V::n);
                prefetch(to1, kAhead, V::n);
              }
              const auto two = V::load_deinterleave(from);
              V::store_bytes(to0, two.even);
              V::store_bytes(to1, two.odd);
            },
            moving<2>(from), moving<1>(to0), moving<1>(to1));
      });
#endif
  for (; i < pairs; ++i) {
    even[i] = src[2 * i];
    odd[i] = src[2 * i + 1];
  }
  if (n % 2 != 0) even[pairs] = src[2 * pairs];
}

void interleave(const uint8_t *even, const uint8_t *odd, uint8_t *dst,
                ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = fetching_if_large<2>(n, [&]<class V, bool kFetch>() LOX_INLINE_LAMBDA {
    const uint8_t *from0 = even;
    const uint8_t *from1 = odd;
    uint8_t *to = dst;
    for_vectors<V, kSteps>(
        n,
        [&]() LOX_INLINE_LAMBDA {
          if constexpr (kFetch) prefetch(to, kAhead, 2 * V::n);
          V::store_interleave(to, V::load_bytes(from0), V::load_bytes(from1));
        },
        moving<1>(from0), moving<1>(from1), moving<2>(to));
  });
#endif
  for (; i < n; ++i) {
    dst[2 * i] = even[i];
    dst[2 * i + 1] = odd[i];
  }
}

void deinterleave4(const uint8_t *src, uint8_t *const *planes, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  // Rows of large pictures are not long: lines are always fetched ahead, which
  // pays in the caches, too, where three planes are written. So does a page
  // ahead, of the source, on the processors where that was measured.
  if (n >= Bulk::n) {
    using P = PlaneOps<Bulk>;
    ptrdiff_t at = 0;
    const bool fetch = kAhead != 0 && memory_now().fetches_rgb;
    const auto put = [&](int k, auto v) LOX_INLINE_LAMBDA {
      if (planes[k] == nullptr) return;
      prefetch(planes[k] + at, kAhead, P::n);
      P::store_plane(planes[k] + at, v);
    };
    for_vectors<Bulk, 1>(
        n,
        [&]() LOX_INLINE_LAMBDA {
          if (fetch) prefetch(src + 4 * at, kPage, 4 * P::n);
          const auto v = P::load_deinterleave4(src + 4 * at);
          put(0, v.a);
          put(1, v.b);
          put(2, v.c);
          put(3, v.d);
        },
        moving<1>(at));
    i = n;
  }
#endif
  for (; i < n; ++i) {
    for (int k = 0; k < 4; ++k) {
      if (planes[k] != nullptr) planes[k][i] = src[4 * i + k];
    }
  }
}

void interleave4(const uint8_t *const *planes, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    using P = PlaneOps<V>;
    ptrdiff_t at = 0;
    const auto take = [&](int k) LOX_INLINE_LAMBDA {
      return planes[k] != nullptr ? P::load_plane(planes[k] + at)
                                  : P::all_255();
    };
    for_vectors<V, 1>(
        n,
        [&]() LOX_INLINE_LAMBDA {
          P::store_interleave4(dst + 4 * at, take(0), take(1), take(2),
                               take(3));
        },
        moving<1>(at));
  });
#endif
  for (; i < n; ++i) {
    for (int k = 0; k < 4; ++k) {
      dst[4 * i + k] = planes[k] != nullptr ? planes[k][i] : uint8_t{255};
    }
  }
}

#if LOX_VECTORS
// n bytes, each made of the two at its place in src.
template <class Make>
LOX_INLINE ptrdiff_t make_bytes(const uint8_t *src, uint8_t *dst, ptrdiff_t n,
                                Make make) {
  return with_vectors(n, [&]<class V>(V v) LOX_INLINE_LAMBDA {
    const uint8_t *from = src;
    uint8_t *to = dst;
    for_vectors<V, kSteps>(
        n, [&]() LOX_INLINE_LAMBDA { V::store_bytes(to, make(v, from)); },
        moving<2>(from), moving<1>(to));
  });
}
#endif

void even(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  const ptrdiff_t pairs = n / 2;
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = make_bytes(src, dst, pairs,
                 []<class V>(V, const uint8_t *p) LOX_INLINE_LAMBDA {
                   return V::load_deinterleave(p).even;
                 });
#endif
  for (; i < pairs; ++i) dst[i] = src[2 * i];
  if (n % 2 != 0) dst[pairs] = src[2 * pairs];
}

void narrow_10_to_8(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  i = make_bytes(src, dst, n,
                 []<class V>(V, const uint8_t *p)
                     LOX_INLINE_LAMBDA { return V::load_10_to_8(p); });
#endif
  for (; i < n; ++i) {
    const int word = src[2 * i] | src[2 * i + 1] << 8;
    dst[i] = static_cast<uint8_t>(word >> 2);
  }
}

void swap(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  ptrdiff_t i = 0;
#if LOX_VECTORS
  // In place no vector may do pairs again.
  const auto kernel = [&]<class V, bool kFetch>() LOX_INLINE_LAMBDA {
    constexpr ptrdiff_t kPairs = V::kBlock / 2;
    const uint8_t *from = src;
    uint8_t *to = dst;
    const size_t left = for_whole_units<2 * kPairs, 1>(
        static_cast<size_t>(n), [&]() LOX_INLINE_LAMBDA {
          if constexpr (kFetch) prefetch(to, kAhead, 2 * V::kBlock);
          V::swap_2_blocks(to, from);
        });
    if (left >= kPairs) V::put_block(to, V::swap_pairs(V::take_block(from)));
    i = n - n % kPairs;
  };
  // As little work as a copy.
  if (n >= static_cast<ptrdiff_t>(kLongCopy / 2) && !fetches(2 * n)) {
    kernel.template operator()<Bulk, false>();
  } else {
    fetching_if_large<1>(2 * n, kernel);
  }
#endif
  for (; i < n; ++i) {
    const uint8_t first = src[2 * i];
    dst[2 * i] = src[2 * i + 1];
    dst[2 * i + 1] = first;
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
    const auto step = [&]() LOX_INLINE_LAMBDA {
      const auto low = V::load_deinterleave(src + 4 * pair);
      const auto high = V::load_deinterleave(src + 4 * pair + 2 * V::n);
      V::store_bytes(y + 2 * pair, low.even);
      V::store_bytes(y + 2 * pair + V::n, high.even);
      auto chroma = V::deinterleave(low.odd, high.odd);
      if constexpr (kAverage) {
        chroma.even = V::average_down(V::load_bytes(u + pair), chroma.even);
        chroma.odd = V::average_down(V::load_bytes(v + pair), chroma.odd);
      }
      V::store_bytes(u + pair, chroma.even);
      V::store_bytes(v + pair, chroma.odd);
    };
    for_whole_units<V::n, 1>(static_cast<size_t>(width / 2), step,
                             moving<1>(pair));
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
    .deinterleave = deinterleave,
    .even = even,
    .interleave = interleave,
    .deinterleave4 = deinterleave4,
    .interleave4 = interleave4,
    .swap = swap,
    .narrow_10_to_8 = narrow_10_to_8,
    .yuyv = yuyv<false>,
    .yuyv_average = yuyv<true>,
};

}  // namespace lox::LOX_SET
