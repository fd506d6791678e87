// SPDX-License-Identifier: Apache-2.0
//
// What every backend needs.
#pragma once

// Operations are always inlined: a call would cost more than any of them.
#define LOX_OP [[gnu::always_inline]] static inline

namespace lox {

// An RGB pixel in memory: its size and the places of its bytes. Of two bytes, a
// little-endian word, the channel whose place is 1 has the top five bits, the
// one whose place is 0 the last five, green the six between.
struct PixelFormat {
  int bytes, r, g, b;
};

// How the bytes of a vector lie between load and store. A backend may permute
// them on loading so that the matching store need not.
enum class Order {
  kBytes,  // for store3 and store_bytes
  kWords,  // for store16
  kQuads   // for store4
};

}  // namespace lox
