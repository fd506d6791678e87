/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The exported functions and the table whose names do not begin with the
 * library's prefixes: parts of tone mapping, DCT scaling and enhancement, for
 * callers that bring threads of their own or go by steps. They are apart from
 * the other headers because programs may have such names of their own;
 * orumlox.h includes them when ORUMLOX_UNPREFIXED is defined before it. The
 * library works the same whatever a program calls by these names.
 */
#pragma once

#include "dct.h"
#include "hdr.h"
#include "vqe.h"

/*
 * A program must find the library's table where the library has it. GCC for
 * x86-64 would give a position-independent program a copy of its own, which the
 * library never fills; of a weak name it makes none. Programs that are linked
 * to a fixed address (-no-pie) have such a copy on every processor: what reads
 * `lut` is compiled with -fPIC there. Android has no such programs.
 */
#if defined(__x86_64__) && defined(__PIE__) && !defined(__clang__)
#define VEXO_TABLE_API __attribute__((weak)) VEXO_API
#else
#define VEXO_TABLE_API VEXO_API
#endif

VEXO_BEGIN_DECLS

/* --- tone mapping -------------------------------------------------------- */

/* Hands out the next band: returns its first row, or -1 when none is left.
 * Thread-safe. */
VEXO_API int32_t getStart(vexo_hdr_scheduler *scheduler);

/*
 * The tone curve at x: s * x up to t, then a * (1 - (1 - x)^n) + (1 - a) * x.
 * `x` is 0..1, the others are the context's members of these names; `knee` is
 * not needed.
 */
VEXO_API double TMO_VD_Norm(double x, double s, double t, double knee,
                            int32_t n, double a);

/*
 * Chooses the final nit for a picture by the largest of its luma samples, as
 * they are (P010LE's are not shifted): 1000 up to 750, 2000 from 751 to 810,
 * 4001 from 811. Looks at every 2nd sample of every 2nd row, or every 4th of
 * every 4th when `width` is above 2000. Logs "maxY = %d, \n".
 *
 * `luma` is aligned as 16-bit samples are; with a width or height below 1
 * nothing is read and the largest is 0.
 *
 * Quirk: rows are taken to be `width` samples apart, because the call knows no
 * stride: of padded rows it looks at other samples, and at padding. Quirk: 4001
 * and not 4000, so that it has a curve of its own.
 */
VEXO_API int32_t Analyze_SrcLuma(int32_t width, int32_t height,
                                 const uint16_t *luma);

/* --- DCT scaling --------------------------------------------------------- */

/* Fills in the sizes, ratios, block types, weights and counts of a context
 * whose prescale is set. Returns VEXO_OK. */
VEXO_API int32_t algorithm_settings(const vexo_img *pair,
                                    vexo_rsz_new_context *context);

/* Fills in a planned context's three tables of blocks: starts are contiguous
 * and cover the padded source. */
VEXO_API void split_settings(vexo_rsz_new_context *context);

/* Allocates a set of `count` entries of n rows, all 0, from the heap: free()
 * frees set[i][0], which holds all rows of an entry, set[i] and set. Returns
 * VEXO_OK or VEXO_ERR_ARG, with everything freed and *set null. */
VEXO_API int32_t get_mem3Dint16(vexo_shift_set *set, int32_t count, int32_t n);

/* Fills the sets of a context that has its sizes, from blocks with ones on
 * a diagonal that are put through FDCT_BlockXYFn. */
VEXO_API void make_shiftmatrix(const vexo_rsz_new_context *context,
                               vexo_shift_set a, vexo_shift_set b);

/*
 * The lowest 4 x 4 coefficients of `height` dense rows of `width` samples:
 *   out[4 u + v] = sqrt(1 / (M N)) c(u) c(v) 2048 x the sum over y, x of
 *     s(y, x) cos((2 y + 1) q u / M) cos((2 x + 1) q v / N)
 * with M the height, N the width, c(0) = 0.70710677, else 1, q = 1.570796;
 * cosines in double precision, the sum of single precision, row by row. That is
 * 1024 times the orthonormal DCT-II. Sizes are at least 1.
 */
VEXO_API void FDCT_BlockXYFn(const uint8_t *block, float *out, int32_t height,
                             int32_t width);

/* out = a b of n x n matrices, row by row; out is neither of them. */
VEXO_API void MatNxN_float_compute(const float *a, const float *b, float *out,
                                   int32_t n);

/* Scales one plane, laid out as the context's src_stride, src_rows, dst_stride
 * and dst_rows of that plane say; `plane` 1 is either chroma component. */
VEXO_API void dct_downscaling(const uint8_t *src, uint8_t *dst,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b, int32_t plane);

/* The same for planes 0 to 2 of a context of vexo_rsz_new_rgba8888_init, whose
 * rows are as far apart as the planar descriptors said. */
VEXO_API void dct_downscaling_rgba8888(const uint8_t *src, uint8_t *dst,
                                       vexo_rsz_new_context *context,
                                       vexo_shift_set a, vexo_shift_set b,
                                       int32_t plane);

/* --- colour saturation and detail enhancement ---------------------------- */

/* The process-wide saturation table, zero until vexo_vqe_cs_init fills it. No
 * call of the library reads it; callers hand it to color_sat. */
VEXO_TABLE_API extern uint8_t lut[256];

/*
 * Fills a saturation table of 256 bytes. Entry 2 k, k from 0 to 127, is
 * ((k - 128) * strength >> 10) + 128, an arithmetic shift, limited to 0..255;
 * every odd entry is the value for k = 0. Quirk: so because the samples that
 * entries are made for are 32-bit words read as 16-bit ones.
 */
VEXO_API void color_sat_lut(uint8_t *table, int16_t strength);

/*
 * Maps chroma through a saturation table: dst_u[i] = table[src_u[i]] and
 * dst_v[i] = table[src_v[i]] for i from 0 to count - 1; nothing for a count
 * below 1. Planes are dense. A destination may be its own source; other
 * overlaps are the caller's fault.
 */
VEXO_API void color_sat(const uint8_t *table, int32_t count,
                        const uint8_t *src_u, const uint8_t *src_v,
                        uint8_t *dst_u, uint8_t *dst_v);

/*
 * Sharpens a luma plane of width x height bytes; the source's and the
 * destination's rows are `width` bytes apart. The two outermost rows and
 * columns are copied, and so is a plane less than 5 wide or high. Any other
 * sample c becomes c + ((16 c - (2 N + D)) >> 4) limited to 0..255, an
 * arithmetic shift, where N is the sum of the four samples at distance 1 in its
 * row and column, and D that of the four at distance 2 and the four diagonal
 * neighbours. The planes must not overlap. A width or height below 1 does
 * nothing, and pointers may be null. Quirk: the strength has no effect, because
 * there is one filter.
 */
VEXO_API void detail_enh(const uint8_t *src, int32_t width, int32_t height,
                         uint8_t *dst, int32_t strength);

VEXO_END_DECLS
