/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Scaling for quality: Lanczos filters of three lobes.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/* vexo_img.mode of a destination: "alph", the first letter in the top byte.
 * vexo_rsz_apex_c weighs the colours of 32-bit pixels by their alpha. */
#define VEXO_MODE_ALPHA 0x616C7068

/*
 * Scales an image into another of the same format and of any size by a Lanczos
 * filter of three lobes in each direction:
 * vexo_rsz_apex_c(&src, &dst). Where a direction shrinks, the filter is as much
 * wider as the source is larger, so that what the destination cannot show
 * fades instead of folding back.
 *
 * The rule, by which every processor writes the same bytes:
 *   Weights. An output lies where the filter is centred in the source. Each
 *     source sample below the filter has a weight of 14 bits; those of an
 *     output sum to 16384. They are rounded so that the weights up to each
 *     sample sum to the nearest number. The samples at an edge stand for those
 *     beyond it.
 *   Across. Samples of b bits become words that have their first 14 bits, b of
 *     them and 14 - b of a fraction, rounded once, halves up. Words have a sign
 *     and room for what swings beyond black and white; nothing is cut off.
 *   Down. Those words become samples, rounded once, halves up, and held between
 *     0 and the largest sample.
 * A direction that keeps its size has weights of 16384 alone and changes
 * nothing. Flat pictures stay flat to the bit.
 *
 * Formats:
 *   YUV400, YUV420, YUV422N, YUV444, YV12, YV16, NV12, NV21, YUV422W;
 *   RGB888, BGR888 and the four 32-bit ones;
 *   YUV420PLANAR16, P010LE: samples of 10 bits. The other six are not read, and
 *     written as 0; strides are even.
 *
 * Planes 1 and 2 are centred like plane 0, each by its own sizes, unless they
 * have half its width or half its height, rounded up or down, in both images
 * and by the format. Then they are scaled in that direction by plane 0's ratio,
 * and stay where they are beside luma: chroma lies on the left one of two
 * columns, as video has it, and between two rows.
 *
 * With VEXO_MODE_ALPHA as the destination's mode, 32-bit pixels whose size
 * changes have their colours multiplied by alpha before and divided by it
 * after, in 14 bits, so that pixels which do not show do not count; where alpha
 * becomes 0, so do the colours. All other calls take the four bytes alike.
 *
 * Source and destination do not overlap. Strides may be negative. Nothing is
 * read or written beyond the samples of the rows. Re-entrant; takes scratch
 * memory for the weights and for as many rows of the destination's width as
 * the filter is high.
 *
 * Returns VEXO_OK. VEXO_ERR_ARG when the format codes differ or the width or
 * height of a plane is below 1; VEXO_ERR_UNSUPPORTED for every other format,
 * and when a plane is more than 64 times as wide or high as the other image's;
 * VEXO_ERR_MEMORY when scratch memory cannot be had or takes 4 GiB. Nothing is
 * written then.
 */
VEXO_API int32_t vexo_rsz_apex_c(const vexo_img *src, const vexo_img *dst);

/* 1 for formats that vexo_rsz_apex_c takes, else 0. */
VEXO_API int32_t vexo_rsz_apex_supports(int32_t format);

VEXO_END_DECLS
