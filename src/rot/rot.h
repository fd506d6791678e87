// SPDX-License-Identifier: Apache-2.0
//
// Which formats vexo_rot turns.
#pragma once

#include <cstdint>

namespace lox {

// The bytes of plane 0's unit; 0 for a format that is not turned.
int turned_unit(int32_t format);

}  // namespace lox
