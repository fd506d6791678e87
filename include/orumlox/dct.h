/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Scaling down in the domain of the discrete cosine transform, by any ratio.
 *
 * The destination is tiled in blocks of 4 x 4 samples. Each takes one block of
 * the source, about 4 x ratio samples a side; the source block's lowest 4 x 4
 * DCT-II coefficients are weighted and brought back to 4 x 4 samples by a
 * 4-point integer transform.
 *
 * A plan is made once (_init) into a context that the caller owns, used for any
 * number of pictures of the same geometry and released (_deinit). One context
 * is not to be used by two calls at once; calls with different contexts do not
 * touch each other. Source and destination do not overlap. Nothing outside the
 * stride x buf_height bytes of a plane is read or written, and no byte of a
 * destination comes from memory that nobody wrote. Arguments are not checked.
 *
 * A plane is served when
 *   - its sizes in the source, after any pre-scaling, and in the destination
 *     are at least 1, and below 2^31 - 8 when padded to whole blocks;
 *   - it is enlarged to four times its size at most; ratios below 1 (enlarging)
 *     are carried out by the same rule, but not well;
 *   - blocks have fewer than 65536 samples a side, or the words of a basis
 *     could not tell them apart, and the largest (k + 1 by m + 1, see below) at
 *     most 32899^2 samples, or its first weight would be 0;
 *   - there are at most 2^21 blocks: 8192 x 4096 samples.
 * A plane that is not served has no blocks, and is left alone. Planning takes
 * time in proportion to the sides of blocks and to their number, some
 * milliseconds at these limits.
 *
 * Every plane is scaled by its own sizes; chroma need not be half of luma but
 * where a call says so. A plane's stride holds a row (two bytes a pair) and its
 * buf_height all rows; where one of them is below 1, and where the source has
 * no sample, the destination's plane is left alone.
 *
 * NV12 and NV21 pictures (vexo_rsz_new), RGBA8888 pictures
 * (vexo_rsz_new_rgba8888), and thumbnails (vexo_txc_new), scaled and turned.
 */
#pragma once

#include <semaphore.h>

#include "img.h"

VEXO_BEGIN_DECLS

/*
 * The plan. The caller allocates it, so its size is part of the interface;
 * _init clears it and fills it in, and it is read-only from then on, save for
 * the contents of the buffers it owns. Arrays are by plane (0 luma, 1 either
 * chroma component, which are planes of their own) and by block type. Types
 * differ in the size of their source blocks: with k = int(4 x horizontal ratio)
 * and m = int(4 x vertical ratio) they are k x m, k + 1 x m, k x m + 1 and
 * k + 1 x m + 1.
 */
typedef struct vexo_rsz_new_context {
  /* Sizes in samples after padding to whole blocks: a destination size D that
   * is no multiple of 4 grows by p = 4 - D mod 4, the source by
   * int(ratio x p), and 1 more when int(100 x ratio x p) is no multiple of 100.
   * What the source lacks is repeated from its last column or row. Quirk:
   * fractions below 0.01 are dropped, so that ratios that are not exact in
   * floating point add no sample. */
  int32_t src_width[2];
  int32_t src_height[2];
  int32_t dst_width[2];
  int32_t dst_height[2];
  /* Of the planes that blocks are taken from, after the pre-scaling: bytes
   * between rows, and rows there are. */
  int32_t src_stride[2];
  int32_t src_rows[2];
  /* Bytes between rows of the planes that blocks are written to, and the rows
   * allocated: blocks are written in full as far as these reach, beyond the
   * visible size too. 0 for destinations other than NV12, NV21 and YUV420. */
  int32_t dst_stride[2];
  int32_t dst_rows[2];
  /* Source over destination, after padding; and int(ratio + 0.999). */
  float horizontal_ratio[2];
  float vertical_ratio[2];
  int32_t horizontal_span[2];
  int32_t vertical_span[2];
  /* Source blocks, in samples. */
  int32_t block_width[2][4];
  int32_t block_height[2][4];
  /* 4 x span - block size. */
  int32_t horizontal_shift[2][4];
  int32_t vertical_shift[2][4];
  /* With h = int(400 x vertical ratio) mod 100 and w of the horizontal one: 1
   * when both are 0, 2 when h alone is, 3 when w alone is, else 4. */
  int32_t types[2];
  /* Rows of blocks m and m + 1 high, columns of blocks k and k + 1 wide. Of
   * n = rows or columns in all, t of them the larger, the i-th one is larger
   * when i x t / n and (i + 1) x t / n, rounded to the nearest, halves up,
   * differ: blocks begin within half a sample of where the ratio puts them.
   * Without larger ones up to a hundredth of a sample a block is left over. */
  int32_t short_rows[2];
  int32_t tall_rows[2];
  int32_t narrow_columns[2];
  int32_t wide_columns[2];
  /* By coefficient, row (vertical frequency) by row, in 1 / 2^17:
   *   A B A B   with s = 1.004 / sqrt(block width x block height):
   *   B C B C   A = int(s x 0.25 x 2048 x 64), B of 0.3162, C of 0.4,
   *   A B A B   single precision, from the left. They hold the scale of the
   *   B C B C   4-point transform.
   * Quirk: 1.004 instead of 1, a slight boost. */
  int32_t weights[2][4][16];
  /* Chroma components of the source, the second one half the buffer further. */
  uint8_t *chroma;
  /* Scaled chroma components, likewise. */
  uint8_t *dst_chroma;
  /* The library's notes on planes 0 and 1. */
  void *notes[2];
  /* Type, first source column and first source row of every block, those of
   * plane 0 and then those of plane 1, row by row. */
  uint8_t *block_types;
  int32_t *block_columns;
  int32_t *block_rows;
  /* Work areas, of 19 KiB and of one source block, or 128 bytes for each of its
   * columns and 16 for each of its rows. */
  uint8_t *work[2];
  /* The source pre-scaled. */
  uint8_t *pre_luma;
  uint8_t *pre_chroma;
  int32_t prescale; /* 0, 2 or 4 */
  /* Set when there is a pre-scale factor, the layout selector is 0, and the
   * source's width is not its stride or its height not its buf_height. */
  int32_t padding_needed;
  /* Set when there is a pre-scale factor, of either value, and the source's
   * plane 0 is twice, or four times, as wide and high as the destination's:
   * block means do the whole job, and sizes and tables stay 0. */
  int32_t exact_ratio;
  /* With layout selector 1 and a pre-scale factor: the source's plane 0 stride,
   * or (stride - 1) rounded down to a multiple of 32 where it is none. */
  int32_t aligned_stride;
  int32_t stride_not_aligned;
} vexo_rsz_new_context;

/*
 * A shift-matrix set: one entry for each block type of plane 0 and then each of
 * plane 1; an entry is an array of n rows, a row 16 words. Row i of set A's
 * entry holds what samples 4 i to 4 i + 3 of a block's columns add to each of
 * the four coefficients: word 4 u + y is entry (u, 4 i + y) of the orthonormal
 * DCT-II of as many points as the block is high, 0 beyond the block; set B's is
 * that of the block's width. With e the least number for which 4^e >= points,
 * entries of A are in 1 / 2^min(13 + e, 23 - e), those of B in
 * 1 / 2^min(13 + e, 16 - e), each within 1.5 of the exact ones, those in the
 * middle within 4. Rows 1 to 3 add up to 0, so that flat blocks have no other
 * coefficient than the first; B's row 0 adds up to within 1 of the exact sum.
 */
typedef int16_t ***vexo_shift_set;

/*
 * A picture is scaled in four steps, `pair` being two descriptors everywhere,
 * the source and right behind it the destination:
 *     vexo_rsz_new_set_img(pair);
 *     vexo_rsz_new_init(pair, &plan, &a, &b, 0);
 *     vexo_rsz_new(&pair[0], &pair[1], &plan, a, b);
 *     vexo_rsz_new_deinit(pair, &plan, a, b);
 */

/*
 * Fills in the geometry that the other calls go by: strides, buf_heights and
 * chroma sizes. For NV12 and NV21 they come from the width W and height H of
 * plane 0, by the layout selector, the destination's color_std:
 *   0: strides W rounded up to 128, buf_height H rounded up to 32, and H / 2
 *      rounded up to 16 for plane 1;
 *   1, source: strides W, and W rounded up to even; buf_height H and H / 2;
 *   1, destination: strides W rounded up to 16; buf_height H rounded up to 16,
 *      H / 2 rounded up to 16;
 *   0 and 1: width and height of plane 1 W / 2 and H / 2, rounded down.
 * With another selector they are left alone. For YUV420 stride and buf_height
 * of planes 0 to 2 are their width and height rounded up to 16. Other formats
 * are left alone.
 *
 * Returns VEXO_OK.
 *
 * Quirk: the destination's selector counts for both descriptors, because
 * callers set it there alone.
 */
VEXO_API int32_t vexo_rsz_new_set_img(vexo_img *pair);

/*
 * Plans the scaling of `pair`: planes 0 and 1, of which widths, heights,
 * strides, buf_heights and formats are read, no pixels. `prescale` is 2 or 4 to
 * halve or quarter the source by block means first, or 0. The sets are the
 * caller's pointers; both are null when the exact ratio flag is set.
 *
 * With a pre-scale factor the source counts as W / 2 rounded down to even by
 * H / 2, or W / 4 rounded UP to even by H / 4; plane 1 as half of that width by
 * H / 4, or H / 8. What plane 1 lacks of that is repeated from its last column
 * or row. The smallest sources that are scaled are
 *   factor 0: 1 sample, or pair;
 *   factor 2: W x H of 4 x 2; chroma 4 x 4, plane 1 of stride 4 and height 2;
 *   factor 4: W x H of 4 x 4; chroma 4 x 8, plane 1 of stride 8 and height 4.
 *
 * Returns VEXO_OK, or VEXO_ERR_ARG when memory cannot be had (or a buffer
 * would need more than 2^31 bytes): everything allocated is freed, the context
 * is clear, the sets are null, and scaling with them and releasing them do
 * nothing.
 *
 * Quirk: the two factors round differently, because callers read the sizes in
 * the context.
 */
VEXO_API int32_t vexo_rsz_new_init(const vexo_img *pair,
                                   vexo_rsz_new_context *context,
                                   vexo_shift_set *a, vexo_shift_set *b,
                                   int32_t prescale);

/*
 * Scales src, NV12 or NV21, into dst, of the planned geometry and kind: NV12
 * or NV21 (plane 1 gets pairs in the source's order) or YUV420 (plane 1 gets
 * the first component, plane 2 the second, with the stride and rows of plane
 * 1, so its buffer is as large). Any other destination is left alone but for
 * luma, which it gets with a pre-scale factor when its planned stride is not 0.
 *
 * Without a pre-scale factor this thread does everything. With one, and no
 * exact ratio, this thread does plane 0 and one that it starts and joins does
 * the chroma; when that thread cannot be started " err \n " is printed to
 * standard output and this thread does its work, as it does, silently, when
 * there is no memory for the thread's record or this one may run on a single
 * processor only, where threads gain nothing.
 *
 * Pre-scaling means by rows: all of the block for 2, for 4 rows 0 and 2 when
 * the context's stride_not_aligned is 0 (vexo_8b_rsz_down_4x4 and
 * vexo_8b8b_rsz_down_4x4, whose pairs are grouped), else what
 * vexo_8b_rsz_down_4x4_non_alignment and vexo_8b8b_rsz_down_4x4_non_alignment
 * do; runs of pairs begin at column 0, and what a plane 1 stride leaves of a
 * last run takes neighbours. With the exact ratio flag the destination, NV12 or
 * YUV420 only, is the means of vexo_8b_rsz_down_..._non_dct and
 * vexo_8b8b_rsz_down_..._non_dct. Samples beyond the source's width or height
 * are those of its last column or row.
 *
 * What the factor 4 costs: the middle of rows 0 and 2 is half a row above that
 * of the block. The middle of grouped pairs is 1.5 pairs beside that of their
 * own block, right and left by turns, so where chroma rises by s a pair the
 * pre-scaled one is up to 1.5 s off; of that the scaling leaves, most where
 * blocks meet, up to 1.5 s at a ratio of 1 (after the pre-scaling), 0.9 s at
 * 1.25, 0.8 s at 1.5, 0.6 s at 2. Use the factor 2 where that is too much.
 *
 * Samples are within 1 of what the rule gives in exact arithmetic; at ratios
 * below 1.5 a few in a million are 2 off. Uses 4 KiB of stack at most.
 *
 * Returns VEXO_OK.
 *
 * Quirk: with a pre-scale factor NV21 gets luma and no chroma, because callers
 * know its plane 1 to be left alone.
 */
VEXO_API int32_t vexo_rsz_new(const vexo_img *src, const vexo_img *dst,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b);

/* Frees what vexo_rsz_new_init allocated and clears the context; the pair is
 * not read. Returns VEXO_OK. */
VEXO_API int32_t vexo_rsz_new_deinit(const vexo_img *pair,
                                     vexo_rsz_new_context *context,
                                     vexo_shift_set a, vexo_shift_set b);

/*
 * RGBA8888, or any pixels of four bytes of which the fourth is not wanted.
 * `quartet` is four descriptors: the source, the destination (of which plane 0
 * is read: its width, height, stride), and the planar forms of both, in
 * buffers that the caller provides. Planes 0 to 2 of those hold bytes 0 to 2 of
 * the pixels; their formats are not read. The plan is made of plane 0 of the
 * planar forms (width, height, stride, buf_height), whose sizes are those of
 * the pictures; planes 1 and 2 are of the same sizes and buf_height, and have
 * strides of their own.
 */

/* As vexo_rsz_new_init, without a pre-scale factor. The context's entries for
 * plane 1 are those of component 1 where they are buffers, else 0; component 2
 * has its work area in `chroma` and its notes in `dst_chroma`. */
VEXO_API int32_t vexo_rsz_new_rgba8888_init(const vexo_img *quartet,
                                            vexo_rsz_new_context *context,
                                            vexo_shift_set *a,
                                            vexo_shift_set *b);

/*
 * Scales the source into the destination, by way of the planar forms. The
 * source is taken apart into the planar source; its three planes are scaled
 * into the planar destination, plane 0 on this thread, planes 1 and 2 each on
 * one that it starts and joins; and these are put together in the destination
 * with an alpha of 255, as far as blocks are written. Threads that are not or
 * cannot be started: as in vexo_rsz_new. Returns VEXO_OK.
 */
VEXO_API int32_t vexo_rsz_new_rgba8888(const vexo_img *quartet,
                                       vexo_rsz_new_context *context,
                                       vexo_shift_set a, vexo_shift_set b);

/* Frees what vexo_rsz_new_rgba8888_init allocated and clears the context.
 * Returns VEXO_OK. */
VEXO_API int32_t vexo_rsz_new_rgba8888_deinit(const vexo_img *quartet,
                                              vexo_rsz_new_context *context,
                                              vexo_shift_set a,
                                              vexo_shift_set b);

/*
 * Thumbnails: scaled by vexo_rsz_new, then turned by vexo_rot (a code of
 * VEXO_ROT_). `pair` is the source and the scaled picture before it is turned.
 * Every call gets the same rotation code. All three return VEXO_OK whatever
 * happens: failures to allocate and formats that vexo_rot does not serve are
 * not told, and leave the final picture's pixels alone.
 */

/*
 * Plans the scaling and, unless the code is 0, makes `intermediate`, the
 * caller's descriptor, a picture like the pair's second with memory of its own:
 * format, and width, height, stride and buf_height of planes 0 and 1 (and 2 for
 * YUV420) are copied, and planes are allocated for YUV420 and NV12. Its plane 0
 * is null for other formats and when memory cannot be had: vexo_txc_new then
 * does nothing. Planes that the scaler leaves alone are turned as zeros.
 */
VEXO_API int32_t vexo_txc_new_init(const vexo_img *pair, vexo_img *intermediate,
                                   vexo_rsz_new_context *context,
                                   vexo_shift_set *a, vexo_shift_set *b,
                                   int32_t prescale, int32_t rotation);

/*
 * Makes the thumbnail of pair[0] in `result`. Mind the order: the intermediate
 * comes third. With code 0 the picture is scaled straight into `result`, which
 * has the geometry of pair[1].
 *
 * Otherwise the geometry of `result` is set first, its plane pointers kept.
 * With W and H, stride S and buf_height T of the intermediate's plane 0:
 *   YUV420, codes 1 and 2: plane 0 is H by W, stride T, buf_height S; planes 1
 *     and 2 are H / 2 by W / 2, stride T / 2, buf_height S / 2. Quirk: stride
 *     and rows trade places, so that the turned picture fits a buffer of the
 *     same size;
 *   YUV420, code 3: plane 0 as the intermediate's, planes 1 and 2 both as its
 *     plane 1;
 *   NV12, codes 1 and 2, by the layout selector, result->color_std: H by W, and
 *     H / 2 pairs by W / 2; selector 0: strides H rounded up to 128,
 *     buf_height W rounded up to 32, and half of that; selector 1: strides H
 *     rounded up to 16, buf_height W and W / 2 rounded up to 16;
 *   NV12, code 3, selectors 0 and 1: planes 0 and 1 as the intermediate's;
 *   everything else, codes 4 and 5 among them: as the caller set it.
 * A buffer of `result` has the stride x buf_height bytes of that. The planes of
 * the intermediate are turned in their own sizes: a quarter turn makes w rows
 * of h samples or pairs of one that is w x h, for which the above must have
 * room. So for YUV420 planes 1 and 2 are at most S / 2 by T / 2; for NV12 plane
 * 1 is at most as wide as result's has rows and half as high as its stride.
 */
VEXO_API int32_t vexo_txc_new(const vexo_img *pair, vexo_img *result,
                              const vexo_img *intermediate,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b, int32_t rotation);

/* Releases the plan and, unless the code is 0, the intermediate's memory, whose
 * plane 0 becomes null. */
VEXO_API int32_t vexo_txc_new_deinit(const vexo_img *pair,
                                     vexo_img *intermediate,
                                     vexo_rsz_new_context *context,
                                     vexo_shift_set a, vexo_shift_set b,
                                     int32_t rotation);

/*
 * The parts of the above, exported for callers that plan by steps or bring
 * threads of their own. More of them are declared in unprefixed.h.
 */

/*
 * The forward transform of one dense block of `width` x `height` samples, by an
 * entry of set A and one of set B of these sizes: c[4 u + v] is 65536 times the
 * orthonormal DCT-II coefficient, u being the vertical frequency.
 *
 * From 16512 samples on (129 x 128), where 32 bits would not hold those of the
 * brightest blocks, c is limited to -2^31 .. 2^31 - 1; the scaler itself, which
 * needs only c >> 16, is not. c[0] is limited, too, so that the weighted
 * coefficient of white stays below 2^15: c[0] >> 16 is at most 8388607 / A, A
 * being the block's weight.
 */
VEXO_API void vexo_fdct_blocknxn_full_compute(const uint8_t *block,
                                              int32_t width, int32_t height,
                                              int16_t *const *a,
                                              int16_t *const *b, int32_t *c);

/*
 * The inverse transform: weights coefficients and writes one 4 x 4 block at
 * dst + row * stride + column. Coefficients become w = ((c >> 16) x weight)
 * >> 8, cut to 16 bits. Then for each row of coefficients C0..C3
 *   e0 = 128 (C0 + C2), e1 = 128 (C0 - C2),
 *   oa = 53 C1 - 128 C3, ob = 128 C1 + 53 C3,
 *   (e0 + ob, e1 + oa, e1 - oa, e0 - ob) >> 7
 * and the same for each column with >> 14, cut to 16 bits and limited to
 * 0..255. Shifts are arithmetic.
 */
VEXO_API void vexo_idct_block4x4(uint8_t *dst, int32_t row, int32_t column,
                                 int32_t stride, const int32_t *c,
                                 const int32_t *weights);

/* The same from weighted coefficients w. Of the block at (row, column) only the
 * pixels left of `stride` and above `rows` are written. Quirk: it computes in
 * integers, whatever its name says, so that both give the same samples. */
VEXO_API void vexo_idct_blocknxn_float(uint8_t *dst, int32_t row,
                                       int32_t column, const int16_t *w,
                                       int32_t stride, int32_t rows);

/* The argument of the thread for chroma. */
typedef struct vexo_rsz_new_worker {
  /* Arguments of vexo_rsz_new. */
  const vexo_img *src;
  const vexo_img *dst;
  vexo_rsz_new_context *context;
  vexo_shift_set a;
  vexo_shift_set b;
  /* Waited for before the work, and posted behind it. */
  sem_t *start;
  sem_t *done;
} vexo_rsz_new_worker;

/* The argument of the threads for planes 1 and 2 of RGBA8888. */
typedef struct vexo_rsz_new_rgba8888_worker {
  /* The plane of the planar source and that of the planar destination. */
  const uint8_t *src;
  uint8_t *dst;
  /* Arguments of vexo_rsz_new_rgba8888. */
  vexo_rsz_new_context *context;
  vexo_shift_set a;
  vexo_shift_set b;
  /* Waited for before the work, and posted behind it. */
  sem_t *start;
  sem_t *done;
} vexo_rsz_new_rgba8888_worker;

/*
 * Thread entries, of a vexo_rsz_new_worker (_2 and _4 for the pre-scale
 * factors) and of a vexo_rsz_new_rgba8888_worker (plane 1, and _1 for plane 2):
 * wait for `start`, do the work, post `done` and end the calling thread with a
 * null result. The worker and what it points to stay the caller's.
 */
VEXO_API void *vexo_new_rsz_thread_prsz_2(void *worker);
VEXO_API void *vexo_new_rsz_thread_prsz_4(void *worker);
VEXO_API void *vexo_new_rsz_thread_prsz_4_rgba8888(void *worker);
VEXO_API void *vexo_new_rsz_thread_prsz_4_rgba8888_1(void *worker);

VEXO_END_DECLS
