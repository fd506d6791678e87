/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A C program that uses the shared library the way a caller does: descriptors,
 * a conversion, a copy, a crop, a padding, aligned memory, and the statuses.
 */
#include <orumlox/orumlox.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int line, const char *what, long actual, long expected) {
  if (actual == expected) return;
  fprintf(stderr, "line %d: %s is %ld, expected %ld\n", line, what, actual,
          expected);
  ++failures;
}
#define EXPECT(actual, expected) expect(__LINE__, #actual, (actual), (expected))

enum { WIDTH = 16, HEIGHT = 8 };

static vexo_img one_plane(int32_t format, uint8_t *plane, int32_t stride) {
  vexo_img img;
  memset(&img, 0, sizeof img);
  img.format = format;
  img.width[0] = WIDTH;
  img.height[0] = HEIGHT;
  img.buf_height[0] = HEIGHT;
  img.stride[0] = stride;
  img.plane[0] = plane;
  return img;
}

static vexo_img nv12(uint8_t *luma, uint8_t *chroma) {
  vexo_img img = one_plane(VEXO_FMT_NV12, luma, WIDTH);
  img.width[1] = WIDTH / 2;
  img.height[1] = HEIGHT / 2;
  img.buf_height[1] = HEIGHT / 2;
  img.stride[1] = WIDTH;
  img.plane[1] = chroma;
  return img;
}

/* Each block of 2 by 2 pixels of the picture is one of these. */
static const struct {
  uint8_t y, u, v, r, g, b;
} colours[] = {
    {16, 128, 128, 0, 0, 0},        {235, 128, 128, 255, 255, 255},
    {81, 90, 255, 255, 0, 0},       {0, 128, 128, 0, 0, 0},
    {255, 128, 128, 255, 255, 255},
};
enum { COLOURS = sizeof colours / sizeof colours[0] };

static int colour_at(int x, int y) {
  return (x / 2 + y / 2 * (WIDTH / 2)) % COLOURS;
}

static void converts_a_frame(void) {
  uint8_t luma[WIDTH * HEIGHT];
  uint8_t chroma[WIDTH * HEIGHT / 2];
  uint8_t pixels[WIDTH * HEIGHT * 4];
  uint8_t words[WIDTH * HEIGHT * 2];
  for (int y = 0; y < HEIGHT; ++y) {
    for (int x = 0; x < WIDTH; ++x) {
      const int c = colour_at(x, y);
      luma[y * WIDTH + x] = colours[c].y;
      chroma[y / 2 * WIDTH + x] = x % 2 == 0 ? colours[c].u : colours[c].v;
    }
  }
  const vexo_img src = nv12(luma, chroma);
  const vexo_img rgba = one_plane(VEXO_FMT_RGBA8888, pixels, WIDTH * 4);
  const vexo_img rgb565 = one_plane(VEXO_FMT_RGB565, words, WIDTH * 2);
  EXPECT(vexo_csc(&src, &rgba), VEXO_OK);
  EXPECT(vexo_csc(&src, &rgb565), VEXO_OK);
  for (int y = 0; y < HEIGHT; ++y) {
    for (int x = 0; x < WIDTH; ++x) {
      const int c = colour_at(x, y);
      const uint8_t *p = pixels + (y * WIDTH + x) * 4;
      const uint8_t *w = words + (y * WIDTH + x) * 2;
      EXPECT(p[0], colours[c].r);
      EXPECT(p[1], colours[c].g);
      EXPECT(p[2], colours[c].b);
      EXPECT(p[3], 255);
      EXPECT(w[0] + w[1] * 256, (colours[c].r >> 3) * 2048 +
                                    (colours[c].g >> 2) * 32 +
                                    (colours[c].b >> 3));
    }
  }

  /* The kernel by its name gives the same. */
  uint8_t again[sizeof pixels];
  uint8_t *const again_plane[4] = {again, NULL, NULL, NULL};
  const uint8_t *const src_plane[4] = {luma, chroma, NULL, NULL};
  memset(again, 0, sizeof again);
  vexo_csc_nv12_to_rgba8888(src_plane, src.width, src.height, src.stride,
                            rgba.stride, again_plane);
  EXPECT(memcmp(again, pixels, sizeof pixels), 0);
}

static void answers_with_a_status(void) {
  uint8_t luma[WIDTH * HEIGHT] = {0};
  uint8_t chroma[WIDTH * HEIGHT / 2] = {0};
  uint8_t pixels[WIDTH * HEIGHT * 4] = {0};
  const vexo_img src = nv12(luma, chroma);
  vexo_img dst = one_plane(VEXO_FMT_NV12, pixels, WIDTH * 4);
  EXPECT(vexo_csc(&src, &dst), VEXO_ERR_ARG);
  dst.format = VEXO_FMT_RGBA8888;
  EXPECT(vexo_cpy(&src, &dst), VEXO_ERR_ARG);
  dst.width[0] = 7;
  EXPECT(vexo_csc(&src, &dst), VEXO_ERR_UNSUPPORTED);
  EXPECT(vexo_padding(&src, &dst), VEXO_ERR_ARG);
  EXPECT(vexo_cpy(&dst, &dst), VEXO_ERR_UNSUPPORTED);
  EXPECT(vexo_csc_bt601_fr(&src, &src), VEXO_ERR_ARG);
  EXPECT(vexo_csc_bt709(&src, &dst), VEXO_ERR_ARG);
  EXPECT(vexo_csc_bt709_fr(&src, &dst), VEXO_ERR_UNSUPPORTED);
}

static void moves_a_window(void) {
  uint8_t large[WIDTH * HEIGHT * 3];
  uint8_t small[2 * 3 * 3];
  uint8_t padded[WIDTH * HEIGHT * 3];
  for (size_t i = 0; i < sizeof large; ++i) large[i] = (uint8_t)(i + 1);
  vexo_img whole = one_plane(VEXO_FMT_RGB888, large, WIDTH * 3);
  vexo_img window = one_plane(VEXO_FMT_RGB888, small, 2 * 3);
  window.width[0] = 2;
  window.height[0] = 3;
  whole.offset_x = 5;
  whole.offset_y = 4;
  EXPECT(vexo_crop(&whole, &window), VEXO_OK);
  for (int y = 0; y < 3; ++y) {
    for (int i = 0; i < 6; ++i) {
      EXPECT(small[y * 6 + i], large[(y + 4) * WIDTH * 3 + 15 + i]);
    }
  }
  const vexo_img target = one_plane(VEXO_FMT_RGB888, padded, WIDTH * 3);
  window.offset_x = 14;
  window.offset_y = 5;
  memset(padded, 0x55, sizeof padded);
  EXPECT(vexo_padding(&window, &target), VEXO_OK);
  for (int y = 0; y < HEIGHT; ++y) {
    for (int i = 0; i < WIDTH * 3; ++i) {
      const int inside = y >= 5 && i >= 14 * 3;
      EXPECT(padded[y * WIDTH * 3 + i],
             inside ? small[(y - 5) * 6 + i - 14 * 3] : 0);
    }
  }
}

static void hands_out_aligned_memory(void) {
  uint8_t *a = mlox_malloc_align32(100);
  uint8_t *b = mlox_malloc_fast_align32(0);
  EXPECT(a != NULL, 1);
  EXPECT(b != NULL, 1);
  EXPECT((long)((uintptr_t)a % 32), 0);
  EXPECT((long)((uintptr_t)b % 32), 0);
  memset(a, 7, 100);
  mlox_mfree_align32(a);
  mlox_mfree_fast_align32(b);
  mlox_mfree_align32(NULL);
}

int main(void) {
  converts_a_frame();
  answers_with_a_status();
  moves_a_window();
  hands_out_aligned_memory();
  return failures == 0 ? 0 : 1;
}
