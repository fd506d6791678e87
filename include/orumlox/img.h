/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The image descriptor and the format codes that every image call shares.
 */
#pragma once

#include "base.h"

/*
 * Format codes. The hundreds digit names the family: 0 to 99 planar and
 * semi-planar 8-bit YUV, 100 to 199 packed 8-bit YUV, 200 to 299 16-bit RGB,
 * 400 to 499 24-bit RGB, 500 to 599 32-bit RGB, 600 to 699 YUV with 16-bit
 * samples, 700 to 799 RGB of more than 8 bits. The lower-case name after
 * VEXO_FMT_ is the layout's token, the word that function names are built from.
 * Bytes are listed in memory order, lowest address first; 16-bit words are
 * little-endian. Codes not listed here are converted by nothing; the calls that
 * treat 9, 10 and 15 to 99 as three 8-bit planes say so.
 */
enum {
  VEXO_FMT_YUV400 = 0,     /* luma alone (grey) */
  VEXO_FMT_YUV420 = 1,     /* Y, U, V planes; chroma half width, half height */
  VEXO_FMT_YUV422N = 2,    /* Y, U, V planes; chroma half width, full height */
  VEXO_FMT_YUV444 = 3,     /* Y, U, V planes, all full size */
  VEXO_FMT_YV12 = 4,       /* as YUV420, planes in the order Y, V, U */
  VEXO_FMT_YV16 = 5,       /* as YUV422N, planes in the order Y, V, U */
  VEXO_FMT_NV12 = 6,       /* Y; U, V byte pairs, half width and height */
  VEXO_FMT_NV21 = 7,       /* Y; V, U byte pairs, half width and height */
  VEXO_FMT_YUV422W = 8,    /* Y, U, V planes; chroma full width, half height */
  VEXO_FMT_T64X32 = 11,    /* 4:2:0 in 64 x 32 tiles */
  VEXO_FMT_T16X16 = 12,    /* 4:2:0, luma tiles 16 x 16, chroma tiles 16 x 8 */
  VEXO_FMT_T8X8 = 13,      /* 4:2:0 in 8 x 8 tiles */
  VEXO_FMT_T256X16 = 14,   /* 4:2:0 in 256 x 16 tiles; wider than 1280 only */
  VEXO_FMT_UYVY = 100,     /* packed 4:2:2, bytes U, Y0, V, Y1 */
  VEXO_FMT_YUYV = 101,     /* packed 4:2:2, bytes Y0, U, Y1, V */
  VEXO_FMT_RGB565 = 200,   /* word R << 11 | G << 5 | B */
  VEXO_FMT_BGR565 = 201,   /* word B << 11 | G << 5 | R */
  VEXO_FMT_RGB888 = 400,   /* bytes R, G, B */
  VEXO_FMT_BGR888 = 401,   /* bytes B, G, R */
  VEXO_FMT_RGBA8888 = 500, /* bytes R, G, B, A */
  VEXO_FMT_BGRA8888 = 501, /* bytes B, G, R, A */
  VEXO_FMT_ARGB8888 = 502, /* bytes A, R, G, B */
  VEXO_FMT_ABGR8888 = 503, /* bytes A, B, G, R */
  VEXO_FMT_YUV420PLANAR16 = 600, /* as YUV420, 16-bit words, 10 low bits used */
  /* as NV12, 16-bit words, the sample in the high bits */
  VEXO_FMT_P010LE = 601,
  /* 32-bit word A << 30 | B << 20 | G << 10 | R */
  VEXO_FMT_RGBA1010102 = 700,
  /* IEEE half-floats R, G, B, A in 16-bit words, nominally 0 to 1 */
  VEXO_FMT_RGBAF16 = 701
};

/* Values of vexo_img.color_std, which only vexo_csc and vexo_csc_new read as a
 * standard. vexo_csc has no routes for those of BT.2020. */
enum {
  VEXO_STD_DEFAULT = 0,     /* BT.601, luma 16..235 */
  VEXO_STD_BT601_FULL = 1,  /* BT.601, full range */
  VEXO_STD_BT709 = 10,      /* BT.709, luma 16..235 */
  VEXO_STD_BT709_FULL = 11, /* BT.709, full range */
  VEXO_STD_BT2020 = 20,     /* BT.2020, luma 16..235 */
  VEXO_STD_BT2020_FULL = 21 /* BT.2020, full range */
};

/* Values of vexo_img.reserved1 of a source of vexo_csc_new (csc_new.h): where
 * chroma samples lie. */
enum {
  VEXO_SITING_LEFT = 0,  /* as in video */
  VEXO_SITING_CENTRE = 1 /* as in JPEG */
};

/* vexo_img.mode of a destination: "mod1", the first letter in the top byte.
 * Chooses the second kind of enlargement; any other value the plain one. */
#define VEXO_MODE_MOD1 0x6D6F6431

/*
 * The image descriptor: what the planes of one picture are and where they lie.
 * NV12 of 1920 x 1080 without padding, for instance, is
 *     vexo_img img = {{1920, 960}, {1080, 540}, {1920, 1920}, {1080, 540},
 *                     {luma, pairs}};
 *     img.format = VEXO_FMT_NV12;
 *
 * The caller owns the record and the memory its planes point to; no call keeps
 * either. The order and the widths of the fields are part of the interface, the
 * reserved words included; callers zero those.
 *
 * A call reads only the planes that the format code has. Width, height and
 * stride of every such plane are the caller's to fill: the library derives no
 * chroma size from plane 0, some conversions excepted (below). Null pointers,
 * and strides shorter than a row, are not detected.
 *
 * A plane with a width or height below 1 is empty: it is left alone at once,
 * whatever its other size, and its pointer may be null. (Conversions go by
 * plane 0, and for chroma by what csc_kernels.h and csc_layout.h say.)
 *
 * A stride may be negative, for a picture whose rows lie upwards: the plane
 * pointer is that of the first row, which is last in memory. Each header names
 * the calls that take positive strides alone.
 */
typedef struct vexo_img {
  /* Samples in a row of each plane. Bytes for an 8-bit plane; byte pairs for
   * plane 1 of NV12 and NV21 (a row has twice as many bytes); 16-bit words for
   * codes 200, 201 and 600 and plane 0 of 601; pairs of 16-bit words for plane
   * 1 of 601; pixels for packed RGB and packed YUV. */
  int32_t width[4];
  /* Rows of each plane. */
  int32_t height[4];
  /* Bytes from the start of a row to the start of the next. */
  int32_t stride[4];
  /* Rows allocated, at least height; stride * buf_height bytes is the size of
   * the plane's buffer. Read only by calls that clear or lay out a whole
   * buffer, which say so. */
  int32_t buf_height[4];
  /* First byte of the first row of each plane. */
  uint8_t *plane[4];
  int32_t reserved0[4]; /* 0 */
  /* One of VEXO_FMT_. */
  int32_t format;
  /* Origin in pixels and rows: of the window that vexo_crop cuts out of the
   * source, of the place where vexo_padding puts the source. Both read them
   * from the source's descriptor. */
  int32_t offset_x;
  int32_t offset_y;
  /* One of VEXO_SITING_ on the source of vexo_csc_new, which alone reads it;
   * else 0. */
  int32_t reserved1;
  /* One of VEXO_STD_. */
  int32_t color_std;
  /* Option word: VEXO_MODE_MOD1 on the destination of a resize; the source
   * kind on the source of a tone mapping. */
  int32_t mode;
  /* Peak luminance of an HDR source, in nits. */
  int32_t source_nit;
} vexo_img;
