// SPDX-License-Identifier: Apache-2.0
//
// The ways to turn a picture, by name and code, and what a stream of pictures
// is after a turn and a change of size.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "convert.h"

namespace vexo {

// The library's code for left, right, half, mirror, flip or a code itself, as
// the option of this name says it. Anything else: Error.
uint32_t turn_named(const std::string &name, const char *option);

bool is_quarter(uint32_t rotation);

// How wide a pixel is for its height; 1 where nothing is said.
double pixel_shape(const StreamInfo &info);

// Makes of what the input's frames are what they become; the size is that after
// the turn. Pixels get the shape that leaves the picture's alone.
void reshape_stream(StreamInfo *info, uint32_t rotation, int width, int height);
// Where that shape is that of a square but for the rounding of sides.
void set_square(StreamInfo *info);

// Turns or mirrors by one of the library's codes.
std::unique_ptr<Reshape> make_turn(uint32_t rotation);

}  // namespace vexo
