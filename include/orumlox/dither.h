/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Fewer bits without steps: ordered dithering, and 10-bit samples.
 *
 * A sample that loses k low bits first gets a threshold of 0 to 2^k - 1, which
 * depends on its place alone, and is limited to what its bits hold. So no
 * sample is more than one step from what truncation gives. Where nothing is
 * limited, the mean over 8 x 8 equal samples is the sample itself, or with k
 * above 6 less than 2^k / 64 away.
 *
 * The threshold is ((t << k) >> 6) with t from 0 to 63. With x_i and y_i the
 * bits of column and row from the lowest one, 0, on, t is the number whose
 * binary digits are
 *
 *   x_0 ^ y_0, y_0, x_1 ^ y_1, y_1, x_2 ^ y_2, y_2
 *
 * Pictures begin at column and row 0; the pattern repeats every 8.
 *
 * All calls are re-entrant, allocate nothing and keep no state. Source and
 * destination do not overlap. Strides may be negative.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/*
 * Converts a picture to another format as vexo_csc does, and dithers:
 * vexo_csc_dither(&nv12, &rgb565).
 *
 * To RGB565 and BGR565, every channel's 8 bits to 5 or 6, from
 *   every YUV format that vexo_csc takes to RGB565 or to RGBA8888, by the
 *     default standard, of planes as large as for these, a pixel beyond an odd
 *     width included;
 *   RGB888, BGR888, RGBA8888, BGRA8888, ARGB8888 and ABGR8888, whose alpha is
 *     left out.
 * The channels are those of RGBA8888 or, from YUV400, all three the luma.
 * Another standard: convert to RGBA8888 by vexo_csc, and that by this call.
 *
 * To YUV420, YV12, NV12 and NV21, every sample to 8 bits, from YUV420PLANAR16,
 * whose samples have 10 bits, and P010LE, whose samples have 16. Sizes of
 * planes are as for vexo_csc_deep. U and V of a pixel have one threshold, that
 * of their place in the plane.
 *
 * The checks, in order: equal format codes VEXO_ERR_ARG; a plane 0 width or
 * height below 8, the source's or the destination's, VEXO_ERR_UNSUPPORTED; both
 * color_std non-zero between YUV (a code below 200) and RGB, a pair of formats
 * that is not above, or a T256X16 source whose plane 0 is 1280 wide or less,
 * VEXO_ERR_UNSUPPORTED. Returns VEXO_OK when converted.
 */
VEXO_API int32_t vexo_csc_dither(const vexo_img *src, const vexo_img *dst);

/* The same of rows y0 to y1 - 1, for threads that share a picture, by the rules
 * of vexo_csc_rows. */
VEXO_API int32_t vexo_csc_dither_rows(const vexo_img *src, const vexo_img *dst,
                                      int32_t y0, int32_t y1);

/*
 * Converts between formats with 10-bit samples, and from those to 8 bits,
 * rounded: vexo_csc_deep(&p010, &nv12).
 *   P010LE to YUV420PLANAR16: samples shifted right by 6, and back, shifted
 *     left; bits that do not fit are lost.
 *   both to YUV420, YV12, NV12 and NV21: (sample + 2) >> 2 of YUV420PLANAR16's
 *     10 bits, (sample + 128) >> 8 of P010LE's 16, a larger one being 255.
 *
 * Each plane has the source's size: chroma that of the source's plane 1, or of
 * planes 1 and 2 where source and destination both have planes. A plane with a
 * size below 1 is left alone.
 *
 * Equal format codes are VEXO_ERR_ARG, other pairs VEXO_ERR_UNSUPPORTED.
 */
VEXO_API int32_t vexo_csc_deep(const vexo_img *src, const vexo_img *dst);

/*
 * Dithers a plane: width by height samples of src_bits bits to dst_bits bits,
 * each in the low bits of a byte. Samples of 8 bits are bytes, those of 9 to 16
 * little-endian words, in their low bits; a larger one counts as the largest.
 * With as many bits as before they are copied. P010LE's are of 16.
 *
 * The plane's first sample has column x and row y of the pattern, so that parts
 * of a picture join: any numbers, of which 8 times anything may be taken off.
 * Strides count bytes. Widths of vexo_dit_8b8b count pairs, U and V for
 * instance, of which both samples have one threshold.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG, with nothing written, unless src_bits is 8 to
 * 16 and dst_bits 1 to 8. A width or height below 1: nothing, at once.
 */
typedef int32_t vexo_dit_kernel(const uint8_t *src, int32_t width,
                                int32_t height, int32_t src_stride,
                                int32_t dst_stride, uint8_t *dst,
                                int32_t src_bits, int32_t dst_bits, int32_t x,
                                int32_t y);
VEXO_API vexo_dit_kernel vexo_dit_8b;
VEXO_API vexo_dit_kernel vexo_dit_8b8b;

VEXO_END_DECLS
