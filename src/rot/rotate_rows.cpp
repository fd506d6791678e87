// SPDX-License-Identifier: Apache-2.0
//
// Planes transposed by tiles of as many rows and columns as registers hold, and
// rows written backwards.
#include "rot/rotate_rows.h"

#include <string.h>

#include "common/caches.h"
#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "rot/rotate_neon.h"
#elif LOX_VECTORS
#include "rot/rotate_x86.h"
#endif

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS

// Whether planes of so many bytes are beyond the second cache: the lines of the
// source are then fetched.
LOX_INLINE bool is_far(int64_t bytes) {
  return kAhead != 0 && static_cast<uint64_t>(bytes) >= memory_now().far_from;
}

LOX_INLINE constexpr ptrdiff_t at_most(ptrdiff_t a, ptrdiff_t b) {
  return a < b ? a : b;
}

// A line of tiles of kTile units each, along which the pointers move by a step
// of their own from unit to unit. The last tile ends at `length` and may do
// units again. A tile is some hundred instructions: unlike for_units, this has
// them once.
template <class V, int kUnit, int kTile>
LOX_INLINE void transpose_line(const uint8_t *src, ptrdiff_t src_step,
                               ptrdiff_t src_unit, uint8_t *dst,
                               ptrdiff_t dst_step, ptrdiff_t dst_unit,
                               ptrdiff_t length) {
  for (;;) {
    do {
      V::template transpose_tile<kUnit>(src, src_step, dst, dst_step);
      src += kTile * src_unit;
      dst += kTile * dst_unit;
      length -= kTile;
    } while (length >= kTile);
    if (length <= 0) return;
    src -= (kTile - length) * src_unit;
    dst -= (kTile - length) * dst_unit;
    length = kTile;
  }
}

// Fetches the source of a block that will be transposed. Each of its rows may
// be a page of its own, which no processor does by itself.
template <int kUnit>
LOX_INLINE void fetch_rows(const uint8_t *src, ptrdiff_t src_step,
                           ptrdiff_t width, ptrdiff_t height) {
  for (ptrdiff_t y = 0; y < height; ++y) {
    prefetch(src + y * src_step, 0, static_cast<int>(width * kUnit));
  }
}

// A plane of a tile or more in squares of cache lines, downwards, so that the
// destination is written along its rows.
template <class V, int kUnit>
void transpose_plane(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                     ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
  constexpr ptrdiff_t kCols = V::template kCols<kUnit>;
  constexpr ptrdiff_t kRows = V::template kRows<kUnit>;
  constexpr ptrdiff_t kSquare = V::kLines * (kUnit == 3 ? 32 : 64 / kUnit);
  const int64_t bytes = int64_t{width} * height * kUnit;
  // What is smaller is near already.
  const bool fetch =
      kAhead != 0 && memory_now().fetches && bytes > int64_t{kLongCopy};
  const bool far = is_far(bytes);
  for (ptrdiff_t left = 0; left < width; left += kSquare) {
    const ptrdiff_t right = at_most(left + kSquare, width);
    const ptrdiff_t x = at_most(left, width - kCols);
    for (ptrdiff_t top = 0; top < height; top += kSquare) {
      const ptrdiff_t bottom = at_most(top + kSquare, height);
      const ptrdiff_t y = at_most(top, height - kRows);
      if (far && bottom < height) {
        fetch_rows<kUnit>(src + bottom * src_step + left * kUnit, src_step,
                          right - left, at_most(kSquare, height - bottom));
      }
      if (fetch && bottom < height) {
        for (ptrdiff_t i = left; i < right; ++i) {
          const uint8_t *const next = dst + i * dst_step + bottom * kUnit;
          for (ptrdiff_t end = 0; end < kSquare * kUnit;) {
            end = at_most(end + 64, kSquare * kUnit);
            prefetch(next, end - 1);
          }
        }
      }
      if constexpr (kUnit == 4) {
        // Down: a destination line is written at once, which counts where lines
        // displace each other.
        for (ptrdiff_t column = left; column < right; column += kCols) {
          const ptrdiff_t at = at_most(column, width - kCols);
          transpose_line<V, kUnit, kRows>(
              src + y * src_step + at * kUnit, src_step, src_step,
              dst + at * dst_step + y * kUnit, dst_step, kUnit, bottom - y);
        }
      } else {
        for (ptrdiff_t row = top; row < bottom; row += kRows) {
          const ptrdiff_t at = at_most(row, height - kRows);
          transpose_line<V, kUnit, kCols>(
              src + at * src_step + x * kUnit, src_step, kUnit,
              dst + x * dst_step + at * kUnit, dst_step, dst_step, right - x);
        }
      }
    }
  }
}

// The same past the caches, of whole squares: what the height leaves is not
// done. A line is written at once, or its parts would go one by one. The source
// of a part is near.
template <class V, int kUnit, bool kPart>
void stream_plane(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                  ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
  constexpr ptrdiff_t kCols = V::template kCols<kUnit>;
  constexpr ptrdiff_t kRows = V::template kRows<kUnit>;
  constexpr ptrdiff_t kSquare = 64 / kUnit;
  // Several lines of a source row before the next one.
  constexpr ptrdiff_t kBlock = 4 * kSquare;
  for (ptrdiff_t left = 0; left < width; left += kBlock) {
    const ptrdiff_t right = at_most(left + kBlock, width);
    for (ptrdiff_t top = 0; top + kSquare <= height; top += kSquare) {
      const ptrdiff_t bottom = top + kSquare;
      if constexpr (!kPart) {
        fetch_rows<kUnit>(src + bottom * src_step + left * kUnit, src_step,
                          right - left, at_most(kSquare, height - bottom));
      }
      for (ptrdiff_t column = left; column < right; column += kCols) {
        const ptrdiff_t x = at_most(column, width - kCols);
        for (ptrdiff_t y = top; y < bottom; y += kRows) {
          V::template transpose_tile<kUnit, true>(
              src + y * src_step + x * kUnit, src_step,
              dst + x * dst_step + y * kUnit, dst_step);
        }
      }
    }
  }
  V::end_stream();
}

template <class V, int kUnit>
constexpr bool holds_tile(ptrdiff_t width, ptrdiff_t height) {
  return width >= V::template kCols<kUnit> &&
         height >= V::template kRows<kUnit>;
}

#endif

template <int kUnit>
void transpose_near(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                    ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
#if LOX_VECTORS
  if (holds_tile<WideRotate, kUnit>(width, height)) {
    return transpose_plane<WideRotate, kUnit>(src, src_step, dst, dst_step,
                                              width, height);
  }
  if constexpr (NarrowRotate::kRows<kUnit> < WideRotate::kRows<kUnit>) {
    if (holds_tile<NarrowRotate, kUnit>(width, height)) {
      return transpose_plane<NarrowRotate, kUnit>(src, src_step, dst, dst_step,
                                                  width, height);
    }
  }
#endif
  for (ptrdiff_t y = 0; y < height; ++y) {
    for (ptrdiff_t x = 0; x < width; ++x) {
      memcpy(dst + x * dst_step + y * kUnit, src + y * src_step + x * kUnit,
             kUnit);
    }
  }
}

template <int kUnit, bool kPart>
void transpose_past(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                    ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
#if LOX_VECTORS
  if constexpr (kStreams<kUnit>) {
    constexpr ptrdiff_t kLine = 64;
    constexpr ptrdiff_t kSquare = kLine / kUnit;
    const bool aligned =
        reinterpret_cast<uintptr_t>(dst) % kLine == 0 && dst_step % kLine == 0;
    if (aligned && width >= StreamRotate::kCols<kUnit> && height >= kSquare) {
      stream_plane<StreamRotate, kUnit, kPart>(src, src_step, dst, dst_step,
                                               width, height);
      const ptrdiff_t rest = height % kSquare;
      if (rest == 0) return;
      // As many rows as the ordinary tiles want, some of them again.
      const ptrdiff_t rows = rest < kSquare / 2 ? kSquare / 2 : rest;
      const ptrdiff_t y = height - rows;
      src += y * src_step;
      dst += y * kUnit;
      height = rows;
    }
  }
#endif
  transpose_near<kUnit>(src, src_step, dst, dst_step, width, height);
}

template <int kUnit>
void transpose(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
               ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
#if LOX_VECTORS
  if (kStreams<kUnit> && streams_columns(width, height, kUnit)) {
    return transpose_past<kUnit, false>(src, src_step, dst, dst_step, width,
                                        height);
  }
#endif
  transpose_near<kUnit>(src, src_step, dst, dst_step, width, height);
}

#if LOX_VECTORS
// n units, a run or more, of which reverse_run reads those at one end and
// writes those at the other. The last run may do units again.
template <class V, int kUnit>
LOX_INLINE void reverse_runs(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  constexpr ptrdiff_t kRun = V::template kRun<kUnit>;
  constexpr ptrdiff_t kRuns = kAhead == 0 ? 2 * kRun : 4 * kRun;
  constexpr int kMove = V::kReadsForward ? kUnit : -kUnit;
  const uint8_t *from = V::kReadsForward ? src : src + n * kUnit;
  uint8_t *to = V::kReadsForward ? dst + n * kUnit : dst;
  const bool fetch = kAhead != 0 && memory_now().fetches;
  const size_t left = for_whole_units<kRuns, 1>(
      static_cast<size_t>(n), [&]() LOX_INLINE_LAMBDA {
        if (fetch && to - dst > kAhead) {
          prefetch(to, -kAhead, kRuns * kUnit);
        }
        for (ptrdiff_t i = 0; i < kRuns; i += kRun) {
          V::template reverse_run<kUnit>(from, to);
        }
      });
  for_units<kRun, 1>(
      static_cast<ptrdiff_t>(left),
      [&]() LOX_INLINE_LAMBDA { V::template reverse_run<kUnit>(from, to); },
      taken<kMove>(from), taken<-kMove>(to));
}
#endif

template <int kUnit>
void reverse(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
#if LOX_VECTORS
  if (n >= WideRotate::kRun<kUnit>) {
    return reverse_runs<WideRotate, kUnit>(src, dst, n);
  }
  if constexpr (NarrowRotate::kRun<kUnit> < WideRotate::kRun<kUnit>) {
    if (n >= NarrowRotate::kRun<kUnit>) {
      return reverse_runs<NarrowRotate, kUnit>(src, dst, n);
    }
  }
#endif
  const uint8_t *from = src + n * kUnit;
  for (; n > 0; --n, dst += kUnit) {
    from -= kUnit;
    memcpy(dst, from, kUnit);
  }
}

}  // namespace

constinit const RotateRows rotate_rows = {
    .reverse = {reverse<1>, reverse<2>, reverse<3>, reverse<4>},
    .transpose = {transpose<1>, transpose<2>, transpose<3>, transpose<4>},
    .transpose_past = {transpose_past<1, true>, transpose_past<2, true>,
                       transpose_past<3, true>, transpose_past<4, true>},
};

}  // namespace lox::LOX_SET
