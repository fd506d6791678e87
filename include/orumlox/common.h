/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Aligned memory, plane copies, crop and padding.
 *
 * Every function here is re-entrant and keeps no state. Rows are copied in
 * order, top to bottom. Copies check nothing: null pointers, planes that
 * overlap and strides shorter than a row are the caller's fault. Nothing is
 * read or written beyond the bytes of a row, except where a plane that is
 * contiguous on both sides is copied as one run (each such case is named).
 * Pointers of empty planes may be null. Strides may be negative but for the
 * destination of vexo_padding.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/*
 * Allocates `size` bytes whose address is a multiple of 32. The caller owns the
 * block and frees it with mlox_mfree_align32. 0 is a valid size.
 *
 * Returns null when the heap refuses or size + 36 does not fit 32 bits. The
 * block takes size + 36 bytes of the heap; the pointer-sized word just below
 * the returned address holds the address that the heap gave. Thread-safe as far
 * as the heap is.
 */
VEXO_API void *mlox_malloc_align32(uint32_t size);

/* Frees a block of mlox_malloc_align32; null is ignored. */
VEXO_API void mlox_mfree_align32(void *block);

/* The same as the two above under other names. A block must be freed by the
 * partner of the function that allocated it. */
VEXO_API void *mlox_malloc_fast_align32(uint32_t size);
VEXO_API void mlox_mfree_fast_align32(void *block);

/*
 * Copies `rows` rows of `row_bytes` bytes; nothing with one of them below 1.
 * The steps are bytes from the start of a row to the start of the next. They
 * need not agree with the row's length or with each other.
 */
VEXO_API void mlox_blk_mcpy(void *dst, const void *src, int32_t dst_step,
                            int32_t src_step, int32_t row_bytes, int32_t rows);

/*
 * Copies a plane of `height` rows of `width` samples of 1, 3 or 4 bytes;
 * nothing with a width or height below 1. Strides are in bytes. When a row's
 * bytes equal both strides the plane is copied as one run.
 */
VEXO_API void vexo_cpy_8b(const uint8_t *src, int32_t width, int32_t height,
                          int32_t src_stride, int32_t dst_stride, uint8_t *dst);
VEXO_API void vexo_cpy_24b(const uint8_t *src, int32_t width, int32_t height,
                           int32_t src_stride, int32_t dst_stride,
                           uint8_t *dst);
VEXO_API void vexo_cpy_32b(const uint8_t *src, int32_t width, int32_t height,
                           int32_t src_stride, int32_t dst_stride,
                           uint8_t *dst);

/*
 * The same for samples of 2 bytes.
 *
 * Quirk: an odd stride is rounded down to even (7 to 6, -7 to -8), because
 * strides count whole samples. That is before it is compared with a row's
 * bytes: rows of 3 samples, 7 bytes apart, are copied as one run of 6 bytes
 * each.
 */
VEXO_API void vexo_cpy_16b(const uint8_t *src, int32_t width, int32_t height,
                           int32_t src_stride, int32_t dst_stride,
                           uint8_t *dst);

/*
 * Copies an image into another of the same format. Sizes are the source's; the
 * destination's are not looked at.
 *
 * Of codes 0 to 99 but T64X32 three 8-bit planes are copied; of YUV400 one, of
 * NV12 plane 0 and, as 16-bit pairs, plane 1. Of codes 200 to 299 it is one
 * 16-bit plane.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG when the two codes differ; else
 * VEXO_ERR_UNSUPPORTED for T64X32 and for every other code.
 *
 * Quirk: NV21, other tiles and unassigned codes below 100 count as three
 * planes, because callers pass them as such. The third plane of NV21 must have
 * a valid or an empty size.
 */
VEXO_API int32_t vexo_cpy(const vexo_img *src, const vexo_img *dst);

/*
 * Copies the window at the source's (offset_x, offset_y) into the destination,
 * whose plane sizes are the window's size. The source's format decides, the
 * destination's is not read. Whether the window lies in the source is not
 * checked.
 *
 * Formats: YUV420, NV12, NV21, RGB888, BGR888 and the four 32-bit ones. Chroma
 * origins are the luma origin plus one, halved.
 *
 * Returns VEXO_OK, or VEXO_ERR_UNSUPPORTED for any other format.
 *
 * Quirk: in NV12 and NV21 chroma rows start at byte offset_x, because a chroma
 * row has as many bytes as the destination's luma row; so an odd offset_x
 * exchanges U and V.
 */
VEXO_API int32_t vexo_crop(const vexo_img *src, const vexo_img *dst);

/*
 * Places the source in a black destination, at the source's (offset_x,
 * offset_y). The source's format decides, the destination's is not read.
 *
 * The destination's whole buffers are cleared, stride * buf_height bytes a
 * plane. A buffer with one of them below 1 is not cleared, so strides must be
 * positive. Black is 16 for luma, 128 for chroma, 0 for every byte of RGB,
 * alpha included.
 *
 * Formats: YUV420, NV12, NV21, RGB888, BGR888, RGBA8888, BGRA8888. Chroma
 * origins are those of vexo_crop.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG when the source at its offset reaches beyond
 * the destination's plane 0, whatever the format; else VEXO_ERR_UNSUPPORTED for
 * any other format.
 *
 * Quirk: ARGB8888 and ABGR8888, which vexo_crop takes, are refused, because
 * callers rely on the refusal.
 */
VEXO_API int32_t vexo_padding(const vexo_img *src, const vexo_img *dst);

VEXO_END_DECLS
