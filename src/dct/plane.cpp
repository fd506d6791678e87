// SPDX-License-Identifier: Apache-2.0
//
// Scales a plane in rows of blocks. Blocks inside the destination are written
// straight; those that its edges cut off go through a small buffer.
#include "dct/plane.h"

#include <cstddef>
#include <cstdint>

#include "common/copy.h"

namespace lox {

namespace {

// Blocks that the buffer holds.
constexpr int32_t kCut = 64;

}  // namespace

BlockRows::BlockRows(const vexo_rsz_new_context *context, int32_t plan,
                     const DctPlane &plane, uint8_t *work, vexo_shift_set a,
                     vexo_shift_set b)
    : context_(context),
      plane_(plane),
      work_(work),
      size_(written(context, plan, plane)),
      columns_(context->narrow_columns[plan] + context->wide_columns[plan]),
      first_(plan == 0 ? 0 : static_cast<ptrdiff_t>(block_count(context, 0))) {
  if (count() == 0) return;
  for (int32_t type = 0; type < 4; ++type) {
    if (!has_type(context, plan, type)) continue;
    const int32_t entry = set_entry(context, plan, type);
    kinds_[type] = {context->block_width[plan][type],
                    context->block_height[plan][type], a[entry], b[entry],
                    context->weights[plan][type]};
  }
  dct_rows().prepare(tables_of(work), kinds_);
}

int64_t BlockRows::source_end(int32_t i) const {
  const ptrdiff_t at = first_of(i);
  return int64_t{context_->block_rows[at]} +
         kinds_[context_->block_types[at]].height;
}

void BlockRows::scale(int32_t i, const uint8_t *src, uint8_t *dst) const {
  const DctRows &kernels = dct_rows();
  DctTables *const tables = tables_of(work_);
  const ptrdiff_t stride = plane_.dst_stride;
  // Blocks across that lie inside, and those that reach inside.
  const int32_t inside = size_.width / 4;
  const int32_t reaching = inside + (size_.width % 4 != 0 ? 1 : 0);
  const int32_t left = size_.height - 4 * i;
  const ptrdiff_t at = first_of(i);
  DctJob job = {kinds_,
                src,
                plane_.src_stride,
                plane_.width,
                plane_.rows,
                context_->block_rows[at],
                context_->block_columns + at,
                context_->block_types + at,
                inside,
                samples_of(work_),
                dst + ptrdiff_t{4} * i * stride,
                stride};
  const bool cut_below = left < 4;
  if (!cut_below) kernels.blocks(tables, &job);
  uint8_t *const row = job.dst;
  for (int32_t j = cut_below ? 0 : inside; j < reaching; j += kCut) {
    uint8_t cut[4 * 4 * kCut];
    job.columns = context_->block_columns + at + j;
    job.types = context_->block_types + at + j;
    job.count = reaching - j < kCut ? reaching - j : kCut;
    job.dst = cut;
    job.dst_stride = ptrdiff_t{4} * kCut;
    kernels.blocks(tables, &job);
    const ptrdiff_t x = ptrdiff_t{4} * j;
    const ptrdiff_t room = stride - x;
    copy_plane(row + x, stride, cut, job.dst_stride,
               room < 4 * job.count ? room : 4 * job.count,
               cut_below ? left : 4);
  }
}

namespace {

void transform_plane(const vexo_rsz_new_context *context, int32_t plan,
                     const DctPlane &plane, uint8_t *work, const uint8_t *src,
                     uint8_t *dst, vexo_shift_set a, vexo_shift_set b) {
  const BlockRows rows(context, plan, plane, work, a, b);
  for (int32_t i = 0; i < rows.count(); ++i) rows.scale(i, src, dst);
}

}  // namespace

}  // namespace lox

void dct_downscaling(const uint8_t *src, uint8_t *dst,
                     vexo_rsz_new_context *context, vexo_shift_set a,
                     vexo_shift_set b, int32_t plane) {
  if (lox::plane_notes(context, plane) == nullptr) return;
  lox::transform_plane(context, plane, *lox::plane_notes(context, plane),
                       lox::work_area(context, plane), src, dst, a, b);
}

void dct_downscaling_rgba8888(const uint8_t *src, uint8_t *dst,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b, int32_t plane) {
  if (lox::plane_notes(context, plane) == nullptr) return;
  // One plan serves all three planes.
  lox::transform_plane(context, 0, *lox::plane_notes(context, plane),
                       lox::work_area(context, plane), src, dst, a, b);
}
