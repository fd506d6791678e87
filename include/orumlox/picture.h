/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Pictures that lay themselves out, and calls that do what is meant: convert,
 * scale, turn, tone map, make thumbnails, from any layout to any other that the
 * library's calls lead to.
 *
 *     vexo_img frame, screen;
 *     vexo_picture_wrap(&frame, VEXO_FMT_NV12, 1920, 1080, planes, strides);
 *     frame.color_std = VEXO_STD_BT709;
 *     vexo_picture_alloc(&screen, VEXO_FMT_BGRA8888, 1920, 1080);
 *     vexo_picture_convert(context, &frame, &screen, NULL);
 *
 * Null pointers, sizes, strides and codes are checked, whether planes are as
 * large as they say is not. Whatever a call refuses it refuses before anything
 * is written. Calls are re-entrant; a context serves one call at a time.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/* "ok", "bad argument", "out of memory", "unsupported"; "unknown status" of any
 * other number. */
VEXO_API const char *vexo_status_name(int32_t status);

/* --- formats -------------------------------------------------------------- */

/* The layout's token ("nv12", "yuv420Planar16"), or null where no format has
 * this code. */
VEXO_API const char *vexo_format_name(int32_t format);

/*
 * The code of a token or of another common name, in upper or lower case; -1
 * where there is none. Other names are those of ffmpeg (gray, yuv420p, yuv422p,
 * yuv440p, yuv444p, yuyv422, uyvy422, rgb565le, bgr565le, rgb24, bgr24, rgba,
 * bgra, argb, abgr, yuv420p10le), where their bytes are the same, and i420,
 * iyuv, i422, i444, yuy2, y800, grey, p010. `name` may be null.
 */
VEXO_API int32_t vexo_format_of_name(const char *name);

/* The next code above this one that a format has, or -1 behind the last: a loop
 * over all formats begins with -1. */
VEXO_API int32_t vexo_format_next(int32_t format);

/* How many planes a format has; 0 for a code without a format. */
VEXO_API int32_t vexo_format_planes(int32_t format);

/* The bytes of what vexo_img.width counts in a plane: of a sample, a pair of
 * them or a pixel. 0 where there is no such plane. */
VEXO_API int32_t vexo_format_sample_bytes(int32_t format, int32_t plane);

/* --- layout --------------------------------------------------------------- */

/*
 * A picture's planes follow from its format and size. Sizes of chroma are
 * halves rounded up: the last column and row of an odd picture have chroma of
 * their own. A row of uyvy and yuyv has whole pairs of pixels. Tiled planes
 * (csc_layout.h) are whole tiles back to back, 128 x 32 for t64x32, and have no
 * alignment of rows but this.
 *
 * Each call below sets the whole record, all else to 0; set `color_std`
 * afterwards. It returns VEXO_OK, or leaves the record as it is and returns
 * VEXO_ERR_UNSUPPORTED for a code without a format, VEXO_ERR_ARG for a width,
 * height or alignment that is not positive, an alignment that is no power of
 * two or above 4096, a side or a row of more than 2^31 - 2 samples or 2^31 - 1
 * bytes, or more bytes than memory can have.
 */

/* Width, height, stride and buf_height of every plane; planes are null. Strides
 * are the least ones rounded up to the alignment. */
VEXO_API int32_t vexo_picture_geometry(vexo_img *img, int32_t format,
                                       int32_t width, int32_t height,
                                       int32_t alignment);

/* How many bytes vexo_picture_layout wants; a status as above. */
VEXO_API int32_t vexo_picture_bytes(int32_t format, int32_t width,
                                    int32_t height, int32_t alignment,
                                    size_t *bytes);

/*
 * Lays a picture out over `size` bytes of memory, its planes one behind the
 * other in the format's order and without gaps but those of the alignment:
 * VEXO_ERR_ARG, too, when these are too few. The planes begin where strides of
 * this alignment put them: aligned if the memory is.
 */
VEXO_API int32_t vexo_picture_layout(vexo_img *img, int32_t format,
                                     int32_t width, int32_t height,
                                     int32_t alignment, void *memory,
                                     size_t size);

/*
 * A picture whose planes lie anywhere, as a decoder gives them; strides may be
 * negative, those of tiled planes are not looked at. VEXO_ERR_ARG, too, for a
 * plane that is null, a stride shorter than a row, and an odd one of 16-bit
 * samples. As many planes and strides are read as the format has.
 * orumlox/adaptors has the same of other libraries' pictures.
 */
VEXO_API int32_t vexo_picture_wrap(vexo_img *img, int32_t format, int32_t width,
                                   int32_t height, uint8_t *const *planes,
                                   const int32_t *strides);

/* A picture with memory of its own, zeroed, in rows aligned to 32 bytes.
 * VEXO_ERR_MEMORY, too. */
VEXO_API int32_t vexo_picture_alloc(vexo_img *img, int32_t format,
                                    int32_t width, int32_t height);

/* Frees a picture of vexo_picture_alloc and clears the record, as of one that
 * is null or all zero. */
VEXO_API void vexo_picture_free(vexo_img *img);

/* --- what single calls do ------------------------------------------------- */

/* Whether vexo_csc converts: with this value as color_std on both sides a call
 * writes the picture. 1 or 0, here and below. */
VEXO_API int32_t vexo_csc_supports(int32_t src_format, int32_t dst_format,
                                   int32_t color_std);
/* Whether vexo_rsz scales pictures of this format; 2 where it only reduces, by
 * whole factors. Codes without a format are not supported, though vexo_rsz and
 * vexo_rot take some. */
VEXO_API int32_t vexo_rsz_supports(int32_t format);
/* Whether vexo_rot turns them by this code. */
VEXO_API int32_t vexo_rot_supports(int32_t format, uint32_t rotation);
/* Whether vexo_hdr_to_sdr makes a whole picture of this destination from a
 * source of this format. Of yv12 it makes none: bands lie over each other. */
VEXO_API int32_t vexo_hdr_supports(int32_t src_format, int32_t dst_format);

/* --- what is meant -------------------------------------------------------- */

/*
 * The calls below take a source and a destination that are laid out as above;
 * their size is that of plane 0. Formats, strides and colour standards are
 * arbitrary, sizes any from 1 x 1 on, but what is in t256x16 becomes nothing
 * else unless it is wider than 1280.
 *
 * A colour standard counts for YUV: the `color_std` of a side that is YUV says
 * what its samples mean, 0 being BT.601. That of RGB and of yuv400 is ignored,
 * but where the other side is YUV it must be 0 or the other's. Nothing is
 * converted by another standard than was said: two YUV sides of different
 * standards are converted by way of RGB, and a standard that no call knows in
 * the wanted direction is refused. BT.709 of full range has its own colours
 * here, not those that vexo_csc gives it.
 *
 * Where one call of the library does the work, its result is that call's. Odd
 * sizes are an exception where it leaves the last column's or row's chroma out,
 * shifts rows or writes beyond the width: pixel (x, y) always has the chroma of
 * (x / 2, y / 2), and no byte beyond the picture's rows is touched (of tiles
 * the luma that an odd picture lacks of the next even size becomes 0).
 * Otherwise calls are chained, the picture going through others in the
 * context's memory. The chain is the one that loses least (samples of chroma,
 * bits, rounding between YUV and RGB) and then the shortest;
 * docs/conversions.md lists them. What none but the picture layer does is
 * exact: planes and bytes of pixels in another order (alpha that the source
 * lacks is 255), packed 4:2:2 to planes and back, chroma repeated or left out,
 * and bytes of RGB as 10 bits or half-floats. Samples of 10 bits become bytes
 * as vexo_csc_deep makes them (deep.h), rounded.
 *
 * Each returns VEXO_OK, VEXO_ERR_ARG for a picture that vexo_picture_wrap would
 * not take, sizes that do not belong together or an unknown option,
 * VEXO_ERR_UNSUPPORTED where there is no way, or VEXO_ERR_MEMORY. Source and
 * destination do not overlap.
 */

/* Memory for pictures on the way and plans of thumbnails, kept from call to
 * call. Calls without a context (null) bring and free their own. */
typedef struct vexo_picture_context vexo_picture_context;

/* Makes a context, to be freed by vexo_picture_context_free. Returns VEXO_OK,
 * or VEXO_ERR_MEMORY with *context null. */
VEXO_API int32_t vexo_picture_context_new(vexo_picture_context **context);
/* Null is ignored. */
VEXO_API void vexo_picture_context_free(vexo_picture_context *context);

/*
 * What pixels have of the chroma that they share. As it is: each pixel the
 * sample that covers it, which is fastest; but from 10 bits to formats of more
 * than 8 it is interpolated for samples on the left. The other two:
 * interpolated by vexo_csc_new (csc_new.h), for samples on the left, as in
 * video, or between columns, as in JPEG; of yuv422w, and of tiles of 8 x 8 and
 * 256 x 16, which become RGB at once, it stays as it is.
 */
enum { VEXO_CHROMA_AS_IT_IS = 0, VEXO_CHROMA_LEFT = 1, VEXO_CHROMA_CENTRE = 2 };

/* How pictures are scaled: as vexo_rsz does (of 16-bit samples vexo_rsz_deep
 * where that refuses), or by vexo_rsz_apex_c (apex.h), which is slower and
 * keeps more. */
enum { VEXO_FILTER_PLAIN = 0, VEXO_FILTER_LANCZOS = 1 };

/* Options of all five calls. Zero, and a null pointer for the record, is what
 * is usually wanted; each call looks at those that it names. */
typedef struct vexo_picture_options {
  /* One of VEXO_ROT_, of vexo_picture_turn, _scale and _thumbnail. */
  int32_t rotation;
  /* VEXO_MODE_MOD1 for the second kind of enlargement, of _scale. */
  int32_t mode;
  /* 2 or 4: thumbnails that are scaled as nv12 are halved or quartered by block
   * means first, faster and coarser. Ignored for others. */
  int32_t prescale;
  /* One of VEXO_HDR_, of _tonemap; 0 is VEXO_HDR_HDR10. */
  int32_t hdr_kind;
  /* Peak luminance of the source in nits, of _tonemap; 0 is 1000. */
  int32_t source_nit;
  /* 1: _tonemap chooses by the picture's brightest luma instead. */
  int32_t measure;
  /* 1: RGB of _tonemap is expanded from 16..235 to 0..255. */
  int32_t full_range;
  /* One of VEXO_FILTER_, of _scale. */
  int32_t filter;
  /* 1: what loses bits is dithered (dither.h), in all five calls: behind a turn
   * and a change of size, with the pattern from the destination's corner on. */
  int32_t dither;
  /* One of VEXO_CHROMA_: how YUV becomes RGB, in all five calls. */
  int32_t chroma;
  /* 0, or the options are refused. */
  int32_t reserved[6];
} vexo_picture_options;

/* Converts to the destination's format and standard; sizes are equal. Equal
 * formats are copied. */
VEXO_API int32_t vexo_picture_convert(vexo_picture_context *context,
                                      const vexo_img *src, const vexo_img *dst,
                                      const vexo_picture_options *options);

/* Scales by vexo_rsz to the destination's size, which is that after a turn, and
 * converts. */
VEXO_API int32_t vexo_picture_scale(vexo_picture_context *context,
                                    const vexo_img *src, const vexo_img *dst,
                                    const vexo_picture_options *options);

/* Turns or mirrors, and converts. A quarter turn exchanges width and height,
 * and makes yuv422w of yuv422n and the other way round. */
VEXO_API int32_t vexo_picture_turn(vexo_picture_context *context,
                                   const vexo_img *src, const vexo_img *dst,
                                   const vexo_picture_options *options);

/*
 * Tone maps a source of YUV420PLANAR16 or P010LE as vexo_hdr_to_sdr does, into
 * any destination that this leads to without a change of colours; sizes are
 * equal. Results are of BT.709: YUV destinations say VEXO_STD_BT709 or 0, which
 * means the same here, and the source's standard is not looked at. RGB has
 * values of 16 to 235 but with `full_range`.
 */
VEXO_API int32_t vexo_picture_tonemap(vexo_picture_context *context,
                                      const vexo_img *src, const vexo_img *dst,
                                      const vexo_picture_options *options);

/* Scales by vexo_rsz_new or vexo_rsz_new_rgba8888 (dct.h), turns and converts.
 * The destination's size is that after the turn, no larger than the source, and
 * no larger than what a pre-scale factor leaves: VEXO_ERR_ARG. What the scaler
 * does not serve is VEXO_ERR_UNSUPPORTED; of chroma a factor leaves as much as
 * its stride has room for. Scaled as RGBA alpha becomes 255. */
VEXO_API int32_t vexo_picture_thumbnail(vexo_picture_context *context,
                                        const vexo_img *src,
                                        const vexo_img *dst,
                                        const vexo_picture_options *options);

/* The most formats that a conversion goes through. */
enum { VEXO_MOST_STOPS = 12 };

/*
 * How vexo_picture_convert goes from one format and standard to another: the
 * formats on the way, both ends included, are written to `formats`, which may
 * be null. Returns the number of passes over the picture, one less than the
 * formats (1 also for a copy, with the format twice), or 0 where there is no
 * way. The standard of a format that has none is not looked at.
 */
VEXO_API int32_t vexo_picture_passes(int32_t src_format, int32_t src_std,
                                     int32_t dst_format, int32_t dst_std,
                                     int32_t formats[VEXO_MOST_STOPS]);

VEXO_END_DECLS
