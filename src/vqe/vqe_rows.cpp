// SPDX-License-Identifier: Apache-2.0
//
// Sharpening and deblocking. Both are computed in bytes alone: half the
// operations that 16-bit elements would take.
#include "vqe/vqe_rows.h"

#include <string.h>

#include <type_traits>

#include "common/caches.h"
#include "simd/simd.h"
#include "vqe/deblock_rule.h"

namespace lox::LOX_SET {

namespace {

uint8_t sharpened(const uint8_t *at, ptrdiff_t pitch) {
  const int near = at[-1] + at[1] + at[-pitch] + at[pitch];
  const int far = at[-2] + at[2] + at[-2 * pitch] + at[2 * pitch] +
                  at[-pitch - 1] + at[-pitch + 1] + at[pitch - 1] +
                  at[pitch + 1];
  const int detail = (16 * *at - (2 * near + far)) >> 4;
  return detail::limit_to_byte(*at + detail);
}

#if LOX_VECTORS
constexpr bool kBulkIsNarrower = !std::is_same_v<Bulk, Wide>;

// Of several samples: their mean, rounded up at every average of two, and their
// sum modulo 256, which is enough to tell what the roundings have added.
template <class B>
struct MeanAndSum {
  typename B::Reg mean, sum;
};
template <class B>
LOX_INLINE MeanAndSum<B> average(typename B::Reg a, typename B::Reg b) {
  return {B::average_up(a, b), B::add(a, b)};
}
template <class B>
LOX_INLINE MeanAndSum<B> average(MeanAndSum<B> a, MeanAndSum<B> b) {
  return {B::average_up(a.mean, b.mean), B::add(a.sum, b.sum)};
}

// c + ((16 c - s) >> 4) is 2 c - m, where m is s / 16 rounded up. The tree of
// averages yields m or m + 1, for its roundings add up to 7/4 at most; the
// difference shows in the low bits of s.
template <class B>
LOX_INLINE typename B::Reg sharpen(typename B::Reg c, MeanAndSum<B> near,
                                   MeanAndSum<B> far) {
  using Reg = typename B::Reg;
  const Reg mean = B::average_up(near.mean, far.mean);
  const Reg sum = B::add(B::add(near.sum, far.sum), near.sum);
  const Reg m = B::less_excess_16(mean, sum);
  return B::sub_saturating(B::add_saturating(c, B::sub_saturating(c, m)),
                           B::sub_saturating(m, c));
}

// B::n samples of kRows rows.
template <class B, int kRows>
LOX_INLINE void sharpen_at(const uint8_t *p, ptrdiff_t pitch, uint8_t *q) {
  using Reg = typename B::Reg;
  // In the order of memory: where loads move their pointer for nothing it is
  // one for all. `step` is the way to the next.
  const uint8_t *at = p - 2 * pitch;
  const auto take = [&](int line, int column, ptrdiff_t step)
                        LOX_INLINE_LAMBDA {
                          if constexpr (!kLoadsMovePointers) {
                            return B::load_once(p + line * pitch + column);
                          }
                          const Reg v = B::load_once(at);
                          at += step;
                          keep_pointer(at);
                          return v;
                        };
  Reg row[kRows + 4];               // from two rows above on
  MeanAndSum<B> beside[kRows + 2];  // from the row above on
  MeanAndSum<B> two_away[kRows];
  // The three samples around the middle of row i - 1.
  const auto take_3 = [&](int i, ptrdiff_t step) LOX_INLINE_LAMBDA {
    const Reg left = take(i - 1, -1, 1);
    row[i + 1] = take(i - 1, 0, 1);
    beside[i] = average<B>(left, take(i - 1, 1, step));
  };
  row[0] = take(-2, 0, pitch - 1);
  take_3(0, pitch - 3);
  LOX_UNROLL
  for (int i = 0; i < kRows; ++i) {
    const Reg left = take(i, -2, 1);
    take_3(i + 1, 1);
    two_away[i] = average<B>(left, take(i, 2, pitch - (i + 1 < kRows ? 4 : 3)));
  }
  take_3(kRows + 1, pitch - 1);
  row[kRows + 3] = take(kRows + 1, 0, 0);
  LOX_UNROLL
  for (int i = 0; i < kRows; ++i) {
    const MeanAndSum<B> near =
        average<B>(beside[i + 1], average<B>(row[i + 1], row[i + 3]));
    const MeanAndSum<B> far =
        average<B>(average<B>(beside[i], beside[i + 2]),
                   average<B>(two_away[i], average<B>(row[i], row[i + 4])));
    B::store(q, sharpen<B>(row[i + 2], near, far));
    q += pitch;
  }
}
template <class V, int kRows>
LOX_INLINE void sharpen_rows(const uint8_t *src, ptrdiff_t pitch, uint8_t *dst,
                             ptrdiff_t n) {
  using B = ByteOps<V>;
  // After the first vector those that lie in one line each.
  sharpen_at<B, kRows>(src, pitch, dst);
  const ptrdiff_t first =
      V::n - (reinterpret_cast<uintptr_t>(src) & (V::n - 1));
  const uint8_t *from = src + first;
  uint8_t *to = dst + first;
  for_vectors<V, 1>(
      n - first,
      [&]() LOX_INLINE_LAMBDA {
        // What the next rows need, or memory would not keep up: as it lies, for
        // rows follow each other, rather than a line of each row.
        const ptrdiff_t done = kRows * (from - src);
        prefetch(src + (kRows + 2) * pitch, done, kRows * V::n);
        prefetch(dst + kRows * pitch, done, kRows * V::n);
        sharpen_at<B, kRows>(from, pitch, to);
      },
      moving<1>(from), moving<1>(to));
}
#endif

void sharpen(const uint8_t *src, ptrdiff_t pitch, uint8_t *dst, ptrdiff_t n,
             ptrdiff_t rows) {
#if LOX_VECTORS
  // Two rows at a time have most of their neighbours in common.
  const auto sharpen_all = [&]<class V>(V) LOX_INLINE_LAMBDA {
    ptrdiff_t y = 0;
    for (; y + 2 <= rows; y += 2) {
      sharpen_rows<V, 2>(src + y * pitch, pitch, dst + y * pitch, n);
    }
    if (y < rows) {
      sharpen_rows<V, 1>(src + y * pitch, pitch, dst + y * pitch, n);
    }
  };
  if constexpr (kBulkIsNarrower) {
    if (n >= Bulk::n &&
        static_cast<size_t>(pitch) * static_cast<size_t>(rows) >=
            memory_now().far_from) {
      return sharpen_all(Bulk());
    }
  }
  if (with_vectors(n, sharpen_all) > 0) return;
#endif
  for (ptrdiff_t y = 0; y < rows; ++y) {
    for (ptrdiff_t x = 0; x < n; ++x) {
      dst[y * pitch + x] = sharpened(src + y * pitch + x, pitch);
    }
  }
}

#if LOX_VECTORS
// The rule of deblock_sample in bytes. v >> 3 is (quarter + (c - b)) >> 1,
// which is the sum of the halves and what their lowest bits carry. It may
// exceed a signed byte: then the samples stay as they are.
template <class B>
LOX_INLINE void deblock(typename B::Reg &a, typename B::Reg &b,
                        typename B::Reg &c, typename B::Reg &d, int strength) {
  using Reg = typename B::Reg;
  const Reg quarter = B::half_signed(B::half_difference(a, d));
  const Reg carry =
      B::bit_and(B::bit_and(quarter, B::exclusive_or(b, c)), B::fill8(1));
  const Reg eighth = B::add_saturating_signed(
      B::half_difference(c, b), B::add(B::half_signed(quarter), carry));
  const Reg size = B::magnitude(eighth);
  const Reg excess = B::sub_saturating(size, B::fill8(strength));
  const Reg change = B::sub_saturating(size, B::add_saturating(excess, excess));
  const Reg negative = B::negative(eighth);
  const Reg up = B::bit_and_not(negative, change);
  const Reg down = B::bit_and(negative, change);
  b = B::sub_saturating(B::add_saturating(b, up), down);
  c = B::add_saturating(B::sub_saturating(c, up), down);
  const Reg limit = B::half(change);
  const Reg outer =
      B::max_signed(B::min_signed(quarter, limit), B::sub(B::fill8(0), limit));
  a = B::sub(a, outer);
  d = B::add(d, outer);
}

template <class B>
LOX_INLINE void deblock_columns(uint8_t *first, ptrdiff_t stride,
                                int strength) {
  typename B::Reg a = B::load(first);
  typename B::Reg b = B::load(first + stride);
  typename B::Reg c = B::load(first + 2 * stride);
  typename B::Reg d = B::load(first + 3 * stride);
  deblock<B>(a, b, c, d, strength);
  B::store(first, a);
  B::store(first + stride, b);
  B::store(first + 2 * stride, c);
  B::store(first + 3 * stride, d);
}

template <class B>
LOX_INLINE void deblock_8_rows(uint8_t *const (&row)[8], int strength) {
  typename B::FourColumns v = B::load_four_columns(row);
  deblock<B>(v.a, v.b, v.c, v.d, strength);
  B::store_four_columns(row, v);
}

// Filters `bytes` bytes, fewer than a vector, of each row in a copy: done
// again, as the last vector of a row elsewhere, they would be filtered twice.
template <int kRows, int kBytes, class Filter>
LOX_INLINE void in_copy(uint8_t *const (&row)[kRows], ptrdiff_t bytes,
                        Filter filter) {
  uint8_t copy[kRows][kBytes] = {};
  for (int i = 0; i < kRows; ++i) {
    memcpy(copy[i], row[i], static_cast<size_t>(bytes));
  }
  filter(copy);
  for (int i = 0; i < kRows; ++i) {
    memcpy(row[i], copy[i], static_cast<size_t>(bytes));
  }
}
#endif

void deblock_horizontal(uint8_t *first, ptrdiff_t stride, ptrdiff_t n,
                        int strength) {
#if LOX_VECTORS
  using B = ByteOps<Wide>;
  for (; n >= B::n; n -= B::n) {
    deblock_columns<B>(first, stride, strength);
    first += B::n;
  }
  if (n > 0) {
    uint8_t *const row[4] = {first, first + stride, first + 2 * stride,
                             first + 3 * stride};
    in_copy<4, B::n>(row, n, [&](uint8_t(&copy)[4][B::n]) LOX_INLINE_LAMBDA {
      deblock_columns<B>(copy[0], B::n, strength);
    });
  }
#else
  for (ptrdiff_t x = 0; x < n; ++x) deblock_sample(first + x, stride, strength);
#endif
}

void deblock_vertical(uint8_t *first, ptrdiff_t stride, ptrdiff_t edges,
                      int rows, int strength) {
#if LOX_VECTORS
  using B = ByteOps<Wide>;
  // Rows that are missing are the last one again: it is read before any is
  // written, and the same is written each time.
  uint8_t *row[8];
  for (int i = 0; i < 8; ++i) {
    row[i] = first + (i < rows ? i : rows - 1) * stride;
  }
  ptrdiff_t bytes = 8 * edges;
  for (; bytes >= B::n; bytes -= B::n) {
    for (int i = 0; i < 8; ++i) prefetch(row[i], 8 * stride);
    deblock_8_rows<B>(row, strength);
    for (int i = 0; i < 8; ++i) row[i] += B::n;
  }
  if (bytes > 0) {
    in_copy<8, B::n>(
        row, bytes, [&](uint8_t(&copy)[8][B::n]) LOX_INLINE_LAMBDA {
          uint8_t *const copied[8] = {copy[0], copy[1], copy[2], copy[3],
                                      copy[4], copy[5], copy[6], copy[7]};
          deblock_8_rows<B>(copied, strength);
        });
  }
#else
  for (ptrdiff_t edge = 0; edge < edges; ++edge) {
    for (int y = 0; y < rows; ++y) {
      deblock_sample(first + 8 * edge + y * stride, 1, strength);
    }
  }
#endif
}

}  // namespace

constinit const VqeRows vqe_rows = {
    .sharpen = sharpen,
    .deblock_horizontal = deblock_horizontal,
    .deblock_vertical = deblock_vertical,
};

}  // namespace lox::LOX_SET
