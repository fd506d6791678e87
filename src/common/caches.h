// SPDX-License-Identifier: Apache-2.0
//
// How memory is written on this machine: what goes past the caches, what is
// fetched ahead. docs/memory.md has the rule and what was measured.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace lox {

// The caches of data that one core sees, in bytes.
struct CacheSizes {
  size_t second, last;
};

// Two kinds of core were measured. Nothing but the vendor tells them apart.
// kStreams, AMD's: stores past the caches are as fast as memory, and lines that
// are fetched before they are written cost time. kFetches, Intel's and whatever
// else there is: stores past the caches cost more than they save, and lines
// that are fetched save a sixth.
enum class Core { kFetches, kStreams };

struct MemoryRule {
  // Destinations of so many bytes are written past the caches: by conversions
  // along their rows, by quarter turns in columns.
  size_t stream_rows, stream_columns;
  // Whether lines are fetched before they are written, and stored in halves.
  bool fetches;
  // A call that reads and writes so many bytes works further away than the
  // second cache.
  size_t far_from;
  // Whether the processor's own copy of a string is the fastest of long runs.
  bool strings;
  // Whether conversions from RGB that work so far away fetch their source a
  // page ahead, and what takes RGBA apart always. It was measured on kStreams
  // alone.
  bool fetches_rgb;
};

MemoryRule memory_rule(Core core, CacheSizes caches, bool strings);

// What holds now. Chosen when the library is loaded: until then nothing is
// written past the caches.
namespace detail {
extern MemoryRule memory_now;
}
[[gnu::always_inline]] static inline const MemoryRule &memory_now() {
  return detail::memory_now;
}

// Whether a quarter turn writes a plane of this size past the caches.
[[gnu::always_inline]] static inline bool streams_columns(int64_t width,
                                                          int64_t height,
                                                          int64_t unit) {
  return static_cast<uint64_t>(width) * static_cast<uint64_t>(height) *
             static_cast<uint64_t>(unit) >=
         memory_now().stream_columns;
}

// Fetches the lines of a run of bytes, which need not be any object's. Always
// inlined: it stores nothing, so that compilers leave calls of it out.
[[gnu::always_inline]] static inline void fetch_run(uintptr_t first,
                                                    ptrdiff_t bytes) {
  for (ptrdiff_t i = 0; i < bytes; i += 64) {
    __builtin_prefetch(
        reinterpret_cast<const void *>(first + static_cast<uintptr_t>(i)));
  }
}

// For tests and benchmarks, on one thread. Not exported.
void set_memory_rule(const MemoryRule &rule);

// From this many bytes on a copy is the C library's, which knows best which
// caches to use.
constexpr size_t kBeyondCaches = size_t{4} << 20;

// From this many bytes on, a copy is not of what the nearest cache holds.
constexpr size_t kLongCopy = size_t{16} << 10;

// From this many bytes on a string repays its start.
constexpr size_t kLongString = size_t{4} << 10;

// What a call keeps between two of its steps is no larger, and is on the stack
// (common/strip.h): half a second-level cache at most, 1280 bytes of 64 rows.
// Rows in parts take more calls, which costs more than what the first-level
// cache saves. ARM's are smaller, as its caches are.
#if defined(__x86_64__) || defined(__i386__)
constexpr int kStripBytes = 80 << 10;
// Whether reductions fetch the rows that are some further down.
constexpr bool kFetchesRows = true;
// Whether tiles beside each other are copied together.
constexpr bool kTilesAtOnce = true;
#else
constexpr bool kFetchesRows = false;
constexpr bool kTilesAtOnce = false;
constexpr int kStripBytes = 40 << 10;
#endif

}  // namespace lox
