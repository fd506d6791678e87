// SPDX-License-Identifier: Apache-2.0
//
// Pictures of another size.
#pragma once

#include <memory>

#include "convert.h"

namespace vexo {

// Enlarges what pixels that are not square make too narrow or too low.
std::unique_ptr<Reshape> make_squaring();

}  // namespace vexo
