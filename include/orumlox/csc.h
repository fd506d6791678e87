/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Colour-space conversion: the dispatcher and its kernels.
 *
 * All calls are re-entrant, allocate nothing and keep no state; calls that
 * share a destination are the caller's to serialise.
 */
#ifndef ORUMLOX_CSC_H
#define ORUMLOX_CSC_H

#include "img.h"

VEXO_BEGIN_DECLS

/*
 * Converts a whole image to another format. The destination must hold the
 * source's size: the kernels convert the source's plane 0 width by plane 0
 * height and are not told the destination's. A 4:2:0 source of odd width reads
 * and writes one pixel more a row; see the kernels below.
 *
 * The checks, in order:
 *   1. equal format codes: VEXO_ERR_ARG;
 *   2. a plane 0 width or height below 8, the source's or the destination's:
 *      VEXO_ERR_UNSUPPORTED;
 *   3. both color_std non-zero, and one side YUV (code below 200), the other
 *      RGB (200 to 599): the two must be equal and one of VEXO_STD_, else
 *      VEXO_ERR_UNSUPPORTED, and the sibling below decides. In every other
 *      case the standards are ignored;
 *   4. a pair of formats without a route: VEXO_ERR_UNSUPPORTED.
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
 *
 * Their kernels are not built yet: a pair that has a route returns
 * VEXO_ERR_UNSUPPORTED with nothing written.
 */
VEXO_API int32_t vexo_csc_bt601_fr(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709(const vexo_img *src, const vexo_img *dst);
VEXO_API int32_t vexo_csc_bt709_fr(const vexo_img *src, const vexo_img *dst);

/*
 * The kernels. Each converts src_width[0] by src_height[0] pixels; sizes and
 * strides are in the units of vexo_img, four of each, of which a kernel reads
 * those of the planes that its formats have. Kernels check nothing and trust
 * their caller; a width or height below 1 converts nothing. Rows are written
 * top to bottom. The source is only read, though its type does not say so: C
 * would not take a vexo_img's planes for it.
 */
typedef void vexo_csc_kernel(uint8_t *const src_plane[4],
                             const int32_t src_width[4],
                             const int32_t src_height[4],
                             const int32_t src_stride[4],
                             const int32_t dst_stride[4],
                             uint8_t *const dst_plane[4]);

/*
 * YUV to RGB: BT.601, luma 16..235, to full-range RGB. With y = Y - 16,
 * u = U - 128, v = V - 128 and an arithmetic shift
 *     R = clamp((298 y           + 409 v + 128) >> 8)
 *     G = clamp((298 y - 100 u   - 208 v + 128) >> 8)
 *     B = clamp((298 y + 516 u           + 128) >> 8)
 * where the constants are the matrix 1.164, 1.596, 0.391, 0.813, 2.018 times
 * 256. Alpha is 255; 16-bit pixels hold the top 5, 6 and 5 bits. The chroma
 * sample that covers a pixel is used as it is.
 *
 * 4:2:0 sources (yuv420, yv12, nv12, nv21), W x H:
 *   - W a multiple of 4: pixel (x, y) takes chroma sample (x / 2, y / 2).
 *   - any other W: the same when H is even. When H is odd, row 0 has chroma row
 *     0 to itself and the pairs are rows 1 and 2, 3 and 4, ...: row y takes
 *     chroma row (y + 1) / 2. This shift of phase is intended.
 *   - W odd: a row is converted in pairs, the last of which reaches one pixel
 *     beyond it. Every row READS ONE LUMA BYTE and WRITES ONE PIXEL BEYOND THE
 *     WIDTH, so the buffers must have room for it after their last row too.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_yv12_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_yv12_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_nv12_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_nv21_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_abgr8888;

/*
 * The other sources write exactly the width: yuv422n takes chroma (x / 2, y),
 * yuv444 (x, y), yuv422w (x, y / 2), uyvy and yuyv the pair's own. The last
 * pixel of an odd-width uyvy or yuyv row reads its pair's U and V, but of uyvy
 * not the second luma byte.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_uyvy_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_yuv422w_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuv422w_to_bgr565;

/* Grey: every channel is Y, without range expansion. */
VEXO_API vexo_csc_kernel vexo_csc_yuv400_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_yuv400_to_rgb888;

/*
 * Packed 4:2:2 to planar 4:2:0: luma as it is; the chroma of rows 2j and 2j + 1
 * is averaged, (c0 + c1) >> 1, and a last unpaired row keeps its own. Chroma
 * rows have (width + 1) / 2 samples; an odd width reads its last pair's U and
 * V.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_yuv420;

VEXO_END_DECLS

#endif /* ORUMLOX_CSC_H */
