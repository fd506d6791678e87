// SPDX-License-Identifier: Apache-2.0
//
// The vector layer as kernels see it. A kernel unit is compiled once for each
// instruction set with LOX_SET naming it and puts everything into lox::LOX_SET.
// Wide is the set's vector type, Narrow the one for rows too short for it (the
// same where there is no narrower one), Bulk the one to move what lies beyond
// the caches: measured, whole cache lines from one register are slow there; the
// portable set has neither (LOX_VECTORS is 0) and runs the plain rule.
//
// A kernel unit includes this header, its own *_rows.h and C headers only:
// inline functions of other headers could be compiled with the set's
// instructions and then be called by everybody.
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

// Holds a pointer to moving by itself where that costs nothing: compilers else
// compute it from another one.
template <class T>
LOX_INLINE void keep_pointer([[maybe_unused]] T *&p) {
  if constexpr (kLoadsMovePointers) __asm__("" : "+r"(p));
}

// Calls step() for every whole kUnits of n units, kSteps times in a turn of the
// loop where so many are left. Returns the units left. Turns are counted down
// to zero: a comparison less than counting units.
template <size_t kUnits, int kSteps, class Step>
LOX_INLINE size_t for_turns(size_t n, Step step) {
  for (size_t turns = n / (kSteps * kUnits); turns != 0; --turns) {
    LOX_UNROLL
    for (int i = 0; i < kSteps; ++i) step();
  }
  if constexpr (kSteps > 1) {
    for (size_t turns = n / kUnits % kSteps; turns != 0; --turns) step();
  }
  return n % kUnits;
}
template <class V, int kSteps, class Step>
LOX_INLINE ptrdiff_t for_whole_vectors(ptrdiff_t width, Step step) {
  return static_cast<ptrdiff_t>(
      for_turns<V::n, kSteps>(static_cast<size_t>(width), step));
}

// Does a row of `width` pixels, V::n or more, in whole vectors, kSteps of them
// in a turn of the loop where so many are left. step() does the vector that the
// kernel's pointers stand on, move(pixels) moves them. The last vector ends at
// `width` and may do pixels again, which is cheaper than doing them one by one;
// it is done by last(), as its address may be any.
template <class V, int kSteps = 1, class Step, class Move, class Last>
LOX_INLINE void for_vectors(ptrdiff_t width, Step step, Move move, Last last) {
  const ptrdiff_t left =
      for_whole_vectors<V, kSteps>(width, [&]() LOX_INLINE_LAMBDA {
        step();
        move(V::n);
      });
  if (left > 0) {
    move(left - V::n);
    last();
  }
}
template <class V, int kSteps = 1, class Step, class Move>
LOX_INLINE void for_vectors(ptrdiff_t width, Step step, Move move) {
  for_vectors<V, kSteps>(width, step, move, step);
}

// The same for a step() that moves the kernel's pointers itself; back(pixels)
// moves them back to where the last vector begins.
template <class V, int kSteps, class Step, class Back>
LOX_INLINE void for_moving_vectors(ptrdiff_t width, Step step, Back back) {
  const ptrdiff_t left = for_whole_vectors<V, kSteps>(width, step);
  if (left > 0) {
    back(V::n - left);
    step();
  }
}

}  // namespace lox::LOX_SET
#endif
