/* SPDX-License-Identifier: Apache-2.0 */
/* Looks into H.264 as a player does that seeks: reads the first fields of each
 * picture's slice and asks whether decoding can begin there. */
#include <stdio.h>
#include <stdlib.h>

#include "orumlox/orumlox.h"

/* An unsigned Exp-Golomb code: n zeros, a one, n bits. */
static uint32_t read_code(mlox_bsr *reader) {
  int32_t n = 0;
  uint8_t bit = 0;
  while (mlox_bsr_read1_value(reader, &bit) == 0 && bit == 0) ++n;
  return bit == 0 || n > 31 ? MLOX_BSR_END
                            : (1u << n) - 1 + mlox_bsr_read(reader, n);
}

int main(void) {
  /* How two pictures begin: a slice of an IDR picture, which is a key frame,
   * and one of type P. */
  static const uint8_t pictures[2][8] = {
      {0, 0, 1, 0x65, 0x88, 0x84, 0x21, 0xA0},
      {0, 0, 1, 0x41, 0x9A, 0x24, 0x6C, 0x42}};
  for (int i = 0; i < 2; ++i) {
    mlox_bsr reader;
    mlox_bsr_init(&reader, pictures[i], sizeof pictures[i], NULL);
    if (mlox_bsr_read(&reader, 24) != 1) {
      fprintf(stderr, "picture %d: no start code\n", i);
      return EXIT_FAILURE;
    }
    mlox_bsr_skip(&reader, 1);
    const uint32_t importance = mlox_bsr_read(&reader, 2);
    const uint32_t unit_type = mlox_bsr_read(&reader, 5);
    const uint32_t first_macroblock = read_code(&reader);
    const uint32_t slice_type = read_code(&reader) % 5;
    const int32_t key =
        mlox_is_vkeyfrm(MLOX_MT_VIDEO_H264, pictures[i], sizeof pictures[i]);
    printf(
        "picture %d: importance %u, unit of type %u, first macroblock %u, "
        "%c slice: %s\n",
        i, (unsigned)importance, (unsigned)unit_type,
        (unsigned)first_macroblock, "PBIpi"[slice_type],
        key ? "a key frame" : "no key frame");
  }
  return EXIT_SUCCESS;
}
