// SPDX-License-Identifier: Apache-2.0
//
// Where a band of rows goes.
#pragma once

#include <stdint.h>

namespace lox {

// Whether all bands of a destination begin at the start of its planes.
bool bands_overlap(int32_t dst_format);

}  // namespace lox
