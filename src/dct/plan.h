// SPDX-License-Identifier: Apache-2.0
//
// What the planning of a DCT scaling shares with the scaling.
#pragma once

#include "dct/dct_rows.h"
#include "orumlox/unprefixed.h"

namespace lox {

// What scaling needs to know of a plane and the context has no field for. Kept
// in the blocks that the context calls notes.
struct DctPlane {
  int32_t width, rows;  // of the source, before padding
  int32_t src_stride;
  int32_t dst_stride, dst_rows;
  bool planar;  // the destination: no pairs
};

// The notes of planes 0 and 1, and of plane 2 of RGBA8888: these lie where the
// buffers of chroma would be.
inline const DctPlane *plane_notes(const vexo_rsz_new_context *context,
                                   int32_t plane) {
  return static_cast<const DctPlane *>(plane < 2 ? context->notes[plane]
                                                 : context->dst_chroma);
}
// A plane's work area: tables and, behind them, room for a block's samples.
inline uint8_t *work_area(const vexo_rsz_new_context *context, int32_t plane) {
  uint8_t *const area = plane < 2 ? context->work[plane] : context->chroma;
  return area + (-reinterpret_cast<uintptr_t>(area) & (alignof(DctTables) - 1));
}
inline DctTables *tables_of(uint8_t *area) {
  return reinterpret_cast<DctTables *>(area);
}
inline uint8_t *samples_of(uint8_t *area) { return area + sizeof(DctTables); }

// Whether set-up has succeeded.
inline bool has_plan(const vexo_rsz_new_context *context) {
  return context->exact_ratio != 0 || context->notes[0] != nullptr;
}

// Whether blocks of this type are taken from the plane.
inline bool has_type(const vexo_rsz_new_context *context, int32_t plane,
                     int32_t type) {
  const int32_t types = context->types[plane];
  return type < types && !(types == 3 && type == 1);
}
// Where the sets have the bases of a plane's type.
inline int32_t set_entry(const vexo_rsz_new_context *context, int32_t plane,
                         int32_t type) {
  return plane == 0 ? type : context->types[0] + type;
}

inline int32_t smaller(int32_t a, int32_t b) { return a < b ? a : b; }

// What the blocks of `plan`, the plane that was planned, write of `plane`: as
// much as the destination's rows have room for. Nothing where there are no
// blocks, or no samples to take them from.
struct Written {
  int32_t width, height;
};
inline Written written(const vexo_rsz_new_context *c, int32_t plan,
                       const DctPlane &plane) {
  const auto reach = [](int32_t smaller_blocks, int32_t larger_blocks,
                        int32_t room) {
    const int64_t all = 4 * (int64_t{smaller_blocks} + larger_blocks);
    return all < room ? static_cast<int32_t>(all) : room;
  };
  const Written size = {
      reach(c->narrow_columns[plan], c->wide_columns[plan], plane.dst_stride),
      reach(c->short_rows[plan], c->tall_rows[plan], plane.dst_rows)};
  const bool any =
      plane.width > 0 && plane.rows > 0 && size.width > 0 && size.height > 0;
  return any ? size : Written{0, 0};
}
inline int32_t round_up(int32_t n, int32_t to) {
  return static_cast<int32_t>((int64_t{n} + to - 1) / to * to);
}
inline int64_t plane_bytes(const vexo_img &img, int32_t plane) {
  return int64_t{img.stride[plane]} * img.buf_height[plane];
}

// Plans one plane; no blocks for sizes that are not served.
void plan_blocks(vexo_rsz_new_context *context, int32_t plane,
                 int32_t src_width, int32_t src_height, int32_t dst_width,
                 int32_t dst_height);
// Columns of the plane that blocks are taken from, before padding.
int32_t source_width(const vexo_img &src, int32_t plane, int32_t prescale);
int64_t block_count(const vexo_rsz_new_context *context, int32_t plane);

}  // namespace lox
