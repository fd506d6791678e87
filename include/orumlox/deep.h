/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Pictures with samples of 16 bits: what the calls without _deep in their name
 * do with bytes, done with YUV420PLANAR16 and P010LE, which most of those
 * refuse. dither.h converts these formats.
 *
 * Every sample counts with all its 16 bits, little-endian: 10 low ones of
 * YUV420PLANAR16, high ones of P010LE.
 *
 * Each call returns VEXO_ERR_ARG when the two format codes differ, then
 * VEXO_ERR_UNSUPPORTED when they are another format's, with nothing written,
 * else VEXO_OK unless it says more. All are re-entrant and keep no state.
 * Source and destination do not overlap. Strides may be negative or odd.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/* Copies every plane, of the source's sizes: vexo_cpy. */
VEXO_API int32_t vexo_cpy_deep(const vexo_img *src, const vexo_img *dst);

/*
 * Copies a window: vexo_crop. Each plane of the destination is filled, in its
 * own size, from the source's at (offset_x, offset_y) or, of chroma, from half
 * of either, rounded up; they are read from the source. That the window lies in
 * the source is not checked.
 */
VEXO_API int32_t vexo_crop_deep(const vexo_img *src, const vexo_img *dst);

/*
 * Places the source at its (offset_x, offset_y) in a black picture:
 * vexo_padding. All buf_height rows of the destination, all bytes of each
 * stride, are filled before: luma with 64 and chroma with 512, shifted left by
 * 6 in P010LE. Chroma's place is half of the offset, rounded up. Strides of the
 * destination are positive.
 *
 * VEXO_ERR_ARG, too, when the destination's plane 0 is narrower than offset_x
 * and the source's width, or not as high as offset_y and its height.
 */
VEXO_API int32_t vexo_padding_deep(const vexo_img *src, const vexo_img *dst);

/*
 * Turns or mirrors by a rotation code, 0 to 5: vexo_rot. U and V of a pair stay
 * in their order. Any other code is VEXO_ERR_UNSUPPORTED.
 */
VEXO_API int32_t vexo_rot_deep(const vexo_img *src, uint32_t rotation,
                               const vexo_img *dst);

/*
 * Scales to any size: vexo_rsz, with its rules for every sample (rsz.h,
 * rsz_kernels.h), of which the destination's mode chooses one, with 16 bits
 * where they say a byte. Planes are copied where the sizes of plane 0 agree.
 *
 * VEXO_ERR_ARG, too, when a plane has a size below 1, or when scratch memory
 * cannot be had: nothing is written then.
 */
VEXO_API int32_t vexo_rsz_deep(const vexo_img *src, const vexo_img *dst);

/* The same of rows y0 to y1 - 1 of the destination, by the rules of
 * vexo_rsz_rows; of both formats y0 and y1 are even or the height. */
VEXO_API int32_t vexo_rsz_deep_rows(const vexo_img *src, const vexo_img *dst,
                                    int32_t y0, int32_t y1);

VEXO_END_DECLS
