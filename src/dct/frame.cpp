// SPDX-License-Identifier: Apache-2.0
//
// Scaling one NV12 or NV21 picture by its plan.
#include <cstddef>
#include <cstdint>

#include "common/format.h"
#include "dct/block_means.h"
#include "dct/helper_thread.h"
#include "dct/plan.h"
#include "orumlox/csc_layout.h"

namespace lox {

namespace {

MeansSource luma_of(const vexo_img &img) {
  return {img.plane[0], img.stride[0], img.width[0], img.height[0]};
}
// No more pairs than a row has room for; other formats may claim more.
MeansSource pairs_of(const vexo_img &img) {
  return {img.plane[1], img.stride[1], smaller(img.width[1], img.stride[1] / 2),
          img.height[1]};
}

// The second component's plane in a buffer for both.
uint8_t *second_half(uint8_t *buffer, int64_t bytes) {
  return buffer + static_cast<ptrdiff_t>(bytes / 2);
}

// Takes pairs apart and scales both components.
void scale_pairs(const vexo_rsz_new_worker &w, const uint8_t *pairs,
                 int32_t width, int32_t rows, int32_t stride) {
  vexo_rsz_new_context *const c = w.context;
  const DctPlane &notes = *plane_notes(c, 1);
  const Written size = written(c, 1, notes);
  if (size.width < 1) return;
  const int32_t step = c->src_stride[1];
  const int64_t bytes = plane_bytes(*w.src, 1);
  uint8_t *const second =
      second_half(c->chroma, c->prescale == 0 ? bytes : bytes / 4);
  vexo_csc_8b8b_unpck(pairs, 2 * width, rows, stride, step, step, c->chroma,
                      second);
  const vexo_img &dst = *w.dst;
  const bool planar = dst.format == VEXO_FMT_YUV420;
  // The plan's buffers serve the planned kind alone.
  if (planar != notes.planar) return;
  if (planar) {
    dct_downscaling(c->chroma, dst.plane[1], c, w.a, w.b, 1);
    dct_downscaling(second, dst.plane[2], c, w.a, w.b, 1);
    return;
  }
  // Quirk: with a pre-scale factor NV21 gets no chroma, because callers know
  // its plane 1 to be left alone.
  if (dst.format != VEXO_FMT_NV12 &&
      (dst.format != VEXO_FMT_NV21 || c->prescale != 0)) {
    return;
  }
  uint8_t *const scaled = second_half(c->dst_chroma, plane_bytes(dst, 1));
  dct_downscaling(c->chroma, c->dst_chroma, c, w.a, w.b, 1);
  dct_downscaling(second, scaled, c, w.a, w.b, 1);
  vexo_csc_8b8b_pck(c->dst_chroma, scaled, size.width, size.height,
                    c->dst_stride[1], c->dst_stride[1], dst.stride[1],
                    dst.plane[1]);
}

void scale_luma(const vexo_rsz_new_worker &w, const uint8_t *luma) {
  dct_downscaling(luma, w.dst->plane[0], w.context, w.a, w.b, 0);
}

BlockKind pre_scaling(const vexo_rsz_new_context &c, BlockKind halves,
                      BlockKind quarters, BlockKind quarters_of_2_rows) {
  return c.prescale == 2             ? halves
         : c.stride_not_aligned != 0 ? quarters
                                     : quarters_of_2_rows;
}

void pre_scale_luma(const vexo_rsz_new_worker &w) {
  const vexo_rsz_new_context *const c = w.context;
  const DctPlane &notes = *plane_notes(c, 0);
  if (written(c, 0, notes).width < 1) return;
  const BlockKind kind =
      pre_scaling(*c, kHalveBytes, kQuarterBytes, kQuarterBytesOf2Rows);
  block_means(kind, luma_of(*w.src), c->pre_luma, c->src_stride[0], notes.width,
              c->src_rows[0], 0);
  scale_luma(w, c->pre_luma);
}

// What the thread for chroma does.
void pre_scale_chroma(const vexo_rsz_new_worker &w) {
  const vexo_rsz_new_context *const c = w.context;
  const DctPlane &notes = *plane_notes(c, 1);
  if (written(c, 1, notes).width < 1) return;
  const BlockKind kind =
      pre_scaling(*c, kHalvePairs, kQuarterGrouped, kQuarterGroupedOf2Rows);
  // Outputs make their blocks together in fours from column 0 on. A last four
  // that is needed in part is made whole where the row has room for it.
  const int32_t count = smaller((notes.width + 3) / 4 * 4, c->src_stride[1]);
  const ptrdiff_t stride = 2 * ptrdiff_t{c->src_stride[1]};
  block_means(kind, pairs_of(*w.src), c->pre_chroma, stride, count,
              c->src_rows[1], 0);
  scale_pairs(w, c->pre_chroma, notes.width, c->src_rows[1],
              static_cast<int32_t>(stride));
}

// Scales by exactly 2 or 4: block means do the whole job.
void average(const vexo_rsz_new_worker &w) {
  const vexo_img &dst = *w.dst;
  const bool planar = dst.format == VEXO_FMT_YUV420;
  if (!planar && dst.format != VEXO_FMT_NV12) return;
  // The ratio decides, not the planned factor.
  const bool by_2 = w.src->width[0] / 2 == dst.width[0];
  block_means(by_2 ? kHalveBytes : kQuarterBytes, luma_of(*w.src), dst.plane[0],
              dst.stride[0], dst.width[0], dst.height[0], 0);
  const BlockKind pairs = by_2 ? kHalvePairs : kQuarterPairs;
  const int32_t width = dst.width[1];
  const int32_t rows = dst.height[1];
  if (!planar) {
    block_means(pairs, pairs_of(*w.src), dst.plane[1], dst.stride[1], width,
                rows, 0);
    return;
  }
  uint8_t *const row = w.context->pre_chroma;
  const MeansSource source = pairs_of(*w.src);
  if (row == nullptr || source.width < 1 || source.rows < 1 || width < 1 ||
      plane_bytes(*w.src, 1) / w.context->prescale < int64_t{2} * width) {
    return;
  }
  for (int32_t y = 0; y < rows; ++y) {
    block_means(pairs, source, row, 0, width, 1, y);
    vexo_csc_8b8b_unpck(row, 2 * width, 1, 0, 0, 0,
                        dst.plane[1] + ptrdiff_t{y} * dst.stride[1],
                        dst.plane[2] + ptrdiff_t{y} * dst.stride[2]);
  }
}

using ChromaThread = HelperThread<vexo_rsz_new_worker, pre_scale_chroma>;

void scale(const vexo_rsz_new_worker &w) {
  const vexo_rsz_new_context *const c = w.context;
  if (!has_plan(c)) return;
  if (c->exact_ratio != 0) {
    average(w);
    return;
  }
  if (c->prescale != 0) {
    ChromaThread chroma;
    chroma.start(w);
    chroma.go();
    pre_scale_luma(w);
    chroma.finish();
    return;
  }
  const int32_t format = w.dst->format;
  if (has_chroma_pairs(format) || format == VEXO_FMT_YUV420) {
    scale_luma(w, w.src->plane[0]);
  }
  const MeansSource pairs = pairs_of(*w.src);
  scale_pairs(w, pairs.plane, pairs.width, pairs.rows, w.src->stride[1]);
}

}  // namespace

}  // namespace lox

int32_t vexo_rsz_new(const vexo_img *src, const vexo_img *dst,
                     vexo_rsz_new_context *context, vexo_shift_set a,
                     vexo_shift_set b) {
  lox::scale({src, dst, context, a, b, nullptr, nullptr});
  return VEXO_OK;
}

void *vexo_new_rsz_thread_prsz_2(void *worker) {
  pthread_exit(lox::ChromaThread::run(worker));
}

void *vexo_new_rsz_thread_prsz_4(void *worker) {
  pthread_exit(lox::ChromaThread::run(worker));
}
