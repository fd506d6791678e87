// SPDX-License-Identifier: Apache-2.0
//
// Bit fields and scans for key frames beside plain code.
#pragma once

namespace bench {

// Whether every reader reads the same fields, and every scan finds a key frame
// at the end of a frame and none where there is none. Prints it.
bool check_media();

// Registers everything with Google Benchmark.
void register_media();

}  // namespace bench
