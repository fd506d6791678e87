// SPDX-License-Identifier: Apache-2.0
//
// YUV of one standard as that of another, which the library does by way of RGB
// where it makes such YUV of RGB.
#pragma once

#include "side.h"

namespace lox_gst {

// Changes the samples of a picture in place, of any of the elements' formats of
// YUV: each pixel has the chroma that covers it.
void change_colours(const vexo_img &img, const GstVideoFormatInfo *format,
                    const GstVideoColorimetry &from,
                    const GstVideoColorimetry &to);

}  // namespace lox_gst
