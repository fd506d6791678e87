/* SPDX-License-Identifier: Apache-2.0 */
/* Standard input: an NV12 frame of BT.709 in rows of 2048 bytes, lying on its
 * side. Standard output: an upright thumbnail of 320 x 568, BGRA. */
#include <orumlox/orumlox.h>
#include <stdio.h>

enum { kWidth = 1920, kHeight = 1080, kStride = 2048 };

int main(void) {
  static uint8_t luma[kHeight][kStride], chroma[kHeight / 2][kStride];
  uint8_t *const planes[] = {luma[0], chroma[0]};
  const int32_t strides[] = {kStride, kStride};
  const vexo_picture_options upright = {.rotation = VEXO_ROT_90R};
  vexo_img frame, small;
  if (fread(luma, sizeof luma, 1, stdin) != 1) return 1;
  if (fread(chroma, sizeof chroma, 1, stdin) != 1) return 1;
  vexo_picture_wrap(&frame, VEXO_FMT_NV12, kWidth, kHeight, planes, strides);
  frame.color_std = VEXO_STD_BT709;
  if (vexo_picture_alloc(&small, VEXO_FMT_BGRA8888, 320, 568) != 0) return 1;
  int status = (int)vexo_picture_thumbnail(NULL, &frame, &small, &upright);
  if (status == 0) fwrite(small.plane[0], (size_t)small.stride[0], 568, stdout);
  vexo_picture_free(&small);
  return status == 0 ? 0 : 1;
}
