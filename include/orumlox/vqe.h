/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Enhancement of decoded pictures: saturation, sharpening, deblocking, and the
 * anaglyph of a stereo frame. The table `lut`, color_sat_lut, color_sat and
 * detail_enh are declared in unprefixed.h.
 *
 * Null pointers are not detected unless said, but those of empty planes may be
 * null (a width, height or count below 1: nothing is done, at once); nothing
 * beyond the named planes is read or written. Strides of deblocking and of
 * vexo_fpa_frm_pack may be negative; the other calls take rows without gaps.
 * All calls but vexo_vqe_cs_init keep no state and are re-entrant, on planes of
 * their own. Nothing is allocated, no thread started.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/* --- colour saturation --------------------------------------------------- */

/*
 * Fills `lut` by color_sat_lut. The strength counts 1/1024: 1024 leaves
 * saturation as it is; below 1 it is 1180, about 1.15. Of others the low 16
 * bits count, as a signed value. Returns VEXO_OK. Not thread-safe: `lut` must
 * not be read or filled meanwhile.
 */
VEXO_API int32_t vexo_vqe_cs_init(int32_t strength);

/*
 * Clears the chroma of a YUV420 picture: width * height bytes of planes 1 and 2
 * of the destination become 0, dense, whatever the strides. The size is that of
 * the source's plane 1. Luma is neither read nor written. Returns VEXO_OK, or
 * VEXO_ERR_ARG unless both formats are VEXO_FMT_YUV420.
 *
 * Quirk: the call is meant to map chroma through a saturation table, but its
 * table is one of zeros that nothing fills, not `lut`. color_sat maps chroma
 * through `lut`.
 */
VEXO_API int32_t vexo_vqe_cs(const vexo_img *src, const vexo_img *dst);

/* --- detail enhancement -------------------------------------------------- */

/*
 * detail_enh on plane 0 of a YUV420 picture, whose width and height are the
 * source's and whose rows have no gaps: strides are not looked at. A strength
 * below 1 is handed on as 4. Chroma is neither read nor written. Returns
 * VEXO_OK, or VEXO_ERR_ARG unless both formats are VEXO_FMT_YUV420.
 */
VEXO_API int32_t vexo_vqe_de(const vexo_img *src, const vexo_img *dst,
                             int32_t strength);

/* Quirk: does nothing and returns VEXO_OK; the name is there for its callers.
 */
VEXO_API int32_t vexo_vqe_dejagging(void);

/* --- deblocking ---------------------------------------------------------- */

/*
 * The filter of ITU-T H.263 Annex J across the edges of 8 x 8 blocks, in place.
 * A, B, C, D are four consecutive samples across an edge, which lies between B
 * and C; S is the strength.
 *
 *   v = A - 4 B + 4 C - D;  d = |v >> 3|, an arithmetic shift: for negative v
 *   |v| / 8 is rounded up, for positive v down (Quirk: of the shift).
 *   m = max(0, d - max(0, 2 (d - S)));  d1 = m with the sign of v.
 *   B + d1 and C - d1, limited to 0..255, replace B and C.
 *   d2 = (A - D) >> 2, limited to -(m >> 1) .. m >> 1.
 *   A - d2 and D + d2 replace A and D.
 *
 * Strengths are meant to be 1 to 12, or 15; a strength below 1 changes nothing.
 *
 * Planes are `height` rows of `width` bytes, `stride` bytes apart. Edges are
 * filtered in order, and along an edge sample by sample: what one of them has
 * changed is what a later one finds, also where a stride shorter than a row
 * lays rows over each other.
 */

/* The edges between rows 8 k - 1 and 8 k for k from 1 to height / 8 - 1, top to
 * bottom, each from the left: none below a height of 16. */
VEXO_API void vexo_dbf8x8_h263_hor(uint8_t *plane, int32_t strength,
                                   int32_t stride, int32_t width,
                                   int32_t height);

/* The edges between columns 8 k - 1 and 8 k for k from 1 to width / 8 - 1, left
 * to right, each from the top: none below a width of 16. */
VEXO_API void vexo_dbf8x8_h263_ver(uint8_t *plane, int32_t strength,
                                   int32_t stride, int32_t width,
                                   int32_t height);

/* Deblocks a plane: the horizontal edges first, then the vertical ones, with a
 * strength of at most 12. */
VEXO_API void vexo_dbf8x8(uint8_t *plane, int32_t strength, int32_t stride,
                          int32_t width, int32_t height);

/*
 * Deblocks an image: both kinds of edges, with this strength, of each of the
 * planes 0, 1 and 2 whose pointer is not null, with its width, height and
 * stride, whatever the format. Callers with fewer planes set the pointers of
 * the others to null (for NV12 plane 2; its chroma is then filtered as `width`
 * bytes a row, pairs as if they were neighbours: set plane 1 to null as well to
 * leave it alone). Returns VEXO_OK, or VEXO_ERR_ARG for a strength above 15.
 * Quirk: a single plane takes any, and limits it to 12.
 */
VEXO_API int32_t vexo_dbf8x8_yuv(const vexo_img *img, uint32_t strength);

/* --- stereo frames ------------------------------------------------------- */

/*
 * Makes rows of RGB888 pixels of the red of view A and the green and blue of
 * view B. row_bytes is a row of the destination, 3 bytes a pixel (what is left
 * of it is not written); both views' rows are src_pitch bytes apart, the
 * destination's dst_pitch. rows below 1, row_bytes below 3: nothing.
 * The destination must not overlap the views.
 */
VEXO_API void vexo_fpa_frm_pack(const uint8_t *view_a, const uint8_t *view_b,
                                uint8_t *dst, int32_t rows, int32_t row_bytes,
                                int32_t src_pitch, int32_t dst_pitch);

/*
 * Turns an RGB888 frame of two views side by side into a red-cyan anaglyph of
 * half the width. Mode 1 takes the red of the left view, mode 2 that of the
 * right one. Returns VEXO_OK, or VEXO_ERR_ARG unless both formats are
 * VEXO_FMT_RGB888, plane 0 of the source is exactly twice as wide as the
 * destination's and as high, neither has gaps between its rows (strides of 3
 * bytes a pixel), and mode is 1 or 2.
 */
VEXO_API int32_t vexo_fpa(const vexo_img *src, const vexo_img *dst,
                          int32_t mode);

VEXO_END_DECLS
