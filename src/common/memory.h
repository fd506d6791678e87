// SPDX-License-Identifier: Apache-2.0
//
// Aligned memory for the library's own use.
#pragma once

#include <stdint.h>

namespace lox {

// Room for `count` things of `size` bytes, for mlox_mfree_align32 to free. Null
// when it cannot be had, when the count is negative, or when the bytes do not
// fit 32 bits.
void *allocate(int64_t count, uint32_t size);

template <class T>
T *allocate(int64_t count) {
  return static_cast<T *>(allocate(count, sizeof(T)));
}

}  // namespace lox
