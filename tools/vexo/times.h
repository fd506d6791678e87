// SPDX-License-Identifier: Apache-2.0
//
// Places in a video, as command lines say them and as people read them.
#pragma once

#include <string>

namespace vexo {

// "12.5s", "12.5", "1:02:03.5" or "30%" of the length, in seconds. Throws
// Error.
double parse_time(const std::string &text, double duration);

// "1:02:03", "2:03.5": without hours where there are none.
std::string time_text(double seconds, int decimals = 0);

}  // namespace vexo
