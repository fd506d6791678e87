/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Halving and quartering one plane by the means of blocks, rounded down.
 *
 * 8b is a plane of bytes, 8b8b one of byte pairs, whose first and second bytes
 * are averaged apart. All sizes count bytes, those of 8b8b too: W bytes in an
 * output row, H output rows; of 8b8b an odd last byte is left alone. The source
 * has rows of exactly 2 W or 4 W bytes, the factor times W, one after the
 * other; the destination rows of W bytes, one after the other, unless said.
 *
 * All calls are re-entrant and check nothing; with a size below 1 they do
 * nothing, and pointers may be null. Nothing is read or written beyond the
 * rows. A destination stride may be negative. Where source and destination
 * overlap, the bytes of the outputs are computed and written one after the
 * other, row by row from the left.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/* Makes `height` rows of `width` bytes of the source. */
typedef void vexo_rsz_block_kernel(const uint8_t *src, uint8_t *dst,
                                   int32_t width, int32_t height);

/* The sum of the four samples of a 2 x 2 block, >> 2. */
VEXO_API vexo_rsz_block_kernel vexo_8b_rsz_down_2x2;
VEXO_API vexo_rsz_block_kernel vexo_8b8b_rsz_down_2x2;

/* The sum of the eight samples in rows 0 and 2 of a 4 x 4 block, >> 3. Quirk:
 * rows 1 and 3 are skipped, which halves the reads. */
VEXO_API vexo_rsz_block_kernel vexo_8b_rsz_down_4x4;

/*
 * Pairs in runs of 16 of a source row, which make 4: the outputs of a run take
 * its pairs 0 2 4 6, 1 3 5 7, 8 10 12 14 and 9 11 13 15 of rows 0 and 2; the
 * eight >> 3. Quirk: so interleaved, as vectors of pairs are added. A last run
 * of fewer pairs takes neighbours, 4 x to 4 x + 3 for its x-th output, of rows
 * 0 and 2.
 */
VEXO_API vexo_rsz_block_kernel vexo_8b8b_rsz_down_4x4;

/*
 * Some columns of a plane: of each row's W outputs the first N (non_alignment),
 * or those from N on (non_alignment_remain). The source's rows are 2 W or 4 W
 * bytes, the destination's W, whatever N. N is meant to be a multiple of 8
 * below or at W; it is taken as 0 or W where it lies beyond them, and of pairs
 * as N / 2 of them.
 */
typedef void vexo_rsz_columns_kernel(const uint8_t *src, uint8_t *dst,
                                     int32_t width, int32_t height,
                                     int32_t processed);

VEXO_API vexo_rsz_columns_kernel vexo_8b_rsz_down_2x2_non_alignment;
VEXO_API vexo_rsz_columns_kernel vexo_8b_rsz_down_2x2_non_alignment_remain;
VEXO_API vexo_rsz_columns_kernel vexo_8b8b_rsz_down_2x2_non_alignment;
VEXO_API vexo_rsz_columns_kernel vexo_8b8b_rsz_down_2x2_non_alignment_remain;

/* The sum of all 16 samples of a block, >> 4. */
VEXO_API vexo_rsz_columns_kernel vexo_8b_rsz_down_4x4_non_alignment;
VEXO_API vexo_rsz_columns_kernel vexo_8b_rsz_down_4x4_non_alignment_remain;

/*
 * Pairs grouped as in vexo_8b8b_rsz_down_4x4, runs beginning at column 0, or at
 * column N for the remain form. With the four pairs of a group in order and by
 * component, the output is
 *   rows 0 and 2: all four, the second and fourth counted twice,
 *   rows 1 and 3: the first and third alone,
 * >> 4. Quirk: so lopsided, for callers know these samples. A last run of fewer
 * than 16 pairs takes neighbours and all 16 samples alike.
 */
VEXO_API vexo_rsz_columns_kernel vexo_8b8b_rsz_down_4x4_non_alignment;
VEXO_API vexo_rsz_columns_kernel vexo_8b8b_rsz_down_4x4_non_alignment_remain;

/* The sum of all samples of each block, >> 2 or >> 4, pairs taking neighbours;
 * destination rows are `dst_stride` bytes apart. */
typedef void vexo_rsz_strided_block_kernel(const uint8_t *src, uint8_t *dst,
                                           int32_t width, int32_t height,
                                           int32_t dst_stride);
VEXO_API vexo_rsz_strided_block_kernel vexo_8b_rsz_down_2x2_non_dct;
VEXO_API vexo_rsz_strided_block_kernel vexo_8b8b_rsz_down_2x2_non_dct;
VEXO_API vexo_rsz_strided_block_kernel vexo_8b_rsz_down_4x4_non_dct;
VEXO_API vexo_rsz_strided_block_kernel vexo_8b8b_rsz_down_4x4_non_dct;

VEXO_END_DECLS
