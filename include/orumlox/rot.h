/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Turning and mirroring.
 *
 * All calls are re-entrant and keep no state. Source and destination do not
 * overlap. Only sizes of the source are read: the caller has sized the
 * destination, each plane exactly as large as the source's after the turn.
 * Strides may be negative; planes with a size below 1 may be null.
 */
#pragma once

#include "common.h"
#include "img.h"

VEXO_BEGIN_DECLS

/* Rotation codes, the indices of the tables below. Where the pixel at (x, y) of
 * W by H goes: */
enum {
  VEXO_ROT_COPY = 0, /* (x, y) */
  VEXO_ROT_90L = 1,  /* (y, W - 1 - x) of H by W: counter-clockwise */
  VEXO_ROT_90R = 2,  /* (H - 1 - y, x) of H by W: clockwise */
  VEXO_ROT_180 = 3,  /* (W - 1 - x, H - 1 - y) */
  VEXO_ROT_HORI = 4, /* (W - 1 - x, y): left-right mirror */
  VEXO_ROT_VERT = 5  /* (x, H - 1 - y): top-bottom flip */
};

/*
 * Turns or mirrors an image. The source's format decides, the destination's is
 * not read:
 *   0 to 99 but T64X32: plane 0 for YUV400; plane 0 and plane 1's pairs, kept
 *     together and in order, for NV12 and NV21; planes 0, 1 and 2 as bytes for
 *     every other code;
 *   200 to 299, 400 to 499, 500 to 599: plane 0 in units of 2, 3, 4 bytes.
 * Each plane is turned as it is: a quarter turn of chroma with half the width
 * and all the height has all the width and half the height.
 *
 * Returns VEXO_OK, also when a size is below 1 (that plane is left alone), or
 * VEXO_ERR_UNSUPPORTED for any other format, negative ones included, and for a
 * rotation code above 5.
 *
 * Quirk: tiles other than T64X32 and unassigned codes below 100 are turned as
 * three planes, because callers pass them as such.
 */
VEXO_API int32_t vexo_rot(const vexo_img *src, uint32_t rotation,
                          const vexo_img *dst);

/*
 * The same of the destination's rows y0 to y1 - 1, counted in plane 0, for
 * callers who divide a picture between threads: formats, statuses and bytes are
 * those of vexo_rot. All descriptors are those of the whole picture.
 *
 * 0 <= y0 <= y1 <= the rows of plane 0 after the turn. Of a 4:2:0 format
 * (YUV420, YV12, NV12, NV21, YUV422W) both are even or that number. Any other
 * range is VEXO_ERR_ARG before all other checks, with nothing written; an empty
 * one writes nothing, but of a picture without rows what there is. Of the other
 * planes, one that after the turn has at most half the rows of plane 0, rounded
 * up, has row y / 2 written with row y, any other row y; rows beyond go with
 * the last ones.
 *
 * Nothing is written but these rows. So ranges that have every row once give
 * vexo_rot's bytes, in any order and on several threads at once, as long as the
 * destination's strides keep rows apart.
 */
VEXO_API int32_t vexo_rot_rows(const vexo_img *src, uint32_t rotation,
                               const vexo_img *dst, int32_t y0, int32_t y1);

/*
 * A kernel turns a plane of units of 1, 2, 3 or 4 bytes, each moved whole.
 * `width` units by `height` rows are the source's; strides are in bytes, used
 * as they are, odd ones too. A size below 1: nothing.
 */
typedef void vexo_rot_kernel(const uint8_t *src, int32_t width, int32_t height,
                             int32_t src_stride, int32_t dst_stride,
                             uint8_t *dst);

VEXO_API vexo_rot_kernel vexo_rot_8b_90l;
VEXO_API vexo_rot_kernel vexo_rot_8b_90r;
VEXO_API vexo_rot_kernel vexo_rot_8b_180;
VEXO_API vexo_rot_kernel vexo_rot_8b_hori;
VEXO_API vexo_rot_kernel vexo_rot_8b_vert;

VEXO_API vexo_rot_kernel vexo_rot_16b_90l;
VEXO_API vexo_rot_kernel vexo_rot_16b_90r;
VEXO_API vexo_rot_kernel vexo_rot_16b_180;
VEXO_API vexo_rot_kernel vexo_rot_16b_hori;
VEXO_API vexo_rot_kernel vexo_rot_16b_vert;

VEXO_API vexo_rot_kernel vexo_rot_24b_90l;
VEXO_API vexo_rot_kernel vexo_rot_24b_90r;
VEXO_API vexo_rot_kernel vexo_rot_24b_180;
VEXO_API vexo_rot_kernel vexo_rot_24b_hori;
VEXO_API vexo_rot_kernel vexo_rot_24b_vert;

VEXO_API vexo_rot_kernel vexo_rot_32b_90l;
VEXO_API vexo_rot_kernel vexo_rot_32b_90r;
VEXO_API vexo_rot_kernel vexo_rot_32b_180;
VEXO_API vexo_rot_kernel vexo_rot_32b_hori;
VEXO_API vexo_rot_kernel vexo_rot_32b_vert;

/* The kernels by rotation code: vexo_tbl_fn_rot_8b[VEXO_ROT_90L] is
 * vexo_rot_8b_90l. Entry 0 is the plane copy of common.h; of 16 bits that is
 * vexo_cpy_16b, which rounds odd strides down. */
VEXO_API extern vexo_rot_kernel *const vexo_tbl_fn_rot_8b[6];
VEXO_API extern vexo_rot_kernel *const vexo_tbl_fn_rot_16b[6];
VEXO_API extern vexo_rot_kernel *const vexo_tbl_fn_rot_24b[6];
VEXO_API extern vexo_rot_kernel *const vexo_tbl_fn_rot_32b[6];

VEXO_END_DECLS
