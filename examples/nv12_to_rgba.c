/* SPDX-License-Identifier: Apache-2.0 */
/* Converts one NV12 frame, as a decoder would hand it over, to RGBA8888. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orumlox/orumlox.h"

enum { kWidth = 640, kHeight = 360 };

int main(void) {
  static uint8_t luma[kWidth * kHeight];
  static uint8_t chroma[kWidth * kHeight / 2];
  static uint8_t rgba[kWidth * kHeight * 4];
  memset(luma, 81, sizeof luma);
  for (int i = 0; i < kWidth * kHeight / 2; i += 2) {
    chroma[i] = 90;      /* U */
    chroma[i + 1] = 240; /* V */
  }

  vexo_img src = {.width = {kWidth, kWidth / 2}, /* plane 1 counts pairs */
                  .height = {kHeight, kHeight / 2},
                  .stride = {kWidth, kWidth},
                  .plane = {luma, chroma},
                  .format = VEXO_FMT_NV12};
  vexo_img dst = {.width = {kWidth},
                  .height = {kHeight},
                  .stride = {kWidth * 4},
                  .plane = {rgba},
                  .format = VEXO_FMT_RGBA8888};
  const int32_t status = vexo_csc(&src, &dst);
  if (status == VEXO_OK) {
    printf("first pixel: R %d, G %d, B %d, A %d\n", rgba[0], rgba[1], rgba[2],
           rgba[3]);
  } else {
    fprintf(stderr, "vexo_csc: status %d\n", (int)status);
  }
  return status == VEXO_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
