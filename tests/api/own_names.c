/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A program with functions and a table of the names that the library exports
 * without a prefix. The library must neither call nor fill them: the digest of
 * what it makes is that of the same program without them.
 */
#include <dlfcn.h>
#include <orumlox/orumlox.h>
#include <stdio.h>
#include <stdlib.h>

#if defined(OWN_NAMES)
/* The linker knows these by name alone, so that any type will do. */
#define OWN_FUNCTION(name) \
  void name(void);         \
  void name(void) { abort(); }
#include "own_functions.h"
extern uint8_t lut[16];
uint8_t lut[16] = {1};
#endif

enum { W = 320, H = 64, SMALL_W = 72, SMALL_H = 40 };

static uint16_t deep[2][H * W];
static uint8_t shallow[2][H * W], small[2][SMALL_H * SMALL_W], rgba[H * W * 4];
static uint8_t sharp[H * W];
static uint64_t digest = 1;

static void add(const void *data, size_t size) {
  const uint8_t *bytes = data;
  for (size_t i = 0; i < size; ++i)
    digest = (digest ^ bytes[i]) * 0x100000001B3;
}

static vexo_img picture(int32_t format, void *first, void *second,
                        int32_t bytes) {
  const vexo_img img = {.width = {W, W / 2},
                        .height = {H, H / 2},
                        .stride = {W * bytes, W * bytes},
                        .buf_height = {H, H / 2},
                        .plane = {first, second},
                        .format = format,
                        .color_std = 1};
  return img;
}

int main(void) {
  for (int i = 0; i < H * W; ++i) {
    deep[0][i] = (uint16_t)(i * 64 * 7);
    deep[1][i] = (uint16_t)(i * 64 * 3);
    shallow[0][i] = (uint8_t)(i * i >> 8);
    shallow[1][i] = (uint8_t)(i >> 4);
  }

  vexo_img source = picture(VEXO_FMT_P010LE, deep[0], deep[1], 2);
  const vexo_img screen = picture(VEXO_FMT_RGBA8888, rgba, NULL, 4);
  source.mode = VEXO_HDR_MODE_MEASURE;
  if (vexo_hdr_to_sdr(&source, &screen, VEXO_HDR_HDR10) != VEXO_OK) return 1;
  add(rgba, sizeof rgba);
  add(&source.source_nit, sizeof source.source_nit);

  vexo_img pair[2] = {picture(VEXO_FMT_NV12, shallow[0], shallow[1], 1),
                      picture(VEXO_FMT_NV12, NULL, NULL, 1)};
  pair[1].width[0] = SMALL_W;
  pair[1].height[0] = SMALL_H;
  vexo_rsz_new_set_img(pair);
  vexo_img scaled, turned = picture(VEXO_FMT_NV12, small[0], small[1], 1);
  vexo_rsz_new_context plan;
  vexo_shift_set a, b;
  if (vexo_txc_new_init(pair, &scaled, &plan, &a, &b, 0, VEXO_ROT_180) !=
      VEXO_OK) {
    return 1;
  }
  vexo_txc_new(pair, &turned, &scaled, &plan, a, b, VEXO_ROT_180);
  vexo_txc_new_deinit(pair, &scaled, &plan, a, b, VEXO_ROT_180);
  add(small, sizeof small);

  const vexo_img luma = picture(VEXO_FMT_YUV420, shallow[0], NULL, 1);
  const vexo_img sharper = picture(VEXO_FMT_YUV420, sharp, NULL, 1);
  vexo_vqe_de(&luma, &sharper, 0);
  add(sharp, sizeof sharp);

  void *library = dlopen(SONAME, RTLD_NOW);
  const uint8_t *filled = library == NULL ? NULL : dlsym(library, "lut");
  if (filled == NULL) return 1;
  vexo_vqe_cs_init(2048);
  add(filled, 256);
#if defined(OWN_NAMES)
  for (int i = 0; i < 16; ++i) {
    if (lut[i] != (i == 0)) return 1;
  }
#endif
  printf("%016llx\n", (unsigned long long)digest);
  return 0;
}
