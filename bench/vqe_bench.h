// SPDX-License-Identifier: Apache-2.0
//
// Sharpening is a workload like others but for its check; deblocking works in
// place and is timed by itself.
#pragma once

#include "bench/contender.h"

namespace bench {

// FFmpeg's filters that deblock a frame of kDeblocked. They leave the frame as
// it is and write one of their own.
void add_avfilter_deblocking(Contenders *out);

// Runs every contender on a picture of blocks and prints how alike what they
// change is. False when one does something else, or nothing.
bool check_same_enhancement(const Workload &workload, const Sizes &sizes,
                            const Contenders &contenders);
bool check_deblocking();

// Registers the rows of deblocking with Google Benchmark.
void register_deblocking();

}  // namespace bench
