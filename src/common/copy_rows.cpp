// SPDX-License-Identifier: Apache-2.0
//
// Copies a run of bytes.
#include "common/copy_rows.h"

#include <string.h>

#include "common/caches.h"
#include "simd/simd.h"

// Sanitizers do not see what an instruction of the source reads and writes.
#if (defined(__x86_64__) || defined(__i386__)) && !defined(LOX_SANITIZED)
#define LOX_STRINGS 1
#else
#define LOX_STRINGS 0
#endif

namespace lox::LOX_SET {

namespace {

#if LOX_VECTORS

template <class V>
LOX_INLINE void copy_4_blocks(uint8_t *&to, const uint8_t *&from) {
  if constexpr (requires { V::copy_4_blocks(to, from); }) {
    V::copy_4_blocks(to, from);
  } else {
    const auto a = V::take_block(from);
    const auto b = V::take_block(from);
    const auto c = V::take_block(from);
    const auto d = V::take_block(from);
    V::put_block(to, a);
    V::put_block(to, b);
    V::put_block(to, c);
    V::put_block(to, d);
  }
}

template <class V, bool kFetch = false>
LOX_INLINE void copy_vectors(uint8_t *dst, const uint8_t *src, size_t n) {
  const size_t left =
      for_whole_units<4 * V::kBlock, 1>(n, [&]() LOX_INLINE_LAMBDA {
        if constexpr (kFetch) prefetch(dst, kAhead, 4 * V::kBlock);
        copy_4_blocks<V>(dst, src);
      });
  for_units<V::kBlock, 1>(
      static_cast<ptrdiff_t>(left),
      [&]() LOX_INLINE_LAMBDA { V::put_block(dst, V::take_block(src)); },
      taken<1>(dst), taken<1>(src));
}

// By the processor's own copy, which need not fetch the lines it writes.
void copy_string(uint8_t *dst, const uint8_t *src, size_t n) {
#if LOX_STRINGS
  // A string goes by lines only where the first begins.
  constexpr size_t kLine = 64;
  const uint8_t *from = src;
  uint8_t *to = dst;
  copy_vectors<Bulk>(to, from, kLine);
  const size_t head = kLine - (reinterpret_cast<uintptr_t>(dst) & (kLine - 1));
  dst += head;
  src += head;
  n -= head;
  __asm__ volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(n) : : "memory");
#else
  memcpy(dst, src, n);
#endif
}

// Whether the processor copies long runs itself, and whether lines of a run
// that is far away are fetched before they are written.
LOX_INLINE bool copies_strings() { return kAhead != 0 && memory_now().strings; }
LOX_INLINE bool fetches() { return kAhead != 0 && memory_now().fetches; }

void copy(uint8_t *dst, const uint8_t *src, size_t n) {
  if (n >= kLongCopy && copies_strings()) {
    copy_string(dst, src, n);
  } else if (n < Narrow::kBlock || n >= kBeyondCaches) {
    // Short, or so long that the C library knows best which caches to use.
    memcpy(dst, src, n);
  } else if (n < Wide::kBlock) {
    copy_vectors<Narrow>(dst, src, n);
  } else if (n < kLongCopy) {
    copy_vectors<Wide>(dst, src, n);
  } else if (fetches() && n >= memory_now().far_from / 2) {
    copy_vectors<Bulk, true>(dst, src, n);
  } else {
    copy_vectors<Bulk>(dst, src, n);
  }
}

void copy_far(uint8_t *dst, const uint8_t *src, size_t n) {
  if (n >= kLongString && copies_strings()) {
    copy_string(dst, src, n);
  } else if (fetches() && n >= Bulk::kBlock && n < kBeyondCaches) {
    copy_vectors<Bulk, true>(dst, src, n);
  } else {
    copy(dst, src, n);
  }
}

#else

void copy(uint8_t *dst, const uint8_t *src, size_t n) { memcpy(dst, src, n); }
void copy_far(uint8_t *dst, const uint8_t *src, size_t n) {
  memcpy(dst, src, n);
}

#endif

// With the sizes of whole tiles known to the compiler.
template <int kBytes>
void copy_tile(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
               ptrdiff_t src_step, int rows) {
  for (int row = 0; row < rows; ++row) {
    [[maybe_unused]] const uint8_t *from = src + row * src_step;
    [[maybe_unused]] uint8_t *to = dst + row * dst_step;
#if LOX_VECTORS
    if constexpr (kBytes % Bulk::kBlock == 0) {
      for (int i = 0; i < kBytes; i += Bulk::kBlock) {
        Bulk::put_block(to, Bulk::take_block(from));
      }
    } else if constexpr (kBytes == Narrow::n) {
      Narrow::store_bytes(to, Narrow::load_bytes(from));
    } else {
      memcpy(to, from, kBytes);
    }
#else
    memcpy(to, from, kBytes);
#endif
  }
}

// 64 bytes, which compilers move in halves of a register.
LOX_INLINE void copy_line(uint8_t *to, const uint8_t *from) {
#if LOX_VECTORS
  for (int i = 0; i < 64; i += Wide::kBlock) {
    Wide::put_block(to, Wide::take_block(from));
  }
#else
  memcpy(to, from, 64);
#endif
}

void copy_tiles(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *const *tiles,
                int count, int rows, bool far) {
  constexpr ptrdiff_t kBytes = 64;
  if (!far) {
    // Row by row, which writes along the destination.
    for (int row = 0; row < rows; ++row) {
      for (int i = 0; i < count; ++i) {
        copy_line(dst + row * dst_step + i * kBytes, tiles[i] + row * kBytes);
      }
    }
    return;
  }
  // Tile by tile, which reads along the source. No processor sees what comes
  // next, in the source or in as many rows of the destination.
  for (int i = 0; i < count; ++i) {
    for (int row = 0; row < rows; ++row) {
      uint8_t *const to = dst + row * dst_step + i * kBytes;
#if LOX_VECTORS
      prefetch(tiles[i + 1], row * kBytes);
      prefetch(to, kBytes);
#endif
      copy_line(to, tiles[i] + row * kBytes);
    }
  }
}

void copy_block(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                ptrdiff_t src_step, size_t n, int rows) {
  switch (n) {
    case 8:
      return copy_tile<8>(dst, dst_step, src, src_step, rows);
    case 16:
      return copy_tile<16>(dst, dst_step, src, src_step, rows);
    case 64:
      return copy_tile<64>(dst, dst_step, src, src_step, rows);
    default:
      for (int row = 0; row < rows; ++row) {
        copy(dst + row * dst_step, src + row * src_step, n);
      }
  }
}

}  // namespace

constinit const CopyRows copy_rows = {
    .copy = copy,
    .copy_far = copy_far,
    .copy_block = copy_block,
    .copy_tiles = copy_tiles,
};

}  // namespace lox::LOX_SET
