// SPDX-License-Identifier: Apache-2.0
//
// The plane scalers: how each direction is scaled, by the ratio of its sizes.
#include "rsz/plane_scalers.h"

#include "orumlox/rsz.h"
#include "rsz/scale_rows.h"

namespace lox {

namespace {

// The sizes of a job before the turn.
struct Sizes {
  int32_t src_width, src_height, width, height;

  Sizes(Turn turn, const Plane &p)
      : src_width(p.src_width),
        src_height(p.src_height),
        width(p.width(turn)),
        height(p.height(turn)) {}
  bool valid() const {
    return src_width > 0 && src_height > 0 && width > 0 && height > 0;
  }
  bool both_shrink() const { return width < src_width && height < src_height; }
  bool by_whole_factors() const {
    return src_width % width == 0 && src_height % height == 0;
  }
};

Axis one_direction(int32_t src, int32_t dst, int32_t mode) {
  if (dst < src) return reduced(src, dst);
  return {src, dst,
          mode == VEXO_MODE_MOD1 ? Scaling::kEnlargeMod1 : Scaling::kEnlarge};
}

}  // namespace

ScaleJob make_job(SampleType type, Turn turn, const Plane &p, Axis across,
                  Axis down, uint8_t *scratch) {
  const int64_t even = type.rgb565 ? ~int64_t{1} : ~int64_t{0};
  return {.type = type,
          .turn = turn,
          .across = across,
          .down = down,
          .rows = {p.rows.begin, p.rows.end < down.dst ? p.rows.end : down.dst},
          .at_once = across.scaling < Scaling::kEnlarge &&
                     down.scaling < Scaling::kEnlarge,
          .src = p.src,
          .src_step = p.src_stride & even,
          .dst = p.dst,
          .dst_step = p.dst_stride & even,
          .scratch = scratch};
}

bool is_scaled_plane(const Plane &p) { return Sizes(Turn::kNone, p).valid(); }

ScaleJob make_job(SampleType type, Turn turn, const Plane &p, int32_t mode,
                  uint8_t *scratch) {
  const Sizes s(turn, p);
  ScaleJob job =
      make_job(type, turn, p, one_direction(s.src_width, s.width, mode),
               one_direction(s.src_height, s.height, mode), scratch);
  // Where both directions shrink, a whole factor averages every output only if
  // the other direction's factor is whole, too.
  if (job.at_once && !s.by_whole_factors()) {
    job.across.scaling = Scaling::kReduce;
    job.down.scaling = Scaling::kReduce;
  }
  return job;
}

int32_t scale(SampleType type, Turn turn, const Plane &p, int32_t mode,
              uint8_t *scratch) {
  if (!Sizes(turn, p).valid()) return VEXO_ERR_ARG;
  interpolate_plane(make_job(type, turn, p, mode, scratch));
  return VEXO_OK;
}

int64_t scratch_for(SampleType type, Turn turn, const Plane &plane) {
  const Sizes s(turn, plane);
  if (!s.valid() || s.both_shrink()) return 0;
  return 2 * int64_t{s.width} * type.unit;
}

int32_t status_of_words(const Plane &p) {
  const Sizes s(Turn::kNone, p);
  if (!s.valid()) return VEXO_ERR_ARG;
  return s.both_shrink() && s.by_whole_factors() ? VEXO_OK
                                                 : VEXO_ERR_UNSUPPORTED;
}

int32_t reduce_words(int32_t unit, const Plane &p) {
  const int32_t status = status_of_words(p);
  if (status != VEXO_OK) return status;
  const int32_t factor = p.src_width / p.dst_width;
  const int64_t down = p.src_height / p.dst_height;
  const int64_t src_step = p.src_stride & ~1;
  const int64_t dst_step = p.dst_stride & ~1;
  const auto box16 = scale_rows().box16;
  for (int64_t y = p.rows.begin; y < p.dst_height && y < p.rows.end; ++y) {
    const uint8_t *const row = p.src + src_step * down * y;
    box16(row, row + src_step, p.dst + dst_step * y, unit, factor, p.dst_width);
  }
  return VEXO_OK;
}

}  // namespace lox

extern "C" {

#define LOX_SCALER(name)                                                  \
  int32_t name(const uint8_t *src, int32_t src_width, int32_t src_height, \
               int32_t dst_width, int32_t dst_height, uint8_t *dst,       \
               [[maybe_unused]] uint8_t *scratch, int32_t src_stride,     \
               int32_t dst_stride, [[maybe_unused]] int32_t mode)
#define LOX_SCALE(name, type, turn)                                          \
  LOX_SCALER(name) {                                                         \
    return lox::scale(lox::type, lox::Turn::turn, LOX_PLANE, mode, scratch); \
  }

LOX_SCALE(vexo_rsz_8b, k8b, kNone)
LOX_SCALE(vexo_rsz_8b8b, k8b8b, kNone)
LOX_SCALE(vexo_rsz_8b8b8b, k8b8b8b, kNone)
LOX_SCALE(vexo_rsz_8b8b8b8b, k8b8b8b8b, kNone)
LOX_SCALE(vexo_rsz_5b6b5b, k5b6b5b, kNone)
LOX_SCALE(vexo_rsz_8b_rot_90l, k8b, kLeft)
LOX_SCALE(vexo_rsz_8b_rot_90r, k8b, kRight)
LOX_SCALE(vexo_rsz_8b_rot_180, k8b, kHalf)
LOX_SCALE(vexo_rsz_8b8b_rot_90l, k8b8b, kLeft)
LOX_SCALE(vexo_rsz_8b8b_rot_90r, k8b8b, kRight)
LOX_SCALE(vexo_rsz_8b8b_rot_180, k8b8b, kHalf)

LOX_SCALER(vexo_rsz_16b) { return lox::reduce_words(2, LOX_PLANE); }
LOX_SCALER(vexo_rsz_16b16b) { return lox::reduce_words(4, LOX_PLANE); }

}  // extern "C"
