// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace lox {

// Of numbers above 0. Not std::gcd, which is compiled to an instruction that
// not every x86 has.
inline int64_t common_divisor(int64_t a, int64_t b) {
  for (;;) {
    const int64_t rest = a % b;
    if (rest == 0) return b;
    a = b;
    b = rest;
  }
}

}  // namespace lox
