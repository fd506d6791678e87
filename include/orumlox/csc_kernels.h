/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The conversion kernels between YUV and RGB, and between RGB layouts. vexo_csc
 * (csc.h) finds the right one; this is for callers who know it.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/*
 * A kernel converts src_width[0] by src_height[0] pixels, W x H below. With
 * vexo_img's src and dst that is
 *     kernel(src.plane, src.width, src.height, src.stride, dst.stride,
 *            dst.plane);
 *
 * Sizes and strides are in the units of vexo_img, four of each, of which a
 * kernel reads those of the planes that its formats have. Kernels check nothing
 * and trust their caller. Rows are written top to bottom. The source is only
 * read, though its type does not say so: C would not take a vexo_img's planes
 * for it.
 *
 * A width or height below 1 converts nothing, at once, and all pointers may be
 * null. Strides may be negative; where a kernel writes one pixel beyond the
 * width, a negative stride must have room for it, because the row above begins
 * there.
 *
 * Planes have at least the sizes said with each group of kernels; a plane's
 * last row need not be followed by padding. Sizes of chroma are those of W and
 * H: a kernel of this header does not read those in the source's fields.
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
 *   - any other W: the same when H is even. Quirk: when H is odd, row 0 has
 *     chroma row 0 to itself and the pairs are rows 1 and 2, 3 and 4, ...: row
 *     y takes chroma row (y + 1) / 2. Rows of such a width are counted from the
 *     bottom.
 *   - W odd. Quirk: a row is converted in pairs, the last of which reaches one
 *     pixel beyond it. Every row READS ONE LUMA BYTE and WRITES ONE PIXEL
 *     BEYOND THE WIDTH, so the buffers must have room for it after their last
 *     row too.
 *
 * Least planes: luma H rows of W bytes, for odd W with one more byte at the end
 * of the plane; chroma (W + 1) / 2 samples or pairs in (H + 1) / 2 rows, so
 * that of an odd height a plane of H / 2 rows is too small; RGB H rows of W
 * pixels, for odd W with one more pixel at the end.
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
 * yuv444 (x, y), yuv422w (x, y / 2), uyvy and yuyv the pair's own.
 * Least planes, with luma and RGB of W x H: chroma of yuv422n (W + 1) / 2 x H,
 * of yuv444 W x H, of yuv422w W x (H + 1) / 2. A uyvy or yuyv row has 2 W
 * bytes; of an odd W its last pixel reads its pair's U and V, so that a row has
 * 2 W + 1 (uyvy, whose second luma byte is not read) or 2 W + 2 bytes (yuyv).
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
 * Tiled 4:2:0 sources (csc_layout.h has the layouts) by the same rule, exactly
 * the width and height: pixel (x, y) takes chroma pair (x / 2, y / 2), the last
 * row of an odd height the chroma row before it. There are H / 2 chroma rows,
 * but one where H is 1.
 * Least planes: whole tiles of both (csc_layout.h), of which nothing is read
 * beyond the picture but the V of an odd width's last pair, one byte beyond the
 * width; RGB W x H.
 */
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_bgr565;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_rgb888;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_bgr888;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_bgra8888;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_argb8888;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_abgr8888;

VEXO_API vexo_csc_kernel vexo_csc_t16x16_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_t8x8_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_t256x16_to_rgba8888;

/* As nv12 after taking the high 8 bits of every sample, its quirks and sizes of
 * planes included, in samples of two bytes: what is read beyond an odd width is
 * a 16-bit sample. */
VEXO_API vexo_csc_kernel vexo_csc_p010le_to_rgba8888;

/*
 * YUV to RGB by other standards, exactly the width: pixel (x, y) takes chroma
 * sample (x / 2, y / 2). Least planes: luma and RGB W x H; chroma (W + 1) / 2
 * samples or pairs in (H + 1) / 2 rows. With u = U - 128, v = V - 128,
 * arithmetic shifts and a clamp to 0..255:
 *
 * bt601_fr (full range):
 *     R = Y + (179 v >> 7)
 *     G = Y + (-44 u >> 7) + (-91 v >> 7)
 *     B = Y + (227 u >> 7)
 * but in the last width mod 8 columns, rounded down, in double precision and
 * added up from the left:
 *     R = Y + 1.402 v,  G = Y - 0.344 u - 0.714 v,  B = Y + 1.772 u
 *
 * bt709 (luma 16..235), y = Y - 16:
 *     R = (298 y         + 459 v + 128) >> 8
 *     G = (298 y -  55 u - 137 v + 128) >> 8
 *     B = (298 y + 541 u         + 128) >> 8
 *
 * bt709_fr (full range):
 *     R = (256 Y         + 394 v + 128) >> 8
 *     G = (256 Y -  47 u - 118 v + 128) >> 8
 *     B = (256 Y + 465 u         + 128) >> 8
 *
 * The constants are the matrices 1.402, 0.344, 0.714, 1.772 (times 128), 1.164,
 * 1.793, 0.213, 0.534, 2.115 and 1.54, 0.183, 0.459, 1.816 (times 256). Quirk:
 * they differ slightly from the published BT.709, and vexo_csc never reaches
 * vexo_csc_bt709_fr_yuv420_to_rgba8888, because callers know these colours.
 */
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_yuv420_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_nv12_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_nv21_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_bt709_yuv420_to_rgba8888;
VEXO_API vexo_csc_kernel vexo_csc_bt709_fr_yuv420_to_rgba8888;

/*
 * RGB to YUV: BT.601, full-range RGB to luma 16..235 and chroma 16..240. With
 * arithmetic shifts
 *     Y = ((66 R + 129 G + 25 B) >> 8) + 16
 *     U = ((-38 R - 74 G + 112 B + 128) >> 8) + 128
 *     V = ((112 R - 94 G - 18 B + 128) >> 8) + 128
 * Quirk: luma is truncated and chroma rounded; 4:2:0 chroma is that of the
 * block's top-left pixel, not an average, which costs a quarter of the reads.
 * Alpha is ignored. 5- and 6-bit channels are shifted up with zeros below.
 * Least planes: RGB and luma W x H; chroma W / 2 samples or pairs in H / 2
 * rows, rounded down: an odd last column or row gives luma alone. A reader of
 * the result that wants (W + 1) / 2 x (H + 1) / 2, as vexo_csc back to RGB
 * does, finds the last column and row of chroma as they were.
 */
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_bgr565_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_bgr565_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_bgr565_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_bgr565_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_bgr888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_bgr888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_bgr888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_bgr888_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_bgra8888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_bgra8888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_bgra8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_bgra8888_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_argb8888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_argb8888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_argb8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_argb8888_to_nv21;

VEXO_API vexo_csc_kernel vexo_csc_abgr8888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_abgr8888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_abgr8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_abgr8888_to_nv21;

/* The same with a U and a V for every pixel: three planes of W x H. */
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_yuv444;
VEXO_API vexo_csc_kernel vexo_csc_argb8888_to_yuv444;

/*
 * RGB to YUV by other standards, in the same way:
 *
 * bt601_fr:
 *     Y = (77 R + 150 G + 29 B) >> 8
 *     U = ((-43 R - 84 G + 127 B + 128) >> 8) + 128
 *     V = ((127 R - 106 G - 21 B + 128) >> 8) + 128
 *
 * bt709. Quirk: the weights of luma add up to 229, so that white is 244; the
 * 25 of blue is part of it:
 *     Y = ((47 R + 157 G + 25 B) >> 8) + 16
 *     U = ((-26 R - 86 G + 112 B + 128) >> 8) + 128
 *     V = ((112 R - 102 G - 10 B + 128) >> 8) + 128
 */
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_rgba8888_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_rgba8888_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_rgba8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_bt601_fr_rgba8888_to_nv21;
VEXO_API vexo_csc_kernel vexo_csc_bt709_rgba8888_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_bt709_rgba8888_to_nv21;

/*
 * RGB to RGB: to 16 bits the top 5, 6 and 5 bits of each channel; from 16 bits
 * with zeros below them and alpha 255. W x H pixels on both sides.
 */
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_rgba8888;

VEXO_END_DECLS
