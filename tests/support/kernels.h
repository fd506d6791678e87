// SPDX-License-Identifier: Apache-2.0
// Every exported kernel by name, and what the names of conversions say.
#pragma once

#include <orumlox/orumlox.h>

#include <cstdint>
#include <vector>

#include "support/conversion_name.h"

namespace lox_test {

// Calls each(name, function) for the kernels of all types.
template <typename Each>
void for_each_kernel(Each each) {
#define KERNEL(type, name) each(#name, name);
#include "kernels.inc"
#undef KERNEL
}

struct Conversion {
  int32_t src, dst;
  const char *name;
  vexo_csc_kernel *kernel;
  int32_t standard = VEXO_STD_DEFAULT;
};

// The conversions, an unknown name with formats of -1.
inline const std::vector<Conversion> &all_conversions() {
  static const auto conversions = [] {
    std::vector<Conversion> all;
    for_each_kernel([&](const char *name, auto *kernel) {
      if constexpr (requires(Conversion c) { c.kernel = kernel; }) {
        const auto [src, dst, standard] = parse_conversion(name);
        all.push_back({src, dst, name, kernel, standard});
      }
    });
    return all;
  }();
  return conversions;
}

// The kernel from one format to another, null where there is none.
inline vexo_csc_kernel *conversion(int32_t standard, int32_t src, int32_t dst) {
  for (const Conversion &c : all_conversions()) {
    if (c.standard == standard && c.src == src && c.dst == dst) return c.kernel;
  }
  return nullptr;
}

template <typename Wanted>
std::vector<Conversion> conversions_that(Wanted wanted) {
  std::vector<Conversion> some;
  for (const Conversion &c : all_conversions()) {
    if (wanted(c.src, c.dst)) some.push_back(c);
  }
  return some;
}

}  // namespace lox_test
