/* SPDX-License-Identifier: Apache-2.0 */
/* A decoder's frame becomes a picture: its planes, strides and colours, and
 * those of the frame that has none. */
#include <orumlox/adaptors/avframe.h>
#include <string.h>

int main(void) {
  static uint8_t memory[4096];
  AVFrame frame;
  vexo_img img;
  memset(&frame, 0, sizeof frame);
  frame.width = 33;
  frame.height = 9;
  frame.format = AV_PIX_FMT_NV12;
  frame.colorspace = AVCOL_SPC_BT709;
  frame.data[0] = memory;
  frame.data[1] = memory + 2048;
  frame.linesize[0] = frame.linesize[1] = 64;
  if (vexo_picture_of_avframe(&img, &frame) != VEXO_OK) return 1;
  if (img.format != VEXO_FMT_NV12 || img.color_std != VEXO_STD_BT709) return 2;
  if (img.plane[1] != memory + 2048 || img.width[1] != 17) return 3;
  frame.color_range = AVCOL_RANGE_JPEG;
  vexo_picture_of_avframe(&img, &frame);
  if (img.color_std != VEXO_STD_BT709_FULL) return 4;
  frame.format = AV_PIX_FMT_XYZ12LE;
  return vexo_picture_of_avframe(&img, &frame) == VEXO_ERR_UNSUPPORTED ? 0 : 5;
}
