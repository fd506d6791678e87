// SPDX-License-Identifier: Apache-2.0
//
// What is measured of enhancing decoded pictures beside the sharpening among
// the workloads: deblocking, in place, on the host and in the ARM guest alike.
#pragma once

#include "bench/workloads.h"

namespace bench {

// The size of the frames that are deblocked, 4:2:0 in three planes.
inline constexpr Size kDeblocked = {1920, 1080};

// Draws into 8-bit planes what a coarse codec leaves: 8 x 8 blocks of few
// levels, with steps between them and a little noise on them.
void draw_blocks(const vexo_img &img);

// All edges of the three planes, with the greatest strength there is.
int32_t deblock(const vexo_img &img);

}  // namespace bench
