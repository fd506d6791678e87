// SPDX-License-Identifier: Apache-2.0
//
// What the drivers of YUV to RGB conversions share.
#pragma once

#include "csc/kernel_args.h"
#include "csc/yuv_to_rgb_rows.h"

namespace lox {

// How a picture is written. One that no cache would keep is streamed past them
// where the processor gains by that and rows are aligned for it; else its lines
// are fetched ahead. One is `far` whose source is fetched, too. All three are
// members of YuvToRgbRows.
struct Writing {
  bool stream = false, fetch = false, far = false;
};
Writing writing_of(RgbLayout layout, const KernelArgs &args);

}  // namespace lox
