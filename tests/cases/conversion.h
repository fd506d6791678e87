// SPDX-License-Identifier: Apache-2.0
// The two conversions of vexo_csc that have no kernel of their own.
#pragma once

#include <cstdint>

#include "cases/cases.h"
#include "support/conversion_name.h"

namespace lox_test {

using Conversion = ConversionName;

inline bool exchanges_pairs(int32_t from, int32_t to) {
  return from != to && has_pairs(from) && has_pairs(to);
}
inline bool exchanges_planes(int32_t from, int32_t to) {
  return from == VEXO_FMT_YUV420 && to == VEXO_FMT_YV12;
}

// A multiple of a tile's side, or one off it.
inline int32_t around(Source &source, int32_t side, int32_t most) {
  const int32_t times = source.between(1, most);
  return side * times + source.between(-1, 1);
}

}  // namespace lox_test
