/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The kernels of scaling, by type of sample and role, and the rule by which
 * they compute.
 *
 * Types: 8b one byte; 8b8b pairs, 8b8b8b and 8b8b8b8b pixels of bytes, each
 * component by the rule for itself; 5b6b5b pixels of 16 bits, the rule applied
 * to each component's own 5 or 6 bits; 16b and 16b16b 16-bit samples and pairs
 * of them. 16-bit types take odd strides rounded down to even, all others
 * strides as they are.
 *
 * The rule. All quotients are whole, all shifts round down.
 *
 * Reducing S samples to D, q = S / D, e = S mod D. The outputs' sources follow
 * each other q samples apart, from the first. An accumulator that begins at 0
 * adds e for each output; when it has reached D the output is blended with the
 * next source sample, the source skips one more sample and the accumulator
 * drops by D.
 *   down_mult (e is 0 both ways): the mean (a + b + c + d) >> 2 of the 2 x 2
 *     samples at the top left of each q x q cell. Quirk: no mean of the whole
 *     cell, which would read all of it.
 *   down_non_mult: a sample that neither direction blends is itself; blended in
 *     one, (a + b) >> 1 with its right or its lower neighbour; in both, the
 *     mean of four as above. A direction without a remainder does not blend.
 *   down_w, down_h: one direction alone. Without a remainder every output is
 *     (a + b) >> 1 of the first two samples of its cell; with one, only the
 *     blended outputs are. Quirk: so different, as down_mult and down_non_mult
 *     are.
 *
 * Enlarging S samples to D, r = D / S, m = D mod S. Each source sample a is
 * followed by n values on the way to the next sample b, n being r - 1, or r
 * when an accumulator that begins at 0 and adds m for each sample reaches S,
 * dropping by S then. The last sample's next is itself. The k-th of n is
 *   up, up_h: (a (n + 1 - k) + b k) / (n + 1);
 *   up_mode1, up_h_mode1: the low byte of (b k w + a (64 - k w)) >> 6, with w
 *     the entry at min(n + 1, 33) of the fixed list
 *     0 0 32 21 16 13 11 9 8 7 6 6 5 5 4 4 4 3 3 3 3 3 3 2 2 2 2 2 2 2 2 2 2 1
 *     (Quirk: no formula gives it, 4 at 14 and 3 at 17, because callers know
 *     these samples). k w may exceed 64 in segments longer than 64; of 5b6b5b
 *     the component's own low bits are kept then.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/*
 * A kernel takes the sizes of the whole job, as its plane scaler does, widths
 * in samples; strides in bytes, of either sign. It returns nothing and checks
 * only that the sizes it reads are positive, else it does nothing: source and
 * destination are apart and of the ratio that its role names, or the result is
 * undefined. By role:
 *   down_mult, down_non_mult: from source to destination.
 *   down_w, up, up_mode1: across. `dst` receives src_height rows of dst_width
 *     samples; dst_height is not read.
 *   down_h, up_h, up_h_mode1: down. `src` has src_height rows of dst_width
 *     samples; src_width is not read.
 */
typedef void vexo_rsz_kernel(const uint8_t *src, int32_t src_width,
                             int32_t src_height, int32_t dst_width,
                             int32_t dst_height, uint8_t *dst,
                             int32_t src_stride, int32_t dst_stride);

VEXO_API vexo_rsz_kernel vexo_8b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_down_w;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_up;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_down_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_up_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_up;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_down_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_up_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b8b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b8b_rsz_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b8b_rsz_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b8b_rsz_up;
VEXO_API vexo_rsz_kernel vexo_8b8b8b_rsz_up_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b8b8b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b8b8b_rsz_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b8b8b_rsz_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b8b8b_rsz_up;
VEXO_API vexo_rsz_kernel vexo_8b8b8b8b_rsz_up_mode1;

VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_down_w;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_up;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_up_mode1;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_down_h;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_up_h;
VEXO_API vexo_rsz_kernel vexo_5b6b5b_rsz_up_h_mode1;

/* 8b8b8b and 8b8b8b8b have no kernels down: those of 8b serve, with rows of 3
 * and 4 times the width. */

VEXO_API vexo_rsz_kernel vexo_16b_rsz_down_mult;
VEXO_API vexo_rsz_kernel vexo_16b16b_rsz_down_mult;

/* down_non_mult under other names, meant for four sizes; any other sizes do as
 * well. Of 8b they are 1280 x 720 to 720 x 404 and 1280 x 580 to 720 x 326; of
 * 8b8b 640 x 360 to 360 x 202 and 640 x 360 to 360 x 163. Quirk: the last one
 * is not the chroma of the second 8b case; its height is that of the first. */
VEXO_API vexo_rsz_kernel vexo_8b_rsz_down_non_mult_720p_720x404;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_down_non_mult_720p_720x404;

/*
 * The same with a turn: what the unturned kernel of the role computes for
 * column i and row j is stored, in a destination of dst_width by dst_height
 * after the turn, at
 *   90l: row dst_height - 1 - i, column j;
 *   90r: row i, column dst_width - 1 - j;
 *   180: row dst_height - 1 - j, column dst_width - 1 - i.
 * Pairs keep their order. Of the quarter turns the roles across (down_w, up,
 * up_mode1) write src_height rows of dst_height samples, unturned, and do not
 * read dst_width; the roles down read src_height rows of dst_height samples. Of
 * 180 the roles across write unturned too.
 */
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_down_w;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_down_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_up;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_up_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90l_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_down_w;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_down_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_up;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_up_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_90r_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_down_w;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_down_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_up;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_up_h;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b_rsz_rot_180_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_down_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_up;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_up_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90l_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_down_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_up;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_up_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_90r_up_h_mode1;

VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_down_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_down_non_mult;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_down_w;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_down_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_up;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_up_h;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_up_mode1;
VEXO_API vexo_rsz_kernel vexo_8b8b_rsz_rot_180_up_h_mode1;

VEXO_END_DECLS
