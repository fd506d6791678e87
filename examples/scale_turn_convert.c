/* SPDX-License-Identifier: Apache-2.0 */
/* Shows an NV12 frame as a player with a screen on its side does: scaled to
 * half, turned upright, converted to RGBA8888. Writes the picture to standard
 * output as a PPM. */
#include <stdio.h>
#include <stdlib.h>

#include "orumlox/orumlox.h"

enum { kWidth = 320, kHeight = 192, kHalfWidth = 160, kHalfHeight = 96 };

/* An NV12 image: plane 1 counts pairs, and follows the luma. */
static vexo_img nv12(uint8_t *bytes, int32_t width, int32_t height) {
  const vexo_img img = {.width = {width, width / 2},
                        .height = {height, height / 2},
                        .stride = {width, width},
                        .plane = {bytes, bytes + (ptrdiff_t)width * height},
                        .format = VEXO_FMT_NV12};
  return img;
}

int main(void) {
  static uint8_t frame[kWidth * kHeight * 3 / 2];
  static uint8_t scaled[kHalfWidth * kHalfHeight * 3 / 2];
  static uint8_t upright[kHalfWidth * kHalfHeight * 3 / 2];
  static uint8_t rgba[kHalfWidth * kHalfHeight * 4];

  /* Brighter from left to right, and red in the lower half. */
  const vexo_img source = nv12(frame, kWidth, kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      frame[y * kWidth + x] = (uint8_t)(16 + x / 2);
    }
  }
  for (int y = 0; y < kHeight / 2; ++y) {
    for (int x = 0; x < kWidth; x += 2) {
      source.plane[1][y * kWidth + x] = 128;                             /* U */
      source.plane[1][y * kWidth + x + 1] = y < kHeight / 4 ? 128 : 200; /* V */
    }
  }

  const vexo_img half = nv12(scaled, kHalfWidth, kHalfHeight);
  const vexo_img turned = nv12(upright, kHalfHeight, kHalfWidth);
  const vexo_img screen = {.width = {kHalfHeight},
                           .height = {kHalfWidth},
                           .stride = {kHalfHeight * 4},
                           .plane = {rgba},
                           .format = VEXO_FMT_RGBA8888};
  int32_t status = vexo_rsz(&source, &half);
  if (status == VEXO_OK) status = vexo_rot(&half, VEXO_ROT_90R, &turned);
  if (status == VEXO_OK) status = vexo_csc(&turned, &screen);
  if (status != VEXO_OK) {
    fprintf(stderr, "the library refuses: status %d\n", (int)status);
    return EXIT_FAILURE;
  }
  printf("P6\n%d %d\n255\n", (int)screen.width[0], (int)screen.height[0]);
  for (size_t i = 0; i < sizeof rgba; i += 4) fwrite(rgba + i, 1, 3, stdout);
  return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
