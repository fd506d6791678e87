/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Two steps in one pass: scaling or turning together with a conversion. Results
 * are those of the two calls one after the other, byte for byte, but the
 * picture between them never exists: some rows of it at a time are made and
 * taken while they are in the near caches.
 *
 * All calls are re-entrant and keep no state. Source and destination do not
 * overlap. A refused call writes nothing.
 */
#pragma once

#include "img.h"
#include "rot.h"

VEXO_BEGIN_DECLS

/*
 * Scales and converts: vexo_rsz_csc(&nv12, &rgba). The result is that of
 * vexo_rsz (rsz.h) into a picture of the source's format and the destination's
 * plane 0 size, whose planes have the sizes of vexo_picture_geometry
 * (picture.h), and of vexo_csc (csc.h) from there. The destination's `mode`
 * chooses the kind of enlargement; colour standards are the source's and the
 * destination's.
 *
 * Where plane 0 sizes agree nothing is scaled, tiles included: the source is
 * converted. Its other planes then have at least the sizes of
 * vexo_picture_geometry, whatever its fields say.
 *
 * Exactly the destination's width is written: of an odd one no pixel beyond it,
 * unlike by vexo_csc, and nothing beyond the source's rows is read.
 *
 * Returns the first of these that is not VEXO_OK, or VEXO_OK: the status of
 * vexo_picture_geometry, that of vexo_rsz, that of vexo_csc; with a success of
 * vexo_csc that writes nothing, nothing is written. VEXO_ERR_MEMORY when
 * the memory for some rows, 200 KiB at most, cannot be had. The rows are all of
 * them to T64X32, and between NV12 and NV21 where the destination is wider than
 * 2048 or higher than 65535, or its stride of pairs is odd, above 32767 or
 * shorter than a row.
 */
VEXO_API int32_t vexo_rsz_csc(const vexo_img *src, const vexo_img *dst);

/*
 * Converts and turns: vexo_csc_rot(&nv12, VEXO_ROT_90R, &rgba). The result is
 * that of vexo_csc into a picture of the destination's format, whose planes
 * have the sizes of vexo_picture_geometry, and of vexo_rot (rot.h) from there.
 * Samples that vexo_csc leaves out, as it does chroma of some odd sizes, stay
 * as they are in the destination.
 *
 * The destination's plane 0 size, before the turn, is the source's or smaller.
 * A smaller one is a window of the source, whose first pixel is at the source's
 * `offset_x` and `offset_y`: the result is that of a source of the window's
 * size whose planes begin there. Otherwise the offsets are not read. Sizes of
 * chroma are those of vexo_picture_geometry, on both sides, whatever the fields
 * say.
 *
 * What the source must have beyond an odd width is said with the kernels
 * (csc_kernels.h); of the destination no more than its rows is written.
 *
 * The checks, in order:
 *   1. those of vexo_csc, for the window's size on both sides;
 *   2. a rotation above 5, or a destination in tiles: VEXO_ERR_UNSUPPORTED;
 *   3. a window that is larger than the source or reaches beyond it:
 *      VEXO_ERR_ARG;
 *   4. a smaller window of a source in tiles, an odd offset_x where chroma has
 *      half the columns (of packed pairs, too), an odd offset_y where it has
 *      half the rows: VEXO_ERR_UNSUPPORTED.
 *
 * Returns VEXO_OK, also for a success of vexo_csc that writes nothing, or
 * VEXO_ERR_MEMORY. Memory is wanted for sources in tiles alone, which are
 * converted as a whole first, and where vexo_csc does not go by each plane's
 * own stride: from YUV420 to YV12 with unequal strides of chroma, between NV12
 * and NV21 with an odd one.
 */
VEXO_API int32_t vexo_csc_rot(const vexo_img *src, uint32_t rotation,
                              const vexo_img *dst);

VEXO_END_DECLS
