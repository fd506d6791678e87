/* SPDX-License-Identifier: Apache-2.0 */
/* Shows a front camera's frame upright and as in a mirror. The frame is as
 * Android hands it out: V and U in turn in one piece of memory, in which both
 * planes begin, and each is said to end with its own last sample. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orumlox/orumlox.h"

enum { kWidth = 640, kHeight = 480, kStride = 704 };

int main(void) {
  static uint8_t luma[kStride * kHeight];
  static uint8_t chroma[kStride * kHeight / 2];
  static uint8_t rgba[kWidth * kHeight * 4];
  const size_t luma_bytes = sizeof luma - (kStride - kWidth);
  const size_t chroma_bytes = sizeof chroma - (kStride - kWidth) - 1;
  /* Grey, with red where the sensor's first rows are. */
  memset(luma, 76, sizeof luma);
  memset(chroma, 128, sizeof chroma);
  for (int i = 0; i < kStride * kHeight / 4; i += 2) {
    chroma[i] = 255;    /* V */
    chroma[i + 1] = 85; /* U */
  }

  const vexo_camera_frame frame = {
      .plane = {luma, chroma + 1, chroma},
      .bytes = {luma_bytes, chroma_bytes, chroma_bytes},
      .row_stride = {kStride, kStride, kStride},
      .pixel_stride = {1, 2, 2},
      .width = kWidth,
      .height = kHeight,
      .color_std = VEXO_STD_BT601_FULL};
  const vexo_camera_options options = {.rotation = 270, .mirror = 1};
  vexo_img screen = {.width = {kHeight},
                     .height = {kWidth},
                     .stride = {kHeight * 4},
                     .plane = {rgba},
                     .format = VEXO_FMT_RGBA8888};
  const int32_t status = vexo_camera_to_rgb(&frame, &options, &screen);
  if (status != VEXO_OK) {
    fprintf(stderr, "vexo_camera_to_rgb: %s\n", vexo_status_name(status));
    return EXIT_FAILURE;
  }
  const uint8_t *const right = &rgba[(size_t)(kHeight - 1) * 4];
  printf("left: R %d, G %d, B %d; right: R %d, G %d, B %d\n", rgba[0], rgba[1],
         rgba[2], right[0], right[1], right[2]);
  return EXIT_SUCCESS;
}
