/* SPDX-License-Identifier: Apache-2.0 */
/* Shows an NV12 frame as a gallery does: reduced to a fifth and turned to the
 * left. Writes the thumbnail to standard output as a PPM. */
#include <stdio.h>
#include <stdlib.h>

#include "orumlox/orumlox.h"

enum { kWidth = 640, kHeight = 480, kSmallWidth = 128, kSmallHeight = 96 };

/* Brighter from left to right, and red in the lower half. */
static void draw(const vexo_img *frame) {
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      frame->plane[0][(ptrdiff_t)y * kWidth + x] = (uint8_t)(16 + x / 4);
    }
  }
  for (int y = 0; y < kHeight / 2; ++y) {
    uint8_t *const row = frame->plane[1] + (ptrdiff_t)y * kWidth;
    for (int x = 0; x < kWidth; x += 2) {
      row[x] = 128;                             /* U */
      row[x + 1] = y < kHeight / 4 ? 128 : 200; /* V */
    }
  }
}

int main(void) {
  static uint8_t luma[kWidth * kHeight];
  static uint8_t chroma[kWidth * kHeight / 2];
  static uint8_t small_luma[kSmallWidth * kSmallHeight];
  static uint8_t small_chroma[kSmallWidth * kSmallHeight / 2];
  static uint8_t rgba[kSmallWidth * kSmallHeight * 4];

  /* The frame, and the thumbnail before it is turned. The layout selector 1
   * makes strides and rows of the thumbnail multiples of 16, which the sizes
   * are already, and takes the frame to have no gaps. */
  vexo_img pair[2] = {{.width = {kWidth},
                       .height = {kHeight},
                       .plane = {luma, chroma},
                       .format = VEXO_FMT_NV12},
                      {.width = {kSmallWidth},
                       .height = {kSmallHeight},
                       .format = VEXO_FMT_NV12,
                       .color_std = 1}};
  vexo_rsz_new_set_img(pair);
  draw(&pair[0]);

  /* Its sizes are set by the call that turns it. Selector 1 here too, which is
   * no colour standard: the conversion ignores it, since the screen's is 0. */
  vexo_img upright = {.plane = {small_luma, small_chroma},
                      .format = VEXO_FMT_NV12,
                      .color_std = 1};
  const vexo_img screen = {.width = {kSmallHeight},
                           .height = {kSmallWidth},
                           .stride = {kSmallHeight * 4},
                           .plane = {rgba},
                           .format = VEXO_FMT_RGBA8888};

  /* One plan serves all pictures of a size. */
  vexo_rsz_new_context plan;
  vexo_shift_set a, b;
  vexo_img scaled;
  vexo_txc_new_init(pair, &scaled, &plan, &a, &b, 0, VEXO_ROT_90L);
  vexo_txc_new(pair, &upright, &scaled, &plan, a, b, VEXO_ROT_90L);
  vexo_txc_new_deinit(pair, &scaled, &plan, a, b, VEXO_ROT_90L);

  const int32_t status = vexo_csc(&upright, &screen);
  if (status != VEXO_OK) {
    fprintf(stderr, "vexo_csc: status %d\n", (int)status);
    return EXIT_FAILURE;
  }
  printf("P6\n%d %d\n255\n", (int)screen.width[0], (int)screen.height[0]);
  for (size_t i = 0; i < sizeof rgba; i += 4) fwrite(rgba + i, 1, 3, stdout);
  return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
