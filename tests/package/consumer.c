/* SPDX-License-Identifier: Apache-2.0 */
/* A program as somebody writes it who has the package alone, in C99 to C++20:
 * the version, and a tone mapping of black, which takes threads and the maths
 * library. Says the version. */
#include <orumlox/orumlox.h>
#include <stdio.h>

enum { SIZE = 384 }; /* large enough for threads */
static vexo_img src, dst;
static uint16_t luma[SIZE * SIZE], chroma[SIZE * SIZE / 2];
static uint8_t pixels[SIZE * SIZE * 4];

int main(void) {
  int i;
  for (i = 0; i < SIZE * SIZE; ++i) {
    luma[i] = 64 << 6;
    chroma[i / 2] = 512 << 6;
  }
  src.width[0] = src.height[0] = SIZE;
  src.stride[0] = src.stride[1] = 2 * SIZE;
  src.plane[0] = (uint8_t *)luma;
  src.plane[1] = (uint8_t *)chroma;
  src.format = VEXO_FMT_P010LE;
  dst.plane[0] = pixels;
  dst.format = VEXO_FMT_RGBA8888;
  if (vexo_hdr_to_sdr(&src, &dst, VEXO_HDR_HDR10) != VEXO_OK) return 1;
  if (pixels[0] != 16 || pixels[3] != 255) return 1; /* of video range */
  if (vexo_version() != ORUMLOX_VERSION) return 1;
  printf("%d.%d.%d\n", ORUMLOX_VERSION_MAJOR, ORUMLOX_VERSION_MINOR,
         ORUMLOX_VERSION_PATCH);
  return 0;
}
