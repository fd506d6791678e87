/* SPDX-License-Identifier: Apache-2.0 */
/* Shows a PQ frame, P010 as a decoder hands it over, as a player with an SDR
 * screen does: tone mapped to RGBA8888. Writes the picture to standard output
 * as a PPM. */
#include <stdio.h>
#include <stdlib.h>

#include "orumlox/orumlox.h"

enum { kWidth = 292, kHeight = 64 };

/* A 10-bit sample: the high bits of a word. */
static uint16_t word(int sample) { return (uint16_t)(sample << 6); }

/* Video range, of which PPM has none, to full range. */
static uint8_t expanded(int value) {
  return (uint8_t)(((value - 16) * 255 + 109) / 219);
}

int main(void) {
  static uint16_t luma[kWidth * kHeight];
  static uint16_t chroma[kWidth * kHeight / 2];
  static uint8_t rgba[kWidth * kHeight * 4];

  /* From black to 10000 nits, and bluish in the lower half. */
  for (int i = 0; i < kWidth * kHeight; ++i) {
    luma[i] = word(64 + i % kWidth * 3);
  }
  for (int i = 0; i < kWidth * kHeight / 2; i += 2) {
    chroma[i] = word(i < kWidth * kHeight / 4 ? 512 : 560); /* U */
    chroma[i + 1] = word(512);                              /* V */
  }

  vexo_img src = {.width = {kWidth, kWidth / 2}, /* plane 1 counts pairs */
                  .height = {kHeight, kHeight / 2},
                  .stride = {kWidth * 2, kWidth * 2},
                  .plane = {(uint8_t *)luma, (uint8_t *)chroma},
                  .format = VEXO_FMT_P010LE,
                  .source_nit = 1000}; /* as the stream's metadata says */
  const vexo_img dst = {.plane = {rgba}, .format = VEXO_FMT_RGBA8888};
  const int32_t status = vexo_hdr_to_sdr(&src, &dst, VEXO_HDR_HDR10);
  if (status != VEXO_OK) {
    fprintf(stderr, "vexo_hdr_to_sdr: status %d\n", (int)status);
    return EXIT_FAILURE;
  }
  printf("P6\n%d %d\n255\n", kWidth, kHeight);
  for (size_t i = 0; i < sizeof rgba; ++i) {
    if (i % 4 != 3) putchar(expanded(rgba[i]));
  }
  return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
