/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A decoder's AVFrame as a picture. It needs ffmpeg's headers, and nothing of
 * its libraries; the library itself knows nothing of it.
 */
#pragma once

#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>

#include "../picture.h"

/* The format with the same bytes, or -1. Full range is told by *full. */
static inline int32_t vexo_format_of_avframe(const AVFrame *frame, int *full) {
  *full = frame->color_range == AVCOL_RANGE_JPEG;
  switch (frame->format) {
    case AV_PIX_FMT_YUVJ420P:
      *full = 1;
      return VEXO_FMT_YUV420;
    case AV_PIX_FMT_YUVJ422P:
      *full = 1;
      return VEXO_FMT_YUV422N;
    case AV_PIX_FMT_YUVJ440P:
      *full = 1;
      return VEXO_FMT_YUV422W;
    case AV_PIX_FMT_YUVJ444P:
      *full = 1;
      return VEXO_FMT_YUV444;
    case AV_PIX_FMT_GRAY8:
      return VEXO_FMT_YUV400;
    case AV_PIX_FMT_YUV420P:
      return VEXO_FMT_YUV420;
    case AV_PIX_FMT_YUV422P:
      return VEXO_FMT_YUV422N;
    case AV_PIX_FMT_YUV440P:
      return VEXO_FMT_YUV422W;
    case AV_PIX_FMT_YUV444P:
      return VEXO_FMT_YUV444;
    case AV_PIX_FMT_NV12:
      return VEXO_FMT_NV12;
    case AV_PIX_FMT_NV21:
      return VEXO_FMT_NV21;
    case AV_PIX_FMT_UYVY422:
      return VEXO_FMT_UYVY;
    case AV_PIX_FMT_YUYV422:
      return VEXO_FMT_YUYV;
    case AV_PIX_FMT_RGB565LE:
      return VEXO_FMT_RGB565;
    case AV_PIX_FMT_BGR565LE:
      return VEXO_FMT_BGR565;
    case AV_PIX_FMT_RGB24:
      return VEXO_FMT_RGB888;
    case AV_PIX_FMT_BGR24:
      return VEXO_FMT_BGR888;
    case AV_PIX_FMT_RGBA:
      return VEXO_FMT_RGBA8888;
    case AV_PIX_FMT_BGRA:
      return VEXO_FMT_BGRA8888;
    case AV_PIX_FMT_ARGB:
      return VEXO_FMT_ARGB8888;
    case AV_PIX_FMT_ABGR:
      return VEXO_FMT_ABGR8888;
    case AV_PIX_FMT_YUV420P10LE:
      return VEXO_FMT_YUV420PLANAR16;
    case AV_PIX_FMT_P010LE:
      return VEXO_FMT_P010LE;
    default:
      return -1;
  }
}

/*
 * The frame's planes, without a copy, and its colours: BT.709 where it says so,
 * else BT.601. Returns what vexo_picture_wrap does. Colours of BT.2020 are not
 * told: those of HDR are tone mapped, which looks at no standard.
 */
static inline int32_t vexo_picture_of_avframe(vexo_img *img,
                                              const AVFrame *frame) {
  int full = 0;
  const int32_t format = vexo_format_of_avframe(frame, &full);
  const int32_t status = vexo_picture_wrap(
      img, format, frame->width, frame->height, frame->data, frame->linesize);
  if (status != VEXO_OK || (format >= 200 && format < 600)) return status;
  if (frame->colorspace == AVCOL_SPC_BT709) {
    img->color_std = full ? VEXO_STD_BT709_FULL : VEXO_STD_BT709;
  } else {
    img->color_std = full ? VEXO_STD_BT601_FULL : VEXO_STD_DEFAULT;
  }
  return status;
}
