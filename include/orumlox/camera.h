/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A camera's frame to RGB, cropped, upright and mirrored in one pass.
 *
 * A frame is 8-bit 4:2:0 in three planes whose samples may lie apart: Android's
 * YUV_420_888, of which I420, YV12, NV12 and NV21 are cases. The call finds out
 * by the pointers which one it is.
 *
 *     vexo_camera_frame frame = {{y, u, v}, {y_bytes, u_bytes, v_bytes},
 *                                {640, 640, 640}, {1, 2, 2}, 640, 480};
 *     vexo_camera_options options = {0};
 *     options.rotation = 90;
 *     frame.color_std = VEXO_STD_BT601_FULL;
 *     status = vexo_camera_to_rgb(&frame, &options, &screen);
 *
 * Calls are re-entrant, allocate nothing and keep no state.
 */
#pragma once

#include "img.h"

VEXO_BEGIN_DECLS

/* A frame as it lies in memory; planes are those of Y, U and V. A record begins
 * with all bytes 0. */
typedef struct vexo_camera_frame {
  /* The first sample of each plane. */
  const uint8_t *plane[3];
  /* How many bytes there are from there on, which need not be whole rows. */
  size_t bytes[3];
  /* From a row to the next, and from a sample to the next one: 1 or 2. */
  int32_t row_stride[3];
  int32_t pixel_stride[3];
  /* Of Y; U and V have half of each, rounded up. */
  int32_t width;
  int32_t height;
  /* One of VEXO_STD_. Cameras give VEXO_STD_BT601_FULL, unless they say
   * otherwise. */
  int32_t color_std;
  /* 0, or the frame is refused. */
  int32_t reserved[5];
} vexo_camera_frame;

/* Zero, and a null pointer for the record, is the whole frame as it is. */
typedef struct vexo_camera_options {
  /* The part of the frame that is wanted, even or odd. A width or height of 0
   * reaches to the frame's edge. */
  int32_t crop_x;
  int32_t crop_y;
  int32_t crop_width;
  int32_t crop_height;
  /* 0, 90, 180 or 270 degrees clockwise. */
  int32_t rotation;
  /* 1: left and right are exchanged after the rotation, as in a mirror. */
  int32_t mirror;
  /* 0, or the options are refused. */
  int32_t reserved[10];
} vexo_camera_options;

/*
 * Converts to RGBA8888 or RGB565. The destination has the crop's size, width
 * and height exchanged by a quarter turn; its stride may be negative.
 *
 * Pixel (x, y) of the frame has the chroma (x / 2, y / 2), whatever the crop,
 * and the colours that vexo_picture_convert gives it, which are vexo_csc's; of
 * BT.601 full range the columns that are converted in floating point are the
 * last ones of the part that begins at the crop's x or, if that is odd, at the
 * pixel before. The result is what cropping, vexo_csc and then vexo_rot give.
 *
 * No byte is read but those of a row from the first sample that the crop has in
 * it, of an odd x the one before, to the last, and none is written but those
 * pixels. So the last row may end short of its stride, and the buffer of U may
 * lack the last byte of a pair, which is V's. Planes of the frame may overlap
 * each other, the destination none of them.
 *
 * Returns VEXO_OK or, with nothing written, the first that holds of
 *   VEXO_ERR_ARG: a null frame, destination or plane;
 *   VEXO_ERR_UNSUPPORTED: another destination, a color_std that is none of
 *     VEXO_STD_, or one of the destination that is neither 0 nor the frame's;
 *   VEXO_ERR_ARG: sizes below 1, a crop that is not within the frame, a
 *     destination of another size, a stride shorter than a row, another pixel
 *     stride, a plane whose bytes end before the crop's last sample, another
 *     rotation or mirror, or reserved words that are not 0.
 */
VEXO_API int32_t vexo_camera_to_rgb(const vexo_camera_frame *frame,
                                    const vexo_camera_options *options,
                                    const vexo_img *dst);

VEXO_END_DECLS
