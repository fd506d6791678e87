/* SPDX-License-Identifier: Apache-2.0 */
/* The pieces of C in the comments of the public headers, each in a block of its
 * own, among what they take for granted: they compile. */
#include <orumlox/orumlox.h>

extern const uint8_t *bytes;
extern int32_t size;
extern uint8_t *luma, *pairs;
extern vexo_img src, dst, pair[2];
extern vexo_csc_kernel kernel;
extern vexo_rsz_new_context plan;
extern vexo_shift_set a, b;
extern uint8_t *const *planes;
extern const int32_t *strides;
extern vexo_picture_context *context;
extern const uint8_t *y, *u, *v;
extern size_t y_bytes, u_bytes, v_bytes;
extern vexo_img screen;
extern int32_t status;

int32_t fragments(void);
int32_t fragments(void) {
#include "fragments.inc"
  return VEXO_OK;
}
