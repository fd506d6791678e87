// SPDX-License-Identifier: Apache-2.0
//
// One plane through its blocks.
#pragma once

#include "dct/plan.h"

namespace lox {

// Plane `plan` of the context's plan, with the plane's own sizes and work area.
void transform_plane(const vexo_rsz_new_context *context, int32_t plan,
                     const DctPlane &plane, uint8_t *work, const uint8_t *src,
                     uint8_t *dst, vexo_shift_set a, vexo_shift_set b);

}  // namespace lox
