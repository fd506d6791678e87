// SPDX-License-Identifier: Apache-2.0
//
// Copies a run of bytes.
#include "common/copy_rows.h"

#include <string.h>

#include "common/caches.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS

template <class V>
LOX_INLINE auto take(const uint8_t *&src) {
  const auto bytes = V::load_bytes(src);
  src += V::n;
  settle(src);
  return bytes;
}

template <class V>
LOX_INLINE void put(uint8_t *&dst, typename V::Bytes bytes) {
  V::store_bytes(dst, bytes);
  dst += V::n;
  settle(dst);
}

template <class V>
LOX_INLINE void copy_vectors(uint8_t *dst, const uint8_t *src, size_t n) {
  size_t left = n;
  for (; left >= 4 * V::n; left -= 4 * V::n) {
    const auto a = take<V>(src);
    const auto b = take<V>(src);
    const auto c = take<V>(src);
    const auto d = take<V>(src);
    put<V>(dst, a);
    put<V>(dst, b);
    put<V>(dst, c);
    put<V>(dst, d);
  }
  for (; left >= V::n; left -= V::n) put<V>(dst, take<V>(src));
  if (left > 0) {
    // The last vector ends with the run.
    V::store_bytes(dst + left - V::n, V::load_bytes(src + left - V::n));
  }
}

void copy(uint8_t *dst, const uint8_t *src, size_t n) {
  if (n >= Wide::n && n < kBeyondCaches) {
    copy_vectors<Wide>(dst, src, n);
  } else if (n >= Narrow::n && n < kBeyondCaches) {
    copy_vectors<Narrow>(dst, src, n);
  } else {
    // Short, or so long that the C library knows best which caches to use.
    memcpy(dst, src, n);
  }
}

#else

void copy(uint8_t *dst, const uint8_t *src, size_t n) { memcpy(dst, src, n); }

#endif

// With the sizes of whole tiles known to the compiler.
template <size_t kBytes>
void copy_block_of(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                   ptrdiff_t src_step, int rows) {
  for (int row = 0; row < rows; ++row) {
    memcpy(dst + row * dst_step, src + row * src_step, kBytes);
  }
}

void copy_block(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                ptrdiff_t src_step, size_t n, int rows) {
  switch (n) {
    case 8:
      return copy_block_of<8>(dst, dst_step, src, src_step, rows);
    case 16:
      return copy_block_of<16>(dst, dst_step, src, src_step, rows);
    case 64:
      return copy_block_of<64>(dst, dst_step, src, src_step, rows);
    default:
      for (int row = 0; row < rows; ++row) {
        copy(dst + row * dst_step, src + row * src_step, n);
      }
  }
}

}  // namespace

constinit const CopyRows copy_rows = {.copy = copy, .copy_block = copy_block};

}  // namespace lox::LOX_SET
