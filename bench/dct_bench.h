// SPDX-License-Identifier: Apache-2.0
//
// What is measured of reductions in the DCT domain beside the time of a frame.
#pragma once

namespace bench {

// Registers the making and releasing of a plan, 1920x1080 to 480x270, with
// Google Benchmark.
void register_dct_setup();

// Adds to the run's context how near pictures are to the model in double
// precision and, for information, to what peers make of them.
void record_dct_quality();

}  // namespace bench
