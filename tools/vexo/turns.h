// SPDX-License-Identifier: Apache-2.0
//
// The ways to turn a picture, by name and code, and what a stream of pictures
// is after a turn and a change of size.
#pragma once

#include <cstdint>
#include <string>

#include "io.h"

namespace vexo {

// The library's code for left, right, half, mirror, flip or a code itself, as
// the option of this name says it. Anything else: Error.
uint32_t turn_named(const std::string &name, const char *option);

bool is_quarter(uint32_t rotation);

// Makes of what the input's frames are what they become; the size is that after
// the turn. Throws Error when no layout holds a picture so turned.
void reshape_stream(StreamInfo *info, uint32_t rotation, int width, int height);

}  // namespace vexo
