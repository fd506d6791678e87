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

// A plane of a tile or more in squares of cache lines, downwards, so that the
// destination is written along its rows: the lines of the next square are
// fetched before they are written.
template <class V, int kUnit>
void transpose_plane(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                     ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height) {
  constexpr ptrdiff_t kCols = V::template kCols<kUnit>;
  constexpr ptrdiff_t kRows = V::template kRows<kUnit>;
  constexpr ptrdiff_t kSquare = V::kLines * (kUnit == 3 ? 32 : 64 / kUnit);
  // What is smaller is near already.
  const bool fetch =
      kAhead != 0 && int64_t{width} * height * kUnit > int64_t{kLongCopy};
  for (ptrdiff_t left = 0; left < width; left += kSquare) {
    const ptrdiff_t right = at_most(left + kSquare, width);
    const ptrdiff_t x = at_most(left, width - kCols);
    for (ptrdiff_t top = 0; top < height; top += kSquare) {
      const ptrdiff_t bottom = at_most(top + kSquare, height);
      const ptrdiff_t y = at_most(top, height - kRows);
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

template <class V, int kUnit>
constexpr bool holds_tile(ptrdiff_t width, ptrdiff_t height) {
  return width >= V::template kCols<kUnit> &&
         height >= V::template kRows<kUnit>;
}

#endif

template <int kUnit>
void transpose(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
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

#if LOX_VECTORS
// n units, a run or more. The last run ends at n and may do units again.
template <class V, int kUnit>
LOX_INLINE void reverse_runs(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  constexpr ptrdiff_t kRun = V::template kRun<kUnit>;
  constexpr ptrdiff_t kRuns = kAhead == 0 ? 2 * kRun : 4 * kRun;
  const uint8_t *const end = dst + n * kUnit;
  const size_t left = for_whole_units<kRuns, 1>(
      static_cast<size_t>(n), [&]() LOX_INLINE_LAMBDA {
        if (kAhead != 0 && end - dst > kAhead) {
          prefetch(dst, kAhead, kRuns * kUnit);
        }
        for (ptrdiff_t i = 0; i < kRuns; i += kRun) {
          V::template reverse_run<kUnit>(src, dst);
        }
      });
  for_units<kRun, 1>(
      static_cast<ptrdiff_t>(left),
      [&]() LOX_INLINE_LAMBDA { V::template reverse_run<kUnit>(src, dst); },
      taken<-kUnit>(src), taken<kUnit>(dst));
}
#endif

template <int kUnit>
void reverse(const uint8_t *src, uint8_t *dst, ptrdiff_t n) {
  const uint8_t *from = src + n * kUnit;
#if LOX_VECTORS
  if (n >= WideRotate::kRun<kUnit>) {
    return reverse_runs<WideRotate, kUnit>(from, dst, n);
  }
  if constexpr (NarrowRotate::kRun<kUnit> < WideRotate::kRun<kUnit>) {
    if (n >= NarrowRotate::kRun<kUnit>) {
      return reverse_runs<NarrowRotate, kUnit>(from, dst, n);
    }
  }
#endif
  for (; n > 0; --n, dst += kUnit) {
    from -= kUnit;
    memcpy(dst, from, kUnit);
  }
}

}  // namespace

constinit const RotateRows rotate_rows = {
    .reverse = {reverse<1>, reverse<2>, reverse<3>, reverse<4>},
    .transpose = {transpose<1>, transpose<2>, transpose<3>, transpose<4>},
};

}  // namespace lox::LOX_SET
