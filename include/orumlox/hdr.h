/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Tone mapping: 10-bit BT.2020 pictures, PQ (HDR10) or HLG, to 8-bit BT.709.
 *
 * Sources: YUV420PLANAR16 (the low 10 bits of every word count) and P010LE (the
 * high 10 bits). The width and height of the picture, W x H, are those of the
 * source's plane 0; strides are read of planes 0 and 1 (plane 1's serves plane
 * 2, too) and count in whole words, an odd byte being dropped; of every row the
 * width alone is read: W words of luma in H rows, (W + 1) / 2 words or pairs of
 * chroma in (H + 1) / 2 rows. Strides may be negative, but not plane 0's of a
 * picture that is measured. Any other source code gives what samples of 0 give,
 * with nothing read but for the measurement below.
 *
 * Destinations. Values are of video range, 16 (black) to 235, for RGB too;
 * alpha is 255. Chroma is that of the pixel at even columns of the picture's
 * even rows alone. Quirk: THE DESTINATION'S STRIDES AND SIZES ARE NOT READ,
 * only its format and plane pointers: rows are dense, W pixels apart, because
 * bands of four rows are laid out by the source's size alone. By format:
 *
 *   RGBA8888, ARGB8888: 4 W H bytes.
 *   RGB888: rows of 3 W bytes. Quirk: the band that begins at row r begins at
 *     byte 4 W r, as if pixels had four bytes, so that every band but the last
 *     is followed by 4 W bytes that are left alone. With r the first row of the
 *     last band the plane takes 4 W r + 3 W (H - r) bytes, 4 W (H - 1) for H a
 *     multiple of 4.
 *   YUV420, NV12, NV21: W H bytes of luma. Chroma of the even rows follows
 *     densely, W / 2 samples a row in each plane or pairs in one; of an odd W
 *     rows have (W + 1) / 2 samples, but a band of four rows takes W samples
 *     all the same: its second chroma row begins at sample W / 2, rounded down,
 *     over the last sample of its first. So a plane has
 *       W (H / 4) samples, and for H mod 4 = 1 or 2 another (W + 1) / 2, for 3
 *       another W;
 *     a plane of pairs as many pairs. All divisions round down.
 *   YV12. Quirk: every band begins at the start of the planes; the bands do not
 *     know their place. After a whole picture the planes begin with the rows of
 *     its last band, over those of the one before where the last has fewer
 *     rows. They take min(H, 4) W bytes of luma and the chroma of as many rows.
 *   Other codes below 200 or above 599: luma alone, at the start of plane 0, in
 *     bands like YV12. Nothing else is written.
 *   Other codes from 200 to 599: nothing. For each chunk of a row the line
 *       "_vexo_hdr10_to_sdr8(438): Unsupported Color Space [<code>]"
 *     goes to the standard error stream, and the call succeeds all the same.
 *
 * Any width and height: bands and chunks end where the picture does. With one
 * below 1 there is no picture, and plane pointers may be null.
 *
 * Re-entrant: calls keep no state. Source and destination do not overlap. On
 * Android diagnostic lines go to the log, with the tag "VEXO_HDR" and info
 * priority.
 */
#pragma once

#include <pthread.h>

#include "img.h"

VEXO_BEGIN_DECLS

/* Kinds of vexo_hdr_to_sdr. */
enum {
  VEXO_HDR_HDR10 = 1,      /* PQ */
  VEXO_HDR_HDR10_MILD = 2, /* PQ, milder colours: matrix variant 1 */
  VEXO_HDR_HLG = 4
};

/* vexo_img.mode of a source: the target is chosen by the picture's brightest
 * luma. With any other value it is chosen by source_nit. */
#define VEXO_HDR_MODE_MEASURE 1

/*
 * Tone maps the source into the destination:
 * vexo_hdr_to_sdr(&p010, &rgba, VEXO_HDR_HDR10). vexo_hdr10_to_sdr8 or
 * vexo_hlg_to_sdr8 do it.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG, with nothing touched, for a kind that is none
 * of the three. Quirk: the status of the two is dropped, so use them where it
 * matters whether memory could be had.
 */
VEXO_API int32_t vexo_hdr_to_sdr(vexo_img *src, const vexo_img *dst,
                                 int32_t kind);

/*
 * Tone maps a PQ picture. `variant` 0 takes the BT.2020 to BT.709 matrix, any
 * other a milder one.
 *
 * The final nit, the luminance that becomes white: with src->mode 1 the one
 * Analyze_SrcLuma finds, else 1000 if source_nit is at most 1500 and 4000
 * beyond. It is written to src->source_nit, as a signed 16-bit quantity. Three
 * lines are logged: "source : %d, source_nit : %d\n" with src's mode and
 * source_nit, Analyze_SrcLuma's if it is measured, "final nit : %d\n".
 *
 * The rows are done by this thread and three that it starts and joins; the part
 * of one that cannot be started is done by this thread. Pictures of fewer than
 * 32768 pixels, on x86 131072, are done by this thread alone, and so are
 * destinations whose bands lie over each other, which get what doing one band
 * after the other leaves. A width or height below 1 gives the log lines and no
 * pixels.
 *
 * Returns VEXO_OK; VEXO_ERR_ARG, with nothing written or logged, when memory
 * (some 9 KiB) cannot be had.
 */
VEXO_API int32_t vexo_hdr10_to_sdr8(vexo_img *src, const vexo_img *dst,
                                    int32_t variant);

/*
 * Tone maps an HLG picture, with the matrix of variant 0 and without a tone
 * curve. The final nit is chosen and written as for PQ. Status and threads as
 * above.
 *
 * Quirk: the signal is made linear by a plain power of 2.4 and not by the
 * inverse of the HLG curve, because callers know that look.
 */
VEXO_API int32_t vexo_hlg_to_sdr8(vexo_img *src, const vexo_img *dst);

/*
 * The parts of the above. They are exported for callers that bring threads of
 * their own or build contexts. More of them, the tone curve and the choice of
 * the final nit among them, are declared in unprefixed.h.
 */

/*
 * What a tone mapping needs to know. Members in this order, with the natural
 * alignment of the target; read-only while pixels are done.
 *
 * Limits that the pixel work relies on for its values (for any other contents
 * it stays within its buffers, but the forms for different processors may
 * differ): linear entries at most 32767, gains at most 4095.
 */
typedef struct vexo_hdr_context {
  int32_t width;  /* of the source's plane 0, in pixels */
  int32_t height; /* of the source's plane 0, in rows */
  double scale;   /* 10000 / final nit */
  /* Chunk width in pixels: 32 if it divides the width, else 16 if that does,
   * else 8. The last chunk of a row ends with the row. */
  int32_t chunk;
  int32_t variant; /* of the matrices: 0, or any other value for the milder */
  int32_t hlg;     /* 1 for HLG, 0 for PQ */
  /* The tone curve: see TMO_VD_Norm. By final nit, s and t are 2 and 0.1
   * (1000), 3.7 and 0.07 (2000), 7.5 and 0.0375 (4000), 10 and 0.04 (4001). */
  double s;
  double t;
  double knee; /* s * t */
  int32_t n;   /* log(1 - s * t) / log(1 - t), rounded */
  double a;    /* (s * t - t) / (1 - (1 - t)^n - t) */
  /* Of PQ code i / 1023 the luminance by SMPTE ST 2084, over the final nit and
   * at most 1, in 1 / 32767, rounded. Zero for HLG. */
  uint16_t pq[1024];
  /* What the tone curve multiplies x = i / 255 (single precision) by, in
   * 1 / 256, rounded; 0 for i = 0, entry 256 is entry 255. */
  uint16_t gain[257];
  /* (i / 1023)^2.4 in 1 / 32767, rounded. Zero for PQ. */
  uint16_t hlg_linear[1024];
  /* Of linear i / 4095 the 8-bit code: c is (i / 4095)^(1 / 2.2) in 1 / 4095,
   * rounded, quotient and exponent of single precision; the entry is
   * 16 + (c >> 4) * 219 / 255 in single precision, rounded down. */
  uint8_t gamma[4096];
  /* The pictures. */
  const vexo_img *src;
  const vexo_img *dst;
} vexo_hdr_context;

/* Hands out bands of four rows. */
typedef struct vexo_hdr_scheduler {
  int32_t next;          /* first row of the next band, under the mutex */
  int32_t limit;         /* the picture's height */
  pthread_mutex_t mutex; /* of `next` */
} vexo_hdr_scheduler;

/* The argument of one thread. */
typedef struct vexo_hdr_worker {
  /* What all threads share. */
  const vexo_hdr_context *context;
  vexo_hdr_scheduler *scheduler;
  /* First row of the band it begins with, which it does not ask for. */
  int32_t first;
} vexo_hdr_worker;

/*
 * Tone maps the rows first to end - 1 of the context's source as one band,
 * which begins in the destination where the list on top says; rows at and after
 * the context's height are left out, and all when `first` is negative. Returns
 * 0.
 *
 * Per pixel, all integer, shifts of negative numbers arithmetic:
 *   R = y + 1.4746 v, G = y - 0.16455 u - 0.57135 v, B = y + 1.8814 u with
 *   y = (Y - 64) * 1024 / 876 in 0..1024, u = (U - 512) * 1024 / 896 with U in
 *   64..960, v of V likewise; each product rounded to nearest by itself, sums
 *   clamped to 0..1023. The scale is 1024, a
 *   shift (Quirk: not 1023, the largest code).
 *   Linear light of each by the table pq or hlg_linear.
 *   BT.709 light c = (matrix row . linear) >> 8, clamped to 0..32767:
 *             variant 0             variant 1 (rows of 256, 256 and 257)
 *     R       425  -150   -19       344   -72   -16
 *     G       -32   290    -2       -17   276    -3
 *     B        -5   -26   287         1    -5   261
 *   PQ: one gain for the three, from m, the largest c: with i = m >> 7 and
 *     f = (m >> 3) & 15 it is ((16 - f) gain[i] + f gain[i + 1]) >> 4;
 *     p = gain * c; light = 4095 if p >= 0x7FFF00, else p >> 11.
 *   HLG: light = c >> 3.
 *   R, G, B = gamma[light]: what RGB destinations get.
 *   Y = (871 R + 2929 G + 296 B) >> 12, variant 1: 859, 2955, 283;
 *   U = 128 + ((-480 R - 1615 G + 2095 B) >> 12), variant 1: -461, -1587, 2048;
 *   V = 128 + ((2095 R - 1903 G - 192 B) >> 12), variant 1: 2048, -1869, -179;
 *   clamped to 0..255.
 * Rows may be done by several threads at once where bands do not lie over each
 * other.
 */
VEXO_API int32_t _vexo_hdr10_to_sdr8(const vexo_hdr_context *context,
                                     int32_t first, int32_t end);

/*
 * Thread entry, of a vexo_hdr_worker: does its first band and then those that
 * the scheduler has left; ends the calling thread with a null result. The
 * worker and what it points to stay the caller's.
 */
VEXO_API void *thread_vexo_hdr10_to_sdr8(void *worker);

VEXO_END_DECLS
