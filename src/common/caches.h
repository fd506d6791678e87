// SPDX-License-Identifier: Apache-2.0
//
// From which sizes on memory is written past the caches or fetched ahead.
#pragma once

#include <stddef.h>

namespace lox {

// From this many bytes on, a destination is taken to leave the caches before it
// is read, so it may be written past them. Measured: below, a picture that is
// written again and again gains from the caches.
constexpr size_t kBeyondCaches = size_t{4} << 20;

// Whether writing past the caches gains on this processor. On AMD's it does; on
// Intel's it costs more than it saves, even where memory is the limit. Chosen
// when the library is loaded; false until then.
namespace detail {
extern bool streaming_now;
}
inline bool streaming() { return detail::streaming_now; }

// For tests, on one thread. Not exported.
void set_streaming(bool on);

// A call that reads and writes this many bytes is taken to work further away
// than the second-level cache: lines are then fetched some way ahead of being
// written. Measured on Intel: a sixth less time where memory is the limit,
// nothing lost where the third-level cache is.
constexpr size_t kFetchAheadFrom = size_t{3} << 19;

// From this many bytes on, a copy does not gain from the widest registers.
constexpr size_t kLongCopy = size_t{16} << 10;

}  // namespace lox
