/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Conversions between YUV layouts: whole pictures, the single planes they are
 * made of, and tiles. No sample changes its value but in yuyv_to_yuv420.
 *
 * All calls are re-entrant and check nothing. Source and destination do not
 * overlap but in vexo_csc_swap_8byte8. A plane with a width or height below 1
 * is left alone at once, and its pointers may be null. Strides may be negative
 * but for the destination's chroma of vexo_csc_nv21_to_nv12 and
 * vexo_csc_swap_8byte8.
 */
#pragma once

#include "csc_kernels.h"

VEXO_BEGIN_DECLS

/*
 * Whole pictures, in the shape of every kernel (csc_kernels.h). Luma is copied
 * with plane 0's width and height; chroma goes by the widths and heights of the
 * source's own chroma planes, w x h below (plane 1's for pairs and for
 * interleaving, which do not read those of plane 2). The destination's planes
 * are as large as what is said to be written.
 *
 * yuv420 to nv12 and nv21 interleaves the planes: w pairs in h rows. To yuv422n
 * each chroma row is written twice: w x 2 h, so that of an odd picture height
 * H, with h = (H + 1) / 2, the chroma planes take H + 1 rows.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_nv21;
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_yuv422n;

/*
 * Every second chroma row, from the first: w x h / 2, rounded down. Quirk: of
 * an odd height the last chroma row is not written, though 4:2:0 has one for
 * it: rows are taken in pairs.
 *
 * Of yuv444 every second column too: (w + 1) / 2 x (h + 1) / 2.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_yuv422n_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_yv16_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_yv16_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_yuv444_to_yuv420;

/* The pairs taken apart: planes of w x h. */
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_nv12_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_yv12;

/*
 * The chroma plane is copied, w pairs in h rows, then the two bytes of every
 * pair exchanged by vexo_csc_swap_8byte8 over dst_stride[1] x
 * (src_height[0] / 2) bytes of the destination. Quirk: it READS AND WRITES THE
 * PADDING behind each chroma row, the last one's too, and wraps its count to 16
 * bits a factor as described there; with h = (H + 1) / 2 rows of an odd height
 * H the last row is copied and not exchanged. The copy rounds an odd stride
 * down, the exchange does not. Both are what callers know of these two formats.
 * vexo_csc does the same from NV12 to NV21.
 *
 * The destination's plane 1 has at least the bytes of both: (h - 1) x the even
 * stride + 2 w, and dst_stride[1] x (H / 2) rounded up to even, 2 or more.
 * dst_stride[1] is positive.
 */
VEXO_API vexo_csc_kernel vexo_csc_nv21_to_nv12;

/*
 * Packed 4:2:2 to planar 4:2:0: luma as it is; the chroma of rows 2j and 2j + 1
 * is averaged, (c0 + c1) >> 1, and a last unpaired row keeps its own. Of a
 * picture of W x H the chroma is (W + 1) / 2 x (H + 1) / 2; an odd width reads
 * its last pair's U and V: source rows have 2 W bytes, then 2 W + 2.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuyv_to_yuv420;

/* Each 16-bit sample of the three planes, each of its own size, shifted right
 * by 2; of what then does not fit a byte the low byte is kept. */
VEXO_API vexo_csc_kernel vexo_csc_yuv420Planar16_to_yuv420Planar;

/*
 * Single planes of bytes. A width or height below 1 does nothing.
 */

/* Every second byte of every second row, from the first:
 * (width + 1) / 2 bytes of (height + 1) / 2 rows. */
VEXO_API void vexo_csc_2x2_to_1x1(const uint8_t *src, int32_t width,
                                  int32_t height, int32_t src_stride,
                                  int32_t dst_stride, uint8_t *dst);

/* Every second row, from the first: height / 2 rows of width bytes. */
VEXO_API void vexo_csc_1x2_to_1x1(const uint8_t *src, int32_t width,
                                  int32_t height, int32_t src_stride,
                                  int32_t dst_stride, uint8_t *dst);

/* Every row twice: 2 x height rows. */
VEXO_API void vexo_csc_1x1_to_1x2(const uint8_t *src, int32_t width,
                                  int32_t height, int32_t src_stride,
                                  int32_t dst_stride, uint8_t *dst);

/* Takes rows of `width` bytes, pairs, apart: the first of each pair to dst_a,
 * the second to dst_b. An odd last byte goes to dst_a. */
VEXO_API void vexo_csc_8b8b_unpck(const uint8_t *src, int32_t width,
                                  int32_t height, int32_t src_stride,
                                  int32_t dst_stride_a, int32_t dst_stride_b,
                                  uint8_t *dst_a, uint8_t *dst_b);

/* Makes pairs of two planes of `width` samples: rows of 2 x width bytes, in
 * pairs the byte of src_a first. */
VEXO_API void vexo_csc_8b8b_pck(const uint8_t *src_a, const uint8_t *src_b,
                                int32_t width, int32_t height,
                                int32_t src_stride_a, int32_t src_stride_b,
                                int32_t dst_stride, uint8_t *dst);

/*
 * Pixels of four bytes and four planes of bytes: byte k of a pixel is plane
 * k's. `width` counts pixels. Unpacking skips null planes, packing takes 255
 * for theirs; each is the other's inverse.
 */
VEXO_API void vexo_csc_8b8b8b8b_unpack(
    const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
    int32_t dst_stride_0, int32_t dst_stride_1, int32_t dst_stride_2,
    int32_t dst_stride_3, uint8_t *dst_0, uint8_t *dst_1, uint8_t *dst_2,
    uint8_t *dst_3);
VEXO_API void vexo_csc_8b8b8b8b_pack(uint8_t *dst, int32_t width,
                                     int32_t height, int32_t dst_stride,
                                     int32_t src_stride_0, int32_t src_stride_1,
                                     int32_t src_stride_2, int32_t src_stride_3,
                                     const uint8_t *src_0, const uint8_t *src_1,
                                     const uint8_t *src_2,
                                     const uint8_t *src_3);

/*
 * Exchanges the bytes of every pair, in place, over one run of bytes without
 * regard to rows. The count is (stride mod 2^16) x (rows mod 2^16), both taken
 * as signed 16-bit numbers. Pairs at 0, 2, 4, ... below the count are
 * exchanged. Quirk: the first one always, even of an empty plane, whose pointer
 * is not null therefore: the run is at least 2 bytes and ends one beyond an odd
 * count. It looks for its end behind each pair.
 */
VEXO_API void vexo_csc_swap_8byte8(uint8_t *plane, int32_t stride,
                                   int32_t rows);

/*
 * Tiled pictures: 4:2:0 with plane 0 luma and plane 1 U, V byte pairs. Tiles
 * lie back to back from the plane pointers; strides are not read. W x H being
 * the size of plane 0, a chroma plane has W bytes a row and H / 2 rows, rounded
 * down; the size in the fields of plane 1 is not read. Tiles are stored whole,
 * their rows one behind the other:
 *
 *   layout    luma tiles  chroma tiles  order of tiles
 *   t64x32    64 x 32     64 x 32       vexo_get_tile_offset
 *   t16x16    16 x 16     16 x 8        left to right, then top to bottom
 *   t8x8      8 x 8       8 x 4         the same
 *   t256x16   256 x 16    256 x 8       the same
 *
 * The least plane is its whole tiles. With c tiles across and r down to cover
 * it that is c r tiles' bytes, of t64x32
 *   r even: (r / 2) ((c + 1) / 2) 8192, less 2048 where c is odd;
 *   r odd:  (r / 2) ((c + 1) / 2) 8192 + 2048 c.
 *
 * What goes to rows reads nothing beyond the picture, not even inside its last
 * tiles; conversions to RGB (csc_kernels.h) want whole ones.
 */

/*
 * Offset of byte (x, y) in a t64x32 plane of width x height bytes; 0 <= x <
 * width, 0 <= y < height. Units of 8192 bytes hold two tiles by two, crossed in
 * every second unit column; an unpaired last tile row lies in plain order.
 */
VEXO_API int32_t vexo_get_tile_offset(int32_t width, int32_t height, int32_t x,
                                      int32_t y);

/*
 * One plane of tiles to rows; width and height are those of the plane, in bytes
 * and rows. The 16x16 and 8x8 forms are for luma, 16x8 and 8x4 for chroma.
 */
VEXO_API void vexo_csc_copy_16x16tiles_to_linear(const uint8_t *src,
                                                 int32_t width, int32_t height,
                                                 int32_t dst_stride,
                                                 uint8_t *dst);
VEXO_API void vexo_csc_copy_16x8tiles_to_linear(const uint8_t *src,
                                                int32_t width, int32_t height,
                                                int32_t dst_stride,
                                                uint8_t *dst);
VEXO_API void vexo_csc_copy_8x8tiles_to_linear(const uint8_t *src,
                                               int32_t width, int32_t height,
                                               int32_t dst_stride,
                                               uint8_t *dst);
VEXO_API void vexo_csc_copy_8x4tiles_to_linear(const uint8_t *src,
                                               int32_t width, int32_t height,
                                               int32_t dst_stride,
                                               uint8_t *dst);
/* 16 x 8 tiles of pairs, taken apart; an odd last byte is a U. */
VEXO_API void vexo_csc_unpack_16x8tiles_to_linear(
    const uint8_t *src, int32_t width, int32_t height, int32_t dst_stride_u,
    uint8_t *dst_u, int32_t dst_stride_v, uint8_t *dst_v);

/*
 * Whole pictures, to planes of W x H luma and H / 2 rows of chroma: W bytes of
 * nv12 and nv21, of planes (W + 1) / 2 for U and W / 2 for V. An odd width's
 * last chroma byte is a U; to nv21, where it has no partner to change places
 * with, it keeps its place.
 */
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_yv12;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_nv12;
VEXO_API vexo_csc_kernel vexo_csc_t64x32_to_nv21;
VEXO_API vexo_csc_kernel vexo_csc_t16x16_to_yuv420;
VEXO_API vexo_csc_kernel vexo_csc_t16x16_to_nv12;

/* Writes W bytes and H / 2 rows of chroma, or as many as the source's plane 1
 * has samples, twice, and rows when those are fewer: U has (W + 1) / 2 samples
 * a row, V W / 2. Bytes of the tiles beyond the picture are left as they are.
 */
VEXO_API vexo_csc_kernel vexo_csc_yuv420_to_t64x32;

VEXO_END_DECLS
