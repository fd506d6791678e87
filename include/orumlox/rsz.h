/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Scaling, and scaling with a turn: the entry points and the plane scalers they
 * call. rsz_kernels.h has the kernels and, with them, the rule by which every
 * sample is computed.
 *
 * All calls are re-entrant and keep no state. Source and destination do not
 * overlap. Within a plane nothing is read or written beyond the samples of its
 * rows, and each plane is as large as its own width and height say. Strides may
 * be negative. Planes whose sizes are refused or below 1 may be null.
 */
#pragma once

#include "img.h"
#include "rsz_kernels.h"

VEXO_BEGIN_DECLS

/*
 * Scales an image into another of the same format and of any size:
 * vexo_rsz(&src, &dst). Each plane is scaled by its own sizes. The
 * destination's `mode` chooses the kind of enlargement (VEXO_MODE_MOD1 or the
 * plain one); the source's is not read.
 *
 * Images whose plane 0 sizes agree are copied, all planes with the source's
 * sizes, whatever those of the other planes; a plane with a size below 1 is
 * left alone. 16-bit samples are copied as vexo_cpy_16b does.
 *
 * Formats:
 *   0 to 99 but T64X32: one 8-bit plane for YUV400; plane 0 and plane 1's pairs
 *     for NV12 and NV21; three 8-bit planes for every other code;
 *   200, 201; 400, 401; 500 to 503: plane 0;
 *   P010LE: reduction by whole factors in both directions only, or a copy.
 *
 * Returns VEXO_OK. VEXO_ERR_ARG when the format codes differ, when a size of a
 * plane to be scaled is below 1, or when two rows of scratch memory cannot be
 * had (only enlargements and reductions in one direction want any; nothing is
 * written then). VEXO_ERR_UNSUPPORTED for every other format, and for P010LE
 * when a plane's ratio is not a whole factor above 1 in both directions.
 *
 * Planes are checked and scaled one after the other: a plane that is refused
 * leaves those before it written, plane 0 of P010LE among them.
 */
VEXO_API int32_t vexo_rsz(const vexo_img *src, const vexo_img *dst);

/*
 * The same of the destination's rows y0 to y1 - 1, counted in plane 0, for
 * callers who divide a picture between threads: formats, statuses and bytes are
 * those of vexo_rsz. All descriptors are those of the whole picture; a plane is
 * refused for its sizes, whatever the range.
 *
 * 0 <= y0 <= y1 <= the destination's height[0]. Of a 4:2:0 format (YUV420,
 * YV12, NV12, NV21, YUV422W, P010LE) both are even or that height. Any other
 * range is VEXO_ERR_ARG before all other checks, with nothing written; an empty
 * one writes nothing, but of a picture without rows what there is. Of the other
 * planes, one that has at most half the rows of plane 0, rounded up, has row y
 * / 2 written with row y, any other row y; rows beyond go with the last ones.
 *
 * Nothing is written but these rows. So ranges that have every row once give
 * vexo_rsz's bytes, in any order and on several threads at once, as long as the
 * destination's strides keep rows apart. Large ranges are better: where a
 * direction grows, or shrinks alone, each begins by scaling the source rows
 * that it shares with the one above again.
 */
VEXO_API int32_t vexo_rsz_rows(const vexo_img *src, const vexo_img *dst,
                               int32_t y0, int32_t y1);

/*
 * Scales an 8-bit YUV image and turns it: by 90 degrees to the left (code 1,
 * VEXO_ROT_90L), to the right (2, VEXO_ROT_90R) or by 180 degrees (3,
 * VEXO_ROT_180). Sizes of the destination are those after the turn. The result
 * is that of scaling and then turning.
 *
 * The two format codes are compared first. Then, when nothing is to be scaled
 * (the plane 0 sizes agree, exchanged for codes 1 and 2), this is vexo_rot,
 * with every format and code it takes.
 *
 * Returns VEXO_OK, or vexo_rot's status. VEXO_ERR_ARG as vexo_rsz does;
 * VEXO_ERR_UNSUPPORTED for codes other than 0 to 99 and for T64X32. Planes as
 * in vexo_rsz.
 *
 * Quirk: where sizes differ, rotation codes other than 1, 2 and 3 scale and do
 * not turn or mirror, because only a turn alone knows them.
 */
VEXO_API int32_t vexo_rsz_rot(const vexo_img *src, uint32_t rotation,
                              const vexo_img *dst);

/*
 * A plane scaler: one plane of one type of sample. Widths count samples (of
 * 8b8b pairs, of the RGB types pixels), strides bytes. Any size.
 *
 * `scratch` holds rows between the horizontal and the vertical pass: room for
 * two rows scaled across (one if the source has one), without padding, each as
 * many samples as the destination is wide or, with a quarter turn, high. It is
 * not touched, and may be null, when both directions shrink. `mode` is
 * VEXO_MODE_MOD1 or anything else.
 *
 * Which kernels do the work, with rw = destination width / source width and rh
 * the same of heights, as whole quotients:
 *   rw and rh below 1: down_mult when both sizes divide without a remainder,
 *     else down_non_mult.
 *   otherwise: every row by down_w (rw below 1) or up, and the rows that this
 *     gives by down_h (rh below 1) or up_h. The mode chooses between up and
 *     up_mode1, up_h and up_h_mode1.
 *
 * Returns VEXO_OK, or VEXO_ERR_ARG when a size is below 1, with nothing
 * written.
 */
typedef int32_t vexo_rsz_scaler(const uint8_t *src, int32_t src_width,
                                int32_t src_height, int32_t dst_width,
                                int32_t dst_height, uint8_t *dst,
                                uint8_t *scratch, int32_t src_stride,
                                int32_t dst_stride, int32_t mode);
VEXO_API vexo_rsz_scaler vexo_rsz_8b;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b8b;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b8b8b;
/* Odd strides are rounded down to even (7 to 6, -7 to -8). */
VEXO_API vexo_rsz_scaler vexo_rsz_5b6b5b;

/* 16-bit samples and pairs of them, odd strides rounded down to even. Only
 * down_mult: any other ratio is VEXO_ERR_UNSUPPORTED. No scratch. */
VEXO_API vexo_rsz_scaler vexo_rsz_16b;
VEXO_API vexo_rsz_scaler vexo_rsz_16b16b;

/* The same with a turn. The destination's sizes are those after it: of a
 * quarter turn rw is destination height / source width, rh destination width /
 * source height. */
VEXO_API vexo_rsz_scaler vexo_rsz_8b_rot_90l;
VEXO_API vexo_rsz_scaler vexo_rsz_8b_rot_90r;
VEXO_API vexo_rsz_scaler vexo_rsz_8b_rot_180;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b_rot_90l;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b_rot_90r;
VEXO_API vexo_rsz_scaler vexo_rsz_8b8b_rot_180;

/*
 * Bilinear scaling of one 8-bit plane in eighths of a sample, by steps that the
 * caller computes; vexo_rsz does not use it. A step word is the step from one
 * output to the next in 1 / 262144 of a source sample, shifted left by 3; its
 * low three bits are the base-2 logarithm of the distance between neighbouring
 * samples, in bytes across and in rows down (1 walks one component of
 * interleaved pairs).
 *
 * With a position p, which begins at 0 and grows by the step, the sample is
 * p >> 18 distances from the start and the phase is bits 15 to 17 of p. Of that
 * sample a, its right neighbour b, the one below c and the one below right d
 * the output is (a w0 + b w1 + c w2 + d w3) >> 6, with the weights at
 * vexo_tbl_rsz_weight[8 px + py] of the phases px and py. A neighbour that has
 * no weight is not read; otherwise the caller provides one sample to the right
 * and one row below the last position.
 *
 * Output bytes of a row are consecutive whatever the distance. A width or
 * height below 1: nothing, at once.
 */
VEXO_API void vexo_rsz_8b_org(const uint8_t *src, int32_t src_stride,
                              int32_t dst_width, int32_t dst_height,
                              int32_t dst_stride, uint8_t *dst,
                              uint32_t horizontal_step, uint32_t vertical_step);

/* (8 - px)(8 - py), px (8 - py), (8 - px) py, px py for each px and, within it,
 * each py from 0 to 7; every entry sums to 64. */
VEXO_API extern const uint8_t vexo_tbl_rsz_weight[64][4];

VEXO_END_DECLS
