// SPDX-License-Identifier: Apache-2.0
//
// The part of a picture that is wanted.
#pragma once

#include <memory>
#include <string>

#include "convert.h"

namespace vexo {

// "WxH+X+Y" in pixels.
std::unique_ptr<Reshape> make_crop(const std::string &window);

}  // namespace vexo
