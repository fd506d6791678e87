// SPDX-License-Identifier: Apache-2.0
//
// The vector layer as kernels see it. A kernel unit is compiled once for each
// instruction set with LOX_SET naming it and puts everything into lox::LOX_SET.
// Wide is the set's vector type, Narrow the one for rows too short for it; the
// portable set has neither (LOX_VECTORS is 0) and runs the plain rule.
//
// A kernel unit includes this header, its own *_rows.h and C headers only:
// inline functions of other headers could be compiled with the set's
// instructions and then be called by everybody.
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(LOX_SET_avx2)
#include "simd/simd_avx2.h"
#include "simd/simd_sse41.h"
#define LOX_VECTORS 1
namespace lox::LOX_SET {
using Wide = Avx2Lanes;
using Narrow = Sse41Lanes;
}  // namespace lox::LOX_SET
#elif defined(LOX_SET_sse41)
#include "simd/simd_sse41.h"
#define LOX_VECTORS 1
namespace lox::LOX_SET {
using Wide = Sse41Lanes;
using Narrow = Sse41Lanes;
}  // namespace lox::LOX_SET
#elif defined(LOX_SET_neon)
#include "simd/simd_neon.h"
#define LOX_VECTORS 1
namespace lox::LOX_SET {
using Wide = NeonLanes;
using Narrow = NeonLanes;
}  // namespace lox::LOX_SET
#else
#define LOX_VECTORS 0
#endif

#define LOX_INLINE [[gnu::always_inline]] inline
#define LOX_INLINE_LAMBDA __attribute__((always_inline))

#if LOX_VECTORS
namespace lox::LOX_SET {

// Calls kernel(V()) with the widest vector type that a row of `width` pixels
// fills. Returns the pixels done: all, or none when the row is too short.
template <class Kernel>
LOX_INLINE ptrdiff_t with_vectors(ptrdiff_t width, Kernel kernel) {
  if (width >= Wide::n) {
    kernel(Wide());
  } else if (Narrow::n < Wide::n && width >= Narrow::n) {
    kernel(Narrow());
  } else {
    return 0;
  }
  return width;
}

// Calls step(x) for whole vectors from 0 to width, which is V::n or more. The
// last one ends at `width` and may do pixels again, which is cheaper than doing
// them one by one.
template <class V, class Step>
LOX_INLINE void for_vectors(ptrdiff_t width, Step step) {
  ptrdiff_t x = 0;
  for (; x <= width - V::n; x += V::n) step(x);
  if (x < width) step(width - V::n);
}

}  // namespace lox::LOX_SET
#endif
