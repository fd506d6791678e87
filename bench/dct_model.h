// SPDX-License-Identifier: Apache-2.0
//
// A reduction in the DCT domain in double precision, from the plan's table of
// blocks: what this library's integers are near to.
#pragma once

#include <vector>

#include "bench/dct_picture.h"

namespace bench {

// The channel reduced, `plane` being 0 for luma and 1 for chroma: as many
// samples as the destination has, row by row, from 0 to 255 and not rounded.
std::vector<double> reduce_by_model(const Component &src, Size dst,
                                    const vexo_rsz_new_context &context,
                                    int plane);

}  // namespace bench
