// SPDX-License-Identifier: Apache-2.0
//
// vexo fourcc.
#pragma once

#include <string>

namespace vexo {

// Prints what a FourCC or the number of a WAVE format stands for.
void print_media_types(const std::string &code, bool is_text);

}  // namespace vexo
