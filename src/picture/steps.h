// SPDX-License-Identifier: Apache-2.0
//
// Conversions that no call of csc.h makes: samples and bytes in another order,
// repeated or left out. Sizes are those of the source's plane 0, odd ones too;
// nothing beyond the rows of a picture is touched.
#pragma once

#include "orumlox/img.h"

namespace lox {

using Step = void(const vexo_img &src, const vexo_img &dst);

// Rows of every plane as they are; formats and sizes are equal.
Step copy_step;
// YUV420 and YV12, YUV422N and YV16: planes 1 and 2 in each other's place.
Step swap_chroma_planes;
// NV12 and NV21: the bytes of every pair in each other's place.
Step swap_chroma_bytes;
// UYVY and YUYV to YUV422N, and back: the second luma byte of a last pair that
// has one pixel is the first one.
Step unpack_422;
Step pack_422;
// Every chroma sample twice across: YUV420 to YUV422W, YUV422N to YUV444.
Step repeat_columns;
// Every second one: YUV422W to YUV420, YUV444 to YUV422N.
Step drop_columns;
// Every row of chroma twice: YUV422W to YUV444.
Step repeat_rows;
// YUV420PLANAR16 and P010LE: into each other, and to 4:2:0 of bytes.
Step move_words;
Step round_words;
Step dither_words;
// RGB of 8 bits: the channels where the other format has them. An alpha that
// the source lacks is 255.
Step reorder_pixels;
// RGBA8888 to RGBA1010102 and RGBAF16: the numbers nearest to n / 255.
Step widen_pixels;
// RGB565 and BGR565: the outer fields in each other's place.
Step exchange_fields;

}  // namespace lox
