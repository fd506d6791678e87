/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The conversion kernels between YUV and RGB, and between RGB layouts. vexo_csc
 * (csc.h) finds the right one; this is for callers who know it.
 */
#ifndef ORUMLOX_CSC_KERNELS_H
#define ORUMLOX_CSC_KERNELS_H

#include "base.h"

VEXO_BEGIN_DECLS

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
 * Tiled 4:2:0 sources (csc_layout.h has the layouts) by the same rule, exactly
 * the width and height: pixel (x, y) takes chroma row y / 2, the last row of an
 * odd height the chroma row before it. An odd width's last chroma byte is a U;
 * its V is that of the pair before it. Nothing beyond the picture is read. A
 * height below 2 has no chroma and a width below 2 no V: they convert nothing.
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

/* As nv12 after taking the high 8 bits of every sample, its oddities with odd
 * sizes included: what is read beyond the width is a 16-bit sample. */
VEXO_API vexo_csc_kernel vexo_csc_p010le_to_rgba8888;

/*
 * YUV to RGB by other standards, exactly the width: pixel (x, y) takes chroma
 * sample (x / 2, y / 2). With u = U - 128, v = V - 128, arithmetic shifts and a
 * clamp to 0..255:
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
 * 1.793, 0.213, 0.534, 2.115 and 1.54, 0.183, 0.459, 1.816 (times 256), which
 * differ slightly from the published BT.709 on purpose. vexo_csc never reaches
 * vexo_csc_bt709_fr_yuv420_to_rgba8888.
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
 * Luma is truncated and chroma rounded; 4:2:0 chroma is that of the block's
 * top-left pixel, not an average: all intended. Alpha is ignored. 5- and 6-bit
 * channels are shifted up with zeros below. Chroma planes are width / 2 by
 * height / 2, rounded down: an odd last column or row gives luma alone.
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

/* The same with a U and a V for every pixel. */
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
 * bt709, where white is 244 on purpose:
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
 * with zeros below them and alpha 255.
 */
VEXO_API vexo_csc_kernel vexo_csc_rgba8888_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_rgb888_to_rgb565;
VEXO_API vexo_csc_kernel vexo_csc_rgb565_to_rgba8888;

VEXO_END_DECLS

#endif /* ORUMLOX_CSC_KERNELS_H */
