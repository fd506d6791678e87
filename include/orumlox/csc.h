/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Colour-space conversion: the entry points. What they call is exported too:
 * csc_kernels.h has the conversions between YUV and RGB, csc_layout.h those
 * between YUV layouts.
 *
 * All calls are re-entrant, allocate nothing and keep no state; calls that
 * share a destination are the caller's to serialise.
 */
#pragma once

#include "csc_kernels.h"
#include "csc_layout.h"
#include "img.h"

VEXO_BEGIN_DECLS

/*
 * Converts a whole image to another format: vexo_csc(&nv12, &rgba).
 *
 * The size is that of the source's plane 0, width by height, and the
 * destination must hold it: its own is checked only to be 8 x 8 or more. How
 * large each plane must be, of odd sizes too, is said with the kernels. They
 * are in csc_kernels.h for RGB, where by the default standard a 4:2:0 source
 * without tiles reads and writes one pixel more in a row of odd width, and in
 * csc_layout.h for YUV to YUV. Two routes have no kernel of their own: NV12 to
 * NV21 is vexo_csc_nv21_to_nv12 (csc_layout.h), padding included; YUV420 to
 * YV12 is below.
 *
 * The checks, in order:
 *   1. equal format codes: VEXO_ERR_ARG;
 *   2. a plane 0 width or height below 8, the source's or the destination's:
 *      VEXO_ERR_UNSUPPORTED;
 *   3. both color_std non-zero, and one side YUV (code below 200), the other
 *      RGB (200 to 599): the two must be equal and one of VEXO_STD_, else
 *      VEXO_ERR_UNSUPPORTED, and the sibling below decides. In every other
 *      case the standards are ignored;
 *   4. a pair of formats without a route, or a T256X16 source whose plane 0 is
 *      1280 wide or less: VEXO_ERR_UNSUPPORTED.
 *
 * Returns VEXO_OK when converted.
 *
 * Quirk: YUV420 to YV12 copies plane 1 to plane 2 and plane 2 to plane 1, each
 * READ WITH THE OTHER'S STRIDE, because callers know it so: plane 1 spans
 * (height[1] - 1) * stride[2] + width[1] bytes, plane 2 (height[2] - 1) *
 * stride[1] + width[2]. With unequal strides give both planes room for the
 * larger one.
 */
VEXO_API int32_t vexo_csc(const vexo_img *src, const vexo_img *dst);

/*
 * The same of the destination's rows y0 to y1 - 1, counted in plane 0, for
 * callers who divide a picture between threads: pairs of formats, statuses and
 * bytes are those of vexo_csc. All descriptors are those of the whole picture.
 *
 * 0 <= y0 <= y1 <= the source's height[0]. To a 4:2:0 destination, tiles of
 * 64 x 32 included, both are even or that height, and chroma row y / 2 goes
 * with row y; rows of chroma beyond go with the picture's last ones. Any other
 * range is VEXO_ERR_ARG before all other checks, with nothing written; an empty
 * one writes nothing.
 *
 * Nothing is written but the bytes that vexo_csc leaves in these rows, padding
 * included. So ranges that have every row once give vexo_csc's bytes, in any
 * order and on several threads at once, as long as rows are apart: strides hold
 * a row, or with a negative one the pixel beyond an odd width too.
 */
VEXO_API int32_t vexo_csc_rows(const vexo_img *src, const vexo_img *dst,
                               int32_t y0, int32_t y1);

/*
 * Convert by the other standards. vexo_csc calls them, and so may anybody. Each
 * checks formats and sizes itself, in this order:
 *
 * vexo_csc_bt601_fr: equal formats VEXO_ERR_ARG; sizes below 8, and pairs
 * without a route, VEXO_ERR_UNSUPPORTED.
 *
 * vexo_csc_bt709: equal formats, or unequal plane 0 widths or heights,
 * VEXO_ERR_ARG; sizes below 8, or a source other than YUV420 and RGBA8888,
 * VEXO_ERR_UNSUPPORTED.
 *
 * vexo_csc_bt709_fr: equal formats VEXO_ERR_ARG; sizes below 8, or a source
 * other than YUV420, VEXO_ERR_UNSUPPORTED. Quirk: RGBA8888 is converted by the
 * kernel of bt601_fr, because callers know these colours.
 *
 * Quirk: in the last two a destination without a route returns VEXO_OK with
 * nothing written, because callers take it for a success.
 */
VEXO_API int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst);

VEXO_END_DECLS
