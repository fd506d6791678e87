// SPDX-License-Identifier: Apache-2.0
//
// What every backend needs.
#pragma once

// Operations are always inlined: a call would cost more than any of them.
#define LOX_OP [[gnu::always_inline]] static inline

namespace lox {

// How the bytes of a vector lie between load and store. A backend may permute
// them on loading so that the matching store need not.
enum class Order {
  kBytes,  // for store3 and store_bytes
  kWords,  // for store16
  kQuads   // for store4
};

}  // namespace lox
