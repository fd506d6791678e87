// SPDX-License-Identifier: Apache-2.0
//
// Contexts: what set-up allocates, in which order, and how it is freed.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/memory.h"
#include "dct/plan.h"
#include "dct/sets.h"
#include "orumlox/common.h"

namespace lox {

namespace {

// Of the blocks that hold a plane's notes.
constexpr int64_t kNoteBytes = 64;
constexpr int64_t kRgbaNoteBytes = 128;
static_assert(sizeof(DctPlane) <= kNoteBytes);

// Fills in a pointer of the context; false where it cannot. No buffer takes
// more than 2^31 - 1 bytes.
template <class T>
bool make(T **buffer, int64_t count) {
  if (count > static_cast<int64_t>(INT32_MAX / sizeof(T))) return false;
  *buffer = allocate<T>(count);
  return *buffer != nullptr;
}
bool make_notes(void **notes, int64_t bytes) {
  *notes = allocate<uint8_t>(bytes);
  return *notes != nullptr;
}

void release(vexo_rsz_new_context *c, vexo_shift_set a, vexo_shift_set b) {
  const int32_t entries = set_entries(c);
  if (entries > 0) {
    free_set(a, entries);
    free_set(b, entries);
  }
  void *const blocks[] = {c->chroma,     c->dst_chroma,  c->notes[0],
                          c->notes[1],   c->block_types, c->block_columns,
                          c->block_rows, c->work[0],     c->work[1],
                          c->pre_luma,   c->pre_chroma};
  for (void *const block : blocks) mlox_mfree_align32(block);
  memset(c, 0, sizeof *c);
}

int32_t give_up(vexo_rsz_new_context *c, vexo_shift_set *a, vexo_shift_set *b) {
  release(c, *a, *b);
  *a = nullptr;
  *b = nullptr;
  return VEXO_ERR_ARG;
}

int32_t larger(const int32_t *of_planes) {
  return of_planes[0] > of_planes[1] ? of_planes[0] : of_planes[1];
}

// Work areas have room for a source block of the larger spans, or for the
// tables of the vector forms behind the fixed ones.
bool make_work(vexo_rsz_new_context *c, int32_t plane) {
  uint8_t **const area = plane < 2 ? &c->work[plane] : &c->chroma;
  const auto most = [](const int32_t(&of)[2][4]) {
    return int64_t{of[0][3] > of[1][3] ? of[0][3] : of[1][3]};
  };
  const int64_t block =
      int64_t{16} * larger(c->horizontal_span) * larger(c->vertical_span);
  const int64_t tables =
      dct_table_bytes(most(c->block_width), most(c->block_height));
  constexpr int64_t kFixed = sizeof(DctTables) + alignof(DctTables);
  return make(area, kFixed + (block > tables ? block : tables));
}

// Allocates tables in a fixed order; the caller frees all of them on failure.
bool build_tables(vexo_rsz_new_context *c, vexo_shift_set *a, vexo_shift_set *b,
                  bool rgba) {
  if (!make_work(c, 0)) return false;
  const int32_t entries = set_entries(c);
  if (entries > 0 &&
      (get_mem3Dint16(a, entries, larger(c->vertical_span)) != VEXO_OK ||
       get_mem3Dint16(b, entries, larger(c->horizontal_span)) != VEXO_OK)) {
    return false;
  }
  const int64_t blocks = block_count(c, 0) + block_count(c, 1);
  const int64_t notes = rgba ? kRgbaNoteBytes : kNoteBytes;
  if (!make(&c->block_types, blocks) || !make(&c->block_columns, blocks) ||
      !make(&c->block_rows, blocks) || !make_notes(&c->notes[0], notes) ||
      !make_work(c, 1) || !make_notes(&c->notes[1], notes)) {
    return false;
  }
  // Component 2 of RGBA8888 has its areas where chroma's buffers would be.
  if (rgba && (!make_work(c, 2) || !make(&c->dst_chroma, notes))) return false;
  split_settings(c);
  if (entries > 0) make_shiftmatrix(c, *a, *b);
  return true;
}

// Notes on the planes that blocks are taken from. They have the planned
// columns, as far as a row has room for them.
void write_notes(const vexo_img *pair, vexo_rsz_new_context *c) {
  for (int32_t plane = 0; plane < 2; ++plane) {
    const int32_t columns = pair[0].width[plane] < 1
                                ? 0
                                : source_width(pair[0], plane, c->prescale);
    const DctPlane note = {smaller(columns, c->src_stride[plane]),
                           c->src_rows[plane],
                           c->src_stride[plane],
                           c->dst_stride[plane],
                           c->dst_rows[plane],
                           pair[1].format == VEXO_FMT_YUV420};
    memcpy(c->notes[plane], &note, sizeof note);
  }
}

// Whether both sides of plane 0 are this many times the destination's.
bool is_ratio(const vexo_img *pair, float ratio) {
  const auto side = [](int32_t src, int32_t dst) {
    return static_cast<float>(src) / static_cast<float>(dst);
  };
  return side(pair[0].width[0], pair[1].width[0]) == ratio &&
         side(pair[0].height[0], pair[1].height[0]) == ratio;
}

void set_flags(const vexo_img *pair, vexo_rsz_new_context *c) {
  const vexo_img &src = pair[0];
  c->exact_ratio = is_ratio(pair, 2) || is_ratio(pair, 4) ? 1 : 0;
  if (pair[1].color_std == 0) {
    c->padding_needed =
        src.width[0] != src.stride[0] || src.height[0] != src.buf_height[0] ? 1
                                                                            : 0;
  } else if (pair[1].color_std == 1) {
    const int32_t stride = src.stride[0];
    c->stride_not_aligned = stride % 32 != 0 ? 1 : 0;
    c->aligned_stride = stride % 32 == 0 ? stride : (stride - 1) / 32 * 32;
  }
}

}  // namespace

}  // namespace lox

int32_t vexo_rsz_new_init(const vexo_img *pair, vexo_rsz_new_context *context,
                          vexo_shift_set *a, vexo_shift_set *b,
                          int32_t prescale) {
  memset(context, 0, sizeof *context);
  *a = nullptr;
  *b = nullptr;
  const vexo_img &src = pair[0];
  context->prescale = prescale;
  const int64_t chroma = lox::plane_bytes(src, 1);
  if (prescale != 0) {
    lox::set_flags(pair, context);
    if (context->exact_ratio != 0) {
      if (pair[1].format == VEXO_FMT_YUV420 &&
          !lox::make(&context->pre_chroma, chroma / prescale)) {
        return lox::give_up(context, a, b);
      }
      return VEXO_OK;
    }
  }
  const int64_t area = int64_t{prescale} * prescale;
  algorithm_settings(pair, context);
  if (!lox::build_tables(context, a, b, false) ||
      (prescale != 0 &&
       (!lox::make(&context->pre_luma, lox::plane_bytes(src, 0) / area) ||
        !lox::make(&context->pre_chroma, chroma / area))) ||
      !lox::make(&context->chroma, prescale == 0 ? chroma : chroma / 4) ||
      !lox::make(&context->dst_chroma, lox::plane_bytes(pair[1], 1))) {
    return lox::give_up(context, a, b);
  }
  lox::write_notes(pair, context);
  return VEXO_OK;
}

int32_t vexo_rsz_new_deinit(const vexo_img *, vexo_rsz_new_context *context,
                            vexo_shift_set a, vexo_shift_set b) {
  lox::release(context, a, b);
  return VEXO_OK;
}

int32_t vexo_rsz_new_rgba8888_init(const vexo_img *quartet,
                                   vexo_rsz_new_context *context,
                                   vexo_shift_set *a, vexo_shift_set *b) {
  memset(context, 0, sizeof *context);
  *a = nullptr;
  *b = nullptr;
  const vexo_img &src = quartet[2];
  const vexo_img &dst = quartet[3];
  context->src_stride[0] = src.stride[0];
  context->src_rows[0] = src.height[0];
  context->dst_stride[0] = dst.stride[0];
  context->dst_rows[0] = dst.buf_height[0];
  lox::plan_blocks(context, 0, src.width[0], src.height[0], dst.width[0],
                   dst.height[0]);
  if (!lox::build_tables(context, a, b, true)) {
    return lox::give_up(context, a, b);
  }
  void *const notes[] = {context->notes[0], context->notes[1],
                         context->dst_chroma};
  for (int32_t plane = 0; plane < 3; ++plane) {
    const lox::DctPlane note = {src.width[0],      src.height[0],
                                src.stride[plane], dst.stride[plane],
                                dst.buf_height[0], true};
    memcpy(notes[plane], &note, sizeof note);
  }
  return VEXO_OK;
}

int32_t vexo_rsz_new_rgba8888_deinit(const vexo_img *,
                                     vexo_rsz_new_context *context,
                                     vexo_shift_set a, vexo_shift_set b) {
  lox::release(context, a, b);
  return VEXO_OK;
}
