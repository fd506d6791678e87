// SPDX-License-Identifier: Apache-2.0
//
// Start codes: two zero bytes are rare in compressed video, so nearly all of it
// is passed over by looking for those.
#include "media/scan_rows.h"

#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "simd/simd_neon_bytes.h"
#elif LOX_VECTORS
#include "simd/simd_x86_bytes.h"
#endif

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS
// Looks at V::n places; the first one, or V::n.
template <class V>
LOX_INLINE int find_in(const uint8_t *data, StartCode code) {
  using B = BytesOf<V>;
  const auto zeros = B::zeros(B::bit_or(B::load(data), B::load(data + 1)));
  if (B::none(zeros)) return V::n;
  const auto third = B::load(data + 2);
  const auto is = [&](uint8_t mask, uint8_t value) LOX_INLINE_LAMBDA {
    return B::zeros(
        B::exclusive_or(B::bit_and(third, B::fill8(mask)), B::fill8(value)));
  };
  const auto found = zeros & (is(code.mask, code.value) |
                              is(code.other_mask, code.other_value));
  return B::none(found) ? V::n : B::first(found);
}
#endif

ptrdiff_t find(const uint8_t *data, ptrdiff_t n, StartCode code) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  ptrdiff_t found = n;
  done = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    for (ptrdiff_t p = 0; p < n;) {
      // The last vector ends at n and may look at places again.
      if (p > n - V::n) p = n - V::n;
      const int place = find_in<V>(data + p, code);
      p += place;
      if (place < V::n) {
        found = p;
        return;
      }
    }
  });
  if (done > 0) return found;
#endif
  for (ptrdiff_t p = done; p < n; ++p) {
    if (data[p] != 0 || data[p + 1] != 0) continue;
    const uint8_t third = data[p + 2];
    if ((third & code.mask) == code.value ||
        (third & code.other_mask) == code.other_value) {
      return p;
    }
  }
  return n > 0 ? n : 0;
}

}  // namespace

constinit const ScanRows scan_rows = {.find = find};

}  // namespace lox::LOX_SET
