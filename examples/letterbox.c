/* SPDX-License-Identifier: Apache-2.0 */
/* Places a picture in the middle of a larger black one. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orumlox/orumlox.h"

int main(void) {
  enum { kWidth = 320, kHeight = 136, kScreenHeight = 240 };
  static uint8_t picture[kWidth * kHeight * 4];
  static uint8_t screen[kWidth * kScreenHeight * 4];
  memset(picture, 200, sizeof picture);

  vexo_img src = {.width = {kWidth},
                  .height = {kHeight},
                  .stride = {kWidth * 4},
                  .plane = {picture},
                  .format = VEXO_FMT_RGBA8888,
                  .offset_y = (kScreenHeight - kHeight) / 2};
  vexo_img dst = {.width = {kWidth},
                  .height = {kScreenHeight},
                  .stride = {kWidth * 4},
                  .buf_height = {kScreenHeight},
                  .plane = {screen},
                  .format = VEXO_FMT_RGBA8888};
  const int32_t status = vexo_padding(&src, &dst);
  if (status != VEXO_OK) {
    fprintf(stderr, "vexo_padding: status %d\n", (int)status);
    return EXIT_FAILURE;
  }
  printf("top row: %d, middle row: %d\n", screen[0], screen[sizeof screen / 2]);
  return EXIT_SUCCESS;
}
