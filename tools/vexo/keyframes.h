// SPDX-License-Identifier: Apache-2.0
//
// vexo keyframes.
#pragma once

#include <string>

namespace vexo {

// Prints the frames of a stream to standard output. Without a codec the name's
// ending tells it.
void print_key_frames(const std::string &path, const std::string &codec,
                      bool json);

}  // namespace vexo
