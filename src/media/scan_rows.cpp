// SPDX-License-Identifier: Apache-2.0
//
// Start codes: two zero bytes are rare in compressed video, so nearly all of it
// is passed over by looking for those.
#include "media/scan_rows.h"

#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS
// Zero where two zeros follow each other.
template <class B>
LOX_INLINE typename B::Reg either(const uint8_t *data) {
  return B::bit_or(B::load(data), B::load(data + 1));
}
// Whether there are no two zeros in the places of four registers.
template <class B>
LOX_INLINE bool none_in_4(const uint8_t *data) {
  const auto least =
      B::min(B::min(either<B>(data), either<B>(data + B::n)),
             B::min(either<B>(data + 2 * B::n), either<B>(data + 3 * B::n)));
  return B::none(B::zeros(least));
}
// Looks at B::n places; the first one, or B::n.
template <class B>
LOX_INLINE int find_in(const uint8_t *data, StartCode code) {
  const auto zeros = B::zeros(either<B>(data));
  if (B::none(zeros)) return B::n;
  const auto third = B::load(data + 2);
  const auto is = [&](uint8_t mask, uint8_t value) LOX_INLINE_LAMBDA {
    return B::zeros(
        B::exclusive_or(B::bit_and(third, B::fill8(mask)), B::fill8(value)));
  };
  const auto found = zeros & (is(code.mask, code.value) |
                              is(code.other_mask, code.other_value));
  return B::none(found) ? B::n : B::first(found);
}
#endif

ptrdiff_t find(const uint8_t *data, ptrdiff_t n, StartCode code) {
  ptrdiff_t done = 0;
#if LOX_VECTORS
  ptrdiff_t found = n;
  done = with_vectors(n, [&]<class V>(V) LOX_INLINE_LAMBDA {
    using B = ByteOps<V>;
    for (ptrdiff_t p = 0; p < n;) {
      if (p <= n - 4 * B::n && none_in_4<B>(data + p)) {
        p += 4 * B::n;
        continue;
      }
      // The last vector ends at n and may look at places again.
      if (p > n - B::n) p = n - B::n;
      const int place = find_in<B>(data + p, code);
      p += place;
      if (place < B::n) {
        found = p;
        return;
      }
    }
  });
  if (done > 0) return found;
#endif
  for (ptrdiff_t p = done; p < n; ++p) {
    if (data[p + 1] != 0) {
      ++p;  // where there is no pair either
      continue;
    }
    if (data[p] != 0) continue;
    const uint8_t third = data[p + 2];
    if ((third & code.mask) == code.value ||
        (third & code.other_mask) == code.other_value) {
      return p;
    }
  }
  return n;
}

}  // namespace

constinit const ScanRows scan_rows = {.find = find};

}  // namespace lox::LOX_SET
