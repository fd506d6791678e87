// SPDX-License-Identifier: Apache-2.0
//
// The vector layer as kernels see it. A kernel unit is compiled once for each
// instruction set with LOX_SET naming it and puts everything into lox::LOX_SET.
// Wide is the set's vector type, Narrow the one for rows too short for it (the
// same where there is no narrower one), Bulk the one to move what lies beyond
// the caches, where whole cache lines from one register were measured to be
// slow. The portable set has none of the three (LOX_VECTORS is 0) and runs the
// plain rule.
//
// A kernel unit includes this header, its subject's own, common/caches.h for
// its constants and C headers only: inline functions of other headers could be
// compiled with the set's instructions and then be called by everybody.
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(LOX_SET_avx512)
#include "simd/x86_avx2.h"
#include "simd/x86_avx512.h"
#include "simd/x86_sse41.h"
#define LOX_WIDE Avx512
#define LOX_NARROW Sse41
#define LOX_BULK Avx2
#elif defined(LOX_SET_avx2)
#include "simd/x86_avx2.h"
#include "simd/x86_sse41.h"
#define LOX_WIDE Avx2
#define LOX_NARROW Sse41
#define LOX_BULK Avx2
#elif defined(LOX_SET_sse41)
#include "simd/x86_sse41.h"
#define LOX_WIDE Sse41
#define LOX_NARROW Sse41
#define LOX_BULK Sse41
#elif defined(LOX_SET_neon)
#include "simd/neon_rgb.h"
#define LOX_WIDE Neon
#define LOX_NARROW Neon
#define LOX_BULK Neon
#endif

#if defined(LOX_WIDE)
#define LOX_VECTORS 1
namespace lox::LOX_SET {
using Wide = LOX_WIDE;
using Narrow = LOX_NARROW;
using Bulk = LOX_BULK;
constexpr bool kNarrower = Narrow::n < Wide::n;
}  // namespace lox::LOX_SET
#if defined(LOX_SET_neon)
#include "simd/neon_bytes.h"
#include "simd/neon_planes.h"
#else
#include "simd/x86_bytes.h"
#include "simd/x86_planes.h"
#endif
#else
#define LOX_VECTORS 0
#endif

#include "simd/op.h"
#include "simd/pixel_format.h"

#if LOX_VECTORS
namespace lox::LOX_SET {

// Calls kernel(V()) with the widest vector type that a row of `width` pixels
// fills. Returns the pixels done: all, or none when the row is too short.
template <class Kernel>
LOX_INLINE ptrdiff_t with_vectors(ptrdiff_t width, Kernel kernel) {
  if (width >= Wide::n) {
    kernel(Wide());
    return width;
  }
  if constexpr (kNarrower) {
    if (width >= Narrow::n) {
      kernel(Narrow());
      return width;
    }
  }
  return 0;
}

// Makes a pointer that moves a register of its own where that costs nothing:
// compilers else compute it from another one in every step.
template <class T>
LOX_INLINE void keep_pointer([[maybe_unused]] T &p) {
  if constexpr (kLoadsMovePointers) __asm__("" : "+r"(p));
}

// A pointer, or an index, of a loop below: it goes kNum / kDen further for each
// unit. One that is `taken` is moved by the step itself.
template <int kNum, int kDen, bool kTaken, class T>
struct Cursor {
  T &at;
  LOX_INLINE void move(ptrdiff_t units) const { at += units * kNum / kDen; }
  LOX_INLINE void advance(ptrdiff_t units) const {
    if constexpr (kTaken) return;
    move(units);
    keep_pointer(at);
  }
};
template <int kNum, int kDen = 1, class T>
LOX_INLINE Cursor<kNum, kDen, false, T> moving(T &at) {
  return {at};
}
template <int kNum, int kDen = 1, class T>
LOX_INLINE Cursor<kNum, kDen, true, T> taken(T &at) {
  return {at};
}

// Calls step() for every whole kUnits of n units, kSteps times in an iteration
// where so many are left, and has the cursors follow. Returns the units left.
// Iterations are counted down to zero: a comparison less than counting units.
template <size_t kUnits, int kSteps, class Step, class... Cursors>
LOX_INLINE size_t for_whole_units(size_t n, Step step, Cursors... cursors) {
  const auto move_on = [&]() LOX_INLINE_LAMBDA {
    step();
    (cursors.advance(kUnits), ...);
  };
  for (size_t left = n / (kSteps * kUnits); left != 0; --left) {
    LOX_UNROLL
    for (int i = 0; i < kSteps; ++i) move_on();
  }
  if constexpr (kSteps > 1) {
    for (size_t left = n / kUnits % kSteps; left != 0; --left) move_on();
  }
  return n % kUnits;
}

// Does n units in whole steps. What is left is done by last(), a step that ends
// with the row and so does some units again, which is cheaper than doing those
// that are left one by one: there must be kUnits of them before the row's end.
// It is apart because its address may be any.
template <size_t kUnits, int kSteps, class Step, class Last, class... Cursors>
LOX_INLINE void for_units_and_last(ptrdiff_t n, Step step, Last last,
                                   Cursors... cursors) {
  const size_t left =
      for_whole_units<kUnits, kSteps>(static_cast<size_t>(n), step, cursors...);
  if (left > 0) {
    (cursors.move(static_cast<ptrdiff_t>(left) -
                  static_cast<ptrdiff_t>(kUnits)),
     ...);
    last();
  }
}
template <size_t kUnits, int kSteps, class Step, class... Cursors>
LOX_INLINE void for_units(ptrdiff_t n, Step step, Cursors... cursors) {
  for_units_and_last<kUnits, kSteps>(n, step, step, cursors...);
}
// The same of vectors of pixels.
template <class V, int kSteps, class Step, class... Cursors>
LOX_INLINE void for_vectors(ptrdiff_t width, Step step, Cursors... cursors) {
  for_units<V::n, kSteps>(width, step, cursors...);
}

}  // namespace lox::LOX_SET
#endif
