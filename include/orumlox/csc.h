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
 * Converts a whole image to another format. The destination must hold the
 * source's size: the kernels convert the source's plane 0 width by plane 0
 * height and are not told the destination's. How large each plane must be, of
 * odd sizes too, is said with the kernels: csc_kernels.h for RGB, where a 4:2:0
 * source of odd width reads and writes one pixel more a row, csc_layout.h for
 * YUV to YUV.
 *
 * Two routes have no kernel of their own:
 *   YUV420 to YV12 copies the planes, plane 1 to plane 2 and plane 2 to plane
 *     1. Quirk: each chroma plane is READ WITH THE OTHER'S STRIDE, as callers
 *     know it: plane 1 spans (height[1] - 1) * stride[2] + width[1] bytes,
 *     plane 2 (height[2] - 1) * stride[1] + width[2]. With unequal strides give
 *     both planes room for the larger one.
 *   NV12 to NV21 is vexo_csc_nv21_to_nv12 (csc_layout.h), padding included.
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
 */
VEXO_API int32_t vexo_csc(const vexo_img *src, const vexo_img *dst);

/*
 * The siblings for the other standards, reached from vexo_csc and callable
 * directly. They check formats and sizes themselves, in an order of their own:
 *
 * vexo_csc_bt601_fr: equal formats VEXO_ERR_ARG; sizes below 8, and pairs
 * without a route, VEXO_ERR_UNSUPPORTED.
 *
 * vexo_csc_bt709: equal formats, or unequal plane 0 widths or heights,
 * VEXO_ERR_ARG; sizes below 8, or a source other than YUV420 and RGBA8888,
 * VEXO_ERR_UNSUPPORTED; a destination without a route returns VEXO_OK with
 * nothing written.
 *
 * vexo_csc_bt709_fr: equal formats VEXO_ERR_ARG; sizes below 8, or a source
 * other than YUV420, VEXO_ERR_UNSUPPORTED; a destination other than RGBA8888
 * returns VEXO_OK with nothing written.
 */
VEXO_API int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst);

VEXO_END_DECLS
