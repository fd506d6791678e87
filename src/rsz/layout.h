// SPDX-License-Identifier: Apache-2.0
//
// What vexo_rsz takes a format to be made of.
#pragma once

#include <cstdint>

#include "orumlox/img.h"
#include "rsz/plane_scalers.h"

namespace lox {

// How many planes a format has, and of which samples.
struct Layout {
  int planes = 0;  // 0: the format is not scaled
  SampleType type[3] = {};
};
Layout layout_of(int32_t format);

Plane plane_of(const vexo_img &src, const vexo_img &dst, int p);

// What vexo_rsz answers for pictures of one format.
int32_t status_of_scaling(const vexo_img &src, const vexo_img &dst);

}  // namespace lox
