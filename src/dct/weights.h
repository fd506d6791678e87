// SPDX-License-Identifier: Apache-2.0
//
// The weights of coefficients.
#pragma once

#include <cmath>
#include <cstdint>

namespace lox {

// The weight of a coefficient: int(s x factor x 2048 x 64) in single precision,
// with s = 1.004 / sqrt(width x height) of the source block; 0 for an empty
// one.
inline int32_t dct_weight(int32_t width, int32_t height, float factor) {
  if (width < 1 || height < 1) return 0;
  const auto s =
      static_cast<float>(1.004 / std::sqrt(double{1} * width * height));
  return static_cast<int32_t>(s * factor * 2048.0F * 64.0F);
}

}  // namespace lox
