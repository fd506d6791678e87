/* SPDX-License-Identifier: Apache-2.0 */
/* A program as somebody writes it who has the package alone, in C99 to C++20:
 * the version, a conversion, and a tone mapping, which takes threads and the
 * maths library. Says the version. */
#include <orumlox/orumlox.h>
#include <stdio.h>

enum { SIZE = 16 };
static uint8_t luma[SIZE * SIZE], chroma[SIZE * SIZE / 2];
static uint8_t pixels[SIZE * SIZE * 4];
static uint16_t deep[SIZE * SIZE], deep_chroma[SIZE * SIZE / 2];

int main(void) {
  vexo_img nv12 = {{SIZE, SIZE / 2},
                   {SIZE, SIZE / 2},
                   {SIZE, SIZE},
                   {SIZE, SIZE / 2},
                   {luma, chroma},
                   {0},
                   VEXO_FMT_NV12,
                   0,
                   0,
                   0,
                   0,
                   0,
                   0};
  vexo_img rgba = nv12, p010 = nv12;
  int i;

  rgba.format = VEXO_FMT_RGBA8888;
  rgba.stride[0] = 4 * SIZE;
  rgba.plane[0] = pixels;
  p010.format = VEXO_FMT_P010LE;
  p010.stride[0] = p010.stride[1] = 2 * SIZE;
  p010.plane[0] = (uint8_t *)deep;
  p010.plane[1] = (uint8_t *)deep_chroma;
  for (i = 0; i < SIZE * SIZE; ++i) {
    luma[i] = 235;
    deep[i] = 64 << 6;
    chroma[i / 2] = 128;
    deep_chroma[i / 2] = 512 << 6;
  }
  if (vexo_version() != ORUMLOX_VERSION) return 1;
  if (vexo_csc(&nv12, &rgba) != VEXO_OK || pixels[SIZE * 4] != 255) return 1;
  if (vexo_hdr_to_sdr(&p010, &rgba, VEXO_HDR_HDR10) != VEXO_OK) return 1;
  if (pixels[SIZE * 4] != 16) return 1; /* black of video range */
  printf("%d.%d.%d\n", ORUMLOX_VERSION_MAJOR, ORUMLOX_VERSION_MINOR,
         ORUMLOX_VERSION_PATCH);
  return 0;
}
