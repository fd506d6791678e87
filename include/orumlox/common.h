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
 * Returns `size` bytes whose address is a multiple of 32, or null when the heap
 * refuses or size + 36 does not fit 32 bits. 0 is a valid size. The block is
 * the heap's, size + 36 bytes long; the pointer-sized word just below the
 * returned address holds the address the heap gave. The caller owns the block
 * and frees it with mlox_mfree_align32. Thread-safe as far as the heap is.
 */
VEXO_API void *mlox_malloc_align32(uint32_t size);

/* Frees a block of mlox_malloc_align32; null is ignored. */
VEXO_API void mlox_mfree_align32(void *block);

/* The same as the two above under other names. A block must be freed by the
 * partner of the function that allocated it. */
VEXO_API void *mlox_malloc_fast_align32(uint32_t size);
VEXO_API void mlox_mfree_fast_align32(void *block);

/*
 * Copies `rows` rows of `row_bytes` bytes. The steps are bytes from the start
 * of a row to the start of the next and need not agree with the row's length or
 * with each other. Rows or row_bytes below 1: nothing.
 */
VEXO_API void mlox_blk_mcpy(void *dst, const void *src, int32_t dst_step,
                            int32_t src_step, int32_t row_bytes, int32_t rows);

/*
 * Plane copies: `width` samples of 1, 2, 3 or 4 bytes in `height` rows; strides
 * in bytes. A width or height below 1 copies nothing.
 *
 * When a row's bytes equal both strides the plane is copied as one run.
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
 * As above for 16-bit samples, with the strides rounded down to even (7 to 6,
 * -7 to -8): when
 * width equals half of each stride, rounded down, width * height * 2 bytes are
 * copied as one run (the odd byte of an odd stride is then not skipped);
 * otherwise each side advances by its stride with the lowest bit cleared.
 */
VEXO_API void vexo_cpy_16b(const uint8_t *src, int32_t width, int32_t height,
                           int32_t src_stride, int32_t dst_stride,
                           uint8_t *dst);

/*
 * Copies an image into another of the same format. Sizes are the source's; the
 * destination's are not looked at.
 *
 * Codes 0 to 99: one 8-bit plane for YUV400; for NV12 plane 0 and plane 1 as
 * 16-bit pairs; for every other code, NV21 and the unassigned ones included,
 * three 8-bit planes (so the third plane of NV21 must have a valid or an empty
 * size). Codes 200 to 299: one 16-bit plane.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG when the two codes differ; else
 * VEXO_ERR_UNSUPPORTED for T64X32 and for every other code.
 */
VEXO_API int32_t vexo_cpy(const vexo_img *src, const vexo_img *dst);

/*
 * Copies the window at the source's (offset_x, offset_y) into the destination,
 * whose plane sizes are the window's size. The source's format decides, the
 * destination's is not read.
 *
 * Formats: YUV420, NV12, NV21, RGB888, BGR888 and the four 32-bit ones. Chroma
 * origins are the luma origin plus one, halved; in NV12 and NV21 the chroma
 * bytes start at byte offset_x (an odd one exchanges U and V) and a chroma row
 * has as many bytes as the destination's luma row. Whether the window lies in
 * the source is not checked.
 *
 * Returns VEXO_OK, or VEXO_ERR_UNSUPPORTED for any other format.
 */
VEXO_API int32_t vexo_crop(const vexo_img *src, const vexo_img *dst);

/*
 * Clears the destination's whole buffers (stride * buf_height bytes a plane; a
 * buffer with one of them below 1 is not cleared, so strides must be positive)
 * to black and copies the source to the place given by the source's (offset_x,
 * offset_y). Black is 16 for luma, 128 for chroma, 0 for every byte of RGB,
 * alpha included. The source's format decides, the destination's is not read.
 *
 * Formats: YUV420, NV12, NV21, RGB888, BGR888, RGBA8888, BGRA8888 (Quirk:
 * ARGB8888 and ABGR8888, which vexo_crop takes, are refused; callers rely on
 * the refusal). Chroma origins as in
 * vexo_crop.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG when the source at its offset reaches beyond
 * the destination's plane 0, whatever the format; else VEXO_ERR_UNSUPPORTED for
 * any other format.
 */
VEXO_API int32_t vexo_padding(const vexo_img *src, const vexo_img *dst);

VEXO_END_DECLS
