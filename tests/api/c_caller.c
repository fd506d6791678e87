/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A C program that uses the shared library the way a caller does: descriptors,
 * a conversion, a copy, a crop, a padding, aligned memory, scaling, a turn, and
 * the statuses; and the table that the library fills for its callers.
 */
#define ORUMLOX_UNPREFIXED
#include <orumlox/orumlox.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int line, long actual, long expected) {
  if (actual == expected) return;
  fprintf(stderr, "line %d: %ld, expected %ld\n", line, actual, expected);
  ++failures;
}
#define EXPECT(actual, expected) expect(__LINE__, (actual), (expected))

enum { WIDTH = 16, HEIGHT = 8 };

static uint8_t luma[HEIGHT][WIDTH], chroma[HEIGHT / 2][WIDTH];
static uint8_t pixels[HEIGHT][WIDTH][4], more_pixels[HEIGHT][WIDTH][4];

static vexo_img image(int32_t format, void *plane, int32_t width,
                      int32_t height, int32_t stride) {
  const vexo_img img = {.format = format,
                        .plane = {plane, chroma[0]},
                        .width = {width, WIDTH / 2},
                        .height = {height, HEIGHT / 2},
                        .stride = {stride, WIDTH},
                        .buf_height = {height, HEIGHT / 2}};
  return img;
}

int main(void) {
  /* Left half black, right half an over-saturated red. */
  for (int y = 0; y < HEIGHT; ++y) {
    for (int x = 0; x < WIDTH; ++x) {
      luma[y][x] = x < 8 ? 16 : 81;
      chroma[y / 2][x] = x < 8 ? 128 : x % 2 == 0 ? 90 : 255;
    }
  }
  const vexo_img nv12 = image(VEXO_FMT_NV12, luma, WIDTH, HEIGHT, WIDTH);
  vexo_img rgba = image(VEXO_FMT_RGBA8888, pixels, WIDTH, HEIGHT, WIDTH * 4);
  EXPECT(vexo_csc(&nv12, &rgba), VEXO_OK);
  for (int x = 0; x < WIDTH; ++x) {
    const uint8_t expected[4] = {x < 8 ? 0 : 255, 0, 0, 255};
    EXPECT(memcmp(pixels[HEIGHT - 1][x], expected, 4), 0);
  }
  vexo_img more = rgba;
  more.plane[0] = more_pixels[0][0];
  vexo_csc_nv12_to_rgba8888(nv12.plane, nv12.width, nv12.height, nv12.stride,
                            more.stride, more.plane);
  EXPECT(memcmp(more_pixels, pixels, sizeof pixels), 0);

  /* A window cut out and put into the last corner; the rest is cleared. */
  uint8_t small[3][2][4];
  vexo_img window = image(VEXO_FMT_RGBA8888, small, 2, 3, 2 * 4);
  rgba.offset_x = 7;
  EXPECT(vexo_crop(&rgba, &window), VEXO_OK);
  EXPECT(memcmp(small[2], pixels[2][7], 2 * 4), 0);
  window.offset_x = WIDTH - 2;
  window.offset_y = HEIGHT - 3;
  EXPECT(vexo_padding(&window, &more), VEXO_OK);
  EXPECT(memcmp(small[2], more_pixels[HEIGHT - 1][WIDTH - 2], 2 * 4), 0);
  EXPECT(more_pixels[0][0][3], 0);

  uint8_t *block = mlox_malloc_align32(WIDTH * HEIGHT);
  EXPECT((long)((uintptr_t)block % 32), 0);
  const vexo_img copy = image(VEXO_FMT_NV12, block, WIDTH, HEIGHT, WIDTH);
  EXPECT(vexo_cpy(&nv12, &copy), VEXO_OK);
  EXPECT(memcmp(block, luma, sizeof luma), 0);
  mlox_mfree_align32(block);
  mlox_mfree_fast_align32(mlox_malloc_fast_align32(0));

  /* Halved, then turned to the left; and both at once. */
  enum { HALF_WIDTH = WIDTH / 2, HALF_HEIGHT = HEIGHT / 2 };
  uint8_t half[HALF_HEIGHT][HALF_WIDTH];
  uint8_t turned[HALF_WIDTH][HALF_HEIGHT], at_once[HALF_WIDTH][HALF_HEIGHT];
  luma[0][0] = 1;
  luma[0][1] = 2;
  luma[1][0] = 4;
  luma[1][1] = 8;
  const vexo_img grey = image(VEXO_FMT_YUV400, luma, WIDTH, HEIGHT, WIDTH);
  const vexo_img half_grey =
      image(VEXO_FMT_YUV400, half, HALF_WIDTH, HALF_HEIGHT, HALF_WIDTH);
  vexo_img turned_grey =
      image(VEXO_FMT_YUV400, turned, HALF_HEIGHT, HALF_WIDTH, HALF_HEIGHT);
  EXPECT(vexo_rsz(&grey, &half_grey), VEXO_OK);
  EXPECT(half[0][0], (1 + 2 + 4 + 8) / 4);
  EXPECT(half[3][7], 81);
  EXPECT(vexo_rot(&half_grey, VEXO_ROT_90L, &turned_grey), VEXO_OK);
  EXPECT(turned[7][0], (1 + 2 + 4 + 8) / 4);
  EXPECT(turned[0][3], 81);
  turned_grey.plane[0] = at_once[0];
  EXPECT(vexo_rsz_rot(&grey, VEXO_ROT_90L, &turned_grey), VEXO_OK);
  EXPECT(memcmp(at_once, turned, sizeof turned), 0);

  EXPECT(vexo_rsz(&nv12, &rgba), VEXO_ERR_ARG);
  EXPECT(vexo_rsz_rot(&nv12, VEXO_ROT_180, &half_grey), VEXO_ERR_ARG);
  EXPECT(vexo_rot(&nv12, 6, &nv12), VEXO_ERR_UNSUPPORTED);
  EXPECT(vexo_csc(&nv12, &nv12), VEXO_ERR_ARG);
  EXPECT(vexo_csc_bt601_fr(&nv12, &nv12), VEXO_ERR_ARG);
  EXPECT(vexo_csc_bt709(&nv12, &rgba), VEXO_ERR_UNSUPPORTED);
  EXPECT(vexo_csc_bt709_fr(&nv12, &rgba), VEXO_ERR_UNSUPPORTED);

  /* Entry 2 k is 128 + 2 (k - 128), at least 0; odd ones are entry 0. */
  EXPECT(vexo_vqe_cs_init(2048), VEXO_OK);
  for (int i = 0; i < 256; ++i) {
    EXPECT(lut[i], i % 2 == 0 && i > 128 ? i - 128 : 0);
  }
  return failures == 0 ? 0 : 1;
}
