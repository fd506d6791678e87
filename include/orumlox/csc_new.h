/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Colour conversion for quality: YUV to RGB with chroma interpolated between
 * its samples, where vexo_csc (csc.h) uses each for all the pixels that it
 * covers; of more standards, of 10 bits in and out, and rounded. Red letters on
 * black keep their edges.
 *
 * All calls are re-entrant, allocate nothing and keep no state; calls that
 * share a destination are the caller's to serialise.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/*
 * Converts a whole picture: vexo_csc_new(&nv12, &rgba).
 *
 * Sources: YUV420, YUV422N, YUV444, YV12, YV16, NV12, NV21, UYVY, YUYV,
 * YUV420PLANAR16 and P010LE. Destinations: the eight layouts of RGB with codes
 * 200 to 503, RGBA1010102 and RGBAF16. Every pair, in every standard:
 * src.color_std is one of VEXO_STD_, and dst.color_std the same or 0.
 *
 * src.reserved1 says where chroma samples lie between the pixels that share
 * them. Two or, in the picture's last column and row, one do.
 *   VEXO_SITING_LEFT (0), as in video: on the left pixel's column, and of 4:2:0
 *     between the two rows. Column 2 i has sample i, column 2 i + 1 the mean of
 *     samples i and i + 1.
 *   VEXO_SITING_CENTRE, as in JPEG: between the columns, and of 4:2:0 between
 *     the rows. Column 2 i has (3 c[i] + c[i - 1]) / 4, column 2 i + 1
 *     (3 c[i] + c[i + 1]) / 4.
 * Of 4:2:0 rows are interpolated in the same way as columns in the centre. At
 * the ends of the picture the nearest sample stands for those that are not
 * there. Chroma of YUV444 is taken as it is.
 *
 * Results are those of the standard's own matrix, on numbers that are rounded
 * once at the end, within 0.6 of a channel's last bit, of RGBA1010102 0.75:
 * they differ by one at most from what is computed without rounding and then
 * rounded. What is beyond black and white is clamped. Channels of 5 and 6 bits
 * are rounded, too. Alpha is all ones. RGBAF16 is within 2^-11 of the matrix
 * from 0 to 1, within 2^-10 beyond, where numbers are kept, but for those below
 * -2 and above 2; alpha is 1.0.
 *
 * Luma and RGB are W x H, of any size from 1 x 1 on; chroma of half the width
 * has (W + 1) / 2 samples or pairs, of half the height (H + 1) / 2 rows. Rows
 * of UYVY and YUYV have whole pairs of pixels. Nothing beyond is read, and
 * nothing is written but W pixels of H rows. Of sizes those of plane 0 are
 * read. Words of YUV420PLANAR16 and P010LE count with their ten bits alone.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG for equal format codes, and for planes 0 of
 * different sizes; VEXO_ERR_UNSUPPORTED for a width or height below 1, for any
 * other format, standard or siting, and when dst.color_std is another than 0
 * and src.color_std.
 */
VEXO_API int32_t vexo_csc_new(const vexo_img *src, const vexo_img *dst);

/*
 * The same of the destination's rows y0 to y1 - 1 for callers who divide a
 * picture between threads; descriptors are those of the whole picture. Any
 * range but 0 <= y0 <= y1 <= the source's height[0] is VEXO_ERR_ARG before all
 * other checks. Ranges that have every row once give the bytes of vexo_csc_new.
 */
VEXO_API int32_t vexo_csc_new_rows(const vexo_img *src, const vexo_img *dst,
                                   int32_t y0, int32_t y1);

/* 1 if vexo_csc_new converts from one format to the other in a standard, else
 * 0. */
VEXO_API int32_t vexo_csc_new_supports(int32_t src_format, int32_t dst_format,
                                       int32_t color_std);

/*
 * Kernels, for callers who know their formats: vexo_csc_new of samples on the
 * left, in BT.601 with luma 16..235 or in the standard of the name. Arguments
 * and what they promise are those of vexo_csc_kernel (csc_kernels.h), planes
 * those above. All other pairs, standards and sitings are vexo_csc_new's alone.
 */
typedef void vexo_csc_new_kernel(uint8_t *const src_plane[4],
                                 const int32_t src_width[4],
                                 const int32_t src_height[4],
                                 const int32_t src_stride[4],
                                 const int32_t dst_stride[4],
                                 uint8_t *const dst_plane[4]);

VEXO_API vexo_csc_new_kernel vexo_csc_yuv420_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yv12_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_nv12_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_nv21_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yuv422n_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yv16_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yuv444_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_uyvy_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yuyv_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_yuv420Planar16_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_p010le_to_rgba8888_new;

VEXO_API vexo_csc_new_kernel vexo_csc_bt709_yuv420_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_bt709_nv12_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_bt709_nv21_to_rgba8888_new;

VEXO_API vexo_csc_new_kernel vexo_csc_bt2020_p010le_to_rgba8888_new;
VEXO_API vexo_csc_new_kernel vexo_csc_bt2020_p010le_to_rgba1010102_new;
VEXO_API vexo_csc_new_kernel vexo_csc_bt2020_p010le_to_rgbaf16_new;

VEXO_END_DECLS
