// SPDX-License-Identifier: Apache-2.0
//
// What a file asks for before anything else is done: its pictures upright, and
// the part of them that is wanted.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "convert.h"

namespace vexo {

// Turns by one of the library's codes.
std::unique_ptr<Reshape> make_upright(uint32_t rotation);

// "WxH+X+Y" in pixels.
std::unique_ptr<Reshape> make_crop(const std::string &window);

}  // namespace vexo
