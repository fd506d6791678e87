// SPDX-License-Identifier: Apache-2.0
//
// Scaling and conversion of pictures whose rows go through no memory in
// between.
#pragma once

#include "csc/routes.h"
#include "orumlox/img.h"

namespace lox {

// Whether any set has kernels for it.
#if defined(__x86_64__) || defined(__i386__)
constexpr bool kHasPairKernels = true;
#else
constexpr bool kHasPairKernels = false;
#endif

// Scales to the sizes of `middle`, and converts, where the instruction set has
// kernels for the route and the ratio. Returns whether it did.
bool convert_scaled_pairs(const vexo_img &src, const vexo_img &middle,
                          const Route &route, const vexo_img &dst);

}  // namespace lox
