// SPDX-License-Identifier: Apache-2.0
// Tone mapping pixel by pixel, every byte in the order of writing.
#include <orumlox/unprefixed.h>

#include "rules/hdr_rule.h"
#include "rules/rules.h"

namespace lox_test {

// The rows first to end - 1 as one band.
int32_t tone_map_band(const Function &, const vexo_hdr_context *context,
                      int32_t first, int32_t end) {
  const vexo_hdr_context &c = *context;
  const int32_t format = c.dst->format;
  const auto put = [&](int p, ptrdiff_t at,
                       std::initializer_list<int32_t> bytes) {
    for (const int32_t b : bytes) {
      c.dst->plane[p][at++] = static_cast<uint8_t>(b);
    }
  };
  // Others than these have every band at the start of their planes.
  const bool dense = format == VEXO_FMT_YUV420 || format == VEXO_FMT_NV12 ||
                     format == VEXO_FMT_NV21;
  const ptrdiff_t width = c.width;
  const ptrdiff_t start = width * first;
  ptrdiff_t even_rows = 0;
  for (int32_t row = first; first >= 0 && row < std::min(end, c.height);
       ++row) {
    for (int32_t x = 0; x < c.width; ++x) {
      const Pixel q = pixel_at(c, x, row);
      const ptrdiff_t i = width * (row - first) + x;
      if (format == VEXO_FMT_RGB888) {
        put(0, 4 * start + 3 * i, {q.r, q.g, q.b});
      } else if (format == VEXO_FMT_RGBA8888) {
        put(0, 4 * (start + i), {q.r, q.g, q.b, 255});
      } else if (format == VEXO_FMT_ARGB8888) {
        put(0, 4 * (start + i), {255, q.r, q.g, q.b});
      } else if (format < 200 || format > 599) {
        put(0, (dense ? start : 0) + i, {q.y});
      }
      if (row % 2 != 0 || x % 2 != 0) continue;
      const ptrdiff_t k = even_rows * width / 2 + x / 2;
      if (format == VEXO_FMT_YUV420) {
        put(1, start / 4 + k, {q.u});
        put(2, start / 4 + k, {q.v});
      } else if (format == VEXO_FMT_YV12) {
        put(1, k, {q.v});
        put(2, k, {q.u});
      } else if (format == VEXO_FMT_NV12) {
        put(1, start / 2 + 2 * k, {q.u, q.v});
      } else if (format == VEXO_FMT_NV21) {
        put(1, start / 2 + 2 * k, {q.v, q.u});
      }
    }
    if (row % 2 == 0) ++even_rows;
  }
  return 0;
}

namespace {

// A whole picture is its bands of four rows, one after the other.
int32_t picture(const Function &f, vexo_img *src, const vexo_img *dst,
                int32_t variant, bool hlg) {
  src->source_nit = final_nit(*src);
  const auto c = model_context(src, dst, src->source_nit, variant, hlg);
  for (int32_t first = 0; first < c.height; first += 4) {
    tone_map_band(f, &c, first, first + 4);
  }
  return VEXO_OK;
}
int32_t hdr10(const Function &f, vexo_img *src, const vexo_img *dst,
              int32_t variant) {
  return picture(f, src, dst, variant, false);
}
int32_t hlg(const Function &f, vexo_img *src, const vexo_img *dst) {
  return picture(f, src, dst, 0, true);
}
int32_t any_kind(const Function &f, vexo_img *src, const vexo_img *dst,
                 int32_t kind) {
  return kind == 1   ? hdr10(f, src, dst, 0)
         : kind == 2 ? hdr10(f, src, dst, 1)
         : kind == 4 ? hlg(f, src, dst)
                     : VEXO_ERR_ARG;
}

// All bands that nobody else was given, on one thread.
void *thread(const Function &f, void *argument) {
  const auto *worker = static_cast<const vexo_hdr_worker *>(argument);
  tone_map_band(f, worker->context, worker->first, worker->first + 4);
  int32_t &next = worker->scheduler->next;
  for (; next < worker->scheduler->limit; next += 4) {
    tone_map_band(f, worker->context, next, next + 4);
  }
  return nullptr;
}

}  // namespace

std::vector<Rule> hdr_rules() {
  return rules_for(vexo_hdr_to_sdr, any_kind, vexo_hdr10_to_sdr8, hdr10,
                   vexo_hlg_to_sdr8, hlg, _vexo_hdr10_to_sdr8, tone_map_band,
                   thread_vexo_hdr10_to_sdr8, thread, TMO_VD_Norm, tone_curve,
                   Analyze_SrcLuma, measured_nit);
}

}  // namespace lox_test
