/* SPDX-License-Identifier: Apache-2.0 */
/* Standard input: an NV12 frame of BT.709 in rows of 2048 bytes, lying on its
 * side. Standard output: an upright thumbnail of 320 x 568, BGRA. */
#include <orumlox/orumlox.h>
#include <stdio.h>

enum { kWidth = 1920, kHeight = 1080, kStride = 2048, kRows = kHeight * 3 / 2 };

int main(void) {
  static uint8_t memory[kStride * kRows];
  uint8_t *const planes[] = {memory, memory + kStride * kHeight};
  const int32_t strides[] = {kStride, kStride};
  const vexo_picture_options upright = {.rotation = VEXO_ROT_90R};
  vexo_img frame, small = {.format = VEXO_FMT_BGRA8888};
  if (fread(memory, kStride, kRows, stdin) != kRows) return 1;
  vexo_picture_wrap(&frame, VEXO_FMT_NV12, kWidth, kHeight, planes, strides);
  frame.color_std = VEXO_STD_BT709;
  int32_t status = vexo_picture_alloc(&small, small.format, 320, 568);
  if (status == VEXO_OK)
    status = vexo_picture_thumbnail(NULL, &frame, &small, &upright);
  if (status == VEXO_OK) fwrite(small.plane[0], 320 * 4, 568, stdout);
  vexo_picture_free(&small);
  if (status != VEXO_OK) puts(vexo_status_name(status));
  return status != VEXO_OK;
}
