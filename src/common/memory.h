// SPDX-License-Identifier: Apache-2.0
//
// Aligned memory for the library's own use.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "orumlox/common.h"

namespace lox {

// Room for `count` of T, for mlox_mfree_align32. Null when it cannot be had,
// when the count is negative, or when 32 bits do not count the bytes.
template <class T>
T *allocate(int64_t count) {
  constexpr int64_t kMost = int64_t{UINT32_MAX} / sizeof(T);
  if (count < 0 || count > kMost) return nullptr;
  return static_cast<T *>(
      mlox_malloc_align32(static_cast<uint32_t>(count * sizeof(T))));
}

}  // namespace lox
