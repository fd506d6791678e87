// SPDX-License-Identifier: Apache-2.0
//
// The bilinear scaler by the caller's steps, in eighths of a sample.
#include <cstdint>

#include "orumlox/rsz.h"

namespace {

// A position along a direction, in 1 / 262144 of a sample.
class Position {
 public:
  explicit Position(uint32_t step_word)
      : step_(step_word >> 3), log2_distance_(step_word & 7) {}
  int64_t at() const {
    return static_cast<int64_t>(value_ >> 18) << log2_distance_;
  }
  int phase() const { return static_cast<int>(value_ >> 15 & 7); }
  // How far the next sample is; 0 where it has no weight.
  int64_t to_next() const {
    return phase() == 0 ? 0 : int64_t{1} << log2_distance_;
  }
  void advance() { value_ += step_; }

 private:
  uint64_t value_ = 0;
  uint32_t step_;
  uint32_t log2_distance_;
};

}  // namespace

extern "C" {

#define LOX_WEIGHT(px, py) \
  { (8 - (px)) * (8 - (py)), (px) * (8 - (py)), (8 - (px)) * (py), (px) * (py) }
#define LOX_WEIGHTS(px)                                                       \
  LOX_WEIGHT(px, 0), LOX_WEIGHT(px, 1), LOX_WEIGHT(px, 2), LOX_WEIGHT(px, 3), \
      LOX_WEIGHT(px, 4), LOX_WEIGHT(px, 5), LOX_WEIGHT(px, 6),                \
      LOX_WEIGHT(px, 7)
const uint8_t vexo_tbl_rsz_weight[64][4] = {
    LOX_WEIGHTS(0), LOX_WEIGHTS(1), LOX_WEIGHTS(2), LOX_WEIGHTS(3),
    LOX_WEIGHTS(4), LOX_WEIGHTS(5), LOX_WEIGHTS(6), LOX_WEIGHTS(7)};

void vexo_rsz_8b_org(const uint8_t *src, int32_t src_stride, int32_t dst_width,
                     int32_t dst_height, int32_t dst_stride, uint8_t *dst,
                     uint32_t horizontal_step, uint32_t vertical_step) {
  if (dst_width < 1 || dst_height < 1) return;
  Position down(vertical_step);
  for (int32_t y = 0; y < dst_height; ++y, down.advance()) {
    const uint8_t *const row = src + down.at() * src_stride;
    const uint8_t *const below = row + down.to_next() * src_stride;
    uint8_t *const out = dst + int64_t{dst_stride} * y;
    Position across(horizontal_step);
    for (int32_t x = 0; x < dst_width; ++x, across.advance()) {
      const int64_t at = across.at();
      const int64_t right = at + across.to_next();
      const uint8_t *const w =
          vexo_tbl_rsz_weight[8 * across.phase() + down.phase()];
      const int sum = row[at] * w[0] + row[right] * w[1] + below[at] * w[2] +
                      below[right] * w[3];
      out[x] = static_cast<uint8_t>(sum >> 6);
    }
  }
}

}  // extern "C"
